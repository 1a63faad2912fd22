#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include <QByteArray>
#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "support/qtprinters.h"

namespace kv::testing {

inline QString dataDir(const char *format)
{
    return QStringLiteral(KV_TEST_DATA_DIR "/") + QLatin1String(format) + QLatin1Char('/');
}

// A row from its column texts in order; missing trailing columns stay empty.
inline MediaInfo row(std::initializer_list<const char *> texts)
{
    MediaInfo r;
    int i = 0;
    for (const char *t : texts)
        r[i++] = QString::fromUtf8(t);
    return r;
}

// A file of any length: the given first bytes, then zeros, without holding them.
class SizedSource : public ByteSource
{
public:
    SizedSource(QByteArray head, std::int64_t size) : m_head(std::move(head)), m_size(size) {}
    std::int64_t size() const override { return m_size; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        const std::int64_t count = std::max<std::int64_t>(0, std::min(n, m_size - offset));
        std::memset(dst, 0, static_cast<size_t>(count));
        const std::int64_t fromHead = std::min<std::int64_t>(count, m_head.size() - offset);
        if (fromHead > 0)
            std::memcpy(dst, m_head.constData() + offset, static_cast<size_t>(fromHead));
        return count;
    }

private:
    QByteArray m_head;
    std::int64_t m_size;
};

// Little-endian field of `width` bytes written into a header under test.
inline void put(QByteArray &b, int at, std::uint32_t v, int width = 4)
{
    for (int i = 0; i < width; ++i)
        b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

} // namespace kv::testing
