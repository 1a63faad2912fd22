#include "platform/processes.h"

namespace kv {

QString quoteArgument(const QString &argument)
{
    const QChar backslash = QLatin1Char('\\');
    QString quoted(1, QLatin1Char('"'));
    qsizetype backslashes = 0; // pending, not yet written
    for (const QChar c : argument) {
        if (c == backslash) {
            ++backslashes;
            continue;
        }
        if (c == QLatin1Char('"'))
            quoted += QString(backslashes * 2 + 1, backslash);
        else
            quoted += QString(backslashes, backslash);
        quoted += c;
        backslashes = 0;
    }
    // Doubled so the closing quote still ends the group.
    quoted += QString(backslashes * 2, backslash);
    quoted += QLatin1Char('"');
    return quoted;
}

QStringList splitCommandLine(const QString &commandLine)
{
    const QChar backslash = QLatin1Char('\\');
    QStringList args;
    QString current;
    bool inArgument = false; // something (even an empty quoted group) was seen since the last blank
    bool quoted = false;
    const qsizetype size = commandLine.size();
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = commandLine.at(i);
        if (c == backslash) {
            qsizetype run = 1;
            while (i + run < size && commandLine.at(i + run) == backslash)
                ++run;
            inArgument = true;
            if (i + run < size && commandLine.at(i + run) == QLatin1Char('"')) {
                current += QString(run / 2, backslash);
                if (run % 2 == 1) {
                    current += QLatin1Char('"');
                    i += run; // past the escaped quote
                } else {
                    i += run - 1; // the quote itself groups, next round
                }
            } else {
                current += QString(run, backslash);
                i += run - 1;
            }
        } else if (c == QLatin1Char('"')) {
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
