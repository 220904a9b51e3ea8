// Builds the few lines that are written once per packet; every other line is a plain print. Each function
// writes at `to`, without a NUL, and returns the place after its last character.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

/// Copies a text.
inline char* put(char* to, std::string_view piece)
{
    memcpy(to, piece.data(), piece.size());
    return to + piece.size();
}

/// The two decimal digits of every number below 100.
struct DecimalPairs {
    char of[100][2];
};
inline constexpr DecimalPairs Pairs = [] {
    DecimalPairs p{};
    for (int i = 0; i < 100; ++i) {
        p.of[i][0] = static_cast<char>('0' + i / 10);
        p.of[i][1] = static_cast<char>('0' + i % 10);
    }
    return p;
}();

/// Writes the lowest `width` decimal digits of a number.
template <int width>
char* put_digits(char* to, uint32_t value)
{
    int at = width;
    for (; at >= 2; value /= 100) {
        at -= 2;
        memcpy(to + at, Pairs.of[value % 100], 2);
    }
    if (at == 1) *to = static_cast<char>('0' + value % 10);
    return to + width;
}

/// Writes a number as "%0<width>u" does: leading zeros up to `width` digits, more digits when it needs them.
template <int width>
char* put_decimal(char* to, uint32_t value)
{
    if constexpr (width < 10) {
        constexpr uint32_t too_wide = [] {
            uint32_t power = 1;
            for (int i = 0; i < width; ++i) power *= 10;
            return power;
        }();
        if (value >= too_wide) return put_decimal<width + 1>(to, value);
    }
    return put_digits<width>(to, value);
}

/// Writes the lowest `width` hexadecimal digits of a number, in upper case.
inline char* put_hex(char* to, unsigned value, int width)
{
    for (int shift = 4 * (width - 1); shift >= 0; shift -= 4) *to++ = "0123456789ABCDEF"[value >> shift & 15];
    return to;
}
