#include "packet/steim_table.h"

#include "driver/base/simd.h"
#include "packet/steim_fields.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr int Lanes = 8;
constexpr int Words = DT::Frame_words;
constexpr int Data_words = DT::Frame_cnt * (Words - 1) - 2; ///< but for control words and constants
constexpr int Most = Data_words * 7;                        ///< differences a packet can hold
static_assert(Most + Lanes <= Samples_max, "whole vectors are written");

/// How words fall into differences, by place (4 x code + the word's two top bits): each difference is shifted
/// up so that its sign is the word's top bit, then down to its place. Lanes past the count make values that
/// nobody reads. A place has Lanes entries in each list; of the counts only the first is used.
struct SPLITS {
    uint32_t up[16 * Lanes];
    int32_t down[16 * Lanes];
    uint32_t count[16 * Lanes];
};

/// `fields_of(code, dnib)` tells how a word falls apart.
template <class Fields_of>
constexpr SPLITS splits_of(Fields_of fields_of)
{
    SPLITS s{};
    for (unsigned place = 0; place < 16; ++place) {
        const STEIM_FIELDS f = fields_of(place / 4, place % 4);
        s.count[place * Lanes] = f.count;
        for (unsigned i = 0; i < f.count; ++i) {
            s.up[place * Lanes + i] = 32U - f.width * (f.count - i);
            s.down[place * Lanes + i] = 32 - f.width;
        }
    }
    return s;
}

alignas(64) constexpr SPLITS Steim1 = splits_of([](unsigned code, unsigned) { return Steim1_fields[code]; });
alignas(64) constexpr SPLITS Steim2 = splits_of([](unsigned code, unsigned dnib) {
    return Steim2_fields[code][dnib];
});

/// The places of words that Steim-2 does not have.
constexpr uint32_t Invalid_low = 4 * 2 + 0;
constexpr uint32_t Invalid_high = 4 * 3 + 3;
static_assert(Steim2_fields[2][0].count == 0 && Steim2_fields[3][3].count == 0);

using UINTS = uint32_t __attribute__((vector_size(4 * Lanes)));
using INTS = int32_t __attribute__((vector_size(4 * Lanes)));
using BYTES = uint8_t __attribute__((vector_size(4 * Lanes)));

/// Room for all differences a packet can hold, and for the lanes written past the last one.
using DIFFERENCES = std::array<int32_t, Most + Lanes>;

/// Words of a frame in host order, and where their places begin in the lists.
struct FRAME {
    alignas(32) uint32_t word[Words];
    alignas(32) uint32_t place[Words];
};

/// Eight words of a frame at once. `down` brings each word's code to the lowest bits of `codes`. Gathers in
/// `invalid` the lanes of words that Steim-2 does not have.
[[gnu::always_inline]] inline void take_apart(const uint8_t* from, uint32_t codes, const UINTS& down,
                                              uint32_t* word, uint32_t* place, INTS& invalid)
{
    UINTS v;
    memcpy(&v, from, sizeof v);
    if constexpr (std::endian::native == std::endian::little) {
        const BYTES b = reinterpret_cast<BYTES>(v);
        v = reinterpret_cast<UINTS>(__builtin_shufflevector(b, b, 3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15,
                                                            14, 13, 12, 19, 18, 17, 16, 23, 22, 21, 20, 27,
                                                            26, 25, 24, 31, 30, 29, 28));
    }
    const UINTS at = (((UINTS{} + codes) >> down) & 3U) << 2U | v >> 30U;
    invalid |= reinterpret_cast<INTS>((at == Invalid_low) | (at == Invalid_high));
    const UINTS first = at * static_cast<uint32_t>(Lanes);
    memcpy(word, &v, sizeof v);
    memcpy(place, &first, sizeof first);
}

/// The differences of a frame, each of its words cut as the lists say. Returns the place behind the last.
[[gnu::always_inline]] inline int32_t* cut_words(const uint8_t* frame, uint32_t codes, const SPLITS& splits,
                                                 int32_t* to, INTS& invalid)
{
    constexpr UINTS down_low = {30, 28, 26, 24, 22, 20, 18, 16};
    constexpr UINTS down_high = {14, 12, 10, 8, 6, 4, 2, 0};
    FRAME apart{};
    take_apart(frame, codes, down_low, apart.word, apart.place, invalid);
    take_apart(frame + 4 * Lanes, codes, down_high, apart.word + Lanes, apart.place + Lanes, invalid);
#pragma GCC unroll 16
    for (int w = 0; w < Words; ++w) {
        const uint32_t place = apart.place[w];
        UINTS up;
        INTS down;
        memcpy(&up, splits.up + place, sizeof up);
        memcpy(&down, splits.down + place, sizeof down);
        const INTS values = reinterpret_cast<INTS>((UINTS{} + apart.word[w]) << up) >> down;
        memcpy(to, &values, sizeof values);
        to += splits.count[place];
    }
    return to;
}

/// Half a frame of bytes, or of halves of words, widened. That is some whole vectors; a loop unrolled before
/// the compiler comes to vectors would not become any.
template <class FIELD>
[[gnu::always_inline]] inline void widen(const uint8_t* half_frame, int32_t* to)
{
    constexpr int size = sizeof(FIELD);
#pragma GCC unroll 1
    for (int i = 0; i < DT::Frame_len / 2 / size; ++i) {
        const uint8_t* const field = half_frame + i * size;
        to[i] = static_cast<FIELD>(size == 1 ? *field : be16(field));
    }
}

/// The differences of a frame whose words all hold bytes, or all halves: one row of them. Many frames of
/// Steim-1 recordings are so. Returns the place behind the last.
template <class FIELD>
[[gnu::always_inline]] inline int32_t* take_row(const uint8_t* frame, int32_t* to)
{
    constexpr int size = sizeof(FIELD);
    constexpr int n = 4 * (Words - 1) / size;
    constexpr int half = DT::Frame_len / 2;
    widen<FIELD>(frame + 4, to); // up to the word that both halves take
    widen<FIELD>(frame + half, to + n - half / size);
    return to + n;
}

/// The codes of a frame whose words all have code 1, and all code 2: halves, of Steim-1.
constexpr uint32_t All_1 = 0x15555555;
constexpr uint32_t All_2 = 0x2AAAAAAA;
static_assert(Steim1_fields[1].width == 8 && Steim2_fields[1][0].width == 8 && Steim1_fields[2].width == 16);

struct FOUND {
    int count;  ///< of differences
    bool valid; ///< every word is one that Steim-2 has
};

/// All differences of a packet, in order. Control words and the two constants of frame 1 hold none.
VX_WIDE FOUND differences_of(const uint8_t* frame, const SPLITS& splits, bool steim2, int32_t* differences)
{
    int32_t* to = differences;
    INTS invalid{};
    for (int f = 0; f < DT::Frame_cnt; ++f, frame += DT::Frame_len) {
        const uint32_t codes = be32(frame) & (f == 0 ? 0x03FFFFFFU : 0x3FFFFFFFU);
        if (codes == All_1)
            to = take_row<int8_t>(frame, to);
        else if (codes == All_2 && !steim2)
            to = take_row<int16_t>(frame, to);
        else
            to = cut_words(frame, codes, splits, to, invalid);
    }
    int any = 0;
    for (int lane = 0; lane < Lanes; ++lane) any |= invalid[lane];
    return {static_cast<int>(to - differences), any == 0};
}

/// Running sum of n differences onto `value`, modulo 2^32, whole vectors at a time: within each half of a
/// vector, then the low half's sum onto the high one. Returns the last sum. From one vector to the next only
/// one addition waits for the one before.
VX_WIDE uint32_t sum_up(const int32_t* differences, int n, uint32_t value, int32_t* samples)
{
    UINTS before = UINTS{} + value;
    for (int at = 0; at < n; at += Lanes) {
        UINTS v;
        memcpy(&v, differences + at, sizeof v);
        v += __builtin_shufflevector(UINTS{}, v, 0, 8, 9, 10, 4, 12, 13, 14);
        v += __builtin_shufflevector(UINTS{}, v, 0, 1, 8, 9, 4, 5, 12, 13);
        v += __builtin_shufflevector(UINTS{}, v, 0, 1, 2, 3, 11, 11, 11, 11);
        const UINTS sums = v + before;
        memcpy(samples + at, &sums, sizeof sums);
        before += __builtin_shufflevector(v, v, 7, 7, 7, 7, 7, 7, 7, 7);
    }
    return static_cast<uint32_t>(samples[n - 1]);
}

bool by_table(const PACKET& pkt, const SPLITS& splits, bool steim2, uint32_t last, DATA_BUF& out)
{
    const uint8_t* const frames = bytes(pkt, {DT::Frames, Packet_size - DT::Frames});
    const uint32_t x0 = be32(frames + 4 * DT::X0_word);
    const uint32_t xn = be32(frames + 4 * DT::Xn_word);
    static DIFFERENCES differences;
    const auto [n, valid] = differences_of(frames, splits, steim2, differences.data());
    if (n == 0 || (steim2 && !valid) || static_cast<uint16_t>(n) != pkt.samples) return false;

    // The difference that leads to the first sample stands in frame 1, of Steim-1 in word 3 of it, or there
    // is none.
    const uint32_t may_lead = steim2 ? 0x03FFFFFF : 0x03000000; // the codes of those words
    const uint32_t lead = (be32(frames) & may_lead) == 0 ? 0 : static_cast<uint32_t>(differences[0]);
    if (last != 0 && last + lead != x0) return false;
    out.count = static_cast<uint32_t>(n);
    return sum_up(differences.data(), n, x0 - lead, out.sample) == xn;
}

} // namespace

bool steim1_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out)
{
    return by_table(pkt, Steim1, false, last, out);
}

bool steim2_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out)
{
    return by_table(pkt, Steim2, true, last, out);
}
