// The WAV reader: a PCM header in the first 44 bytes or no row.
#include "media/wavreader.h"
#include "readerfuzzing.h"

KV_FUZZ_READER(kv::readWavInfo)
