#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <QLocale>

#include "fuzz/fuzzing.h"
#include "settings/configfile.h"
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace kv;
using namespace Qt::StringLiterals;
using R = ConfigRecord;

namespace {

const QString kPath = QStringLiteral("/opt/kv/kestrvan.cfg");

struct Loaded
{
    explicit Loaded(const QByteArray &bytes) { file.bytes = bytes; completed = LoadConfig(kPath, file, controls, record); }
    kvfuzz::MemoryFile file;
    SettingsControls controls{QLocale(QLocale::English, QLocale::UnitedStates)};
    ConfigRecord record;
    bool completed = false;
};

QByteArray save(const SettingsControls &c, ConfigRecord record)
{
    kvfuzz::MemoryFile file;
    EXPECT_TRUE(SaveConfig(kPath, file, c, record));
    return file.bytes.value_or(QByteArray());
}

QList<int> placeAndTab(const SettingsControls &c) { return {c.windowLeft(), c.windowTop(), c.windowWidth(), c.windowHeight(), c.selectedTab()}; }

QByteArray field(const QByteArray &content) { return content + QByteArray(R::kTextWidth - content.size(), ' '); }

} // namespace

TEST(ConfigFile, GoldenRecordReadAndWrittenBack)
{
    const QByteArray mpcLine = "--xlevel " + QByteArray(1015, 'x'); // fills its field
    std::mt19937 random(7);
    QByteArray noise(R::kSize, '\0');
    for (char &b : noise)
        b = static_cast<char>(random());
    QByteArray golden = noise; // the reserved runs and texts keep their noise, carried through
    golden.replace(0, 12, QByteArray("\x02\x01\x01\x02\x80\x07\x01\x37\x20\x02\x03\x46", 12));
    golden.replace(50, 8, QByteArray("\x64\x00\x9C\xFF\xE8\x03\x59\x02", 8)); // 100 -100 1000 601
    golden.replace(70, R::kTextWidth, field("/\xCC\xF3\xE7\xFB\xEA\xE0 \xA8\xB8\xB9\x88/??"));
    golden.replace(3142, R::kTextWidth, field("-V 2"));
    golden.replace(4166, R::kTextWidth, field("-q 3"));
    golden.replace(5190, R::kTextWidth, mpcLine);

    Loaded l(golden);
    EXPECT_TRUE(l.completed);
    EXPECT_EQ(l.controls.settings(), (EncoderSettings{{1, 2, 256, 7, QStringLiteral("-V 2")}, {1, 45, 160, QStringLiteral("-q 3")},
                                                      {2, 3, 70, QString::fromLatin1(mpcLine)}}));
    EXPECT_EQ(placeAndTab(l.controls), QList<int>({1500, -1500, 15000, 9015, 2}));
    EXPECT_EQ(l.controls.languagePanelText(), QStringLiteral("Русский"));
    EXPECT_EQ(l.controls.startFolder(), QStringLiteral("/Музыка Ёё№€/??"));

    // Saving rounds to pixels (14,993 twips to 1,000), trims blanks, cuts at the field width and
    // writes one "?" per character outside the code page (a surrogate pair included).
    l.controls.setWindowWidth(14993);
    l.controls.setStartFolder(QStringLiteral("  /Музыка Ёё№€/日😀 "));
    l.controls.setMp3CommandLine(QStringLiteral(" -V 2 "));
    l.controls.setMpcCommandLine(QString::fromLatin1(mpcLine) + QStringLiteral("yyyyyy")); // 1030 characters
    const QByteArray written = save(l.controls, *R::fromBytes(noise));
    const auto differ = std::mismatch(written.begin(), written.end(), golden.begin(), golden.end()).first;
    EXPECT_EQ(written, golden) << "first difference at offset " << differ - written.begin();
    // A minimised or maximised window keeps the place the record holds.
    l.controls.setWindowLeft(3000);
    for (const WindowState state : {WindowState::Minimised, WindowState::Maximised}) {
        l.controls.setWindowState(state);
        EXPECT_EQ(save(l.controls, l.record).mid(50, 8), golden.mid(50, 8));
    }

    // Defaults go through the controls and restore the encoder settings (each differs here) only.
    ASSERT_TRUE(ResetToDefaults(l.controls));
    EXPECT_EQ(l.controls.settings(), EncoderSettings());
    EXPECT_EQ(l.controls.lblMpc(), QStringLiteral("--quality 6"));
    EXPECT_EQ(l.controls.mpcControls(), (MpcModeControls{true, false, false, false}));
    EXPECT_EQ(placeAndTab(l.controls), QList<int>({3000, -1500, 14993, 9015, 2}));
    EXPECT_EQ(l.controls.startFolder(), QStringLiteral("  /Музыка Ёё№€/日😀 "));
}

// 2185 pixels overflow 16 bits in twips; 2184 is the widest that fits.
TEST(ConfigFile, OverflowingWidthStopsTheLoadAfterLeftAndTop)
{
    R r;
    r.setInt16(R::kWindowLeft, 10);
    r.setInt16(R::kWindowTop, 20);
    r.setInt16(R::kWindowWidth, 2185);
    r.setByte(R::kTab, 3);
    r.setByte(R::kMp3Preset, 3);
    const Loaded l(r.bytes());
    EXPECT_FALSE(l.completed);
    EXPECT_EQ(placeAndTab(l.controls), QList<int>({150, 300, 12000, 9000, 1}));
    EXPECT_EQ(l.controls.settings(), EncoderSettings());
    EXPECT_EQ(l.controls.lblMpc(), QStringLiteral("--quality 6")); // the slider's label is never blank
    r.setInt16(R::kWindowWidth, 2184);
    EXPECT_TRUE(Loaded(r.bytes()).completed);
}

// The forecast at every value a control can take is in the window's record, the defaults in the
// options command's tests; here each encoder's option text and forecast at the modes' edges, a
// line each in the record. MP3 preset 4 and Musepack preset 7 are one past their list's end.
TEST(OptionTextAndEstimate, ByEncoderAndMode)
{
    const EncoderSettings cases[] = {
        {{.mode = 1, .abrKbps = 128}, {.qualityTenths = -5}, {.presetIndex = 6}},
        {{.mode = 1, .abrKbps = 300}, {.qualityTenths = -1}, {.presetIndex = 7}},
        {{.mode = 2, .cbrIndex = 0}, {.qualityTenths = 39}, {.mode = 1, .qualityTenths = 0}},
        {{.mode = 2, .cbrIndex = 16}, {.qualityTenths = 100}, {.mode = 1, .qualityTenths = 19}},
        {{.mode = 3, .commandLine = u"\t-V 2 "_s}, {.mode = 1, .abrKbps = 256}, {.mode = 1, .qualityTenths = 100}},
        {{.presetIndex = 4}, {.mode = 2, .commandLine = u" -q 3 "_s}, {.mode = 2, .commandLine = u" --xlevel "_s}},
    };
    QStringList lines;
    for (const EncoderSettings &c : cases) {
        BitrateEstimates e;
        EstimateBitrates(c, e);
        const int kbps[] = {e.mp3, e.ogg, e.mpc};
        for (const Encoder encoder : {Encoder::Mp3, Encoder::Ogg, Encoder::Mpc}) {
            const QString text = OptionTextBuilder().BuildOptionText(encoder, c);
            lines << u"%1 kbps: [%2]"_s.arg(kbps[int(encoder)], 3).arg(text);
        }
    }
    test::expectAsRecorded(u"option-texts-and-estimates"_s, lines);
}
