#pragma once

#include <map>
#include <set>

#include "platform/folders.h"

// An in-memory folder tree: folders by path (without trailing "/"), each with its files.
// Folders listed in `unreadable` cannot be opened. Counts every folder listing asked for.
struct FakeFolders : kv::Folders
{
    std::map<QString, QStringList> files; // folder -> file names (folders are the keys)
    std::set<QString> unreadable;
    int listings = 0;

    void add(const QString &folder, const QStringList &names = {})
    {
        files[folder] += names;
        // Parents exist too.
        for (qsizetype cut = folder.lastIndexOf(QLatin1Char('/')); cut > 0; cut = folder.lastIndexOf(QLatin1Char('/'), cut - 1))
            files.try_emplace(folder.left(cut));
        files.try_emplace(QStringLiteral("/"));
    }

    static QString key(QString path)
    {
        while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
            path.chop(1);
        return path;
    }

    std::optional<QStringList> listFiles(const QString &folder, const QString &pattern) override
    {
        const QString k = key(folder);
        if (!files.count(k) || unreadable.count(k))
            return std::nullopt;
        QStringList out;
        for (const QString &n : files[k])
            if (n.endsWith(pattern.mid(1), Qt::CaseInsensitive))
                out.append(n);
        return out;
    }

    std::optional<QStringList> listFolders(const QString &folder) override
    {
        ++listings;
        const QString k = key(folder);
        if (!files.count(k) || unreadable.count(k))
            return std::nullopt;
        const QString prefix = k == QLatin1String("/") ? k : k + QLatin1Char('/');
        QStringList out;
        for (const auto &[path, names] : files) {
            if (path.startsWith(prefix) && path.size() > prefix.size() && !path.mid(prefix.size()).contains(QLatin1Char('/'))
                && !path.mid(prefix.size()).startsWith(QLatin1Char('.')))
                out.append(path.mid(prefix.size()));
        }
        return out;
    }

    std::optional<kv::FreeSpace> freeSpace(const QString &) override { return kv::FreeSpace{1048576, 1, 1024}; }
};
