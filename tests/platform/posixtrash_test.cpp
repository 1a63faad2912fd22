#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <optional>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/posixtrash.h"
#include "support/bytefiles.h"
#include "support/qtprinters.h"
#include "support/unprivileged.h"

using namespace kv;

namespace {

// The permission bits, -1 for nothing there.
int modeOf(const QByteArray &path)
{
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

bool exists(const QByteArray &path) { return modeOf(path) >= 0; }

// The file system a path is on; nothing when it cannot be read.
std::optional<dev_t> deviceOf(const QByteArray &path)
{
    struct stat st {};
    return ::stat(path.constData(), &st) == 0 ? std::optional<dev_t>(st.st_dev) : std::nullopt;
}

// The record's lines, its deletion date checked against time() around the move and cut off.
std::string recordWithoutDate(const QByteArray &infoPath, std::time_t before, std::time_t after)
{
    const std::string text = readFile(infoPath), key = "\nDeletionDate=";
    const size_t at = text.find(key);
    if (at == std::string::npos)
        return text;
    // In the form file managers read back: local time, "T" between date and time.
    const QDateTime when = QDateTime::fromString(QString::fromStdString(text.substr(at + key.size(), 19)),
                                                 QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
    EXPECT_TRUE(when.isValid() && when.toSecsSinceEpoch() >= before && when.toSecsSinceEpoch() <= after) << text;
    EXPECT_EQ(text.substr(at + key.size() + 19), "\n");
    return text.substr(0, at + 1);
}

} // namespace

TEST(DesktopTrash, HomeTrashTakesTheFileWithItsRecordUnderAFreeName)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir);
    const QByteArray home = root + "/data/Trash"; // missing, parents included
    const QByteArray longName = QByteArray(246, 'x') + ".wav";
    std::vector<QByteArray> leftForQt; // QTemporaryDir cannot remove names that are not UTF-8
    const struct { QByteArray name, trashName, encodedName; } cases[] = {
        {"song.wav", "song.wav", "song.wav"},
        {"song.wav", "song.2.wav", "song.wav"},
        // Windows-1251 "Песня", not valid UTF-8.
        {"\xCF\xE5\xF1\xED\xFF.wav", "\xCF\xE5\xF1\xED\xFF.wav", "%CF%E5%F1%ED%FF.wav"},
        {"a b%#\xD1\x91.mp3", "a b%#\xD1\x91.mp3", "a%20b%25%23%D1%91.mp3"},
        // 250 bytes: the record's name would pass the length limit, so the name is cut.
        {longName, QByteArray(241, 'x') + ".wav", longName},
        // The same long name again: the number takes its place from the cut stem.
        {longName, QByteArray(239, 'x') + ".2.wav", longName},
        // The longest extension kept whole when the name is cut: sixteen bytes with the dot.
        {QByteArray(235, 'y') + ".abcdefghijklmno", QByteArray(229, 'y') + ".abcdefghijklmno",
         QByteArray(235, 'y') + ".abcdefghijklmno"},
    };
    for (const auto &c : cases) {
        const QByteArray file = root + '/' + c.name;
        writeFile(file, "content of " + c.trashName);
        const std::time_t before = std::time(nullptr);
        const std::optional<QByteArray> moved = moveToDesktopTrash(file, home);
        const std::time_t after = std::time(nullptr);
        const std::string what = c.trashName.toStdString();
        ASSERT_TRUE(moved.has_value()) << what;
        EXPECT_EQ(moved->toStdString(), (home + "/files/" + c.trashName).toStdString());
        EXPECT_FALSE(exists(file)) << what;
        EXPECT_EQ(readFile(*moved), "content of " + what);
        const QByteArray info = home + "/info/" + c.trashName + ".trashinfo";
        EXPECT_EQ(recordWithoutDate(info, before, after),
                  "[Trash Info]\nPath=" + root.toStdString() + '/' + c.encodedName.toStdString() + '\n')
            << what;
        leftForQt.push_back(*moved);
        leftForQt.push_back(info);
    }
    // A later file of the same name took another name and left the earlier record be.
    for (const auto &c : cases)
        EXPECT_TRUE(exists(home + "/info/" + c.trashName + ".trashinfo")) << c.trashName.toStdString();
    EXPECT_EQ(modeOf(root + "/data"), 0700);
    EXPECT_EQ(modeOf(home), 0700);

    // A file left in files/ without its record still holds someone's data: rename() would replace it.
    writeFile(home + "/files/take.wav", "orphan");
    writeFile(root + "/take.wav", "new");
    EXPECT_EQ(moveToDesktopTrash(root + "/take.wav", home).value_or("").toStdString(),
              (home + "/files/take.2.wav").toStdString());
    EXPECT_EQ(readFile(home + "/files/take.wav"), "orphan");
    EXPECT_FALSE(exists(home + "/info/take.wav.trashinfo"));
    for (const QByteArray &path : leftForQt)
        ::unlink(path.constData());
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
        if (c.shared) {
            const QByteArray folder = top + (c.sharedByLink ? "/elsewhere" : "/.Trash");
            ::mkdir(folder.constData(), 0700);
            ::chmod(folder.constData(), c.shared);
        }
        if (c.sharedByLink)
            ::symlink("elsewhere", (top + "/.Trash").constData());
        if (c.ownByLink) {
            ::mkdir((top + "/elsewhere").constData(), 0700);
            ::symlink("elsewhere", (top + "/.Trash-" + uid).constData());
        }
        const std::optional<QByteArray> trash = volumeTrashFolder(top);
        const QByteArray expected = c.trash ? top + '/' + c.trash + uid : "<none>";
        EXPECT_EQ(trash.value_or("<none>").toStdString(), expected.toStdString()) << c.what;
        EXPECT_TRUE(!c.trash || modeOf(expected) == 0700) << c.what;
    }
}

// Nothing moves and no record stays behind; the caller then deletes as it always did.
TEST(DesktopTrash, WhereNoTrashCanTakeTheFileItStays)
{
    QTemporaryDir dir;
    const QByteArray root = bytePath(dir);
    ::chmod(root.constData(), 0755);
    const struct { const char *what; mode_t sourceFolder, trashParent; } cases[] = {
        {"the file's folder may not be written", 0555, 0777},
        {"the trash may not be made", 0777, 0555},
    };
    for (const auto &c : cases) {
        const QByteArray source = root + "/source" + QByteArray::number(c.trashParent);
        const QByteArray parent = root + "/trash" + QByteArray::number(c.trashParent);
        ::mkdir(source.constData(), 0700);
        ::mkdir(parent.constData(), 0700);
        writeFile(source + "/old.mp3", "old");
        ::chmod(source.constData(), c.sourceFolder);
        ::chmod(parent.constData(), c.trashParent);
        const QByteArray home = parent + "/Trash";
        EXPECT_EQ(asUnprivileged([&] { return moveToDesktopTrash(source + "/old.mp3", home) ? 1 : 0; }), 0) << c.what;
        EXPECT_EQ(readFile(source + "/old.mp3"), "old") << c.what;
        // Where the trash could be made, the record was made first and taken back.
        EXPECT_EQ(exists(home + "/info"), c.trashParent == 0777) << c.what;
        EXPECT_TRUE(QDir(QFile::decodeName(home + "/info")).isEmpty()) << c.what;
        ::chmod(source.constData(), 0755);
        ::chmod(parent.constData(), 0755);
    }
    // A file on the root file system with the home trash on another: the climb to the volume's
    // top ends at "/", where a user may make no trash. (Left out where /tmp has a file system of its own.)
    if (deviceOf("/") && deviceOf("/") == deviceOf(root)) {
        writeFile(root + "/song.wav", "on /");
        const auto move = [&] { return ::alarm(10), moveToDesktopTrash(root + "/song.wav", "/dev/shm/kv-none/Trash") ? 1 : 0; };
        EXPECT_EQ(asUnprivileged(move), 0);
        EXPECT_EQ(readFile(root + "/song.wav"), "on /");
    }
}

