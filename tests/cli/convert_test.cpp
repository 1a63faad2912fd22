#include <csignal>

#include "clifixtures.h"

namespace {

const QString english = u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time\n"_s;

// A job line that ended "Done", its sizes, percentage and time checked by form.
QString doneRow(const char *name, const QString &done = u"Done"_s, const QString &kb = u"KB"_s)
{
    return QRegularExpression::escape(QLatin1String(name)) + u"\t%1\t\\d+ %2\t[1-9]\\d* %2\t[1-9]\\d*\t0:00:0\\d\n"_s.arg(done, kb);
}

::testing::AssertionResult reads(const QString &out, const QString &pattern)
{
    if (QRegularExpression(u"^(?:"_s + pattern + u")$"_s).match(out).hasMatch())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << out.toStdString();
}

// The name and status of each job line of a report.
QStringList statuses(const QString &out)
{
    return out.section(u"\n\n"_s, 0, 0).split(u'\n').mid(1).filter(u"\t"_s).replaceInStrings(QRegularExpression(u"^([^\t]*\t[^\t]*).*"_s), u"\\1"_s);
}

} // namespace

// Only the named files are converted. On a terminal the progress line is redrawn in place and
// wiped at the end, and the run's end rings the bell once, whatever standard output goes to (here
// a file; script gives the run its terminal).
TEST(Convert, NamedFilesOnlyWithTheProgressRedrawnOnATerminal)
{
    QTemporaryDir wavs;
    for (const QString &name : {u"a.wav"_s, u"b.wav"_s, u"-c.wav"_s})
        makeWav(wavs.filePath(name));
    const CliResult r = runCli({u"-qec"_s, cliPath() + u" convert --to=ogg --jobs 1 %1 b.wav -- -c.wav >%1/out"_s.arg(wavs.path()), u"/dev/null"_s},
                               {.program = u"/usr/bin/script"_s});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(reads(QString::fromUtf8(readAll(wavs.filePath(u"out"_s))), english + doneRow("-c.wav") + doneRow("b.wav") + u"Finished 2 of 2\n"_s));
    EXPECT_FALSE(QFile::exists(wavs.filePath(u"a.ogg"_s)));
    EXPECT_EQ(r.out.count(u'\a'), 1);
    EXPECT_TRUE(reads(r.out, u"\r\\[\\.{24}\\] Finished 0 of 2[^\n]*\r\\[#{24}\\] Finished 2 of 2[^\n]*\r\x1b\\[K"_s));
}

// A source under 512 bytes rounds to 0 KB, so its job's percentage fails on every tick and the
// single slot never moves on. The window would tick on; the command must end all the same.
TEST(Convert, EndsWhenNothingCanMoveOn)
{
    QTemporaryDir dir;
    makeWav(dir.filePath(u"a.wav"_s), "0.002");
    makeWav(dir.filePath(u"b.wav"_s));
    const CliResult r = runCli({u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, dir.path()});
    EXPECT_EQ(r.out, english + u"a.wav\tIn Progress\t0 KB\t\t\t\nb.wav\t\t172 KB\t\t\t\nFinished 0 of 2\n"_s);
    EXPECT_EQ(r.status, 1);
}

// A job that finished before the hard stop keeps its target and its "Done"; only what still runs
// is killed, and no codec outlives the command. Signal 0: the reader of the report goes away,
// which stops the run at the next progress line (f1's end).
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
        for (int i = 0; i < 1000 && readAll(pids).count('\n') < codecs; ++i)
            QThread::msleep(10);
        return readAll(pids).count('\n');
    };
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
        startCli(p, {u"-c"_s, run.signal ? u"exec \"$0\" convert --to mp3 --jobs 2 \"$1\""_s
                                         : u"\"$0\" convert --to mp3 --jobs 2 \"$1\" 2>&1 >\"$1/report\" | /usr/bin/head -c 1 >/dev/null; echo ${PIPESTATUS[0]}"_s,
                     program.path(), wavs.path()}, program.how(u"/bin/bash"_s));
        ASSERT_EQ(started(2), 2);
        const QString go = wavs.filePath(u"f1.go"_s);
        if (run.signal == SIGINT) { // Ctrl-C, f1 finishes, Ctrl-C
            ::kill(static_cast<pid_t>(p.processId()), SIGINT);
            QThread::msleep(200);
            write(go, "");
            QThread::msleep(500);
        } else if (run.signal == 0) { // the first progress line has reached the reader, which is gone
            QThread::msleep(300);
            write(go, "");
        } else { // f1 finishes and f3 takes its slot
            write(go, "");
            ASSERT_EQ(started(3), 3);
        }
        if (run.signal != 0)
            ::kill(static_cast<pid_t>(p.processId()), run.signal);
        ASSERT_TRUE(p.waitForFinished(20000));
        EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(run.signal == 0 ? p.readAllStandardOutput().trimmed().toInt() : p.exitCode(), run.status);
        const QString out = QString::fromUtf8(run.signal == 0 ? readAll(wavs.filePath(u"report"_s)) : p.readAllStandardOutput());
        EXPECT_EQ(statuses(out), run.expected) << run.status;
        EXPECT_EQ(QFileInfo(wavs.filePath(u"f1.mp3"_s)).size(), 5000) << run.status;
        EXPECT_FALSE(QFile::exists(wavs.filePath(u"f2.mp3"_s)) || QFile::exists(wavs.filePath(u"f3.mp3"_s))) << run.status;
        if (run.signal != 0) {
            EXPECT_EQ(readAll(pids).count('\n'), run.signal == SIGINT ? 2 : 3) << run.status;
        }
        // Each codec named in the file must be gone (not even a zombie).
        for (const QByteArray &pid : readAll(pids).split('\n')) {
            const QByteArray stat = readAll(u"/proc/"_s + QString::fromLatin1(pid) + u"/stat"_s);
            EXPECT_TRUE(pid.isEmpty() || stat.isEmpty() || stat.mid(stat.lastIndexOf(')') + 2, 1) == "Z") << pid.constData();
        }
    }
}

// Decoding song.mp3 back to WAV replaces song.wav: the old file goes to the trash, not away.
// x.wav and x.WAV would both make x.mp3: the later one is left out and said so.
TEST(Convert, NothingIsLostToAReplacedOrSharedTarget)
{
    ProgramCopy program(1); // in Russian, where every job "Готово" must still end with status 0
    QTemporaryDir dir;
    makeWav(dir.filePath(u"song.wav"_s));
    const QByteArray original = readAll(dir.filePath(u"song.wav"_s));
    ASSERT_EQ(program.convert({u"--to"_s, u"mp3"_s, dir.path()}).status, 0);
    EXPECT_EQ(program.convert({u"--to"_s, u"wav"_s, u"--from"_s, u"mp3"_s, dir.path()}).status, 0);
    EXPECT_EQ(readAll(program.dir.filePath(u"data/Trash/files/song.wav"_s)), original);
    EXPECT_EQ(readAll(dir.filePath(u"song.wav"_s)).left(4), "RIFF");

    QTemporaryDir twins;
    makeWav(twins.filePath(u"x.WAV"_s), "1");
    makeWav(twins.filePath(u"x.wav"_s), "2");
    const CliResult r = program.convert({u"--to"_s, u"ogg"_s, twins.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(statuses(r.out), QStringList({u"x.WAV\tГотово"_s}));
    EXPECT_TRUE(r.err.contains(u"kestrelvane-cli: x.wav left out: its target x.ogg is made from x.WAV in this run\n"_s));
}

// The real encoder where it cannot write: a full disk leaves part of a target, a read-only
// folder the old one. The size rule calls both "Done"; the codec's own words say otherwise.
TEST(Convert, RealCodecFailuresOnAFullDiskAndAReadOnlyFolder)
{
    struct SmallVolume
    {
        QTemporaryDir dir;
        bool mount(const QStringList &options) const { return QProcess::execute(u"/bin/mount"_s, options + QStringList{dir.path()}) == 0; }
        ~SmallVolume() { QProcess::execute(u"/bin/umount"_s, {dir.path()}); }
    } full, readOnly;
    if (::geteuid() != 0 || !full.mount({u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=1900k"_s, u"tmpfs"_s})
        || !readOnly.mount({u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=1m"_s, u"tmpfs"_s}))
        GTEST_SKIP() << "needs the right to mount a small file system";
    ProgramCopy program;

    makeWav(full.dir.filePath(u"long.wav"_s), "10"); // 1723 KB of 1900
    CliResult r = program.convert({u"--to"_s, u"mp3"_s, full.dir.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(reads(r.out, u"[\\s\\S]*\nFinished 1 of 1\n\nlong\\.wav\tDone\texit status 1\n[\\s\\S]*Error writing[\\s\\S]*"_s));

    makeWav(readOnly.dir.filePath(u"a.wav"_s));
    write(readOnly.dir.filePath(u"a.mp3"_s), QByteArray(20480, 'o'));
    ASSERT_TRUE(readOnly.mount({u"-o"_s, u"remount,ro"_s}));
    r = program.convert({u"--to"_s, u"mp3"_s, readOnly.dir.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(reads(r.out, u"[\\s\\S]*\na\\.wav\tDone\t172 KB\t20 KB\t12\t[\\s\\S]*\nFinished 1 of 1\n\na\\.wav\tDone\texit status [\\s\\S]*"_s));
    EXPECT_EQ(readAll(readOnly.dir.filePath(u"a.mp3"_s)), QByteArray(20480, 'o'));
}

// Each completion's estimate needs the sizes of every finished job. Kept from each job's end,
// they cost a few queries of the file system a job; asked for again at every completion, they
// made a run of 10,000 files take minutes. A run whose codec fails after the first file (a full
// disk) must not sum every source again at each failure either.
TEST(Convert, SizeQueriesStayAFewAJobWhateverTheJobCount)
{
    ProgramCopy program;
    const QByteArray wav = readAll(QStringLiteral(KV_TEST_DATA_DIR "/wav/mono-8bit-8000.wav"));
    for (const bool failing : {false, true}) {
        QTemporaryDir dir;
        for (int i = 1; i <= 400; ++i)
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
        EXPECT_LT(readAll(trace).count('\n'), 400 * 12) << (failing ? "failing" : "succeeding");
    }
}

// The configuration's language decides the job list: captions, status words, units, the count
// line. Any language byte but 0 is Russian. f1 is done, f2's target stays empty, and f3 waits
// when Ctrl-C comes: the command fails.
TEST(Languages, ConvertRunsFollowTheConfiguredLanguage)
{
    const struct { char language; QString out; } cases[] = {
        {'\x00', english + doneRow("f1.wav") + u"f2\\.wav\tError\t172 KB\t\t\t0:00:0\\d\nf3\\.wav\tBreak\t172 KB\t\t\t\nFinished 1 of 3\n"_s},
        {'\x02', u"Имя файла\tСтатус\tИсходный\tРазмер\t%\tВремя работы\n"_s + doneRow("f1.wav", u"Готово"_s, u"КБ"_s)
                      + u"f2\\.wav\tОшибка\t172 КБ\t\t\t0:00:0\\d\nf3\\.wav\tПрервано\t172 КБ\t\t\t\nВыполнено 1 из 3\n"_s},
    };
    for (const auto &c : cases) {
        ProgramCopy program(c.language);
        program.fakeLame("case \"$t\" in *f1.mp3) /usr/bin/head -c 5000 /dev/zero > \"$t\";; *) : > \"$t\"; /bin/sleep 1;; esac\n");
        QTemporaryDir wavs;
        for (const char *name : {"f1.wav", "f2.wav", "f3.wav"})
            makeWav(wavs.filePath(QLatin1String(name)));
        QProcess p;
        startCli(p, {u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()}, program.how());
        for (int i = 0; i < 1000 && !QFile::exists(wavs.filePath(u"f2.mp3"_s)); ++i)
            QThread::msleep(10);
        ::kill(static_cast<pid_t>(p.processId()), SIGINT);
        ASSERT_TRUE(p.waitForFinished(60000));
        EXPECT_EQ(p.exitCode(), 1);
        EXPECT_TRUE(reads(QString::fromUtf8(p.readAllStandardOutput()), c.out));
    }
}
