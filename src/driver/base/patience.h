// Trying again for five seconds: a file on a slow or waking disk gets its chance.
#pragma once

#include "driver/base/steady_clock.h"

#include <ctime>

/// Calls `attempt` until it returns true, while the clock is within five whole seconds of the start;
/// `before_nap` before each short sleep. False when all attempts fail.
template <class Try>
bool with_patience(Try attempt, void (*before_nap)())
{
    const int64_t start = steady_ms() / 1000;
    const timespec nap{0, 20'000'000};
    do {
        if (attempt()) return true;
        before_nap();
        nanosleep(&nap, nullptr);
    } while (steady_ms() / 1000 <= start + 5);
    return false;
}
