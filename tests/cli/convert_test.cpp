#include <gtest/gtest.h>

#include <csignal>

#include <unistd.h>

#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

namespace {

const QString header = u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time"_s;

// The report of a run in which every job ended "Done": its frame and rows checked, the names sorted.
QStringList doneNames(const CliResult &r, int jobs)
{
    static const QRegularExpression row(u"^([^\t]+)\tDone\t\\d+ KB\t[1-9]\\d* KB\t[1-9]\\d*\t0:00:0\\d$"_s);
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    const QStringList lines = r.out.split(QLatin1Char('\n'));
    EXPECT_EQ(lines.size(), jobs + 3) << r.out.toStdString();
    EXPECT_EQ(lines.value(0), header);
    EXPECT_EQ(lines.value(jobs + 1), u"Finished %1 of %1"_s.arg(jobs));
    QStringList names;
    for (const QString &line : lines.mid(1, jobs)) {
        EXPECT_TRUE(row.match(line).hasMatch()) << line.toStdString();
        names.append(line.section(QLatin1Char('\t'), 0, 0).replace(u"\\\\"_s, u"\\"_s)); // backslashes come doubled
    }
    names.sort();
    return names;
}

// The name and status of each job line of a report.
QStringList statuses(const QString &out)
{
    QStringList all;
    for (const QString &line : out.split(QLatin1Char('\n')).mid(1)) {
        if (line.startsWith(u"Finished"_s))
            break;
        all.append(line.section(QLatin1Char('\t'), 0, 1));
    }
    return all;
}

} // namespace

TEST(Convert, NamedFilesOnlyAndUsageErrors)
{
    QTemporaryDir wavs;
    for (const QString &name : {u"a.wav"_s, u"b.wav"_s, u"-c.wav"_s})
        makeWav(wavs.filePath(name));
    const CliResult r =
        runCli({u"convert"_s, u"--to=ogg"_s, u"--jobs"_s, u"1"_s, wavs.path(), u"b.wav"_s, u"--"_s, u"-c.wav"_s});
    EXPECT_EQ(doneNames(r, 2), QStringList({u"-c.wav"_s, u"b.wav"_s}));
    EXPECT_FALSE(QFile::exists(wavs.filePath(u"a.ogg"_s)));

    const struct { QStringList args; int status; const char *message; } cases[] = {
        {{wavs.path()}, 2, "no --to given"},
        {{u"--to"_s, u"mp3"_s}, 2, "no FOLDER given"},
        {{u"--to"_s, u"wav"_s, wavs.path()}, 2, "--to wav needs --from mp3, ogg or mpc"},
        {{u"--to"_s, u"mp3"_s, u"--from"_s, u"ogg"_s, wavs.path()}, 2, "--from goes only with --to wav (encoding reads WAV files)"},
        {{u"--to"_s, u"MP3"_s, wavs.path()}, 2, "unknown target \"MP3\" (mp3, ogg, mpc or wav)"},
        {{u"--to"_s, u"mp3"_s, u"--jobs"_s, u"9"_s, wavs.path()}, 2, "--jobs takes a number from 1 to 8"},
        {{u"--to"_s, u"mp3"_s, u"--jobs"_s, u"0"_s, wavs.path()}, 2, "--jobs takes a number from 1 to 8"},
        // 8 is accepted: the folder is what is refused.
        {{u"--to"_s, u"mp3"_s, u"--jobs"_s, u"8"_s, wavs.filePath(u"none"_s)}, 2, "%1/none: no such folder"},
        {{u"--to"_s, u"wav"_s, u"--from"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()}, 2,
         "--jobs goes only with encoding: decoding runs one file at a time"},
        {{u"--to"_s, u"mp3"_s, wavs.path(), u"--jobs"_s}, 2, "--jobs needs a value (put -- before a name that starts with -)"},
        {{u"--to"_s, u"mp3"_s, wavs.path(), u"x.wav"_s}, 2, "x.wav: not listed in %1"},
        {{u"--to"_s, u"wav"_s, u"--from"_s, u"mpc"_s, wavs.path()}, 3, "no file to convert"},
    };
    for (const auto &c : cases) {
        const CliResult u = runCli(QStringList{u"convert"_s} + c.args);
        EXPECT_EQ(u.status, c.status) << c.message;
        EXPECT_EQ(u.err.section(u'\n', 0, 0), u"kestrelvane-cli: "_s + QString::fromUtf8(c.message).replace(u"%1"_s, wavs.path()));
        EXPECT_EQ(u.out, QString());
    }
}

// A source under 512 bytes rounds to 0 KB, so its job's percentage fails on every tick and the
// single slot never moves on. The window would tick on; the command must end all the same.
TEST(Convert, EndsWhenNothingCanMoveOn)
{
    QTemporaryDir dir;
    makeWav(dir.filePath(u"a.wav"_s), "-r44100", "0.002");
    makeWav(dir.filePath(u"b.wav"_s));
    const CliResult r = runCli({u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, dir.path()});
    EXPECT_EQ(r.out, header + u"\na.wav\tIn Progress\t0 KB\t\t\t\nb.wav\t\t172 KB\t\t\t\nFinished 0 of 2\n"_s);
    EXPECT_EQ(r.status, 1);
}

// On a terminal the line is redrawn in place and wiped at the end, and the run's end rings the
// bell once, whatever standard output goes to.
TEST(Convert, OnATerminalTheProgressLineIsRedrawnInPlaceAndTheEndRingsTheBell)
{
    QTemporaryDir wavs;
    makeWav(wavs.filePath(u"a.wav"_s));
    makeWav(wavs.filePath(u"b.wav"_s));
    const CliResult r = runCli({u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()}, {.errOnTerminal = true});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.endsWith(u"Finished 2 of 2\n"_s)) << r.out.toStdString();
    EXPECT_EQ(r.err.count(u'\a'), 1) << r.err.toStdString();
    EXPECT_FALSE(r.err.contains(u'\n')) << r.err.toStdString();
    EXPECT_TRUE(r.err.startsWith(u"\r[........................] Finished 0 of 2"_s)) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(u"\r[########################] Finished 2 of 2"_s)) << r.err.toStdString();
    EXPECT_TRUE(r.err.endsWith(u"\r\x1b[K"_s)) << r.err.toStdString();
}

namespace {

// Codec processes named in a file, one pid a line, that are still alive (not even a zombie).
QStringList survivors(const QString &pidFile)
{
    QStringList alive;
    for (const QByteArray &pid : bytes(pidFile).split('\n')) {
        const QByteArray stat = bytes(u"/proc/"_s + QString::fromLatin1(pid) + u"/stat"_s);
        if (!pid.isEmpty() && !stat.isEmpty() && stat.mid(stat.lastIndexOf(')') + 2, 1) != "Z")
            alive.append(QString::fromLatin1(pid));
    }
    return alive;
}

} // namespace

// A job that finished before the hard stop keeps its target and its "Done"; only what still runs
// is killed, and no codec outlives the command. A single interrupt is in InterruptedRunInRussian.
TEST(Convert, HardStopsKillOnlyWhatStillRuns)
{
    ProgramCopy program;
    const QString pids = program.dir.filePath(u"pids"_s);
    // f1 runs until its f1.go file appears (20 s at most), any other job for 30 s.
    program.fakeLame("echo $$ >> '" + pids.toUtf8() + "'\n/usr/bin/head -c 5000 /dev/zero > \"$t\"\n"
                     "case \"$t\" in *f1.mp3) i=0; while [ ! -e \"${t%.mp3}.go\" ] && [ $i -lt 1000 ]; do\n"
                     " /bin/sleep 0.02; i=$((i + 1)); done;;\n"
                     "*) exec /bin/sleep 30;;\nesac\n");
    auto started = [&](int codecs) {
        for (int i = 0; i < 1000 && bytes(pids).count('\n') < codecs; ++i)
            QThread::msleep(10);
        return bytes(pids).count('\n');
    };
    // Signal 0: the reader of the progress lines goes away, which stops the run at the next one
    // (f1's end).
    const struct { int signal; int status; QStringList expected; } runs[] = {
        {SIGINT, 130, {u"f1.wav\tDone"_s, u"f2.wav\tKilled"_s, u"f3.wav\tBreak"_s}},
        {SIGTERM, 143, {u"f1.wav\tDone"_s, u"f2.wav\tKilled"_s, u"f3.wav\tKilled"_s}},
        {SIGHUP, 129, {u"f1.wav\tDone"_s, u"f2.wav\tKilled"_s, u"f3.wav\tKilled"_s}},
        {0, 141, {u"f1.wav\tDone"_s, u"f2.wav\tKilled"_s}},
    };
    for (const auto &run : runs) {
        QTemporaryDir wavs;
        for (int i = 1; i <= run.expected.size(); ++i)
            makeWav(wavs.filePath(u"f%1.wav"_s.arg(i)));
        QFile::remove(pids);
        QProcess p;
        if (run.signal == 0)
            program.start(p, {u"-c"_s, u"\"$0\" convert --to mp3 --jobs 2 \"$1\" 2>&1 >\"$1/report\" | /usr/bin/head -c 1 > /dev/null;"
                                       " echo ${PIPESTATUS[0]}"_s, program.path(), wavs.path()}, u"/bin/bash"_s);
        else
            program.start(p, {u"--to"_s, u"mp3"_s, u"--jobs"_s, u"2"_s, wavs.path()});
        const auto pid = static_cast<pid_t>(p.processId());
        ASSERT_EQ(started(2), 2);
        if (run.signal == SIGINT) { // Ctrl-C, f1 finishes, Ctrl-C
            ::kill(pid, SIGINT);
            QThread::msleep(200);
            write(wavs.filePath(u"f1.go"_s), "");
            QThread::msleep(500);
        } else if (run.signal == 0) { // the first progress line has reached the reader, which is gone
            QThread::msleep(300);
            write(wavs.filePath(u"f1.go"_s), "");
        } else { // f1 finishes and f3 takes its slot
            write(wavs.filePath(u"f1.go"_s), "");
            ASSERT_EQ(started(3), 3);
        }
        if (run.signal != 0)
            ::kill(pid, run.signal);
        ASSERT_TRUE(p.waitForFinished(20000));
        const QString out = QString::fromUtf8(run.signal == 0 ? bytes(wavs.filePath(u"report"_s)) : p.readAllStandardOutput());
        EXPECT_EQ(run.signal == 0 ? p.readAllStandardOutput().trimmed().toInt() : p.exitCode(), run.status);
        EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(statuses(out), run.expected) << run.status;
        EXPECT_EQ(QFileInfo(wavs.filePath(u"f1.mp3"_s)).size(), 5000) << run.status;
        EXPECT_FALSE(QFile::exists(wavs.filePath(u"f2.mp3"_s))) << run.status;
        EXPECT_FALSE(QFile::exists(wavs.filePath(u"f3.mp3"_s))) << run.status;
        if (run.signal != 0) {
            EXPECT_EQ(bytes(pids).count('\n'), run.signal == SIGINT ? 2 : 3) << run.status;
        }
        EXPECT_EQ(survivors(pids), QStringList()) << run.status;
    }
}

// Decoding song.mp3 back to WAV replaces song.wav: the old file goes to the trash, not away.
// x.wav and x.WAV would both make x.mp3: the later one is left out and said so.
TEST(Convert, NothingIsLostToAReplacedOrSharedTarget)
{
    ProgramCopy program;
    QTemporaryDir dir;
    makeWav(dir.filePath(u"song.wav"_s));
    const QByteArray original = bytes(dir.filePath(u"song.wav"_s));
    ASSERT_EQ(program.convert({u"--to"_s, u"mp3"_s, dir.path()}).status, 0);
    const CliResult decoded = program.convert({u"--to"_s, u"wav"_s, u"--from"_s, u"mp3"_s, dir.path()});
    EXPECT_EQ(decoded.status, 0) << decoded.err.toStdString();
    EXPECT_EQ(bytes(program.trash() + u"song.wav"_s), original);
    EXPECT_EQ(bytes(dir.filePath(u"song.wav"_s)).left(4), "RIFF");

    QTemporaryDir twins;
    makeWav(twins.filePath(u"x.WAV"_s), "-r44100", "1");
    makeWav(twins.filePath(u"x.wav"_s), "-r44100", "2");
    const CliResult r = program.convert({u"--to"_s, u"ogg"_s, twins.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(statuses(r.out), QStringList({u"x.WAV\tDone"_s}));
    EXPECT_TRUE(r.err.contains(u"kestrelvane-cli: x.wav left out: its target x.ogg is made from x.WAV in this run\n"_s));
}

namespace {

// A small file system of its own, mounted over a temporary folder; needs the right to mount.
struct SmallVolume
{
    QTemporaryDir dir;
    const char *size;
    bool mounted = ::geteuid() == 0 && mount({u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size="_s + QLatin1String(size), u"tmpfs"_s});

    explicit SmallVolume(const char *s) : size(s) {}
    ~SmallVolume()
    {
        if (mounted)
            QProcess::execute(u"/bin/umount"_s, {dir.path()});
    }
    bool mount(const QStringList &options) const { return QProcess::execute(u"/bin/mount"_s, options + QStringList{dir.path()}) == 0; }
};

} // namespace

// The real encoder where it cannot write: a full disk leaves part of a target, a read-only
// folder the old one. The size rule calls both "Done"; the codec's own words say otherwise.
TEST(Convert, RealCodecFailuresOnAFullDiskAndAReadOnlyFolder)
{
    SmallVolume full("1900k");
    SmallVolume readOnly("1m");
    if (!full.mounted || !readOnly.mounted)
        GTEST_SKIP() << "needs the right to mount a small file system";
    ProgramCopy program;

    makeWav(full.dir.filePath(u"long.wav"_s), "-r44100", "10"); // 1723 KB of 1900
    CliResult r = program.convert({u"--to"_s, u"mp3"_s, full.dir.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.contains(u"\nFinished 1 of 1\n\nlong.wav\tDone\texit status 1\n"_s)) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(u"Error writing"_s)) << r.out.toStdString();

    makeWav(readOnly.dir.filePath(u"a.wav"_s));
    write(readOnly.dir.filePath(u"a.mp3"_s), QByteArray(20480, 'o'));
    ASSERT_TRUE(readOnly.mount({u"-o"_s, u"remount,ro"_s}));
    r = program.convert({u"--to"_s, u"mp3"_s, readOnly.dir.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.contains(u"\na.wav\tDone\t172 KB\t20 KB\t12\t"_s)) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(u"\nFinished 1 of 1\n\na.wav\tDone\texit status "_s)) << r.out.toStdString();
    EXPECT_EQ(bytes(readOnly.dir.filePath(u"a.mp3"_s)), QByteArray(20480, 'o'));
}

// Each completion's estimate needs the sizes of every finished job. Kept from each job's end,
// they cost a few queries of the file system a job; asked for again at every completion, they
// made a run of 10,000 files take minutes. A run whose codec fails after the first file (a full
// disk) must not sum every source again at each failure either.
TEST(Convert, SizeQueriesStayAFewAJobWhateverTheJobCount)
{
    ProgramCopy program;
    const QByteArray wav = bytes(QStringLiteral(KV_TEST_DATA_DIR "/wav/mono-8bit-8000.wav"));
    for (const bool failing : {false, true}) {
        QTemporaryDir dir;
        const int jobs = 400;
        for (int i = 1; i <= jobs; ++i)
            write(dir.filePath(u"f%1.wav"_s.arg(i)), wav);
        program.fakeLame(failing ? "case \"$t\" in */f1.mp3) /usr/bin/head -c 2000 /dev/zero > \"$t\";; *) : > \"$t\";; esac\n"
                                 : "/usr/bin/head -c 2000 /dev/zero > \"$t\"\n");
        // The program's own thread alone: its codecs and helper threads are not followed.
        const QString trace = dir.filePath(u"trace"_s);
        QStringList tracer{u"-qq"_s, u"-e"_s, u"trace=%%stat"_s, u"-o"_s, trace};
        // LeakSanitizer cannot work under a tracer: this run alone goes without its leak check.
        if (const QString asan = qEnvironmentVariable("ASAN_OPTIONS"); !asan.isEmpty())
            tracer << u"-E"_s << u"ASAN_OPTIONS="_s + asan + u":detect_leaks=0"_s;
        const CliResult r = runCli(tracer + QStringList{program.path(), u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"2"_s, dir.path()},
                                   program.how(u"/usr/bin/strace"_s));
        EXPECT_EQ(r.status, failing ? 1 : 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(u"Finished %1 of 400\n"_s.arg(failing ? 1 : 400))) << r.out.right(300).toStdString();
        const qsizetype queries = bytes(trace).count('\n');
        EXPECT_LT(queries, jobs * 12) << (failing ? "failing" : "succeeding");
    }
}
