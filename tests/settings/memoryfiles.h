#pragma once

#include <map>
#include <set>

#include "platform/files.h"

// Files held in memory; a path marked read-only refuses every write, as an opened-for-write
// call on such a file does.
class MemoryFiles : public kv::Files
{
public:
    std::map<QString, QByteArray> content;
    std::set<QString> readOnly;

    std::optional<std::int64_t> fileSize(const QString &path) override
    {
        const auto it = content.find(path);
        return it == content.end() ? std::nullopt : std::optional<std::int64_t>(it->second.size());
    }
    std::unique_ptr<kv::ByteSource> open(const QString &path) override
    {
        const auto it = content.find(path);
        return it == content.end() ? nullptr : std::make_unique<kv::MemoryByteSource>(it->second);
    }
    kv::RemoveResult remove(const QString &path) override
    {
        return content.erase(path) ? kv::RemoveResult::Removed : kv::RemoveResult::OtherError;
    }
    std::optional<QByteArray> readAll(const QString &path) override
    {
        const auto it = content.find(path);
        return it == content.end() ? std::nullopt : std::optional<QByteArray>(it->second);
    }
    bool writeAtStart(const QString &path, const QByteArray &bytes) override
    {
        if (readOnly.count(path))
            return false;
        QByteArray &file = content[path];
        if (file.size() < bytes.size())
            file.resize(bytes.size());
        file.replace(0, bytes.size(), bytes);
        return true;
    }
};
