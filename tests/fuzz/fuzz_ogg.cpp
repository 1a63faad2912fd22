// The Ogg Vorbis reader: the identification header on the first page.
#include "fuzzing.h"
#include "media/oggreader.h"

KV_FUZZ_READER(kv::readOggInfo)
