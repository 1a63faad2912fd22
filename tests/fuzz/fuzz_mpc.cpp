// The Musepack reader, both stream versions as the listing meets them.
#include "fuzzing.h"
#include "media/mpcreader.h"

KV_FUZZ_READER(kv::readMpcInfo)
