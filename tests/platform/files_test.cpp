#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

#include "platform/nativenames.h"
#include "platform/posix/posixfiles.h"
#include "support/qtprinters.h"
#include "support/unprivileged.h"

using namespace kv;
using namespace Qt::StringLiterals;

namespace {

void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(data);
}

QByteArray bytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

// The home trash comes from XDG_DATA_HOME, else from HOME even when ~/.local/share is missing;
// a name that is not valid UTF-8 reaches it with its bytes rather than being deleted.
TEST(PosixFiles, ReplacedTargetsGoToTheTrashNotAway)
{
    const QByteArray cp1251 = "\xCF\xE5\xF1\xED\xFF.wav"; // "Песня.wav" in Windows-1251
    const struct { const char *xdgDataHome; QByteArray name; const char *trash; } cases[] = {
        {"data", "song.wav", "data/Trash"},
        {"data", cp1251, "data/Trash"},
        {nullptr, "song.wav", "home/.local/share/Trash"},
    };
    const QByteArray oldHome = qgetenv("HOME");
    const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
    for (const auto &c : cases) {
        QTemporaryDir dir;
        const QByteArray root = QFile::encodeName(dir.path());
        if (c.xdgDataHome)
            qputenv("XDG_DATA_HOME", root + '/' + c.xdgDataHome);
        else
            qunsetenv("XDG_DATA_HOME");
        ASSERT_TRUE(QDir().mkdir(dir.filePath(u"home"_s)));
        qputenv("HOME", root + "/home");
        const QString target = nameFromBytes(root + '/' + c.name);
        ASSERT_TRUE(PosixFiles().writeAtStart(target, "the only copy"));
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

// The folder, not the file, decides: a target in a folder we may not write is "Read only".
TEST(PosixFiles, DeletionRefusedByTheFolderIsAccessDenied)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(u"ro"_s);
    ASSERT_TRUE(QDir().mkdir(folder));
    const QString target = folder + u"/old.mp3"_s;
    write(target, "old");
    ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
    ::chmod(QFile::encodeName(folder).constData(), 0555);
    for (const bool trash : {false, true}) {
        const int result = asUnprivileged([&] {
            PosixFiles files;
            return static_cast<int>(trash ? files.moveToTrash(target) : files.remove(target));
        });
        EXPECT_EQ(result, static_cast<int>(RemoveResult::AccessDenied)) << trash;
        EXPECT_EQ(bytes(target), "old") << trash;
    }
    ::chmod(QFile::encodeName(folder).constData(), 0755);
}

TEST(PosixFiles, ExecutableMeansAFileThatMayBeStarted)
{
    QTemporaryDir dir;
    write(dir.filePath(u"run"_s), "#!/bin/sh\n");
    write(dir.filePath(u"plain"_s), "#!/bin/sh\n");
    ::chmod(QFile::encodeName(dir.filePath(u"run"_s)).constData(), 0755);
    ::chmod(QFile::encodeName(dir.filePath(u"plain"_s)).constData(), 0644);
    QFile::link(dir.filePath(u"run"_s), dir.filePath(u"link"_s));
    QFile::link(dir.filePath(u"none"_s), dir.filePath(u"dangling"_s));
    QDir().mkdir(dir.filePath(u"folder"_s));
    const struct { const char *name; bool executable; } cases[] = {
        {"run", true}, {"link", true}, {"plain", false}, {"dangling", false}, {"none", false}, {"folder", false},
    };
    PosixFiles files;
    for (const auto &c : cases)
        EXPECT_EQ(files.isExecutable(dir.filePath(QLatin1String(c.name))), c.executable) << c.name;
}

// The other kinds of path are in the options command's test; root reads everything, so this
// one runs as nobody.
TEST(DescribeUnreadable, AFileWeMayNotReadIsNotMissing)
{
    QTemporaryDir dir;
    write(dir.filePath(u"file"_s), "x");
    ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
    ::chmod(QFile::encodeName(dir.filePath(u"file"_s)).constData(), 0000);
    EXPECT_EQ(asUnprivileged([&] {
                  return describeUnreadable(dir.filePath(u"file"_s)) == u"not readable: Permission denied"_s ? 0 : 1;
              }),
              0);
}
