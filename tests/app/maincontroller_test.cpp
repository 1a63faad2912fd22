#include <gtest/gtest.h>

#include <map>

#include "app/maincontroller.h"
#include "platform/files.h"
#include "platform/instancelock.h"
#include "settings/configfile.h"
#include "support/fakefolders.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

namespace {

struct FakeFiles : Files
{
    std::map<QString, QByteArray> content;
    std::optional<std::int64_t> fileSize(const QString &path) override { return content.count(path) ? std::optional<std::int64_t>(content[path].size()) : std::nullopt; }
    std::unique_ptr<ByteSource> open(const QString &) override { return nullptr; }
    RemoveResult remove(const QString &path) override { return content.erase(path) ? RemoveResult::Removed : RemoveResult::OtherError; }
    std::optional<QByteArray> readAll(const QString &path) override { return content.count(path) ? std::optional(content[path]) : std::nullopt; }
    // Overwrites the start and keeps the rest, as the real file does.
    bool writeAtStart(const QString &path, const QByteArray &bytes) override { content[path].replace(0, bytes.size(), bytes); return true; }
};

struct FakeVolumes : Volumes
{
    std::vector<Volume> list{{u"/"_s, u"ext4"_s}, {u"/media/cd"_s, u"iso9660"_s}};
    std::vector<Volume> mounted() override { return list; }
};

struct FreeLock : InstanceLock
{
    bool tryLock() override { return true; }
};

struct Recorder : Messages, BusyCursor
{
    QStringList shown;
    void information(const QString &t) override { shown.append(u"i "_s + t); }
    void critical(const QString &t) override { shown.append(u"c "_s + t); }
    void begin() override {}
    void end() override {}
};

const QString program = u"/opt/kv/"_s;
const char *const codecNames[] = {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"};

// One machine: a program folder with its codecs, a music tree, and a window's controller on it.
struct Machine
{
    FakeFiles files;
    FakeFolders folders;
    FakeVolumes volumes;
    FreeLock lock;
    Recorder rec;
    QStringList opened;

    Machine()
    {
        for (const char *c : codecNames)
            files.content[program + u"codec/"_s + QLatin1String(c)] = "x";
        folders.add(u"/opt/kv/codec"_s);
        folders.add(u"/music/rock"_s, {u"a.wav"_s, u"b.wav"_s, u"c.mp3"_s});
    }

    std::unique_ptr<MainController> start(const QString &folder = {})
    {
        auto c = std::make_unique<MainController>(Environment{
            files, folders, volumes, lock, rec, rec,
            [](AudioFormat, const QString &, const QString &name) {
                return std::optional(MediaInfo{{name, u"10240"_s, u"0:01:00"_s, u"1411"_s, u"44100"_s, u"Stereo"_s}});
            },
            [] { return 2; }, [this](const QString &doc) { opened.append(doc); }});
        EXPECT_EQ(c->Main(StartOptions{u"/opt/kv"_s, u"/home/ann/.config/kv"_s, true, folder, QLocale::c()}), StartEnd::Running);
        return c;
    }
};

} // namespace

// The program's own drive is the last resort: when it cannot be listed either, that is said once
// and not tried again.
TEST(MainStartup, AProgramDriveThatCannotBeListedIsReportedOnce)
{
    Machine m;
    m.folders.unreadable.insert(u"/"_s);
    auto c = m.start();
    EXPECT_EQ(m.rec.shown, QStringList{u"i Drive is not ready, change another drive"_s});
}

TEST(MainStartup, ConfigurationLocation)
{
    const struct { bool there, writable; const char *expected; } cases[] = {
        {false, true, "/opt/kv/kestrvan.cfg"},
        {true, false, "/opt/kv/kestrvan.cfg"},
        {false, false, "/home/ann/.config/kv/kestrvan.cfg"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(configFileLocation(program, u"/home/ann/.config/kv"_s, c.there, c.writable), QLatin1String(c.expected));
}

TEST(MainWindowState, SavedAtCloseAndRestoredWithTheLanguageSwitchedFromTheStatusBar)
{
    Machine m;
    {
        auto c = m.start(u"/music/rock"_s);
        c->statusPanelClick(7); // English -> Russian, from the status bar
        EXPECT_EQ(c->ui().status.panel(7), u"Русский"_s);
        EXPECT_EQ(c->ui().status.panel(3), u"Файлов: 2  "_s);
        c->controls().setOggQuality(45);
        c->controls().setSelectedTab(3);
        c->setWindowPlace(10, 20, 900, 700, WindowState::Normal);
        EXPECT_FALSE(c->closeRequested(true)); // the conversion frame shows: nothing written
        EXPECT_FALSE(m.files.content.count(u"/opt/kv/kestrvan.cfg"_s));
        EXPECT_TRUE(c->closeRequested(false));
    }
    ASSERT_EQ(m.files.content[u"/opt/kv/kestrvan.cfg"_s].size(), ConfigRecord::kSize);
    auto c = m.start();
    EXPECT_EQ(c->ui().status.panel(7), u"Русский"_s);
    EXPECT_EQ(c->ui().status.panel(1), u"Процессоров: 2  "_s);
    EXPECT_EQ(c->labels().lblInfo[0], u"Выделено файлов:"_s);
    EXPECT_EQ(c->controls().settings().ogg.qualityTenths, 45);
    EXPECT_EQ(c->controls().selectedTab(), 3);
    EXPECT_EQ(c->controls().windowWidth(), 900 * 15);
    EXPECT_EQ(c->fileList().currentFolder, u"/music/rock/"_s);
    c->statusPanelClick(8);
    EXPECT_EQ(m.opened, QStringList{u"/opt/kv/help/rus/index.htm"_s});
    c->statusPanelClick(7); // and back to English, which is kept as well
    EXPECT_TRUE(c->closeRequested(false));
    c.reset();
    EXPECT_EQ(m.start()->ui().status.panel(7), u"English"_s);
}
