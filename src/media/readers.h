#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of one listed file by the reader of its format; nothing when the reader adds no row.
// folder ends in "/", fileName is the bare name.
std::optional<MediaInfo> readMediaInfo(AudioFormat format, const QString &folder,
                                       const QString &fileName, Files &files);
// The same for bytes already at hand.
std::optional<MediaInfo> readMediaInfo(AudioFormat format, const QString &fileName, ByteSource &bytes);

} // namespace kv
