// The input, cut or padded with zeros to the record's length, is the configuration file; a load may
// end early at a refused value, but what is then saved reads back whole and saves again unchanged.
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes = kvfuzz::bytesOf(data, size).left(kv::ConfigRecord::kSize);
    bytes.append(QByteArray(kv::ConfigRecord::kSize - bytes.size(), '\0'));
    const kvfuzz::LoadedConfig first(bytes);
    const QByteArray saved = first.save(first.record);
    KV_FUZZ_CHECK(saved.size() == kv::ConfigRecord::kSize);
    const kvfuzz::LoadedConfig second(saved);
    KV_FUZZ_CHECK(second.completed && second.save(second.record) == saved);
    return 0;
}
