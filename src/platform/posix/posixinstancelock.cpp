#include "platform/posix/posixinstancelock.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLockFile>

namespace kv {

PosixInstanceLock::PosixInstanceLock(const QString &programFolder)
    : m_lock(std::make_unique<QLockFile>(lockPath(programFolder)))
{
    // A lock is only stale when its process is gone; a live window holds it however long it runs.
    m_lock->setStaleLockTime(0);
}

PosixInstanceLock::~PosixInstanceLock() = default;

bool PosixInstanceLock::tryLock()
{
    return m_lock->isLocked() || m_lock->tryLock(0);
}

QString PosixInstanceLock::lockPath(const QString &programFolder)
{
    const QByteArray hash = QCryptographicHash::hash(programFolder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
    return QDir::tempPath() + QStringLiteral("/kestrelvane-") + QString::fromLatin1(hash) + QStringLiteral(".lock");
}

} // namespace kv
