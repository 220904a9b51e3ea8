// Numbers read out of text, with the rules of the C library of a 32-bit host wherever the program runs:
// text that is no number is 0, integers saturate at 32 bits. Nothing here throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Decimal integer: leading white space, a sign, digits; saturates at the limits of 32 bits.
int32_t to_int32(std::string_view text);

/// Unsigned integer with "0x" hexadecimal and leading-zero octal; too large a number is 4294967295, a
/// minus sign negates modulo 2^32.
uint32_t to_uint32_any_base(std::string_view text);

/// Decimal, as strtod reads it ("inf", "nan", hexadecimal and exponents included).
double to_double(std::string_view text);

/// Reads an integer field as scanf's "%<width>d" does: white space is skipped and not counted, a sign is
/// counted. 0 when nothing converts. Kept to 16 bits.
int16_t scan_int16(std::string_view text, size_t at, int width);

/// The same, kept to 32 bits.
int32_t scan_int32(std::string_view text, size_t at, int width);

/// Reads a decimal field as scanf's "%<width>lf" does.
double scan_double(std::string_view text, size_t at, int width);

/// The characters that scanf's "%<width>s" takes: white space is skipped and not counted.
std::string_view scan_word(std::string_view text, size_t at, size_t width);

/// A decimal number of at most 19 characters, or a quotient "a/b". `length` 0 means the whole text.
float stof(std::string_view text, uint16_t length);

/// carried: short-integer. A decimal integer of at most 8 characters, kept in 16 bits. `length` 0 means the
/// whole text.
uint16_t stoi(std::string_view text, uint16_t length);
