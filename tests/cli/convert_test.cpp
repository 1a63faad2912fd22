#include <csignal>

#include <sys/resource.h>

#include <QScopeGuard>

#include "clifixtures.h"

// Only the named files are converted. A source under 512 bytes rounds to 0 KB, so its job fails
// on every tick and the single slot never moves on: the command ends all the same. In Russian (any
// language byte but 0) "Готово" still ends with status 0; a replaced song.wav goes to the trash; of
// x.wav and x.WAV, which would both make x.ogg, the later one is left out. The Ogg encoder gets the
// quality of the settings (6.5, a file announcing 208 kbps) in every locale, where "6,5" would give
// 192 and Arabic digits another rate. Ctrl-C once lets the running codecs finish ("Break" for the
// rest); a hard stop (Ctrl-C twice, SIGTERM, SIGHUP, or the reader of the progress going away)
// kills what still runs and deletes its target, keeping what finished before; no codec outlives
// the command. Timed and dithered figures are checked by form.
TEST(Convert, RunsAsRecorded)
{
    QTemporaryDir dir;
    const ProgramCopy english(record({{7, 75}})), russian(record({{1, 2}})); // Ogg quality 6.5, stored as tenths + 10
    QStringList lines;
    auto subfolder = [&](const QString &name) { return QDir(dir.path()).mkdir(name) ? dir.filePath(name) + u'/' : QString(); };
    auto convert = [&](const QStringList &args, const CliRun &how) {
        lines += shown(u"kestrelvane-cli "_s + args.join(u' '), runCli(args, how));
    };
    // On a terminal the progress line is redrawn in place and wiped at the end, and the end rings
    // the bell once, whatever standard output goes to (a file here; script gives the terminal).
    const QString named = subfolder(u"named"_s);
    for (const QString &name : {u"a.wav"_s, u"b.wav"_s, u"-c.wav"_s})
        makeWav(named + name);
    const QString args = u"convert --to=ogg --jobs 1 %1 b.wav -- -c.wav"_s.arg(named);
    const CliResult terminal = runCli({u"-qec"_s, cliPath() + u' ' + args + u" >"_s + named + u"out"_s, u"/dev/null"_s},
                                      {.program = u"/usr/bin/script"_s});
    lines += shown(u"kestrelvane-cli "_s + args, {QString::fromUtf8(readAll(named + u"out"_s)), {}, terminal.status});
    EXPECT_EQ(terminal.out.count(u'\a'), 1);
    const QRegularExpression redrawn(u"^\r\\[\\.{24}\\] Finished 0 of 2[^\n]*\r\\[#{24}\\] Finished 2 of 2[^\n]*\r\x1b\\[K$"_s);
    EXPECT_TRUE(redrawn.match(terminal.out).hasMatch()) << terminal.out.toStdString();

    const QString tiny = subfolder(u"tiny"_s);
    makeWav(tiny + u"a.wav"_s, "0.002");
    makeWav(tiny + u"b.wav"_s);
    convert({u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, tiny}, {});

    const QString song = subfolder(u"song"_s), twins = subfolder(u"twins"_s);
    makeWav(song + u"song.wav"_s);
    const QByteArray original = readAll(song + u"song.wav"_s);
    convert({u"convert"_s, u"--to"_s, u"mp3"_s, song}, russian.how());
    convert({u"convert"_s, u"--to"_s, u"wav"_s, u"--from"_s, u"mp3"_s, song}, russian.how());
    EXPECT_EQ(readAll(russian.dir.filePath(u"data/Trash/files/song.wav"_s)), original);
    EXPECT_EQ(readAll(song + u"song.wav"_s).left(4), "RIFF");
    makeWav(twins + u"x.WAV"_s, "1");
    makeWav(twins + u"x.wav"_s, "2");
    convert({u"convert"_s, u"--to"_s, u"ogg"_s, twins}, russian.how());
    const QString ogg = subfolder(u"ogg"_s);
    makeWav(ogg + u"a.wav"_s);
    for (const char *locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "ru_RU.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
        const CliRun how{.program = english.path(), .env = english.how().env << u"LC_ALL="_s + QLatin1String(locale)};
        EXPECT_EQ(runCli({u"convert"_s, u"--to"_s, u"ogg"_s, ogg}, how).status, 0) << locale;
        const QString row = runCli({u"list"_s, u"--kind"_s, u"ogg"_s, ogg}).out.section(u'\n', 1, 1);
        EXPECT_EQ(row.section(u'\t', 3, 3), u"~208"_s) << locale << ": " << row.toStdString();
    }

    // Steps: N waits until N codecs have started, goN lets fN's codec end.
    const struct { int language; const char *steps; int files = 3; bool pipe = false; } runs[] = {
        {0, "2 INT pause go1 go2"},
        {2, "2 INT pause go1 go2"},
        {0, "2 INT pause go1 pause INT"},
        {0, "2 go1 3 TERM"},
        {0, "2 go1 3 HUP"},
        {0, "2 pause go1", 2, true},
    };
    for (const auto &run : runs) {
        const ProgramCopy &program = run.language == 0 ? english : russian;
        const QString folder = subfolder(QString::number(&run - runs)), pids = folder + u".pids"_s;
        for (int i = 1; i <= run.files; ++i)
            makeWav(folder + u"f%1.wav"_s.arg(i));
        // Each codec writes its target (f2's empty), then runs until its fN.go appears (20 s at most).
        program.fakeLame("echo \"$$ $(/usr/bin/cut -d' ' -f19 /proc/$$/stat)\" >> '" + pids.toUtf8() + "'\n"
                         "case \"$t\" in *f2.mp3) : > \"$t\";; *) /usr/bin/head -c 5000 /dev/zero > \"$t\";; esac\n"
                         "i=0; while [ ! -e \"${t%.mp3}.go\" ] && [ $i -lt 1000 ]; do /bin/sleep 0.02; i=$((i + 1)); done\n");
        const QString command = run.pipe ? u"\"$0\" convert --to mp3 --jobs 2 \"$1\" 2>&1 >\"$1.out\" | /usr/bin/head -c 1 "
                                           u">/dev/null; exit ${PIPESTATUS[0]}"_s
                                         : u"exec /usr/bin/nice -n 3 \"$0\" convert --to mp3 --jobs 2 \"$1\" >\"$1.out\""_s;
        QProcess p;
        startCli(p, {u"-c"_s, command, program.path(), folder}, program.how(u"/bin/bash"_s));
        for (const QString &step : QString::fromLatin1(run.steps).split(u' ')) {
            bool wait = false;
            const int codecs = step.toInt(&wait);
            for (int i = 0; wait && i < 1000 && readAll(pids).count('\n') < codecs; ++i)
                QThread::msleep(10);
            if (wait)
                ASSERT_EQ(readAll(pids).count('\n'), codecs) << run.steps;
            else if (step == u"pause")
                QThread::msleep(500);
            else if (step.startsWith(u"go"))
                write(folder + u"f"_s + step.mid(2) + u".go"_s, "");
            else
                ::kill(static_cast<pid_t>(p.processId()), step == u"INT" ? SIGINT : step == u"TERM" ? SIGTERM : SIGHUP);
        }
        ASSERT_TRUE(p.waitForFinished(20000));
        const QString shownCommand = u"[language %1] %5kestrelvane-cli convert --to mp3 --jobs 2 %2%3; %4"_s.arg(run.language)
                                         .arg(folder, run.pipe ? u" 2>&1 | head -c 1"_s : QString(), QLatin1String(run.steps), run.pipe ? QString() : u"nice -n 3 "_s);
        lines += shown(shownCommand, {QString::fromUtf8(readAll(folder + u".out"_s)), {},
                                     p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1});
        QStringList targets;
        for (const QFileInfo &target : QDir(folder).entryInfoList({u"*.mp3"_s}))
            targets += u"%1 (%2 bytes)"_s.arg(target.fileName()).arg(target.size());
        const QStringList started = QString::fromLatin1(readAll(pids)).split(u'\n', Qt::SkipEmptyParts); // "pid nice" of each
        QStringList nice; // each codec's nice over the test's own: a user's nice reaches the codecs
        for (const QString &codec : started) {
            const QByteArray stat = readAll(u"/proc/"_s + codec.section(u' ', 0, 0) + u"/stat"_s);
            EXPECT_TRUE(stat.isEmpty() || stat.mid(stat.lastIndexOf(')') + 2, 1) == "Z") << codec.toStdString();
            nice += QString::number(codec.section(u' ', 1, 1).toInt() - ::getpriority(PRIO_PROCESS, 0));
        }
        lines += u"codecs started: %1 at nice %2; targets left: %3"_s.arg(started.size()).arg(nice.join(u' '), targets.join(u", "_s));
    }
    lines.removeIf([](const QString &line) { return line.startsWith(u"2> ["_s); });
    lines.replaceInStrings(QRegularExpression(u"\t\\d+ (KB|КБ)\t[1-9]\\d* \\1\t[1-9]\\d*\t"_s), u"\tN \\1\tN \\1\tN\t"_s);
    lines.replaceInStrings(QRegularExpression(u"\t0:00:0\\d$"_s), u"\t0:00:0N"_s);
    kv::test::expectAsRecorded(u"cli-convert"_s, lines, dir.path());
}

// The real encoder where it cannot write: a full disk leaves part of a target, then, remounted
// read-only, the old one stays. The size rule calls both "Done"; the codec's own words say otherwise.
TEST(Convert, RealCodecFailuresOnAFullDiskAndAReadOnlyFolder)
{
    QTemporaryDir volume;
    const auto unmount = qScopeGuard([&] { QProcess::execute(u"/bin/umount"_s, {volume.path()}); });
    const QStringList tmpfs{u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=2000k"_s, u"tmpfs"_s, volume.path()};
    if (::geteuid() != 0 || QProcess::execute(u"/bin/mount"_s, tmpfs) != 0)
        GTEST_SKIP() << "needs the right to mount a small file system";
    const ProgramCopy program;
    makeWav(volume.filePath(u"a.wav"_s));
    write(volume.filePath(u"a.mp3"_s), QByteArray(20480, 'o'));
    makeWav(volume.filePath(u"long.wav"_s), "10"); // 1723 KB, which leaves 85 KB
    QStringList lines;
    for (const QString &name : {u"long.wav"_s, u"a.wav"_s}) {
        const CliResult r = runCli({u"convert"_s, u"--to"_s, u"mp3"_s, volume.path(), name}, program.how());
        lines += shown(u"kestrelvane-cli convert --to mp3 <tmp> "_s + name, {r.out, {}, r.status}); // no timed progress
        ASSERT_EQ(QProcess::execute(u"/bin/mount"_s, {u"-o"_s, u"remount,ro"_s, volume.path()}), 0);
    }
    lines.replaceInStrings(QRegularExpression(u"\t0:00:0\\d$"_s), u"\t0:00:0N"_s);
    kv::test::expectAsRecorded(u"cli-codec-failures"_s, lines, volume.path());
    EXPECT_EQ(readAll(volume.filePath(u"a.mp3"_s)), QByteArray(20480, 'o'));
}

// Each completion's estimate needs the sizes of every finished job: kept from each job's end, not
// asked for again at every completion, which made a run of 10,000 files take minutes. A run whose
// codec fails after the first file (a full disk) must not sum every source at each failure either.
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
        // The program's own thread alone: its codecs and helper threads are not followed. LeakSanitizer
        // cannot work under a tracer: this run alone goes without its leak check.
        CliRun how = program.how(u"/usr/bin/strace"_s);
        how.env += u"ASAN_OPTIONS="_s + qEnvironmentVariable("ASAN_OPTIONS") + u":detect_leaks=0"_s;
        const CliResult r = runCli({u"-qq"_s, u"-e"_s, u"trace=%%stat"_s, u"-o"_s, dir.filePath(u"trace"_s), program.path(),
                                    u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"2"_s, dir.path()}, how);
        EXPECT_EQ(r.status, failing ? 1 : 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(u"Finished %1 of 400\n"_s.arg(failing ? 1 : 400))) << r.out.right(300).toStdString();
        EXPECT_LT(readAll(dir.filePath(u"trace"_s)).count('\n'), 400 * 12) << (failing ? "failing" : "succeeding");
    }
}
