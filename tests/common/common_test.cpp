#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include <QLocale>

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "support/qtprinters.h"

using namespace kv;

// Elapsed time past midnight is in the conversion run's tests, durations in the readers' rows.
TEST(Rounding, TiesGoToTheEvenNeighbour)
{
    const struct { double in, out; } cases[] = {{2.5, 2}, {3.5, 4}, {-2.5, -2}, {-3.5, -4}, {2.4999, 2}, {2.5001, 3}};
    for (const auto &c : cases)
        EXPECT_EQ(roundHalfEven(c.in), c.out) << c.in;
    EXPECT_DOUBLE_EQ(roundHalfEven(1.25, 1), 1.2);
    EXPECT_DOUBLE_EQ(roundHalfEven(1.35, 1), 1.4);
}

TEST(Checked, EveryStoreIsRangeChecked)
{
    EXPECT_EQ((Int16(32767) + Int16(-32768)).value(), -1);
    EXPECT_EQ(Int16::fromReal(32766.5).value(), 32766);
    EXPECT_EQ(Int16::fromReal(-32768.5).value(), -32768); // the least value is in range
    const std::function<void()> failures[] = {
        [] { (void)(Int16(32767) + Int16(1)); }, [] { Int16(-32769); },
        [] { Byte(256); },                    [] { Byte(-1); },
        [] { Int32(5) / Int32(0); },          [] { Int16::fromReal(32767.5); },
        [] { Int32::fromReal(std::nan("")); },         [] { divide(1.0, 0.0); },
    };
    for (const auto &f : failures)
        EXPECT_THROW(f(), Failure) << &f - failures;
}

TEST(Texts, NumbersAreNeverGrouped)
{
    const QLocale ru(QLocale::Russian, QLocale::Russia);
    EXPECT_EQ(shortestNumber(12345.6, ru), QStringLiteral("12345,6")); // never grouped
    EXPECT_EQ(shortestNumber(-0.0, QLocale::c()), QStringLiteral("0"));
}
