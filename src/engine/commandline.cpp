#include "engine/commandline.h"

namespace kv {

JobPaths jobPaths(const QString &folder, const QString &fileName, const QString &targetExtension)
{
    return {folder + fileName, folder + fileName.left(fileName.size() - 4) + targetExtension};
}

QString buildCommandLine(const QString &programFolder, const QString &codec, const QString &options,
                         const JobPaths &paths)
{
    const QChar q = QLatin1Char('"');
    const QChar blank = QLatin1Char(' ');
    return q + programFolder + QStringLiteral("codec/") + codec + q + blank + options + blank + q + paths.source + q
           + blank + q + paths.target + q;
}

} // namespace kv
