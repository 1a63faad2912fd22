#pragma once

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
};

} // namespace kv
