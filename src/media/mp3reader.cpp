#include "media/mp3reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <vector>

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "media/headerbytes.h"

namespace kv {

namespace {

namespace mp3 {
// Frames one walk may count; one more ends the walk without a row.
constexpr std::int32_t FrameCapacity = 10'000'001;
// A file with no frame header among its first 10,240 positions is given up.
constexpr std::int64_t GiveUpAfter = 10240;

constexpr std::uint8_t VersionMpeg25 = 0b00;
constexpr std::uint8_t VersionReserved = 0b01;
constexpr std::uint8_t VersionMpeg2 = 0b10;
constexpr std::uint8_t VersionMpeg1 = 0b11;
constexpr std::uint8_t LayerIII = 0b01;
constexpr std::uint8_t SampleIndexKeep = 0b11;

// Free format (index 0) and the forbidden index 15 are used as they stand.
constexpr std::array<std::int16_t, 16> Mpeg1Bitrates = {0,   32,  40,  48,  56,  64,  80,  96,
                                                        112, 128, 160, 192, 224, 256, 320, 1};
constexpr std::array<std::int16_t, 16> Mpeg2Bitrates = {0,  8,  16, 24,  32,  40,  48,  56,
                                                        64, 80, 96, 112, 128, 144, 160, 1};
constexpr std::array<std::int32_t, 3> SampleRates = {44100, 48000, 32000};
// "Mono " keeps its trailing blank on purpose: it is the row text MP3 files have always shown,
// and code reading the channel column back gets it as it is.
constexpr std::array<const char *, 4> ChannelWords = {"Stereo", "Joint Stereo", "Dual", "Mono "};

constexpr std::size_t WindowSize = 256 * 1024;
// How far before a backward jump a reloaded window starts.
constexpr std::int64_t Backoff = 64;
} // namespace mp3

// Bytes 2 to 4 of a header, each already seen through its hexadecimal text.
struct HeaderBytes
{
    std::uint8_t b2, b3, b4;

    std::uint8_t version() const { return (b2 >> 3) & 0x3; }
    std::uint8_t layer() const { return (b2 >> 1) & 0x3; }
    std::uint8_t bitrateIndex() const { return b3 >> 4; }
    std::uint8_t sampleIndex() const { return (b3 >> 2) & 0x3; }
    int padding() const { return (b3 >> 1) & 0x1; }
    std::uint8_t channelMode() const { return b4 >> 6; }
};

// What one accepted header does to the walk.
struct FrameShape
{
    std::int16_t bitrate;
    std::int32_t sampleRate; // after this frame
    std::int16_t step;
};

FrameShape shapeOf(std::uint8_t version, std::uint8_t b3, std::int32_t previousSampleRate)
{
    const HeaderBytes h{0, b3, 0};
    FrameShape s{};
    s.bitrate = (version == mp3::VersionMpeg1 ? mp3::Mpeg1Bitrates : mp3::Mpeg2Bitrates)[h.bitrateIndex()];
    // Index "11" keeps the rate of the previous frame (0 before any), and the MPEG-2 and 2.5
    // scaling below still applies to it, so repeated "11" frames keep halving it.
    std::int32_t sampleRate = h.sampleIndex() == mp3::SampleIndexKeep
                                  ? previousSampleRate
                                  : mp3::SampleRates[h.sampleIndex()];
    std::int32_t frameFactor = 144000;
    if (version == mp3::VersionMpeg2) {
        sampleRate = Int32::fromReal(sampleRate / 2.0);
        frameFactor = Int32::fromReal(144000 / 2.0);
    } else if (version == mp3::VersionMpeg25) {
        sampleRate = Int32::fromReal(sampleRate / 4.0);
        frameFactor = Int32::fromReal(frameFactor / 2.0);
    }
    s.sampleRate = sampleRate;
    // One less than the frame length, rounded: the walk lands on the next header or on the byte
    // before it, which the byte scan then passes. A rate still 0 here is a failure.
    s.step = Int16::fromReal(h.padding() + divide(static_cast<double>(s.bitrate) * frameFactor, sampleRate)
                             - 1.0);
    return s;
}

// Shapes of every header whose sample index names a rate, by version and third byte; only the
// "11" index depends on the walk and is worked out per frame.
struct ShapeTable
{
    std::array<std::array<FrameShape, 256>, 4> shapes{};

    ShapeTable()
    {
        for (std::uint8_t version : {mp3::VersionMpeg25, mp3::VersionMpeg2, mp3::VersionMpeg1})
            for (int b3 = 0; b3 < 256; ++b3)
                if (HeaderBytes{0, static_cast<std::uint8_t>(b3), 0}.sampleIndex() != mp3::SampleIndexKeep)
                    shapes[version][b3] = shapeOf(version, static_cast<std::uint8_t>(b3), 0);
    }
};

const ShapeTable &shapeTable()
{
    static const ShapeTable table;
    return table;
}

// A reusable block of the file: the walk reads large blocks, never a byte per call. Bytes past
// the end of the file read as zero; a position before its start is a failure.
class ByteWindow
{
public:
    ByteWindow(ByteSource &bytes, std::int64_t length)
        : m_bytes(bytes), m_length(length), m_data(buffer().data())
    {
    }

    std::uint8_t at(std::int64_t offset)
    {
        const auto i = static_cast<std::uint64_t>(offset - m_start);
        if (i < m_count)
            return m_data[i];
        if (offset < 0)
            throw Failure("position before the start of the file");
        if (offset >= m_length)
            return 0;
        load(offset < m_start ? std::max<std::int64_t>(0, offset - mp3::Backoff) : offset);
        return m_data[offset - m_start];
    }

    // The first offset from..last holding 0xFF, or last + 1.
    std::int64_t findMarker(std::int64_t from, std::int64_t last)
    {
        if (from < 0)
            throw Failure("position before the start of the file");
        while (from <= last) {
            if (from < m_start || from >= m_start + static_cast<std::int64_t>(m_count))
                load(from);
            const std::int64_t end = std::min(last + 1, m_start + static_cast<std::int64_t>(m_count));
            const std::uint8_t *begin = m_data + (from - m_start);
            if (const void *hit = std::memchr(begin, 0xFF, static_cast<std::size_t>(end - from)))
                return from + (static_cast<const std::uint8_t *>(hit) - begin);
            from = end;
        }
        return last + 1;
    }

private:
    static std::vector<std::uint8_t> &buffer()
    {
        thread_local std::vector<std::uint8_t> window(mp3::WindowSize);
        return window;
    }

    void load(std::int64_t offset)
    {
        const auto wanted = static_cast<std::size_t>(
            std::min<std::int64_t>(mp3::WindowSize, m_length - offset));
        std::size_t done = 0;
        while (done < wanted) {
            const std::int64_t got = m_bytes.read(offset + static_cast<std::int64_t>(done),
                                                  reinterpret_cast<char *>(m_data + done),
                                                  static_cast<std::int64_t>(wanted - done));
            if (got < 0)
                throw Failure("read failed");
            if (got == 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        // A file that shrank under us reads as zeros, like any read past its end.
        std::memset(m_data + done, 0, wanted - done);
        m_start = offset;
        m_count = wanted;
    }

    ByteSource &m_bytes;
    const std::int64_t m_length;
    std::uint8_t *const m_data;
    std::int64_t m_start = 0;
    std::uint64_t m_count = 0;
};

// What the walk keeps instead of every frame's bit rate: the sums come out the same.
struct WalkResult
{
    std::int32_t frameCount = 0;
    std::int64_t total = 0;
    std::int16_t firstBitrate = 0;
    std::int32_t sameAsFirst = 0;
    std::int32_t sampleRate = 0;
    std::uint8_t channelMode = 0;
};

// The frame walk over 1-based positions. Throws on any failure; the caller then adds no row.
WalkResult walkFrames(ByteSource &bytes)
{
    const std::int64_t fileLength = Int32(bytes.size()).value(); // 2 GiB and more: no row
    const ShapeTable &table = shapeTable();
    ByteWindow window(bytes, fileLength);
    WalkResult w;

    // A header whose step is 0 or -1 (free format) sends the walk back to the same header for
    // ever, until the frame capacity runs out. Since position and sample rate are all that
    // decide the rest of the walk, a repeat of them at a header means that end is certain, and
    // the walk ends there at once (checkpoints at power-of-two frame counts find any cycle).
    std::int64_t savedPosition = -1;
    std::int32_t savedSampleRate = 0;

    std::int64_t position = 1;
    for (;;) {
        const std::int64_t last = w.frameCount == 0 ? std::min<std::int64_t>(fileLength, mp3::GiveUpAfter + 1)
                                                    : fileLength;
        if (position > last)
            break;
        position = window.findMarker(position - 1, last - 1) + 1;
        if (position > last) {
            if (position > std::numeric_limits<std::int32_t>::max())
                throw Failure("overflow");
            break;
        }

        const HeaderBytes h{hexTextValue(window.at(position)), hexTextValue(window.at(position + 1)),
                            hexTextValue(window.at(position + 2))};
        if (h.version() != mp3::VersionReserved && h.layer() == mp3::LayerIII) {
            if (w.frameCount > 0) {
                if (position == savedPosition && w.sampleRate == savedSampleRate)
                    throw Failure("frame walk repeats");
                if ((w.frameCount & (w.frameCount - 1)) == 0) {
                    savedPosition = position;
                    savedSampleRate = w.sampleRate;
                }
            }
            const FrameShape shape = h.sampleIndex() == mp3::SampleIndexKeep
                                         ? shapeOf(h.version(), h.b3, w.sampleRate)
                                         : table.shapes[h.version()][h.b3];
            if (w.frameCount == mp3::FrameCapacity - 1)
                throw Failure("too many frames");
            if (w.frameCount == 0)
                w.firstBitrate = shape.bitrate;
            w.total += shape.bitrate;
            w.sameAsFirst += shape.bitrate == w.firstBitrate;
            w.sampleRate = shape.sampleRate;
            w.channelMode = h.channelMode();
            ++w.frameCount;

            const std::int64_t landed = position + shape.step;
            if (landed > std::numeric_limits<std::int32_t>::max())
                throw Failure("overflow");
            position = landed - 1;
        }
        ++position;
    }
    return w;
}

} // namespace

std::optional<MediaInfo> ReadMp3Info(const QString &folder, const QString &fileName, Files &files)
{
    return readFile(folder, fileName, files, readMp3Info);
}

std::optional<MediaInfo> readMp3Info(const QString &fileName, ByteSource &bytes)
{
    std::optional<MediaInfo> row;
    guarded([&] {
        const WalkResult w = walkFrames(bytes);
        if (w.frameCount == 0)
            return;
        // The average runs over one element past the last frame, which is 0: it adds nothing to
        // the total but counts as "same" when the first frame is free format.
        const std::int32_t sameCount = w.sameAsFirst + (w.firstBitrate == 0 ? 1 : 0);
        const Int32 average = Int32::fromReal(divide(static_cast<double>(w.total), w.frameCount));

        // Duration from size and average bit rate, not from the frame count.
        const std::int32_t sizeKb = sizeInKb(bytes.size());
        const Int32 seconds = Int32::fromReal(divide(sizeKb * 1.024 * 8.0, average));

        MediaInfo r = startRow(fileName, sizeKb);
        r[MediaInfo::Duration] = durationText(seconds);
        r[MediaInfo::Bitrate] = sameCount == w.frameCount ? QString::number(average.value())
                                                          : QLatin1Char('~') + QString::number(average.value());
        r[MediaInfo::Sampling] = QString::number(w.sampleRate);
        r[MediaInfo::Channel] = QLatin1String(mp3::ChannelWords[w.channelMode]);
        row = std::move(r);
    });
    return row;
}

} // namespace kv
