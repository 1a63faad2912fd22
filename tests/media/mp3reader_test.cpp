#include <gtest/gtest.h>

#include <chrono>

#include "media/mp3reader.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

// count frames with the given four header bytes, each padded with zeros to length bytes.
QByteArray frames(int count, const char (&header)[5], int length)
{
    return (QByteArray(header, 4) + QByteArray(length - 4, '\0')).repeated(count);
}

// MPEG-1 Layer III, 128 kbit/s, 44.1 kHz, joint stereo: 417 bytes a frame.
QByteArray cbr128(int count) { return frames(count, "\xFF\xFB\x90\x44", 417); }

std::optional<MediaInfo> read(const QByteArray &bytes)
{
    MemoryByteSource source(bytes);
    return readMp3Info(QStringLiteral("a"), source);
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
    const struct { const char *name; QByteArray bytes; MediaInfo expected; } cases[] = {
        {"constant", cbr128(200), row({"a", "81", "0:00:05", "128", "44100", "Joint Stereo"})},
        {"padded", frames(20, "\xFF\xFB\x92\x00", 418), row({"a", "8", "0:00:01", "128", "44100", "Stereo"})},
        {"dual", frames(3, "\xFF\xFB\x90\x80", 417), row({"a", "1", "0:00:00", "128", "44100", "Dual"})},
        // Bytes below 16 read as sixteen times their value.
        {"4th byte 04", frames(3, "\xFF\xFB\x90\x04", 417), row({"a", "1", "0:00:00", "128", "44100", "Joint Stereo"})},
        {"4th byte 0C", frames(3, "\xFF\xFB\x90\x0C", 417), row({"a", "1", "0:00:00", "128", "44100", "Mono "})},
        {"3rd byte 09", frames(3, "\xFF\xFB\x09\x44", 417), row({"a", "1", "0:00:00", "128", "44100", "Joint Stereo"})},
        // One frame at 160 among 199 at 128 averages 128.16, still marked as variable.
        {"one other rate", cbr128(100) + frames(1, "\xFF\xFB\xA0\x44", 522) + cbr128(99),
         row({"a", "82", "0:00:05", "~128", "44100", "Joint Stereo"})},
        {"last frame decides", cbr128(10) + frames(1, "\xFF\xFB\x94\xC4", 384),
         row({"a", "4", "0:00:00", "128", "48000", "Mono "})},
        // MPEG-2 at 24 kHz, then index "11": the kept 24000 is halved once more.
        {"kept rate halved", frames(5, "\xFF\xF3\x84\x44", 192) + frames(1, "\xFF\xF3\x8C\x44", 384),
         row({"a", "1", "0:00:00", "64", "12000", "Joint Stereo"})},
        {"header at 10241", QByteArray(10240, '\0') + cbr128(30), row({"a", "22", "0:00:01", "128", "44100", "Joint Stereo"})},
        {"stray bytes", cbr128(5) + QByteArray("\xFF\x00\x12\xFF\xFF", 5) + cbr128(5),
         row({"a", "4", "0:00:00", "128", "44100", "Joint Stereo"})},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read(c.bytes), c.expected) << c.name;
}

TEST(Mp3Reader, NoRowWithoutACompleteWalk)
{
    const struct { const char *name; QByteArray bytes; } cases[] = {
        {"header at 10242", QByteArray(10241, '\0') + cbr128(30)},
        {"index 11 on the first frame", frames(5, "\xFF\xFB\x9C\x44", 417)},
        {"layer II", frames(5, "\xFF\xFD\x90\x44", 417)},
        {"reserved version", frames(5, "\xFF\xEB\x90\x44", 417)},
        {"cut header", QByteArray("\xFF\xFB", 2)},
        // Free format (third byte 0) steps back onto the same header for ever.
        {"free format first", frames(50, "\xFF\xFB\x00\x44", 417)},
        {"free format later", cbr128(50) + frames(50, "\xFF\xFB\x00\x44", 417)},
        {"free format MPEG-2.5", frames(50, "\xFF\xE3\x28\x44", 144) + frames(5, "\xFF\xE3\x00\xC0", 144)},
    };
    for (const auto &c : cases) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(read(c.bytes)) << c.name;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100)) << c.name;
    }
    SizedSource twoGiB(cbr128(10), std::int64_t{1} << 31);
    EXPECT_FALSE(readMp3Info(QStringLiteral("a"), twoGiB));
}

TEST(Mp3Reader, FrameCapacityIsTenMillion)
{
    // Three-byte frames at the forbidden bit rate "1", the shortest the walk accepts.
    const QByteArray header("\xFF\xFB\xF6", 3);
    EXPECT_EQ(read(header.repeated(10'000'000)), row({"a", "29297", "66:40:01", "1", "48000", "Stereo"}));
    EXPECT_FALSE(read(header.repeated(10'000'001)));
}
