#include <gtest/gtest.h>

#include "browser/selectionstats.h"
#include "settings/encodersettings.h"
#include "support/qtprinters.h"
#include "ui/uitext.h"

using namespace kv;

namespace {

FileRow row(const char *kb, const char *kbps, bool checked)
{
    FileRow r;
    r.info[MediaInfo::Name] = QStringLiteral("x.wav");
    r.info[MediaInfo::SizeKb] = QString::fromUtf8(kb);
    r.info[MediaInfo::Bitrate] = QString::fromUtf8(kbps);
    r.checked = checked;
    return r;
}

// Elements 3, 4, 9, 10, 11 after one refresh of labels that all start as "old".
QStringList refreshed(const std::vector<FileRow> &rows, bool makeAll, const EncoderSettings &settings = {},
                      const QLocale &locale = QLocale::c(), bool *finished = nullptr)
{
    SelectionLabels labels;
    labels.lblInfo.fill(QStringLiteral("old"));
    const bool done = RefreshSelectionStats(rows, makeAll, settings, englishTexts(), locale, labels);
    if (finished)
        *finished = done;
    return {labels[3], labels[4], labels[9], labels[10], labels[11]};
}

QStringList shown(const char *count, const char *size, const char *mp3, const char *ogg, const char *mpc)
{
    return {QString::fromUtf8(count), QString::fromUtf8(size), QString::fromUtf8(mp3), QString::fromUtf8(ogg),
            QString::fromUtf8(mpc)};
}

} // namespace

TEST(SelectionStats, NothingSelectedShowsZeros)
{
    const QStringList zeros = shown("0", "0 MB", "0 MB", "0 MB", "0 MB");
    EXPECT_EQ(refreshed({}, false), zeros);
    EXPECT_EQ(refreshed({}, true), zeros);
    EXPECT_EQ(refreshed({row("10240", "1411", false), row("20", "128", false)}, false), zeros);
    // Unticked rows are not even read: a broken one does not stop the refresh.
    EXPECT_EQ(refreshed({row("", "", false)}, false), zeros);
}

TEST(SelectionStats, ForecastScalesBySourceAndExpectedBitrates)
{
    // Defaults expect 234 (MP3), 192 (Ogg), 240 (Musepack) kbps.
    EXPECT_EQ(refreshed({row("10240", "1411", true)}, false), shown("1", "10 MB", "1.7 MB", "1.4 MB", "1.7 MB"));
    // "~192" counts as 192: 1 MB at 192 kbps is 1.21875 MB as MP3, 1 MB as Ogg, 1.25 MB (a tie) as Musepack.
    EXPECT_EQ(refreshed({row("1024", "~192", true)}, false), shown("1", "1 MB", "1.2 MB", "1 MB", "1.2 MB"));
    // The average of the selection's bit rates is what is compared.
    EXPECT_EQ(refreshed({row("1024", "128", true), row("1024", "256", true)}, false),
              shown("2", "2 MB", "2.4 MB", "2 MB", "2.5 MB"));
    EXPECT_EQ(refreshed({row("1536", "1411", true)}, false, {}, QLocale(QLocale::German)),
              shown("1", "1,5 MB", "0,2 MB", "0,2 MB", "0,3 MB"));
}

TEST(SelectionStats, MakeAllCountsEveryRow)
{
    const std::vector<FileRow> rows{row("1024", "128", true), row("2048", "256", false), row("1024", "128", false)};
    EXPECT_EQ(refreshed(rows, false).mid(0, 2), QStringList({QStringLiteral("1"), QStringLiteral("1 MB")}));
    EXPECT_EQ(refreshed(rows, true).mid(0, 2), QStringList({QStringLiteral("3"), QStringLiteral("4 MB")}));
    EXPECT_EQ(refreshed(rows, false).mid(0, 2), QStringList({QStringLiteral("1"), QStringLiteral("1 MB")}));
}

TEST(SelectionStats, EstimatesFollowTheEncoderSettings)
{
    EncoderSettings settings;
    settings.mp3.mode = static_cast<int>(Mp3Mode::CommandLine); // expects 224
    settings.ogg.qualityTenths = 200;                          // no rule applies: stays 0, ratio 1
    settings.mpc.mode = static_cast<int>(MpcMode::Quality);    // quality 6.0 expects 210
    EXPECT_EQ(refreshed({row("1024", "448", true)}, false, settings), shown("1", "1 MB", "0.5 MB", "1 MB", "0.5 MB"));
}

TEST(SelectionStats, FailuresKeepTheLabelsNotYetWritten)
{
    bool finished = true;
    // Bit rates summing to 0 divide by zero: count and size are new, the forecasts old.
    EXPECT_EQ(refreshed({row("1024", "0", true)}, false, {}, QLocale::c(), &finished),
              shown("1", "1 MB", "old", "old", "old"));
    EXPECT_FALSE(finished);
    // A ticked row that cannot be read stops the refresh before any label.
    for (const FileRow &bad : {row("", "128", true), row("10", "", true), row("10", "~", true), row("x", "1", true)}) {
        EXPECT_EQ(refreshed({row("1024", "128", true), bad}, false, {}, QLocale::c(), &finished),
                  shown("old", "old", "old", "old", "old"));
        EXPECT_FALSE(finished);
    }
    // More rows than a 16-bit count holds.
    std::vector<FileRow> many(32768, row("1", "128", false));
    EXPECT_EQ(refreshed(many, false), shown("old", "old", "old", "old", "old"));
    many.pop_back();
    EXPECT_EQ(refreshed(many, false).at(0), QStringLiteral("0"));
}

TEST(SelectionStats, CaptionsComeFromTheLanguageTable)
{
    SelectionLabels labels;
    applySelectionCaptions(labels, russianTexts());
    EXPECT_EQ(labels[0], QStringLiteral("Выделено файлов:"));
    EXPECT_EQ(labels[1], QStringLiteral("Размер файлов:"));
    EXPECT_EQ(labels[5], QStringLiteral("Прогноз - Размер Wav:"));
    EXPECT_EQ(labels[8], QStringLiteral("Прогноз - Размер Mpc:"));
    EXPECT_TRUE(labels[3].isEmpty());
}
