// The header of a SAC file as a reader meets it: byte order told by the version, texts, start and rate.
#pragma once

#include "output/sac_layout.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trace {

enum class Order : uint8_t { none, big, little };

/// The byte order in which Sac_header_len bytes hold version 6; none when they are no SAC header.
Order order_of(const char* bytes);

/// Four bytes of a file as a number, and back.
uint32_t word_at(const char* at, Order order);
float float_at(const char* at, Order order);
void put_word(char* at, Order order, uint32_t word);

/// A whole header, its numbers in host order, and back; every bit comes back as it was.
SACHDR_T decode(const char* bytes, Order order);
void encode(const SACHDR_T& header, Order order, char* bytes);

/// A text field up to its first NUL, without the blanks at its end. Nothing when the field is undefined.
std::optional<std::string> text_of(std::string_view field);

/// Samples that the header promises. Counts above 31 bits keep their bits, as vx_sac writes them.
/// Nothing when NPTS is undefined.
std::optional<uint32_t> samples_said(const SACHDR_T& header);

/// Samples per second: the shortest decimal number whose inverse is DELTA. Nothing when DELTA is undefined
/// or no positive number.
std::optional<double> rate_of(const SACHDR_T& header);

/// The moment of the NZ words, in milliseconds since 1970 UTC. Nothing when one of them is undefined or no
/// part of a date between the years 1 and 9999. Second 60 is the next minute's first.
std::optional<int64_t> start_of(const SACHDR_T& header);

/// "2024-01-02T03:04:05.678Z" from milliseconds since 1970.
std::string iso_time(int64_t milliseconds);

/// The three statistics hold what a trace starts with: none was ever written, or the QC took them away.
bool statistics_are_reset(const SACHDR_T& header);

/// All three are undefined. A lone -12345 is a sample's value.
bool statistics_are_undefined(const SACHDR_T& header);

} // namespace trace
