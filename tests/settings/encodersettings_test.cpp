#include <gtest/gtest.h>

#include <QLocale>

#include "settings/encodersettings.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

EncoderSettings oggQuality(int q) { return {.ogg = {.qualityTenths = q}}; }
EncoderSettings mpcQuality(int q) { return {.mpc = {.mode = 1, .qualityTenths = q}}; }

} // namespace

// Each row: the option text and the estimate of one encoder. The forecast at every value a
// control can take is in the window's record; the quality rows here hold the numbers of the
// option text. The defaults are in the options command's tests, which print both.
TEST(OptionTextAndEstimate, ByEncoderAndMode)
{
    const struct { Encoder encoder; EncoderSettings settings; const char *text; int kbps; } cases[] = {
        {Encoder::Mp3, {.mp3 = {.mode = 1, .abrKbps = 128}}, "--preset 128 --silent --priority", 128},
        {Encoder::Mp3, {.mp3 = {.mode = 1, .abrKbps = 300}}, "--preset 300 --silent --priority", 300},
        // Constant bit rates: the first entry and the last, whose number is " 8".
        {Encoder::Mp3, {.mp3 = {.mode = 2, .cbrIndex = 0}}, "--preset cbr 320 --silent --priority", 320},
        {Encoder::Mp3, {.mp3 = {.mode = 2, .cbrIndex = 16}}, "--preset cbr 8 --silent --priority", 8},
        // Only blanks are trimmed.
        {Encoder::Mp3, {.mp3 = {.mode = 3, .commandLine = QStringLiteral("\t-V 2 ")}}, "\t-V 2 --silent --priority", 224},
        {Encoder::Ogg, oggQuality(-5), "--quiet --quality -0.5", 54}, // 54.5 goes to the even neighbour
        {Encoder::Ogg, oggQuality(-1), "--quiet --quality -0.1", 62},
        {Encoder::Ogg, oggQuality(39), "--quiet --quality 3.9", 126},
        {Encoder::Ogg, oggQuality(100), "--quiet --quality 10", 500},
        {Encoder::Ogg, {.ogg = {.mode = 1, .abrKbps = 256}}, "--quiet --bitrate 256", 256},
        {Encoder::Ogg, {.ogg = {.mode = 2, .commandLine = QStringLiteral(" -q 3 ")}}, "--quiet -q 3", 224},
        {Encoder::Mpc, {.mpc = {.presetIndex = 6}}, "--overwrite --silent --telephone", 60},
        // One past the end of a preset list (a damaged configuration): no preset at all.
        {Encoder::Mp3, {.mp3 = {.presetIndex = 4}}, " --silent --priority", 0},
        {Encoder::Mpc, {.mpc = {.presetIndex = 7}}, "--overwrite --silent ", 0},
        {Encoder::Mpc, mpcQuality(0), "--overwrite --silent --quality 0", 20},
        {Encoder::Mpc, mpcQuality(19), "--overwrite --silent --quality 1.9", 58},
        {Encoder::Mpc, mpcQuality(100), "--overwrite --silent --quality 10", 330},
        {Encoder::Mpc, {.mpc = {.mode = 2, .commandLine = QStringLiteral(" --xlevel ")}}, "--overwrite --silent --xlevel", 224},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(OptionTextBuilder().BuildOptionText(c.encoder, c.settings), QString::fromUtf8(c.text));
        BitrateEstimates e;
        EstimateBitrates(c.settings, e);
        EXPECT_EQ(c.encoder == Encoder::Mp3 ? e.mp3 : c.encoder == Encoder::Ogg ? e.ogg : e.mpc, c.kbps) << c.text;
    }
}

