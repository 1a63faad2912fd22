#include "player/playercommand.h"

#include "platform/processes.h"

namespace kv {

std::optional<PlayerDecoder> playerDecoder(const QString &pattern)
{
    static const struct
    {
        const char *pattern, *program, *options;
    } table[] = {
        {"*.mp3", "madplay", " -Q "},
        {"*.ogg", "oggdec", " -p "},
        {"*.mpc", "mppdec", " --silent "},
    };
    for (const auto &entry : table) {
        if (pattern == QLatin1String(entry.pattern))
            return PlayerDecoder{QLatin1String(entry.program), QLatin1String(entry.options)};
    }
    return std::nullopt;
}

QString playerCommandLine(const QString &programFolder, const PlayerDecoder &decoder, const QString &path)
{
    return quoteArgument(programFolder + QStringLiteral("codec/") + decoder.program) + decoder.options
           + quoteArgument(path);
}

QString soundCommandLine(const QString &path)
{
    return quoteArgument(QStringLiteral("/usr/bin/aplay")) + QStringLiteral(" -q ") + quoteArgument(path);
}

} // namespace kv
