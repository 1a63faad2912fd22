#include <gtest/gtest.h>

#include "engine/commandline.h"
#include "engine/runparameters.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

namespace {

// The command line of one Make command, with the default settings, for a file in the folder "/m m/".
QString lineFor(MakeCommand command, AudioFormat shown, const QString &name)
{
    RunParameters parameters;
    OptionTextBuilder builder;
    applyMakeCommand(parameters, command, shown, {}, builder);
    return buildCommandLine(u"/p/"_s, parameters.codec, parameters.options,
                            jobPaths(u"/m m/"_s, name, parameters.targetExtension));
}

} // namespace

// The codecs and modes of each command are in the window's tests; here: targets and quoting.
TEST(CommandLine, TargetsAndQuoting)
{
    using enum MakeCommand;
    using F = AudioFormat;
    const struct { QString line; const char *expected; } cases[] = {
        {lineFor(Wav, F::Mp3, u"x.MP3"_s), R"("/p/codec/lame" --decode "/m m/x.MP3" "/m m/x.wav")"},
        // Empty options leave two blanks after the codec.
        {lineFor(Wav, F::Mpc, u"-it's $x `y` ё.mpc"_s),
         R"("/p/codec/mppdec"  "/m m/-it's $x `y` ё.mpc" "/m m/-it's $x `y` ё.wav")"},
        // A double quote in a path is escaped, the backslashes before it doubled.
        {lineFor(Ogg, F::Wav, uR"(say \"hi".wav)"_s),
         R"("/p/codec/oggenc2" --quiet --quality 6 "/m m/say \\\"hi\".wav" "/m m/say \\\"hi\".ogg")"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.line, QString::fromUtf8(c.expected));
}
