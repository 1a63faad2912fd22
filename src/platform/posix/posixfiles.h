#pragma once

#include <QString>

#include "platform/files.h"

namespace kv {

class PosixFiles : public Files
{
public:
    std::optional<std::int64_t> fileSize(const QString &path) override;
    std::unique_ptr<ByteSource> open(const QString &path) override;
    RemoveResult remove(const QString &path) override;
    std::optional<QByteArray> readAll(const QString &path) override;
    bool writeAtStart(const QString &path, const QByteArray &bytes) override;
    RemoveResult moveToTrash(const QString &path) override;
    bool isExecutable(const QString &path) override;
};

// What a path names, in a few words for a message ("missing", "a folder", "a FIFO", "not
// readable: Permission denied"); empty for a readable regular file. Never opens the file, so
// a FIFO cannot block it.
QString describeUnreadable(const QString &path);

} // namespace kv
