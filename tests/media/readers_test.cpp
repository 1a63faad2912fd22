#include <gtest/gtest.h>

#include <QDir>

#include "media/readers.h"
#include "platform/posix/posixfiles.h"
#include "support/bytefiles.h"
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace kv;
using enum kv::AudioFormat;

namespace {

// A file of `length` bytes of which only head can be read, and nothing from failFrom on.
struct SizedSource : MemoryByteSource
{
    SizedSource(QByteArray head, std::int64_t length, std::int64_t failFrom)
        : MemoryByteSource(std::move(head)), length(length), failFrom(failFrom) {}
    std::int64_t size() const override { return length; }
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        ++calls;
        const std::int64_t got = offset >= failFrom ? -1 : MemoryByteSource::read(offset, dst, n);
        bytesRead += std::max<std::int64_t>(got, 0);
        return got;
    }
    std::int64_t length, failFrom, calls = 0, bytesRead = 0;
};

QString text(const std::optional<MediaInfo> &r)
{
    return r ? QStringList(r->columns.begin(), r->columns.end()).join(QLatin1Char('|')) : QStringLiteral("no row");
}

// At most two passes over the bytes (their own length unless told), in large reads: bounds the
// work, where a clock would be flaky.
QString read(AudioFormat format, const QByteArray &head, std::int64_t length = 0, std::int64_t failFrom = INT64_MAX)
{
    SizedSource s(head, length ? length : head.size(), failFrom);
    const QString row = text(readMediaInfo(format, QStringLiteral("a"), s));
    EXPECT_LE(s.bytesRead, 2 * head.size() + (1 << 20)) << row.toStdString();
    EXPECT_LE(s.calls, 64 + head.size() / 4096) << row.toStdString();
    return row;
}

QByteArray frames(int count, const char (&header)[5], int length) { return (QByteArray(header, 4) + QByteArray(length - 4, '\0')).repeated(count); }

} // namespace

// Each file's row, or "no row", is in the record: the encoded fixtures, read through the files, and
// the fuzz seeds, headers patched at the edges the readers must hold; a seed named "...@N" claims
// N bytes, of which only those it holds can be read. cbr320-stereo.mp3 holds stereo frames whose
// fourth byte 04 reads as joint stereo; stereo-44100.mpc lasts 1.5 s, shown as 2.
TEST(Readers, FixturesAndSeedsAsRecorded)
{
    QStringList lines;
    PosixFiles files;
    for (const char *folder : {"data/%1/", "fuzz/%1/seeds/"}) {
        for (const char *type : {"wav", "ogg", "mp3", "mpc"}) {
            const QString label = QString::fromLatin1(folder).arg(QLatin1String(type));
            const QString path = QStringLiteral(KV_TEST_DATA_DIR "/../") + label;
            const AudioFormat format = *formatFromPattern(QStringLiteral("*.") + QLatin1String(type));
            for (const QString &name : QDir(path).entryList(QDir::Files)) {
                const QByteArray bytes = readAll(path + name);
                const qint64 claimed = name.section(QLatin1Char('@'), 1).section(QLatin1Char('.'), 0, 0).toLongLong();
                const QString row = label.startsWith(QLatin1String("fuzz")) ? read(format, bytes, claimed)
                                                                            : text(readMediaInfo(format, path, name, files));
                lines << label + name + QStringLiteral(": ") + row;
            }
        }
    }
    // The folder is taken with its trailing "/"; a file that cannot be opened gives no row.
    EXPECT_FALSE(readMediaInfo(Wav, QStringLiteral(KV_TEST_DATA_DIR "/wav"), QStringLiteral("mono-8bit-8000.wav"), files));
    EXPECT_FALSE(readMediaInfo(Mp3, QStringLiteral(KV_TEST_DATA_DIR "/mp3/"), QStringLiteral("missing.mp3"), files));

    // Too large to keep: the most 3-byte frames the walk takes, and one more.
    const QByteArray tiny = QByteArray("\xFF\xFB\xF6", 3).repeated(10'000'000);
    lines << QStringLiteral("10,000,000 frames: ") + read(Mp3, tiny);
    lines << QStringLiteral("10,000,001 frames: ") + read(Mp3, tiny + "\xFF\xFB\xF6");
    // 160 kbit/s frames up to 40 KB past the first 256 KB window, in a file that shrank: the rest
    // reads as zeros, never as the bytes of the window before.
    const QByteArray shrunk = frames(100, "\xFF\xFB\x90\x44", 417) + frames(503, "\xFF\xFB\xA0\x44", 522);
    lines << QStringLiteral("shrunk while read: ") + read(Mp3, shrunk, 600'000);
    lines << QStringLiteral("unreadable from 256 KB on: ") + read(Mp3, shrunk, 0, 256 * 1024);
    test::expectAsRecorded(QStringLiteral("media-readers"), lines);
}
