#include "driver/base/number.h"

#include "driver/base/ascii.h"
#include "driver/base/text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

size_t skip_space(std::string_view text, size_t at)
{
    while (at < text.size() && is_space(text[at])) ++at;
    return at;
}

/// A decimal integer with a sign, 0 if there is none. Digits after the value has passed 2^40 are ignored.
int64_t integer_at(std::string_view text, size_t at, size_t end)
{
    int64_t value = 0;
    bool minus = false;
    if (at < end && (text[at] == '-' || text[at] == '+')) minus = text[at++] == '-';
    for (; at < end && is_digit(text[at]); ++at)
        if (value < int64_t{1} << 40) value = value * 10 + (text[at] - '0');
    return minus ? -value : value;
}

int32_t saturate(int64_t v)
{
    return static_cast<int32_t>(
        std::clamp<int64_t>(v, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

/// The text from a place on, up to the next NUL.
std::string_view text_from(std::string_view text, size_t at)
{
    return before_nul(text.substr(std::min(at, text.size())));
}

int64_t scan_integer(std::string_view text, size_t at, int width)
{
    text = text_from(text, at);
    at = skip_space(text, 0);
    return integer_at(text, at, std::min(text.size(), at + static_cast<size_t>(width)));
}

/// Reads the first 255 characters of a field with strtod, which needs a NUL at the end.
double double_of(std::string_view field)
{
    Text<255> copy;
    copy.put(field);
    return strtod(copy.s, nullptr);
}

} // namespace

int32_t to_int32(std::string_view text)
{
    text = before_nul(text);
    return saturate(integer_at(text, skip_space(text, 0), text.size()));
}

uint32_t to_uint32_any_base(std::string_view text)
{
    constexpr uint32_t most = std::numeric_limits<uint32_t>::max();
    text = before_nul(text);
    size_t at = skip_space(text, 0);
    bool minus = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) minus = text[at++] == '-';

    int base = 10;
    if (at < text.size() && text[at] == '0') {
        const bool hex = at + 2 < text.size() && (text[at + 1] | 0x20) == 'x' && hex_digit(text[at + 2]) >= 0;
        base = hex ? 16 : 8;
        if (hex) at += 2;
    }

    uint64_t value = 0;
    for (; at < text.size(); ++at) {
        const int digit = hex_digit(text[at]);
        if (digit < 0 || digit >= base) break;
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        if (value > most) return most;
    }
    const uint32_t magnitude = static_cast<uint32_t>(value);
    return minus ? 0U - magnitude : magnitude;
}

double to_double(std::string_view text)
{
    return double_of(text);
}

int16_t scan_int16(std::string_view text, size_t at, int width)
{
    return static_cast<int16_t>(scan_integer(text, at, width));
}

int32_t scan_int32(std::string_view text, size_t at, int width)
{
    return saturate(scan_integer(text, at, width));
}

double scan_double(std::string_view text, size_t at, int width)
{
    text = text_from(text, at);
    return double_of(text.substr(skip_space(text, 0), static_cast<size_t>(width)));
}

std::string_view scan_word(std::string_view text, size_t at, size_t width)
{
    text = text_from(text, at);
    const size_t first = skip_space(text, 0);
    size_t end = first;
    while (end < text.size() && end - first < width && !is_space(text[end])) ++end;
    return text.substr(first, end - first);
}

float stof(std::string_view text, uint16_t length)
{
    if (length) text = text.substr(0, length);
    Text<19> number;
    number.put(text);
    double value = strtod(number.s, nullptr);
    if (const char* slash = strchr(number.s, '/')) {
        // kept: stof-slash. The test for 0 reads the divisor after the "/", the division one character later.
        if (strtod(slash + 1, nullptr) != 0.0) value /= strtod(slash + 2, nullptr);
    }
    return static_cast<float>(value);
}

uint16_t stoi(std::string_view text, uint16_t length)
{
    if (length) text = text.substr(0, length);
    return static_cast<uint16_t>(to_int32(before_nul(text).substr(0, 8)));
}
