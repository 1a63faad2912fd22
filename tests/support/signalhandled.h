#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace kv::test {

// Whether process pid has its own handler of sig in place (the kernel's SigCgt mask): a program
// that handles a signal is up once this holds; before that the signal simply kills it.
inline bool handlesSignal(qint64 pid, int sig)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("SigCgt:"))
            return (line.mid(7).trimmed().toULongLong(nullptr, 16) >> (sig - 1) & 1) != 0;
    return false;
}

} // namespace kv::test
