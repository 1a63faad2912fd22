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
    QByteArray b = QByteArrayLiteral("OggS\0\x02") + QByteArray(20, '\0') + "\x01\x1e\x01vorbis"
                   + QByteArray(23, '\0');
    b[39] = static_cast<char>(channels);
    put(b, 40, sampleRate);
    put(b, 48, nominal);
    return b;
}

} // namespace

TEST(OggReader, Rows)
{
    PosixFiles files;
    EXPECT_EQ(ReadOggInfo(dataDir("ogg"), QStringLiteral("q-nominal160.ogg"), files),
              row({"q-nominal160.ogg", "7", "0:00:00", "~160", "44100", "2"}));
    EXPECT_EQ(ReadOggInfo(dataDir("ogg"), QStringLiteral("mono.ogg"), files),
              row({"mono.ogg", "4", "0:00:01", "~48", "44100", "1"}));

    const struct { std::uint32_t nominal; std::int64_t size; MediaInfo expected; } cases[] = {
        // No 1.024 factor: 1024 KB * 8 / 128 = 64 s.
        {128000, 1'048'576, row({"a", "1024", "0:01:04", "~128", "48000", "2"})},
        // 2.5 kbps shows as 2, but the duration uses 2.5: 80 / 2.5 = 32 s.
        {2500, 10 * 1024, row({"a", "10", "0:00:32", "~2", "48000", "2"})},
        {0, 5000, row({"a", "5", "", "~0", "48000", "2"})},
        {0xFFFFFFFF, 100'000'000, row({"a", "97656", "0:00:00", "~4294967", "48000", "2"})},
    };
    for (const auto &c : cases) {
        SizedSource source(oggHeader(2, 48000, c.nominal), c.size);
        EXPECT_EQ(readOggInfo(QStringLiteral("a"), source), c.expected) << c.nominal;
    }
}

TEST(OggReader, OnlyVorbisOnAOneSegmentFirstPage)
{
    QByteArray twoSegments = oggHeader(2, 44100, 128000).insert(27, '\x01');
    twoSegments[26] = 2;
    for (const QByteArray &b : {oggHeader(2, 44100, 0).replace(0, 4, "oggs"), oggHeader(2, 44100, 0).replace(28, 8, "OpusHead"),
                                oggHeader(2, 44100, 0).replace(29, 1, "V"), twoSegments, QByteArray("OggS")}) {
        MemoryByteSource source(b);
        EXPECT_FALSE(readOggInfo(QStringLiteral("a"), source)) << b.left(36).toHex().toStdString();
    }
}
