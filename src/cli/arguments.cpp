#include "cli/arguments.h"

namespace kv::cli {

QString parseArguments(const QStringList &args, const QStringList &knownOptions, Arguments &parsed)
{
    bool optionsEnded = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (optionsEnded || !a.startsWith(QLatin1Char('-')) || a.size() == 1) {
            parsed.positionals.append(a);
            continue;
        }
        if (a == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        const qsizetype eq = a.indexOf(QLatin1Char('='));
        const QString name = eq < 0 ? a : a.left(eq);
        if (!knownOptions.contains(name))
            return QStringLiteral("unknown option \"") + a + QLatin1Char('"');
        if (eq >= 0)
            parsed.values.insert(name, a.mid(eq + 1));
        else if (i + 1 < args.size())
            parsed.values.insert(name, args.at(++i));
        else
            return name + QStringLiteral(" needs a value");
    }
    return {};
}

} // namespace kv::cli
