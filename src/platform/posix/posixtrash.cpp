#include "platform/posix/posixtrash.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kv {

namespace {

// info/ holds NAME.trashinfo, so NAME leaves room for that suffix within one name.
constexpr qsizetype MaxTrashName = NAME_MAX - qsizetype(sizeof(".trashinfo") - 1);
// Extensions longer than this are part of the name, not a type worth keeping last.
constexpr qsizetype MaxExtension = 16;
constexpr int MaxAttempts = 10000;

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

QByteArray parentOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : path.left(slash);
}

// A private folder, or one that is already there.
bool makeFolder(const QByteArray &path)
{
    struct stat st {};
    return ::mkdir(path.constData(), 0700) == 0 || (errno == EEXIST && ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode));
}

// Base directories are private to their user, parents included, as freedesktop.org asks.
bool makeFolders(const QByteArray &path)
{
    struct stat st {};
    if (::stat(path.constData(), &st) == 0)
        return S_ISDIR(st.st_mode);
    if (errno != ENOENT || path == "/")
        return false;
    return makeFolders(parentOf(path)) && makeFolder(path);
}

// A folder of ours, never a link: on a shared volume another user could have put one there.
bool ownFolder(const QByteArray &path)
{
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid();
}

// The device a path would be on: that of its nearest existing folder.
std::optional<dev_t> deviceOf(QByteArray path)
{
    struct stat st {};
    while (::stat(path.constData(), &st) != 0) {
        if (path == "/" || path == ".")
            return std::nullopt;
        path = parentOf(path);
    }
    return st.st_dev;
}

// The mount point of a device, found by climbing a real path while the device stays the same.
QByteArray volumeTop(QByteArray folder, dev_t device)
{
    while (folder != "/") {
        const QByteArray up = parentOf(folder);
        struct stat st {};
        if (::stat(up.constData(), &st) != 0 || st.st_dev != device)
            break;
        folder = up;
    }
    return folder;
}

QByteArray deletionDate()
{
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    ::localtime_r(&now, &local);
    char text[32];
    const size_t n = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return QByteArray(text, static_cast<qsizetype>(n));
}

// "song.wav", "song.2.wav", "song.3.wav"...; cut to fit, keeping the number and a short extension.
QByteArray trashName(const QByteArray &base, int attempt)
{
    const QByteArray number = attempt > 1 ? '.' + QByteArray::number(attempt) : QByteArray();
    const qsizetype dot = base.lastIndexOf('.');
    const bool hasExtension = dot > 0 && base.size() - dot <= MaxExtension;
    QByteArray stem = hasExtension ? base.left(dot) : base;
    const QByteArray extension = hasExtension ? base.mid(dot) : QByteArray();
    stem.truncate(MaxTrashName - number.size() - extension.size());
    return stem + number + extension;
}

bool writeAll(int fd, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += put;
    }
    return true;
}

// The record is made first and exclusively, so it decides the name; the file follows it, and a
// move that fails takes its record back.
std::optional<QByteArray> moveInto(const QByteArray &trash, const QByteArray &file, const QByteArray &recordedPath)
{
    const QByteArray files = joined(trash, "files");
    const QByteArray info = joined(trash, "info");
    if (!makeFolder(files) || !makeFolder(info))
        return std::nullopt;
    // Every byte but the unreserved ones and "/" is escaped, which any reader decodes.
    const QByteArray record = "[Trash Info]\nPath=" + recordedPath.toPercentEncoding("/") + "\nDeletionDate="
                              + deletionDate() + '\n';
    const QByteArray base = file.mid(file.lastIndexOf('/') + 1);
    for (int attempt = 1; attempt <= MaxAttempts; ++attempt) {
        const QByteArray name = trashName(base, attempt);
        const QByteArray infoPath = joined(info, name + ".trashinfo");
        const int fd = ::open(infoPath.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return std::nullopt;
        }
        const bool written = writeAll(fd, record);
        const bool closed = ::close(fd) == 0;
        const QByteArray target = joined(files, name);
        struct stat st {};
        // rename() would replace a file left in files/ without its record: leave that one be.
        const bool taken = ::lstat(target.constData(), &st) == 0;
        if (written && closed && !taken && ::rename(file.constData(), target.constData()) == 0)
            return target;
        ::unlink(infoPath.constData());
        if (!taken)
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

QByteArray homeTrashFolder()
{
    // Relative values are invalid for the XDG variables and are ignored.
    const char *data = std::getenv("XDG_DATA_HOME");
    if (data && data[0] == '/')
        return joined(QByteArray(data), "Trash");
    QByteArray home = std::getenv("HOME");
    if (home.isEmpty()) {
        struct passwd entry {};
        struct passwd *found = nullptr;
        std::vector<char> buffer(16384);
        if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found)
            home = found->pw_dir;
    }
    return home.startsWith('/') ? joined(home, ".local/share/Trash") : QByteArray();
}

std::optional<QByteArray> volumeTrashFolder(const QByteArray &topdir)
{
    const QByteArray uid = QByteArray::number(::getuid());
    const QByteArray shared = joined(topdir, ".Trash");
    struct stat st {};
    // An administrator's shared trash counts only as a real sticky folder, never through a link.
    if (::lstat(shared.constData(), &st) == 0 && S_ISDIR(st.st_mode) && (st.st_mode & S_ISVTX)) {
        const QByteArray mine = joined(shared, uid);
        if (ownFolder(mine))
            return mine;
    }
    const QByteArray mine = joined(topdir, ".Trash-" + uid);
    if (ownFolder(mine))
        return mine;
    return std::nullopt;
}

std::optional<QByteArray> moveToDesktopTrash(const QByteArray &path, const QByteArray &homeTrash)
{
    const QByteArray base = path.mid(path.lastIndexOf('/') + 1);
    if (base.isEmpty() || base == "." || base == "..")
        return std::nullopt;
    // The real folder: a volume's top is found from it, and its record names the file there.
    char *real = ::realpath(parentOf(path).constData(), nullptr);
    if (!real)
        return std::nullopt;
    const QByteArray folder(real);
    std::free(real);
    const QByteArray file = joined(folder, base);
    struct stat st {};
    if (::lstat(file.constData(), &st) != 0)
        return std::nullopt;

    if (homeTrash.startsWith('/') && deviceOf(homeTrash) == st.st_dev) {
        if (!makeFolders(homeTrash))
            return std::nullopt;
        return moveInto(homeTrash, file, file);
    }
    const QByteArray top = volumeTop(folder, st.st_dev);
    const std::optional<QByteArray> trash = volumeTrashFolder(top);
    if (!trash)
        return std::nullopt;
    // A volume's trash records paths from its top, so the volume may be mounted elsewhere later.
    return moveInto(*trash, file, file.mid(top.size() + (top.endsWith('/') ? 0 : 1)));
}

} // namespace kv
