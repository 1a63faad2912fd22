#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>

#include <QByteArray>
#include <QFile>
#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "support/qtprinters.h"

namespace kv::testing {

inline QString dataDir(const char *format)
{
    return QStringLiteral(KV_TEST_DATA_DIR "/") + QLatin1String(format) + QLatin1Char('/');
}

inline QByteArray fixture(const char *format, const char *name)
{
    QFile f(dataDir(format) + QLatin1String(name));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
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

// A file of any length whose first bytes are given and the rest zeros, without holding it.
class SizedSource : public ByteSource
{
public:
    SizedSource(QByteArray head, std::int64_t size) : m_head(std::move(head)), m_size(size) {}
    std::int64_t size() const override { return m_size; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        if (offset < 0 || n < 0)
            return -1;
        const std::int64_t count = std::max<std::int64_t>(0, std::min(n, m_size - offset));
        std::memset(dst, 0, static_cast<size_t>(count));
        if (offset < m_head.size())
            std::memcpy(dst, m_head.constData() + offset,
                        static_cast<size_t>(std::min<std::int64_t>(count, m_head.size() - offset)));
        return count;
    }

private:
    QByteArray m_head;
    std::int64_t m_size;
};

inline void putLe16(QByteArray &b, int at, std::uint16_t v)
{
    b[at] = static_cast<char>(v & 0xFF);
    b[at + 1] = static_cast<char>(v >> 8);
}

inline void putLe32(QByteArray &b, int at, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

inline void putText(QByteArray &b, int at, const char *text)
{
    for (int i = 0; text[i]; ++i)
        b[at + i] = text[i];
}

} // namespace kv::testing
