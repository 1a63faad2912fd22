// The input, cut or padded with zeros to the record's length, is the configuration file; a load may
// end early at a refused value, but what is then saved reads back whole and saves again unchanged.
#include <QLocale>

#include "fuzzing.h"
#include "settings/configfile.h"

// Loads the bytes into fresh controls, then saves them as the window does at close.
static std::pair<bool, QByteArray> loadThenSave(const QByteArray &bytes)
{
    kvfuzz::MemoryFile in, out;
    in.bytes = bytes;
    kv::SettingsControls controls(QLocale(QLocale::English, QLocale::UnitedStates));
    kv::ConfigRecord record;
    const bool loaded = kv::LoadConfig(QStringLiteral("/config/kestrvan.cfg"), in, controls, record);
    KV_FUZZ_CHECK(kv::SaveConfig(QStringLiteral("/config/kestrvan.cfg"), out, controls, record));
    return {loaded, out.bytes.value_or(QByteArray())};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes = kvfuzz::bytesOf(data, size).left(kv::ConfigRecord::kSize);
    bytes.append(QByteArray(kv::ConfigRecord::kSize - bytes.size(), '\0'));
    const QByteArray saved = loadThenSave(bytes).second;
    KV_FUZZ_CHECK(saved.size() == kv::ConfigRecord::kSize);
    KV_FUZZ_CHECK(loadThenSave(saved) == std::pair(true, saved));
    return 0;
}
