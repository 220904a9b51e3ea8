#include "trace/header.h"

#include "driver/base/number.h"
#include "model/record/records.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace trace {

namespace {

constexpr int64_t Year_10000_ms = 253402300800000;

bool within(int32_t value, int32_t least, int32_t most)
{
    return least <= value && value <= most;
}

bool is_date(const SACHDR_T& h)
{
    const int32_t days = std::chrono::year{h.NZYEAR}.is_leap() ? 366 : 365;
    return within(h.NZYEAR, 1, 9999) && within(h.NZJDAY, 1, days) && within(h.NZHOUR, 0, 23) &&
           within(h.NZMIN, 0, 59) && within(h.NZSEC, 0, 60) && within(h.NZMSEC, 0, 999);
}

} // namespace

uint32_t word_at(const char* at, Order order)
{
    uint32_t word = 0;
    for (int i = 0; i < 4; ++i)
        word = word << 8 | static_cast<uint8_t>(at[order == Order::little ? 3 - i : i]);
    return word;
}

float float_at(const char* at, Order order)
{
    const uint32_t word = word_at(at, order);
    float value;
    memcpy(&value, &word, 4);
    return value;
}

void put_word(char* at, Order order, uint32_t word)
{
    for (int i = 0; i < 4; ++i, word >>= 8)
        at[order == Order::little ? i : 3 - i] = static_cast<char>(word & 0xFF);
}

Order order_of(const char* bytes)
{
    const char* const version = bytes + offsetof(SACHDR_T, NVHDR);
    if (word_at(version, Order::big) == Sac_version) return Order::big;
    return word_at(version, Order::little) == Sac_version ? Order::little : Order::none;
}

SACHDR_T decode(const char* bytes, Order order)
{
    char in_host_order[Sac_header_len];
    memcpy(in_host_order, bytes, Sac_header_len);
    for (size_t at = 0; at < 4 * Sac_words; at += 4) {
        const uint32_t word = word_at(bytes + at, order);
        memcpy(in_host_order + at, &word, 4);
    }
    SACHDR_T header;
    memcpy(&header, in_host_order, Sac_header_len);
    return header;
}

void encode(const SACHDR_T& header, Order order, char* bytes)
{
    memcpy(bytes, &header, Sac_header_len);
    for (size_t at = 0; at < 4 * Sac_words; at += 4) {
        uint32_t word;
        memcpy(&word, bytes + at, 4);
        put_word(bytes + at, order, word);
    }
}

std::optional<std::string> text_of(std::string_view field)
{
    field = field.substr(0, field.find('\0'));
    const size_t last = field.find_last_not_of(' ');
    field = field.substr(0, last == std::string_view::npos ? 0 : last + 1);
    if (field == "-12345") return std::nullopt;
    return std::string(field);
}

std::optional<uint32_t> samples_said(const SACHDR_T& header)
{
    if (header.NPTS == Undefined_i) return std::nullopt;
    return static_cast<uint32_t>(header.NPTS);
}

std::optional<double> rate_of(const SACHDR_T& header)
{
    const float delta = header.DELTA;
    if (!(delta > 0.0F) || !std::isfinite(delta) || !std::isfinite(1.0F / delta)) return std::nullopt;
    const double inverse = 1.0 / static_cast<double>(delta);
    for (int digits = 1; digits <= 9; ++digits) {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, inverse, std::chars_format::general, digits);
        const double rate = to_double({text, end.ptr});
        if (1.0F / static_cast<float>(rate) == delta) return rate;
    }
    return inverse;
}

std::optional<int64_t> start_of(const SACHDR_T& h)
{
    using namespace std::chrono;
    if (!is_date(h)) return std::nullopt;
    const sys_days day = sys_days{year{h.NZYEAR} / January / 1} + days{h.NZJDAY - 1};
    const milliseconds ms = day.time_since_epoch() + hours{h.NZHOUR} + minutes{h.NZMIN} + seconds{h.NZSEC} +
                            milliseconds{h.NZMSEC};
    if (ms.count() >= Year_10000_ms) return std::nullopt;
    return ms.count();
}

std::string iso_time(int64_t milliseconds)
{
    using namespace std::chrono;
    const sys_time<std::chrono::milliseconds> when{std::chrono::milliseconds{milliseconds}};
    const sys_days day = floor<days>(when);
    const year_month_day date{day};
    const hh_mm_ss time{when - day};
    char text[64];
    snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
             static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
             static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return text;
}

bool statistics_are_reset(const SACHDR_T& header)
{
    return header.DEPMIN == static_cast<float>(Qcc_start) &&
           header.DEPMAX == static_cast<float>(-Qcc_start) && header.DEPMEN == 0.0F;
}

bool statistics_are_undefined(const SACHDR_T& header)
{
    return header.DEPMIN == Undefined_f && header.DEPMAX == Undefined_f && header.DEPMEN == Undefined_f;
}

} // namespace trace
