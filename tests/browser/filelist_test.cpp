#include <gtest/gtest.h>

#include <map>

#include "browser/filelist.h"
#include "browser/freespace.h"
#include "platform/folders.h"
#include "support/qtprinters.h"
#include "ui/interfacetexts.h"

using namespace kv;

namespace {

class FakeFolders : public Folders
{
public:
    std::map<QString, QStringList> files; // folder -> names, already in listing order
    std::optional<FreeSpace> space = FreeSpace{1048576, 1, 4096};
    QStringList listedFolders;

    std::optional<QStringList> listFiles(const QString &folder, const QString &) override
    {
        listedFolders.append(folder);
        const auto it = files.find(folder);
        if (it == files.end())
            return std::nullopt;
        return it->second;
    }
    std::optional<QStringList> listFolders(const QString &) override { return QStringList(); }
    std::optional<FreeSpace> freeSpace(const QString &) override { return space; }
};

MediaInfo row(const char *name, const char *kb, const char *duration, const char *kbps)
{
    MediaInfo info;
    info[MediaInfo::Name] = QString::fromUtf8(name);
    info[MediaInfo::SizeKb] = QString::fromUtf8(kb);
    info[MediaInfo::Duration] = QString::fromUtf8(duration);
    info[MediaInfo::Bitrate] = QString::fromUtf8(kbps);
    info[MediaInfo::Sampling] = QStringLiteral("44100");
    info[MediaInfo::Channel] = QStringLiteral("Stereo");
    return info;
}

// A folder "/music" whose files the fake reader answers from a table of rows by name.
struct ScanFixture
{
    FileListState list;
    StatusBar status;
    FakeFolders folders;
    std::map<QString, MediaInfo> rowsByName;
    QStringList calls; // what happened, in order
    ScanContext context{list, status, englishTexts(), QLocale::c(), folders, {}, {}, {}, {}};

    ScanFixture()
    {
        list.path = QStringLiteral("/music");
        for (int panel = 1; panel <= 8; ++panel)
            status.panel(panel) = QStringLiteral("old %1").arg(panel);
        context.readRow = [this](AudioFormat format, const QString &folder, const QString &name) {
            calls.append(QStringLiteral("read %1 %2%3").arg(static_cast<int>(format)).arg(folder, name));
            const auto it = rowsByName.find(name);
            return it == rowsByName.end() ? std::nullopt : std::optional<MediaInfo>(it->second);
        };
        context.stopPlayer = [this] { calls.append(QStringLiteral("stop")); };
        context.refreshStats = [this] { calls.append(QStringLiteral("stats")); };
        context.resetPlayRow = [this] { calls.append(QStringLiteral("rewind")); };
    }

    void addFiles(const std::vector<MediaInfo> &rows)
    {
        QStringList &names = folders.files[QStringLiteral("/music")];
        for (const MediaInfo &r : rows) {
            names.append(r[MediaInfo::Name]);
            rowsByName[r[MediaInfo::Name]] = r;
        }
    }

    QStringList panels(int from, int to) const
    {
        QStringList texts;
        for (int p = from; p <= to; ++p)
            texts.append(status.panel(p));
        return texts;
    }
};

} // namespace

TEST(ScanFolder, EmptyFolderShowsZeroTotals)
{
    ScanFixture f;
    f.folders.files[QStringLiteral("/music")] = {};
    f.list.rows.push_back(FileRow{row("stale.wav", "1", "0:00:01", "1411")});
    EXPECT_EQ(ScanFolder(f.context), ScanEnd::Finished);
    EXPECT_TRUE(f.list.rows.empty());
    EXPECT_EQ(f.list.currentFolder, QStringLiteral("/music/"));
    EXPECT_EQ(f.panels(2, 6), QStringList({QStringLiteral("Free Disk Space: 4096 MB  "), QStringLiteral("Files: 0  "),
                                           QStringLiteral("Size: 0 MB  "), QStringLiteral("Duration: 0:00:00  "),
                                           QStringLiteral("Average bitrate: 0 kbps  ")}));
    EXPECT_EQ(f.calls, QStringList({QStringLiteral("stop"), QStringLiteral("stats"), QStringLiteral("rewind")}));
    // Panels of other parts are left alone.
    EXPECT_EQ(f.status.panel(1), QStringLiteral("old 1"));
    EXPECT_EQ(f.status.panel(7), QStringLiteral("old 7"));
}

TEST(ScanFolder, RootFolderGetsNoSecondSeparator)
{
    ScanFixture f;
    f.list.path = QStringLiteral("/");
    f.folders.files[QStringLiteral("/")] = {QStringLiteral("a.wav")};
    f.rowsByName[QStringLiteral("a.wav")] = row("a.wav", "1", "0:00:01", "1411");
    EXPECT_EQ(ScanFolder(f.context), ScanEnd::Finished);
    EXPECT_EQ(f.list.currentFolder, QStringLiteral("/"));
    EXPECT_EQ(f.calls.at(1), QStringLiteral("read 0 /a.wav"));
}

TEST(ScanFolder, TotalsRoundTiesToEven)
{
    const struct Case {
        std::vector<MediaInfo> rows;
        QStringList panels; // 3 to 6
    } cases[] = {
        {{row("a", "100", "0:00:01", "128"), row("b", "100", "0:00:01", "128"), row("c", "100", "0:00:01", "129")},
         {QStringLiteral("Files: 3  "), QStringLiteral("Size: 0.3 MB  "), QStringLiteral("Duration: 0:00:03  "),
          QStringLiteral("Average bitrate: 128 kbps  ")}},
        {{row("a", "1024", "0:59:59", "128"), row("b", "512", "0:00:01", "129")},
         {QStringLiteral("Files: 2  "), QStringLiteral("Size: 1.5 MB  "), QStringLiteral("Duration: 1:00:00  "),
          QStringLiteral("Average bitrate: 128 kbps  ")}},
        {{row("a", "0", "0:00:59", "129"), row("b", "0", "0:00:00", "~130")},
         {QStringLiteral("Files: 2  "), QStringLiteral("Size: 0 MB  "), QStringLiteral("Duration: 0:00:59  "),
          QStringLiteral("Average bitrate: 130 kbps  ")}},
        // 0.25 MB is a tie at one decimal and goes down to the even 0.2.
        {{row("a", "256", "9:59:59", "~128"), row("b", "0", "1:00:01", "128")},
         {QStringLiteral("Files: 2  "), QStringLiteral("Size: 0.2 MB  "), QStringLiteral("Duration: 11:00:00  "),
          QStringLiteral("Average bitrate: 128 kbps  ")}},
    };
    for (const Case &c : cases) {
        ScanFixture f;
        f.addFiles(c.rows);
        EXPECT_EQ(ScanFolder(f.context), ScanEnd::Finished);
        EXPECT_EQ(f.panels(3, 6), c.panels);
        EXPECT_EQ(f.list.rows.size(), c.rows.size());
    }
}

TEST(ScanFolder, SizeTotalIsKeptInSinglePrecision)
{
    // Beyond 16 GB a single-precision total can no longer take 1 KB steps: 200 more KB would show
    // as 16384.2 MB in double precision, but the panel keeps the 16384 the window always showed.
    ScanFixture f;
    std::vector<MediaInfo> rows{row("big", "16777216", "0:00:01", "128")};
    for (int i = 0; i < 200; ++i)
        rows.push_back(row(QStringLiteral("f%1").arg(i).toUtf8().constData(), "1", "0:00:01", "128"));
    f.addFiles(rows);
    ASSERT_EQ(ScanFolder(f.context), ScanEnd::Finished);
    EXPECT_EQ(f.status.panel(4), QStringLiteral("Size: 16384 MB  "));
}

TEST(ScanFolder, PatternChoosesTheReaderExactly)
{
    const struct { const char *pattern; int format; } cases[] = {
        {"*.mp3", 1}, {"*.ogg", 2}, {"*.mpc", 3}, {"*.wav", 0}, {"*.WAV", -1}, {"*.flac", -1},
    };
    for (const auto &c : cases) {
        ScanFixture f;
        f.list.pattern = QString::fromUtf8(c.pattern);
        f.addFiles({row("x", "1", "0:00:01", "128")});
        EXPECT_EQ(ScanFolder(f.context), ScanEnd::Finished) << c.pattern;
        if (c.format < 0) {
            EXPECT_TRUE(f.list.rows.empty()) << c.pattern;
            EXPECT_EQ(f.status.panel(3), QStringLiteral("Files: 0  "));
        } else {
            EXPECT_EQ(f.calls.at(1), QStringLiteral("read %1 /music/x").arg(c.format)) << c.pattern;
        }
    }
}

TEST(ScanFolder, RejectedFilesLeaveNoGap)
{
    ScanFixture f;
    f.addFiles({row("a.wav", "1", "0:00:01", "128"), row("c.wav", "1", "0:00:01", "130")});
    f.folders.files[QStringLiteral("/music")].insert(1, QStringLiteral("b.wav")); // the reader refuses it
    EXPECT_EQ(ScanFolder(f.context), ScanEnd::Finished);
    ASSERT_EQ(f.list.rows.size(), 2u);
    EXPECT_EQ(f.list.rows[0].info[MediaInfo::Name], QStringLiteral("a.wav"));
    EXPECT_EQ(f.list.rows[1].info[MediaInfo::Name], QStringLiteral("c.wav"));
    EXPECT_FALSE(f.list.rows[0].checked);
    EXPECT_EQ(f.status.panel(3), QStringLiteral("Files: 2  "));
    EXPECT_EQ(f.status.panel(6), QStringLiteral("Average bitrate: 129 kbps  "));
}

TEST(ScanFolder, UnreadableRowStopsBeforeTheTotals)
{
    // Rows the readers cut short: a WAV with sample rate 0 has no duration; an empty bit rate;
    // a size that is not a number; a seconds part beyond 16 bits.
    MediaInfo noDuration = row("z.wav", "10", "", "0");
    noDuration[MediaInfo::Sampling].clear();
    const MediaInfo broken[] = {noDuration, row("z", "10", "0:00:01", ""), row("z", "", "0:00:01", "128"),
                                row("z", "10", "0:00:01", "~"), row("z", "10", "0:00:32768", "128")};
    for (const MediaInfo &bad : broken) {
        ScanFixture f;
        f.addFiles({row("a.wav", "1", "0:00:01", "128"), bad});
        EXPECT_EQ(ScanFolder(f.context), ScanEnd::Stopped);
        ASSERT_EQ(f.list.rows.size(), 2u);
        EXPECT_EQ(f.list.rows[1].info, bad); // the partial row stays listed
        EXPECT_EQ(f.panels(2, 6), QStringList({QStringLiteral("old 2"), QStringLiteral("old 3"), QStringLiteral("old 4"),
                                               QStringLiteral("old 5"), QStringLiteral("old 6")}));
        EXPECT_FALSE(f.calls.contains(QStringLiteral("stats")));
        EXPECT_FALSE(f.calls.contains(QStringLiteral("rewind")));
    }
}

TEST(ScanFolder, UnreadableFolderKeepsTheOldList)
{
    ScanFixture f;
    f.list.rows.push_back(FileRow{row("old.wav", "1", "0:00:01", "128")});
    EXPECT_EQ(ScanFolder(f.context), ScanEnd::NotListed);
    EXPECT_EQ(f.list.rows.size(), 1u);
    EXPECT_EQ(f.list.currentFolder, QStringLiteral("/music/"));
    EXPECT_EQ(f.calls, QStringList({QStringLiteral("stop")}));
    EXPECT_EQ(f.status.panel(3), QStringLiteral("old 3"));
}

TEST(ScanFolder, MoreFilesThanTheCounterHoldsEndsTheScan)
{
    ScanFixture f;
    QStringList &names = f.folders.files[QStringLiteral("/music")];
    for (int i = 0; i < 32768; ++i)
        names.append(QStringLiteral("f%1.wav").arg(i));
    f.list.rows.push_back(FileRow{row("old.wav", "1", "0:00:01", "128")});
    EXPECT_EQ(ScanFolder(f.context), ScanEnd::Stopped);
    EXPECT_TRUE(f.list.rows.empty());
    EXPECT_EQ(f.status.panel(3), QStringLiteral("old 3"));
}

TEST(ScanFolder, RussianPanels)
{
    ScanFixture f;
    ScanContext ru{f.list, f.status, russianTexts(), QLocale(QLocale::Russian), f.folders, f.context.readRow};
    f.addFiles({row("a", "1024", "0:00:01", "128"), row("b", "512", "0:00:01", "128")});
    EXPECT_EQ(ScanFolder(ru), ScanEnd::Finished);
    EXPECT_EQ(f.panels(2, 6), QStringList({QStringLiteral("Свободно: 4096 МБ  "), QStringLiteral("Файлов: 2  "),
                                           QStringLiteral("Размер: 1,5 МБ  "), QStringLiteral("Время: 0:00:02  "),
                                           QStringLiteral("Поток: 128 Кб/с  ")}));
}

TEST(FreeDiskSpace, CountsClustersSectorsAndBytes)
{
    const struct {
        std::optional<FreeSpace> space;
        const char *locale;
        const char *panel;
    } cases[] = {
        {FreeSpace{1048576, 1, 4096}, "C", "Free Disk Space: 4096 MB  "},
        // 482.25 MB: a tie at one decimal, down to the even digit.
        {FreeSpace{123456, 8, 512}, "C", "Free Disk Space: 482.2 MB  "},
        {FreeSpace{123456, 8, 512}, "de_DE", "Free Disk Space: 482,2 MB  "},
        {FreeSpace{2147483647, 1, 1}, "C", "Free Disk Space: 2048 MB  "},
        {FreeSpace{0, 1, 4096}, "C", "Free Disk Space: 0 MB  "},
        // A failed query shows zero.
        {std::nullopt, "C", "Free Disk Space: 0 MB  "},
        // A count beyond 32 bits ends the display with the panel as it was.
        {FreeSpace{2147483648LL, 1, 4096}, "C", "old"},
        {FreeSpace{1, 1, 4294967296LL}, "C", "old"},
    };
    for (const auto &c : cases) {
        FakeFolders folders;
        folders.space = c.space;
        StatusBar status;
        status.panel(2) = QStringLiteral("old");
        ShowFreeDiskSpace(QStringLiteral("/music/"), folders, status, englishTexts(), QLocale(QString::fromUtf8(c.locale)));
        EXPECT_EQ(status.panel(2), QString::fromUtf8(c.panel));
    }
}
