#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include <QFile>

#include "media/readers.h"
#include "mediatesting.h"
#include "platform/posix/posixfiles.h"

using namespace kv;
using namespace kv::testing;

namespace {

constexpr AudioFormat kFormats[] = {AudioFormat::Wav, AudioFormat::Mp3, AudioFormat::Ogg, AudioFormat::Mpc};
constexpr struct { AudioFormat format; const char *folder, *file; } kFixtures[] = {
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
            // The MP3 walk takes any byte pair that looks like a header as a frame, so it may
            // list other formats' files; the header readers list only their own.
            if (other == AudioFormat::Mp3 && f.format != AudioFormat::Mp3)
                continue;
            const auto info = readMediaInfo(other, dataDir(f.folder), QLatin1String(f.file), files);
            EXPECT_EQ(info.has_value(), other == f.format) << f.file;
        }
        EXPECT_FALSE(readMediaInfo(f.format, dataDir(f.folder), QStringLiteral("missing"), files));
        EXPECT_FALSE(readMediaInfo(f.format, dataDir(f.folder).chopped(1), QLatin1String(f.file), files));
    }
}

TEST(Readers, GarbageAndTruncatedFilesNeverCrashOrHang)
{
    std::mt19937 random(20240601);
    const auto randomBytes = [&](int size) {
        QByteArray b(size, '\0');
        // Many 0xFF and small bytes, so that the MP3 walk meets many candidate headers.
        for (auto &c : b)
            c = static_cast<char>(random() % 3 == 0 ? 0xFF : random() % 2 ? random() % 16 : random() % 256);
        return b;
    };
    std::vector<QByteArray> inputs;
    for (int n = 0; n < 300; ++n)
        inputs.push_back(randomBytes(static_cast<int>(random() % 30000)));
    for (const auto &f : kFixtures) {
        QFile file(dataDir(f.folder) + QLatin1String(f.file));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        for (int cut : {1, 4, 24, 28, 43, 51, 418, 2000})
            inputs.push_back(whole.left(cut));
        for (int i = 0; i < 20; ++i)
            inputs.push_back(QByteArray(whole).replace(static_cast<int>(random() % whole.size()), 64, randomBytes(64)));
    }
    // Valid signatures in front of garbage reach the arithmetic of every reader.
    const QByteArray signatures[] = {QByteArrayLiteral("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0"), "MP+",
                                     QByteArrayLiteral("OggS") + QByteArray(25, '\0') + "vorbis"};
    for (const QByteArray &signature : signatures)
        for (int n = 0; n < 50; ++n)
            inputs.push_back(signature + randomBytes(30));

    for (const QByteArray &b : inputs) {
        for (AudioFormat format : kFormats) {
            MemoryByteSource source(b);
            const auto start = std::chrono::steady_clock::now();
            const auto info = readMediaInfo(format, QStringLiteral("x"), source);
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
            EXPECT_TRUE(!info || (*info)[MediaInfo::Name] == QStringLiteral("x"));
        }
    }
}
