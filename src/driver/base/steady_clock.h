// The clock that nobody sets back.
#pragma once

#include <cstdint>
#include <ctime>

/// Milliseconds of the monotonic clock.
inline int64_t steady_ms()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}
