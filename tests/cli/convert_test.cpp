#include <gtest/gtest.h>

#include <csignal>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include "clirunner.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

namespace {

const QString header = u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time"_s;

// Awkward but legal names: blanks, quotes, shell characters, non-ASCII letters, a leading dash.
// In the order the report is sorted to.
const QStringList awkward = {u"$HOME $(id).wav"_s, u"-dash.wav"_s,        u"`id`.wav"_s, u"a  b.wav"_s,
                             u"it's.wav"_s,        uR"(say \"hi".wav)"_s, u"ёж ü.wav"_s};

void makeWav(const QString &path, const char *rate = "-r44100", const char *seconds = "1")
{
    ASSERT_EQ(QProcess::execute(u"/usr/bin/sox"_s, {u"-n"_s, QLatin1String(rate), u"-c2"_s, u"-b16"_s, path, u"synth"_s,
                                                    QLatin1String(seconds), u"sine"_s, u"440"_s}),
              0);
}

QByteArray bytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(data);
}

// The named files of a folder, read whole.
QByteArrayList contents(const QTemporaryDir &dir, const QStringList &names)
{
    QByteArrayList all;
    for (const QString &name : names)
        all.append(bytes(dir.filePath(name)));
    return all;
}

QString withExtension(const QString &name, const QString &extension)
{
    return name.left(name.size() - 3) + extension;
}

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
        names.append(line.section(QLatin1Char('\t'), 0, 0));
    }
    names.sort();
    return names;
}

} // namespace

TEST(Convert, EncodesAwkwardNamesToEachFormatAndDecodesBack)
{
    QTemporaryDir wavs;
    QStringList all = awkward + QStringList{u"rate48.wav"_s}; // Musepack takes 44100 Hz only
    all.sort();
    for (const QString &name : all)
        makeWav(wavs.filePath(name), name.startsWith(u"rate48") ? "-r48000" : "-r44100");
    const QByteArrayList sources = contents(wavs, all);

    const struct { const char *to; QByteArray magic; QStringList listed; } encodings[] = {{"mp3", "\xFF", all}, {"ogg", "OggS", all}, {"mpc", "MPCK", awkward}};
    for (const auto &e : encodings) {
        const QString to = QLatin1String(e.to);
        const CliResult r = runCli({u"convert"_s, u"--to"_s, to, wavs.path()});
        EXPECT_EQ(doneNames(r, static_cast<int>(e.listed.size())), e.listed);
        EXPECT_FALSE(r.err.contains(QLatin1Char('\r'))); // not a terminal: plain lines only
        for (const QString &name : awkward) {
            const QByteArray start = bytes(wavs.filePath(withExtension(name, to))).left(4);
            EXPECT_TRUE(start.startsWith(e.magic) || (e.magic == "\xFF" && start.startsWith("ID3")))
                << e.to << name.toStdString();
        }
        EXPECT_EQ(contents(wavs, all), sources);
    }

    // Back to WAV, each kind in a folder of its own so no WAV source is overwritten.
    for (const QString &from : {u"mp3"_s, u"ogg"_s}) {
        QTemporaryDir encoded;
        QStringList names;
        for (const QString &name : awkward) {
            names.append(withExtension(name, from));
            ASSERT_TRUE(QFile::copy(wavs.filePath(names.back()), encoded.filePath(names.back())));
        }
        const QByteArrayList before = contents(encoded, names);
        const CliResult r = runCli({u"convert"_s, u"--to"_s, u"wav"_s, u"--from"_s, from, encoded.path()});
        EXPECT_EQ(doneNames(r, static_cast<int>(names.size())), names);
        for (const QString &name : awkward)
            EXPECT_EQ(bytes(encoded.filePath(name)).left(4), "RIFF") << name.toStdString();
        EXPECT_EQ(contents(encoded, names), before);
    }
}

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
        {{u"--to"_s, u"wav"_s, wavs.path()}, 2, "--to wav needs --from"},
        {{u"--to"_s, u"mp3"_s, u"--jobs"_s, u"9"_s, wavs.path()}, 2, "--jobs takes a number from 1 to 8"},
        {{u"--to"_s, u"mp3"_s, wavs.filePath(u"none"_s)}, 2, "no such folder"},
        {{u"--to"_s, u"mp3"_s, wavs.path(), u"x.wav"_s}, 2, "x.wav: not listed"},
        {{u"--to"_s, u"wav"_s, u"--from"_s, u"mpc"_s, wavs.path()}, 3, "no file to convert"},
    };
    for (const auto &c : cases) {
        const CliResult u = runCli(QStringList{u"convert"_s} + c.args);
        EXPECT_EQ(u.status, c.status) << c.message;
        EXPECT_TRUE(u.err.contains(QLatin1String(c.message))) << u.err.toStdString();
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
    const CliResult r = runCli({u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, dir.path()}, "C.UTF-8", 20000);
    EXPECT_EQ(r.out, header + u"\na.wav\tIn Progress\t0 KB\t\t\t\nb.wav\t\t172 KB\t\t\t\nFinished 0 of 2\n"_s);
    EXPECT_EQ(r.status, 1);
}

namespace {

// A copy of the binary beside a copy of the codec folder, in which entries may be replaced.
struct ProgramCopy
{
    QTemporaryDir dir;
    QString codec(const char *name) const { return dir.path() + u"/codec/"_s + QLatin1String(name); }

    ProgramCopy()
    {
        QFile::copy(cliPath(), dir.path() + u"/kestrelvane-cli"_s);
        QDir().mkpath(dir.path() + u"/codec"_s);
        for (const char *name : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(name), codec(name));
    }
    // Starts convert with args and, unless told otherwise, waits for its end.
    void start(QProcess &p, const QStringList &args, bool finish = true) const
    {
        p.start(dir.path() + u"/kestrelvane-cli"_s, QStringList{u"convert"_s} + args);
        EXPECT_TRUE(finish ? p.waitForFinished(20000) : p.waitForStarted());
    }
};

} // namespace

TEST(Convert, MissingCodecsAreReportedInCheckOrder)
{
    ProgramCopy program;
    QFile::remove(program.codec("lame"));
    QFile::resize(program.codec("mppenc"), 0);
    QTemporaryDir empty;
    QProcess p;
    program.start(p, {u"--to"_s, u"mp3"_s, empty.path()});
    EXPECT_EQ(p.exitCode(), 2);
    // The last check looks for lame again but names oggdec, which is there.
    EXPECT_EQ(QString::fromUtf8(p.readAllStandardError()), program.codec("lame") + u" not found\n"_s
                                                               + program.codec("mppenc") + u" not found\n"_s
                                                               + program.codec("oggdec") + u" not found\n"_s);
}

TEST(Convert, FirstInterruptBreaksTheWaitingSecondKillsTheRunning)
{
    ProgramCopy program;
    QTemporaryDir wavs;
    for (int i = 1; i <= 4; ++i)
        makeWav(wavs.filePath(u"f%1.wav"_s.arg(i)));
    // A slow encoder that leaves a partial target while it works, for as long as the file delay says.
    const QString delay = program.dir.filePath(u"delay"_s);
    write(program.codec("lame"), "#!/bin/sh\nfor a do t=$a; done\n/usr/bin/head -c 5000 /dev/zero > \"$t\"\n"
                                 "/bin/sleep \"$(/bin/cat '"
                                     + delay.toUtf8() + "')\"\n");
    QFile::setPermissions(program.codec("lame"), QFile::ReadOwner | QFile::ExeOwner);

    const struct { const char *delay; int interrupts, status; } runs[] = {{"1", 1, 1}, {"30", 2, 130}};
    for (const auto &run : runs) {
        write(delay, run.delay);
        QElapsedTimer clock;
        clock.start();
        QProcess p;
        program.start(p, {u"--to"_s, u"mp3"_s, u"--jobs"_s, u"2"_s, wavs.path()}, false);
        for (int i = 0; i < run.interrupts; ++i) {
            QThread::msleep(i == 0 ? 300 : 100);
            ::kill(static_cast<pid_t>(p.processId()), SIGINT);
        }
        ASSERT_TRUE(p.waitForFinished(20000));
        EXPECT_LT(clock.elapsed(), 5000);
        EXPECT_EQ(p.exitCode(), run.status);
        const QString out = QString::fromUtf8(p.readAllStandardOutput());
        if (run.interrupts == 1) {
            EXPECT_EQ(out, header
                               + u"\nf1.wav\tDone\t172 KB\t5 KB\t3\t0:00:01\nf2.wav\tDone\t172 KB\t5 KB\t3\t0:00:01\n"
                                 "f3.wav\tBreak\t172 KB\t\t\t\nf4.wav\tBreak\t172 KB\t\t\t\nFinished 2 of 4\n"_s);
        } else {
            EXPECT_TRUE(out.contains(QLatin1String("f1.wav\tKilled\t172 KB")));
            for (int i = 1; i <= 4; ++i) // the killed codecs' partial targets are gone
                EXPECT_FALSE(QFile::exists(wavs.filePath(u"f%1.mp3"_s.arg(i)))) << i;
        }
    }
}
