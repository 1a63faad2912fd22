#include "clirunner.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

namespace {

// A program folder of the tests' own: the built binary copied beside a link to the built codec
// folder, so that no kestrvan.cfg left beside build/bin can change what a test sees.
const QString &programFolder()
{
    static QTemporaryDir dir;
    static const QString folder = [] {
        const QString built = QStringLiteral(KV_BIN_DIR "/");
        QFile::copy(built + QStringLiteral("kestrelvane-cli"), dir.filePath(QStringLiteral("kestrelvane-cli")));
        QFile::link(built + QStringLiteral("codec"), dir.filePath(QStringLiteral("codec")));
        return dir.path() + QLatin1Char('/');
    }();
    return folder;
}

} // namespace

QString cliPath()
{
    return programFolder() + QStringLiteral("kestrelvane-cli");
}

CliResult runCli(const QStringList &args, const char *locale, int timeoutMs, bool errOnTerminal)
{
    QProcess p;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(QStringLiteral("LC_ALL"), QLatin1String(locale));
    p.setProcessEnvironment(e);
    int terminal = -1, childSide = -1;
    if (errOnTerminal) {
        // Raw, so that the terminal hands back the bytes as written; no more than a line or two
        // of progress, well within what it buffers before the program would wait.
        termios raw {};
        ::cfmakeraw(&raw);
        if (::openpty(&terminal, &childSide, nullptr, &raw, nullptr) != 0)
            return {QString(), QStringLiteral("no pseudo-terminal"), -1};
        p.setChildProcessModifier([childSide] { ::dup2(childSide, 2); });
    }
    p.start(cliPath(), args);
    if (childSide >= 0)
        ::close(childSide);
    CliResult r;
    const bool finished = p.waitForFinished(timeoutMs);
    if (!finished) {
        p.kill();
        p.waitForFinished();
    }
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    if (terminal >= 0) {
        ::fcntl(terminal, F_SETFL, O_NONBLOCK);
        QByteArray written;
        char buf[4096];
        for (ssize_t n; (n = ::read(terminal, buf, sizeof buf)) > 0;)
            written.append(buf, n);
        ::close(terminal);
        r.err = QString::fromUtf8(written);
    }
    if (!finished) {
        r.err = QStringLiteral("timed out");
        return r;
    }
    r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    return r;
}
