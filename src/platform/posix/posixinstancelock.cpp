#include "platform/posix/posixinstancelock.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QLockFile>

#include <sys/stat.h>

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
    if (m_lock->isLocked())
        return true;
    // Anyone may put a FIFO at this path in the shared temporary folder, and reading it as a lock
    // would wait for ever: whatever is not a regular file there counts as another's lock.
    struct stat st {};
    if (::lstat(QFile::encodeName(m_lock->fileName()).constData(), &st) == 0 && !S_ISREG(st.st_mode))
        return false;
    return m_lock->tryLock(0);
}

QString PosixInstanceLock::lockPath(const QString &programFolder)
{
    const QByteArray hash = QCryptographicHash::hash(programFolder.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
    return QDir::tempPath() + QStringLiteral("/kestrelvane-") + QString::fromLatin1(hash) + QStringLiteral(".lock");
}

} // namespace kv
