#include <gtest/gtest.h>

#include <QString>

#include "common/failure.h"
#include "media/headerbytes.h"
#include "mediatesting.h"
#include "platform/bytesource.h"

using namespace kv;

namespace {

// The byte read the slow way the readers stand for: hexadecimal text without a leading zero,
// each digit to four bits through the table, a missing second digit as 0.
std::uint8_t byteThroughText(int b)
{
    static const char *const nibbleBits[16] = {"0000", "0001", "0010", "0011", "0100", "0101",
                                               "0110", "0111", "1000", "1001", "1010", "1011",
                                               "1100", "1101", "1110", "1111"};
    const QString hex = QString::number(b, 16).toUpper();
    QString bits;
    for (int i = 0; i < 2; ++i)
        bits += QLatin1String(i < hex.size() ? nibbleBits[hex.mid(i, 1).toInt(nullptr, 16)] : "0000");
    return static_cast<std::uint8_t>(bits.toInt(nullptr, 2));
}

class FailingSource : public ByteSource
{
public:
    std::int64_t size() const override { return 100; }
    std::int64_t read(std::int64_t, char *, std::int64_t) override { return -1; }
};

} // namespace

TEST(HeaderBytes, HexTextValueMatchesTheTextReadingForEveryByte)
{
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(hexTextValue(static_cast<std::uint8_t>(b)), byteThroughText(b)) << b;
    EXPECT_EQ(hexTextValue(0x04), 0x40); // a fourth MP3 byte of 4 reads as joint stereo
}

TEST(HeaderBytes, ShortRecordIsZeroFilledAndFailedReadFails)
{
    MemoryByteSource three(QByteArray("MP+"));
    const auto r = readRecord<8>(three);
    EXPECT_TRUE(hasTag(r, 0, "MP+"));
    EXPECT_EQ(le32(r, 3), 0u);
    EXPECT_EQ(le32(r, 4), 0u);

    FailingSource failing;
    EXPECT_THROW(readRecord<4>(failing), Failure);
}

TEST(HeaderBytes, LittleEndianFieldsAndTags)
{
    const std::array<std::uint8_t, 8> r = {'f', 'm', 't', ' ', 0x34, 0x12, 0xFF, 0xFF};
    EXPECT_TRUE(hasTag(r, 0, "fmt "));
    EXPECT_FALSE(hasTag(r, 0, "fmt\0"));
    EXPECT_FALSE(hasTag(r, 0, "FMT "));
    EXPECT_EQ(le16(r, 4), 0x1234);
    EXPECT_EQ(le32(r, 4), 0xFFFF1234u);
}
