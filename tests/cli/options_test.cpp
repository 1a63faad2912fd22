#include <sys/stat.h>

#include "clifixtures.h"

// Each settings record as `options` shows it, whatever the locale; a command-line text keeps its
// three fields, tabs and backslashes escaped.
TEST(OptionsCommand, PrintsEveryEncoder)
{
    QByteArray commandLine = record({{2, 3}, {6, 2}});
    commandLine.replace(3142, 8, QByteArray("  -V 2  "));
    const QByteArray oggText("-q 3\t--x=a\\b\r\x01");
    commandLine.replace(4166, oggText.size(), oggText);
    const struct { QByteArray bytes; const char *locale; } cases[] = {
        {record({{2, 2}, {5, 16}, {7, 55}, {9, 1}, {11, 45}}), "de_DE.UTF-8"},
        {commandLine, "C.UTF-8"},
        {QByteArray(10309, '\3'), "C.UTF-8"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(u"kestrvan.cfg"_s);
    QStringList lines;
    for (const auto &c : cases) {
        write(path, c.bytes);
        const QStringList args{u"options"_s, u"--config"_s, path};
        lines += shown(u"LC_ALL="_s + QLatin1String(c.locale) + u" kestrelvane-cli "_s + args.join(u' '), runCli(args, {.locale = c.locale}));
    }
    kv::test::expectAsRecorded(u"cli-options"_s, lines, dir.path());
}

// A configuration that cannot be read is named for what it is; a FIFO is never waited on.
TEST(Output, ConfigurationThatIsNotAFileSaysWhatItIs)
{
    QTemporaryDir dir;
    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"fifo"_s)).constData(), S_IFIFO | 0600, 0), 0);
    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"socket"_s)).constData(), S_IFSOCK | 0600, 0), 0); // as a program leaves one
    ASSERT_EQ(::symlink("loop", QFile::encodeName(dir.filePath(u"loop"_s)).constData()), 0);
    write(dir.filePath(u"locked.cfg"_s), "x");
    ::chmod(QFile::encodeName(dir.filePath(u"locked.cfg"_s)).constData(), 0);
    QStringList lines;
    for (const QString &path : {dir.path(), dir.filePath(u"fifo"_s), u"/dev/zero"_s, dir.filePath(u"socket"_s),
                                dir.filePath(u"none.cfg"_s), dir.filePath(u"loop"_s), dir.filePath(u"locked.cfg"_s)})
        lines += shown(u"kestrelvane-cli options --config "_s + path,
                       runCli({u"options"_s, u"--config"_s, path}, {.unprivileged = true}));
    kv::test::expectAsRecorded(u"cli-config-unread"_s, lines, dir.path());
}

// Every misuse names what is wrong, then the command's usage; a folder or a name that is not there
// is said so. The help, however asked for, as reviewed.
TEST(Usage, MisusesGiveTheirReasonAndTheCommandsUsage)
{
    QTemporaryDir dir;
    QStringList lines;
    for (const char *command :
         {"options --verbose /", "options a", "list --verbose /", "list", "list / /tmp", "list --kind flac /", "list --lang de /",
          "convert /", "convert --to mp3 / -x.wav", "convert --to flac /", "convert DIR", "convert --to mp3",
          "convert --to wav DIR", "convert --to mp3 --from ogg DIR", "convert --to MP3 DIR", "convert --to mp3 --jobs 9 DIR",
          "convert --to mp3 --jobs 0 DIR", "convert --to mp3 --jobs 8 DIR/none", "convert --to wav --from mp3 --jobs 1 DIR",
          "convert --to mp3 DIR --jobs", "convert --to mp3 DIR x.wav", "convert --to wav --from mpc DIR", "",
          "--help", "help", "list --help", "convert --help", "options --help", "options -h"}) {
        const QStringList args = QString::fromUtf8(command).replace(u"DIR"_s, dir.path()).split(u' ', Qt::SkipEmptyParts);
        lines += shown((QStringList{u"kestrelvane-cli"_s} + args).join(u' '), runCli(args));
    }
    kv::test::expectAsRecorded(u"cli-help"_s, lines, dir.path());
}

// The encoder gets the quality the settings hold whatever the user's locale: an Ogg quality of 6.5
// gives a file whose header announces 208 kbps, where 6 (what "6,5" reads as in the codec's C
// locale) would give 192 and an Arabic-digit text another rate again.
TEST(ConvertInEveryLocale, OggEncoderGetsTheQualityOfTheSettings)
{
    ProgramCopy program;
    write(program.dir.filePath(u"kestrvan.cfg"_s), record({{7, 75}})); // Ogg quality 6.5, stored as tenths + 10
    for (const char *locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "ru_RU.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
        QTemporaryDir dir;
        makeWav(dir.filePath(u"a.wav"_s));
        CliRun how = program.how();
        how.locale = locale;
        EXPECT_EQ(runCli({u"convert"_s, u"--to"_s, u"ogg"_s, dir.path()}, how).status, 0) << locale;
        const CliResult listed = runCli({u"list"_s, u"--kind"_s, u"ogg"_s, dir.path()});
        EXPECT_EQ(listed.out.section(u'\n', 1, 1).section(u'\t', 3, 3), u"~208"_s) << locale << listed.out.toStdString();
    }
}
