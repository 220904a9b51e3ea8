#include "packet/timestr.h"

#include "driver/base/compose.h"
#include "driver/base/number.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

/// True for 16 digits. Recorders write only such times.
bool all_digits(std::string_view text)
{
    if (text.size() != 16) return false;
    bool odd = false;
    for (size_t i = 0; i < 16; ++i) odd |= static_cast<unsigned char>(text[i] - '0') > 9;
    return !odd;
}

/// The number in `width` digits.
int digits_at(std::string_view text, size_t at, size_t width)
{
    int value = 0;
    for (size_t i = at; i < at + width; ++i) value = value * 10 + (text[i] - '0');
    return value;
}

/// The fields of a time string as scanf reads them: blanks before a number are skipped, so a blank field
/// takes digits of the next one; a sign counts in the width; a field that does not convert is 0.
TIME_T fields_of(std::string_view text)
{
    TIME_T t{};
    if (all_digits(text)) {
        t.year = static_cast<int16_t>(digits_at(text, AT::Year, 4));
        t.day = static_cast<int16_t>(digits_at(text, AT::Day, 3));
        t.hour = static_cast<int16_t>(digits_at(text, AT::Hour, 2));
        t.minute = static_cast<int16_t>(digits_at(text, AT::Minute, 2));
        t.second = static_cast<int16_t>(digits_at(text, AT::Second, 2));
        t.milli = static_cast<int16_t>(digits_at(text, AT::Milli, 3));
        return t;
    }
    t.year = scan_int16(text, AT::Year, 4);
    t.day = scan_int16(text, AT::Day, 3);
    t.hour = scan_int16(text, AT::Hour, 2);
    t.minute = scan_int16(text, AT::Minute, 2);
    t.second = scan_int16(text, AT::Second, 2);
    t.milli = scan_int16(text, AT::Milli, 3);
    return t;
}

/// Milliseconds since year 0, if every year had 365 days.
double interval_ms(const TIMESTR& time)
{
    const TIME_T t = fields_of(time.view());
    double ms = t.milli;
    // kept: short-milliseconds. Fields of one or two digits count as hundredths of a second.
    if (scan_word(time.view(), AT::Milli, 3).size() != 3) ms *= 10;
    const double days = static_cast<double>(t.year) * 365 + t.day;
    return (((days * 24 + t.hour) * 60 + t.minute) * 60 + t.second) * 1000 + ms;
}

/// The same modulo 2^32; the millisecond field counts as it is.
uint32_t wrapped_ms(const TIMESTR& time)
{
    const TIME_T t = fields_of(time.view());
    uint32_t v = static_cast<uint32_t>(t.year) * 365U + static_cast<uint32_t>(t.day);
    v = v * 24U + static_cast<uint32_t>(t.hour);
    v = v * 60U + static_cast<uint32_t>(t.minute);
    v = v * 60U + static_cast<uint32_t>(t.second);
    return v * 1000U + static_cast<uint32_t>(t.milli);
}

/// The millisecond field of a time plus the length of a packet, in milliseconds modulo 2^32. 0 if the rate
/// makes this infinite, not a number, or too large for 64 bits.
uint32_t ms_at_end(uint16_t count, float rate, int16_t milli)
{
    if (rate == 0.0F) return static_cast<uint32_t>(static_cast<int32_t>(milli));
    const double ms = static_cast<double>(count) * 1000.0 / static_cast<double>(rate) + milli;
    if (!(std::fabs(ms) < 9223372036854775808.0)) return 0;
    return static_cast<uint32_t>(static_cast<int64_t>(ms));
}

/// Writes "%04u%03d%02u%02u%02u%03lu", cut at 16 characters: by hand while no number is negative or too wide,
/// else with snprintf.
void write_time(char* text, uint32_t year, int64_t day, int64_t hours, int64_t minutes, int64_t seconds,
                uint32_t ms)
{
    const bool usual = year <= 9999 && (day | hours | minutes | seconds) >= 0;
    if (usual) {
        char* to = put_digits<4>(text, year);
        to = put_digits<3>(to, static_cast<uint32_t>(day));
        to = put_digits<2>(to, static_cast<uint32_t>(hours));
        to = put_digits<2>(to, static_cast<uint32_t>(minutes));
        to = put_digits<2>(to, static_cast<uint32_t>(seconds));
        put_digits<3>(to, ms);
    } else {
        char made[80];
        snprintf(made, sizeof made, "%04" PRIu32 "%03d%02u%02u%02u%03" PRIu32, year, static_cast<int>(day),
                 static_cast<unsigned>(hours), static_cast<unsigned>(minutes), static_cast<unsigned>(seconds),
                 ms);
        memcpy(text, made, 16);
    }
    text[16] = '\0';
}

} // namespace

void Time_atoil(TIME_T& t, const TIMESTR& time)
{
    const TIME_T read = fields_of(time.view());
    t.year = read.year;
    t.day = read.day;
    t.hour = read.hour;
    t.minute = read.minute;
    t.second = read.second;
    t.milli = read.milli;
    t.micro = 0;
}

double Time_cvt(const TIME_T& t)
{
    if (t.year <= 1983) return 0.0;
    const int years = t.year - 1984;
    // kept: leap-days-by-four. 1984's own leap day counts from 1988 on.
    // NOLINTNEXTLINE(bugprone-integer-division): whole leap days
    const double days = years * 365.0 + years / 4 + t.day;
    return ((days * 24 + t.hour) * 60 + t.minute) * 60 + t.second + t.milli / 1000.0 + t.micro / 1000000.0;
}

double Time_dif(const TIMESTR& a, const TIMESTR& b)
{
    const double sa = Time_cvt(fields_of(a.view()));
    const double sb = Time_cvt(fields_of(b.view()));
    return sa > sb ? sa - sb : 0.0;
}

float Time_update(const TIMESTR& a, const TIMESTR& b)
{
    return static_cast<float>((interval_ms(b) - interval_ms(a)) * 0.001);
}

uint16_t Time_compr(const TIMESTR& a, const TIMESTR& b)
{
    return wrapped_ms(a) > wrapped_ms(b);
}

void Time_r64toil(TIME_T&, double) {}

void add_str_tim(TIMESTR& time, float rate, uint16_t count)
{
    const TIME_T t = fields_of(time.view());
    uint32_t year = static_cast<uint16_t>(t.year);
    const uint32_t ms = ms_at_end(count, rate, t.milli);

    // Carried by division, in 64 bits: a slow rate gives weeks of milliseconds.
    int64_t seconds = t.second + static_cast<int64_t>(ms / 1000);
    int64_t minutes = t.minute;
    int64_t hours = t.hour;
    int64_t day = t.day;
    const auto carry = [](int64_t& low, int64_t& high, int64_t full) {
        if (low < full) return;
        high += low / full;
        low %= full;
    };
    carry(seconds, minutes, 60);
    carry(minutes, hours, 60);
    carry(hours, day, 24);

    // kept: year-length-once. The length of the first year is used for all years.
    const int64_t year_len = year % 4 ? 365 : 366;
    while (day > year_len) {
        day -= year_len;
        if (++year > 99) year = 0; // kept: two-digit-year. A year of four digits becomes 0000.
    }

    write_time(time.s, year, day, hours, minutes, seconds, ms % 1000);
}
