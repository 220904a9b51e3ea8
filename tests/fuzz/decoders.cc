// Samples decoded twice: Steim by table and word by word, uncompressed samples against a reading of their
// own, a packet's sums against those taken sample by sample.
//
// Input: a byte that says what to do, the exponent of the sums so far, the sample before (4 bytes), the
// packet.
#include "driver/base/settings.h"
#include "fuzz/fuzz.h"
#include "model/record/records.h"
#include "output/log.h"
#include "output/sample_math.h"
#include "packet/samples.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

namespace {

using fuzz::demand;
using DecodeFunction = Decoded (*)(const PACKET&, uint32_t&, DATA_BUF&);

/// What the input's first byte asks for; the lowest two bits are the encoding.
enum Wanted : uint8_t {
    COMPLAIN = 4, ///< odd packets are told of in the log
    SOUND = 8,    ///< the count and the last sample of a Steim packet are made the right ones
    FOLLOWS = 16, ///< the sample before is made the right one
    Sums = 32,    ///< the samples are summed up
    NOISE = 64,   ///< the packet is mixed with noise, which the sample before seeds
    ODD = 128,    ///< words that Steim-2 does not have stay in a packet that is made sound
};

/// One way to decode, with a channel's last sample, sums and a log of its own.
struct Side {
    OUT_FILE log_file;
    uint32_t last = 0;
    Decoded verdict;
    TraceStatistics stats;
    DATA_BUF out{};
    std::string shown; ///< on the console
    int rest;          ///< what stands in samples that nobody decoded

    explicit Side(int fill) : rest(fill) { fuzz::open_nowhere(log_file); }
    void decode(DecodeFunction decoder, const PACKET& pkt, uint32_t last_before)
    {
        last = last_before;
        take([&] { verdict = decoder(pkt, last, out); });
        if (!verdict.sound && Log_on) log_mismatch(log_file, pkt, verdict, out.count);
    }
    void decode(void (*decoder)(const PACKET&, DATA_BUF&), const PACKET& pkt)
    {
        take([&] { decoder(pkt, out); });
    }
    std::string_view log() const { return {log_file.buf, log_file.used}; }

private:
    template <class Decode>
    void take(Decode decode)
    {
        log_file.used = 0;
        memset(out.sample, rest, sizeof out.sample);
        fuzz::take_shown();
        decode();
        shown = fuzz::take_shown();
        demand(out.count <= Samples_max, "no more samples than there is room for");
    }
};

/// A packet on the heap, so that a read behind its end is noticed.
struct TextPage {
    std::unique_ptr<uint8_t[]> bytes = std::make_unique<uint8_t[]>(Packet_size);

    PACKET packet() const { return PACKET(bytes.get()); }
    uint32_t word(int at) const { return be32(bytes.get() + at); }
    void put_word(int at, uint32_t word) { put_be32(bytes.get() + at, word); }
    void put_count(unsigned n)
    {
        bytes[20] = static_cast<uint8_t>(n / 1000 % 10 << 4 | n / 100 % 10);
        bytes[21] = static_cast<uint8_t>(n / 10 % 10 << 4 | n % 10);
    }
};

// Steim

constexpr int X0 = 68, Xn = 72; // where the first and the last sample are stored

/// The difference that leads to the packet's first sample: the topmost field of the first word with data.
uint32_t lead_of(const TextPage& page, int level)
{
    const auto code = [&](int w) { return page.word(DT::Frames) >> (30 - 2 * w) & 3; };
    int w = 3;
    while (level == 2 && w < 16 && code(w) == 0) ++w;
    if (w == 16 || code(w) == 0) return 0;
    const uint32_t word = page.word(DT::Frames + 4 * w);

    struct FieldType {
        int unused, width; // bits above the topmost field, bits of it
    };
    static constexpr FieldType of_steim1[] = {{0, 0}, {0, 8}, {0, 16}, {0, 32}};
    static constexpr FieldType of_steim2[2][4] = {{{0, 32}, {2, 30}, {2, 15}, {2, 10}},
                                                  {{2, 6}, {2, 5}, {4, 4}, {0, 32}}};
    const FieldType f = level == 1 || code(w) == 1 ? of_steim1[code(w)] : of_steim2[code(w) - 2][word >> 30];
    return static_cast<uint32_t>(static_cast<int32_t>(word << f.unused) >> (32 - f.width));
}

/// Nothing in the tables' code tells one packet from another, so most of the variety comes from here.
void mix_with_noise(TextPage& page, uint32_t seed)
{
    uint32_t x = seed | 1;
    for (int at = DT::Frames; at < Packet_size; at += 4) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        page.put_word(at, page.word(at) ^ x);
    }
}

/// Gives every word of Steim-2 a sub-code that there is.
void mend_words(TextPage& page)
{
    for (int frame = DT::Frames; frame < Packet_size; frame += DT::Frame_len) {
        for (int w = 1; w < DT::Frame_len / 4; ++w) {
            const uint32_t code = page.word(frame) >> (30 - 2 * w) & 3;
            const uint32_t word = page.word(frame + 4 * w);
            if (code == 2 && word >> 30 == 0) page.put_word(frame + 4 * w, word | 0x40000000);
            if (code == 3 && word >> 30 == 3) page.put_word(frame + 4 * w, word & 0x7FFFFFFF);
        }
    }
}

void compare(const Side& fast, const Side& plain)
{
    demand(fast.out.count == plain.out.count, "both ways find as many samples");
    demand(memcmp(fast.out.sample, plain.out.sample, 4 * fast.out.count) == 0,
           "both ways find the same samples");
    demand(fast.last == plain.last, "both ways keep the same last sample");
    demand(fast.verdict.sound == plain.verdict.sound, "both ways mark the same packets");
    demand(fast.log() == plain.log(), "both ways tell the log the same");
    demand(fast.shown == plain.shown, "both ways show the same");
}

void decode_steim(Side& fast, Side& plain, TextPage& page, int level, unsigned wanted, uint32_t last)
{
    const DecodeFunction by_word = level == 1 ? Buf_c0_by_word : Buf_c2_by_word;
    if (level == 2 && (wanted & (SOUND | ODD)) == SOUND) mend_words(page);
    if (wanted & FOLLOWS) last = page.word(X0) - lead_of(page, level);
    if (wanted & SOUND) {
        Log_on = false;
        plain.decode(by_word, page.packet(), last);
        page.put_count(plain.out.count);
        if (plain.out.count) page.put_word(Xn, static_cast<uint32_t>(plain.out.sample[plain.out.count - 1]));
    }
    Log_on = (wanted & COMPLAIN) != 0;
    plain.decode(by_word, page.packet(), last);
    fast.decode(level == 1 ? Buf_c0 : Buf_c2, page.packet(), last);
    compare(fast, plain);
    if ((wanted & (FOLLOWS | SOUND)) == (FOLLOWS | SOUND) && plain.out.count)
        demand(plain.verdict.sound, "what is made sound counts as sound");
}

// Uncompressed samples

int32_t sample_at(const TextPage& page, int at, int width)
{
    if (at + width > Packet_size) return 0;
    uint32_t value = page.bytes[static_cast<size_t>(at)] & 0x80 ? 0xFFFFFFFF : 0;
    for (int i = 0; i < width; ++i) value = value << 8 | page.bytes[static_cast<size_t>(at + i)];
    return static_cast<int32_t>(value);
}

void decode_plain(Side& side, const TextPage& page, int width)
{
    side.decode(width == 2 ? Buf_16 : Buf_32, page.packet());
    unsigned count = 0;
    for (const int nibble :
         {page.bytes[20] >> 4, page.bytes[20] & 15, page.bytes[21] >> 4, page.bytes[21] & 15})
        count = 10 * count + static_cast<unsigned>(nibble);
    demand(side.out.count == std::min(count, 1000U / static_cast<unsigned>(width)),
           "as many samples as the header says");
    int at = page.bytes[46] & 8 ? 64 : 24;
    for (uint32_t i = 0; i < side.out.count; ++i, at += width)
        demand(side.out.sample[i] == sample_at(page, at, width), "the bytes of a sample are its value");
}

// Sums

/// Sums of integers as they may stand before a packet.
TraceStatistics start_sums(int exponent, uint32_t before)
{
    const double start = static_cast<int32_t>(before);
    TraceStatistics stats;
    stats.sum = std::ldexp(start, exponent % 40);
    stats.sq_sum = std::ldexp(std::fabs(start), exponent % 64);
    stats.min = std::min(start, 0.0);
    stats.max = std::max(start, 0.0);
    return stats;
}

void sum_up(Side& fast, Side& plain, int exponent, uint32_t before)
{
    fast.stats = plain.stats = start_sums(exponent, before);
    const DATA_BUF& samples = fast.out;
    static char trace[4 * Samples_max], expected[4 * Samples_max];
    add_samples(fast.stats, before, samples.sample, samples.count, trace);
    add_samples_one_by_one(plain.stats, before, samples.sample, samples.count, expected);
    demand(memcmp(trace, expected, size_t{4} * samples.count) == 0, "both ways write the same trace");
    const TraceStatistics &a = fast.stats, &b = plain.stats;
    demand(a.sum == b.sum && a.sq_sum == b.sq_sum, "both ways sum up to the same");
    demand(a.min == b.min && a.max == b.max, "both ways find the same extremes");
    demand(a.min_ndx == b.min_ndx && a.max_ndx == b.max_ndx,
           "both ways find the extremes in the same places");

    for (uint32_t i = 0; i < samples.count; ++i) {
        const auto bits = std::bit_cast<uint32_t>(static_cast<float>(samples.sample[i]));
        demand(be32(reinterpret_cast<const uint8_t*>(trace) + 4 * i) == bits,
               "a trace holds the sample as a float");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool silent = (fuzz::silence(), true);
    static Side fast(0x00), plain(0x55);
    static TextPage page;
    if (!silent || size < 6) return -1;

    fuzz::Bytes in(data, size);
    const unsigned wanted = in.byte();
    const int exponent = in.byte();
    const uint32_t last = in.word();
    in.fill(page.bytes.get(), Packet_size);
    if (wanted & NOISE) mix_with_noise(page, last);
    switch (wanted & 3) {
    case 0: decode_plain(fast, page, 2); break;
    case 1: decode_plain(fast, page, 4); break;
    case 2: decode_steim(fast, plain, page, 1, wanted, last); break;
    default: decode_steim(fast, plain, page, 2, wanted, last);
    }
    if (wanted & Sums) sum_up(fast, plain, exponent, last);
    return 0;
}
