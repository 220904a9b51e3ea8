// What a file is that is no recording.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace check {

/// "gzip data", "miniSEED", "SAC file", "text" or what libmagic says of the first bytes of a file; nothing
/// when nobody knows.
std::optional<std::string> looks_like(std::span<const uint8_t> beginning);

} // namespace check
