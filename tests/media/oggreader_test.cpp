#include <gtest/gtest.h>

#include "media/oggreader.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

// A first page with one lacing value, then the Vorbis identification header.
QByteArray oggHeader(std::uint8_t channels, std::uint32_t sampleRate, std::uint32_t nominal)
{
    QByteArray b(58, '\0');
    putText(b, 0, "OggS");
    b[5] = 0x02;
    b[26] = 1;
    b[27] = 30;
    b[28] = 1;
    putText(b, 29, "vorbis");
    b[39] = static_cast<char>(channels);
    putLe32(b, 40, sampleRate);
    putLe32(b, 48, nominal);
    return b;
}

std::optional<MediaInfo> read(const QByteArray &head, std::int64_t size)
{
    SizedSource source(head, size);
    return readOggInfo(QStringLiteral("a.ogg"), source);
}

} // namespace

TEST(OggReader, EncodedFixtures)
{
    PosixFiles files;
    // Channel column is the count; nominal 160000 from the managed encoder.
    EXPECT_EQ(ReadOggInfo(dataDir("ogg"), QStringLiteral("q-nominal160.ogg"), files),
              row({"q-nominal160.ogg", "7", "0:00:00", "~160", "44100", "2"}));
    // 4 KB * 8 / 48 kbps = 0.67 s.
    EXPECT_EQ(ReadOggInfo(dataDir("ogg"), QStringLiteral("mono.ogg"), files),
              row({"mono.ogg", "4", "0:00:01", "~48", "44100", "1"}));
}

TEST(OggReader, RowsFromHeaders)
{
    const struct {
        const char *name;
        QByteArray head;
        std::int64_t size;
        MediaInfo expected;
    } cases[] = {
        // No 1.024 factor: 1024 KB * 8 / 128 = 64 s.
        {"one megabyte at 128 kbps", oggHeader(2, 44100, 128000), 1'048'576,
         row({"a.ogg", "1024", "0:01:04", "~128", "44100", "2"})},
        {"the duration uses the unrounded rate", oggHeader(1, 22050, 2500), 10 * 1024,
         row({"a.ogg", "10", "0:00:32", "~2", "22050", "1"})},
        {"rate tie rounds to even upwards", oggHeader(6, 48000, 3500), 7 * 1024,
         row({"a.ogg", "7", "0:00:16", "~4", "48000", "6"})},
        {"nominal rate 0 leaves the duration empty", oggHeader(2, 44100, 0), 5000,
         row({"a.ogg", "5", "", "~0", "44100", "2"})},
        {"unset nominal rate is unsigned", oggHeader(2, 44100, 0xFFFFFFFF), 100'000'000,
         row({"a.ogg", "97656", "0:00:00", "~4294967", "44100", "2"})},
        {"all four rate bytes are unsigned", oggHeader(255, 0xFFFFFFFF, 128000), 1024,
         row({"a.ogg", "1", "0:00:00", "~128", "4294967295", "255"})},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read(c.head, c.size), c.expected) << c.name;
}

TEST(OggReader, OnlyVorbisOnAOneSegmentFirstPage)
{
    QByteArray lower = oggHeader(2, 44100, 128000);
    putText(lower, 0, "oggs");
    QByteArray opus = oggHeader(2, 48000, 0);
    putText(opus, 28, "OpusHead");
    QByteArray capital = oggHeader(2, 44100, 128000);
    putText(capital, 29, "Vorbis");
    // A second lacing value shifts the packet by one byte.
    QByteArray twoSegments = oggHeader(2, 44100, 128000);
    twoSegments.insert(27, '\x01');
    twoSegments[26] = 2;
    for (const QByteArray &b : {lower, opus, capital, twoSegments, QByteArray("OggS"), QByteArray()}) {
        MemoryByteSource source(b);
        EXPECT_FALSE(readOggInfo(QStringLiteral("a.ogg"), source)) << b.toHex().toStdString();
    }
}
