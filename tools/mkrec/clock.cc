#include "mkrec/clock.h"

namespace mkrec {

static constexpr int64_t Day_ms = 86400000;

int days_in(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 366 : 365;
}

RecorderClock clock_at(int64_t ms)
{
    int64_t days = ms / Day_ms;
    const int rest = static_cast<int>(ms % Day_ms);
    int year = First_year;
    for (; days >= days_in(year); ++year) days -= days_in(year);
    return {year,       static_cast<int>(days) + 1, rest / 3600000, rest / 60000 % 60, rest / 1000 % 60,
            rest % 1000};
}

static void put_digits(char* to, int width, int value)
{
    for (int i = width - 1; i >= 0; --i, value /= 10) to[i] = static_cast<char>('0' + value % 10);
}

void time_digits(const RecorderClock& clock, char (&digits)[Time_len + 1])
{
    put_digits(digits, 4, clock.year);
    put_digits(digits + 4, 3, clock.day);
    put_digits(digits + 7, 2, clock.hour);
    put_digits(digits + 9, 2, clock.minute);
    put_digits(digits + 11, 2, clock.second);
    put_digits(digits + 13, 3, clock.ms);
    digits[Time_len] = 0;
}

} // namespace mkrec
