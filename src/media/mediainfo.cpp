#include "media/mediainfo.h"

namespace kv {

namespace {

struct FormatNames
{
    AudioFormat format;
    const char *pattern;
    const char *extension;
};

constexpr FormatNames kFormats[] = {
    {AudioFormat::Wav, "*.wav", ".wav"},
    {AudioFormat::Mp3, "*.mp3", ".mp3"},
    {AudioFormat::Ogg, "*.ogg", ".ogg"},
    {AudioFormat::Mpc, "*.mpc", ".mpc"},
};

const FormatNames &namesOf(AudioFormat format)
{
    for (const auto &n : kFormats)
        if (n.format == format)
            return n;
    return kFormats[0]; // unreachable: every enumerator is in the table
}

} // namespace

std::optional<AudioFormat> formatFromPattern(const QString &pattern)
{
    for (const auto &n : kFormats)
        if (pattern == QLatin1String(n.pattern))
            return n.format;
    return std::nullopt;
}

QString patternOf(AudioFormat format)
{
    return QLatin1String(namesOf(format).pattern);
}

QString extensionOf(AudioFormat format)
{
    return QLatin1String(namesOf(format).extension);
}

} // namespace kv
