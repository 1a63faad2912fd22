#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/nativenames.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixpaths.h"
#include "support/bytefiles.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

// QTemporaryDir cannot remove names that are not UTF-8.
void removeTree(const QTemporaryDir &dir)
{
    QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), dir.path()});
}

class PosixFoldersTest : public ::testing::Test
{
protected:
    void TearDown() override { removeTree(dir); }
    QByteArray root() const { return QFile::encodeName(dir.path()) + '/'; }

    QTemporaryDir dir;
    PosixFolders folders;
    PosixFiles files;
};

} // namespace

TEST_F(PosixFoldersTest, ListsPlainVisibleFilesAndLinksToThem)
{
    for (const char *name : {"b.wav", "A.WAV", ".hidden.wav", "notes.txt", "Ca.wav", "Song.MP3", ".x.ogg"})
        writeFile(root() + name, "data");
    for (const char *name : {"folder.wav", ".git", "album.ogg"})
        ASSERT_EQ(::mkdir(root() + name, 0755), 0);
    for (const auto &[target, link] : {std::pair{"b.wav", "link.wav"}, {"missing.wav", "dangling.wav"},
                                       {"folder.wav", "folderlink.wav"}, {"missing.mpc", "dangling.mpc"}})
        ASSERT_EQ(::symlink(target, root() + link), 0);
    ASSERT_EQ(::mkfifo(root() + "pipe.wav", 0644), 0); // neither a file nor a folder

    EXPECT_EQ(folders.listFiles(dir.path(), QStringLiteral("*.wav")),
              (QStringList{QStringLiteral("A.WAV"), QStringLiteral("b.wav"), QStringLiteral("Ca.wav"),
                           QStringLiteral("link.wav")}));
    EXPECT_EQ(folders.listFolders(dir.path()),
              (QStringList{QStringLiteral("album.ogg"), QStringLiteral("folder.wav"), QStringLiteral("folderlink.wav")}));
    EXPECT_EQ(folders.listFiles(dir.filePath(QStringLiteral("missing")), QStringLiteral("*.wav")), std::nullopt);
    // The tree's one-pass listing keeps the same rules: WAV and MP3 here, no Ogg folder or hidden
    // file, no dangling Musepack.
    const std::optional<FolderListing> listing = folders.listFolder(dir.path());
    ASSERT_TRUE(listing);
    EXPECT_EQ(listing->folders, folders.listFolders(dir.path()).value());
    EXPECT_EQ(listing->audioKinds, 2);
    EXPECT_FALSE(folders.listFolder(dir.filePath(QStringLiteral("missing"))));
}

// Windows-1251 and Latin-1 names list, and the listed name reaches the same file again, also
// inside a folder whose own name is not UTF-8.
TEST_F(PosixFoldersTest, NamesThatAreNotUtf8ListAndReachTheirFiles)
{
    const QByteArray folderBytes = root() + "\xCF\xE0\xEF\xEA\xE0"; // "Папка"
    ASSERT_EQ(::mkdir(folderBytes, 0755), 0);
    const QByteArray names[] = {"\xCF\xE5\xF1\xED\xFF.wav", "caf\xE9.wav"};
    for (const QByteArray &n : names)
        writeFile(folderBytes + '/' + n, n);

    const QString folder = nameFromBytes(folderBytes);
    EXPECT_EQ(folders.listFolders(dir.path()), QStringList{nameFromBytes(folderBytes.mid(root().size()))});
    const std::optional<QStringList> listed = folders.listFiles(folder, QStringLiteral("*.wav"));
    ASSERT_EQ(listed, (QStringList{nameFromBytes(names[1]), nameFromBytes(names[0])}));
    for (const QString &name : *listed) {
        const QString path = folder + QLatin1Char('/') + name;
        const QByteArray content = bytesFromName(name);
        EXPECT_EQ(files.fileSize(path), content.size());
        EXPECT_EQ(files.readAll(path), content);
        const auto source = files.open(path);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->size(), content.size());
        EXPECT_TRUE(files.writeAtStart(path, "X"));
        EXPECT_EQ(files.remove(path), RemoveResult::Removed);
        EXPECT_EQ(::access(bytesFromName(path), F_OK), -1);
    }
    EXPECT_TRUE(folders.freeSpace(folder));
}

// What a user may still write, as df tells it, not the blocks kept for root.
TEST_F(PosixFoldersTest, FreeSpaceIsWhatAUserCanUse)
{
    QProcess df;
    df.start(QStringLiteral("df"), {QStringLiteral("--output=avail"), QStringLiteral("-B1"), dir.path()});
    ASSERT_TRUE(df.waitForFinished());
    const qint64 available = QString::fromLatin1(df.readAllStandardOutput()).split(QLatin1Char('\n')).value(1).trimmed().toLongLong();
    ASSERT_GT(available, 0);
    const std::optional<FreeSpace> space = folders.freeSpace(dir.path());
    ASSERT_TRUE(space);
    const double bytes = double(space->freeClusters) * double(space->sectorsPerCluster) * double(space->bytesPerSector);
    // Other writers may change the disk between the two looks.
    EXPECT_NEAR(bytes, double(available), 256.0 * 1024 * 1024 + double(available) * 0.001);
}

TEST(PosixPaths, KindsAndAbsolutePaths)
{
    QTemporaryDir dir;
    const QByteArray latin = QFile::encodeName(dir.path()) + "/caf\xE9";
    ASSERT_EQ(::mkdir(latin, 0755), 0);
    ASSERT_EQ(::symlink("caf\xE9", QFile::encodeName(dir.path()) + "/link"), 0);
    const struct { QString path; PathKind kind; } cases[] = {
        {nameFromBytes(latin), PathKind::Folder},
        {dir.filePath(QStringLiteral("link")), PathKind::Folder},
        {dir.filePath(QStringLiteral("missing")), PathKind::Missing},
        {QStringLiteral("/dev/null"), PathKind::Other},
    };
    for (const auto &c : cases)
        EXPECT_EQ(pathKind(c.path), c.kind) << c.path.toStdString();

    const QByteArray saved = QFile::encodeName(QDir::currentPath());
    ASSERT_EQ(::chdir(latin), 0);
    EXPECT_EQ(absolutePath(QStringLiteral("./a/../b")), nameFromBytes(latin) + QStringLiteral("/b"));
    EXPECT_EQ(absolutePath(QStringLiteral("/x//y/.")), QStringLiteral("/x/y"));
    ASSERT_EQ(::chdir(saved), 0);
    removeTree(dir);

    // A file given on the command line opens the folder that holds it, the root included.
    EXPECT_EQ(folderToOpen(QStringLiteral("/a.mp3"), PathKind::Other), QStringLiteral("/"));
    EXPECT_EQ(folderToOpen(QStringLiteral("/m/a.mp3"), PathKind::Other), QStringLiteral("/m"));
    EXPECT_EQ(folderToOpen(QStringLiteral("/m/gone"), PathKind::Missing), QStringLiteral("/m/gone"));
    EXPECT_EQ(folderToOpen(QStringLiteral("/m"), PathKind::Folder), QStringLiteral("/m"));
}
