#include "packet/steim_table.h"

#include "driver/base/simd.h"
#include "packet/steim_fields.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr int Lanes = 8;
constexpr int Words = DT::Frame_words;
constexpr int Data_words = DT::Frame_cnt * (Words - 1) - 2; ///< words of a packet that can hold differences
constexpr int Most = Data_words * 7;                        ///< most differences of a packet
static_assert(Most + Lanes <= Samples_max, "one vector is written past the last difference");

/// How words are split into differences. The place of a word is 4 x code + its two top bits. It has Lanes
/// entries in `up` and `down`, from place x Lanes on: difference i is the word shifted up by up[i], so that
/// its sign bit is the top bit, and then down by down[i]. Entries past the count give values that are not
/// used. Of `count` only the first entry is used.
struct Splits {
    uint32_t up[16 * Lanes];
    int32_t down[16 * Lanes];
    uint32_t count[16 * Lanes];
};

/// Makes the lists. `fields_of(code, dnib)` returns the count and width of a word's differences.
template <class Fields_of>
constexpr Splits splits_of(Fields_of fields_of)
{
    Splits s{};
    for (unsigned place = 0; place < 16; ++place) {
        const SteimFields f = fields_of(place / 4, place % 4);
        s.count[place * Lanes] = f.count;
        for (unsigned i = 0; i < f.count; ++i) {
            s.up[place * Lanes + i] = 32U - f.width * (f.count - i);
            s.down[place * Lanes + i] = 32 - f.width;
        }
    }
    return s;
}

alignas(64) constexpr Splits Steim1 = splits_of([](unsigned code, unsigned) { return Steim1_fields[code]; });
alignas(64) constexpr Splits Steim2 = splits_of([](unsigned code, unsigned dnib) {
    return Steim2_fields[code][dnib];
});

/// The places of invalid Steim-2 words.
constexpr uint32_t Invalid_low = 4 * 2 + 0;
constexpr uint32_t Invalid_high = 4 * 3 + 3;
static_assert(Steim2_fields[2][0].count == 0 && Steim2_fields[3][3].count == 0);

using UintLanes = uint32_t __attribute__((vector_size(4 * Lanes)));
using IntLanes = int32_t __attribute__((vector_size(4 * Lanes)));
using ByteLanes = uint8_t __attribute__((vector_size(4 * Lanes)));

/// The differences of a packet, and the unused values after the last one.
using DifferenceRun = std::array<int32_t, Most + Lanes>;

/// The words of a frame in host order, and the index in the lists where the entries of each begin.
struct SteimFrame {
    alignas(32) uint32_t word[Words];
    alignas(32) uint32_t place[Words];
};

/// Writes values and indices of eight words of a frame. `down` is how far `codes` is shifted to bring each
/// word's code to the lowest bits. Sets the lanes of `invalid` whose words are invalid in Steim-2.
[[gnu::always_inline]] inline void take_apart(const uint8_t* from, uint32_t codes, const UintLanes& down,
                                              uint32_t* word, uint32_t* place, IntLanes& invalid)
{
    UintLanes v;
    memcpy(&v, from, sizeof v);
    if constexpr (std::endian::native == std::endian::little) {
        const ByteLanes b = reinterpret_cast<ByteLanes>(v);
        v = reinterpret_cast<UintLanes>(__builtin_shufflevector(b, b, 3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8,
                                                                15, 14, 13, 12, 19, 18, 17, 16, 23, 22, 21,
                                                                20, 27, 26, 25, 24, 31, 30, 29, 28));
    }
    const UintLanes at = (((UintLanes{} + codes) >> down) & 3U) << 2U | v >> 30U;
    invalid |= reinterpret_cast<IntLanes>((at == Invalid_low) | (at == Invalid_high));
    const UintLanes first = at * static_cast<uint32_t>(Lanes);
    memcpy(word, &v, sizeof v);
    memcpy(place, &first, sizeof first);
}

/// Writes the differences of a frame. Returns the place after the last.
[[gnu::always_inline]] inline int32_t* cut_words(const uint8_t* frame, uint32_t codes, const Splits& splits,
                                                 int32_t* to, IntLanes& invalid)
{
    constexpr UintLanes down_low = {30, 28, 26, 24, 22, 20, 18, 16};
    constexpr UintLanes down_high = {14, 12, 10, 8, 6, 4, 2, 0};
    SteimFrame apart{};
    take_apart(frame, codes, down_low, apart.word, apart.place, invalid);
    take_apart(frame + 4 * Lanes, codes, down_high, apart.word + Lanes, apart.place + Lanes, invalid);
#pragma GCC unroll 16
    for (int w = 0; w < Words; ++w) { // never taken: in the copy for other processors
        const uint32_t place = apart.place[w];
        UintLanes up;
        IntLanes down;
        memcpy(&up, splits.up + place, sizeof up);
        memcpy(&down, splits.down + place, sizeof down);
        const IntLanes values = reinterpret_cast<IntLanes>((UintLanes{} + apart.word[w]) << up) >> down;
        memcpy(to, &values, sizeof values);
        to += splits.count[place];
    }
    return to;
}

/// Widens the 8- or 16-bit differences of half a frame to 32 bits. With "unroll 1" the compiler makes vectors
/// of this loop; unrolled it would not.
template <class FieldType>
[[gnu::always_inline]] inline void widen(const uint8_t* half_frame, int32_t* to)
{
    constexpr int size = sizeof(FieldType);
#pragma GCC unroll 1
    for (int i = 0; i < DT::Frame_len / 2 / size; ++i) { // never taken: in the copy for other processors
        const uint8_t* const field = half_frame + i * size;
        to[i] = static_cast<FieldType>(size == 1 ? *field : be16(field));
    }
}

/// Writes the differences of a frame whose words all hold 8-bit or all hold 16-bit differences, as many
/// frames of Steim-1 recordings do. Returns the place after the last.
template <class FieldType>
[[gnu::always_inline]] inline int32_t* take_row(const uint8_t* frame, int32_t* to)
{
    constexpr int size = sizeof(FieldType);
    constexpr int n = 4 * (Words - 1) / size;
    constexpr int half = DT::Frame_len / 2;
    widen<FieldType>(frame + 4, to);                      // words 1 to 8
    widen<FieldType>(frame + half, to + n - half / size); // words 8 to 15
    return to + n;
}

/// The codes of a frame in which all words have code 1, and in which all have code 2.
constexpr uint32_t All_1 = 0x15555555;
constexpr uint32_t All_2 = 0x2AAAAAAA;
static_assert(Steim1_fields[1].width == 8 && Steim2_fields[1][0].width == 8 && Steim1_fields[2].width == 16);

struct Found {
    int count;  ///< of the differences
    bool valid; ///< no word is invalid in Steim-2
};

/// Writes all differences of a packet, in order. The codes of control words and of the two samples in frame 1
/// are masked: they hold none.
VX_WIDE Found differences_of(const uint8_t* frame, const Splits& splits, bool steim2, int32_t* differences)
{
    int32_t* to = differences;
    IntLanes invalid{};
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

/// Writes the running sums of n differences, from `value` on, modulo 2^32. Returns the last sum. Each vector
/// is summed by itself, first its halves, then the low half's sum is added to the high half. So only one
/// addition per vector waits for the vector before.
VX_WIDE uint32_t sum_up(const int32_t* differences, int n, uint32_t value, int32_t* samples)
{
    UintLanes before = UintLanes{} + value;
    for (int at = 0; at < n; at += Lanes) {
        UintLanes v;
        memcpy(&v, differences + at, sizeof v);
        v += __builtin_shufflevector(UintLanes{}, v, 0, 8, 9, 10, 4, 12, 13, 14);
        v += __builtin_shufflevector(UintLanes{}, v, 0, 1, 8, 9, 4, 5, 12, 13);
        v += __builtin_shufflevector(UintLanes{}, v, 0, 1, 2, 3, 11, 11, 11, 11);
        const UintLanes sums = v + before;
        memcpy(samples + at, &sums, sizeof sums);
        before += __builtin_shufflevector(v, v, 7, 7, 7, 7, 7, 7, 7, 7);
    }
    return static_cast<uint32_t>(samples[n - 1]);
}

/// Decodes a packet; see steim_table.h.
bool by_table(const PACKET& pkt, const Splits& splits, bool steim2, uint32_t last, DATA_BUF& out)
{
    const uint8_t* const frames = bytes(pkt, {DT::Frames, Packet_size - DT::Frames});
    const uint32_t x0 = be32(frames + 4 * DT::X0_word);
    const uint32_t xn = be32(frames + 4 * DT::Xn_word);
    static DifferenceRun differences;
    const auto [n, valid] = differences_of(frames, splits, steim2, differences.data());
    if (n == 0 || (steim2 && !valid) || static_cast<uint16_t>(n) != pkt.samples) return false;

    // The first difference, which leads to the first sample. In Steim-1 it is in word 3 of frame 1, in
    // Steim-2 in the first word of frame 1 that holds any. Where there is none it is 0.
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
