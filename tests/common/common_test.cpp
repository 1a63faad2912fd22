#include <gtest/gtest.h>

#include <QLocale>

#include "common/checked.h"
#include "common/clocktime.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(Rounding, TiesGoToTheEvenNeighbour)
{
    const struct { double in, out; } cases[] = {
        {2.5, 2}, {3.5, 4}, {-2.5, -2}, {-3.5, -4}, {0.5, 0}, {1.5, 2},
        {2.4999, 2}, {2.5001, 3}, {352.8, 353}, {1410.9, 1411}, {-0.4, 0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(roundHalfEven(c.in), c.out) << c.in;
    EXPECT_DOUBLE_EQ(roundHalfEven(1.25, 1), 1.2);
    EXPECT_DOUBLE_EQ(roundHalfEven(1.35, 1), 1.4);
    EXPECT_DOUBLE_EQ(roundHalfEven(1.66, 1), 1.7);
}

TEST(Checked, StoresOutOfRangeFail)
{
    EXPECT_EQ(Int16(32767).value(), 32767);
    EXPECT_THROW(Int16(32768), Failure);
    EXPECT_THROW(Int16(-32769), Failure);
    EXPECT_THROW(Int16(32767) + Int16(1), Failure);
    EXPECT_THROW(Int16(2185) * Int16(15), Failure);
    EXPECT_EQ((Int16(2184) * Int16(15)).value(), 32760);
    EXPECT_EQ((Int16(-2184) * Int16(15)).value(), -32760);
    EXPECT_THROW(Byte(-1), Failure);
    EXPECT_THROW(Byte(256), Failure);
    EXPECT_THROW(Int32(1864136) * Int32(1152), Failure);
    EXPECT_EQ((Int32(1864135) * Int32(1152)).value(), 2147483520);
    EXPECT_THROW(Int32(5) / Int32(0), Failure);
    EXPECT_EQ(Int16::fromReal(2.5).value(), 2);
    EXPECT_THROW(Int16::fromReal(32767.5), Failure); // rounds to 32768
    EXPECT_THROW(Int32::fromReal(std::numeric_limits<double>::infinity()), Failure);
    EXPECT_THROW(Int32::fromReal(std::numeric_limits<double>::quiet_NaN()), Failure);
    EXPECT_THROW(divide(1.0, 0.0), Failure);
}

TEST(Guard, KeepsWorkDoneBeforeTheFailure)
{
    int steps = 0;
    const bool finished = guarded([&] {
        ++steps;
        Int16 x = 32767;
        x += Int16(1);
        ++steps;
    });
    EXPECT_FALSE(finished);
    EXPECT_EQ(steps, 1);
    EXPECT_TRUE(guarded([] {}));
}

TEST(Texts, DurationAndSize)
{
    EXPECT_EQ(durationText(0), QStringLiteral("0:00:00"));
    EXPECT_EQ(durationText(75), QStringLiteral("0:01:15"));
    EXPECT_EQ(durationText(3725), QStringLiteral("1:02:05"));
    EXPECT_EQ(durationText(36000), QStringLiteral("10:00:00"));
    EXPECT_EQ(durationText(359999), QStringLiteral("99:59:59"));
    EXPECT_EQ(sizeInKb(1536), 2);
    EXPECT_EQ(sizeInKb(2560), 2);
    EXPECT_EQ(sizeInKb(512), 0);
    EXPECT_EQ(sizeInKb(600), 1);
    EXPECT_EQ(sizeInKb(10584044), 10336);
}

TEST(Texts, NumbersFollowTheLocale)
{
    const QLocale c(QLocale::C);
    const QLocale ru(QLocale::Russian, QLocale::Russia);
    EXPECT_EQ(shortestNumber(6.0, c), QStringLiteral("6"));
    EXPECT_EQ(shortestNumber(4.5, c), QStringLiteral("4.5"));
    EXPECT_EQ(shortestNumber(4.5, ru), QStringLiteral("4,5"));
    EXPECT_EQ(shortestNumber(-1.0, c), QStringLiteral("-1"));
    EXPECT_EQ(shortestNumber(12345.6, ru), QStringLiteral("12345,6")); // never grouped
    EXPECT_EQ(shortestNumber(-0.0, c), QStringLiteral("0"));
}

TEST(Texts, ReadingColumnsBack)
{
    EXPECT_EQ(numberFromText(QStringLiteral("128")), 128.0);
    EXPECT_THROW(numberFromText(QString()), Failure);
    EXPECT_THROW(numberFromText(QStringLiteral("~128")), Failure);
    EXPECT_EQ(secondsFromDurationText(QStringLiteral("1:02:05")), 3725);
    EXPECT_THROW(secondsFromDurationText(QStringLiteral("")), Failure);
    EXPECT_THROW(secondsFromDurationText(QStringLiteral("0:01")), Failure);
    EXPECT_THROW(secondsFromDurationText(QStringLiteral("0:00:40000")), Failure);
}

TEST(Clock, ElapsedCrossesMidnight)
{
    EXPECT_EQ(elapsedSeconds(100.0, 40.0), 60);
    EXPECT_EQ(elapsedSeconds(10.0, 86390.0), 20);
    EXPECT_EQ(elapsedSeconds(10.5, 10.0), 0); // 0.5 ties to even
}
