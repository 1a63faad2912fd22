#include "clirunner.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

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

CliResult runCli(const QStringList &args, const char *locale, int timeoutMs)
{
    QProcess p;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.insert(QStringLiteral("LC_ALL"), QLatin1String(locale));
    p.setProcessEnvironment(e);
    p.start(cliPath(), args);
    CliResult r;
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        r.err = QStringLiteral("timed out");
        return r;
    }
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    return r;
}
