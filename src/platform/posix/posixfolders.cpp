#include "platform/posix/posixfolders.h"

#include <algorithm>
#include <array>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "platform/nativenames.h"

namespace kv {

namespace {

enum class EntryKind { File, Folder, Other };

void sortNames(QStringList &names)
{
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) {
        const int c = a.compare(b, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a < b;
    });
}

// Calls visit(name, kind) for every non-hidden entry of folder, links followed (a link to a file
// is a file, a dangling one is neither); false when the folder cannot be read.
template <typename Visit>
bool forEachEntry(const QString &folder, Visit visit)
{
    DIR *dir = ::opendir(bytesFromName(folder).constData());
    if (dir == nullptr)
        return false;
    const int dfd = ::dirfd(dir);
    while (const dirent *e = ::readdir(dir)) {
        if (e->d_name[0] == '.')
            continue;
        EntryKind kind = e->d_type == DT_REG ? EntryKind::File : e->d_type == DT_DIR ? EntryKind::Folder : EntryKind::Other;
        if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK) {
            struct stat st {};
            if (::fstatat(dfd, e->d_name, &st, 0) != 0)
                continue;
            kind = S_ISREG(st.st_mode) ? EntryKind::File : S_ISDIR(st.st_mode) ? EntryKind::Folder : EntryKind::Other;
        }
        visit(nameFromBytes(e->d_name), kind);
    }
    ::closedir(dir);
    return true;
}

// Reads one folder, keeping the entries of one kind that pass keep(name).
template <typename Keep>
std::optional<QStringList> listEntries(const QString &folder, EntryKind wanted, Keep keep)
{
    QStringList names;
    if (!forEachEntry(folder, [&](const QString &name, EntryKind kind) {
            if (kind == wanted && keep(name))
                names.append(name);
        }))
        return std::nullopt;
    sortNames(names);
    return names;
}

// "*.wav" matches every name ending in ".wav", ".WAV", ".Wav"... but not ".wav" itself.
template <typename Pattern> // QStringView or QLatin1StringView
bool matches(const QString &name, Pattern pattern)
{
    const Pattern suffix = pattern.startsWith(QLatin1Char('*')) ? pattern.mid(1) : pattern;
    return name.size() > suffix.size() && name.endsWith(suffix, Qt::CaseInsensitive);
}

} // namespace

std::optional<QStringList> PosixFolders::listFiles(const QString &folder, const QString &pattern)
{
    return listEntries(folder, EntryKind::File, [&](const QString &name) { return matches(name, QStringView(pattern)); });
}

std::optional<QStringList> PosixFolders::listFolders(const QString &folder)
{
    return listEntries(folder, EntryKind::Folder, [](const QString &) { return true; });
}

std::optional<FreeSpace> PosixFolders::freeSpace(const QString &folder)
{
    struct statvfs sv {};
    if (::statvfs(bytesFromName(folder).constData(), &sv) != 0)
        return std::nullopt;
    return FreeSpace{static_cast<std::int64_t>(sv.f_bavail), 1, static_cast<std::int64_t>(sv.f_frsize)};
}

std::optional<FolderListing> PosixFolders::listFolder(const QString &folder)
{
    // One pass over the folder: a tree of a thousand sub-folders is read a thousand times, not
    // five thousand.
    std::array<bool, kAudioPatterns.size()> seen{};
    FolderListing listing;
    const bool read = forEachEntry(folder, [&](const QString &name, EntryKind kind) {
        if (kind == EntryKind::Folder) {
            listing.folders.append(name);
        } else if (kind == EntryKind::File) {
            for (size_t k = 0; k < seen.size(); ++k)
                seen[k] = seen[k] || matches(name, QLatin1StringView(kAudioPatterns[k]));
        }
    });
    if (!read)
        return std::nullopt;
    sortNames(listing.folders);
    for (bool s : seen)
        listing.audioKinds += s ? 1 : 0;
    return listing;
}

} // namespace kv
