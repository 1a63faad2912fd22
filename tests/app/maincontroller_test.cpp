#include <gtest/gtest.h>

#include <map>

#include "app/maincontroller.h"
#include "platform/files.h"
#include "platform/instancelock.h"
#include "settings/configfile.h"
#include "support/fakefolders.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

struct FakeFiles : Files
{
    std::map<QString, QByteArray> content;
    std::optional<std::int64_t> fileSize(const QString &path) override
    {
        auto it = content.find(path);
        return it == content.end() ? std::nullopt : std::optional<std::int64_t>(it->second.size());
    }
    std::unique_ptr<ByteSource> open(const QString &) override { return nullptr; }
    RemoveResult remove(const QString &path) override { return content.erase(path) ? RemoveResult::Removed : RemoveResult::OtherError; }
    std::optional<QByteArray> readAll(const QString &path) override
    {
        auto it = content.find(path);
        return it == content.end() ? std::nullopt : std::optional(it->second);
    }
    bool writeAtStart(const QString &path, const QByteArray &bytes) override
    {
        QByteArray &f = content[path];
        f.replace(0, std::min(f.size(), bytes.size()), bytes);
        if (f.size() < bytes.size())
            f = bytes;
        return true;
    }
};

struct FakeVolumes : Volumes
{
    std::vector<Volume> list{{QStringLiteral("/"), QStringLiteral("ext4")}, {QStringLiteral("/media/cd"), QStringLiteral("iso9660")}};
    std::vector<Volume> mounted() override { return list; }
};

struct FakeLock : InstanceLock
{
    bool free = true;
    bool tryLock() override { return free; }
};

struct Recorder : Messages, BusyCursor
{
    QStringList shown;
    int depth = 0, busyCalls = 0;
    void information(const QString &t) override { shown.append(QStringLiteral("i ") + t); }
    void critical(const QString &t) override { shown.append(QStringLiteral("c ") + t); }
    void begin() override { ++depth; ++busyCalls; }
    void end() override { --depth; }
};

const QString program = QStringLiteral("/opt/kv/");
const char *const codecNames[] = {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"};

// One machine: a program folder with its codecs, a music tree, and a window's controller on it.
struct Machine
{
    FakeFiles files;
    FakeFolders folders;
    FakeVolumes volumes;
    FakeLock lock;
    Recorder rec;
    QStringList opened;

    Machine()
    {
        for (const char *c : codecNames)
            files.content[program + QStringLiteral("codec/") + QLatin1String(c)] = "x";
        folders.add(QStringLiteral("/opt/kv/codec"));
        folders.add(QStringLiteral("/music/rock"), {QStringLiteral("a.wav"), QStringLiteral("b.wav"), QStringLiteral("c.mp3")});
    }

    std::unique_ptr<MainController> start(StartEnd expected = StartEnd::Running, const QString &folder = {})
    {
        auto c = std::make_unique<MainController>(Environment{
            files, folders, volumes, lock, rec, rec,
            [](AudioFormat, const QString &, const QString &name) {
                return std::optional(MediaInfo{{name, QStringLiteral("10240"), QStringLiteral("0:01:00"),
                                                QStringLiteral("1411"), QStringLiteral("44100"), QStringLiteral("Stereo")}});
            },
            [] { return 2; }, [this](const QString &doc) { opened.append(doc); }});
        StartOptions options{QStringLiteral("/opt/kv"), QStringLiteral("/home/ann/.config/kv"), true, folder, QLocale::c()};
        EXPECT_EQ(c->Main(options), expected);
        return c;
    }
};

} // namespace

TEST(MainStartup, WithoutConfigurationOpensTheProgramsDriveAndFillsThePanels)
{
    Machine m;
    auto c = m.start();
    EXPECT_EQ(c->tree().root()->text, QStringLiteral("/"));
    EXPECT_EQ(c->fileList().currentFolder, QStringLiteral("/"));
    EXPECT_EQ(c->ui().status.panels,
              (std::array<QString, 8>{QStringLiteral("CPU: 2  "), QStringLiteral("Free Disk Space: 1024 MB  "),
                                      QStringLiteral("Files: 0  "), QStringLiteral("Size: 0 MB  "),
                                      QStringLiteral("Duration: 0:00:00  "), QStringLiteral("Average bitrate: 0 kbps  "),
                                      QStringLiteral("English"), QStringLiteral("Help")}));
    EXPECT_EQ(c->configPath(), QStringLiteral("/opt/kv/kestrvan.cfg"));

    // The FOLDER argument opens that folder, listing it.
    auto d = Machine().start(StartEnd::Running, QStringLiteral("/music/rock"));
    EXPECT_EQ(d->fileList().rows.size(), 2U);
    EXPECT_EQ(d->labels()[SelectionLabels::Count], QStringLiteral("0"));
    EXPECT_EQ(d->tree().selected()->text, QStringLiteral("rock"));
}

TEST(MainStartup, ConfigurationLocation)
{
    const struct { bool there, writable; const char *expected; } cases[] = {
        {false, true, "/opt/kv/kestrvan.cfg"},
        {true, false, "/opt/kv/kestrvan.cfg"},
        {false, false, "/home/ann/.config/kv/kestrvan.cfg"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(configFileLocation(program, QStringLiteral("/home/ann/.config/kv"), c.there, c.writable),
                  QLatin1String(c.expected));
}

TEST(MainWindowState, SavedAtCloseAndRestoredWithTheLanguageSwitchedFromTheStatusBar)
{
    Machine m;
    {
        auto c = m.start(StartEnd::Running, QStringLiteral("/music/rock"));
        c->statusPanelClick(7); // English -> Russian, from the status bar
        EXPECT_EQ(c->ui().status.panel(7), QStringLiteral("Русский"));
        EXPECT_EQ(c->ui().status.panel(3), QStringLiteral("Файлов: 2  "));
        c->controls().setOggQuality(45);
        c->controls().setSelectedTab(3);
        c->setWindowPlace(10, 20, 900, 700, WindowState::Normal);
        EXPECT_FALSE(c->closeRequested(true)); // the conversion frame shows: nothing written
        EXPECT_FALSE(m.files.content.count(QStringLiteral("/opt/kv/kestrvan.cfg")));
        EXPECT_TRUE(c->closeRequested(false));
    }
    ASSERT_EQ(m.files.content[QStringLiteral("/opt/kv/kestrvan.cfg")].size(), ConfigRecord::kSize);
    auto c = m.start();
    EXPECT_EQ(c->ui().status.panel(7), QStringLiteral("Русский"));
    EXPECT_EQ(c->ui().status.panel(1), QStringLiteral("Процессоров: 2  "));
    EXPECT_EQ(c->labels().lblInfo[0], QStringLiteral("Выделено файлов:"));
    EXPECT_EQ(c->controls().settings().ogg.qualityTenths, 45);
    EXPECT_EQ(c->controls().selectedTab(), 3);
    EXPECT_EQ(c->controls().windowWidth(), 900 * 15);
    EXPECT_EQ(c->fileList().currentFolder, QStringLiteral("/music/rock/"));

    // Switched back twice gives every text back.
    c->statusPanelClick(7);
    c->statusPanelClick(7);
    EXPECT_EQ(c->ui().status.panel(3), QStringLiteral("Файлов: 2  "));
    c->statusPanelClick(8);
    EXPECT_EQ(m.opened, QStringList{QStringLiteral("/opt/kv/help/rus/index.htm")});
}

TEST(MainCommands, ShowCommandsMakeAllChecksAndTheDriveList)
{
    Machine m;
    auto c = m.start(StartEnd::Running, QStringLiteral("/music/rock"));
    int rowChanges = 0;
    c->rowsChanged = [&] { ++rowChanges; };

    const struct { int position; std::array<bool, 4> make; const char *pattern; size_t rows; } shows[] = {
        {ShowMp3, {false, false, false, true}, "*.mp3", 1},
        {ShowOgg, {false, false, false, true}, "*.ogg", 0},
        {ShowWav, {true, true, true, false}, "*.wav", 2},
    };
    for (const auto &s : shows) {
        c->toolbarClick(s.position);
        EXPECT_EQ(c->makeEnabled(), s.make) << s.pattern;
        EXPECT_EQ(c->fileList().pattern, QLatin1String(s.pattern));
        EXPECT_EQ(c->fileList().rows.size(), s.rows) << s.pattern;
        EXPECT_TRUE(c->showPressed()[static_cast<size_t>(s.position - ShowWav)]);
    }
    EXPECT_EQ(rowChanges, 3);

    c->setRowChecked(1, true);
    EXPECT_EQ(c->labels()[SelectionLabels::Count], QStringLiteral("1"));
    EXPECT_EQ(c->labels()[SelectionLabels::Size], QStringLiteral("10 MB"));
    c->toolbarClick(MakeAll);
    EXPECT_EQ(c->labels()[SelectionLabels::Count], QStringLiteral("2"));
    c->controls().setMp3Mode(3); // command line: 224 kbps
    EXPECT_EQ(c->labels()[SelectionLabels::Mp3Forecast], QStringLiteral("3.2 MB"));

    // The CD has no medium: the message, then the program's own drive again; the list stays.
    c->driveChanged(1);
    EXPECT_EQ(m.rec.shown, QStringList{QStringLiteral("i Drive is not ready, change another drive")});
    EXPECT_EQ(c->currentDrive(), 0);
    EXPECT_EQ(c->fileList().currentFolder, QStringLiteral("/music/rock/"));
    EXPECT_EQ(c->fileList().path, QStringLiteral("/"));
    EXPECT_EQ(m.rec.depth, 0);
    EXPECT_GT(m.rec.busyCalls, 0);
}
