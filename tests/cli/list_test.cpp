#include <gtest/gtest.h>

#include <QRegularExpression>

#include "clifixtures.h"
#include "support/qtprinters.h"

// Bit rates that sum to 0 end the statistics before the forecasts: those lines are left out, not
// printed with an empty value.
TEST(ListStatistics, EndedEarlyPrintNoForecastLines)
{
    QTemporaryDir dir;
    // Under 512 bytes is 0 KB, so the row reads "~0" kbps beside a duration the totals accept.
    write(dir.filePath(QStringLiteral("x.mpc")), QByteArray("MP+\x07\x28", 5) + QByteArray(95, '\0')); // 40 frames
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--kind"), QStringLiteral("mpc"), dir.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("\nx.mpc\t0\t0:00:01\t~0\t44100\tn/a\n"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.endsWith(QStringLiteral("Average bitrate: 0 kbps\n\nSelected: 1\nSize: 0 MB\n"))) << r.out.toStdString();
}
