// Loading the configuration record. The input, cut or padded with zeros to the record's length,
// is the file; a load may end early at a refused value, but whatever the program then saves it
// reads back whole, and saving that again changes no byte.
#include <QLocale>

#include "fuzzing.h"
#include "settings/configfile.h"

namespace {

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

// Loads the bytes into fresh controls, then saves them as the window does at close: whether the
// load completed, and what was saved.
std::pair<bool, QByteArray> loadThenSave(const QByteArray &bytes)
{
    const QString path = QStringLiteral("/config/kestrvan.cfg");
    MemoryFile in, out;
    in.bytes = bytes;
    kv::SettingsControls controls(QLocale(QLocale::English, QLocale::UnitedStates));
    kv::ConfigRecord record;
    const bool loaded = kv::LoadConfig(path, in, controls, record);
    KV_FUZZ_CHECK(kv::SaveConfig(path, out, controls, record));
    return {loaded, out.bytes.value_or(QByteArray())};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes = kvfuzz::bytesOf(data, size).left(kv::ConfigRecord::kSize);
    bytes.append(QByteArray(kv::ConfigRecord::kSize - bytes.size(), '\0'));
    const QByteArray saved = loadThenSave(bytes).second;
    KV_FUZZ_CHECK(saved.size() == kv::ConfigRecord::kSize);
    KV_FUZZ_CHECK(loadThenSave(saved) == std::pair(true, saved));
    return 0;
}
