// The MP3 reader: the frame walk over the whole file.
#include "media/mp3reader.h"
#include "readerfuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    kvfuzz::checkReader(kv::readMp3Info, kvfuzz::bytesOf(data, size));
    return 0;
}
