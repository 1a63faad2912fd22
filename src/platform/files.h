#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <QByteArray>
#include <QString>

#include "platform/bytesource.h"

namespace kv {

enum class RemoveResult { Removed, AccessDenied, OtherError };

// Files by full path. Never throws: absence and failure come back as empty results.
class Files
{
public:
    virtual ~Files() = default;
    // Size of an existing file (links followed); nothing when it is missing or not a file.
    virtual std::optional<std::int64_t> fileSize(const QString &path) = 0;
    // Opens a file for reading its bytes; nothing when it cannot be opened.
    virtual std::unique_ptr<ByteSource> open(const QString &path) = 0;
    virtual RemoveResult remove(const QString &path) = 0;
    // Whole content of a file; nothing when it cannot be read.
    virtual std::optional<QByteArray> readAll(const QString &path) = 0;
    // Writes bytes at the start of the file, creating it when missing and keeping whatever lies
    // beyond them; false when the file cannot be opened for writing or the write fails.
    virtual bool writeAtStart(const QString &path, const QByteArray &bytes) = 0;

    // Fakes that need none of the following keep these defaults.

    // Moves a file the program is about to replace into the desktop trash, so nothing is lost;
    // it is deleted only where its volume has no trash.
    virtual RemoveResult moveToTrash(const QString &path) { return remove(path); }
    // Whether the file exists (links followed) and may be started as a program.
    virtual bool isExecutable(const QString &path) { return fileSize(path).has_value(); }
};

} // namespace kv
