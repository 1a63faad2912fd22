#include <gtest/gtest.h>

#include <chrono>

#include "media/mp3reader.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

// count frames with the given header, each padded with zeros to its length in bytes.
QByteArray frames(int count, const char (&header)[5], int length)
{
    QByteArray one(length, '\0');
    for (int i = 0; i < 4; ++i)
        one[i] = header[i];
    return one.repeated(count);
}

// MPEG-1 Layer III, 128 kbit/s, 44.1 kHz, joint stereo: 417 bytes a frame.
QByteArray cbr128(int count) { return frames(count, "\xFF\xFB\x90\x44", 417); }

std::optional<MediaInfo> read(const QByteArray &bytes)
{
    MemoryByteSource source(bytes);
    return readMp3Info(QStringLiteral("a.mp3"), source);
}

} // namespace

TEST(Mp3Reader, EncodedFixtures)
{
    const struct { const char *file; MediaInfo expected; } cases[] = {
        {"cbr128-joint.mp3", row({"cbr128-joint.mp3", "9", "0:00:01", "128", "44100", "Joint Stereo"})},
        {"vbr.mp3", row({"vbr.mp3", "12", "0:00:01", "~177", "44100", "Joint Stereo"})},
        {"mpeg2-24k.mp3", row({"mpeg2-24k.mp3", "4", "0:00:01", "64", "24000", "Joint Stereo"})},
        {"mpeg25-8k.mp3", row({"mpeg25-8k.mp3", "1", "0:00:01", "16", "8000", "Joint Stereo"})},
        {"mono.mp3", row({"mono.mp3", "4", "0:00:01", "64", "44100", "Mono "})},
    };
    PosixFiles files;
    for (const auto &c : cases)
        EXPECT_EQ(ReadMp3Info(dataDir("mp3"), QLatin1String(c.file), files), c.expected) << c.file;
}

TEST(Mp3Reader, RowsFromFrames)
{
    const QByteArray tail = frames(1, "\xFF\xFB\x94\xC4", 384); // 128 kbit/s at 48 kHz, mono
    const QByteArray mpeg2 = frames(5, "\xFF\xF3\x84\x44", 192); // 64 kbit/s at 24 kHz
    const struct { const char *name; QByteArray bytes; MediaInfo expected; } cases[] = {
        // 81 KB * 8.192 / 128 = 5.2 s
        {"constant bit rate", cbr128(200), row({"a.mp3", "81", "0:00:05", "128", "44100", "Joint Stereo"})},
        {"fourth byte 00", frames(3, "\xFF\xFB\x90\x00", 417), row({"a.mp3", "1", "0:00:00", "128", "44100", "Stereo"})},
        {"fourth byte 80", frames(3, "\xFF\xFB\x90\x80", 417), row({"a.mp3", "1", "0:00:00", "128", "44100", "Dual"})},
        // Bytes below 16 read as sixteen times their value.
        {"fourth byte 04", frames(3, "\xFF\xFB\x90\x04", 417), row({"a.mp3", "1", "0:00:00", "128", "44100", "Joint Stereo"})},
        {"fourth byte 0C", frames(3, "\xFF\xFB\x90\x0C", 417), row({"a.mp3", "1", "0:00:00", "128", "44100", "Mono "})},
        {"third byte 09", frames(3, "\xFF\xFB\x09\x44", 417), row({"a.mp3", "1", "0:00:00", "128", "44100", "Joint Stereo"})},
        // 199 frames at 128 and one at 160 average 128.16: still marked as variable.
        {"one frame at another rate", cbr128(100) + frames(1, "\xFF\xFB\xA0\x44", 522) + cbr128(99),
         row({"a.mp3", "82", "0:00:05", "~128", "44100", "Joint Stereo"})},
        {"padded frames", frames(20, "\xFF\xFB\x92\x44", 418), row({"a.mp3", "8", "0:00:01", "128", "44100", "Joint Stereo"})},
        {"last frame decides rate and channels", cbr128(10) + tail,
         row({"a.mp3", "4", "0:00:00", "128", "48000", "Mono "})},
        // Index "11" keeps 24000 and halves it once more.
        {"kept sample rate is halved again", mpeg2 + frames(1, "\xFF\xF3\x8C\x44", 384),
         row({"a.mp3", "1", "0:00:00", "64", "12000", "Joint Stereo"})},
        {"first header at position 10241", QByteArray(10240, '\0') + cbr128(30),
         row({"a.mp3", "22", "0:00:01", "128", "44100", "Joint Stereo"})},
        {"stray bytes between frames", cbr128(5) + QByteArray("\xFF\x00\x12\xFF\xFF", 5) + cbr128(5),
         row({"a.mp3", "4", "0:00:00", "128", "44100", "Joint Stereo"})},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read(c.bytes), c.expected) << c.name;
}

TEST(Mp3Reader, FilesWithoutAnAcceptedWalkGetNoRow)
{
    const struct { const char *name; QByteArray bytes; } cases[] = {
        {"first header at position 10242", QByteArray(10241, '\0') + cbr128(30)},
        {"sample index 11 on the first frame", frames(5, "\xFF\xFB\x9C\x44", 417)},
        {"layer II", frames(5, "\xFF\xFD\x90\x44", 417)},
        {"layer I", frames(5, "\xFF\xFF\x90\x44", 417)},
        {"reserved version", frames(5, "\xFF\xEB\x90\x44", 417)},
        {"header cut off by the end of the file", QByteArray("\xFF\xFB", 2)},
        {"no bytes", QByteArray()},
        {"not audio", QByteArray(20000, 'x')},
    };
    for (const auto &c : cases)
        EXPECT_FALSE(read(c.bytes)) << c.name;
}

TEST(Mp3Reader, FreeFormatFramesEndWithoutRowAtOnce)
{
    // Free format (a third byte of 0) gives a step of -1, so the walk keeps coming back to the
    // same header; at the very start of the file it steps before the first byte.
    const QByteArray cases[] = {
        frames(50, "\xFF\xFB\x00\x44", 417),
        cbr128(50) + frames(50, "\xFF\xFB\x00\x44", 417),
        frames(50, "\xFF\xF3\x84\x44", 192) + frames(5, "\xFF\xF3\x00\x44", 192),
        frames(50, "\xFF\xE3\x28\x44", 144) + frames(5, "\xFF\xE3\x00\xC0", 144),
    };
    for (const QByteArray &bytes : cases) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(read(bytes));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    }
}

TEST(Mp3Reader, FilesOf2GiBAndMoreGetNoRow)
{
    SizedSource big(cbr128(10), std::int64_t{1} << 31);
    EXPECT_FALSE(readMp3Info(QStringLiteral("a.mp3"), big));
}

TEST(Mp3Reader, FrameCapacityIsTenMillion)
{
    // Three-byte frames at the forbidden bit rate "1": the smallest frames the walk accepts.
    const QByteArray header("\xFF\xFB\xF6", 3);
    EXPECT_EQ(read(header.repeated(10'000'000)),
              row({"a.mp3", "29297", "66:40:01", "1", "48000", "Stereo"}));
    EXPECT_FALSE(read(header.repeated(10'000'001)));
}
