#include <gtest/gtest.h>

#include "engine/commandline.h"
#include "engine/runparameters.h"
#include "platform/processes.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

// The codecs and modes of each command are in the window's tests; here: targets and quoting, with
// the default settings, for a file in the folder "/m m/".
TEST(CommandLine, TargetsAndQuoting)
{
    const struct { MakeCommand command; AudioFormat shown; QString name; const char *expected; } cases[] = {
        {MakeCommand::Wav, AudioFormat::Mp3, u"x.MP3"_s, R"("/p/codec/lame" --decode "/m m/x.MP3" "/m m/x.wav")"},
        // Empty options leave two blanks after the codec.
        {MakeCommand::Wav, AudioFormat::Mpc, u"-it's $x `y` ё.mpc"_s, R"("/p/codec/mppdec"  "/m m/-it's $x `y` ё.mpc" "/m m/-it's $x `y` ё.wav")"},
        // A double quote in a path is escaped, the backslashes before it doubled.
        {MakeCommand::Ogg, AudioFormat::Wav, uR"(say \"hi".wav)"_s,
         R"("/p/codec/oggenc2" --quiet --quality 6 "/m m/say \\\"hi\".wav" "/m m/say \\\"hi\".ogg")"},
    };
    for (const auto &c : cases) {
        RunParameters p;
        OptionTextBuilder builder;
        applyMakeCommand(p, c.command, c.shown, {}, builder);
        EXPECT_EQ(buildCommandLine(u"/p/"_s, p.codec, p.options, jobPaths(u"/m m/"_s, c.name, p.targetExtension)), QString::fromUtf8(c.expected));
    }
}

// One codec a processor, never more than eight, at least one however few the system reports.
TEST(Processors, SlotsFollowTheProcessorsUpToEight)
{
    for (const auto &[reported, slots] : {std::pair{-1L, 1}, {0L, 1}, {2L, 2}, {8L, 8}, {9L, 8}, {64L, 8}})
        EXPECT_EQ(clampProcessorCount(reported), slots) << reported;
}
