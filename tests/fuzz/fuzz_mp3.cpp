// The MP3 reader: the frame walk over the whole file.
#include "media/mp3reader.h"
#include "readerfuzzing.h"

KV_FUZZ_READER(kv::readMp3Info)
