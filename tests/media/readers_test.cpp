#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "media/readers.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

constexpr AudioFormat kFormats[] = {AudioFormat::Wav, AudioFormat::Mp3, AudioFormat::Ogg, AudioFormat::Mpc};

struct Fixture
{
    AudioFormat format;
    const char *folder;
    const char *file;
};

constexpr Fixture kFixtures[] = {
    {AudioFormat::Wav, "wav", "stereo-16bit-44100.wav"},
    {AudioFormat::Mp3, "mp3", "vbr.mp3"},
    {AudioFormat::Ogg, "ogg", "mono.ogg"},
};

} // namespace

TEST(Readers, DispatchByFormatAndPath)
{
    PosixFiles files;
    for (const auto &f : kFixtures) {
        for (AudioFormat other : kFormats) {
            const auto info = readMediaInfo(other, dataDir(f.folder), QLatin1String(f.file), files);
            // The MP3 walk takes any byte pair that looks like a header as a frame, so it may
            // list other formats' files; the header readers list only their own.
            if (other != AudioFormat::Mp3 || f.format == AudioFormat::Mp3) {
                EXPECT_EQ(info.has_value(), other == f.format) << f.file;
            }
            if (info) {
                EXPECT_EQ((*info)[MediaInfo::Name], QLatin1String(f.file));
            }
        }
        EXPECT_FALSE(readMediaInfo(f.format, dataDir(f.folder), QStringLiteral("missing"), files));
        // The folder is taken as given, with its trailing separator.
        EXPECT_FALSE(readMediaInfo(f.format, dataDir(f.folder).chopped(1), QLatin1String(f.file), files));
    }
}

TEST(Readers, GarbageAndTruncatedFilesNeverCrashOrHang)
{
    std::mt19937 random(20240601);
    std::vector<QByteArray> inputs;
    for (int n = 0; n < 300; ++n) {
        QByteArray b(static_cast<int>(random() % 30000), '\0');
        // Bias towards 0xFF and small bytes so that the MP3 walk sees many candidate headers.
        for (auto &c : b) {
            const unsigned r = random() % 8;
            c = static_cast<char>(r < 3 ? 0xFF : r < 5 ? random() % 16 : random() % 256);
        }
        inputs.push_back(b);
    }
    for (const auto &f : kFixtures) {
        const QByteArray whole = fixture(f.folder, f.file);
        for (int cut : {0, 1, 3, 4, 10, 24, 25, 28, 36, 43, 44, 51, 52, 417, 418, 2000})
            inputs.push_back(whole.left(cut));
        QByteArray flipped = whole;
        for (int i = 0; i < 200; ++i)
            flipped[static_cast<int>(random() % flipped.size())] = static_cast<char>(random() % 256);
        inputs.push_back(flipped);
    }
    // Valid signatures in front of garbage reach the arithmetic of every reader.
    QByteArray vorbis(35, '\0');
    vorbis.replace(0, 4, "OggS").replace(29, 6, "vorbis");
    const QByteArray signatures[] = {QByteArray("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0", 22),
                                     QByteArray("MP+"), vorbis, QByteArray("\xFF\xFB", 2)};
    for (const QByteArray &signature : signatures) {
        for (int n = 0; n < 50; ++n) {
            QByteArray b(64, '\0');
            for (auto &c : b)
                c = static_cast<char>(random() % 256);
            inputs.push_back(b.replace(0, signature.size(), signature));
        }
    }

    for (const QByteArray &b : inputs) {
        for (AudioFormat format : kFormats) {
            MemoryByteSource source(b);
            const auto start = std::chrono::steady_clock::now();
            const auto info = readMediaInfo(format, QStringLiteral("x"), source);
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
            if (info) {
                EXPECT_EQ((*info)[MediaInfo::Name], QStringLiteral("x"));
            }
        }
    }
}
