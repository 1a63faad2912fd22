#include <gtest/gtest.h>

#include "browser/selectionstats.h"
#include "settings/encodersettings.h"
#include "support/qtprinters.h"
#include "ui/uitext.h"

using namespace kv;

namespace {

FileRow row(const char *kb, const char *kbps, bool checked = true)
{
    FileRow r{MediaInfo{{QStringLiteral("x.wav"), QString::fromUtf8(kb), {}, QString::fromUtf8(kbps)}}};
    r.checked = checked;
    return r;
}

// Elements 3, 4, 9, 10, 11 joined by "|" after one refresh of labels that all start as "old".
QString refreshed(const std::vector<FileRow> &rows, bool makeAll = false, const EncoderSettings &settings = {},
                  const QLocale &locale = QLocale::c())
{
    SelectionLabels labels;
    labels.lblInfo.fill(QStringLiteral("old"));
    RefreshSelectionStats(rows, makeAll, settings, englishTexts(), locale, labels);
    return QStringList{labels[3], labels[4], labels[9], labels[10], labels[11]}.join(QLatin1Char('|'));
}

} // namespace

TEST(SelectionStats, ForecastScalesBySourceAndExpectedBitrates)
{
    const QString zeros = QStringLiteral("0|0 MB|0 MB|0 MB|0 MB");
    EXPECT_EQ(refreshed({}), zeros);
    EXPECT_EQ(refreshed({}, true), zeros);
    // Unticked rows are not even read, so a broken one does not stop the refresh.
    EXPECT_EQ(refreshed({row("10240", "1411", false), row("", "", false)}), zeros);
    // The defaults expect 234 (MP3), 192 (Ogg) and 240 (Musepack) kbps.
    EXPECT_EQ(refreshed({row("10240", "1411")}), QStringLiteral("1|10 MB|1.7 MB|1.4 MB|1.7 MB"));
    // "~192" counts as 192; 1.25 MB as Musepack is a tie.
    EXPECT_EQ(refreshed({row("1024", "~192")}), QStringLiteral("1|1 MB|1.2 MB|1 MB|1.2 MB"));
    EXPECT_EQ(refreshed({row("1536", "1411")}, false, {}, QLocale(QLocale::German)),
              QStringLiteral("1|1,5 MB|0,2 MB|0,2 MB|0,3 MB"));
}

TEST(SelectionStats, MakeAllCountsEveryRow)
{
    const std::vector<FileRow> rows{row("1024", "128"), row("2048", "256", false), row("1024", "128", false)};
    EXPECT_EQ(refreshed(rows, false), QStringLiteral("1|1 MB|1.8 MB|1.5 MB|1.9 MB"));
    EXPECT_EQ(refreshed(rows, true), QStringLiteral("3|4 MB|5.5 MB|4.5 MB|5.6 MB"));
}

TEST(SelectionStats, EstimatesFollowTheEncoderSettings)
{
    EncoderSettings settings;
    settings.mp3.mode = static_cast<int>(Mp3Mode::CommandLine); // 224
    settings.ogg.qualityTenths = 200;                          // no rule applies: 0, so no scaling
    settings.mpc.mode = static_cast<int>(MpcMode::Quality);    // quality 6.0: 210
    EXPECT_EQ(refreshed({row("1024", "448")}, false, settings), QStringLiteral("1|1 MB|0.5 MB|1 MB|0.5 MB"));
}

TEST(SelectionStats, FailuresKeepTheLabelsNotYetWritten)
{
    // Bit rates summing to 0 divide by zero: count and size are new, the forecasts old.
    EXPECT_EQ(refreshed({row("1024", "0")}), QStringLiteral("1|1 MB|old|old|old"));
    const QString untouched = QStringLiteral("old|old|old|old|old");
    for (const FileRow &bad : {row("", "128"), row("10", ""), row("10", "~"), row("x", "1")})
        EXPECT_EQ(refreshed({row("1024", "128"), bad}), untouched);
    std::vector<FileRow> many(32768, row("1", "128", false)); // more rows than 16 bits count
    EXPECT_EQ(refreshed(many), untouched);
}
