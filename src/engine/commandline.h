#pragma once

#include <QString>

namespace kv {

// Where one job reads and writes: both in the listed folder, the target named after the listed
// file without its four-character extension.
struct JobPaths
{
    QString source;
    QString target;
};

// folder ends in "/"; fileName is the name as listed (the source is that very file, since names
// here are case-sensitive).
JobPaths jobPaths(const QString &folder, const QString &fileName, const QString &targetExtension);

// The codec's command line: quoted codec path, options, quoted source, quoted target, one blank
// between each (so empty options leave two blanks). A double quote in a path is escaped.
QString buildCommandLine(const QString &programFolder, const QString &codec, const QString &options,
                         const JobPaths &paths);

} // namespace kv
