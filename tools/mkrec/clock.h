// Times of a recording: milliseconds since the start of its first year, and their digits.
#pragma once

#include <cstdint>

namespace mkrec {

inline constexpr int First_year = 2023;

struct RecorderClock {
    int year, day; ///< day of year, from 1
    int hour, minute, second, ms;
};

RecorderClock clock_at(int64_t ms);

/// Days of a year.
int days_in(int year);

inline constexpr int Time_len = 16;

/// Year, day, hour, minute, second and millisecond as 16 digits and a NUL.
void time_digits(const RecorderClock& clock, char (&digits)[Time_len + 1]);

} // namespace mkrec
