// How the words of Steim frames fall into differences: the tables of both levels.
#pragma once

#include <cstdint>

/// How many differences a word holds, and of how many bits. Count 0: it is empty, or there is no such word.
struct STEIM_FIELDS {
    uint8_t count, width;
};

/// Steim-1, by code.
inline constexpr STEIM_FIELDS Steim1_fields[4] = {{0, 0}, {4, 8}, {2, 16}, {1, 32}};

/// Steim-2, by code and by dnib, the two top bits of the word. Code 1 has no dnib: these bits are data.
inline constexpr STEIM_FIELDS Steim2_fields[4][4] = {
    {{0, 0}, {0, 0}, {0, 0}, {0, 0}},
    {{4, 8}, {4, 8}, {4, 8}, {4, 8}},
    {{0, 0}, {1, 30}, {2, 15}, {3, 10}},
    {{5, 6}, {6, 5}, {7, 4}, {0, 0}},
};
