#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include <QString>
#include <QStringList>

namespace kv {

// Free space of a file system, counted as clusters and their size.
struct FreeSpace
{
    std::int64_t freeClusters = 0;
    std::int64_t sectorsPerCluster = 0;
    std::int64_t bytesPerSector = 0;
};

// The patterns of the four audio kinds the folder tree counts.
inline constexpr std::array<const char *, 4> kAudioPatterns = {"*.mpc", "*.mp3", "*.ogg", "*.wav"};

// What the folder tree needs of one folder: its sub-folders (sorted like listFolders) and how
// many of the four audio kinds (kAudioPatterns) it holds files of, 0 to 4.
struct FolderListing
{
    QStringList folders;
    int audioKinds = 0;
};

class Folders
{
public:
    virtual ~Folders() = default;
    // Plain, non-hidden files of folder whose names match pattern ("*.wav": the extension,
    // compared without regard to case), sorted alphabetically without regard to case.
    // Nothing when the folder cannot be listed.
    virtual std::optional<QStringList> listFiles(const QString &folder, const QString &pattern) = 0;
    // Non-hidden sub-folders of folder, sorted like listFiles; nothing when it cannot be listed.
    virtual std::optional<QStringList> listFolders(const QString &folder) = 0;
    virtual std::optional<FreeSpace> freeSpace(const QString &folder) = 0;
    // Sub-folders and audio kinds together; nothing when the folder cannot be listed. The
    // default asks the two calls above, once per kind; a real folder is read once.
    virtual std::optional<FolderListing> listFolder(const QString &folder);
};

} // namespace kv
