// Both Steim decoders, written down a second time, one step of their description after the other and
// without a thought of speed.
#pragma once

#include "kit/hex_lines.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace by_the_book {

struct Decoded {
    std::vector<int32_t> samples;
    uint32_t last = 0;     ///< what the channel carries on
    bool mismatch = false; ///< the channel is marked and the log gets the text
    std::string log;
    std::string shown; ///< on the console
};

inline uint32_t word_at(const std::string& packet, int frame, int word)
{
    const size_t at = static_cast<size_t>(64 * frame + 4 * word);
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value * 256 + static_cast<unsigned char>(packet[at + i]);
    return value;
}

inline int code_of(const std::string& packet, int frame, int word)
{
    return static_cast<int>(word_at(packet, frame, 0) >> (30 - 2 * word) & 3);
}

/// The field of `width` bits whose lowest one is bit `shift`, as a signed number.
inline int64_t signed_field(uint32_t word, int shift, int width)
{
    int64_t value = static_cast<int64_t>(word >> shift) & ((int64_t{1} << width) - 1);
    if (value >= int64_t{1} << (width - 1)) value -= int64_t{1} << width;
    return value;
}

/// The differences of one word, or the dnib of one that has none to give.
struct Differences {
    std::vector<int64_t> values;
    int invalid = -1;
};

inline Differences fields(uint32_t word, int count, int width)
{
    Differences d;
    for (int i = count - 1; i >= 0; --i) d.values.push_back(signed_field(word, i * width, width));
    return d;
}

inline Differences differences(int level, int code, uint32_t word)
{
    if (code == 0) return {};
    if (code == 1) return fields(word, 4, 8);
    if (level == 1) return code == 2 ? fields(word, 2, 16) : fields(word, 1, 32);
    const int dnib = static_cast<int>(word >> 30);
    switch (10 * code + dnib) {
    case 21: return fields(word, 1, 30);
    case 22: return fields(word, 2, 15);
    case 23: return fields(word, 3, 10);
    case 30: return fields(word, 5, 6);
    case 31: return fields(word, 6, 5);
    case 32: return fields(word, 7, 4);
    }
    return {{}, dnib};
}

inline std::string line(const char* what, uint32_t start, uint32_t stop, unsigned samples)
{
    char text[128];
    snprintf(text, sizeof text, "     %s start 0x%08X  stop 0x%08X  samples %u\r\n", what, start, stop,
             samples);
    return text;
}

/// Decodes a packet with `count` samples by its header, for a channel whose last sample was `last`.
inline Decoded decode(int level, const std::string& packet, unsigned count, uint32_t last)
{
    Decoded made;
    const uint32_t x0 = word_at(packet, 1, 1), xn = word_at(packet, 1, 2);

    int start = 3;
    if (level == 2)
        while (start < 15 && code_of(packet, 1, start) == 0) ++start;
    const Differences first = differences(level, code_of(packet, 1, start), word_at(packet, 1, start));
    uint32_t diff = 0;
    if (!first.values.empty()) diff = static_cast<uint32_t>(first.values[0]);
    if (first.invalid >= 0) diff = word_at(packet, 1, start);

    bool mark = last != 0 && last + diff != x0;
    uint32_t value = x0 - diff;
    for (int frame = 1; frame <= 15; ++frame) {
        for (int w = frame == 1 ? start : 1; w < 16; ++w) {
            const int code = code_of(packet, frame, w);
            const Differences d = differences(level, code, word_at(packet, frame, w));
            if (d.invalid >= 0)
                made.shown += "Error in Steim2 W-type (" + std::to_string(d.invalid) + ") for C=2\n";
            for (const int64_t difference : d.values) {
                if (level == 2 || code != 3) diff = static_cast<uint32_t>(difference);
                value += static_cast<uint32_t>(difference);
                made.samples.push_back(static_cast<int32_t>(value));
            }
        }
    }
    made.last = value;
    if (value == xn && count == made.samples.size() && !mark) return made;

    made.mismatch = true;
    made.last = xn;
    made.log = line("Read", x0, xn, count) +
               line("Calc", diff + last, value, static_cast<unsigned>(made.samples.size())) +
               kit::hex_lines(packet) + "\r\n";
    return made;
}

} // namespace by_the_book
