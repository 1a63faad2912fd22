// The Musepack reader, both stream versions as the listing meets them.
#include "media/mpcreader.h"
#include "readerfuzzing.h"

KV_FUZZ_READER(kv::readMpcInfo)
