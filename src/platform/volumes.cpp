#include "platform/volumes.h"

#include <algorithm>

#include <QList>
#include <QSet>

#include "platform/nativenames.h"

namespace kv {

namespace {

// Mountinfo escapes blanks, tabs, new lines and backslashes as three octal digits.
QString unescapeMountField(const QByteArray &field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field.at(i) == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int code = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok && code < 256) {
                out.append(static_cast<char>(code));
                i += 3;
                continue;
            }
        }
        out.append(field.at(i));
    }
    return nameFromBytes(out);
}

bool isPseudoFileSystem(const QString &type)
{
    static const QSet<QString> pseudo = {
        QStringLiteral("proc"),       QStringLiteral("sysfs"),      QStringLiteral("devtmpfs"),
        QStringLiteral("devpts"),     QStringLiteral("cgroup"),     QStringLiteral("cgroup2"),
        QStringLiteral("securityfs"), QStringLiteral("pstore"),     QStringLiteral("bpf"),
        QStringLiteral("debugfs"),    QStringLiteral("tracefs"),    QStringLiteral("mqueue"),
        QStringLiteral("hugetlbfs"),  QStringLiteral("configfs"),   QStringLiteral("fusectl"),
        QStringLiteral("autofs"),     QStringLiteral("binfmt_misc"), QStringLiteral("nsfs"),
        QStringLiteral("efivarfs"),   QStringLiteral("rpc_pipefs"), QStringLiteral("squashfs"),
        QStringLiteral("ramfs"),      QStringLiteral("fuse.gvfsd-fuse"), QStringLiteral("fuse.portal"),
        QStringLiteral("overlay"),    QStringLiteral("shm"),
    };
    return pseudo.contains(type);
}

bool isUnder(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder + QLatin1Char('/'));
}

bool isBrowsable(const Volume &v)
{
    if (v.mountPoint == QLatin1String("/"))
        return true;
    if (isPseudoFileSystem(v.fsType))
        return false;
    // The system's own mounts are not places a user keeps music.
    for (const char *system : {"/proc", "/sys", "/dev", "/boot/efi"}) {
        if (isUnder(v.mountPoint, QLatin1String(system)))
            return false;
    }
    if (isUnder(v.mountPoint, QStringLiteral("/run")) && !isUnder(v.mountPoint, QStringLiteral("/run/media")))
        return false;
    return v.fsType != QLatin1String("tmpfs") || !isUnder(v.mountPoint, QStringLiteral("/run"));
}

} // namespace

std::vector<Volume> parseMountInfo(const QByteArray &mountinfo)
{
    std::vector<Volume> volumes{Volume{QStringLiteral("/"), QString()}};
    for (const QByteArray &line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf(QByteArray("-"));
        if (fields.size() < 5 || dash < 6 || dash + 1 >= fields.size())
            continue;
        Volume v{unescapeMountField(fields.at(4)), QString::fromLatin1(fields.at(dash + 1))};
        if (!isBrowsable(v))
            continue;
        // A later mount on the same point hides the earlier one.
        auto same = std::find_if(volumes.begin(), volumes.end(),
                                 [&](const Volume &o) { return o.mountPoint == v.mountPoint; });
        if (same != volumes.end())
            same->fsType = v.fsType;
        else
            volumes.push_back(v);
    }
    std::sort(volumes.begin() + 1, volumes.end(),
              [](const Volume &a, const Volume &b) { return a.mountPoint < b.mountPoint; });
    return volumes;
}

DriveKind driveKind(const Volume &volume)
{
    if (volume.fsType == QLatin1String("iso9660") || volume.fsType == QLatin1String("udf"))
        return DriveKind::CdRom;
    for (const char *removable : {"/media", "/run/media", "/mnt"}) {
        if (isUnder(volume.mountPoint, QLatin1String(removable)))
            return DriveKind::Removable;
    }
    return DriveKind::Fixed;
}

Volume volumeContaining(const QString &path, const std::vector<Volume> &volumes)
{
    if (volumes.empty())
        return {};
    const Volume *best = nullptr;
    for (const Volume &v : volumes) {
        const bool contains =
            v.mountPoint == QLatin1String("/") ? path.startsWith(QLatin1Char('/')) : isUnder(path, v.mountPoint);
        if (contains && (best == nullptr || v.mountPoint.size() > best->mountPoint.size()))
            best = &v;
    }
    return best != nullptr ? *best : volumes.front();
}

} // namespace kv
