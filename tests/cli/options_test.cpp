#include <sys/stat.h>

#include "clifixtures.h"

// What each command prints, as reviewed: each settings record as `options` shows it, whatever the
// locale, a command-line text's tabs and backslashes escaped; a configuration that cannot be read
// named for what it is (a FIFO is never waited on); `list` in Russian under a comma locale, where
// 42.5 kbps is a tie that goes to 42 and the forecasts come from the unrounded 0.011 MB, and with
// bit rates that sum to 0, which end the statistics before the forecasts (left out, not empty);
// each misuse with its reason and the command's usage; the help, however asked for. No run has
// root's right to read anything; a leading LC_ALL=... is a run's locale.
TEST(Commands, PrintAsRecorded)
{
    QTemporaryDir dir;
    write(dir.filePath(u"de.cfg"_s), record({{2, 2}, {5, 16}, {7, 55}, {9, 1}, {11, 45}}));
    write(dir.filePath(u"commandline.cfg"_s),
          record({{2, 3}, {6, 2}}).replace(3142, 8, "  -V 2  ").replace(4166, 14, "-q 3\t--x=a\\b\r\x01"));
    write(dir.filePath(u"short.cfg"_s), QByteArray(10309, '\3'));
    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"fifo"_s)).constData(), S_IFIFO | 0600, 0), 0);
    ASSERT_EQ(::mknod(QFile::encodeName(dir.filePath(u"socket"_s)).constData(), S_IFSOCK | 0600, 0), 0); // as programs leave
    ASSERT_EQ(::symlink("loop", QFile::encodeName(dir.filePath(u"loop"_s)).constData()), 0);
    write(dir.filePath(u"locked.cfg"_s), "x");
    ::chmod(QFile::encodeName(dir.filePath(u"locked.cfg"_s)).constData(), 0);
    ASSERT_EQ(QProcess::execute(u"/bin/cp"_s, {u"-r"_s, QStringLiteral(KV_TEST_DATA_DIR "/mpc"), dir.path()}), 0);
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"tiny"_s));
    write(dir.filePath(u"tiny/x.mpc"_s), QByteArray("MP+\x07\x28", 5) + QByteArray(95, '\0')); // 40 frames

    // The commands are the record's own "$" lines, run again.
    QFile record(QStringLiteral(KV_TEST_DATA_DIR "/recorded/cli-commands.txt"));
    ASSERT_TRUE(record.open(QIODevice::ReadOnly));
    QStringList lines;
    for (const QString &command : QString::fromUtf8(record.readAll()).split(u'\n')) {
        if (!command.startsWith(u"$ "_s))
            continue;
        QStringList args = command.mid(2, command.lastIndexOf(u" (status "_s) - 2).replace(u"<tmp>"_s, dir.path()).split(u' ');
        CliRun how{.unprivileged = true};
        while (args.first().startsWith(u"LC_ALL="_s))
            how.env += args.takeFirst();
        args.removeFirst(); // the program
        lines += shown((how.env + QStringList{u"kestrelvane-cli"_s} + args).join(u' '), runCli(args, how));
    }
    const QRegularExpression freeSpace(u"^(Свободно|Free Disk Space): [0-9]+([,.][0-9])? (МБ|MB)$"_s);
    kv::test::expectAsRecorded(u"cli-commands"_s, lines.replaceInStrings(freeSpace, u"\\1: FREE"_s), dir.path());
}
