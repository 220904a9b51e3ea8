// Lines that are written for every packet are built by hand: each piece is put at `to`, and the place behind
// it is returned. Everything else is a plain print.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

inline char* put(char* to, std::string_view piece)
{
    memcpy(to, piece.data(), piece.size());
    return to + piece.size();
}

/// A decimal number with leading zeros up to `width` digits, more when it is wider, as "%0<width>u" prints
/// it.
inline char* put_decimal(char* to, uint32_t value, int width)
{
    char digits[10];
    int n = 0;
    for (; value || n == 0; value /= 10) digits[n++] = static_cast<char>('0' + value % 10);
    for (int zeros = width - n; zeros > 0; --zeros) *to++ = '0';
    while (n > 0) *to++ = digits[--n];
    return to;
}

/// The lowest `width` decimal digits of a number.
template <int width>
char* put_digits(char* to, uint32_t value)
{
    for (int at = width; at-- > 0; value /= 10) to[at] = static_cast<char>('0' + value % 10);
    return to + width;
}

/// The lowest `width` upper-case hexadecimal digits of a number.
inline char* put_hex(char* to, unsigned value, int width)
{
    for (int shift = 4 * (width - 1); shift >= 0; shift -= 4) *to++ = "0123456789ABCDEF"[value >> shift & 15];
    return to;
}
