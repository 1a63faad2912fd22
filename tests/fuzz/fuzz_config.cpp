// Loading the configuration record. The input, cut or padded with zeros to the record's length,
// is the file; a load may end early at a refused value, but whatever the program then saves it
// reads back whole, and saving that again changes no byte.
#include <optional>

#include <QLocale>

#include "fuzzing.h"
#include "settings/configfile.h"

namespace {

const QString kPath = QStringLiteral("/config/kestrvan.cfg");

// The one file the configuration code reads and writes, in memory.
struct MemoryFile : kv::Files
{
    std::optional<QByteArray> bytes;
    std::optional<std::int64_t> fileSize(const QString &) override
    {
        return bytes ? std::optional<std::int64_t>(bytes->size()) : std::nullopt;
    }
    std::unique_ptr<kv::ByteSource> open(const QString &) override { return nullptr; }
    kv::RemoveResult remove(const QString &) override { return kv::RemoveResult::OtherError; }
    std::optional<QByteArray> readAll(const QString &) override { return bytes; }
    bool writeAtStart(const QString &, const QByteArray &b) override
    {
        bytes = b;
        return true;
    }
};

struct Round
{
    bool loaded = false;
    QByteArray saved;
};

// Loads the bytes into fresh controls, then saves them as the window does at close.
Round loadThenSave(const QByteArray &bytes)
{
    MemoryFile file;
    file.bytes = bytes;
    kv::SettingsControls controls(QLocale(QLocale::English, QLocale::UnitedStates));
    kv::ConfigRecord record;
    Round round;
    round.loaded = kv::LoadConfig(kPath, file, controls, record);
    MemoryFile out;
    KV_FUZZ_CHECK(kv::SaveConfig(kPath, out, controls, record));
    round.saved = out.bytes.value_or(QByteArray());
    return round;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes = kvfuzz::bytesOf(data, size).left(kv::ConfigRecord::kSize);
    bytes.append(QByteArray(kv::ConfigRecord::kSize - bytes.size(), '\0'));

    const Round first = loadThenSave(bytes);
    KV_FUZZ_CHECK(first.saved.size() == kv::ConfigRecord::kSize);
    const Round second = loadThenSave(first.saved);
    KV_FUZZ_CHECK(second.loaded);
    KV_FUZZ_CHECK(second.saved == first.saved);
    return 0;
}
