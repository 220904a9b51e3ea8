#include "driver/base/pulse.h"

#include "driver/base/outfile.h"

#include <cstdio>
#include <ctime>

static timespec Latest; ///< when everything was written

static timespec steady_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

void write_all_collected()
{
    out_write_all();
    fflush(stdout);
    Latest = steady_now();
}

void write_once_a_second()
{
    const timespec now = steady_now();
    if (Latest.tv_sec == 0) Latest = now; // the first second begins
    const auto ms = (now.tv_sec - Latest.tv_sec) * 1000 + (now.tv_nsec - Latest.tv_nsec) / 1'000'000;
    if (ms >= 1000) write_all_collected();
}
