// Trying again for five seconds: a file on a slow or waking disk gets its chance.
#pragma once

#include <ctime>

/// Whole seconds of a clock that nobody sets back.
inline time_t steady_seconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

/// Calls `attempt` until it returns true, while the clock is within five whole seconds of the start;
/// `before_nap` before each short sleep. False when all attempts fail.
template <class Try>
bool with_patience(Try attempt, void (*before_nap)())
{
    const time_t start = steady_seconds();
    const timespec nap{0, 20'000'000};
    do {
        if (attempt()) return true;
        before_nap();
        nanosleep(&nap, nullptr);
    } while (steady_seconds() <= start + 5);
    return false;
}
