// The WAV reader: a PCM header in the first 44 bytes or no row.
#include "fuzzing.h"
#include "media/wavreader.h"

KV_FUZZ_READER(kv::readWavInfo)
