#include "platform/bytesource.h"

#include <algorithm>
#include <cstring>

namespace kv {

std::int64_t MemoryByteSource::read(std::int64_t offset, char *dst, std::int64_t n)
{
    if (offset < 0 || n < 0)
        return -1;
    if (offset >= m_bytes.size())
        return 0;
    const std::int64_t count = std::min<std::int64_t>(n, m_bytes.size() - offset);
    std::memcpy(dst, m_bytes.constData() + offset, static_cast<size_t>(count));
    return count;
}

} // namespace kv
