#include "platform/posix/posixfiles.h"

#include <cerrno>
#include <cstring>

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/nativenames.h"
#include "platform/posix/posixtrash.h"

namespace kv {

namespace {

class FdByteSource : public ByteSource
{
public:
    FdByteSource(int fd, std::int64_t size) : m_fd(fd), m_size(size) {}
    ~FdByteSource() override { ::close(m_fd); }
    FdByteSource(const FdByteSource &) = delete;
    FdByteSource &operator=(const FdByteSource &) = delete;

    std::int64_t size() const override { return m_size; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        std::int64_t done = 0;
        while (done < n) {
            const ssize_t got = ::pread(m_fd, dst + done, static_cast<size_t>(n - done), offset + done);
            if (got < 0) {
                if (errno == EINTR)
                    continue;
                return done > 0 ? done : -1;
            }
            if (got == 0)
                break;
            done += got;
        }
        return done;
    }

private:
    int m_fd;
    std::int64_t m_size;
};

// Opens a regular file. The open itself never waits, so a FIFO or device put where a file was
// (or is about to be written) cannot hold the program: a FIFO's open would wait for its other
// end. Whatever is not a regular file is closed unread and unwritten; -1 then.
int openRegularFile(const QString &path, int flags, struct stat &st)
{
    const int fd = ::open(bytesFromName(path).constData(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
    if (fd < 0)
        return -1;
    // A regular file never blocks, so clearing the flag only gives reads and writes their usual meaning.
    const int status = ::fcntl(fd, F_GETFL);
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || status < 0
        || ::fcntl(fd, F_SETFL, status & ~O_NONBLOCK) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

} // namespace

std::optional<std::int64_t> PosixFiles::fileSize(const QString &path)
{
    struct stat st {};
    if (::stat(bytesFromName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    return static_cast<std::int64_t>(st.st_size);
}

std::unique_ptr<ByteSource> PosixFiles::open(const QString &path)
{
    struct stat st {};
    const int fd = openRegularFile(path, O_RDONLY, st);
    if (fd < 0)
        return nullptr;
    return std::make_unique<FdByteSource>(fd, static_cast<std::int64_t>(st.st_size));
}

RemoveResult PosixFiles::remove(const QString &path)
{
    if (::unlink(bytesFromName(path).constData()) == 0)
        return RemoveResult::Removed;
    return (errno == EACCES || errno == EPERM || errno == EROFS || errno == EBUSY)
               ? RemoveResult::AccessDenied
               : RemoveResult::OtherError;
}

RemoveResult PosixFiles::moveToTrash(const QString &path)
{
    // A folder that refuses the deletion refuses the move as well, and its deletion error says
    // why; elsewhere the file is deleted only where its volume has no trash we may use.
    if (::access(bytesFromName(QFileInfo(path).absolutePath()).constData(), W_OK) == 0
        && moveToDesktopTrash(bytesFromName(path), homeTrashFolder()))
        return RemoveResult::Removed;
    return remove(path);
}

bool PosixFiles::isExecutable(const QString &path)
{
    const QByteArray native = bytesFromName(path);
    struct stat st {};
    return ::stat(native.constData(), &st) == 0 && S_ISREG(st.st_mode) && ::access(native.constData(), X_OK) == 0;
}

QString describeUnreadable(const QString &path)
{
    const QByteArray native = bytesFromName(path);
    struct stat st {};
    if (::stat(native.constData(), &st) != 0)
        return errno == ENOENT || errno == ENOTDIR ? QStringLiteral("missing")
                                                   : QStringLiteral("not readable: ") + QString::fromLocal8Bit(std::strerror(errno));
    if (S_ISDIR(st.st_mode))
        return QStringLiteral("a folder");
    if (S_ISFIFO(st.st_mode))
        return QStringLiteral("a FIFO");
    if (S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode))
        return QStringLiteral("a device");
    if (S_ISSOCK(st.st_mode))
        return QStringLiteral("a socket");
    if (::access(native.constData(), R_OK) != 0)
        return QStringLiteral("not readable: ") + QString::fromLocal8Bit(std::strerror(errno));
    return {};
}

std::optional<QByteArray> PosixFiles::readAll(const QString &path)
{
    struct stat st {};
    const int fd = openRegularFile(path, O_RDONLY, st);
    if (fd < 0)
        return std::nullopt;
    QFile f;
    if (!f.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return std::nullopt;
    }
    QByteArray bytes = f.readAll();
    if (f.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

bool PosixFiles::writeAtStart(const QString &path, const QByteArray &bytes)
{
    struct stat st {};
    const int fd = openRegularFile(path, O_WRONLY | O_CREAT, st);
    if (fd < 0)
        return false;
    qsizetype done = 0;
    bool ok = true;
    while (done < bytes.size()) {
        const ssize_t put = ::pwrite(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done), done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0) {
            ok = false;
            break;
        }
        done += put;
    }
    return (::close(fd) == 0) && ok;
}

} // namespace kv
