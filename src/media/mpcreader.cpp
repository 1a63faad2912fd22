#include "media/mpcreader.h"

#include <array>

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "media/headerbytes.h"

namespace kv {

namespace {

namespace mpc {
constexpr std::size_t RecordSize = 25;
constexpr std::size_t Signature = 0;
constexpr std::size_t FrameCount = 4;
constexpr std::size_t RateByte = 10; // profile, link, sample-rate index in the low two bits
constexpr std::int32_t SamplesPerFrame = 1152;
constexpr std::array<std::int32_t, 4> SampleRates = {44100, 48000, 37800, 32000};
} // namespace mpc

} // namespace

std::optional<MediaInfo> ReadMpcInfo(const QString &folder, const QString &fileName, Files &files)
{
    return readFile(folder, fileName, files, readMpcInfo);
}

std::optional<MediaInfo> readMpcInfo(const QString &fileName, ByteSource &bytes)
{
    std::optional<MediaInfo> row;
    guarded([&] {
        const auto header = readRecord<mpc::RecordSize>(bytes);
        // The version byte is not checked: anything starting "MP+" is read with this layout.
        if (!hasTag(header, mpc::Signature, "MP+"))
            return;

        const std::int32_t sizeKb = sizeInKb(bytes.size());
        row = startRow(fileName, sizeKb);
        MediaInfo &r = *row;

        const Int32 frames = static_cast<long long>(le32(header, mpc::FrameCount));
        // Through the hexadecimal text, a rate byte below 16 gives index 0 (44.1 kHz).
        const std::int32_t sampleRate = mpc::SampleRates[hexTextValue(header[mpc::RateByte]) & 0x3];
        // The sample count is 32-bit: past 1,864,135 frames it overflows and, like a frame count
        // of 0 in the division below, leaves a row of name and size only.
        const Int32 samples = frames * Int32(mpc::SamplesPerFrame);
        const Int32 seconds = Int32::fromReal(static_cast<double>(samples) / sampleRate);
        const Int32 kbps = Int32::fromReal(divide(sizeKb * 1.024 * 8.0 * sampleRate, samples));

        r[MediaInfo::Duration] = durationText(seconds);
        r[MediaInfo::Bitrate] = QLatin1Char('~') + QString::number(kbps.value());
        r[MediaInfo::Sampling] = QString::number(sampleRate);
        r[MediaInfo::Channel] = QStringLiteral("n/a");
    });
    return row;
}

} // namespace kv
