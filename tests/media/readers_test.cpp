#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "media/readers.h"
#include "platform/posix/posixfiles.h"
#include "support/qtprinters.h"

using namespace kv;
using enum kv::AudioFormat;

namespace kv {
void PrintTo(const MediaInfo &r, std::ostream *os)
{
    *os << QStringList(r.columns.begin(), r.columns.end()).join(QLatin1Char('|')).toStdString();
}
} // namespace kv

namespace {

QString dataDir(const char *folder) { return QStringLiteral(KV_TEST_DATA_DIR "/%1/").arg(QLatin1String(folder)); }

// A row from its column texts; missing trailing columns stay empty.
MediaInfo row(std::initializer_list<const char *> texts)
{
    MediaInfo r;
    std::transform(texts.begin(), texts.end(), r.columns.begin(), [](const char *t) { return QString::fromUtf8(t); });
    return r;
}

// A file of `length` bytes of which only head can be read, and nothing from failFrom on; it
// counts the reads it serves.
struct SizedSource : MemoryByteSource
{
    SizedSource(QByteArray head, std::int64_t length) : MemoryByteSource(std::move(head)), length(length) {}
    std::int64_t size() const override { return length; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        ++calls;
        if (offset >= failFrom)
            return -1;
        const std::int64_t got = MemoryByteSource::read(offset, dst, n);
        bytesRead += std::max<std::int64_t>(got, 0);
        return got;
    }
    std::int64_t length;
    std::int64_t failFrom = std::numeric_limits<std::int64_t>::max();
    std::int64_t calls = 0;
    std::int64_t bytesRead = 0;
};

// At most two passes over the bytes, in large reads: bounds the work, where a clock would be flaky.
void expectWithinBudget(const SizedSource &s, std::int64_t available, const std::string &what)
{
    EXPECT_LE(s.bytesRead, 2 * available + (1 << 20)) << what;
    EXPECT_LE(s.calls, 64 + available / 4096) << what;
}

std::optional<MediaInfo> read(AudioFormat format, const QByteArray &head, std::int64_t length = -1)
{
    SizedSource source(head, length < 0 ? head.size() : length);
    auto info = readMediaInfo(format, QStringLiteral("a"), source);
    expectWithinBudget(source, head.size(), "a file of " + std::to_string(source.length) + " bytes");
    return info;
}

// Little-endian field written into a header under test.
QByteArray put(QByteArray b, int at, std::uint32_t v, int width = 4)
{
    for (int i = 0; i < width; ++i)
        b[at + i] = static_cast<char>(v >> (8 * i));
    return b;
}

QByteArray wav(std::uint16_t channels, std::uint32_t rate)
{
    return put(put(QByteArrayLiteral("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0") + QByteArray(24, '\0'), 22, channels, 2), 24, rate);
}

// A one-segment first page, then the Vorbis identification header: 2 channels, 48 kHz.
QByteArray ogg(std::uint32_t nominal)
{
    const QByteArray b = QByteArrayLiteral("OggS\0\x02") + QByteArray(20, '\0') + "\x01\x1e\x01vorbis" + QByteArray(23, '\0');
    return put(put(put(b, 39, 2, 1), 40, 48000), 48, nominal);
}

// Stream version 7, which no tool at hand writes any more.
QByteArray mpc(std::uint32_t frames, std::uint8_t rateByte = 0)
{
    return put(put(QByteArrayLiteral("MP+\x17") + QByteArray(21, '\0'), 4, frames), 10, rateByte, 1);
}

// A number of stream version 8: seven bits a byte, most significant first, high bit on all but the last.
QByteArray mpckNumber(std::uint64_t v)
{
    QByteArray b;
    do {
        b.prepend(static_cast<char>(v & 0x7F));
        v >>= 7;
    } while (v);
    for (qsizetype i = 0; i + 1 < b.size(); ++i)
        b[i] = static_cast<char>(b[i] | 0x80);
    return b;
}

// A packet whose size counts its key and its own size bytes.
QByteArray packet(const char *key, const QByteArray &payload)
{
    qsizetype sizeBytes = 1;
    while (mpckNumber(static_cast<std::uint64_t>(2 + sizeBytes + payload.size())).size() != sizeBytes)
        ++sizeBytes;
    return key + mpckNumber(static_cast<std::uint64_t>(2 + sizeBytes + payload.size())) + payload;
}

// The stream-header packet: CRC, version, sample count (after padding bytes that add leading
// zero groups), beginning silence, rate byte, channel byte.
QByteArray streamHeader(std::uint64_t samples, std::uint64_t silence = 0, std::uint8_t rateByte = 0x00,
                        std::uint8_t channelByte = 0x10, char version = 8, int padding = 0)
{
    return packet("SH", QByteArray(4, '\x5A') + version + QByteArray(padding, '\x80') + mpckNumber(samples)
                            + mpckNumber(silence) + static_cast<char>(rateByte) + static_cast<char>(channelByte));
}

// Stream version 8 as today's encoder lays it out: the stream header first, then replay gain.
QByteArray mpck(const QByteArray &sh) { return "MPCK" + sh + packet("RG", QByteArray(10, '\0')); }

// count frames with the given four header bytes, each padded with zeros to length bytes.
QByteArray frames(int count, const char (&header)[5], int length)
{
    return (QByteArray(header, 4) + QByteArray(length - 4, '\0')).repeated(count);
}

// MPEG-1 Layer III, 128 kbit/s, 44.1 kHz, joint stereo: 417 bytes a frame.
QByteArray cbr128(int count) { return frames(count, "\xFF\xFB\x90\x44", 417); }

} // namespace

TEST(Readers, EncodedFixtures)
{
    const struct { AudioFormat format; const char *folder, *file; MediaInfo expected; } cases[] = {
        {Wav, "wav", "mono-8bit-8000.wav", row({"mono-8bit-8000.wav", "2", "0:00:00", "128", "8000", "Mono"})},
        {Wav, "wav", "stereo-16bit-44100.wav", row({"stereo-16bit-44100.wav", "9", "0:00:00", "1411", "44100", "Stereo"})},
        {Ogg, "ogg", "q-nominal160.ogg", row({"q-nominal160.ogg", "7", "0:00:00", "~160", "44100", "2"})},
        {Ogg, "ogg", "mono.ogg", row({"mono.ogg", "4", "0:00:01", "~48", "44100", "1"})},
        {Mp3, "mp3", "cbr128-joint.mp3", row({"cbr128-joint.mp3", "9", "0:00:01", "128", "44100", "Joint Stereo"})},
        {Mp3, "mp3", "vbr.mp3", row({"vbr.mp3", "12", "0:00:01", "~177", "44100", "Joint Stereo"})},
        {Mp3, "mp3", "mpeg2-24k.mp3", row({"mpeg2-24k.mp3", "4", "0:00:01", "64", "24000", "Joint Stereo"})},
        {Mp3, "mp3", "mpeg25-8k.mp3", row({"mpeg25-8k.mp3", "1", "0:00:01", "16", "8000", "Joint Stereo"})},
        {Mp3, "mp3", "mono.mp3", row({"mono.mp3", "4", "0:00:01", "64", "44100", "Mono "})},
        // Stereo frames whose fourth byte is 0x04 read as joint stereo: the byte below 16 rule.
        {Mp3, "mp3", "cbr320-stereo.mp3", row({"cbr320-stereo.mp3", "18", "0:00:00", "320", "44100", "Joint Stereo"})},
        // 66,150 samples: 1.5 s, a tie that goes to 2.
        {Mpc, "mpc", "stereo-44100.mpc", row({"stereo-44100.mpc", "7", "0:00:02", "~38", "44100", "2"})},
        {Mpc, "mpc", "mono-48000.mpc", row({"mono-48000.mpc", "4", "0:00:01", "~47", "48000", "1"})},
    };
    PosixFiles files;
    for (const auto &c : cases)
        EXPECT_EQ(readMediaInfo(c.format, dataDir(c.folder), QLatin1String(c.file), files), c.expected) << c.file;
    // The folder is taken with its trailing "/"; a file that cannot be opened gives no row.
    EXPECT_FALSE(readMediaInfo(Wav, dataDir("wav").chopped(1), QStringLiteral("mono-8bit-8000.wav"), files));
    EXPECT_FALSE(readMediaInfo(Mp3, dataDir("mp3"), QStringLiteral("missing.mp3"), files));
}

TEST(Readers, PatchedHeaders)
{
    const struct { AudioFormat format; QByteArray head; std::int64_t size; std::optional<MediaInfo> expected; } cases[] = {
        {Wav, wav(2, 44100), 10'584'044, row({"a", "10336", "0:01:00", "1411", "44100", "Stereo"})},
        {Wav, wav(6, 48000), 4096, row({"a", "4", "0:00:00", "1536", "48000", "Stereo"})},
        {Wav, wav(1, 8000), 1536, row({"a", "2", "0:00:00", "128", "8000", "Mono"})}, // 1.5 KB
        {Wav, wav(1, 8000), 2560, row({"a", "2", "0:00:00", "128", "8000", "Mono"})}, // 2.5 KB
        {Wav, wav(2, 0), 44, row({"a", "0", "", "0", "", "Stereo"})},
        {Wav, wav(2, 3'000'000), 44, row({"a", "0"})}, // the bit rate overflows 16 bits
        {Wav, wav(2, 44100).replace(0, 4, "riff"), 44, std::nullopt},
        {Wav, wav(2, 44100).replace(8, 4, "AVI "), 44, std::nullopt},
        {Wav, wav(2, 44100).replace(12, 4, "LIST"), 44, std::nullopt},
        {Wav, put(wav(2, 44100), 20, 3, 2), 44, std::nullopt}, // IEEE float
        // The whole 44-byte header must be there: one byte short is no row, however valid its start.
        {Wav, wav(2, 44100).left(43), -1, std::nullopt},
        {Wav, wav(1, 8000), -1, row({"a", "0", "0:00:00", "128", "8000", "Mono"})},
        // No 1.024 factor: 1024 KB * 8 / 128 = 64 s.
        {Ogg, ogg(128000), 1'048'576, row({"a", "1024", "0:01:04", "~128", "48000", "2"})},
        // 2.5 kbps shows as 2, but the duration uses 2.5: 80 / 2.5 = 32 s.
        {Ogg, ogg(2500), 10 * 1024, row({"a", "10", "0:00:32", "~2", "48000", "2"})},
        {Ogg, ogg(0), 5000, row({"a", "5", "", "~0", "48000", "2"})},
        {Ogg, ogg(0xFFFFFFFF), 100'000'000, row({"a", "97656", "0:00:00", "~4294967", "48000", "2"})},
        {Ogg, ogg(128000).replace(0, 4, "oggs"), 5000, std::nullopt},
        {Ogg, ogg(128000).insert(27, '\x01'), 5000, std::nullopt}, // "vorbis" one byte later
        {Mpc, mpc(10'000), 4'096'000, row({"a", "4000", "0:04:21", "~125", "44100", "n/a"})},
        {Mpc, mpc(10'000, 0x12), 4'096'000, row({"a", "4000", "0:05:05", "~108", "37800", "n/a"})},
        // Below 16 the byte has no second hexadecimal digit: index "00", not "10" or "11".
        {Mpc, mpc(10'000, 0x02), 4'096'000, row({"a", "4000", "0:04:21", "~125", "44100", "n/a"})},
        // The sample count is 32-bit: the largest frame count that fits, then one more.
        {Mpc, mpc(1'864'135), 700'000'000, row({"a", "683594", "13:31:36", "~115", "44100", "n/a"})},
        {Mpc, mpc(1'864'136), 700'000'000, row({"a", "683594"})},
        {Mpc, mpc(0), 4096, row({"a", "4"})},
        // Stream version 8: the 4,096,000-byte example again, now as samples.
        {Mpc, mpck(streamHeader(11'520'000)), 4'096'000, row({"a", "4000", "0:04:21", "~125", "44100", "2"})},
        // The beginning silence is not played: 2.5 s remain, a tie that goes to 2.
        {Mpc, mpck(streamHeader(154'350, 44'100)), 10 * 1024, row({"a", "10", "0:00:02", "~33", "44100", "2"})},
        // Rate from the top three bits, channels from the top four, whatever the bits below.
        {Mpc, mpck(streamHeader(480'000, 0, 0x3F, 0x5F)), 100 * 1024, row({"a", "100", "0:00:10", "~82", "48000", "6"})},
        {Mpc, mpck(streamHeader(378'000, 0, 0x40, 0x00)), 100 * 1024, row({"a", "100", "0:00:10", "~82", "37800", "1"})},
        {Mpc, mpck(streamHeader(320'000, 0, 0x60, 0xF0)), 100 * 1024, row({"a", "100", "0:00:10", "~82", "32000", "16"})},
        // Other packets before it are stepped over, up to one that starts at the last byte of 64 KB.
        {Mpc, "MPCK" + packet("SE", QByteArray(300, '\xFF')) + streamHeader(441'000), 1024,
         row({"a", "1", "0:00:10", "~1", "44100", "2"})},
        {Mpc, "MPCK" + packet("EI", QByteArray(65'531 - 5, '\0')) + streamHeader(441'000), 1024,
         row({"a", "1", "0:00:10", "~1", "44100", "2"})},
        // Once "MPCK" matched, every failure leaves name and size.
        {Mpc, "MPCK" + packet("EI", QByteArray(65'532 - 5, '\0')) + streamHeader(441'000), 1024, row({"a", "1"})},
        {Mpc, QByteArrayLiteral("MPCK"), 4096, row({"a", "4"})},
        {Mpc, "MPCK" + packet("RG", QByteArray(10, '\0')), 4096, row({"a", "4"})}, // no stream header
        {Mpc, mpck(streamHeader(441'000)).replace(4, 1, "1"), 4096, row({"a", "4"})},
        {Mpc, mpck(streamHeader(441'000)).replace(6, 1, "\x02"), 4096, row({"a", "4"})}, // smaller than key and size
        {Mpc, "MPCKSH" + QByteArray(9, '\x80'), 4096, row({"a", "4"})}, // a size that never ends
        // A number takes eight bytes at most, however many leading zero groups pad it.
        {Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 8, 5)), 4096, row({"a", "4", "0:00:10", "~3", "44100", "2"})},
        {Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 8, 6)), 4096, row({"a", "4"})},
        {Mpc, mpck(streamHeader(441'000)).replace(6, 1, "\x0C"), 4096, row({"a", "4"})}, // shorter than its fields
        {Mpc, mpck(streamHeader(441'000)).left(16), 4096, row({"a", "4"})}, // the file ends before rate and channels
        {Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 7)), 4096, row({"a", "4"})},
        {Mpc, mpck(streamHeader(441'000, 0, 0x80)), 4096, row({"a", "4"})}, // rate index 4
        {Mpc, mpck(streamHeader(0)), 4096, row({"a", "4"})},
        {Mpc, mpck(streamHeader(44'100, 44'100)), 4096, row({"a", "4"})},
        {Mpc, mpck(streamHeader(std::uint64_t{1} << 50)), 4096, row({"a", "4"})}, // beyond 32-bit seconds
        {Mpc, mpck(streamHeader(441'000)).replace(0, 4, "MPCk"), 4096, std::nullopt},
        // The MP3 frame walk. Bytes below 16 read as sixteen times their value: 09 -> 128 kbps, 04 -> joint stereo.
        {Mp3, frames(3, "\xFF\xFB\x09\x04", 417), -1, row({"a", "1", "0:00:00", "128", "44100", "Joint Stereo"})},
        {Mp3, frames(3, "\xFF\xFB\x90\x10", 417), -1, row({"a", "1", "0:00:00", "128", "44100", "Stereo"})},
        {Mp3, frames(3, "\xFF\xFB\x90\x84", 417), -1, row({"a", "1", "0:00:00", "128", "44100", "Dual"})},
        // Padded frames are a byte longer: the walk passes the marker in their last two bytes.
        {Mp3, (frames(1, "\xFF\xFB\x9A\x44", 575) + "\xFF\xFB").repeated(3), -1,
         row({"a", "2", "0:00:00", "128", "32000", "Joint Stereo"})},
        // One frame at 160 among 199 at 128 averages 128.16, still marked as variable.
        {Mp3, cbr128(100) + frames(1, "\xFF\xFB\xA0\x44", 522) + cbr128(99), -1,
         row({"a", "82", "0:00:05", "~128", "44100", "Joint Stereo"})},
        // MPEG-2 at 24 kHz, then index "11" halves the kept rate again; the last frame decides.
        {Mp3, frames(5, "\xFF\xF3\x84\x44", 192) + frames(1, "\xFF\xF3\x8C\xC4", 384), -1,
         row({"a", "1", "0:00:00", "64", "12000", "Mono "})},
        {Mp3, QByteArray(10240, '\0') + cbr128(30), -1, row({"a", "22", "0:00:01", "128", "44100", "Joint Stereo"})},
        {Mp3, QByteArray(10241, '\0') + cbr128(30), -1, std::nullopt}, // first header at 10,242
        {Mp3, QByteArray(10241, '\0') + cbr128(30).mid(1), -1, std::nullopt}, // no marker in the bytes searched: no header
        {Mp3, frames(5, "\xFF\xFB\x9C\x44", 417), -1, std::nullopt}, // sample index "11" first
        {Mp3, frames(5, "\xFF\xFD\x90\x44", 417), -1, std::nullopt}, // layer II
        // Free format (third byte 0) steps back onto the same header for ever.
        {Mp3, cbr128(50) + frames(50, "\xFF\xFB\x00\x44", 417), -1, std::nullopt},
        {Mp3, cbr128(10), std::int64_t{1} << 31, std::nullopt},
        // Three-byte frames at the forbidden bit rate "1", the shortest the walk accepts, up to its limit.
        {Mp3, QByteArray("\xFF\xFB\xF6", 3).repeated(10'000'000), -1, row({"a", "29297", "66:40:01", "1", "48000", "Stereo"})},
        {Mp3, QByteArray("\xFF\xFB\xF6", 3).repeated(10'000'001), -1, std::nullopt},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(read(c.format, c.head, c.size), c.expected) << "case " << &c - cases;
    }
}

// The MP3 walk reads a window at a time. A file that shrank under it reads as zeros past its new
// end, never as the bytes of the window before; a read that fails leaves no row.
TEST(Readers, Mp3FileThatShrinksOrFailsWhileRead)
{
    // 128 kbit/s frames, then 160 kbit/s ones up to 40 KB past the first 256 KB window.
    const QByteArray head = cbr128(100) + frames(503, "\xFF\xFB\xA0\x44", 522);
    EXPECT_EQ(read(Mp3, head, 600'000), row({"a", "586", "0:00:31", "~155", "44100", "Joint Stereo"}));
    SizedSource failing(head, head.size());
    failing.failFrom = 256 * 1024;
    EXPECT_FALSE(readMediaInfo(Mp3, QStringLiteral("a"), failing));
}
