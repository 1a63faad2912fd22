#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of an MPEG audio Layer III file. The whole file is walked frame by frame, so that a
// variable bit rate shows as its true average, marked with "~".
std::optional<MediaInfo> ReadMp3Info(const QString &folder, const QString &fileName, Files &files);
std::optional<MediaInfo> readMp3Info(const QString &fileName, ByteSource &bytes);

} // namespace kv
