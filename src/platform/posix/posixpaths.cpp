#include "platform/posix/posixpaths.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include <QByteArray>
#include <QDir>

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/nativenames.h"

namespace kv {

PathKind pathKind(const QString &path)
{
    struct stat st {};
    if (::stat(bytesFromName(path).constData(), &st) != 0)
        return PathKind::Missing;
    return S_ISDIR(st.st_mode) ? PathKind::Folder : PathKind::Other;
}

bool isWritableFolder(const QString &folder)
{
    return ::access(bytesFromName(folder).constData(), W_OK) == 0;
}

QString absolutePath(const QString &path)
{
    if (path.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(path);
    std::vector<char> buffer(PATH_MAX);
    while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE)
            return QDir::cleanPath(path);
        buffer.resize(buffer.size() * 2);
    }
    return QDir::cleanPath(nameFromBytes(buffer.data()) + QLatin1Char('/') + path);
}

QString folderToOpen(const QString &absolute, PathKind kind)
{
    if (kind != PathKind::Other)
        return absolute;
    return absolute.left(std::max<qsizetype>(absolute.lastIndexOf(QLatin1Char('/')), 1));
}

QString executableFolder()
{
    std::vector<char> buffer(PATH_MAX);
    for (;;) {
        const ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (n < 0)
            return {};
        if (static_cast<size_t>(n) < buffer.size()) {
            const QByteArray path(buffer.data(), n);
            return nameFromBytes(path.left(path.lastIndexOf('/') + 1));
        }
        buffer.resize(buffer.size() * 2);
    }
}

} // namespace kv
