#pragma once

#include "platform/clock.h"

namespace kv {

class PosixClock : public Clock
{
public:
    double secondsSinceMidnight() override;
};

} // namespace kv
