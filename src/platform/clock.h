#pragma once

namespace kv {

class Clock
{
public:
    virtual ~Clock() = default;
    // Local wall-clock time of day in seconds since midnight.
    virtual double secondsSinceMidnight() = 0;
};

} // namespace kv
