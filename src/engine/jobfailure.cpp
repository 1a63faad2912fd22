#include "engine/jobfailure.h"

#include <cstring>

namespace kv {

QString processEndText(const ProcessEnd &end)
{
    if (end.signal == 0)
        return QStringLiteral("exit status ") + QString::number(end.exitCode);
    return QStringLiteral("signal ") + QString::number(end.signal) + QStringLiteral(" (")
           + QString::fromLocal8Bit(::strsignal(end.signal)) + QLatin1Char(')');
}

QString errorOutputText(const ProcessEnd &end)
{
    return QString::fromUtf8(end.errorTail).trimmed();
}

QString jobFailureText(const EncodeJob &job)
{
    QStringList lines;
    if (!job.reason.isEmpty())
        lines.append(job.reason);
    if (job.codecFailure) {
        if (job.codecFailure->failed())
            lines.append(processEndText(*job.codecFailure));
        const QString errors = errorOutputText(*job.codecFailure);
        if (!errors.isEmpty())
            lines.append(errors);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace kv
