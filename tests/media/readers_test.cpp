#include <gtest/gtest.h>

#include <QDir>

#include "media/readers.h"
#include "platform/posix/posixfiles.h"
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace kv;
using enum kv::AudioFormat;

namespace {

// A file of `length` bytes of which only head can be read, and nothing from failFrom on; it
// counts the reads it serves.
struct SizedSource : MemoryByteSource
{
    SizedSource(QByteArray head, std::int64_t length) : MemoryByteSource(std::move(head)), length(length) {}
    std::int64_t size() const override { return length; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        ++calls;
        const std::int64_t got = offset >= failFrom ? -1 : MemoryByteSource::read(offset, dst, n);
        bytesRead += std::max<std::int64_t>(got, 0);
        return got;
    }
    std::int64_t length, failFrom = std::numeric_limits<std::int64_t>::max(), calls = 0, bytesRead = 0;
};

QString text(const std::optional<MediaInfo> &r)
{
    return r ? QStringList(r->columns.begin(), r->columns.end()).join(QLatin1Char('|')) : QStringLiteral("no row");
}

// At most two passes over the bytes, in large reads: bounds the work, where a clock would be flaky.
QString read(AudioFormat format, const QByteArray &head, std::int64_t length = -1)
{
    SizedSource s(head, length < 0 ? head.size() : length);
    const QString row = text(readMediaInfo(format, QStringLiteral("a"), s));
    EXPECT_LE(s.bytesRead, 2 * head.size() + (1 << 20)) << row.toStdString();
    EXPECT_LE(s.calls, 64 + head.size() / 4096) << row.toStdString();
    return row;
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
QByteArray mpc(std::uint32_t frames, std::uint8_t rateByte = 0) { return put(put("MP+\x17" + QByteArray(21, '\0'), 4, frames), 10, rateByte, 1); }

// A number of stream version 8: seven bits a byte, most significant first, high bit on all but the last.
QByteArray mpckNumber(std::uint64_t v)
{
    QByteArray b(1, static_cast<char>(v & 0x7F));
    while (v >>= 7)
        b.prepend(static_cast<char>(0x80 | (v & 0x7F)));
    return b;
}

// A packet whose size counts its key and its own size bytes.
QByteArray packet(const char *key, const QByteArray &payload)
{
    qsizetype n = 1;
    while (mpckNumber(2 + n + payload.size()).size() != n)
        ++n;
    return key + mpckNumber(2 + n + payload.size()) + payload;
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
QByteArray frames(int count, const char (&header)[5], int length) { return (QByteArray(header, 4) + QByteArray(length - 4, '\0')).repeated(count); }

// MPEG-1 Layer III, 128 kbit/s, 44.1 kHz, joint stereo: 417 bytes a frame.
QByteArray cbr128(int count) { return frames(count, "\xFF\xFB\x90\x44", 417); }

} // namespace

// Each case's row, or "no row", is in the record. Of the fixtures, cbr320-stereo.mp3 holds stereo
// frames whose fourth byte 04 reads as joint stereo, and stereo-44100.mpc lasts 1.5 s, shown as 2.
TEST(Readers, EncodedFixturesAndPatchedHeadersAsRecorded)
{
    QStringList lines;
    PosixFiles files;
    for (const char *folder : {"wav", "ogg", "mp3", "mpc"}) {
        const QString path = QStringLiteral(KV_TEST_DATA_DIR "/%1/").arg(QLatin1String(folder));
        const AudioFormat format = *formatFromPattern(QStringLiteral("*.") + QLatin1String(folder));
        for (const QString &name : QDir(path).entryList(QDir::Files))
            lines << QLatin1String(folder) + QStringLiteral(": ") + text(readMediaInfo(format, path, name, files));
    }
    // The folder is taken with its trailing "/"; a file that cannot be opened gives no row.
    EXPECT_FALSE(readMediaInfo(Wav, QStringLiteral(KV_TEST_DATA_DIR "/wav"), QStringLiteral("mono-8bit-8000.wav"), files));
    EXPECT_FALSE(readMediaInfo(Mp3, QStringLiteral(KV_TEST_DATA_DIR "/mp3/"), QStringLiteral("missing.mp3"), files));

    const struct { const char *what; AudioFormat format; QByteArray head; std::int64_t size; } cases[] = {
        {"wav 60 s", Wav, wav(2, 44100), 10'584'044},
        {"wav 6 channels", Wav, wav(6, 48000), 4096},
        {"wav 1.5 KB", Wav, wav(1, 8000), 1536},
        {"wav 2.5 KB", Wav, wav(1, 8000), 2560},
        {"wav rate 0", Wav, wav(2, 0), 44},
        {"wav bit rate overflows 16 bits", Wav, wav(2, 3'000'000), 44},
        {"wav riff", Wav, wav(2, 44100).replace(0, 4, "riff"), 44},
        {"wav AVI", Wav, wav(2, 44100).replace(8, 4, "AVI "), 44},
        {"wav LIST", Wav, wav(2, 44100).replace(12, 4, "LIST"), 44},
        {"wav IEEE float", Wav, put(wav(2, 44100), 20, 3, 2), 44},
        {"wav header one byte short", Wav, wav(2, 44100).left(43), -1},
        {"wav header only", Wav, wav(1, 8000), -1},
        {"ogg 1024 KB at 128, no 1.024 factor", Ogg, ogg(128000), 1'048'576},
        {"ogg 2.5 kbps shown as 2, lasting 80 / 2.5 s", Ogg, ogg(2500), 10 * 1024},
        {"ogg nominal 0", Ogg, ogg(0), 5000},
        {"ogg nominal all ones", Ogg, ogg(0xFFFFFFFF), 100'000'000},
        {"ogg oggs", Ogg, ogg(128000).replace(0, 4, "oggs"), 5000},
        {"ogg vorbis one byte later", Ogg, ogg(128000).insert(27, '\x01'), 5000},
        {"sv7", Mpc, mpc(10'000), 4'096'000},
        {"sv7 rate byte 12", Mpc, mpc(10'000, 0x12), 4'096'000},
        {"sv7 rate byte 02, below 16, as index 00", Mpc, mpc(10'000, 0x02), 4'096'000},
        {"sv7 largest frame count whose samples fit 32 bits", Mpc, mpc(1'864'135), 700'000'000},
        {"sv7 one frame more", Mpc, mpc(1'864'136), 700'000'000},
        {"sv7 no frames", Mpc, mpc(0), 4096},
        {"sv8 the sv7 example as samples", Mpc, mpck(streamHeader(11'520'000)), 4'096'000},
        {"sv8 beginning silence not played, 2.5 s", Mpc, mpck(streamHeader(154'350, 44'100)), 10 * 1024},
        {"sv8 rate and channels from the top bits, 3F 5F", Mpc, mpck(streamHeader(480'000, 0, 0x3F, 0x5F)), 100 * 1024},
        {"sv8 40 00", Mpc, mpck(streamHeader(378'000, 0, 0x40, 0x00)), 100 * 1024},
        {"sv8 60 F0", Mpc, mpck(streamHeader(320'000, 0, 0x60, 0xF0)), 100 * 1024},
        {"sv8 after another packet", Mpc, "MPCK" + packet("SE", QByteArray(300, '\xFF')) + streamHeader(441'000), 1024},
        {"sv8 at the last byte of 64 KB", Mpc, "MPCK" + packet("EI", QByteArray(65'531 - 5, '\0')) + streamHeader(441'000), 1024},
        {"sv8 one byte later", Mpc, "MPCK" + packet("EI", QByteArray(65'532 - 5, '\0')) + streamHeader(441'000), 1024},
        {"sv8 signature only", Mpc, QByteArrayLiteral("MPCK"), 4096},
        {"sv8 no stream header", Mpc, "MPCK" + packet("RG", QByteArray(10, '\0')), 4096},
        {"sv8 key S1", Mpc, mpck(streamHeader(441'000)).replace(4, 1, "1"), 4096},
        {"sv8 size smaller than key and size", Mpc, mpck(streamHeader(441'000)).replace(6, 1, "\x02"), 4096},
        {"sv8 size that never ends", Mpc, "MPCKSH" + QByteArray(9, '\x80'), 4096},
        {"sv8 number of eight bytes", Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 8, 5)), 4096},
        {"sv8 number of nine bytes", Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 8, 6)), 4096},
        {"sv8 packet shorter than its fields", Mpc, mpck(streamHeader(441'000)).replace(6, 1, "\x0C"), 4096},
        {"sv8 file ends before rate and channels", Mpc, mpck(streamHeader(441'000)).left(16), 4096},
        {"sv8 version 7", Mpc, mpck(streamHeader(441'000, 0, 0x00, 0x10, 7)), 4096},
        {"sv8 rate index 4", Mpc, mpck(streamHeader(441'000, 0, 0x80)), 4096},
        {"sv8 no samples", Mpc, mpck(streamHeader(0)), 4096},
        {"sv8 all silence", Mpc, mpck(streamHeader(44'100, 44'100)), 4096},
        {"sv8 beyond 32-bit seconds", Mpc, mpck(streamHeader(std::uint64_t{1} << 50)), 4096},
        {"sv8 MPCk", Mpc, mpck(streamHeader(441'000)).replace(0, 4, "MPCk"), 4096},
        {"mp3 bytes 09 04 read as 90 40", Mp3, frames(3, "\xFF\xFB\x09\x04", 417), -1},
        {"mp3 stereo", Mp3, frames(3, "\xFF\xFB\x90\x10", 417), -1},
        {"mp3 dual", Mp3, frames(3, "\xFF\xFB\x90\x84", 417), -1},
        {"mp3 padded frames, a marker in their last bytes", Mp3, (frames(1, "\xFF\xFB\x9A\x44", 575) + "\xFF\xFB").repeated(3), -1},
        {"mp3 one frame at 160 among 199 at 128", Mp3, cbr128(100) + frames(1, "\xFF\xFB\xA0\x44", 522) + cbr128(99), -1},
        {"mp3 24 kHz, then index 11 halves it", Mp3, frames(5, "\xFF\xF3\x84\x44", 192) + frames(1, "\xFF\xF3\x8C\xC4", 384), -1},
        {"mp3 first header at 10,241", Mp3, QByteArray(10240, '\0') + cbr128(30), -1},
        {"mp3 first header at 10,242", Mp3, QByteArray(10241, '\0') + cbr128(30), -1},
        {"mp3 no marker in the bytes searched", Mp3, QByteArray(10241, '\0') + cbr128(30).mid(1), -1},
        {"mp3 sample index 11 first", Mp3, frames(5, "\xFF\xFB\x9C\x44", 417), -1},
        {"mp3 layer II", Mp3, frames(5, "\xFF\xFD\x90\x44", 417), -1},
        {"mp3 free format steps back for ever", Mp3, cbr128(50) + frames(50, "\xFF\xFB\x00\x44", 417), -1},
        {"mp3 2 GB", Mp3, cbr128(10), std::int64_t{1} << 31},
        {"mp3 most 3-byte frames the walk takes", Mp3, QByteArray("\xFF\xFB\xF6", 3).repeated(10'000'000), -1},
        {"mp3 one more", Mp3, QByteArray("\xFF\xFB\xF6", 3).repeated(10'000'001), -1},
        // 160 kbit/s frames up to 40 KB past the first 256 KB window, in a file that shrank: the
        // rest reads as zeros, never as the bytes of the window before.
        {"mp3 shrunk while read", Mp3, cbr128(100) + frames(503, "\xFF\xFB\xA0\x44", 522), 600'000},
    };
    for (const auto &c : cases)
        lines << QLatin1String(c.what) + QStringLiteral(": ") + read(c.format, c.head, c.size);
    test::expectAsRecorded(QStringLiteral("media-readers"), lines);

    const QByteArray shrunk = cases[std::size(cases) - 1].head;
    SizedSource failing(shrunk, shrunk.size());
    failing.failFrom = 256 * 1024;
    EXPECT_FALSE(readMediaInfo(Mp3, QStringLiteral("a"), failing)) << "a read that fails leaves no row";
}
