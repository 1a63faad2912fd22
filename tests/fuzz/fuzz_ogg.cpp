// The Ogg Vorbis reader: the identification header on the first page.
#include "media/oggreader.h"
#include "readerfuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    kvfuzz::checkReader(kv::readOggInfo, kvfuzz::bytesOf(data, size));
    return 0;
}
