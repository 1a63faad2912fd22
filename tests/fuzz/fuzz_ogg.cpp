// The Ogg Vorbis reader: the identification header on the first page.
#include "media/oggreader.h"
#include "readerfuzzing.h"

KV_FUZZ_READER(kv::readOggInfo)
