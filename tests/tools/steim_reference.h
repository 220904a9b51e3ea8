// A plain Steim decoder for the tests: one word after the other, straight from the table of forms.
#pragma once

#include <cstdint>
#include <vector>

struct SteimDecoded {
    std::vector<int32_t> samples;
    int32_t x0 = 0, xn = 0;
    int32_t first_difference = 0;
    bool sound = true; ///< no form that does not exist
};

inline uint32_t steim_word(const uint8_t* frames, int frame, int word)
{
    const uint8_t* p = frames + 64 * frame + 4 * word;
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

inline int32_t steim_field(uint32_t word, int shift, int bits)
{
    const int64_t value = word >> shift & ((uint64_t{1} << bits) - 1);
    const int64_t half = int64_t{1} << (bits - 1);
    return static_cast<int32_t>(value >= half ? value - 2 * half : value);
}

/// The differences of one word, appended.
inline bool steim_differences(int level, unsigned code, uint32_t word, std::vector<int32_t>& out)
{
    int count = 0, bits = 0;
    const unsigned dnib = word >> 30;
    if (code == 1)
        count = 4, bits = 8;
    else if (level == 1 && code == 2)
        count = 2, bits = 16;
    else if (level == 1 && code == 3)
        count = 1, bits = 32;
    else if (code == 2 && dnib == 1)
        count = 1, bits = 30;
    else if (code == 2 && dnib == 2)
        count = 2, bits = 15;
    else if (code == 2 && dnib == 3)
        count = 3, bits = 10;
    else if (code == 3 && dnib == 0)
        count = 5, bits = 6;
    else if (code == 3 && dnib == 1)
        count = 6, bits = 5;
    else if (code == 3 && dnib == 2)
        count = 7, bits = 4;
    else
        return false;
    for (int i = count - 1; i >= 0; --i) out.push_back(steim_field(word, i * bits, bits));
    return true;
}

inline SteimDecoded steim_decode(int level, const uint8_t* frames)
{
    SteimDecoded result;
    result.x0 = static_cast<int32_t>(steim_word(frames, 0, 1));
    result.xn = static_cast<int32_t>(steim_word(frames, 0, 2));
    std::vector<int32_t> differences;
    for (int f = 0; f < 15; ++f)
        for (int w = f ? 1 : 3; w < 16; ++w) {
            const unsigned code = steim_word(frames, f, 0) >> (30 - 2 * w) & 3;
            if (code && !steim_differences(level, code, steim_word(frames, f, w), differences))
                result.sound = false;
        }
    if (differences.empty()) return result;
    result.first_difference = differences[0];
    uint32_t x = static_cast<uint32_t>(result.x0) - static_cast<uint32_t>(differences[0]);
    for (const int32_t d : differences) {
        x += static_cast<uint32_t>(d);
        result.samples.push_back(static_cast<int32_t>(x));
    }
    return result;
}
