#include <gtest/gtest.h>

#include "media/mediainfo.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(AudioFormat, PatternsAndExtensionsRoundTrip)
{
    const struct { AudioFormat format; const char *pattern, *extension; } cases[] = {
        {AudioFormat::Wav, "*.wav", ".wav"},
        {AudioFormat::Mp3, "*.mp3", ".mp3"},
        {AudioFormat::Ogg, "*.ogg", ".ogg"},
        {AudioFormat::Mpc, "*.mpc", ".mpc"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(patternOf(c.format), QLatin1String(c.pattern));
        EXPECT_EQ(extensionOf(c.format), QLatin1String(c.extension));
        EXPECT_EQ(formatFromPattern(QLatin1String(c.pattern)), c.format) << c.pattern;
    }
}

TEST(AudioFormat, PatternComparisonIsExact)
{
    for (const char *p : {"*.WAV", "*.Mp3", "*.ogg ", " *.mpc", "*.wave", ".wav", "", "*.*"})
        EXPECT_FALSE(formatFromPattern(QLatin1String(p)).has_value()) << p;
}
