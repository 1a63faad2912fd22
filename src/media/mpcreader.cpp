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

// Stream version 8: "MPCK", then packets of a two-letter key, a size and a payload. Only the
// stream-header packet ("SH") is read, and only among the packets that start in the first 64 KB.
namespace mpck {
constexpr std::size_t FirstPacket = 4;
constexpr std::int64_t SearchLength = 64 * 1024;
// Enough to hold the longest stream header that starts just before the end of the search.
constexpr std::int64_t ReadLength = SearchLength + 64;
// A size or a sample count longer than this is not something an encoder writes: the file is refused.
constexpr int MaxNumberBytes = 8;
constexpr std::size_t CrcBytes = 4;
constexpr std::uint8_t StreamVersion = 8;
// The same four rates as version 7, by a three-bit index of which 4 to 7 name none.
constexpr const auto &SampleRates = mpc::SampleRates;
} // namespace mpck

// Reads the packets of a stream-version-8 file in order; every malformed field is a Failure.
class PacketReader
{
public:
    explicit PacketReader(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    std::int64_t position() const { return m_at; }
    void seek(std::int64_t at) { m_at = at; }

    std::uint8_t byte()
    {
        if (m_at >= m_bytes.size())
            throw Failure("past the end");
        return static_cast<std::uint8_t>(m_bytes.at(m_at++));
    }

    // Seven bits a byte, most significant first; the high bit marks every byte but the last.
    std::uint64_t number()
    {
        std::uint64_t value = 0;
        for (int i = 0; i < mpck::MaxNumberBytes; ++i) {
            const std::uint8_t b = byte();
            value = (value << 7) | (b & 0x7F);
            if ((b & 0x80) == 0)
                return value;
        }
        throw Failure("number too long");
    }

private:
    QByteArray m_bytes;
    std::int64_t m_at = 0;
};

struct StreamHeader
{
    std::int64_t samples;
    std::int32_t sampleRate;
    int channels;
};

bool isCapital(std::uint8_t c) { return c >= 'A' && c <= 'Z'; }

// Walks the packets up to the stream header and reads it.
StreamHeader readStreamHeader(PacketReader &packets)
{
    std::int64_t at = mpck::FirstPacket;
    while (at < mpck::SearchLength) {
        packets.seek(at);
        const std::uint8_t key0 = packets.byte();
        const std::uint8_t key1 = packets.byte();
        if (!isCapital(key0) || !isCapital(key1))
            throw Failure("bad packet key");
        const std::uint64_t size = packets.number();
        const std::int64_t payload = packets.position();
        // The size counts the key and its own bytes, so anything smaller cannot be a packet; one
        // larger than the search leaves no room for the stream header in it.
        if (size < static_cast<std::uint64_t>(payload - at) || size > static_cast<std::uint64_t>(mpck::SearchLength))
            throw Failure("bad packet size");
        const std::int64_t next = at + static_cast<std::int64_t>(size);
        if (key0 != 'S' || key1 != 'H') {
            at = next;
            continue;
        }
        for (std::size_t i = 0; i < mpck::CrcBytes; ++i) // the CRC is not checked
            packets.byte();
        if (packets.byte() != mpck::StreamVersion)
            throw Failure("not stream version 8");
        const std::uint64_t sampleCount = packets.number();
        const std::uint64_t silence = packets.number();
        const std::uint8_t rateIndex = packets.byte() >> 5;
        const int channels = (packets.byte() >> 4) + 1;
        if (packets.position() > next)
            throw Failure("stream header longer than its packet");
        if (rateIndex >= mpck::SampleRates.size())
            throw Failure("bad sample-rate index");
        if (sampleCount <= silence)
            throw Failure("no samples");
        return {static_cast<std::int64_t>(sampleCount - silence), mpck::SampleRates[rateIndex], channels};
    }
    throw Failure("no stream header");
}

// The row is started as soon as "MPCK" matched, like the version-7 row after "MP+": a later
// failure leaves name and size only, and the other columns are written together at the end.
void readStreamVersion8(const QString &fileName, ByteSource &bytes, std::optional<MediaInfo> &row)
{
    const std::int32_t sizeKb = sizeInKb(bytes.size());
    row = startRow(fileName, sizeKb);

    QByteArray head(mpck::ReadLength, '\0');
    const std::size_t got =
        readRecordInto(bytes, reinterpret_cast<std::uint8_t *>(head.data()), static_cast<std::size_t>(head.size()));
    head.truncate(static_cast<qsizetype>(got));
    PacketReader packets(std::move(head));
    const StreamHeader sh = readStreamHeader(packets);

    const double samples = static_cast<double>(sh.samples);
    const Int32 seconds = Int32::fromReal(samples / sh.sampleRate);
    const Int32 kbps = Int32::fromReal(sizeKb * 8.192 * sh.sampleRate / samples);

    MediaInfo &r = *row;
    r[MediaInfo::Duration] = durationText(seconds);
    r[MediaInfo::Bitrate] = QLatin1Char('~') + QString::number(kbps.value());
    r[MediaInfo::Sampling] = QString::number(sh.sampleRate);
    r[MediaInfo::Channel] = QString::number(sh.channels);
}

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
        if (hasTag(header, mpc::Signature, "MPCK")) {
            readStreamVersion8(fileName, bytes, row);
            return;
        }
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
