#include <gtest/gtest.h>

#include <csignal>

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <unistd.h>

#include "clirunner.h"
#include "support/qtprinters.h"

namespace {

const QString header = QStringLiteral("File Name\tStatus\tFile Size\tSize\t%\tEncoding time");

// Awkward but legal names: blanks, quotes, shell characters, non-ASCII letters, a leading dash.
const QStringList awkward = {QStringLiteral("plain.wav"), QStringLiteral("a  b.wav"), QStringLiteral("it's.wav"),
                             QStringLiteral("$HOME $(id).wav"), QStringLiteral("`id`.wav"),
                             QStringLiteral("ёж ü.wav"), QStringLiteral("-dash.wav")};

void makeWav(const QString &path, int rate = 44100, const QString &seconds = QStringLiteral("1"))
{
    ASSERT_EQ(QProcess::execute(QStringLiteral("/usr/bin/sox"),
                                {QStringLiteral("-n"), QStringLiteral("-r"), QString::number(rate), QStringLiteral("-c"),
                                 QStringLiteral("2"), QStringLiteral("-b"), QStringLiteral("16"), path,
                                 QStringLiteral("synth"), seconds, QStringLiteral("sine"), QStringLiteral("440")}),
              0);
}

QByteArray head(const QString &path, int n)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.read(n) : QByteArray();
}

// Content hash of every file below folder, by relative path.
std::map<QString, QByteArray> hashes(const QString &folder)
{
    std::map<QString, QByteArray> all;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile f(path);
        f.open(QIODevice::ReadOnly);
        all[QDir(folder).relativeFilePath(path)] = QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
    }
    return all;
}

// The job lines of a report, without the header and the finished line, which are checked here.
QStringList jobLines(const CliResult &r, int jobs)
{
    QStringList lines = r.out.split(QLatin1Char('\n'));
    EXPECT_EQ(lines.value(0), header);
    EXPECT_EQ(lines.size(), jobs + 3) << r.out.toStdString();
    EXPECT_EQ(lines.value(lines.size() - 1), QString());
    return lines.mid(1, jobs);
}

struct Folder
{
    QTemporaryDir dir;
    QString path() const { return dir.path(); }
    QString file(const QString &name) const { return dir.path() + QLatin1Char('/') + name; }
};

} // namespace

TEST(Convert, EncodesAwkwardNamesToEachFormatAndDecodesBack)
{
    Folder wavs;
    for (const QString &name : awkward)
        makeWav(wavs.file(name));
    makeWav(wavs.file(QStringLiteral("rate48.wav")), 48000);
    auto before = hashes(wavs.path());

    const struct
    {
        const char *to;
        QByteArray magic;
        int jobs;
    } encodings[] = {{"mp3", "\xFF", 8}, {"ogg", "OggS", 8}, {"mpc", "MPCK", 7}};
    for (const auto &e : encodings) {
        const QString to = QString::fromLatin1(e.to);
        const CliResult r = runCli({QStringLiteral("convert"), QStringLiteral("--to"), to, wavs.path()});
        EXPECT_EQ(r.status, 0) << r.err.toStdString();
        const QStringList lines = jobLines(r, e.jobs);
        EXPECT_EQ(r.out.split(QLatin1Char('\n')).value(e.jobs + 1),
                  QStringLiteral("Finished %1 of %1").arg(e.jobs));
        for (const QString &line : lines) {
            const QStringList cells = line.split(QLatin1Char('\t'));
            ASSERT_EQ(cells.size(), 6) << line.toStdString();
            EXPECT_EQ(cells[1], QStringLiteral("Done")) << line.toStdString();
            EXPECT_EQ(cells[2], cells[0] == QLatin1String("rate48.wav") ? QStringLiteral("188 KB") : QStringLiteral("172 KB"));
            EXPECT_TRUE(cells[3].endsWith(QLatin1String(" KB")));
            EXPECT_GT(cells[4].toInt(), 0);
            EXPECT_EQ(cells[5], QStringLiteral("0:00:00"));
        }
        for (const QString &name : awkward) {
            const QString target = wavs.file(name.left(name.size() - 4) + QLatin1Char('.') + to);
            const QByteArray start = head(target, 4);
            EXPECT_TRUE(start.startsWith(e.magic) || (e.magic == "\xFF" && start.startsWith("ID3")))
                << target.toStdString();
        }
        EXPECT_FALSE(r.err.contains(QLatin1Char('\r'))); // not a terminal: plain lines only
        auto after = hashes(wavs.path());
        for (const auto &[name, hash] : before)
            EXPECT_EQ(after[name], hash) << name.toStdString();
    }
    EXPECT_FALSE(QFile::exists(wavs.file(QStringLiteral("rate48.mpc")))); // Musepack takes 44100 Hz only

    // Back to WAV, each kind in a folder of its own so no WAV source is overwritten.
    for (const char *kind : {"mp3", "ogg"}) {
        const QString from = QString::fromLatin1(kind);
        Folder encoded;
        for (const QString &name : awkward) {
            const QString base = name.left(name.size() - 4) + QLatin1Char('.') + from;
            ASSERT_TRUE(QFile::copy(wavs.file(base), encoded.file(base)));
        }
        before = hashes(encoded.path());
        const CliResult r = runCli({QStringLiteral("convert"), QStringLiteral("--to"), QStringLiteral("wav"),
                                    QStringLiteral("--from"), from, encoded.path()});
        EXPECT_EQ(r.status, 0) << r.err.toStdString();
        for (const QString &line : jobLines(r, static_cast<int>(awkward.size())))
            EXPECT_EQ(line.section(QLatin1Char('\t'), 1, 1), QStringLiteral("Done")) << line.toStdString();
        for (const QString &name : awkward)
            EXPECT_EQ(head(encoded.file(name), 4), QByteArray("RIFF")) << name.toStdString();
        auto after = hashes(encoded.path());
        for (const auto &[name, hash] : before)
            EXPECT_EQ(after[name], hash) << name.toStdString();
    }
    // The Musepack this encoder writes is stream version 8, which the file list does not read:
    // nothing is listed, so nothing is converted.
    const CliResult mpc = runCli({QStringLiteral("convert"), QStringLiteral("--to"), QStringLiteral("wav"),
                                  QStringLiteral("--from"), QStringLiteral("mpc"), wavs.path()});
    EXPECT_EQ(mpc.status, 3);
    EXPECT_EQ(mpc.out, QString());
}

TEST(Convert, NamedFilesOnlyAndUsageErrors)
{
    Folder wavs;
    for (const QString &name : {QStringLiteral("a.wav"), QStringLiteral("b.wav"), QStringLiteral("-c.wav")})
        makeWav(wavs.file(name));
    const CliResult r = runCli({QStringLiteral("convert"), QStringLiteral("--to=ogg"), QStringLiteral("--jobs"),
                                QStringLiteral("1"), wavs.path(), QStringLiteral("b.wav"), QStringLiteral("--"),
                                QStringLiteral("-c.wav")});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    const QStringList lines = jobLines(r, 2);
    EXPECT_TRUE(lines.value(0).startsWith(QLatin1String("-c.wav\tDone\t")));
    EXPECT_TRUE(lines.value(1).startsWith(QLatin1String("b.wav\tDone\t")));
    EXPECT_FALSE(QFile::exists(wavs.file(QStringLiteral("a.ogg"))));

    const struct
    {
        QStringList args;
        int status;
        const char *message;
    } cases[] = {
        {{wavs.path()}, 2, "no --to given"},
        {{QStringLiteral("--to"), QStringLiteral("wav"), wavs.path()}, 2, "--to wav needs --from"},
        {{QStringLiteral("--to"), QStringLiteral("mp3"), QStringLiteral("--jobs"), QStringLiteral("9"), wavs.path()}, 2,
         "--jobs takes a number from 1 to 8"},
        {{QStringLiteral("--to"), QStringLiteral("mp3"), wavs.file(QStringLiteral("none"))}, 2, "no such folder"},
        {{QStringLiteral("--to"), QStringLiteral("mp3"), wavs.path(), QStringLiteral("x.wav")}, 2, "x.wav: not listed"},
        {{QStringLiteral("--to"), QStringLiteral("wav"), QStringLiteral("--from"), QStringLiteral("mpc"), wavs.path()}, 3,
         "no file to convert"},
    };
    for (const auto &c : cases) {
        const CliResult u = runCli(QStringList{QStringLiteral("convert")} + c.args);
        EXPECT_EQ(u.status, c.status) << c.message;
        EXPECT_TRUE(u.err.contains(QString::fromUtf8(c.message))) << u.err.toStdString();
        EXPECT_EQ(u.out, QString());
    }
}

namespace {

// A program folder of its own: a copy of the binary beside a copy of the codec folder, in which
// one entry may be replaced.
struct ProgramCopy
{
    QTemporaryDir dir;
    QString binary() const { return dir.path() + QStringLiteral("/kestrelvane-cli"); }
    QString codec(const QString &name) const { return dir.path() + QStringLiteral("/codec/") + name; }

    ProgramCopy()
    {
        QFile::copy(cliPath(), binary());
        QDir().mkpath(dir.path() + QStringLiteral("/codec"));
        for (const char *name : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(name), codec(QLatin1String(name)));
        QFile::setPermissions(binary(), QFile::permissions(cliPath()));
    }
    void replace(const QString &name, const QByteArray &script)
    {
        QFile::remove(codec(name));
        QFile f(codec(name));
        f.open(QIODevice::WriteOnly);
        f.write(script);
        f.close();
        f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup | QFile::ReadGroup
                         | QFile::ExeOther | QFile::ReadOther);
    }
};

} // namespace

TEST(Convert, MissingCodecsAreReportedInCheckOrder)
{
    ProgramCopy program;
    QFile::remove(program.codec(QStringLiteral("lame")));
    QFile::resize(program.codec(QStringLiteral("mppenc")), 0);
    QFile::remove(program.codec(QStringLiteral("oggdec"))); // never looked for
    Folder wavs;
    QProcess p;
    p.start(program.binary(), {QStringLiteral("convert"), QStringLiteral("--to"), QStringLiteral("mp3"), wavs.path()});
    ASSERT_TRUE(p.waitForFinished(20000));
    EXPECT_EQ(p.exitCode(), 2);
    const QString codecs = program.dir.path() + QStringLiteral("/codec/");
    EXPECT_EQ(QString::fromUtf8(p.readAllStandardError()),
              codecs + QStringLiteral("lame not found\n") + codecs + QStringLiteral("mppenc not found\n") + codecs
                  + QStringLiteral("oggdec not found\n"));
}

TEST(Convert, FirstInterruptBreaksTheWaitingSecondKillsTheRunning)
{
    ProgramCopy program;
    Folder wavs;
    for (int i = 1; i <= 4; ++i)
        makeWav(wavs.file(QStringLiteral("f%1.wav").arg(i)));
    // A slow encoder that leaves a partial target while it works.
    program.replace(QStringLiteral("lame"), "#!/bin/sh\nfor a do t=$a; done\n"
                                            "/usr/bin/head -c 5000 /dev/zero > \"$t\"\n"
                                            "/bin/sleep \"$(/bin/cat '" + program.dir.path().toUtf8() + "/delay')\"\n");
    auto setDelay = [&](const char *seconds) {
        QFile f(program.dir.path() + QStringLiteral("/delay"));
        f.open(QIODevice::WriteOnly);
        f.write(seconds);
    };
    auto start = [&](QProcess &p) {
        p.start(program.binary(), {QStringLiteral("convert"), QStringLiteral("--to"), QStringLiteral("mp3"),
                                   QStringLiteral("--jobs"), QStringLiteral("2"), wavs.path()});
        EXPECT_TRUE(p.waitForStarted());
        QThread::msleep(300);
    };

    setDelay("1");
    QProcess once;
    start(once);
    ::kill(static_cast<pid_t>(once.processId()), SIGINT);
    ASSERT_TRUE(once.waitForFinished(20000));
    EXPECT_EQ(once.exitCode(), 1);
    EXPECT_EQ(QString::fromUtf8(once.readAllStandardOutput()),
              header + QStringLiteral("\nf1.wav\tDone\t172 KB\t5 KB\t3\t0:00:01\nf2.wav\tDone\t172 KB\t5 KB\t3\t0:00:01\n"
                                      "f3.wav\tBreak\t172 KB\t\t\t\nf4.wav\tBreak\t172 KB\t\t\t\nFinished 2 of 4\n"));

    setDelay("30");
    QProcess twice;
    QElapsedTimer clock;
    clock.start();
    start(twice);
    ::kill(static_cast<pid_t>(twice.processId()), SIGINT);
    QThread::msleep(100);
    ::kill(static_cast<pid_t>(twice.processId()), SIGINT);
    ASSERT_TRUE(twice.waitForFinished(20000));
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(twice.exitCode(), 130);
    EXPECT_TRUE(QString::fromUtf8(twice.readAllStandardOutput()).contains(QLatin1String("f1.wav\tIn Progress\t172 KB")));
    for (int i = 1; i <= 4; ++i)
        EXPECT_FALSE(QFile::exists(wavs.file(QStringLiteral("f%1.mp3").arg(i)))) << i;
}

TEST(Convert, FolderTheUserCannotWriteMarksJobsWithoutHarm)
{
    Folder wavs;
    for (const QString &name : {QStringLiteral("a.wav"), QStringLiteral("b.wav")})
        makeWav(wavs.file(name));
    const auto before = hashes(wavs.path());
    QFile::setPermissions(wavs.path(), QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup
                                           | QFile::ReadOther | QFile::ExeOther);
    // Permissions do not bind the superuser: then the command runs as nobody.
    QProcess p;
    QStringList args = {QStringLiteral("convert"), QStringLiteral("--to"), QStringLiteral("ogg"), wavs.path()};
    if (::geteuid() == 0) {
        p.start(QStringLiteral("/usr/bin/setpriv"), QStringList{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                                                                QStringLiteral("--clear-groups"), cliPath()}
                                                        + args);
    } else {
        p.start(cliPath(), args);
    }
    ASSERT_TRUE(p.waitForFinished(20000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_EQ(p.exitCode(), 1) << p.readAllStandardError().toStdString();
    EXPECT_EQ(out, header + QStringLiteral("\na.wav\tError\t172 KB\t\t\t0:00:00\nb.wav\tError\t172 KB\t\t\t0:00:00\n"
                                           "Finished 0 of 2\n"));
    EXPECT_EQ(hashes(wavs.path()), before);
}
