#pragma once

#include <vector>

#include <QByteArray>
#include <QString>

namespace kv {

// One entry of the drive list: a mounted file system a user browses.
struct Volume
{
    QString mountPoint; // "/", "/media/usb": no trailing "/" except for the root itself
    QString fsType;     // "ext4", "iso9660"...
};

// The drive image of the tree's root node: 1 fixed, 2 removable, 3 CD.
enum class DriveKind { Fixed = 1, Removable = 2, CdRom = 3 };

class Volumes
{
public:
    virtual ~Volumes() = default;
    // The drive list, "/" first, then by mount point. Never empty: "/" is always there.
    virtual std::vector<Volume> mounted() = 0;
};

// The drive list out of /proc/self/mountinfo: real file systems only (no proc, sysfs, cgroup,
// tmpfs under /run or /dev, overlay internals...), each mount point once, "/" always first.
std::vector<Volume> parseMountInfo(const QByteArray &mountinfo);

// CD file systems show the CD image; mounts under /media, /run/media and /mnt are removable.
DriveKind driveKind(const Volume &volume);

// The volume whose mount point is the longest prefix of path (whole components only); the first
// volume when none is, and an empty one when the list is empty.
Volume volumeContaining(const QString &path, const std::vector<Volume> &volumes);

} // namespace kv
