#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace kv::cli {

// A subcommand's arguments: options that each take a value ("--name value" or "--name=value";
// the last one given wins) and the positional words. "--" ends the options, so a file name may
// start with "-".
struct Arguments
{
    QHash<QString, QString> values;
    QStringList positionals;

    bool has(const QString &option) const { return values.contains(option); }
    QString value(const QString &option, const QString &fallback = {}) const
    {
        return values.value(option, fallback);
    }
};

// Parses args against the options a subcommand knows. Returns the usage problem, or an empty text.
QString parseArguments(const QStringList &args, const QStringList &knownOptions, Arguments &parsed);

} // namespace kv::cli
