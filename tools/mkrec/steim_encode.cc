// Packs word by word: each word takes as many of the next differences as one of its forms can hold.
#include "mkrec/steim_encode.h"

#include "packet/codec.h"

#include <algorithm>
#include <cstring>

namespace mkrec {

namespace {

/// A form of a word: number and width of its differences, and their codes.
struct SteimForm {
    int count, bits;
    uint32_t code; // the word's two bits in the control word
    uint32_t dnib; // the two highest bits of the word, if the code needs them
};

// By count; a count without a form uses the next smaller count that has one.
constexpr SteimForm Forms1[] = {{0, 0, 0, 0}, {1, 32, 3, 0}, {2, 16, 2, 0}, {2, 16, 2, 0}, {4, 8, 1, 0}};
constexpr SteimForm Forms2[] = {{0, 0, 0, 0}, {1, 30, 2, 1}, {2, 15, 2, 2}, {3, 10, 2, 3},
                                {4, 8, 1, 0}, {5, 6, 3, 0},  {6, 5, 3, 1},  {7, 4, 3, 2}};

struct DifferenceRun {
    int32_t d[Steim2_most];
    uint8_t share[Steim2_most + 1]; // the most differences that a word with this one in it can hold; 0: none,
                                    // as after the last one
    int n;
};

/// Maps a number to 0 and up so that numbers of the same width are together: 7 and -8 both need 4 bits.
int32_t magnitude(int32_t d)
{
    return d ^ (d >> 31);
}

uint8_t share1(int32_t m)
{
    return static_cast<uint8_t>(4 - 2 * (m > 0x7F) - (m > 0x7FFF));
}

uint8_t share2(int32_t m)
{
    return static_cast<uint8_t>(7 - (m > 0x7) - (m > 0xF) - (m > 0x1F) - (m > 0x7F) - (m > 0x1FF) -
                                (m > 0x3FFF) - (m > 0x1FFFFFFF));
}

int32_t difference(int32_t to, int32_t from)
{
    return static_cast<int32_t>(static_cast<uint32_t>(to) - static_cast<uint32_t>(from));
}

void take_differences(SteimLevel level, const int32_t* x, int n, int32_t previous, DifferenceRun& diff)
{
    n = std::min(n, level == SteimLevel::level1 ? Steim1_most : Steim2_most);
    diff.n = n;
    if (n > 0) diff.d[0] = difference(x[0], previous);
    for (int i = 1; i < n; ++i) diff.d[i] = difference(x[i], x[i - 1]);
    if (level == SteimLevel::level1)
        for (int i = 0; i < n; ++i) diff.share[i] = share1(magnitude(diff.d[i]));
    else
        for (int i = 0; i < n; ++i) diff.share[i] = share2(magnitude(diff.d[i]));
    diff.share[n] = 0;
}

/// How many differences, from the first of these shares on, fit together into one word.
int fitting(const uint8_t* share)
{
    int count = 0;
    for (int most = share[0]; most > count; most = std::min<int>(most, share[count])) ++count;
    return count;
}

template <int count, int bits>
uint32_t fields(const int32_t* d)
{
    uint32_t word = 0;
    for (int i = 0; i < count; ++i) word = word << bits | (static_cast<uint32_t>(d[i]) & ((1u << bits) - 1));
    return word;
}

uint32_t packed(const int32_t* d, const SteimForm& form)
{
    const uint32_t dnib = form.dnib << 30;
    switch (form.bits) {
    case 4: return dnib | fields<7, 4>(d);
    case 5: return dnib | fields<6, 5>(d);
    case 6: return dnib | fields<5, 6>(d);
    case 8: return fields<4, 8>(d);
    case 10: return dnib | fields<3, 10>(d);
    case 15: return dnib | fields<2, 15>(d);
    case 16: return fields<2, 16>(d);
    case 30: return dnib | fields<1, 30>(d);
    }
    return static_cast<uint32_t>(*d);
}

/// Fills one frame from data word `word` on with the differences from number `at` on; returns the number of
/// the first one that did not fit.
int fill_frame(const DifferenceRun& diff, const SteimForm* forms, int at, int word, uint8_t* frame)
{
    uint32_t control = 0;
    for (; word < DT::Frame_words; ++word) {
        const SteimForm& form = forms[fitting(diff.share + at)];
        if (form.count == 0) break;
        put_be32(frame + 4 * word, packed(diff.d + at, form));
        control |= form.code << (30 - 2 * word);
        at += form.count;
    }
    put_be32(frame, control);
    return at;
}

} // namespace

SteimFill steim_encode(SteimLevel level, const int32_t* x, int n, int32_t previous, uint8_t* frames)
{
    DifferenceRun diff;
    take_differences(level, x, n, previous, diff);
    const SteimForm* forms = level == SteimLevel::level1 ? Forms1 : Forms2;
    memset(frames, 0, Steim_len);

    SteimFill fill{0, 0, false};
    while (fill.frames < Steim_frames && diff.share[fill.samples] > 0) {
        uint8_t* frame = frames + fill.frames * Steim_frame_len;
        fill.samples = fill_frame(diff, forms, fill.samples, fill.frames ? 1 : DT::First_data_word, frame);
        ++fill.frames;
    }
    fill.too_wide = fill.samples < diff.n && diff.share[fill.samples] == 0;
    if (fill.samples > 0) {
        put_be32(frames + 4 * DT::X0_word, static_cast<uint32_t>(x[0]));
        put_be32(frames + 4 * DT::Xn_word, static_cast<uint32_t>(x[fill.samples - 1]));
    }
    return fill;
}

} // namespace mkrec
