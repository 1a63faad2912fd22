// The Musepack reader, both stream versions as the listing meets them.
#include "media/mpcreader.h"
#include "readerfuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    kvfuzz::checkReader(kv::readMpcInfo, kvfuzz::bytesOf(data, size));
    return 0;
}
