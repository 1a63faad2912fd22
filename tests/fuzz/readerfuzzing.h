#pragma once

#include <algorithm>
#include <cstring>
#include <optional>

#include "fuzzing.h"
#include "media/mediainfo.h"
#include "platform/bytesource.h"

namespace kvfuzz {

// Hands out at most a few bytes per read, as a pipe or a network file system may: a reader must
// gather what it needs instead of trusting one read to fill its buffer.
class TricklingByteSource : public kv::ByteSource
{
public:
    explicit TricklingByteSource(QByteArray bytes) : m_bytes(std::move(bytes)) {}
    std::int64_t size() const override { return m_bytes.size(); }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        if (offset < 0 || n < 0)
            return -1;
        if (offset >= m_bytes.size())
            return 0;
        const std::int64_t count = std::min<std::int64_t>({n, m_bytes.size() - offset, 7});
        std::memcpy(dst, m_bytes.constData() + offset, static_cast<std::size_t>(count));
        return count;
    }

private:
    QByteArray m_bytes;
};

using Reader = std::optional<kv::MediaInfo> (*)(const QString &fileName, kv::ByteSource &bytes);

// A reader never throws, a row starts with the file's name, and the row does not depend on how
// the bytes arrive or on what an earlier file left behind.
inline std::optional<kv::MediaInfo> checkReader(Reader read, const QByteArray &bytes)
{
    const QString name = QStringLiteral("input.bin");
    kv::MemoryByteSource whole(bytes);
    const std::optional<kv::MediaInfo> row = read(name, whole);
    if (row)
        KV_FUZZ_CHECK((*row)[kv::MediaInfo::Name] == name);
    TricklingByteSource trickle(bytes);
    KV_FUZZ_CHECK(read(name, trickle) == row);
    return row;
}

} // namespace kvfuzz
