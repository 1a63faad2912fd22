#pragma once

// Runs of the built kestrelvane-cli, and the files and program copies that several CLI tests set
// up alike.

#include <optional>

#include <fcntl.h>
#include <linux/capability.h>
#include <pty.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

struct CliResult
{
    QString out;
    QString err;
    int status = -1;
    bool operator==(const CliResult &) const = default;
};

// The built binary, copied beside a link to the built codec folder so that no kestrvan.cfg left
// beside build/bin can change what a test sees.
inline QString cliPath()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString built = QStringLiteral(KV_BIN_DIR "/");
        QFile::copy(built + QStringLiteral("kestrelvane-cli"), dir.filePath(QStringLiteral("kestrelvane-cli")));
        QFile::link(built + QStringLiteral("codec"), dir.filePath(QStringLiteral("codec")));
        return dir.filePath(QStringLiteral("kestrelvane-cli"));
    }();
    return path;
}

// How a run starts: errOnTerminal sends standard error to a pseudo-terminal, as when a user runs
// the program in one; dataHome gives it a desktop trash of its own; unprivileged takes away root's
// right to read and search whatever it likes, where the tests run as root.
struct CliRun
{
    const char *locale = "C.UTF-8";
    bool errOnTerminal = false;
    QString program = cliPath();
    QString dataHome;
    bool unprivileged = false;
};

inline void startCli(QProcess &p, const QStringList &args, const CliRun &how = {})
{
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(QStringLiteral("LC_ALL"), QLatin1String(how.locale));
    if (!how.dataHome.isEmpty())
        e.insert(QStringLiteral("XDG_DATA_HOME"), how.dataHome);
    p.setProcessEnvironment(e);
    p.start(how.program, args);
    EXPECT_TRUE(p.waitForStarted()) << p.errorString().toStdString();
}

inline CliResult runCli(const QStringList &args, const CliRun &how = {})
{
    QProcess p;
    int terminal = -1, childSide = -1;
    if (how.errOnTerminal) {
        // Raw, so that the terminal hands back the bytes as written; no more than a line or two
        // of progress, well within what it buffers before the program would wait.
        termios raw {};
        ::cfmakeraw(&raw);
        if (::openpty(&terminal, &childSide, nullptr, &raw, nullptr) != 0)
            return {QString(), QStringLiteral("no pseudo-terminal"), -1};
    }
    // Only where a run asks for it; other runs start the program untouched, as before.
    if (childSide >= 0 || how.unprivileged)
        p.setChildProcessModifier([childSide, drop = how.unprivileged] {
            if (childSide >= 0)
                ::dup2(childSide, 2);
            if (drop && ::geteuid() == 0
                && (::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) != 0 || ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) != 0))
                ::_exit(100);
        });
    startCli(p, args, how);
    if (childSide >= 0)
        ::close(childSide);
    const bool finished = p.waitForFinished(120000);
    if (!finished) {
        p.kill();
        p.waitForFinished();
    }
    CliResult r{QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
    if (terminal >= 0) {
        ::fcntl(terminal, F_SETFL, O_NONBLOCK);
        QByteArray written;
        char buf[4096];
        for (ssize_t n; (n = ::read(terminal, buf, sizeof buf)) > 0;)
            written.append(buf, n);
        ::close(terminal);
        r.err = QString::fromUtf8(written);
    }
    if (!finished)
        r.err = QStringLiteral("timed out");
    else if (p.exitStatus() == QProcess::NormalExit)
        r.status = p.exitCode();
    return r;
}

inline QByteArray bytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size()) << path.toStdString();
}

// A 440 Hz sine, 16-bit stereo, made by sox.
inline void makeWav(const QString &path, const char *rate = "-r44100", const char *seconds = "1")
{
    ASSERT_EQ(QProcess::execute(QStringLiteral("/usr/bin/sox"),
                                {QStringLiteral("-n"), QLatin1String(rate), QStringLiteral("-c2"), QStringLiteral("-b16"), path,
                                 QStringLiteral("synth"), QLatin1String(seconds), QStringLiteral("sine"), QStringLiteral("440")}),
              0);
}

// A configuration record of zeros (the smallest settings, English) with some bytes set: {offset, value}.
inline QByteArray record(std::initializer_list<std::pair<int, int>> set)
{
    QByteArray r(10310, '\0');
    for (const auto &[at, value] : set)
        r[at] = static_cast<char>(value);
    return r;
}

// A copy of the binary beside a copy of the codec folder, in which codecs may be replaced, with a
// desktop trash of its own and, when a language is given, a configuration record holding it.
struct ProgramCopy
{
    QTemporaryDir dir;

    explicit ProgramCopy(std::optional<char> language = std::nullopt)
    {
        QFile::copy(cliPath(), path());
        QDir().mkpath(dir.filePath(QStringLiteral("codec")));
        for (const char *name : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(name), codec(name));
        if (language)
            write(dir.filePath(QStringLiteral("kestrvan.cfg")), record({{1, *language}}));
    }
    QString path() const { return dir.filePath(QStringLiteral("kestrelvane-cli")); }
    QString codec(const char *name) const { return dir.filePath(QStringLiteral("codec/") + QLatin1String(name)); }
    QString trash() const { return dir.filePath(QStringLiteral("data/Trash/files/")); }
    // Replaces the MP3 encoder by a shell script (run with no environment: absolute paths only);
    // $t is the target.
    void fakeLame(const QByteArray &script) const
    {
        write(codec("lame"), "#!/bin/sh\nfor a do t=$a; done\n" + script);
        QFile::setPermissions(codec("lame"), QFile::ReadOwner | QFile::ExeOwner);
    }
    // A run of `convert` with args, or of the program given with its arguments.
    CliRun how(const QString &program = {}) const
    {
        return {.program = program.isEmpty() ? path() : program, .dataHome = dir.filePath(QStringLiteral("data"))};
    }
    void start(QProcess &p, const QStringList &args, const QString &program = {}) const
    {
        startCli(p, program.isEmpty() ? QStringList{QStringLiteral("convert")} + args : args, how(program));
    }
    CliResult convert(const QStringList &args) const { return runCli(QStringList{QStringLiteral("convert")} + args, how()); }
};
