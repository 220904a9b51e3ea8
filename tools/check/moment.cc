#include "check/moment.h"

#include "driver/base/ascii.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace check {

namespace {

/// The number in `n` digits; -1 when they are no digits.
int digits_of(const char* at, int n)
{
    int value = 0;
    for (int i = 0; i < n; ++i) {
        if (!is_digit(at[i])) return -1;
        value = value * 10 + (at[i] - '0');
    }
    return value;
}

int64_t first_of_year(int year)
{
    using namespace std::chrono;
    return sys_days{std::chrono::year{year} / January / 1}.time_since_epoch().count();
}

} // namespace

Moment moment_of(const TIMESTR& time, int micro)
{
    const char* const s = time.s;
    if (time.length() != 16) return No_moment;
    const int year = digits_of(s + AT::Year, 4), day = digits_of(s + AT::Day, 3);
    const int hour = digits_of(s + AT::Hour, 2), minute = digits_of(s + AT::Minute, 2);
    const int second = digits_of(s + AT::Second, 2), milli = digits_of(s + AT::Milli, 3);
    if (year < 0 || day < 1 || hour < 0 || minute < 0 || second < 0 || milli < 0) return No_moment;
    const bool leap = std::chrono::year{year}.is_leap();
    if (day > (leap ? 366 : 365) || hour > 23 || minute > 59 || second > 60) return No_moment;
    const int64_t seconds = ((first_of_year(year) + day - 1) * 24 + hour) * 3600 + minute * 60 + second;
    return seconds * Second + milli * 1000 + micro;
}

int micros_of(const PACKET& pkt)
{
    if (pkt.kind != PKT_DT || !(flags(pkt) & FLAG::Extension)) return 0;
    char shown[2 * DT::Micros.len];
    digits(pkt, DT::Micros, shown);
    return std::max(0, digits_of(shown + 1, 3));
}

Moment moment_of(const PACKET& pkt)
{
    return moment_of(pkt.time, micros_of(pkt));
}

int64_t day_of(Moment moment)
{
    return moment >= 0 ? moment / Day : -((Day - 1 - moment) / Day);
}

std::string iso_day(int64_t day)
{
    using namespace std::chrono;
    const year_month_day d{sys_days{days{day}}};
    char text[32];
    snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(d.year()),
             static_cast<unsigned>(d.month()), static_cast<unsigned>(d.day()));
    return text;
}

std::string iso(Moment moment)
{
    const int64_t day = day_of(moment);
    const int64_t left = moment - day * Day;
    const auto seconds = static_cast<int>(left / Second);
    char text[32];
    snprintf(text, sizeof text, "T%02d:%02d:%02d.%06dZ", seconds / 3600, seconds / 60 % 60, seconds % 60,
             static_cast<int>(left % Second));
    return iso_day(day) + text;
}

Moment later(Moment a, Moment b)
{
    return std::max(a, b); // an unknown one is the lowest number
}

Moment earlier(Moment a, Moment b)
{
    if (a == No_moment) return b;
    return b == No_moment ? a : std::min(a, b);
}

} // namespace check
