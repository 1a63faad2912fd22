#include "media/headerbytes.h"

#include "common/failure.h"

namespace kv {

std::size_t readRecordInto(ByteSource &bytes, std::uint8_t *record, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const std::int64_t got = bytes.read(static_cast<std::int64_t>(done),
                                            reinterpret_cast<char *>(record + done),
                                            static_cast<std::int64_t>(size - done));
        if (got < 0)
            throw Failure("read failed");
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

MediaInfo startRow(const QString &fileName, std::int32_t sizeKb)
{
    MediaInfo row;
    row[MediaInfo::Name] = fileName;
    row[MediaInfo::SizeKb] = QString::number(sizeKb);
    return row;
}

} // namespace kv
