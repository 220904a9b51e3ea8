#include "packet/steim_table.h"

#include "driver/simd.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr int Lanes = 8;
constexpr int Words = 16;
constexpr int Data_words = DT::Frame_cnt * (Words - 1) - 2; ///< but for control words and constants
constexpr int Most = Data_words * 7;                        ///< differences a packet can hold
static_assert(Most + Lanes <= Samples_max, "whole vectors are written");

/// How a word of one code and sub-code falls into differences: each is shifted up so that its sign is the
/// word's top bit, then down to its place. Lanes past the count make values that nobody reads.
struct alignas(128) SPLIT {
    uint32_t up[Lanes];
    int32_t down[Lanes];
    uint32_t count;
    uint32_t invalid;
};

constexpr SPLIT split(unsigned count, unsigned width)
{
    SPLIT s{};
    s.count = count;
    for (unsigned i = 0; i < count; ++i) {
        s.up[i] = 32 - width * (count - i);
        s.down[i] = static_cast<int32_t>(32 - width);
    }
    return s;
}

constexpr SPLIT invalid_split()
{
    SPLIT s{};
    s.invalid = 1;
    return s;
}

/// By code and the word's two top bits: place 4 x code + top bits.
using SPLITS = std::array<SPLIT, 16>;

constexpr SPLIT none = split(0, 0), bytes = split(4, 8), pairs = split(2, 16), whole = split(1, 32);
constexpr SPLIT odd = invalid_split();
// clang-format off
constexpr SPLITS Steim1 = {none,  none,         none,         none,
                           bytes, bytes,        bytes,        bytes,
                           pairs, pairs,        pairs,        pairs,
                           whole, whole,        whole,        whole};
constexpr SPLITS Steim2 = {none,  none,         none,         none,
                           bytes, bytes,        bytes,        bytes,
                           odd,   split(1, 30), split(2, 15), split(3, 10),
                           split(5, 6), split(6, 5), split(7, 4), odd};
// clang-format on

using UINTS = uint32_t __attribute__((vector_size(4 * Lanes)));
using INTS = int32_t __attribute__((vector_size(4 * Lanes)));
using BYTES = uint8_t __attribute__((vector_size(4 * Lanes)));

/// Room for all differences a packet can hold, and for the lanes written past the last one.
using DIFFERENCES = std::array<int32_t, Most + Lanes>;

/// A big-endian word of the packet in every lane.
[[gnu::always_inline]] inline void put_in_all_lanes(const uint8_t* at, UINTS& lanes)
{
    uint32_t word;
    memcpy(&word, at, sizeof word);
    lanes = UINTS{} + word;
    if constexpr (std::endian::native == std::endian::big) return;
    const BYTES b = reinterpret_cast<BYTES>(lanes);
    lanes = reinterpret_cast<UINTS>(__builtin_shufflevector(b, b, 3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15,
                                                            14, 13, 12, 19, 18, 17, 16, 23, 22, 21, 20, 27,
                                                            26, 25, 24, 31, 30, 29, 28));
}

/// All differences of a packet, from word 3 of frame 1 on. Returns how many, or -1 when a word is invalid.
VX_WIDE int differences_of(const uint8_t* frames, const SPLIT* splits, int32_t* to)
{
    const int32_t* const start = to;
    uint32_t invalid = 0;
    for (int frame = 0; frame < DT::Frame_cnt; ++frame, frames += DT::Frame_len) {
        uint32_t codes = be32(frames);
        if (frame == 0) codes &= 0x03FFFFFF; // its first words are no differences: as if they held no data
#pragma GCC unroll 15
        for (int w = 1; w < Words; ++w) {
            const SPLIT& s = splits[(codes >> (30 - 2 * w) & 3) << 2 | frames[4 * w] >> 6];
            UINTS up;
            INTS down;
            memcpy(&up, s.up, sizeof up);
            memcpy(&down, s.down, sizeof down);
            UINTS word;
            put_in_all_lanes(frames + 4 * w, word);
            const INTS values = reinterpret_cast<INTS>(word << up) >> down;
            memcpy(to, &values, sizeof values);
            to += s.count;
            invalid |= s.invalid;
        }
    }
    return invalid ? -1 : static_cast<int>(to - start);
}

/// Running sum of n differences onto `value`, modulo 2^32, whole vectors at a time. Returns the last sum.
VX_WIDE uint32_t sum_up(const int32_t* differences, int n, uint32_t value, int32_t* samples)
{
    for (int at = 0; at < n; at += Lanes) {
        UINTS v;
        memcpy(&v, differences + at, sizeof v);
        v += __builtin_shufflevector(UINTS{}, v, 7, 8, 9, 10, 11, 12, 13, 14);
        v += __builtin_shufflevector(UINTS{}, v, 6, 7, 8, 9, 10, 11, 12, 13);
        v += __builtin_shufflevector(UINTS{}, v, 4, 5, 6, 7, 8, 9, 10, 11);
        v += value;
        memcpy(samples + at, &v, sizeof v);
        value = v[Lanes - 1];
    }
    return static_cast<uint32_t>(samples[n - 1]);
}

/// `first_word_leads`: the first difference is that of word 3 even when that word holds none (and is 0 then).
bool by_table(const PACKET& pkt, const SPLITS& splits, bool first_word_leads, uint32_t last, DATA_BUF& out)
{
    const uint8_t* const frames = pkt.bytes + DT::Frames;
    const uint32_t x0 = be32(frames + 4);
    const uint32_t xn = be32(frames + 8);
    static DIFFERENCES differences;
    const int n = differences_of(frames, splits.data(), differences.data());
    if (n <= 0 || static_cast<uint16_t>(n) != bcd(pkt, EVT::Samples)) return false;

    const bool empty_first = (be32(frames) >> (30 - 2 * 3) & 3) == 0;
    const uint32_t lead = first_word_leads && empty_first ? 0 : static_cast<uint32_t>(differences[0]);
    if (last != 0 && last + lead != x0) return false;
    out.count = static_cast<uint32_t>(n);
    return sum_up(differences.data(), n, x0 - lead, out.sample) == xn;
}

} // namespace

bool steim1_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out)
{
    return by_table(pkt, Steim1, true, last, out);
}

bool steim2_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out)
{
    return by_table(pkt, Steim2, false, last, out);
}
