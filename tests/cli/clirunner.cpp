#include "clirunner.h"

#include <QProcess>

QString cliPath()
{
    return QStringLiteral(KV_BIN_DIR "/kestrelvane-cli");
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
