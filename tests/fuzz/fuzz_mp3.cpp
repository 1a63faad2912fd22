// The MP3 reader: the frame walk over the whole file.
#include "fuzzing.h"
#include "media/mp3reader.h"

KV_FUZZ_READER(kv::readMp3Info)
