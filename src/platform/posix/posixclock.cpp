#include "platform/posix/posixclock.h"

#include <ctime>

namespace kv {

double PosixClock::secondsSinceMidnight()
{
    timespec ts {};
    ::clock_gettime(CLOCK_REALTIME, &ts);
    std::tm local {};
    const time_t secs = ts.tv_sec;
    ::localtime_r(&secs, &local);
    return local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + ts.tv_nsec / 1e9;
}

} // namespace kv
