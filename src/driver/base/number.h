// Reads numbers from text. On every host the rules are those of the C library of a 32-bit host: a text
// without a number gives 0, integers saturate at 32 bits. Nothing here throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// A decimal integer: white space, a sign, digits. Saturates at 32 bits.
int32_t to_int32(std::string_view text);

/// An unsigned integer: "0x" starts a hexadecimal number, a leading 0 an octal one. A number that is too
/// large gives 4294967295; a minus sign negates modulo 2^32.
uint32_t to_uint32_any_base(std::string_view text);

/// A number as strtod reads it ("inf", "nan", hexadecimal and exponents included); at most 255 characters.
double to_double(std::string_view text);

/// Reads an integer from offset `at` as scanf's "%<width>d" does: white space is skipped and not counted, a
/// sign is counted. 0 when nothing converts; modulo 2^16.
int16_t scan_int16(std::string_view text, size_t at, int width);

/// The same; saturates at 32 bits.
int32_t scan_int32(std::string_view text, size_t at, int width);

/// Reads a number from offset `at` as scanf's "%<width>lf" does.
double scan_double(std::string_view text, size_t at, int width);

/// The characters from offset `at` that scanf's "%<width>s" takes: white space is skipped and not counted.
std::string_view scan_word(std::string_view text, size_t at, size_t width);

/// A decimal number, or a quotient "a/b", in the first `length` characters (0: all), 19 at most.
float stof(std::string_view text, uint16_t length);

/// carried: short-integer. A decimal integer in the first `length` characters (0: all), 8 at most; modulo
/// 2^16.
uint16_t stoi(std::string_view text, uint16_t length);
