// Reads and writes the header of a SAC file in either byte order, which its version word shows.
#pragma once

#include "output/sac_layout.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trace {

enum class Order : uint8_t { none, big, little };

/// The byte order in which the version in Sac_header_len bytes is 6; none if they are not a SAC header.
Order order_of(const char* bytes);

/// Converts four bytes of a file to a number, and back.
uint32_t word_at(const char* at, Order order);
float float_at(const char* at, Order order);
void put_word(char* at, Order order, uint32_t word);

/// Converts a header to numbers in host order, and back, without changing a bit.
SACHDR_T decode(const char* bytes, Order order);
void encode(const SACHDR_T& header, Order order, char* bytes);

/// A text field up to its first NUL, without the blanks at its end. No value if the field is undefined.
std::optional<std::string> text_of(std::string_view field);

/// The number of samples in the header. It has 32 bits without sign, as vx_sac writes it. No value if NPTS
/// is undefined.
std::optional<uint32_t> samples_said(const SACHDR_T& header);

/// Samples per second: the shortest decimal number whose inverse is DELTA. No value if DELTA is
/// undefined or not a positive number.
std::optional<double> rate_of(const SACHDR_T& header);

/// The time of the NZ words, in milliseconds since 1970 UTC. No value if one of them is undefined or not
/// part of a date between the years 1 and 9999. Second 60 counts as second 0 of the next minute.
std::optional<int64_t> start_of(const SACHDR_T& header);

/// "2024-01-02T03:04:05.678Z" from milliseconds since 1970.
std::string iso_time(int64_t milliseconds);

/// True if the three statistics have their initial values: none was written, or -Q reset them.
bool statistics_are_reset(const SACHDR_T& header);

/// True if all three are undefined. If only one is -12345, it is the value of a sample.
bool statistics_are_undefined(const SACHDR_T& header);

} // namespace trace
