#include "platform/posix/posixvolumes.h"

#include "platform/nativenames.h"

#include <QFile>

#include <sys/stat.h>

namespace kv {

std::vector<Volume> PosixVolumes::mounted()
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    // /proc files report no size, so read until the end rather than by size.
    const QByteArray bytes = table.open(QIODevice::ReadOnly) ? table.readAll() : QByteArray();
    std::vector<Volume> volumes;
    for (Volume &v : parseMountInfo(bytes)) {
        // Bind mounts of single files (containers mount /etc/hosts so) are no drive.
        struct stat st {};
        if (v.mountPoint != QLatin1String("/")
            && ::stat(bytesFromName(v.mountPoint).constData(), &st) == 0 && !S_ISDIR(st.st_mode))
            continue;
        volumes.push_back(std::move(v));
    }
    return volumes;
}

} // namespace kv
