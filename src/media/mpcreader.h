#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of a Musepack file. Stream version 7 ("MP+") from its 25-byte header, the channel
// mode not read; stream version 8 ("MPCK", what today's encoder writes) from its stream-header
// packet, with the channel count. Either way the bit rate is an estimate from size and playing
// time.
std::optional<MediaInfo> ReadMpcInfo(const QString &folder, const QString &fileName, Files &files);
std::optional<MediaInfo> readMpcInfo(const QString &fileName, ByteSource &bytes);

} // namespace kv
