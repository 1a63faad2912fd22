#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <QDir>

#include "fuzz/fuzzing.h"
#include "support/bytefiles.h"
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace kv;
using namespace Qt::StringLiterals;
using R = ConfigRecord;

namespace {

using Loaded = kvfuzz::LoadedConfig;

// Everything a configuration sets in the controls, in one line; a text over 40 characters by its
// start and length.
QString state(const Loaded &l)
{
    const SettingsControls &c = l.controls;
    const EncoderSettings &s = c.settings();
    const auto shown = [](const QString &t) { return t.size() > 40 ? u"%1...(%2)"_s.arg(t.left(20)).arg(t.size()) : t; };
    const MpcModeControls m = c.mpcControls();
    return QString::asprintf("%smp3 %d %d %d %d [%ls]; ogg %d %d %d [%ls]; mpc %d %d %d [%ls] %ls shows %d%d%d%d; window %d %d %d %d"
                             " tab %d %ls [%ls]", l.completed ? "" : "stopped: ", s.mp3.mode, s.mp3.presetIndex, s.mp3.abrKbps,
                             s.mp3.cbrIndex, qUtf16Printable(s.mp3.commandLine), s.ogg.mode, s.ogg.qualityTenths, s.ogg.abrKbps,
                             qUtf16Printable(s.ogg.commandLine), s.mpc.mode, s.mpc.presetIndex, s.mpc.qualityTenths,
                             qUtf16Printable(shown(s.mpc.commandLine)), qUtf16Printable(c.lblMpc()), m.cmbPresetMpc, m.sliMpc, m.lblMpc,
                             m.txtCmdMpc, c.windowLeft(), c.windowTop(), c.windowWidth(), c.windowHeight(), c.selectedTab(),
                             qUtf16Printable(c.languagePanelText()), qUtf16Printable(c.startFolder()));
}

QByteArray field(const QByteArray &content) { return content + QByteArray(R::kTextWidth - content.size(), ' '); }

} // namespace

// Each configuration seed of the fuzz target loads as recorded. window-2185-wide.cfg: 2185 pixels
// overflow 16 bits in twips, so the load stops after left and top; 2184 is the widest that fits.
TEST(ConfigFile, SeedsAndAGoldenRecordLoadAsRecorded)
{
    QStringList lines;
    const QDir seeds(QStringLiteral(KV_TEST_DATA_DIR "/../fuzz/config/seeds"));
    for (const QString &name : seeds.entryList(QDir::Files))
        lines << name + u": "_s + state(Loaded(readAll(seeds.filePath(name))));

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
    lines << u"golden: "_s + state(l);
    EXPECT_EQ(l.controls.settings().mpc.commandLine, QString::fromLatin1(mpcLine));

    // Saving rounds to pixels (14,993 twips to 1,000), trims blanks, cuts at the field width and
    // writes one "?" per character outside the code page (a surrogate pair included).
    l.controls.setWindowWidth(14993);
    l.controls.setStartFolder(QStringLiteral("  /Музыка Ёё№€/日😀 "));
    l.controls.setMp3CommandLine(QStringLiteral(" -V 2 "));
    l.controls.setMpcCommandLine(QString::fromLatin1(mpcLine) + QStringLiteral("yyyyyy")); // 1030 characters
    const QByteArray written = l.save(*R::fromBytes(noise));
    const auto differ = std::mismatch(written.begin(), written.end(), golden.begin(), golden.end()).first;
    EXPECT_EQ(written, golden) << "first difference at offset " << differ - written.begin();
    // A minimised or maximised window keeps the place the record holds.
    l.controls.setWindowLeft(3000);
    for (const WindowState shownAs : {WindowState::Minimised, WindowState::Maximised}) {
        l.controls.setWindowState(shownAs);
        EXPECT_EQ(l.save(l.record).mid(50, 8), golden.mid(50, 8));
    }

    // Defaults go through the controls and restore the encoder settings (each differs here) only.
    ASSERT_TRUE(ResetToDefaults(l.controls));
    lines << u"golden after a reset to defaults: "_s + state(l);
    test::expectAsRecorded(u"configuration-loads"_s, lines);
}

// The forecast at every value a control can take is in the window's record, the defaults in the
// options command's tests; here each encoder's option text and forecast at the modes' edges, a
// line each in the record. MP3 preset 4 and Musepack preset 7 are one past their list's end; Ogg
// quality -0.5 forecasts 54.5, taken to the even 54; only blanks are trimmed, never the tab.
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
