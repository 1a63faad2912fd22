#include "media/oggreader.h"

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "media/headerbytes.h"

namespace kv {

namespace {

// First page with a one-entry segment table followed by the Vorbis identification header; a
// first page with more segments puts "vorbis" elsewhere and is not listed.
namespace ogg {
constexpr std::size_t RecordSize = 52;
constexpr std::size_t CapturePattern = 0;
constexpr std::size_t CodecId = 29;
constexpr std::size_t Channels = 39;
constexpr std::size_t SampleRate = 40;
constexpr std::size_t NominalBitrate = 48;
} // namespace ogg

} // namespace

std::optional<MediaInfo> ReadOggInfo(const QString &folder, const QString &fileName, Files &files)
{
    return readFile(folder, fileName, files, readOggInfo);
}

std::optional<MediaInfo> readOggInfo(const QString &fileName, ByteSource &bytes)
{
    std::optional<MediaInfo> row;
    guarded([&] {
        const auto header = readRecord<ogg::RecordSize>(bytes);
        if (!hasTag(header, ogg::CodecId, "vorbis") || !hasTag(header, ogg::CapturePattern, "OggS"))
            return;
        const std::uint8_t channels = header[ogg::Channels];
        const std::uint32_t sampleRate = le32(header, ogg::SampleRate);
        // Unsigned: an unset nominal rate (all bits set) shows as 4294967 kbps.
        const std::uint32_t nominal = le32(header, ogg::NominalBitrate);

        const std::int32_t sizeKb = sizeInKb(bytes.size());
        row = startRow(fileName, sizeKb);
        MediaInfo &r = *row;
        // The channel count itself, not a channel word.
        r[MediaInfo::Channel] = QString::number(channels);
        r[MediaInfo::Sampling] = QString::number(sampleRate);
        const double kbps = nominal / 1000.0;
        r[MediaInfo::Bitrate] = QLatin1Char('~') + QString::number(Int32::fromReal(kbps).value());
        // No 1.024 factor here, unlike the WAV and MP3 durations: kept on purpose, the Ogg
        // totals have always been this plain estimate. A nominal rate of 0 fails here and
        // leaves the duration empty.
        const Int32 seconds = Int32::fromReal(divide(sizeKb * 8.0, kbps));
        r[MediaInfo::Duration] = durationText(seconds);
    });
    return row;
}

} // namespace kv
