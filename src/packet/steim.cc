// Decodes Steim-compressed samples word by word. A packet has fifteen frames of differences between
// neighbouring samples; it also stores its first and last sample, which check the decoding. Begin with
// Buf_c0.
#include "packet/samples.h"

#include "packet/steim_fields.h"
#include "packet/steim_table.h"

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr int Words = DT::Frame_words;

const uint8_t* word_at(const PACKET& pkt, int frame, int word)
{
    return bytes(pkt, {DT::Frames + frame * DT::Frame_len + word * 4, 4});
}

/// One decoding. All sums are modulo 2^32.
struct SteimDecoding {
    const PACKET& pkt;
    DATA_BUF& out;
    uint32_t x0;           ///< the stored first sample
    uint32_t xn;           ///< the stored last sample
    uint32_t value = 0;    ///< the latest sample
    uint32_t diff = 0;     ///< "Calc start" of the log is this plus the last sample of the packet before
    bool mismatch = false; ///< the packet does not continue the one before

    SteimDecoding(const PACKET& p, DATA_BUF& o)
        : pkt(p), out(o), x0(be32(word_at(p, 0, DT::X0_word))), xn(be32(word_at(p, 0, DT::Xn_word)))
    {
        out.count = 0;
    }

    /// Adds the differences of one word. The sum is a local variable, so that it stays in a register.
    template <size_t n>
    void add(const std::array<uint32_t, n>& differences)
    {
        uint32_t latest = value;
        uint32_t count = out.count;
        for (const uint32_t difference : differences) {
            latest += difference;
            // never taken: 223 words hold at most 1561 differences
            if (count < Samples_max) out.sample[count++] = static_cast<int32_t>(latest);
        }
        value = latest;
        out.count = count;
    }

    /// The same; "Calc start" will show the last difference.
    template <size_t n>
    void add_and_remember(const std::array<uint32_t, n>& differences)
    {
        add(differences);
        diff = differences.back();
    }

    /// Sets `value` to x0 minus the first difference, which the first data word adds again. Notes a mismatch
    /// unless `last`, the last sample of the packet before, plus the first difference gives x0; does not test
    /// this if `last` is 0 (none).
    void start(uint32_t last)
    {
        if (last != 0 && last + diff != x0) mismatch = true;
        value = x0 - diff;
    }
};

/// Difference i of a Steim-2 word, the most significant first.
uint32_t steim2_difference(uint32_t word, SteimFields fields, size_t i)
{
    const unsigned shift = static_cast<unsigned>(fields.width * (fields.count - 1 - i));
    return static_cast<uint32_t>(Steim2_get_bits(word, shift, fields.width));
}

uint32_t signed_byte(uint8_t b)
{
    return static_cast<uint32_t>(static_cast<int8_t>(b));
}
std::array<uint32_t, 4> bytes_of(const uint8_t* word)
{
    return {signed_byte(word[0]), signed_byte(word[1]), signed_byte(word[2]), signed_byte(word[3])};
}
uint32_t signed_pair(const uint8_t* p)
{
    return static_cast<uint32_t>(static_cast<int16_t>(be16(p)));
}

/// Calls `word(code, bytes)` for all data words; in frame 1 they begin with word `first`.
template <class Word>
void each_word(const PACKET& pkt, int first, Word word)
{
    for (int frame = 0; frame < DT::Frame_cnt; ++frame, first = 1) {
        uint8_t codes[Words];
        C0_flag_cvt(word_at(pkt, frame, 0), codes);
        for (int w = first; w < Words; ++w) word(codes[w], word_at(pkt, frame, w));
    }
}

/// carried: flags-array-messages. Codes have two bits, so neither this message nor the others about codes are
/// ever printed.
// never run: a difference code has two bits
void complain_about_first(const PACKET& pkt, const uint8_t* codes)
{
    uint32_t in_memory;
    memcpy(&in_memory, word_at(pkt, 0, 0), sizeof in_memory);
    fprintf(stderr, "\nError in flags array (%08" PRIX32 "):", in_memory);
    for (int i = 0; i < Words; ++i) fprintf(stderr, " %u", codes[i]);
}

/// The first difference of a Steim-1 packet; 0 if its word is empty.
uint32_t steim1_first(const PACKET& pkt)
{
    uint8_t codes[Words];
    C0_flag_cvt(word_at(pkt, 0, 0), codes);
    const uint8_t* word = word_at(pkt, 0, DT::First_data_word);
    switch (codes[DT::First_data_word]) { // never taken: a difference code has two bits
    case 0: return 0;
    case 1: return signed_byte(word[0]);
    case 2: return signed_pair(word);
    case 3: return be32(word);
    default: complain_about_first(pkt, codes); return 0; // never run: a difference code has two bits
    }
}

void steim1_word(SteimDecoding& s, unsigned code, const uint8_t* word)
{
    switch (code) { // never taken: a difference code has two bits
    case 0: break;
    case 1: s.add_and_remember(bytes_of(word)); break;
    case 2: s.add_and_remember(std::array{signed_pair(word), signed_pair(word + 2)}); break;
    case 3:
        s.add(std::array{be32(word)});
        break; // kept: calc-start-8-16. A 32-bit difference is not remembered.
    default: printf("Error in flags array: %u\n", code); // never run: a difference code has two bits
    }
}

/// The first word of frame 1 whose code is not 0; past the last word when there is none.
int steim2_first_word(const PACKET& pkt)
{
    uint8_t codes[Words];
    C0_flag_cvt(word_at(pkt, 0, 0), codes);
    int w = DT::First_data_word;
    while (w < Words && codes[w] == 0) ++w;
    return w;
}

/// The first difference of a Steim-2 packet, which word `at` of frame 1 holds; 0 without such a word.
uint32_t steim2_first(const PACKET& pkt, int at)
{
    if (at == Words) return 0;
    uint8_t codes[Words];
    C0_flag_cvt(word_at(pkt, 0, 0), codes);
    const uint32_t word = be32(word_at(pkt, 0, at));
    switch (codes[at]) { // never taken: a difference code has two bits
    case 1: return signed_byte(word_at(pkt, 0, at)[0]);
    case 2:
    case 3: {
        const SteimFields fields = Steim2_fields[codes[at]][word >> 30];
        return fields.count ? steim2_difference(word, fields, 0) : word; // kept: invalid-first-is-whole
    }
    default: printf("Error in flags array\n"); return 0; // never run: a difference code has two bits
    }
}

/// Adds the differences of a Steim-2 word. With code and dnib as constants this is several times as fast,
/// which matters in recordings whose packets are all unsound.
template <unsigned code, unsigned dnib>
void add_differences(SteimDecoding& s, uint32_t word)
{
    constexpr SteimFields fields = Steim2_fields[code][dnib];
    std::array<uint32_t, fields.count> differences;
    for (size_t i = 0; i < fields.count; ++i) differences[i] = steim2_difference(word, fields, i);
    s.add_and_remember(differences);
}

void steim2_word(SteimDecoding& s, unsigned code, const uint8_t* bytes)
{
    if (code == 0) return;
    if (code == 1) {
        s.add_and_remember(bytes_of(bytes));
        return;
    }
    if (code > 3) { // never run: a difference code has two bits
        printf("Error in flags array\n");
        return;
    }
    const uint32_t word = be32(bytes);
    switch (code << 2 | word >> 30) {
    case 2 << 2 | 1: add_differences<2, 1>(s, word); break;
    case 2 << 2 | 2: add_differences<2, 2>(s, word); break;
    case 2 << 2 | 3: add_differences<2, 3>(s, word); break;
    case 3 << 2 | 0: add_differences<3, 0>(s, word); break;
    case 3 << 2 | 1: add_differences<3, 1>(s, word); break;
    case 3 << 2 | 2: add_differences<3, 2>(s, word); break;
    // kept: always-c-2. The text says C=2 for words of code 3 too.
    default: printf("Error in Steim2 W-type (%d) for C=2\n", static_cast<int>(word >> 30));
    }
}

/// The verdict (see Decoded). The next packet is checked against the stored last sample, not the decoded one.
Decoded checked(const SteimDecoding& s, uint32_t& last)
{
    const bool sound = s.value == s.xn && s.pkt.samples == (s.out.count & 0xFFFF) && !s.mismatch;
    const Decoded decoded{sound, s.x0, s.xn, s.diff + last, s.value};
    last = s.xn;
    return decoded;
}

} // namespace

void C0_flag_clr(uint8_t* codes)
{
    memset(codes, 0, Words);
}

void C0_flag_cvt(const uint8_t* control, uint8_t* codes)
{
    C0_flag_clr(codes);
    const uint32_t word = be32(control);
    for (int i = 0; i < Words; ++i) codes[i] = static_cast<uint8_t>(word >> (30 - 2 * i) & 3);
}

int32_t Steim2_get_bits(uint32_t word, uint32_t shift, uint32_t width)
{
    if (width > 32 || width == 0 || shift > 32) return 0;
    const uint32_t mask = 0xFFFFFFFFU << (width & 31);
    const uint32_t shifted = static_cast<uint32_t>(static_cast<int32_t>(word) >> (shift & 31));
    const uint32_t value = shifted & ~mask;
    const bool negative = value >> (width - 1) & 1;
    return static_cast<int32_t>(negative ? value | mask : value);
}

Decoded Buf_c0(const PACKET& pkt, uint32_t& last, DATA_BUF& out)
{
    if (!steim1_by_table(pkt, last, out)) return Buf_c0_by_word(pkt, last, out);
    last = static_cast<uint32_t>(out.sample[out.count - 1]);
    return {};
}

Decoded Buf_c0_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out)
{
    SteimDecoding s(pkt, out);
    s.diff = steim1_first(pkt);
    s.start(last);
    each_word(pkt, DT::First_data_word,
              [&](unsigned code, const uint8_t* word) { steim1_word(s, code, word); });
    return checked(s, last);
}

Decoded Buf_c2(const PACKET& pkt, uint32_t& last, DATA_BUF& out)
{
    if (!steim2_by_table(pkt, last, out)) return Buf_c2_by_word(pkt, last, out);
    last = static_cast<uint32_t>(out.sample[out.count - 1]);
    return {};
}

Decoded Buf_c2_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out)
{
    SteimDecoding s(pkt, out);
    const int first = steim2_first_word(pkt);
    s.diff = steim2_first(pkt, first);
    s.start(last);
    each_word(pkt, first, [&](unsigned code, const uint8_t* word) { steim2_word(s, code, word); });
    return checked(s, last);
}
