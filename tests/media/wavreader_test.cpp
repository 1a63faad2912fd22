#include <gtest/gtest.h>

#include "media/wavreader.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

QByteArray wavHeader(std::uint16_t channels, std::int32_t sampleRate)
{
    QByteArray b = QByteArrayLiteral("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0") + QByteArray(22, '\0');
    put(b, 22, channels, 2);
    put(b, 24, static_cast<std::uint32_t>(sampleRate));
    b.replace(36, 4, "data");
    return b;
}

} // namespace

TEST(WavReader, Rows)
{
    PosixFiles files;
    EXPECT_EQ(ReadWavInfo(dataDir("wav"), QStringLiteral("mono-8bit-8000.wav"), files),
              row({"mono-8bit-8000.wav", "2", "0:00:00", "128", "8000", "Mono"}));
    EXPECT_EQ(ReadWavInfo(dataDir("wav"), QStringLiteral("stereo-16bit-44100.wav"), files),
              row({"stereo-16bit-44100.wav", "9", "0:00:00", "1411", "44100", "Stereo"}));

    const struct { std::uint16_t channels; std::int32_t rate; std::int64_t size; MediaInfo expected; } cases[] = {
        {2, 44100, 10'584'044, row({"a", "10336", "0:01:00", "1411", "44100", "Stereo"})},
        {1, 22050, 2'646'044, row({"a", "2584", "0:01:00", "353", "22050", "Mono"})},
        {6, 48000, 4096, row({"a", "4", "0:00:00", "1536", "48000", "Stereo"})},
        {1, 8000, 1536, row({"a", "2", "0:00:00", "128", "8000", "Mono"})}, // 1.5 KB
        {1, 8000, 2560, row({"a", "2", "0:00:00", "128", "8000", "Mono"})}, // 2.5 KB
        {1, 8000, 1'024'000, row({"a", "1000", "0:01:04", "128", "8000", "Mono"})},
        {2, 0, 44, row({"a", "0", "", "0", "", "Stereo"})},
        // The mono product is formed first and overflows before any other column is set.
        {2, 3'000'000, 44, row({"a", "0"})},
    };
    for (const auto &c : cases) {
        SizedSource source(wavHeader(c.channels, c.rate), c.size);
        EXPECT_EQ(readWavInfo(QStringLiteral("a"), source), c.expected) << c.rate << " Hz, " << c.size << " bytes";
    }
}

TEST(WavReader, OnlyCanonicalPcmHeadersAreListed)
{
    const struct { int at; QByteArray patch; } cases[] = {
        {0, "riff"}, {8, "AVI "}, {12, "LIST"}, {12, "fact"}, {20, QByteArray("\x03\0", 2)},
        {20, "\xFE\xFF"},
    };
    for (const auto &c : cases) {
        MemoryByteSource source(wavHeader(2, 44100).replace(c.at, c.patch.size(), c.patch));
        EXPECT_FALSE(readWavInfo(QStringLiteral("a"), source)) << c.patch.constData();
    }
    for (int length : {0, 20}) {
        MemoryByteSource source(wavHeader(2, 44100).left(length));
        EXPECT_FALSE(readWavInfo(QStringLiteral("a"), source)) << length;
    }
}
