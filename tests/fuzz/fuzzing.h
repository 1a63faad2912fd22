#pragma once
// The entry every target defines, called by libFuzzer or, in the test run, by replaymain.cpp.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QLocale>

#include "media/mediainfo.h"
#include "platform/files.h"
#include "settings/configfile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// A broken property is a crash, which libFuzzer and the replay both report with the input.
#define KV_FUZZ_CHECK(condition) \
    ((condition) ? void(0) : (std::fprintf(stderr, "%s:%d: property broken: %s\n", __FILE__, __LINE__, #condition), std::abort()))

namespace kvfuzz {

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size) { return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)); }

// The input as UTF-16 code units, lone surrogates included; copied, as the input need not be aligned.
inline QString utf16Of(const std::uint8_t *data, std::size_t size)
{
    QString text(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(text.data(), data, (size / 2) * 2);
    return text;
}

// At most a few bytes per read, as from a pipe: a reader must gather what it needs.
struct TricklingByteSource : kv::MemoryByteSource
{
    using MemoryByteSource::MemoryByteSource;
    std::int64_t read(std::int64_t offset, char *dst, std::int64_t n) override
    {
        return MemoryByteSource::read(offset, dst, std::min<std::int64_t>(n, 7));
    }
};

// The one file the configuration code reads and writes, in memory.
struct MemoryFile : kv::Files
{
    std::optional<QByteArray> bytes;
    std::optional<std::int64_t> fileSize(const QString &) override { return bytes ? std::optional<std::int64_t>(bytes->size()) : std::nullopt; }
    std::unique_ptr<kv::ByteSource> open(const QString &) override { return nullptr; }
    kv::RemoveResult remove(const QString &) override { return kv::RemoveResult::OtherError; }
    std::optional<QByteArray> readAll(const QString &) override { return bytes; }
    bool writeAtStart(const QString &, const QByteArray &b) override { return bytes = b, true; }
};

// A configuration loaded into fresh controls, as the window does at start, and saved as at close.
struct LoadedConfig
{
    explicit LoadedConfig(const QByteArray &bytes)
    {
        file.bytes = bytes;
        completed = kv::LoadConfig(QStringLiteral("/config/kestrvan.cfg"), file, controls, record);
    }
    QByteArray save(kv::ConfigRecord into) const
    {
        MemoryFile out;
        KV_FUZZ_CHECK(kv::SaveConfig(QStringLiteral("/config/kestrvan.cfg"), out, controls, into));
        return *out.bytes;
    }
    MemoryFile file;
    kv::SettingsControls controls{QLocale(QLocale::English, QLocale::UnitedStates)};
    kv::ConfigRecord record;
    bool completed = false;
};

// A reader never throws, a row starts with the file's name, and the row does not depend on how
// the bytes arrive or on what an earlier file left behind.
inline std::optional<kv::MediaInfo> checkReader(std::optional<kv::MediaInfo> (*read)(const QString &, kv::ByteSource &), const QByteArray &bytes)
{
    const QString name = QStringLiteral("input.bin");
    kv::MemoryByteSource whole(bytes);
    TricklingByteSource trickle(bytes);
    const std::optional<kv::MediaInfo> row = read(name, whole);
    KV_FUZZ_CHECK(!row || (*row)[kv::MediaInfo::Name] == name);
    KV_FUZZ_CHECK(read(name, trickle) == row);
    return row;
}

} // namespace kvfuzz

// The entry of a target that checks one reader on the input as it is.
#define KV_FUZZ_READER(read) \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) { return kvfuzz::checkReader(read, kvfuzz::bytesOf(data, size)), 0; }
