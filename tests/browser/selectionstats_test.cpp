#include <gtest/gtest.h>

#include "browser/selectionstats.h"
#include "settings/encodersettings.h"
#include "support/qtprinters.h"
#include "ui/uitext.h"

using namespace kv;

namespace {

FileRow row(const char *kb, const char *kbps, bool checked = true)
{
    return FileRow{MediaInfo{{QStringLiteral("x.wav"), QString::fromUtf8(kb), {}, QString::fromUtf8(kbps)}}, checked};
}

// Elements 3, 4, 9, 10, 11 joined by "|" after one refresh of labels that all start as "old".
QString refreshed(const std::vector<FileRow> &rows, bool makeAll, const EncoderSettings &settings)
{
    SelectionLabels labels;
    labels.lblInfo.fill(QStringLiteral("old"));
    RefreshSelectionStats(rows, makeAll, settings, englishTexts(), QLocale::c(), labels);
    return QStringList{labels[3], labels[4], labels[9], labels[10], labels[11]}.join(QLatin1Char('|'));
}

} // namespace

// The defaults over ticked rows are in the window's statistics test.
TEST(SelectionStats, ForecastScalesBySourceAndExpectedBitrates)
{
    EncoderSettings custom;
    custom.mp3.mode = static_cast<int>(Mp3Mode::CommandLine); // 224
    custom.ogg.qualityTenths = 200;                          // no rule applies: 0, so no scaling
    custom.mpc.mode = static_cast<int>(MpcMode::Quality);    // quality 6.0: 210
    const std::vector<FileRow> mixed{row("1024", "128"), row("2048", "256", false), row("1024", "128", false)};
    const struct { std::vector<FileRow> rows; bool makeAll; const char *labels; EncoderSettings settings = {}; } cases[] = {
        // Unticked rows are not even read, so a broken one does not stop the refresh.
        {{row("10240", "1411", false), row("", "", false)}, false, "0|0 MB|0 MB|0 MB|0 MB"},
        {{row("1024", "~192")}, false, "1|1 MB|1.2 MB|1 MB|1.2 MB"}, // 1.25 MB as Musepack is a tie
        {{row("1024", "448")}, false, "1|1 MB|0.5 MB|1 MB|0.5 MB", custom},
        {mixed, true, "3|4 MB|5.5 MB|4.5 MB|5.6 MB"},
        // Bit rates summing to 0 divide by zero: count and size are new, the forecasts old.
        {{row("1024", "0")}, false, "1|1 MB|old|old|old"},
        {{row("1024", "128"), row("10", "~")}, false, "old|old|old|old|old"},
        {std::vector<FileRow>(32768, row("1", "128", false)), false, "old|old|old|old|old"}, // beyond 16 bits
        // Summed in single precision as the status bar's total is: 1 KB steps vanish beyond 16 GB.
        {[] { std::vector<FileRow> r(61, row("1", "128")); r[0] = row("16777216", "128"); return r; }(), true,
         "61|16384 MB|29952 MB|24576 MB|30720 MB"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(refreshed(c.rows, c.makeAll, c.settings), QLatin1String(c.labels)) << &c - cases;
}
