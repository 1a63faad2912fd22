#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of an Ogg Vorbis file from the identification header on its first page.
std::optional<MediaInfo> ReadOggInfo(const QString &folder, const QString &fileName, Files &files);
std::optional<MediaInfo> readOggInfo(const QString &fileName, ByteSource &bytes);

} // namespace kv
