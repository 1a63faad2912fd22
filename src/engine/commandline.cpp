#include "engine/commandline.h"

#include "platform/processes.h"

namespace kv {

JobPaths jobPaths(const QString &folder, const QString &fileName, const QString &targetExtension)
{
    return {folder + fileName, folder + fileName.left(fileName.size() - 4) + targetExtension};
}

QString buildCommandLine(const QString &programFolder, const QString &codec, const QString &options,
                         const JobPaths &paths)
{
    const QChar blank = QLatin1Char(' ');
    return quoteArgument(programFolder + QStringLiteral("codec/") + codec) + blank + options + blank
           + quoteArgument(paths.source) + blank + quoteArgument(paths.target);
}

} // namespace kv
