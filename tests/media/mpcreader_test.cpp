#include <gtest/gtest.h>

#include "media/mpcreader.h"
#include "mediatesting.h"

using namespace kv;
using namespace kv::testing;

namespace {

// Stream version 7: no tool at hand writes it any more.
QByteArray mpcHeader(std::uint32_t frames, std::uint8_t rateByte = 0x00)
{
    QByteArray b = QByteArrayLiteral("MP+\x17") + QByteArray(21, '\0');
    put(b, 4, frames);
    b[10] = static_cast<char>(rateByte);
    return b;
}

} // namespace

TEST(MpcReader, Rows)
{
    const struct { std::uint32_t frames; std::uint8_t rateByte; std::int64_t size; MediaInfo expected; } cases[] = {
        {10'000, 0x00, 4'096'000, row({"a", "4000", "0:04:21", "~125", "44100", "n/a"})},
        {10'000, 0x11, 4'096'000, row({"a", "4000", "0:04:00", "~137", "48000", "n/a"})},
        {10'000, 0x12, 4'096'000, row({"a", "4000", "0:05:05", "~108", "37800", "n/a"})},
        {10'000, 0x23, 4'096'000, row({"a", "4000", "0:06:00", "~91", "32000", "n/a"})},
        // Below 16 the byte has no second hexadecimal digit: index "00", not "10".
        {10'000, 0x02, 4'096'000, row({"a", "4000", "0:04:21", "~125", "44100", "n/a"})},
        // The sample count is 32-bit: the largest frame count that fits, then one more.
        {1'864'135, 0x00, 700'000'000, row({"a", "683594", "13:31:36", "~115", "44100", "n/a"})},
        {1'864'136, 0x00, 700'000'000, row({"a", "683594"})},
        {0x80000000u, 0x00, 4096, row({"a", "4"})},
        {0, 0x00, 4096, row({"a", "4"})},
    };
    for (const auto &c : cases) {
        SizedSource source(mpcHeader(c.frames, c.rateByte), c.size);
        EXPECT_EQ(readMpcInfo(QStringLiteral("a"), source), c.expected) << c.frames << " frames";
    }
}

TEST(MpcReader, OnlyTheVersion7SignatureIsListed)
{
    for (const QByteArray &b : {QByteArrayLiteral("MPCKSH\x0b"), mpcHeader(10).replace(0, 3, "mp+"), QByteArray("MP")}) {
        MemoryByteSource source(b);
        EXPECT_FALSE(readMpcInfo(QStringLiteral("a"), source)) << b.constData();
    }
}
