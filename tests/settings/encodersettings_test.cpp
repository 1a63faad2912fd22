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
    const struct { Encoder encoder; EncoderSettings settings; QLocale locale; const char *text; } cases[] = {
        {Encoder::Mp3, {}, kPoint, "--preset extreme --silent --priority"},
        {Encoder::Ogg, {}, kPoint, "--quiet --quality 6"},
        {Encoder::Mpc, {}, kPoint, "--overwrite --silent --insane"},
        {Encoder::Mp3, with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 128; }), kPoint, "--preset 128 --silent --priority"},
        {Encoder::Mp3, with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 300; }), kPoint, "--preset 300 --silent --priority"},
        {Encoder::Mp3, with([](auto &s) { s.mp3.mode = 2; s.mp3.cbrIndex = 16; }), kPoint, "--preset cbr 8 --silent --priority"},
        {Encoder::Mp3, with([](auto &s) { s.mp3.mode = 3; s.mp3.commandLine = QStringLiteral("  -V 2  "); }), kPoint, "-V 2 --silent --priority"},
        // Only blanks are trimmed, as the window always did.
        {Encoder::Mp3, with([](auto &s) { s.mp3.mode = 3; s.mp3.commandLine = QStringLiteral("\t-V 2 "); }), kPoint, "\t-V 2 --silent --priority"},
        {Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = -10; }), kPoint, "--quiet --quality -1"},
        {Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = 100; }), kPoint, "--quiet --quality 10"},
        {Encoder::Ogg, with([](auto &s) { s.ogg.qualityTenths = 45; }), kComma, "--quiet --quality 4,5"},
        {Encoder::Ogg, with([](auto &s) { s.ogg.mode = 1; s.ogg.abrKbps = 256; }), kPoint, "--quiet --bitrate 256"},
        {Encoder::Mpc, with([](auto &s) { s.mpc.presetIndex = 6; }), kPoint, "--overwrite --silent --telephone"},
        {Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 45; }), kComma, "--overwrite --silent --quality 4.5"},
        {Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 0; }), kComma, "--overwrite --silent --quality 0"},
        {Encoder::Mpc, with([](auto &s) { s.mpc.mode = 1; s.mpc.qualityTenths = 100; }), kComma, "--overwrite --silent --quality 10"},
        {Encoder::Mpc, with([](auto &s) { s.mpc.mode = 2; s.mpc.commandLine = QStringLiteral(" --xlevel "); }), kPoint, "--overwrite --silent --xlevel"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(OptionTextBuilder().BuildOptionText(c.encoder, c.settings, c.locale), QString::fromUtf8(c.text));
}

TEST(OptionText, ModePartIsSharedAcrossEncoders)
{
    OptionTextBuilder builder;
    EncoderSettings s;
    s.ogg.mode = -1;
    s.mpc.mode = 7;
    builder.BuildOptionText(Encoder::Mp3, s, kPoint);
    EXPECT_EQ(builder.BuildOptionText(Encoder::Ogg, s, kPoint), QStringLiteral("--quiet --preset extreme"));
    s.ogg.mode = 1;
    builder.BuildOptionText(Encoder::Ogg, s, kPoint);
    EXPECT_EQ(builder.BuildOptionText(Encoder::Mpc, s, kPoint), QStringLiteral("--overwrite --silent --bitrate 192"));
}

TEST(Estimates, ByEncoderAndMode)
{
    auto quality = [](int ogg, int mpc) {
        return with([=](auto &s) { s.ogg.qualityTenths = ogg; s.mpc.mode = 1; s.mpc.qualityTenths = mpc; });
    };
    const struct { EncoderSettings settings; BitrateEstimates expected; } cases[] = {
        {{}, {234, 192, 240}},
        {quality(-10, 0), {234, 45, 20}},
        {quality(100, 100), {234, 500, 330}},
        {quality(90, 29), {234, 320, 87}},
        {quality(80, 30), {234, 256, 70}}, // Musepack drops here, as it always has
        {quality(39, 39), {234, 126, 106}},
        {quality(40, 40), {234, 128, 130}},
        {quality(89, 45), {234, 314, 155}},
        {quality(-5, 19), {234, 54, 58}}, // 54.5 goes to the even neighbour
        {quality(79, 49), {234, 253, 175}},
        {quality(0, 50), {234, 64, 180}},
        {with([](auto &s) { s.mp3.presetIndex = 0; s.mpc.presetIndex = 6; }), {320, 192, 60}},
        {with([](auto &s) { s.mp3.presetIndex = 3; s.mpc.presetIndex = 0; }), {149, 192, 270}},
        {with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 300; s.ogg.mode = 1; s.ogg.abrKbps = 128; }), {300, 128, 240}},
        {with([](auto &s) { s.mp3.mode = 2; s.mp3.cbrIndex = 16; }), {8, 192, 240}},
        {with([](auto &s) { s.mp3.mode = 3; s.ogg.mode = 2; s.mpc.mode = 2; }), {224, 224, 224}},
    };
    for (const auto &c : cases) {
        BitrateEstimates e;
        EstimateBitrates(c.settings, e);
        EXPECT_EQ(e, c.expected) << e.mp3 << ' ' << e.ogg << ' ' << e.mpc;
    }
}

TEST(Estimates, UnmatchedRulesAndFailuresLeaveTheCallersValues)
{
    const struct { EncoderSettings settings; BitrateEstimates expected; } cases[] = {
        {with([](auto &s) { s.mp3.presetIndex = 4; s.ogg.qualityTenths = 101; s.mpc.mode = 1; s.mpc.qualityTenths = -1; }), {1, 2, 3}},
        {with([](auto &s) { s.mp3.mode = -1; s.ogg.mode = 3; s.mpc.mode = 3; }), {1, 2, 3}},
        // Failures end the estimate there: a 16-bit overflow, a CBR list without selection.
        {with([](auto &s) { s.mp3.mode = 1; s.mp3.abrKbps = 40000; }), {1, 2, 3}},
        {with([](auto &s) { s.mp3.mode = 2; s.mp3.cbrIndex = -1; }), {1, 2, 3}},
        {with([](auto &s) { s.ogg.mode = 1; s.ogg.abrKbps = 32768; }), {234, 2, 3}},
    };
    for (const auto &c : cases) {
        BitrateEstimates e{1, 2, 3};
        EstimateBitrates(c.settings, e);
        EXPECT_EQ(e, c.expected) << e.mp3 << ' ' << e.ogg << ' ' << e.mpc;
    }
}

TEST(SliderLabels, FollowTheLocale)
{
    EXPECT_EQ(abrLabelText(192), QStringLiteral("192 kbps"));
    EXPECT_EQ(qualityLabelText(45, kPoint), QStringLiteral("--quality 4.5"));
    EXPECT_EQ(qualityLabelText(-2, kComma), QStringLiteral("--quality -0,2"));
    EXPECT_EQ(cbrKbps(7), 96);
}
