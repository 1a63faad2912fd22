#include <functional>

#include <gtest/gtest.h>

#include <QLocale>

#include "settings/encodersettings.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

const QLocale kPoint(QLocale::English, QLocale::UnitedStates);
const QLocale kComma(QLocale::German, QLocale::Germany);

EncoderSettings with(const std::function<void(EncoderSettings &)> &change)
{
    EncoderSettings s;
    change(s);
    return s;
}

} // namespace

TEST(OptionText, ByEncoderAndMode)
{
    const struct
    {
        const char *name;
        Encoder encoder;
        EncoderSettings settings;
        QLocale locale;
        QString text;
    } cases[] = {
        {"mp3 default", Encoder::Mp3, {}, kPoint, QStringLiteral("--preset extreme --silent --priority")},
        {"ogg default", Encoder::Ogg, {}, kPoint, QStringLiteral("--quiet --quality 6")},
        {"mpc default", Encoder::Mpc, {}, kPoint, QStringLiteral("--overwrite --silent --insane")},
        {"mp3 medium", Encoder::Mp3, with([](auto &s) { s.mp3.presetIndex = 3; }), kPoint,
         QStringLiteral("--preset medium --silent --priority")},
        {"abr low end", Encoder::Mp3, with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 128; }), kPoint,
         QStringLiteral("--preset 128 --silent --priority")},
        {"abr high end", Encoder::Mp3, with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 300; }), kPoint,
         QStringLiteral("--preset 300 --silent --priority")},
        {"cbr 192", Encoder::Mp3, with([](auto &s) { s.mp3.mode = 2; }), kPoint,
         QStringLiteral("--preset cbr 192 --silent --priority")},
        {"cbr 8 loses its blank", Encoder::Mp3, with([](auto &s) { s.mp3.mode = 2; s.mp3.cbrIndex = 16; }), kPoint,
         QStringLiteral("--preset cbr 8 --silent --priority")},
        {"mp3 command line trimmed", Encoder::Mp3,
         with([](auto &s) { s.mp3.mode = 3; s.mp3.commandLine = QStringLiteral("  -V 2  "); }), kPoint,
         QStringLiteral("-V 2 --silent --priority")},
        {"only blanks are trimmed", Encoder::Mp3,
         with([](auto &s) { s.mp3.mode = 3; s.mp3.commandLine = QStringLiteral("\t-V 2 \t "); }), kPoint,
         QStringLiteral("\t-V 2 \t --silent --priority")},
        {"ogg -10", Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = -10; }), kPoint,
         QStringLiteral("--quiet --quality -1")},
        {"ogg 100", Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = 100; }), kPoint,
         QStringLiteral("--quiet --quality 10")},
        {"ogg 45 point", Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = 45; }), kPoint,
         QStringLiteral("--quiet --quality 4.5")},
        {"ogg keeps the comma", Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = 45; }), kComma,
         QStringLiteral("--quiet --quality 4,5")},
        {"ogg abr", Encoder::Ogg, with([](auto &s) { s.ogg.mode = 1; s.ogg.abrKbps = 256; }), kPoint,
         QStringLiteral("--quiet --bitrate 256")},
        {"ogg command line", Encoder::Ogg,
         with([](auto &s) { s.ogg.mode = 2; s.ogg.commandLine = QStringLiteral(" -q 3 "); }), kPoint,
         QStringLiteral("--quiet -q 3")},
        {"mpc braindead", Encoder::Mpc, with([](auto &s) { s.mpc.presetIndex = 0; }), kPoint,
         QStringLiteral("--overwrite --silent --braindead")},
        {"mpc telephone", Encoder::Mpc, with([](auto &s) { s.mpc.presetIndex = 6; }), kPoint,
         QStringLiteral("--overwrite --silent --telephone")},
        {"mpc comma replaced", Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 45; }), kComma,
         QStringLiteral("--overwrite --silent --quality 4.5")},
        {"mpc 0", Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 0; }), kComma,
         QStringLiteral("--overwrite --silent --quality 0")},
        {"mpc 100", Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 100; }), kComma,
         QStringLiteral("--overwrite --silent --quality 10")},
        {"mpc 29", Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 29; }), kComma,
         QStringLiteral("--overwrite --silent --quality 2.9")},
        {"mpc command line", Encoder::Mpc,
         with([](auto &s) { s.mpc.mode = 2; s.mpc.commandLine = QStringLiteral("  --xlevel  "); }), kPoint,
         QStringLiteral("--overwrite --silent --xlevel")},
    };
    for (const auto &c : cases) {
        OptionTextBuilder builder;
        EXPECT_EQ(builder.BuildOptionText(c.encoder, c.settings, c.locale), c.text) << c.name;
    }
}

TEST(OptionText, ModePartIsSharedAcrossEncoders)
{
    OptionTextBuilder builder;
    EncoderSettings s;
    s.ogg.mode = -1;
    s.mpc.mode = 7;
    EXPECT_EQ(builder.BuildOptionText(Encoder::Mp3, s, kPoint),
              QStringLiteral("--preset extreme --silent --priority"));
    // No Ogg mode selected: the MP3 mode part is joined to the Ogg prefix.
    EXPECT_EQ(builder.BuildOptionText(Encoder::Ogg, s, kPoint), QStringLiteral("--quiet --preset extreme"));
    s.ogg.mode = 1;
    EXPECT_EQ(builder.BuildOptionText(Encoder::Ogg, s, kPoint), QStringLiteral("--quiet --bitrate 192"));
    EXPECT_EQ(builder.BuildOptionText(Encoder::Mpc, s, kPoint),
              QStringLiteral("--overwrite --silent --bitrate 192"));
    // A fresh builder has nothing to reuse.
    EXPECT_EQ(OptionTextBuilder().BuildOptionText(Encoder::Mpc, s, kPoint), QStringLiteral("--overwrite --silent "));
}

TEST(OptionText, PresetWithoutSelectionGivesAnEmptyModePart)
{
    EncoderSettings s;
    s.mp3.presetIndex = -1;
    s.mp3.cbrIndex = 17;
    EXPECT_EQ(OptionTextBuilder().BuildOptionText(Encoder::Mp3, s, kPoint), QStringLiteral(" --silent --priority"));
    s.mp3.mode = 2;
    EXPECT_EQ(OptionTextBuilder().BuildOptionText(Encoder::Mp3, s, kPoint),
              QStringLiteral("--preset cbr  --silent --priority"));
}

TEST(Estimates, ByEncoderAndMode)
{
    const struct
    {
        const char *name;
        EncoderSettings settings;
        BitrateEstimates expected;
    } cases[] = {
        {"defaults", {}, {234, 192, 240}},
        {"mp3 insane, ogg -10, mpc q0",
         with([](auto &s) { s.mp3.presetIndex = 0; s.ogg.qualityTenths = -10; s.mpc.mode = 1; s.mpc.qualityTenths = 0; }),
         {320, 45, 20}},
        {"mp3 standard, ogg 100, mpc q100",
         with([](auto &s) { s.mp3.presetIndex = 2; s.ogg.qualityTenths = 100; s.mpc.mode = 1; s.mpc.qualityTenths = 100; }),
         {198, 500, 330}},
        {"mp3 medium, ogg 90, mpc q29",
         with([](auto &s) { s.mp3.presetIndex = 3; s.ogg.qualityTenths = 90; s.mpc.mode = 1; s.mpc.qualityTenths = 29; }),
         {149, 320, 87}},
        {"ogg 80, mpc q30 drops",
         with([](auto &s) { s.ogg.qualityTenths = 80; s.mpc.mode = 1; s.mpc.qualityTenths = 30; }), {234, 256, 70}},
        {"ogg 39, mpc q39",
         with([](auto &s) { s.ogg.qualityTenths = 39; s.mpc.mode = 1; s.mpc.qualityTenths = 39; }), {234, 126, 106}},
        {"ogg 40, mpc q40 jumps",
         with([](auto &s) { s.ogg.qualityTenths = 40; s.mpc.mode = 1; s.mpc.qualityTenths = 40; }), {234, 128, 130}},
        {"ogg 89, mpc q45",
         with([](auto &s) { s.ogg.qualityTenths = 89; s.mpc.mode = 1; s.mpc.qualityTenths = 45; }), {234, 314, 155}},
        {"ogg -5 ties to even, mpc q19",
         with([](auto &s) { s.ogg.qualityTenths = -5; s.mpc.mode = 1; s.mpc.qualityTenths = 19; }), {234, 54, 58}},
        {"ogg 0, mpc q20",
         with([](auto &s) { s.ogg.qualityTenths = 0; s.mpc.mode = 1; s.mpc.qualityTenths = 20; }), {234, 64, 60}},
        {"ogg 79, mpc q49",
         with([](auto &s) { s.ogg.qualityTenths = 79; s.mpc.mode = 1; s.mpc.qualityTenths = 49; }), {234, 253, 175}},
        {"ogg 2, mpc q50",
         with([](auto &s) { s.ogg.qualityTenths = 2; s.mpc.mode = 1; s.mpc.qualityTenths = 50; }), {234, 67, 180}},
        {"abr and telephone",
         with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 300; s.ogg.mode = 1; s.ogg.abrKbps = 128; s.mpc.presetIndex = 6; }),
         {300, 128, 60}},
        {"cbr 8 and braindead",
         with([](auto &s) { s.mp3.mode = 2; s.mp3.cbrIndex = 16; s.mpc.presetIndex = 0; }), {8, 192, 270}},
        {"command lines", with([](auto &s) { s.mp3.mode = 3; s.ogg.mode = 2; s.mpc.mode = 2; }), {224, 224, 224}},
    };
    for (const auto &c : cases) {
        BitrateEstimates e;
        EstimateBitrates(c.settings, e);
        EXPECT_EQ(e.mp3, c.expected.mp3) << c.name;
        EXPECT_EQ(e.ogg, c.expected.ogg) << c.name;
        EXPECT_EQ(e.mpc, c.expected.mpc) << c.name;
    }
}

TEST(Estimates, UnmatchedRulesLeaveTheCallersValues)
{
    EncoderSettings s;
    s.mp3.presetIndex = 4;
    s.ogg.qualityTenths = 101;
    s.mpc.mode = 1;
    s.mpc.qualityTenths = -1;
    BitrateEstimates e{11, 22, 33};
    EstimateBitrates(s, e);
    EXPECT_EQ(e, (BitrateEstimates{11, 22, 33}));
    s.mp3.mode = -1;
    s.ogg.mode = 3;
    s.mpc.mode = 3;
    s.mp3.presetIndex = 1;
    EstimateBitrates(s, e);
    EXPECT_EQ(e, (BitrateEstimates{11, 22, 33}));
}

TEST(Estimates, FailureEndsAtThatEncoder)
{
    // An average bitrate beyond 16 bits overflows: MP3 and everything after it stay.
    EncoderSettings s;
    s.mp3.mode = 1;
    s.mp3.abrKbps = 40000;
    BitrateEstimates e{1, 2, 3};
    EstimateBitrates(s, e);
    EXPECT_EQ(e, (BitrateEstimates{1, 2, 3}));
    // A CBR list without selection has no number to read.
    s = EncoderSettings();
    s.mp3.mode = 2;
    s.mp3.cbrIndex = -1;
    EstimateBitrates(s, e);
    EXPECT_EQ(e, (BitrateEstimates{1, 2, 3}));
    s = EncoderSettings();
    s.ogg.mode = 1;
    s.ogg.abrKbps = 32768;
    EstimateBitrates(s, e);
    EXPECT_EQ(e, (BitrateEstimates{234, 2, 3}));
}

TEST(FixedLists, EveryCbrEntryCarriesItsNumberUpFront)
{
    ASSERT_EQ(mp3CbrTexts().size(), 17);
    const int kbps[] = {320, 256, 224, 192, 160, 128, 112, 96, 80, 64, 56, 48, 40, 32, 24, 16, 8};
    for (int i = 0; i < 17; ++i) {
        EXPECT_EQ(cbrKbps(i), kbps[i]) << i;
        EXPECT_TRUE(mp3CbrTexts().at(i).endsWith(QStringLiteral(" kbps"))) << i;
    }
    EXPECT_EQ(mp3CbrTexts().at(16), QStringLiteral(" 8 kbps"));
    EXPECT_EQ(mp3PresetTexts().size(), 4);
    EXPECT_EQ(mpcPresetTexts().size(), 7);
}

TEST(SliderLabels, FollowTheLocale)
{
    EXPECT_EQ(abrLabelText(192), QStringLiteral("192 kbps"));
    EXPECT_EQ(qualityLabelText(60, kComma), QStringLiteral("--quality 6"));
    EXPECT_EQ(qualityLabelText(45, kPoint), QStringLiteral("--quality 4.5"));
    EXPECT_EQ(qualityLabelText(45, kComma), QStringLiteral("--quality 4,5"));
    EXPECT_EQ(qualityLabelText(-10, kPoint), QStringLiteral("--quality -1"));
    EXPECT_EQ(qualityLabelText(-2, kComma), QStringLiteral("--quality -0,2"));
    EXPECT_EQ(qualityLabelText(0, kPoint), QStringLiteral("--quality 0"));
}
