// Test bytes to write and compare.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace kit {

/// Bytes of all values that do not repeat after a short period.
inline std::string some_bytes(size_t n, uint32_t seed = 1)
{
    std::mt19937 random(seed);
    std::string bytes(n, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    return bytes;
}

} // namespace kit
