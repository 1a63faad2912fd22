#include <gtest/gtest.h>

#include <ctime>
#include <span>

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

#include "platform/nativenames.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixtrash.h"
#include "support/bytefiles.h"
#include "support/fifoguard.h"
#include "support/qtprinters.h"
#include "support/unprivileged.h"

using namespace kv;
using namespace kv::test;

namespace {

// The permission bits, -1 for nothing there.
int modeOf(const QByteArray &path)
{
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

// A trash record with its deletion date as "<date>". The date must fall between before and after,
// in the form file managers read back: local time, "T" between date and time.
std::string recordAt(const QByteArray &path, std::time_t before, std::time_t after)
{
    std::string text = readFile(path);
    const size_t key = text.find("\nDeletionDate="), at = key + 14;
    if (key == std::string::npos || text.size() != at + 20)
        return text;
    const QDateTime when = QDateTime::fromString(QString::fromStdString(text.substr(at, 19)), QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
    EXPECT_TRUE(when.isValid() && when.toSecsSinceEpoch() >= before && when.toSecsSinceEpoch() <= after) << text;
    return text.replace(at, 19, "<date>");
}

const QByteArray cp1251 = "\xCF\xE5\xF1\xED\xFF.wav"; // "Песня.wav" in Windows-1251, not valid UTF-8

} // namespace

// Replaced targets go to the home trash that XDG_DATA_HOME names, else (or when it is relative,
// which is invalid) to ~/.local/share/Trash even when ~/.local/share is missing.
TEST(PosixFiles, ReplacedTargetsGoToTheHomeTrashWithARecordUnderAFreeName)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir), home = root + "/data/Trash";
    const QByteArray longName = QByteArray(246, 'x') + ".wav";
    const QByteArray oldHome = qgetenv("HOME"), oldDataHome = qgetenv("XDG_DATA_HOME");
    ASSERT_EQ(::mkdir(root + "/home", 0700), 0);
    qputenv("HOME", root + "/home");
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const struct { const char *xdgDataHome; QByteArray name, trashName, encodedName; } cases[] = {
        {"/data", "song.wav", "song.wav", "song.wav"}, // the trash is missing, parents included
        {"/data", "song.wav", "song.2.wav", "song.wav"},
        {"/data", cp1251, cp1251, "%CF%E5%F1%ED%FF.wav"},
        {"/data", "a b%#\xD1\x91.mp3", "a b%#\xD1\x91.mp3", "a%20b%25%23%D1%91.mp3"},
        // 250 bytes: the record's name would pass the length limit, so the name is cut; the second
        // time the number takes its place from the cut stem. Sixteen bytes of extension stay whole.
        {"/data", longName, QByteArray(241, 'x') + ".wav", longName},
        {"/data", longName, QByteArray(239, 'x') + ".2.wav", longName},
        {"/data", QByteArray(235, 'y') + ".abcdefghijklmno", QByteArray(229, 'y') + ".abcdefghijklmno",
         QByteArray(235, 'y') + ".abcdefghijklmno"},
        {nullptr, "song.wav", "song.wav", "song.wav"},
        {"./data", "song.wav", "song.2.wav", "song.wav"},
    };
    for (const auto &c : cases) {
        const bool own = c.xdgDataHome && c.xdgDataHome[0] == '/';
        const QByteArray trash = own ? home : root + "/home/.local/share/Trash";
        const QByteArray dataHome = own ? root + c.xdgDataHome : QByteArray(c.xdgDataHome);
        c.xdgDataHome ? qputenv("XDG_DATA_HOME", dataHome) : qunsetenv("XDG_DATA_HOME");
        PosixFiles files;
        const QString file = nameFromBytes(root + '/' + c.name);
        ASSERT_TRUE(files.writeAtStart(file, "content of " + c.trashName));
        // Made as any program makes a file: readable by others unless the user's umask says not.
        EXPECT_EQ(modeOf(root + '/' + c.name), 0644 & ~mask);
        const std::time_t before = std::time(nullptr);
        EXPECT_EQ(files.moveToTrash(file), RemoveResult::Removed) << c.trashName.constData();
        const std::time_t after = std::time(nullptr);
        EXPECT_EQ(files.readAll(nameFromBytes(trash + "/files/" + c.trashName)).value_or("<missing>"), "content of " + c.trashName);
        EXPECT_EQ(recordAt(trash + "/info/" + c.trashName + ".trashinfo", before, after),
                  "[Trash Info]\nPath=" + root.toStdString() + '/' + c.encodedName.toStdString() + "\nDeletionDate=<date>\n");
        EXPECT_EQ(files.moveToTrash(file), RemoveResult::OtherError) << c.trashName.constData(); // nothing there any more
    }
    qputenv("HOME", oldHome);
    qputenv("XDG_DATA_HOME", oldDataHome);
    // A later file of the same name took another name and left the earlier record be.
    for (const auto &c : std::span(cases).first(7))
        EXPECT_NE(modeOf(home + "/info/" + c.trashName + ".trashinfo"), -1) << c.trashName.toStdString();
    EXPECT_EQ(modeOf(root + "/data"), 0700);
    EXPECT_EQ(modeOf(home), 0700);

    // A file left in files/ without its record still holds someone's data: rename() would replace it.
    writeFile(home + "/files/take.wav", "orphan");
    writeFile(root + "/take.wav", "new");
    EXPECT_EQ(moveToDesktopTrash(root + "/take.wav", home).value_or("").toStdString(), (home + "/files/take.2.wav").toStdString());
    EXPECT_EQ(readFile(home + "/files/take.wav"), "orphan");
    EXPECT_EQ(modeOf(home + "/info/take.wav.trashinfo"), -1);
    ::unlink(home + "/files/" + cp1251);
    ::unlink(home + "/info/" + cp1251 + ".trashinfo");
}

// A FIFO or a device where a file is read or written is refused at once: opening a FIFO would
// wait for its other end for ever. Nothing is written into it, and it stays what it was.
TEST(PosixFiles, FifosAndDevicesAreRefusedWithoutWaiting)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir) + '/';
    PosixFiles files;
    const struct { const char *call; bool (*refused)(PosixFiles &, const QString &); } calls[] = {
        {"open", [](PosixFiles &f, const QString &path) { return f.open(path) == nullptr; }},
        {"readAll", [](PosixFiles &f, const QString &path) { return !f.readAll(path).has_value(); }},
        {"writeAtStart", [](PosixFiles &f, const QString &path) { return !f.writeAtStart(path, "record"); }},
        {"fileSize", [](PosixFiles &f, const QString &path) { return !f.fileSize(path).has_value(); }},
    };
    ASSERT_EQ(::symlink("/dev/null", root + "null.cfg"), 0);
    ASSERT_EQ(::symlink("/dev/zero", root + "zero.wav"), 0);
    for (const auto &c : calls) {
        const QByteArray fifo = root + c.call + ".fifo";
        FifoGuard guard(fifo);
        ASSERT_TRUE(guard.made());
        EXPECT_TRUE(c.refused(files, nameFromBytes(fifo))) << c.call;
        EXPECT_FALSE(guard.finish()) << c.call << " waited for the other end of the FIFO";
        EXPECT_TRUE(isFifo(fifo)) << c.call;
        EXPECT_TRUE(c.refused(files, nameFromBytes(root + "null.cfg"))) << c.call;
    }
    EXPECT_TRUE(calls[0].refused(files, nameFromBytes(root + "zero.wav")));
    EXPECT_FALSE(files.fileSize(nameFromBytes(root)).has_value()) << "a folder has no file size";
    // With a reader already there the open would not wait; still nothing reaches it.
    ASSERT_EQ(::mkfifo(root + "read.fifo", 0644), 0);
    const int reader = ::open(root + "read.fifo", O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_FALSE(files.writeAtStart(nameFromBytes(root + "read.fifo"), "record"));
    char byte = 0;
    EXPECT_LE(::read(reader, &byte, 1), 0);
    ::close(reader);
}

TEST(DesktopTrash, AVolumeTrashIsASharedStickyFolderOrOurOwn)
{
    const QByteArray uid = QByteArray::number(::getuid());
    // shared: the mode of a .Trash folder, 0 for none; trash: below the top, null where none may be used.
    const struct { const char *what; mode_t shared; bool sharedByLink, ownByLink; const char *trash; } cases[] = {
        {"nothing there", 0, false, false, ".Trash-"},
        {"sticky .Trash", 01777, false, false, ".Trash/"},
        {".Trash without the sticky bit", 0777, false, false, ".Trash-"},
        {".Trash a link to a sticky folder", 01777, true, false, ".Trash-"},
        {"our trash a link to a folder", 0, false, true, nullptr},
    };
    for (const auto &c : cases) {
        QTemporaryDir dir;
        const QByteArray top = bytePath(dir);
        ::mkdir(top + "/elsewhere", 0700);
        if (c.shared) {
            const QByteArray folder = top + (c.sharedByLink ? "/elsewhere" : "/.Trash");
            ::mkdir(folder, 0700);
            ::chmod(folder, c.shared);
        }
        if (c.sharedByLink || c.ownByLink)
            ::symlink("elsewhere", top + (c.sharedByLink ? "/.Trash" : "/.Trash-" + uid));
        const QByteArray expected = c.trash ? top + '/' + c.trash + uid : "<none>";
        EXPECT_EQ(volumeTrashFolder(top).value_or("<none>").toStdString(), expected.toStdString()) << c.what;
        EXPECT_TRUE(!c.trash || modeOf(expected) == 0700) << c.what;
    }
    // A sticky .Trash the user may not write in: our own trash beside it instead.
    QTemporaryDir dir;
    const QByteArray top = bytePath(dir);
    ::chmod(top, 0777);
    ::mkdir(top + "/.Trash", 0700);
    ::chmod(top + "/.Trash", 01555);
    EXPECT_EQ(asUnprivileged([&] { return volumeTrashFolder(top) == top + "/.Trash-" + QByteArray::number(::getuid()) ? 0 : 1; }), 0);
}

// Nothing moves and no record stays behind; the caller then deletes as it always did.
TEST(DesktopTrash, WhereNoTrashCanTakeTheFileItStays)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir);
    ::chmod(root, 0755);
    for (const mode_t trashParent : {0777, 0555}) { // else the file's folder may not be written
        const QByteArray source = root + "/source" + QByteArray::number(trashParent);
        const QByteArray parent = root + "/trash" + QByteArray::number(trashParent), home = parent + "/Trash";
        ::mkdir(source, 0700);
        ::mkdir(parent, 0700);
        writeFile(source + "/old.mp3", "old");
        ::chmod(source, trashParent == 0777 ? 0555 : 0777);
        ::chmod(parent, trashParent);
        EXPECT_EQ(asUnprivileged([&] { return moveToDesktopTrash(source + "/old.mp3", home) ? 1 : 0; }), 0) << trashParent;
        EXPECT_EQ(readFile(source + "/old.mp3"), "old") << trashParent;
        // Where the trash could be made, the record was made first and taken back.
        EXPECT_EQ(modeOf(home + "/info") != -1, trashParent == 0777) << trashParent;
        EXPECT_TRUE(QDir(QFile::decodeName(home + "/info")).isEmpty()) << trashParent;
        ::chmod(source, 0755);
        ::chmod(parent, 0755);
    }
    // A file on the root file system with the home trash on another: the climb to the volume's
    // top ends at "/", where a user may make no trash. (Left out where /tmp has a file system of its own.)
    struct stat rootFs {}, tmpFs {};
    if (::stat("/", &rootFs) == 0 && ::stat(root, &tmpFs) == 0 && rootFs.st_dev == tmpFs.st_dev) {
        writeFile(root + "/song.wav", "on /");
        const auto move = [&] { return ::alarm(10), moveToDesktopTrash(root + "/song.wav", "/dev/shm/kv-none/Trash") ? 1 : 0; };
        EXPECT_EQ(asUnprivileged(move), 0);
        EXPECT_EQ(readFile(root + "/song.wav"), "on /");
    }
}
