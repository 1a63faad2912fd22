#include <gtest/gtest.h>

#include "browser/filelist.h"
#include "platform/folders.h"
#include "support/qtprinters.h"
#include "ui/interfacetexts.h"

using namespace kv;

namespace {

struct FakeFolders : Folders
{
    std::optional<QStringList> names; // nothing: the folder cannot be read
    std::optional<FreeSpace> space;

    std::optional<QStringList> listFiles(const QString &, const QString &) override { return names; }
    std::optional<QStringList> listFolders(const QString &) override { return QStringList(); }
    std::optional<FreeSpace> freeSpace(const QString &) override { return space; }
};

using Rows = std::vector<std::array<const char *, 3>>; // KB, duration, kbps

// Scans "/music" holding rows "f0", "f1"... (none: unreadable) from one stale row and "old" panels.
struct Scan
{
    FileListState list{QStringLiteral("/music")};
    StatusBar status;
    FakeFolders folders;
    QStringList calls;
    ScanEnd end;

    explicit Scan(const std::optional<Rows> &rows, const char *pattern = "*.wav",
                  std::optional<FreeSpace> space = FreeSpace{1048576, 1, 4096})
    {
        folders.space = space;
        list.pattern = QString::fromUtf8(pattern);
        list.rows.resize(1);
        folders.names = rows ? std::optional(QStringList()) : std::nullopt;
        for (size_t i = 0; rows && i < rows->size(); ++i)
            folders.names->append(QStringLiteral("f%1").arg(i));
        status.panels.fill(QStringLiteral("old"));
        auto read = [&](AudioFormat format, const QString &folder, const QString &name) {
            calls.append(QStringLiteral("read %1 %2%3").arg(static_cast<int>(format)).arg(folder, name));
            const auto &r = rows->at(static_cast<size_t>(name.mid(1).toInt()));
            return std::optional(MediaInfo{{name, QString::fromUtf8(r[0]), QString::fromUtf8(r[1]), QString::fromUtf8(r[2])}});
        };
        ScanContext context{list, status, englishTexts(), QLocale::c(), folders, read,
                            [this] { calls.append(QStringLiteral("stop")); },
                            [this] { calls.append(QStringLiteral("stats")); },
                            [this] { calls.append(QStringLiteral("rewind")); }};
        end = ScanFolder(context);
    }

    // Panels 3 to 6 joined by "|".
    QString panels() const { return QStringList(status.panels.begin() + 2, status.panels.begin() + 6).join(QLatin1Char('|')); }
};

} // namespace

TEST(ScanFolder, TotalsRoundTiesToEvenOrNothingChanges)
{
    const std::array<const char *, 3> good{"1", "0:00:01", "128"};
    const char *const untouched = "old|old|old|old";
    const struct { std::optional<Rows> rows; ScanEnd end; const char *panels; } cases[] = {
        {Rows{}, ScanEnd::Finished, "Files: 0  |Size: 0 MB  |Duration: 0:00:00  |Average bitrate: 0 kbps  "},
        // One row is its own average.
        {Rows{{"100", "0:00:07", "~131"}}, ScanEnd::Finished,
         "Files: 1  |Size: 0.1 MB  |Duration: 0:00:07  |Average bitrate: 131 kbps  "},
        {Rows{{"100", "0:00:01", "128"}, {"100", "0:00:01", "128"}, {"100", "0:00:01", "129"}}, ScanEnd::Finished,
         "Files: 3  |Size: 0.3 MB  |Duration: 0:00:03  |Average bitrate: 128 kbps  "},
        {Rows{{"256", "9:59:59", "129"}, {"0", "1:00:01", "~130"}}, ScanEnd::Finished, // 0.25 MB is a tie too
         "Files: 2  |Size: 0.2 MB  |Duration: 11:00:00  |Average bitrate: 130 kbps  "},
        // Beyond 16 GB the single-precision total no longer takes 1 KB steps: not 16384.1 MB.
        {[&] { Rows r(61, good); r[0][0] = "16777216"; return r; }(), ScanEnd::Finished,
         "Files: 61  |Size: 16384 MB  |Duration: 0:01:01  |Average bitrate: 128 kbps  "},
        // A partial row stays listed but stops the scan: no duration (a WAV with sample rate 0),
        // no bit rate, a seconds part beyond 16 bits.
        {Rows{good, {"10", "", "0"}}, ScanEnd::Stopped, untouched},
        {Rows{good, {"10", "0:00:01", ""}}, ScanEnd::Stopped, untouched},
        {Rows{good, {"1", "0:00:32768", "1"}}, ScanEnd::Stopped, untouched},
        {std::nullopt, ScanEnd::NotListed, untouched}, // the stale row stays
    };
    for (const auto &c : cases) {
        Scan s(c.rows);
        EXPECT_EQ(s.end, c.end) << &c - cases;
        EXPECT_EQ(s.panels(), QLatin1String(c.panels));
        EXPECT_EQ(s.list.rows.size(), c.rows ? c.rows->size() : 1u);
        EXPECT_EQ(s.status.panel(2) == QStringLiteral("Free Disk Space: 4096 MB  "), c.end == ScanEnd::Finished);
        EXPECT_EQ(s.calls.last() == QStringLiteral("rewind"), c.end == ScanEnd::Finished);
    }
}

TEST(ScanFolder, PatternChoosesTheReaderExactly)
{
    // The reader's format number, none for a pattern that differs in case only.
    for (const auto &[pattern, format] : {std::pair{"*.wav", "0"}, {"*.mp3", "1"}, {"*.ogg", "2"}, {"*.mpc", "3"}, {"*.WAV", ""}})
        EXPECT_EQ(Scan(Rows{{"1", "0:00:01", "128"}}, pattern).calls.join(QLatin1Char('|')),
                  *format ? QStringLiteral("stop|read %1 /music/f0|stats|rewind").arg(QLatin1String(format)) : QStringLiteral("stop|stats|rewind"));
}

TEST(ScanFolder, FreeDiskSpaceCountsClustersSectorsAndBytes)
{
    const struct { std::optional<FreeSpace> space; const char *panel; } cases[] = {
        {FreeSpace{123456, 8, 512}, "Free Disk Space: 482.2 MB  "}, // 482.25, a tie
        {std::nullopt, "Free Disk Space: 0 MB  "},                  // a failed query shows zero
        {FreeSpace{2147483648LL, 1, 4096}, "old"},                  // beyond 32 bits: left as it was
    };
    for (const auto &c : cases)
        EXPECT_EQ(Scan(Rows{}, "*.wav", c.space).status.panel(2), QLatin1String(c.panel));
}
