#include "common/clocktime.h"

#include "common/checked.h"

namespace kv {

std::int32_t elapsedSeconds(double now, double start)
{
    const double e = now < start ? now + 86400.0 - start : now - start;
    return Int32::fromReal(e);
}

} // namespace kv
