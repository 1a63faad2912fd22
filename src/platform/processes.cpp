#include "platform/processes.h"

namespace kv {

QStringList splitCommandLine(const QString &commandLine)
{
    QStringList args;
    QString current;
    bool inArgument = false; // something (even an empty quoted group) was seen since the last blank
    bool quoted = false;
    for (const QChar c : commandLine) {
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
            inArgument = true;
        } else if (!quoted && (c == QLatin1Char(' ') || c == QLatin1Char('\t'))) {
            if (inArgument) {
                args.append(current);
                current.clear();
                inArgument = false;
            }
        } else {
            current.append(c);
            inArgument = true;
        }
    }
    if (inArgument)
        args.append(current);
    return args;
}

int clampProcessorCount(long reported)
{
    if (reported < 1)
        return 1;
    if (reported > 8)
        return 8;
    return static_cast<int>(reported);
}

} // namespace kv
