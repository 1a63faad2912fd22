#include "media/mediainfo.h"

namespace kv {

namespace {

struct FormatNames
{
    AudioFormat format;
    const char *pattern;
};

constexpr FormatNames kFormats[] = {
    {AudioFormat::Wav, "*.wav"},
    {AudioFormat::Mp3, "*.mp3"},
    {AudioFormat::Ogg, "*.ogg"},
    {AudioFormat::Mpc, "*.mpc"},
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

} // namespace kv
