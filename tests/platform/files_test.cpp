#include <gtest/gtest.h>

#include <functional>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/nativenames.h"
#include "platform/posix/posixfiles.h"
#include "support/bytefiles.h"
#include "support/fifoguard.h"
#include "support/qtprinters.h"
#include "support/unprivileged.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

// The home trash comes from XDG_DATA_HOME, else (or when it is relative, which is invalid) from
// HOME even when ~/.local/share is missing;
// a name that is not valid UTF-8 reaches it with its bytes rather than being deleted.
TEST(PosixFiles, ReplacedTargetsGoToTheTrashNotAway)
{
    const QByteArray cp1251 = "\xCF\xE5\xF1\xED\xFF.wav"; // "Песня.wav" in Windows-1251
    const struct { const char *xdgDataHome; QByteArray name; const char *trash; } cases[] = {
        {"data", "song.wav", "data/Trash"},
        {"data", cp1251, "data/Trash"},
        {nullptr, "song.wav", "home/.local/share/Trash"},
        {"./data", "song.wav", "home/.local/share/Trash"},
    };
    const QByteArray oldHome = qgetenv("HOME");
    const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
    for (const auto &c : cases) {
        QTemporaryDir dir;
        const QByteArray root = QFile::encodeName(dir.path());
        if (c.xdgDataHome)
            qputenv("XDG_DATA_HOME", c.xdgDataHome[0] == '.' ? QByteArray(c.xdgDataHome) : root + '/' + c.xdgDataHome);
        else
            qunsetenv("XDG_DATA_HOME");
        ASSERT_TRUE(QDir().mkdir(dir.filePath(u"home"_s)));
        qputenv("HOME", root + "/home");
        const QString target = nameFromBytes(root + '/' + c.name);
        ASSERT_TRUE(PosixFiles().writeAtStart(target, "the only copy"));
        // Made as any program makes a file: readable by others unless the user's umask says not.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        struct stat made {};
        ASSERT_EQ(::stat((root + '/' + c.name).constData(), &made), 0);
        EXPECT_EQ(made.st_mode & 0777, 0644 & ~mask);
        PosixFiles files;
        EXPECT_EQ(files.moveToTrash(target), RemoveResult::Removed);
        EXPECT_FALSE(files.fileSize(target).has_value());
        const QByteArray trash = root + '/' + c.trash;
        const auto trashed = files.readAll(nameFromBytes(trash + "/files/" + c.name));
        EXPECT_EQ(trashed.value_or("<missing>").toStdString(), "the only copy") << c.name.toHex().constData();
        EXPECT_EQ(files.moveToTrash(target), RemoveResult::OtherError); // nothing there any more
        // QTemporaryDir cannot remove names that are not UTF-8.
        files.remove(nameFromBytes(trash + "/files/" + c.name));
        files.remove(nameFromBytes(trash + "/info/" + c.name + ".trashinfo"));
    }
    qputenv("HOME", oldHome);
    qputenv("XDG_DATA_HOME", oldDataHome);
}

// A FIFO or a device where a file is read or written is refused at once: opening a FIFO would
// wait for its other end for ever. Nothing is written into it, and it stays what it was.
TEST(PosixFiles, FifosAndDevicesAreRefusedWithoutWaiting)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir) + '/';
    PosixFiles files;
    const struct { const char *call; std::function<bool(const QString &)> refused; } calls[] = {
        {"open", [&](const QString &path) { return files.open(path) == nullptr; }},
        {"readAll", [&](const QString &path) { return !files.readAll(path).has_value(); }},
        {"writeAtStart", [&](const QString &path) { return !files.writeAtStart(path, "record"); }},
        {"fileSize", [&](const QString &path) { return !files.fileSize(path).has_value(); }},
    };
    for (const auto &c : calls) {
        const QByteArray fifo = root + c.call + ".fifo";
        FifoGuard guard(fifo);
        ASSERT_TRUE(guard.made());
        EXPECT_TRUE(c.refused(QFile::decodeName(fifo))) << c.call;
        EXPECT_FALSE(guard.finish()) << c.call << " waited for the other end of the FIFO";
        EXPECT_TRUE(isFifo(fifo)) << c.call;
    }
    // With a reader already there the open would not wait; still nothing reaches it.
    const QByteArray fifo = root + "read.fifo";
    ASSERT_EQ(::mkfifo(fifo.constData(), 0644), 0);
    const int reader = ::open(fifo.constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_FALSE(files.writeAtStart(QFile::decodeName(fifo), "record"));
    char byte = 0;
    EXPECT_LE(::read(reader, &byte, 1), 0);
    ::close(reader);

    // Devices reached through links, as a configuration file or a listed file might be.
    ASSERT_EQ(::symlink("/dev/null", root + "null.cfg"), 0);
    ASSERT_EQ(::symlink("/dev/zero", root + "zero.wav"), 0);
    for (const auto &c : calls)
        EXPECT_TRUE(c.refused(QFile::decodeName(root + "null.cfg"))) << c.call;
    EXPECT_TRUE(calls[0].refused(QFile::decodeName(root + "zero.wav")));
    EXPECT_FALSE(files.fileSize(QFile::decodeName(root)).has_value()) << "a folder has no file size";
}
