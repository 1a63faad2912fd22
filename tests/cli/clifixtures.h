#pragma once

// Runs of the built kestrelvane-cli, and the files and program copies several tests set up alike.

#include <linux/capability.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include "support/bytefiles.h" // with gtest, QFile, QFileInfo and QTemporaryDir
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace Qt::StringLiterals;

struct CliResult
{
    QString out, err;
    int status = -1;
};

// No program runs the shared copy; unprivileged takes away root's right to read and search whatever it likes.
struct CliRun
{
    QString program;
    bool unprivileged = false;
    QStringList env; // NAME=value, LC_ALL=C.UTF-8 unless set
};

// A copy of the binary and its codec folder (codecs may be replaced), with a trash of its own and any
// settings given as its kestrvan.cfg: none left beside build/bin can change what a test sees.
struct ProgramCopy
{
    QTemporaryDir dir;

    explicit ProgramCopy(const QByteArray &settings = {})
    {
        QFile::copy(QStringLiteral(KV_BIN_DIR "/kestrelvane-cli"), path());
        QProcess::execute(u"/bin/cp"_s, {u"-r"_s, QStringLiteral(KV_BIN_DIR "/codec"), dir.path()});
        if (!settings.isEmpty())
            write(dir.filePath(u"kestrvan.cfg"_s), settings);
    }
    QString path() const { return dir.filePath(u"kestrelvane-cli"_s); }
    // The MP3 encoder replaced by a shell script, run with no environment (absolute paths only); $t is the target.
    void fakeLame(const QByteArray &script) const
    {
        write(dir.filePath(u"codec/lame"_s), "#!/bin/sh\nfor a do t=$a; done\n" + script);
        QFile::setPermissions(dir.filePath(u"codec/lame"_s), QFile::ReadOwner | QFile::ExeOwner);
    }
    // A run of the program given, or of this copy.
    CliRun how(const QString &program = {}) const
    {
        return {.program = program.isEmpty() ? path() : program, .env = {u"XDG_DATA_HOME="_s + dir.filePath(u"data"_s)}};
    }
};

inline QString cliPath()
{
    static const ProgramCopy shared;
    return shared.path();
}

inline void startCli(QProcess &p, const QStringList &args, const CliRun &how = {})
{
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const QString &variable : how.env)
        e.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
    p.setProcessEnvironment(e);
    if (how.unprivileged && ::geteuid() == 0)
        p.setChildProcessModifier([] {
            if (::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) != 0 || ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) != 0)
                ::_exit(100);
        });
    p.start(how.program.isEmpty() ? cliPath() : how.program, args);
    EXPECT_TRUE(p.waitForStarted()) << p.errorString().toStdString();
}

inline CliResult runCli(const QStringList &args, const CliRun &how = {})
{
    QProcess p;
    startCli(p, args, how);
    if (!p.waitForFinished(120000))
        return {QString(), u"timed out"_s}; // killed as p goes
    return {QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError()),
            p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1};
}

// A run as a record shows it: the command and its status, standard output, then standard error
// with each line marked "2>".
inline QStringList shown(const QString &command, const CliResult &r)
{
    QStringList lines{u"$ "_s + QString(command).replace(u'\t', u"\\t"_s).replace(u'\n', u"\\n"_s)
                      + u" (status %1)"_s.arg(r.status)};
    for (auto [text, mark] : {std::pair(r.out, u""_s), std::pair(r.err, u"2> "_s)}) {
        if (text.isEmpty())
            continue;
        text = text.endsWith(u'\n') ? text.chopped(1) : text + u" [no newline at the end]"_s;
        for (const QString &line : text.split(u'\n'))
            lines += mark + line;
    }
    return lines;
}

// A 440 Hz sine, 16-bit stereo, made by sox.
inline void makeWav(const QString &path, const char *seconds = "1")
{
    const QStringList args{u"-n"_s, u"-r44100"_s, u"-c2"_s, u"-b16"_s, path, u"synth"_s, QLatin1String(seconds), u"sine"_s, u"440"_s};
    ASSERT_EQ(QProcess::execute(u"/usr/bin/sox"_s, args), 0);
}

// A configuration record of zeros (the smallest settings, English) with some bytes set: {offset, value}.
inline QByteArray record(std::initializer_list<std::pair<int, int>> set)
{
    QByteArray r(10310, '\0');
    for (const auto &[at, value] : set)
        r[at] = static_cast<char>(value);
    return r;
}
