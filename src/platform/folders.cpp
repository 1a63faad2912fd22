#include "platform/folders.h"

namespace kv {

std::optional<FolderListing> Folders::listFolder(const QString &folder)
{
    std::optional<QStringList> folders = listFolders(folder);
    if (!folders)
        return std::nullopt;
    FolderListing listing{std::move(*folders), 0};
    for (const char *pattern : kAudioPatterns) {
        const std::optional<QStringList> files = listFiles(folder, QLatin1String(pattern));
        if (files && !files->isEmpty())
            ++listing.audioKinds;
    }
    return listing;
}

} // namespace kv
