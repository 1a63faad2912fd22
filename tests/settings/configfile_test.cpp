#include <functional>
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
    c.setOggCommandLine(QStringLiteral("--quality 4"));
    c.setMpcMode(2);
    c.setMpcPreset(3);
    c.setMpcQuality(70);
    c.setMpcCommandLine(QStringLiteral("--xlevel"));

    MemoryFiles files;
    ConfigRecord record;
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));

    QByteArray expected(R::kSize, '\0');
    const char small[] = {2, 1, 1, 2, static_cast<char>(128), 7, 0, 55, 32, 2, 3, 70};
    expected.replace(0, 12, QByteArray(small, 12));
    putInt16(expected, 50, 100);
    putInt16(expected, 52, -100);
    putInt16(expected, 54, 1000);
    putInt16(expected, 56, 601);
    expected.replace(70, R::kTextWidth, field(QByteArray("/home/\xCC\xF3\xE7\xFB\xEA\xE0/")));
    expected.replace(3142, R::kTextWidth, field("-V 2"));
    expected.replace(4166, R::kTextWidth, field("--quality 4"));
    expected.replace(5190, R::kTextWidth, field("--xlevel"));
    ASSERT_EQ(files.content[kPath].size(), R::kSize);
    for (qsizetype i = 0; i < R::kSize; ++i)
        ASSERT_EQ(files.content[kPath].at(i), expected.at(i)) << "offset " << i;

    Loaded l = load(expected);
    EXPECT_TRUE(l.completed);
    EncoderSettings s = c.settings();
    s.mp3.commandLine = QStringLiteral("-V 2");
    EXPECT_EQ(l.controls.settings(), s);
    EXPECT_EQ(l.controls.selectedTab(), 2);
    EXPECT_EQ(l.controls.languagePanelText(), QStringLiteral("Русский"));
    EXPECT_EQ(l.controls.windowLeft(), 1500);
    EXPECT_EQ(l.controls.windowTop(), -1500);
    EXPECT_EQ(l.controls.windowWidth(), 15000);
    EXPECT_EQ(l.controls.windowHeight(), 9015);
    EXPECT_EQ(l.controls.startFolder(), QStringLiteral("/home/Музыка/"));
    EXPECT_EQ(l.controls.lblPresetOgg(), QStringLiteral("--quality 4.5"));
    EXPECT_EQ(l.controls.lblAbrOgg(), QStringLiteral("160 kbps"));
    EXPECT_EQ(l.controls.mpcControls(), (MpcModeControls{false, false, false, true}));
}

TEST(ConfigFile, AllZeroRecordLoadsAsTheSmallestSettings)
{
    Loaded l = load(QByteArray(R::kSize, '\0'));
    EXPECT_TRUE(l.completed);
    const SettingsControls &c = l.controls;
    EXPECT_EQ(c.windowLeft(), 0);
    EXPECT_EQ(c.windowTop(), 0);
    EXPECT_EQ(c.windowWidth(), SettingsControls::kMinWidthTwips);
    EXPECT_EQ(c.windowHeight(), SettingsControls::kMinHeightTwips);
    EXPECT_EQ(c.selectedTab(), 1);
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("English"));
    const EncoderSettings &s = c.settings();
    EXPECT_EQ(s.mp3, (Mp3Settings{0, 0, 128, 0, QString()}));
    EXPECT_EQ(s.ogg, (OggSettings{0, -10, 128, QString()}));
    EXPECT_EQ(s.mpc, (MpcSettings{0, 0, 0, QString()}));
    EXPECT_EQ(c.lblPresetOgg(), QStringLiteral("--quality -1"));
    EXPECT_EQ(c.lblAbr(), QStringLiteral("128 kbps"));
    EXPECT_EQ(c.lblMpc(), QStringLiteral("--quality 0"));
    EXPECT_TRUE(c.startFolder().isEmpty());
    OptionTextBuilder b;
    EXPECT_EQ(b.BuildOptionText(Encoder::Mp3, s, kPoint), QStringLiteral("--preset insane --silent --priority"));
    EXPECT_EQ(b.BuildOptionText(Encoder::Mpc, s, kPoint), QStringLiteral("--overwrite --silent --braindead"));
}

TEST(ConfigFile, OnlyAFileOfExactlyOneRecordIsRead)
{
    for (const qsizetype size : {qsizetype(0), R::kSize - 1, R::kSize + 1, R::kSize}) {
        MemoryFiles files;
        QByteArray bytes(size, '\0');
        if (size > 11)
            bytes[R::kMp3Preset] = 3; // visible if read
        files.content[kPath] = bytes;
        const StartupSettings s = loadStartupSettings(kPath, files, kPoint);
        EXPECT_EQ(configFileQualifies(kPath, files), size == R::kSize) << size;
        EXPECT_EQ(s.fileRead, size == R::kSize) << size;
        EXPECT_EQ(s.settings().mp3.presetIndex, size == R::kSize ? 3 : 1) << size;
    }
    MemoryFiles none;
    const StartupSettings s = loadStartupSettings(kPath, none, kPoint);
    EXPECT_FALSE(s.fileRead);
    EXPECT_EQ(s.settings(), EncoderSettings());
    EXPECT_EQ(s.controls.selectedTab(), 1);
}

TEST(ConfigFile, OverflowingWidthStopsTheLoadAfterLeftAndTop)
{
    QByteArray bytes(R::kSize, '\0');
    putInt16(bytes, R::kWindowLeft, 10);
    putInt16(bytes, R::kWindowTop, 20);
    putInt16(bytes, R::kWindowWidth, 2185);
    putInt16(bytes, R::kWindowHeight, 700);
    bytes[R::kTab] = 3;
    bytes[R::kLanguage] = 1;
    bytes[R::kMp3Preset] = 3;
    Loaded l = load(bytes);
    EXPECT_FALSE(l.completed);
    EXPECT_EQ(l.controls.windowLeft(), 150);
    EXPECT_EQ(l.controls.windowTop(), 300);
    EXPECT_EQ(l.controls.windowWidth(), SettingsControls::kMinWidthTwips);
    EXPECT_EQ(l.controls.windowHeight(), SettingsControls::kMinHeightTwips);
    EXPECT_EQ(l.controls.selectedTab(), 1);
    EXPECT_EQ(l.controls.languagePanelText(), QStringLiteral("English"));
    EXPECT_EQ(l.controls.settings(), EncoderSettings());

    putInt16(bytes, R::kWindowWidth, 2184); // the widest that fits
    EXPECT_TRUE(load(bytes).completed);
    putInt16(bytes, R::kWindowLeft, -2185);
    EXPECT_FALSE(load(bytes).completed);
}

TEST(ConfigFile, LongCommandLineIsCutAndPaddingTrimmed)
{
    SettingsControls c = defaulted();
    const QString longText = QStringLiteral("-V 2 ") + QString(1025, QLatin1Char('x'));
    c.setMp3CommandLine(longText); // 1030 characters
    c.setOggCommandLine(QStringLiteral("   --quality 3   "));
    MemoryFiles files;
    ConfigRecord record;
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));
    EXPECT_EQ(files.content[kPath].size(), R::kSize);
    Loaded l = load(files.content[kPath]);
    EXPECT_EQ(l.controls.settings().mp3.commandLine, longText.left(1024));
    EXPECT_EQ(l.controls.settings().ogg.commandLine, QStringLiteral("--quality 3"));
}

TEST(ConfigFile, LoadThenSavePassesEveryByteThrough)
{
    std::mt19937 random(7);
    QByteArray bytes(R::kSize, '\0');
    for (qsizetype i = 0; i < R::kSize; ++i)
        bytes[i] = static_cast<char>(random() & 0xFF);
    const char small[] = {3, 0, 2, 1, 44, 9, 1, 70, 100, 1, 5, 33};
    bytes.replace(0, 12, QByteArray(small, 12));
    putInt16(bytes, R::kWindowLeft, -40);
    putInt16(bytes, R::kWindowTop, 35);
    putInt16(bytes, R::kWindowWidth, 1200);
    putInt16(bytes, R::kWindowHeight, 900);
    for (const qsizetype at : {R::kFolder, R::kMp3CommandLine, R::kOggCommandLine, R::kMpcCommandLine})
        bytes.replace(at, R::kTextWidth, field(QByteArray("/m\xE8\xF0/ -x \xB9") + QByteArray::number(at)));

    MemoryFiles files;
    files.content[kPath] = bytes;
    SettingsControls c = defaulted();
    ConfigRecord record;
    ASSERT_TRUE(LoadConfig(kPath, files, c, record));
    files.content.clear();
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));
    EXPECT_TRUE(files.content[kPath] == bytes);
}

TEST(ConfigFile, LanguageFollowsThePanelTextExactly)
{
    QByteArray bytes(R::kSize, '\0');
    bytes[R::kLanguage] = static_cast<char>(200);
    MemoryFiles files;
    files.content[kPath] = bytes;
    SettingsControls c = defaulted();
    int russianApplied = 0;
    c.setApplyRussianHook([&] { ++russianApplied; });
    ConfigRecord record;
    ASSERT_TRUE(LoadConfig(kPath, files, c, record));
    EXPECT_EQ(russianApplied, 1);
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("Русский"));

    const struct { QString panel; int byte; } cases[] = {
        {QStringLiteral("English"), 0}, {QStringLiteral("Русский"), 1},
        {QStringLiteral("english"), 1}, {QStringLiteral("English "), 1}, {QString(), 1},
    };
    for (const auto &k : cases) {
        c.setLanguagePanelText(k.panel);
        ASSERT_TRUE(SaveConfig(kPath, files, c, record));
        EXPECT_EQ(files.content[kPath].at(R::kLanguage), k.byte) << k.panel.toStdString();
    }
}

TEST(ConfigFile, TextsAreWindows1251)
{
    SettingsControls c = defaulted();
    const QString cyrillic = QStringLiteral("--comment Привет, ЁЖЩ ёжщ №5 «ї» Ґ€");
    c.setMpcCommandLine(cyrillic);
    c.setStartFolder(QStringLiteral("/tmp/日本/😀/"));
    MemoryFiles files;
    ConfigRecord record;
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));
    const QByteArray &bytes = files.content[kPath];
    EXPECT_EQ(bytes.mid(R::kFolder, 10), QByteArray("/tmp/?\?/?/"));
    EXPECT_EQ(bytes.at(R::kMpcCommandLine + 10), '\xCF'); // "П"
    Loaded l = load(bytes);
    EXPECT_EQ(l.controls.settings().mpc.commandLine, cyrillic);
    EXPECT_EQ(l.controls.startFolder(), QStringLiteral("/tmp/?\?/?/"));

    // Every byte decodes to one character that encodes back to the same byte.
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    const QString decoded = fromWindows1251(all);
    EXPECT_EQ(decoded.size(), 256);
    EXPECT_TRUE(toWindows1251(decoded) == all);
    EXPECT_EQ(decoded.at(0xA8), QChar(0x0401));
    EXPECT_EQ(decoded.at(0xFF), QChar(0x044F));
    EXPECT_EQ(decoded.at(0x88), QChar(0x20AC));
}

TEST(ConfigFile, FailedSaveWritesNothing)
{
    const QByteArray old(R::kSize, 'o');
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
    MemoryFiles empty;
    EXPECT_FALSE(SaveConfig(kPath, empty, c, record));
    EXPECT_TRUE(empty.content.empty());
}

TEST(ConfigFile, SaveOverALongerFileKeepsItsTail)
{
    MemoryFiles files;
    files.content[kPath] = QByteArray(20000, 'x');
    SettingsControls c = defaulted();
    ConfigRecord record;
    ASSERT_TRUE(SaveConfig(kPath, files, c, record));
    const QByteArray &bytes = files.content[kPath];
    ASSERT_EQ(bytes.size(), 20000);
    EXPECT_TRUE(bytes.left(R::kSize) == record.bytes());
    EXPECT_TRUE(bytes.mid(R::kSize) == QByteArray(20000 - R::kSize, 'x'));
}

TEST(ConfigFile, OnlyANormalWindowStoresItsPlace)
{
    QByteArray bytes(R::kSize, '\0');
    putInt16(bytes, R::kWindowLeft, 33);
    putInt16(bytes, R::kWindowWidth, 1111);
    Loaded l = load(bytes);
    l.controls.setWindowLeft(3000);
    l.controls.setWindowWidth(30000);
    MemoryFiles files;
    for (const WindowState state : {WindowState::Maximised, WindowState::Minimised}) {
        l.controls.setWindowState(state);
        ASSERT_TRUE(SaveConfig(kPath, files, l.controls, l.record));
        EXPECT_EQ(l.record.int16(R::kWindowLeft), 33);
        EXPECT_EQ(l.record.int16(R::kWindowWidth), 1111);
    }
    l.controls.setWindowState(WindowState::Normal);
    ASSERT_TRUE(SaveConfig(kPath, files, l.controls, l.record));
    EXPECT_EQ(l.record.int16(R::kWindowLeft), 200);
    EXPECT_EQ(l.record.int16(R::kWindowWidth), 2000);
}

// Random records: no crash, and the load applies every step up to the first refused value and
// nothing after it.
TEST(ConfigFile, RandomRecordsEndAtTheFirstRefusedValue)
{
    std::mt19937 random(2024);
    auto chance = [&](int percent) { return static_cast<int>(random() % 100) < percent; };
    auto smallField = [&](int validCount) {
        return chance(85) ? static_cast<int>(random() % validCount) : static_cast<int>(random() % 256);
    };
    auto text = [](const ConfigRecord &r, qsizetype at) {
        const QString t = trimBlanks(r.text(at));
        const qsizetype zero = t.indexOf(QChar(u'\0'));
        return zero < 0 ? t : t.left(zero);
    };
    const SettingsControls defaults = defaulted();

    struct Step
    {
        std::function<bool(const ConfigRecord &)> refused;
        std::function<bool(const SettingsControls &, const ConfigRecord &)> applied;
        std::function<bool(const SettingsControls &, const SettingsControls &)> untouched;
    };
    auto window = [](qsizetype at, std::function<int(const SettingsControls &)> get, int minimum) {
        return Step{[at](const ConfigRecord &r) { return std::abs(r.int16(at)) > 2184; },
                    [at, get, minimum](const SettingsControls &c, const ConfigRecord &r) {
                        return get(c) == std::max(r.int16(at) * 15, minimum);
                    },
                    [get](const SettingsControls &c, const SettingsControls &d) { return get(c) == get(d); }};
    };
    auto byteStep = [](qsizetype at, int limit, int offset, std::function<int(const SettingsControls &)> get) {
        return Step{[=](const ConfigRecord &r) { return r.byte(at) >= limit; },
                    [=](const SettingsControls &c, const ConfigRecord &r) { return get(c) == r.byte(at) + offset; },
                    [=](const SettingsControls &c, const SettingsControls &d) { return get(c) == get(d); }};
    };
    auto textStep = [&](qsizetype at, std::function<QString(const SettingsControls &)> get) {
        return Step{[](const ConfigRecord &) { return false; },
                    [=](const SettingsControls &c, const ConfigRecord &r) { return get(c) == text(r, at); },
                    [=](const SettingsControls &c, const SettingsControls &d) { return get(c) == get(d); }};
    };
    const Step steps[] = {
        window(R::kWindowLeft, [](auto &c) { return c.windowLeft(); }, -32768),
        window(R::kWindowTop, [](auto &c) { return c.windowTop(); }, -32768),
        window(R::kWindowWidth, [](auto &c) { return c.windowWidth(); }, 12000),
        window(R::kWindowHeight, [](auto &c) { return c.windowHeight(); }, 9000),
        {[](auto &) { return false; },
         [](auto &c, auto &r) { return c.selectedTab() == (r.byte(R::kTab) >= 1 && r.byte(R::kTab) <= 3 ? r.byte(R::kTab) : 1); },
         [](auto &c, auto &) { return c.selectedTab() == 1; }},
        {[](auto &) { return false; },
         [](auto &c, auto &r) { return c.languagePanelText() == (r.byte(R::kLanguage) ? QStringLiteral("Русский") : QStringLiteral("English")); },
         [](auto &c, auto &) { return c.languagePanelText() == QStringLiteral("English"); }},
        byteStep(R::kMp3Mode, 4, 0, [](auto &c) { return c.settings().mp3.mode; }),
        byteStep(R::kMp3Preset, 4, 0, [](auto &c) { return c.settings().mp3.presetIndex; }),
        byteStep(R::kMp3Abr, 173, 128, [](auto &c) { return c.settings().mp3.abrKbps; }),
        byteStep(R::kMp3Cbr, 17, 0, [](auto &c) { return c.settings().mp3.cbrIndex; }),
        textStep(R::kMp3CommandLine, [](auto &c) { return c.settings().mp3.commandLine; }),
        byteStep(R::kOggMode, 3, 0, [](auto &c) { return c.settings().ogg.mode; }),
        byteStep(R::kOggQuality, 111, -10, [](auto &c) { return c.settings().ogg.qualityTenths; }),
        byteStep(R::kOggAbr, 173, 128, [](auto &c) { return c.settings().ogg.abrKbps; }),
        textStep(R::kOggCommandLine, [](auto &c) { return c.settings().ogg.commandLine; }),
        byteStep(R::kMpcMode, 3, 0, [](auto &c) { return c.settings().mpc.mode; }),
        byteStep(R::kMpcPreset, 7, 0, [](auto &c) { return c.settings().mpc.presetIndex; }),
        byteStep(R::kMpcQuality, 101, 0, [](auto &c) { return c.settings().mpc.qualityTenths; }),
        textStep(R::kMpcCommandLine, [](auto &c) { return c.settings().mpc.commandLine; }),
        textStep(R::kFolder, [](auto &c) { return c.startFolder(); }),
    };

    int completedLoads = 0;
    for (int n = 0; n < 1500; ++n) {
        QByteArray bytes(R::kSize, '\0');
        for (qsizetype i = 0; i < R::kSize; ++i)
            bytes[i] = static_cast<char>(chance(20) ? ' ' : chance(10) ? 0 : random() & 0xFF);
        const int limits[] = {4, 4, 4, 173, 17, 3, 111, 173, 3, 7, 101};
        for (int i = 0; i < 11; ++i)
            bytes[1 + i] = static_cast<char>(smallField(limits[i]));
        for (const qsizetype at : {R::kWindowLeft, R::kWindowTop, R::kWindowWidth, R::kWindowHeight}) {
            if (chance(97))
                putInt16(bytes, at, static_cast<int>(random() % 4369) - 2184);
        }
        const Loaded l = load(bytes);
        bool refusedSeen = false;
        for (std::size_t s = 0; s < std::size(steps); ++s) {
            refusedSeen = refusedSeen || steps[s].refused(l.record);
            if (refusedSeen)
                ASSERT_TRUE(steps[s].untouched(l.controls, defaults)) << "record " << n << " step " << s;
            else
                ASSERT_TRUE(steps[s].applied(l.controls, l.record)) << "record " << n << " step " << s;
        }
        ASSERT_EQ(l.completed, !refusedSeen) << "record " << n;
        completedLoads += l.completed;
    }
    EXPECT_GT(completedLoads, 20); // the generator reaches the end of the load too
}
