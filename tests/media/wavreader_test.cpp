#include <gtest/gtest.h>

#include <functional>

#include "media/wavreader.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

// A canonical 44-byte PCM header.
QByteArray wavHeader(std::uint16_t channels, std::int32_t sampleRate, std::uint16_t formatTag = 1)
{
    QByteArray b(44, '\0');
    putText(b, 0, "RIFF");
    putText(b, 8, "WAVE");
    putText(b, 12, "fmt ");
    putLe32(b, 16, 16);
    putLe16(b, 20, formatTag);
    putLe16(b, 22, channels);
    putLe32(b, 24, static_cast<std::uint32_t>(sampleRate));
    putLe16(b, 34, 16);
    putText(b, 36, "data");
    return b;
}

std::optional<MediaInfo> read(const QByteArray &head, std::int64_t size)
{
    SizedSource source(head, size);
    return readWavInfo(QStringLiteral("a.wav"), source);
}

} // namespace

TEST(WavReader, EncodedFixtures)
{
    PosixFiles files;
    // Both files are well under a second: the duration rounds to 0.
    EXPECT_EQ(ReadWavInfo(dataDir("wav"), QStringLiteral("mono-8bit-8000.wav"), files),
              row({"mono-8bit-8000.wav", "2", "0:00:00", "128", "8000", "Mono"}));
    EXPECT_EQ(ReadWavInfo(dataDir("wav"), QStringLiteral("stereo-16bit-44100.wav"), files),
              row({"stereo-16bit-44100.wav", "9", "0:00:00", "1411", "44100", "Stereo"}));
    EXPECT_FALSE(ReadWavInfo(dataDir("wav"), QStringLiteral("missing.wav"), files));
}

TEST(WavReader, RowsFromHeaders)
{
    const struct {
        const char *name;
        QByteArray head;
        std::int64_t size;
        MediaInfo expected;
    } cases[] = {
        {"one minute of CD audio", wavHeader(2, 44100), 10'584'044,
         row({"a.wav", "10336", "0:01:00", "1411", "44100", "Stereo"})},
        {"mono rate rounds up", wavHeader(1, 22050), 2'646'044,
         row({"a.wav", "2584", "0:01:00", "353", "22050", "Mono"})},
        {"six channels count as stereo", wavHeader(6, 48000), 4096,
         row({"a.wav", "4", "0:00:00", "1536", "48000", "Stereo"})},
        {"no channels count as stereo", wavHeader(0, 8000), 1024,
         row({"a.wav", "1", "0:00:00", "256", "8000", "Stereo"})},
        {"size tie 1.5 KB rounds to 2", wavHeader(1, 8000), 1536,
         row({"a.wav", "2", "0:00:00", "128", "8000", "Mono"})},
        {"size tie 2.5 KB rounds to 2", wavHeader(1, 8000), 2560,
         row({"a.wav", "2", "0:00:00", "128", "8000", "Mono"})},
        {"size tie 3.5 KB rounds to 4", wavHeader(1, 8000), 3584,
         row({"a.wav", "4", "0:00:00", "128", "8000", "Mono"})},
        // The duration comes from the rounded size: 1000 KB * 8.192 / 128 = 64 s exactly.
        {"duration from rounded size", wavHeader(1, 8000), 1'024'000,
         row({"a.wav", "1000", "0:01:04", "128", "8000", "Mono"})},
        {"sample rate 0 stops after the channel word", wavHeader(2, 0), 44,
         row({"a.wav", "0", "", "0", "", "Stereo"})},
        // The mono product is formed first, so this rate fails before any column is set.
        {"rate too large for a 16-bit bit rate", wavHeader(2, 3'000'000), 44,
         row({"a.wav", "0"})},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read(c.head, c.size), c.expected) << c.name;
}

TEST(WavReader, OnlyCanonicalPcmHeadersAreListed)
{
    const struct {
        const char *name;
        std::function<void(QByteArray &)> patch;
    } cases[] = {
        {"lower-case riff", [](QByteArray &b) { putText(b, 0, "riff"); }},
        {"RIFX", [](QByteArray &b) { putText(b, 0, "RIFX"); }},
        {"not WAVE", [](QByteArray &b) { putText(b, 8, "AVI "); }},
        {"LIST chunk first", [](QByteArray &b) { putText(b, 12, "LIST"); }},
        {"fact chunk first", [](QByteArray &b) { putText(b, 12, "fact"); }},
        {"float samples", [](QByteArray &b) { putLe16(b, 20, 3); }},
        {"extensible format", [](QByteArray &b) { putLe16(b, 20, 0xFFFE); }},
        {"truncated before the format tag", [](QByteArray &b) { b.truncate(20); }},
        {"empty file", [](QByteArray &b) { b.clear(); }},
    };
    for (const auto &c : cases) {
        QByteArray b = wavHeader(2, 44100);
        c.patch(b);
        MemoryByteSource source(b);
        EXPECT_FALSE(readWavInfo(QStringLiteral("a.wav"), source)) << c.name;
    }
}
