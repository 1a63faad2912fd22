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

QString jobFailureText(const EncodeJob &job)
{
    QStringList lines;
    if (!job.reason.isEmpty())
        lines.append(job.reason);
    if (job.codecFailure) {
        if (job.codecFailure->failed())
            lines.append(processEndText(*job.codecFailure));
        // Codecs write their own language; a byte that is not UTF-8 shows as a replacement mark.
        const QString errors = QString::fromUtf8(job.codecFailure->errorTail).trimmed();
        if (!errors.isEmpty())
            lines.append(errors);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace kv
