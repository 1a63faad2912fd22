#include <gtest/gtest.h>

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "platform/posix/posixinstancelock.h"
#include "platform/posix/posixvolumes.h"
#include "platform/volumes.h"
#include "support/fifoguard.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

QStringList mountPoints(const std::vector<Volume> &volumes)
{
    QStringList out;
    for (const Volume &v : volumes)
        out.append(v.mountPoint + QLatin1Char(':') + v.fsType);
    return out;
}

} // namespace

TEST(Volumes, DriveListKeepsRealFileSystemsOnce)
{
    const QByteArray table =
        "22 1 0:21 / /sys rw,nosuid shared:7 - sysfs sysfs rw\n"
        "25 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "26 25 0:5 / /dev rw shared:2 - devtmpfs udev rw\n"
        "27 25 0:24 / /run rw shared:5 - tmpfs tmpfs rw\n"
        "29 25 8:17 / /media/ann/My\\040Disk rw - vfat /dev/sdb1 rw\n"
        "30 25 11:0 / /media/cdrom ro - iso9660 /dev/sr0 ro\n"
        "31 25 8:2 / /home rw - ext4 /dev/sda2 rw\n"
        "32 25 0:30 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n"
        "33 25 8:3 / /home rw - xfs /dev/sda3 rw\n"
        "34 25 0:40 / /run/media/ann/stick\\040 rw - exfat /dev/sdc1 rw\n" // a label that ends in a blank
        // A snap, a container's root and an automounter are no drives, wherever they are.
        "40 25 7:1 / /snap/core22/1380 ro,nodev,relatime shared:40 - squashfs /dev/loop1 ro\n"
        "41 25 0:50 / /var/lib/docker/overlay2/3f2a/merged rw - overlay overlay rw\n"
        "42 25 0:51 / /net rw - autofs -hosts rw\n"
        // Nor are an NFS client's pipes and a desktop session's remote places, where older systems put them.
        "43 25 0:52 / /var/lib/nfs/rpc_pipefs rw - rpc_pipefs sunrpc rw\n"
        "44 31 0:53 / /home/ann/.gvfs rw - fuse.gvfsd-fuse gvfsd-fuse rw\n"
        "garbage line\n";
    EXPECT_EQ(mountPoints(parseMountInfo(table)),
              (QStringList{QStringLiteral("/:ext4"), QStringLiteral("/home:xfs"), QStringLiteral("/media/ann/My Disk:vfat"),
                           QStringLiteral("/media/cdrom:iso9660"), QStringLiteral("/run/media/ann/stick :exfat")}));
    // Without a table (no /proc) there is still the root.
    EXPECT_EQ(mountPoints(parseMountInfo(QByteArray())), QStringList{QStringLiteral("/:")});
}

TEST(Volumes, DriveImageAndTheDriveOfAPath)
{
    const struct { const char *mount, *type; DriveKind kind; } kinds[] = {
        {"/", "ext4", DriveKind::Fixed}, {"/mnt/disk", "ext4", DriveKind::Removable}, {"/run/media/a/b", "exfat", DriveKind::Removable},
        {"/media/usb", "vfat", DriveKind::Removable}, {"/media/cd", "iso9660", DriveKind::CdRom},
        {"/srv/dvd", "udf", DriveKind::CdRom}, {"/mediathek", "ext4", DriveKind::Fixed},
    };
    for (const auto &k : kinds)
        EXPECT_EQ(driveKind(Volume{QLatin1String(k.mount), QLatin1String(k.type)}), k.kind) << k.mount;

    const std::vector<Volume> drives = {{QStringLiteral("/"), {}}, {QStringLiteral("/home"), {}},
                                        {QStringLiteral("/home/ann/usb"), {}}};
    const struct { const char *path, *drive; } paths[] = {
        {"/home/ann/usb/x", "/home/ann/usb"}, {"/home/ann/usbx", "/home"}, {"/home", "/home"},
        {"/home/", "/home"}, {"/etc", "/"}, {"relative", "/"},
    };
    for (const auto &p : paths)
        EXPECT_EQ(volumeContaining(QLatin1String(p.path), drives).mountPoint, QLatin1String(p.drive)) << p.path;
    EXPECT_EQ(PosixVolumes().mounted().front().mountPoint, QStringLiteral("/"));
}

// A file system mounted while the program runs (a stick plugged in) is on the next drive list,
// however long the mount table has grown; unmounted, it is gone.
TEST(Volumes, AFileSystemMountedNowIsListedUntilUnmounted)
{
    // Beside the build, not in /tmp: a bind mount takes its source's file-system type, and a
    // memory file system is no drive.
    QTemporaryDir dir(QDir::currentPath() + QStringLiteral("/volumes-XXXXXX"));
    const QString stick = dir.path() + QStringLiteral("/stick");
    // And a file mounted on a file, as containers mount /etc/hosts: no drive.
    const QString hosts = dir.path() + QStringLiteral("/hosts");
    ASSERT_TRUE(QDir().mkpath(stick) && QDir().mkpath(dir.path() + QStringLiteral("/src")));
    ASSERT_TRUE(QFile(hosts).open(QIODevice::WriteOnly));
    const QString type = volumeContaining(dir.path(), PosixVolumes().mounted()).fsType;
    if (::geteuid() != 0
        || QProcess::execute(QStringLiteral("/bin/mount"), {QStringLiteral("--bind"), dir.path() + QStringLiteral("/src"), stick}) != 0)
        GTEST_SKIP() << "needs the right to mount";
    EXPECT_EQ(QProcess::execute(QStringLiteral("/bin/mount"), {QStringLiteral("--bind"), hosts, hosts}), 0);
    const QStringList listed = mountPoints(PosixVolumes().mounted());
    QProcess::execute(QStringLiteral("/bin/umount"), {stick});
    QProcess::execute(QStringLiteral("/bin/umount"), {hosts});
    EXPECT_TRUE(listed.contains(stick + QLatin1Char(':') + type)) << listed.join(QLatin1Char(' ')).toStdString();
    EXPECT_FALSE(listed.join(QLatin1Char(' ')).contains(hosts));
    EXPECT_FALSE(mountPoints(PosixVolumes().mounted()).join(QLatin1Char(' ')).contains(stick));
}

TEST(InstanceLock, OnePerProgramFolderUntilReleased)
{
    QTemporaryDir a, b;
    auto first = std::make_unique<PosixInstanceLock>(a.path() + QLatin1Char('/'));
    ASSERT_TRUE(first->tryLock());
    EXPECT_FALSE(PosixInstanceLock(a.path() + QLatin1Char('/')).tryLock());
    EXPECT_TRUE(PosixInstanceLock(b.path() + QLatin1Char('/')).tryLock()); // another installation
    first.reset();
    EXPECT_TRUE(PosixInstanceLock(a.path() + QLatin1Char('/')).tryLock());

    // A FIFO at the lock's path is refused at once, as another's lock.
    QTemporaryDir c;
    const QByteArray fifo = QFile::encodeName(PosixInstanceLock::lockPath(c.path() + QLatin1Char('/')));
    {
        kv::test::FifoGuard guard(fifo);
        ASSERT_TRUE(guard.made());
        EXPECT_FALSE(PosixInstanceLock(c.path() + QLatin1Char('/')).tryLock());
        EXPECT_FALSE(guard.finish()) << "the lock waited for the other end of the FIFO";
    }
    EXPECT_TRUE(kv::test::isFifo(fifo));
    QFile::remove(QFile::decodeName(fifo));
}
