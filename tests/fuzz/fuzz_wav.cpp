// The WAV reader: a PCM header in the first 44 bytes or no row.
#include "media/wavreader.h"
#include "readerfuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    kvfuzz::checkReader(kv::readWavInfo, kvfuzz::bytesOf(data, size));
    return 0;
}
