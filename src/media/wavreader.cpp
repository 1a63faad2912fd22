#include "media/wavreader.h"

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "media/headerbytes.h"

namespace kv {

namespace {

// The canonical header, read as one record: chunks are not walked, so a file whose "fmt " chunk
// is not the first one after the form type is not listed.
namespace wav {
constexpr std::size_t RecordSize = 44;
constexpr std::size_t RiffId = 0;
constexpr std::size_t FormType = 8;
constexpr std::size_t FormatId = 12;
constexpr std::size_t FormatTag = 20;
constexpr std::size_t Channels = 22;
constexpr std::size_t SampleRate = 24;
constexpr std::uint16_t PcmTag = 1;
} // namespace wav

} // namespace

std::optional<MediaInfo> ReadWavInfo(const QString &folder, const QString &fileName, Files &files)
{
    return readFile(folder, fileName, files, readWavInfo);
}

std::optional<MediaInfo> readWavInfo(const QString &fileName, ByteSource &bytes)
{
    std::optional<MediaInfo> row;
    guarded([&] {
        // A file shorter than the header is not a WAV file, however valid its start.
        const auto whole = readWholeRecord<wav::RecordSize>(bytes);
        if (!whole)
            return;
        const auto &header = *whole;
        if (!hasTag(header, wav::RiffId, "RIFF") || !hasTag(header, wav::FormType, "WAVE")
            || !hasTag(header, wav::FormatId, "fmt ") || le16(header, wav::FormatTag) != wav::PcmTag)
            return;
        const auto channels = static_cast<std::int16_t>(le16(header, wav::Channels));
        const auto sampleRate = static_cast<std::int32_t>(le32(header, wav::SampleRate));

        const std::int32_t sizeKb = sizeInKb(bytes.size());
        row = startRow(fileName, sizeKb);
        MediaInfo &r = *row;

        // Every file is taken as 16-bit whatever its header says: kept on purpose, since the
        // forecasts and totals are computed from this same bit rate. The mono product is formed
        // once even for stereo files, so an absurd sample rate fails before any column is set.
        Int16 bitrate = Int16::fromReal(sampleRate * 0.016);
        if (channels != 1)
            bitrate = Int16::fromReal(sampleRate * 0.032);
        r[MediaInfo::Bitrate] = QString::number(bitrate.value());
        r[MediaInfo::Channel] = channels == 1 ? QStringLiteral("Mono") : QStringLiteral("Stereo");

        // Duration from the rounded size of the whole file and the bit rate as shown, header
        // included: coarse on purpose, so that every size and time estimate agrees with it.
        const Int32 seconds = Int32::fromReal(
            divide(sizeKb * 1.024 * 8.0, numberFromText(r[MediaInfo::Bitrate])));
        r[MediaInfo::Duration] = durationText(seconds);
        r[MediaInfo::Sampling] = QString::number(sampleRate);
    });
    return row;
}

} // namespace kv
