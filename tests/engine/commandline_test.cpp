#include <gtest/gtest.h>

#include <QLocale>

#include "engine/commandline.h"
#include "engine/runparameters.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

const QString program = QStringLiteral("/opt/kv/");
const QString folder = QStringLiteral("/home/u/My Music/");

QString lineFor(MakeCommand command, AudioFormat shown, const EncoderSettings &settings,
                const QLocale &locale = QLocale::c(), const QString &name = QStringLiteral("a b.wav"))
{
    RunParameters parameters;
    OptionTextBuilder builder;
    applyMakeCommand(parameters, command, shown, settings, builder, locale);
    return buildCommandLine(program, parameters.codec, parameters.options,
                            jobPaths(folder, name, parameters.targetExtension));
}

} // namespace

TEST(CommandLine, EveryMakeCommandAndMode)
{
    EncoderSettings mp3Abr, mp3Cbr, mp3Cmd, oggQuality, oggBitrate, oggCmd, mpcQuality, mpcCmd;
    mp3Abr.mp3.mode = 1;
    mp3Abr.mp3.abrKbps = 128;
    mp3Cbr.mp3.mode = 2;
    mp3Cbr.mp3.cbrIndex = 16;
    mp3Cmd.mp3.mode = 3;
    mp3Cmd.mp3.commandLine = QStringLiteral("  -V 2  ");
    oggQuality.ogg.qualityTenths = 45;
    oggBitrate.ogg.mode = 1;
    oggCmd.ogg.mode = 2;
    oggCmd.ogg.commandLine = QStringLiteral("-q 3");
    mpcQuality.mpc.mode = 1;
    mpcQuality.mpc.qualityTenths = 45;
    mpcCmd.mpc.mode = 2;
    const QLocale comma(QLocale::German);

    const struct
    {
        QString line;
        const char *expected;
    } cases[] = {
        {lineFor(MakeCommand::Mp3, AudioFormat::Wav, {}),
         R"("/opt/kv/codec/lame" --preset extreme --silent --priority "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mp3")"},
        {lineFor(MakeCommand::Mp3, AudioFormat::Wav, mp3Abr),
         R"("/opt/kv/codec/lame" --preset 128 --silent --priority "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mp3")"},
        {lineFor(MakeCommand::Mp3, AudioFormat::Wav, mp3Cbr),
         R"("/opt/kv/codec/lame" --preset cbr 8 --silent --priority "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mp3")"},
        {lineFor(MakeCommand::Mp3, AudioFormat::Wav, mp3Cmd),
         R"("/opt/kv/codec/lame" -V 2 --silent --priority "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mp3")"},
        {lineFor(MakeCommand::Ogg, AudioFormat::Wav, {}),
         R"("/opt/kv/codec/oggenc2" --quiet --quality 6 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.ogg")"},
        {lineFor(MakeCommand::Ogg, AudioFormat::Wav, oggQuality, comma),
         R"("/opt/kv/codec/oggenc2" --quiet --quality 4,5 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.ogg")"},
        {lineFor(MakeCommand::Ogg, AudioFormat::Wav, oggBitrate),
         R"("/opt/kv/codec/oggenc2" --quiet --bitrate 192 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.ogg")"},
        {lineFor(MakeCommand::Ogg, AudioFormat::Wav, oggCmd),
         R"("/opt/kv/codec/oggenc2" --quiet -q 3 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.ogg")"},
        {lineFor(MakeCommand::Mpc, AudioFormat::Wav, {}),
         R"("/opt/kv/codec/mppenc" --overwrite --silent --insane "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mpc")"},
        {lineFor(MakeCommand::Mpc, AudioFormat::Wav, mpcQuality, comma),
         R"("/opt/kv/codec/mppenc" --overwrite --silent --quality 4.5 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mpc")"},
        {lineFor(MakeCommand::Mpc, AudioFormat::Wav, mpcCmd),
         R"("/opt/kv/codec/mppenc" --overwrite --silent --quality 6 "/home/u/My Music/a b.wav" "/home/u/My Music/a b.mpc")"},
        {lineFor(MakeCommand::Wav, AudioFormat::Mp3, {}, QLocale::c(), QStringLiteral("x.MP3")),
         R"("/opt/kv/codec/lame" --decode "/home/u/My Music/x.MP3" "/home/u/My Music/x.wav")"},
        // Empty options leave two blanks after the codec.
        {lineFor(MakeCommand::Wav, AudioFormat::Ogg, {}, QLocale::c(), QStringLiteral("x.ogg")),
         R"("/opt/kv/codec/oggdec"  "/home/u/My Music/x.ogg" "/home/u/My Music/x.wav")"},
        {lineFor(MakeCommand::Wav, AudioFormat::Mpc, {}, QLocale::c(), QStringLiteral("-it's $x `y` ё.mpc")),
         R"("/opt/kv/codec/mppdec"  "/home/u/My Music/-it's $x `y` ё.mpc" "/home/u/My Music/-it's $x `y` ё.wav")"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.line, QString::fromUtf8(c.expected));
}

TEST(RunParameters, MakeWavFollowsTheShowFilterAndShowWavKeepsThePrevious)
{
    OptionTextBuilder builder;
    RunParameters p;
    applyMakeCommand(p, MakeCommand::Mp3, AudioFormat::Wav, {}, builder, QLocale::c());
    EXPECT_EQ(p, (RunParameters{QStringLiteral("lame"), QStringLiteral("--preset extreme --silent --priority"),
                                QStringLiteral(".wav"), QStringLiteral(".mp3")}));
    const RunParameters mp3 = p;
    applyMakeCommand(p, MakeCommand::Wav, AudioFormat::Wav, {}, builder, QLocale::c());
    EXPECT_EQ(p.codec, mp3.codec);
    EXPECT_EQ(p.options, mp3.options);
    EXPECT_EQ(p.sourceExtension, QStringLiteral(".wav"));
    EXPECT_EQ(p.targetExtension, QStringLiteral(".wav"));
    applyMakeCommand(p, MakeCommand::Wav, AudioFormat::Ogg, {}, builder, QLocale::c());
    EXPECT_EQ(p, (RunParameters{QStringLiteral("oggdec"), QString(), QStringLiteral(".ogg"), QStringLiteral(".wav")}));
}

TEST(JobPaths, TargetDropsTheListedExtensionSourceKeepsTheListedName)
{
    const JobPaths p = jobPaths(QStringLiteral("/m/"), QStringLiteral("Song.WAV"), QStringLiteral(".ogg"));
    EXPECT_EQ(p.source, QStringLiteral("/m/Song.WAV"));
    EXPECT_EQ(p.target, QStringLiteral("/m/Song.ogg"));
}
