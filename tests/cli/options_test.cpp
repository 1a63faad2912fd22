#include <sys/stat.h>

#include "clifixtures.h"

// What each command prints, as reviewed: each settings record as `options` shows it, whatever the
// locale, a command-line text's tabs and backslashes escaped; a configuration that cannot be read
// named for what it is (a FIFO is never waited on); `list` in Russian under a comma locale, where
// 42.5 kbps is a tie that goes to 42 and the forecasts come from the unrounded 0.011 MB, and with
// bit rates that sum to 0, which end the statistics before the forecasts (left out, not empty);
// each misuse with its reason and the command's usage; the help, however asked for.
TEST(Commands, PrintAsRecorded)
{
    QTemporaryDir dir;
    QStringList lines;
    auto run = [&](const QStringList &args, const CliRun &how = {}) {
        lines += shown((how.env + QStringList{u"kestrelvane-cli"_s} + args).join(u' '), runCli(args, how));
    };
    QByteArray commandLine = record({{2, 3}, {6, 2}});
    commandLine.replace(3142, 8, "  -V 2  ").replace(4166, 14, "-q 3\t--x=a\\b\r\x01");
    const struct { QByteArray bytes; QStringList env; } cases[] = {
        {record({{2, 2}, {5, 16}, {7, 55}, {9, 1}, {11, 45}}), {u"LC_ALL=de_DE.UTF-8"_s}},
        {commandLine, {}},
        {QByteArray(10309, '\3'), {}},
    };
    for (const auto &c : cases) {
        write(dir.filePath(u"kestrvan.cfg"_s), c.bytes);
        run({u"options"_s, u"--config"_s, dir.filePath(u"kestrvan.cfg"_s)}, {.env = c.env});
    }

    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"fifo"_s)).constData(), S_IFIFO | 0600, 0), 0);
    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"socket"_s)).constData(), S_IFSOCK | 0600, 0), 0); // as a program leaves one
    ASSERT_EQ(::symlink("loop", QFile::encodeName(dir.filePath(u"loop"_s)).constData()), 0);
    write(dir.filePath(u"locked.cfg"_s), "x");
    ::chmod(QFile::encodeName(dir.filePath(u"locked.cfg"_s)).constData(), 0);
    for (const QString &path : {dir.path(), dir.filePath(u"fifo"_s), u"/dev/zero"_s, dir.filePath(u"socket"_s),
                                dir.filePath(u"none.cfg"_s), dir.filePath(u"loop"_s), dir.filePath(u"locked.cfg"_s)})
        run({u"options"_s, u"--config"_s, path}, {.unprivileged = true});

    ASSERT_EQ(QProcess::execute(u"/bin/cp"_s, {u"-r"_s, QStringLiteral(KV_TEST_DATA_DIR "/mpc"), dir.path()}), 0);
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"tiny"_s));
    write(dir.filePath(u"tiny/x.mpc"_s), QByteArray("MP+\x07\x28", 5) + QByteArray(95, '\0')); // 40 frames
    run({u"list"_s, u"--kind"_s, u"mpc"_s, u"--lang"_s, u"ru"_s, dir.filePath(u"mpc"_s)}, {.env = {u"LC_ALL=ru_RU.UTF-8"_s}});
    run({u"list"_s, u"--kind"_s, u"mpc"_s, dir.filePath(u"tiny"_s)});

    for (const char *command :
         {"options --verbose /", "options a", "list --verbose /", "list", "list / /tmp", "list --kind flac /", "list --lang de /",
          "convert /", "convert --to mp3 / -x.wav", "convert --to flac /", "convert DIR", "convert --to mp3",
          "convert --to wav DIR", "convert --to mp3 --from ogg DIR", "convert --to MP3 DIR", "convert --to mp3 --jobs 9 DIR",
          "convert --to mp3 --jobs 0 DIR", "convert --to mp3 --jobs 8 DIR/none", "convert --to wav --from mp3 --jobs 1 DIR",
          "convert --to mp3 DIR --jobs", "convert --to mp3 DIR x.wav", "convert --to wav --from mpc DIR", "",
          "--help", "help", "list --help", "convert --help", "options --help", "options -h"})
        run(QString::fromUtf8(command).replace(u"DIR"_s, dir.path()).split(u' ', Qt::SkipEmptyParts));
    const QRegularExpression freeSpace(u"^(Свободно|Free Disk Space): [0-9]+([,.][0-9])? (МБ|MB)$"_s);
    kv::test::expectAsRecorded(u"cli-commands"_s, lines.replaceInStrings(freeSpace, u"\\1: FREE"_s), dir.path());
}

// The encoder gets the quality the settings hold whatever the user's locale: an Ogg quality of 6.5
// gives a file whose header announces 208 kbps, where 6 (what "6,5" reads as in the codec's C
// locale) would give 192 and an Arabic-digit text another rate again.
TEST(ConvertInEveryLocale, OggEncoderGetsTheQualityOfTheSettings)
{
    const ProgramCopy program(record({{7, 75}})); // Ogg quality 6.5, stored as tenths + 10
    QTemporaryDir dir;
    makeWav(dir.filePath(u"a.wav"_s));
    for (const char *locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "ru_RU.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
        CliRun how = program.how();
        how.env += u"LC_ALL="_s + QLatin1String(locale);
        EXPECT_EQ(runCli({u"convert"_s, u"--to"_s, u"ogg"_s, dir.path()}, how).status, 0) << locale;
        const CliResult listed = runCli({u"list"_s, u"--kind"_s, u"ogg"_s, dir.path()});
        EXPECT_EQ(listed.out.section(u'\n', 1, 1).section(u'\t', 3, 3), u"~208"_s) << locale << listed.out.toStdString();
    }
}
