// The Musepack stream-version-8 packet walk: the input follows the "MPCK" signature, so every
// execution reaches the packets, and there is a row, name and size at least, whatever follows.
#include "fuzzing.h"
#include "media/mpcreader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    KV_FUZZ_CHECK(kvfuzz::checkReader(kv::readMpcInfo, QByteArrayLiteral("MPCK") + kvfuzz::bytesOf(data, size)));
    return 0;
}
