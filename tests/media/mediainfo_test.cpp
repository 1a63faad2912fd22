#include <gtest/gtest.h>

#include "media/headerbytes.h"
#include "media/mediainfo.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(AudioFormat, PatternsAreExactAndRoundTrip)
{
    for (AudioFormat f : {AudioFormat::Wav, AudioFormat::Mp3, AudioFormat::Ogg, AudioFormat::Mpc}) {
        EXPECT_EQ(formatFromPattern(patternOf(f)), f);
        EXPECT_EQ(QLatin1Char('*') + extensionOf(f), patternOf(f));
    }
    EXPECT_EQ(patternOf(AudioFormat::Mpc), QStringLiteral("*.mpc"));
    for (const char *p : {"*.WAV", "*.ogg ", "*.wave", "", "*.*"})
        EXPECT_FALSE(formatFromPattern(QLatin1String(p))) << p;
}

// The byte the slow way: hexadecimal text without a leading zero, each digit to four bits
// through the table, a missing second digit as "0000".
TEST(HeaderBytes, HexTextValueMatchesTheTextReadingForEveryByte)
{
    static const char *const nibbleBits[16] = {"0000", "0001", "0010", "0011", "0100", "0101",
                                               "0110", "0111", "1000", "1001", "1010", "1011",
                                               "1100", "1101", "1110", "1111"};
    for (int b = 0; b < 256; ++b) {
        const QString hex = QString::number(b, 16).toUpper();
        QString bits;
        for (int i = 0; i < 2; ++i)
            bits += QLatin1String(i < hex.size() ? nibbleBits[hex.mid(i, 1).toInt(nullptr, 16)] : "0000");
        EXPECT_EQ(hexTextValue(static_cast<std::uint8_t>(b)), bits.toInt(nullptr, 2)) << b;
    }
}
