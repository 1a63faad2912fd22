#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of a Musepack stream-version-7 file from its 25-byte header; the bit rate is an
// estimate from size and playing time, the channel mode is not read.
std::optional<MediaInfo> ReadMpcInfo(const QString &folder, const QString &fileName, Files &files);
std::optional<MediaInfo> readMpcInfo(const QString &fileName, ByteSource &bytes);

} // namespace kv
