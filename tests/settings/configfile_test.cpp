#include <random>

#include <gtest/gtest.h>

#include <QLocale>

#include "settings/configfile.h"
#include "settings/startupsettings.h"
#include "settings/windows1251.h"
#include "memoryfiles.h"
#include "support/qtprinters.h"

using namespace kv;
using R = ConfigRecord;

namespace {

const QString kPath = QStringLiteral("/opt/kv/kestrvan.cfg");
const QLocale kPoint(QLocale::English, QLocale::UnitedStates);

QByteArray field(const QByteArray &content)
{
    return content + QByteArray(R::kTextWidth - content.size(), ' ');
}

void putInt16(QByteArray &b, qsizetype at, int v)
{
    b[at] = static_cast<char>(v & 0xFF);
    b[at + 1] = static_cast<char>((v >> 8) & 0xFF);
}

SettingsControls defaulted()
{
    SettingsControls c(kPoint);
    ResetToDefaults(c);
    return c;
}

struct Loaded
{
    SettingsControls controls = defaulted();
    ConfigRecord record;
    bool completed = false;
};

Loaded load(const QByteArray &bytes)
{
    MemoryFiles files;
    files.content[kPath] = bytes;
    Loaded l;
    l.completed = LoadConfig(kPath, files, l.controls, l.record);
    return l;
}

QByteArray save(const SettingsControls &c)
{
    MemoryFiles files;
    ConfigRecord record;
    EXPECT_TRUE(SaveConfig(kPath, files, c, record));
    return files.content[kPath];
}

} // namespace

TEST(ConfigFile, GoldenRecordWrittenAndReadBack)
{
    SettingsControls c = defaulted();
    c.setWindowLeft(1500);
    c.setWindowTop(-1500);
    c.setWindowWidth(15007); // 1000.47 pixels
    c.setWindowHeight(9015);
    c.setSelectedTab(2);
    c.applyRussian();
    c.setStartFolder(QStringLiteral("  /home/Музыка/ "));
    c.setMp3Mode(1);
    c.setMp3Preset(2);
    c.setMp3Abr(256);
    c.setMp3Cbr(7);
    c.setMp3CommandLine(QStringLiteral(" -V 2 "));
    c.setOggQuality(45);
    c.setOggAbr(160);
    c.setMpcMode(2);
    c.setMpcPreset(3);
    c.setMpcQuality(70);
    c.setMpcCommandLine(QStringLiteral("--xlevel"));
    const QByteArray written = save(c);

    QByteArray expected(R::kSize, '\0');
    expected.replace(0, 12, QByteArray("\x02\x01\x01\x02\x80\x07\x00\x37\x20\x02\x03\x46", 12));
    putInt16(expected, 50, 100);
    putInt16(expected, 52, -100);
    putInt16(expected, 54, 1000);
    putInt16(expected, 56, 601);
    expected.replace(70, R::kTextWidth, field("/home/\xCC\xF3\xE7\xFB\xEA\xE0/"));
    expected.replace(3142, R::kTextWidth, field("-V 2"));
    expected.replace(4166, R::kTextWidth, field("--quality 6"));
    expected.replace(5190, R::kTextWidth, field("--xlevel"));
    ASSERT_EQ(written.size(), R::kSize);
    for (qsizetype i = 0; i < R::kSize; ++i)
        ASSERT_EQ(written.at(i), expected.at(i)) << "offset " << i;

    const Loaded l = load(expected);
    EXPECT_TRUE(l.completed);
    EncoderSettings s = c.settings();
    s.mp3.commandLine = QStringLiteral("-V 2");
    EXPECT_EQ(l.controls.settings(), s);
    EXPECT_EQ(l.controls.selectedTab(), 2);
    EXPECT_EQ(l.controls.languagePanelText(), QStringLiteral("Русский"));
    EXPECT_EQ(QList<int>({l.controls.windowLeft(), l.controls.windowTop(), l.controls.windowWidth(),
                          l.controls.windowHeight()}),
              QList<int>({1500, -1500, 15000, 9015}));
    EXPECT_EQ(l.controls.startFolder(), QStringLiteral("/home/Музыка/"));
    EXPECT_EQ(l.controls.lblPresetOgg(), QStringLiteral("--quality 4.5"));
}

TEST(ConfigFile, AllZeroRecordLoadsAsTheSmallestSettings)
{
    const Loaded l = load(QByteArray(R::kSize, '\0'));
    const SettingsControls &c = l.controls;
    EXPECT_TRUE(l.completed);
    EXPECT_EQ(QList<int>({c.windowLeft(), c.windowTop(), c.windowWidth(), c.windowHeight(), c.selectedTab()}),
              QList<int>({0, 0, 12000, 9000, 1}));
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("English"));
    // Zero bytes end a text box's text, so never-written fields read as empty.
    EXPECT_EQ(c.settings().mp3, (Mp3Settings{0, 0, 128, 0, QString()}));
    EXPECT_EQ(c.settings().ogg, (OggSettings{0, -10, 128, QString()}));
    EXPECT_EQ(c.settings().mpc, (MpcSettings{0, 0, 0, QString()}));
    EXPECT_EQ(c.lblPresetOgg(), QStringLiteral("--quality -1"));
    EXPECT_TRUE(c.startFolder().isEmpty());
}

TEST(ConfigFile, OnlyAFileOfExactlyOneRecordIsRead)
{
    for (const qsizetype size : {qsizetype(0), R::kSize - 1, R::kSize + 1, R::kSize}) {
        MemoryFiles files;
        files.content[kPath] = QByteArray(size, '\x03');
        const StartupSettings s = loadStartupSettings(kPath, files, kPoint);
        EXPECT_EQ(s.fileRead, size == R::kSize) << size;
        EXPECT_EQ(s.settings().mp3.mode, size == R::kSize ? 3 : 0) << size;
    }
    MemoryFiles none;
    EXPECT_FALSE(loadStartupSettings(kPath, none, kPoint).fileRead);
}

TEST(ConfigFile, OverflowingWidthStopsTheLoadAfterLeftAndTop)
{
    QByteArray bytes(R::kSize, '\0');
    putInt16(bytes, R::kWindowLeft, 10);
    putInt16(bytes, R::kWindowTop, 20);
    putInt16(bytes, R::kWindowWidth, 2185);
    bytes[R::kTab] = 3;
    bytes[R::kMp3Preset] = 3;
    Loaded l = load(bytes);
    EXPECT_FALSE(l.completed);
    EXPECT_EQ(QList<int>({l.controls.windowLeft(), l.controls.windowTop(), l.controls.windowWidth(),
                          l.controls.selectedTab()}),
              QList<int>({150, 300, 12000, 1}));
    EXPECT_EQ(l.controls.settings(), EncoderSettings());
    putInt16(bytes, R::kWindowWidth, 2184); // the widest that fits
    EXPECT_TRUE(load(bytes).completed);
}

TEST(ConfigFile, LongCommandLineIsCutAndPaddingTrimmed)
{
    SettingsControls c = defaulted();
    const QString longText = QStringLiteral("-V 2 ") + QString(1025, QLatin1Char('x')); // 1030 characters
    c.setMp3CommandLine(longText);
    c.setOggCommandLine(QStringLiteral("   --quality 3   "));
    const Loaded l = load(save(c));
    EXPECT_EQ(l.controls.settings().mp3.commandLine, longText.left(1024));
    EXPECT_EQ(l.controls.settings().ogg.commandLine, QStringLiteral("--quality 3"));
}

TEST(ConfigFile, LoadThenSavePassesEveryByteThrough)
{
    std::mt19937 random(7);
    QByteArray bytes(R::kSize, '\0');
    for (qsizetype i = 0; i < R::kSize; ++i)
        bytes[i] = static_cast<char>(random() & 0xFF); // reserved runs and texts included
    bytes.replace(0, 12, QByteArray("\x03\x00\x02\x01\x2C\x09\x01\x46\x64\x01\x05\x21", 12));
    for (const qsizetype at : {R::kWindowLeft, R::kWindowTop, R::kWindowWidth, R::kWindowHeight})
        putInt16(bytes, at, 900 + static_cast<int>(at));
    for (const qsizetype at : {R::kFolder, R::kMp3CommandLine, R::kOggCommandLine, R::kMpcCommandLine})
        bytes.replace(at, R::kTextWidth, field(QByteArray("/m\xE8\xF0/ -x \xB9") + QByteArray::number(at)));
    const Loaded l = load(bytes);
    ASSERT_TRUE(l.completed);
    MemoryFiles files;
    ConfigRecord record = l.record;
    ASSERT_TRUE(SaveConfig(kPath, files, l.controls, record));
    EXPECT_TRUE(files.content[kPath] == bytes);
}

TEST(ConfigFile, LanguageFollowsThePanelTextExactly)
{
    Loaded l = load(QByteArray(1, '\0') + QByteArray(1, '\xC8') + QByteArray(R::kSize - 2, '\0'));
    EXPECT_EQ(l.controls.languagePanelText(), QStringLiteral("Русский"));
    for (const QString &panel : {QStringLiteral("English"), QStringLiteral("english"), QStringLiteral("English ")}) {
        l.controls.setLanguagePanelText(panel);
        EXPECT_EQ(save(l.controls).at(R::kLanguage), panel == QStringLiteral("English") ? 0 : 1);
    }
}

TEST(ConfigFile, TextsAreWindows1251)
{
    SettingsControls c = defaulted();
    const QString cyrillic = QStringLiteral("--comment Привет, ЁЖЩ ёжщ №5 «ї» Ґ€");
    c.setMpcCommandLine(cyrillic);
    c.setStartFolder(QStringLiteral("/tmp/日本/😀/"));
    const QByteArray bytes = save(c);
    EXPECT_EQ(bytes.mid(R::kFolder, 10), QByteArray("/tmp/?\?/?/")); // one "?" per character
    EXPECT_EQ(bytes.at(R::kMpcCommandLine + 10), '\xCF');           // "П"
    EXPECT_EQ(load(bytes).controls.settings().mpc.commandLine, cyrillic);

    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    EXPECT_TRUE(toWindows1251(fromWindows1251(all)) == all);
    EXPECT_EQ(fromWindows1251("\xA8\xFF\x88"), QStringLiteral("ЁяEUR").replace(QStringLiteral("EUR"), QStringLiteral("€")));
}

TEST(ConfigFile, FailedSaveWritesNothing)
{
    const QByteArray old(20000, 'o');
    MemoryFiles files;
    files.content[kPath] = old;
    files.readOnly.insert(kPath);
    SettingsControls c = defaulted();
    ConfigRecord record;
    EXPECT_FALSE(SaveConfig(kPath, files, c, record));
    EXPECT_TRUE(files.content[kPath] == old);
    // A list without selection ends the save before the write.
    files.readOnly.clear();
    c.setMpcPreset(-1);
    EXPECT_FALSE(SaveConfig(kPath, files, c, record));
    EXPECT_TRUE(files.content[kPath] == old);
    // Saved over a longer file: the first record's length is written, the rest stays.
    c.setMpcPreset(1);
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));
    EXPECT_TRUE(files.content[kPath].left(R::kSize) == record.bytes());
    EXPECT_TRUE(files.content[kPath].mid(R::kSize) == old.mid(R::kSize));
}

TEST(ConfigFile, OnlyANormalWindowStoresItsPlace)
{
    Loaded l = load(QByteArray(50, '\0') + QByteArray("\x21", 1) + QByteArray(R::kSize - 51, '\0'));
    l.controls.setWindowLeft(3000);
    MemoryFiles files;
    for (const auto state : {WindowState::Maximised, WindowState::Minimised, WindowState::Normal}) {
        l.controls.setWindowState(state);
        ASSERT_TRUE(SaveConfig(kPath, files, l.controls, l.record));
        EXPECT_EQ(l.record.int16(R::kWindowLeft), state == WindowState::Normal ? 200 : 33);
    }
}

// Random records load without a crash, applying every value up to the first refused one and
// nothing after it. Saving the result shows what was applied.
TEST(ConfigFile, RandomRecordsEndAtTheFirstRefusedValue)
{
    // In load order: offset, 16-bit or not, the stored values the window accepts.
    const struct { qsizetype at; bool wide; int lo, hi; } order[] = {
        {R::kWindowLeft, true, -2184, 2184}, {R::kWindowTop, true, -2184, 2184},
        {R::kWindowWidth, true, 800, 2184},  {R::kWindowHeight, true, 600, 2184},
        {R::kMp3Mode, false, 0, 3}, {R::kMp3Preset, false, 0, 3}, {R::kMp3Abr, false, 0, 172},
        {R::kMp3Cbr, false, 0, 16}, {R::kOggMode, false, 0, 2}, {R::kOggQuality, false, 0, 110},
        {R::kOggAbr, false, 0, 172}, {R::kMpcMode, false, 0, 2}, {R::kMpcPreset, false, 0, 6},
        {R::kMpcQuality, false, 0, 100},
    };
    const QByteArray defaults = save(defaulted());
    std::mt19937 random(2024);
    int completed = 0;
    for (int n = 0; n < 1000; ++n) {
        QByteArray bytes(R::kSize, '\0');
        for (qsizetype i = 0; i < R::kSize; ++i)
            bytes[i] = static_cast<char>(random() % 3 ? ' ' : random() & 0xFF);
        bytes[R::kLanguage] = 0;
        for (const auto &f : order) {
            const bool valid = random() % 100 < 93;
            if (f.wide) // refused measures lie beyond 2184 pixels either way
                putInt16(bytes, f.at, valid ? f.lo + static_cast<int>(random() % (f.hi - f.lo + 1))
                                            : (random() % 2 ? 2185 : -32768) + static_cast<int>(random() % 30000));
            else
                bytes[f.at] = static_cast<char>(valid ? random() % (f.hi + 1) : f.hi + 1 + random() % (255 - f.hi));
        }
        const Loaded l = load(bytes);
        const R saved = *R::fromBytes(save(l.controls));
        const R original = *R::fromBytes(bytes);
        const R untouched = *R::fromBytes(defaults);
        bool refused = false;
        for (const auto &f : order) {
            auto value = [&](const R &r) { return f.wide ? r.int16(f.at) : r.byte(f.at); };
            const int stored = value(original);
            refused = refused || stored < f.lo || stored > f.hi;
            if (f.at == R::kWindowLeft || f.at == R::kWindowTop) // a window never loaded is at 0, 0
                ASSERT_EQ(value(saved), refused ? 0 : stored) << n;
            else
                ASSERT_EQ(value(saved), value(refused ? untouched : original)) << n << " at " << f.at;
        }
        ASSERT_EQ(l.completed, !refused) << n;
        completed += l.completed;
    }
    EXPECT_GT(completed, 100);
}
