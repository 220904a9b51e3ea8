// Time strings: 16 digits YYYYDDDHHMMSSmmm and a NUL, the form in which the recording model keeps every
// time. Parsed, moved on, compared, subtracted.
#pragma once

#include "driver/base/text.h"

#include <cstddef>
#include <cstdint>

using TIMESTR = Text<16>;

namespace AT { // where the fields of a time string begin
inline constexpr size_t Year = 0, Day = 4, Hour = 7, Minute = 9, Second = 11, Milli = 13;
}

/// A time taken apart.
struct TIME_T {
    int16_t year, day;
    int16_t spare[2]; ///< carried: spare-time-fields
    int16_t hour, minute, second, milli, micro;
};

/// Parses a time string. The microsecond becomes 0, the spare fields stay as they are. A field that is no
/// number is 0.
void Time_atoil(TIME_T& t, const TIMESTR& time);

/// Seconds since the start of 1984, leap days counted as one per four full years since (day 1 of 1984 is
/// 86400 s); 0.0 before 1984.
double Time_cvt(const TIME_T& t);

/// Seconds from b to a, 0.0 when a is not later.
double Time_dif(const TIMESTR& a, const TIMESTR& b);

/// Seconds from a to b, possibly negative. Every year counts 365 days; a millisecond field that is not
/// three characters long counts ten times.
float Time_update(const TIMESTR& a, const TIMESTR& b);

/// carried: time-compare. 1 when a is later than b in milliseconds modulo 2^32, else 0.
uint16_t Time_compr(const TIMESTR& a, const TIMESTR& b);

/// carried: time-from-double. A placeholder that converts nothing.
void Time_r64toil(TIME_T& t, double seconds);

/// Moves a time on by a packet of `count` samples at `rate` samples per second (0: only normalises).
/// Fractions of a millisecond are cut; a year that rolls over becomes 0000.
void add_str_tim(TIMESTR& time, float rate, uint16_t count);
