#pragma once

#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// The row of a PCM WAV file from its canonical 44-byte header; no row for anything else.
std::optional<MediaInfo> ReadWavInfo(const QString &folder, const QString &fileName, Files &files);
std::optional<MediaInfo> readWavInfo(const QString &fileName, ByteSource &bytes);

} // namespace kv
