#pragma once

#include <cstdint>

namespace kv {

// Seconds elapsed from start to now, both seconds since midnight; a clock that passed midnight
// (now < start) adds a whole day. Rounded half to even to whole seconds.
std::int32_t elapsedSeconds(double now, double start);

} // namespace kv
