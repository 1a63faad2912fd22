#pragma once

#include "platform/folders.h"

namespace kv {

class PosixFolders : public Folders
{
public:
    std::optional<QStringList> listFiles(const QString &folder, const QString &pattern) override;
    std::optional<QStringList> listFolders(const QString &folder) override;
    std::optional<FreeSpace> freeSpace(const QString &folder) override;
    std::optional<FolderListing> listFolder(const QString &folder) override;
};

} // namespace kv
