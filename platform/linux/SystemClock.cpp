#include "platform/linux/SystemClock.h"

#include <ctime>

namespace skyflare {

namespace {

double secondsOf(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

} // namespace

double SystemClock::secondsSince1970() const
{
    return secondsOf(CLOCK_REALTIME);
}

// CLOCK_MONOTONIC would stand still while the machine is suspended.
double SystemClock::secondsOfUptime() const
{
    return secondsOf(CLOCK_BOOTTIME);
}

} // namespace skyflare
