#pragma once

#include <cstdint>

#include <QByteArray>

namespace kv {

// Random-access bytes of one file, or of a buffer in memory so tests can patch headers.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    // Length in bytes.
    virtual std::int64_t size() const = 0;
    // Copies up to n bytes from offset into dst; returns the count copied (0 at or past the end,
    // -1 when the read itself failed).
    virtual std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) = 0;
};

class MemoryByteSource : public ByteSource
{
public:
    explicit MemoryByteSource(QByteArray bytes) : m_bytes(std::move(bytes)) {}
    std::int64_t size() const override { return m_bytes.size(); }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override;

private:
    QByteArray m_bytes;
};

} // namespace kv
