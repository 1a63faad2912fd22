#include <gtest/gtest.h>

#include "media/mpcreader.h"
#include "mediatesting.h"

using namespace kv;
using namespace kv::testing;

namespace {

// Stream version 7 header; no tool at hand writes this version any more.
QByteArray mpcHeader(std::uint32_t frames, std::uint8_t rateByte = 0x00)
{
    QByteArray b(25, '\0');
    putText(b, 0, "MP+");
    b[3] = 0x17;
    putLe32(b, 4, frames);
    b[10] = static_cast<char>(rateByte);
    b[11] = 0x1F;
    return b;
}

std::optional<MediaInfo> read(const QByteArray &head, std::int64_t size)
{
    SizedSource source(head, size);
    return readMpcInfo(QStringLiteral("a.mpc"), source);
}

} // namespace

TEST(MpcReader, RowsFromHeaders)
{
    const struct {
        const char *name;
        QByteArray head;
        std::int64_t size;
        MediaInfo expected;
    } cases[] = {
        {"ten thousand frames", mpcHeader(10'000), 4'096'000,
         row({"a.mpc", "4000", "0:04:21", "~125", "44100", "n/a"})},
        {"index 01", mpcHeader(10'000, 0x11), 4'096'000,
         row({"a.mpc", "4000", "0:04:00", "~137", "48000", "n/a"})},
        {"index 10", mpcHeader(10'000, 0x12), 4'096'000,
         row({"a.mpc", "4000", "0:05:05", "~108", "37800", "n/a"})},
        {"index 11", mpcHeader(10'000, 0x23), 4'096'000,
         row({"a.mpc", "4000", "0:06:00", "~91", "32000", "n/a"})},
        // Below 16 the byte has one hexadecimal digit, so its low bits are never the index.
        {"rate byte below 16 gives index 00", mpcHeader(10'000, 0x02), 4'096'000,
         row({"a.mpc", "4000", "0:04:21", "~125", "44100", "n/a"})},
        {"largest frame count whose sample count fits", mpcHeader(1'864'135), 700'000'000,
         row({"a.mpc", "683594", "13:31:36", "~115", "44100", "n/a"})},
        {"sample count overflows", mpcHeader(1'864'136), 700'000'000, row({"a.mpc", "683594"})},
        {"frame count above the signed range", mpcHeader(0x80000000u), 4096, row({"a.mpc", "4"})},
        {"no frames", mpcHeader(0), 4096, row({"a.mpc", "4"})},
        {"bare signature", QByteArray("MP+"), 3, row({"a.mpc", "0"})},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read(c.head, c.size), c.expected) << c.name;
}

TEST(MpcReader, OnlyTheVersion7SignatureIsListed)
{
    QByteArray lower = mpcHeader(10'000);
    putText(lower, 0, "mp+");
    for (const QByteArray &b : {QByteArray("MPCKSH\x0b", 7), lower, QByteArray("MP"), QByteArray()}) {
        MemoryByteSource source(b);
        EXPECT_FALSE(readMpcInfo(QStringLiteral("a.mpc"), source)) << b.toHex().toStdString();
    }
}
