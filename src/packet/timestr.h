// Time strings: 16 digits YYYYDDDHHMMSSmmm and a NUL. The records keep every time in this form. Functions
// that parse, advance, compare and subtract them.
#pragma once

#include "driver/base/text.h"

#include <cstddef>
#include <cstdint>

using TIMESTR = Text<16>;

namespace AT { // where the fields of a time string begin
inline constexpr size_t Year = 0, Day = 4, Hour = 7, Minute = 9, Second = 11, Milli = 13;
}

/// The fields of a time string.
struct TIME_T {
    int16_t year, day;
    int16_t spare[2]; ///< carried: spare-time-fields
    int16_t hour, minute, second, milli, micro;
};

/// Parses a time string. A field without a number is 0. Sets the microsecond to 0 and does not change the
/// spare fields.
void Time_atoil(TIME_T& t, const TIMESTR& time);

/// Seconds since 1984: day 1 of 1984 begins at 86400 s, and every four full years add a leap day. 0.0 before
/// 1984.
double Time_cvt(const TIME_T& t);

/// Seconds from b to a; 0.0 when a is not later than b.
double Time_dif(const TIMESTR& a, const TIMESTR& b);

/// Seconds from a to b, negative if b is earlier. Every year counts 365 days; a millisecond field that is not
/// three characters long counts ten times.
float Time_update(const TIMESTR& a, const TIMESTR& b);

/// carried: time-compare. 1 when a is later than b in milliseconds modulo 2^32, else 0.
uint16_t Time_compr(const TIMESTR& a, const TIMESTR& b);

/// carried: time-from-double. A placeholder that converts nothing.
void Time_r64toil(TIME_T& t, double seconds);

/// Advances a time by `count` samples at `rate` samples per second. A rate of 0 adds nothing; fields that are
/// too large are still carried. Fractions of a millisecond are dropped. A year that ends becomes 0000.
void add_str_tim(TIMESTR& time, float rate, uint16_t count);
