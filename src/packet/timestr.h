// Time strings: 16 digits YYYYDDDHHMMSSmmm and a NUL, the form in which the recording model keeps every
// time. Made from a packet header, parsed, moved on, compared, subtracted.
#pragma once

#include "driver/text.h"
#include "packet/packet.h"

#include <cstdint>

using TIMESTR = Text<16>;

namespace AT { // where the fields of a time string begin
inline constexpr size_t Year = 0, Day = 4, Hour = 7, Minute = 9, Second = 11, Milli = 13;
}

/// A time taken apart.
struct TIME_T {
    int16_t year, day;
    int16_t spare[2]; ///< no parser fills them
    int16_t hour, minute, second, milli, micro;
};

/// The time of a packet's header. Years 85 to 99 are 1985 to 1999, 00 to 84 are 2000 to 2084.
TIMESTR header_time(const PACKET& pkt);

/// Parses a time string; microsecond becomes 0, the spare fields stay. A field that is no number is 0.
void Time_atoil(TIME_T* t, const char* text);

/// Seconds since the start of 1984, leap days counted as one per four full years since (day 1 of 1984 is
/// 86400 s); 0.0 before 1984.
double Time_cvt(const TIME_T* t);

/// Seconds from b to a, 0.0 when a is not later.
double Time_dif(const char* a, const char* b);

/// Seconds from a to b, possibly negative. Every year counts 365 days; a millisecond field that is not
/// three characters long counts ten times.
float Time_update(const char* a, const char* b);

/// 1 when a is later than b in milliseconds modulo 2^32, else 0. Nothing calls it.
uint16_t Time_compr(const char* a, const char* b);

/// A placeholder that converts nothing. Nothing calls it.
void Time_r64toil(TIME_T* t, double seconds);

/// Moves a time string on by a packet of `count` samples at `rate` samples per second (0: only normalises).
/// Fractions of a millisecond are cut; a year that rolls over becomes 0000.
void add_str_tim(char* time_text, float rate, const uint8_t* count_bcd);
