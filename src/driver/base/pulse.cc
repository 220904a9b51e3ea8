#include "driver/base/pulse.h"

#include "driver/base/outfile.h"
#include "driver/base/steady_clock.h"

#include <cstdio>

static int64_t Latest_ms; ///< when everything was written; 0 until the first second begins

void write_all_collected()
{
    out_write_all();
    fflush(stdout);
    Latest_ms = steady_ms();
}

void write_once_a_second()
{
    const int64_t now = steady_ms();
    if (Latest_ms == 0) Latest_ms = now;
    if (now - Latest_ms >= 1000) write_all_collected();
}
