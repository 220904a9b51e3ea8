// How many differences a word of a Steim frame holds, and of how many bits.
#pragma once

#include <cstdint>

/// The count of differences in a word, and their width in bits. Count 0: the word is empty or invalid.
struct SteimFields {
    uint8_t count, width;
};

/// Steim-1, by code.
inline constexpr SteimFields Steim1_fields[4] = {{0, 0}, {4, 8}, {2, 16}, {1, 32}};

/// Steim-2, by code and dnib (the two top bits of the word). With code 1 these bits are data.
inline constexpr SteimFields Steim2_fields[4][4] = {
    {{0, 0}, {0, 0}, {0, 0}, {0, 0}},
    {{4, 8}, {4, 8}, {4, 8}, {4, 8}},
    {{0, 0}, {1, 30}, {2, 15}, {3, 10}},
    {{5, 6}, {6, 5}, {7, 4}, {0, 0}},
};
