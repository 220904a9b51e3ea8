// Decoding by table gives what decoding word by word gives, on sound packets, odd ones and noise.
#include "packet/samples.h"
#include "packet/steim_table.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using DecodeFunction = Decoded (*)(const PACKET&, uint32_t&, DATA_BUF&);

DATA_BUF Data_buf;

/// A packet as the test changes it.
struct TextPage {
    unsigned char bytes[Packet_size] = {};

    PACKET packet() const { return PACKET(bytes); }
    void put_word(int at, uint32_t word)
    {
        for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<unsigned char>(word >> (24 - 8 * i));
    }
    void put_count(unsigned n)
    {
        bytes[20] = static_cast<unsigned char>(n / 1000 % 10 << 4 | n / 100 % 10);
        bytes[21] = static_cast<unsigned char>(n / 10 % 10 << 4 | n % 10);
    }
};

/// Frames of random words, of every second frame all with one code; `rare` of 256 words get a code without
/// data.
TextPage noise(std::mt19937& random, bool steim2_valid, unsigned rare)
{
    TextPage page;
    for (int frame = 0; frame < 15; ++frame) {
        uint32_t control = static_cast<uint32_t>(random()) & 0xC0000000; // its own code counts for nothing
        const uint32_t all = static_cast<uint32_t>(random() % 6);
        for (int w = 1; w < 16; ++w) {
            uint32_t code = 1 + static_cast<uint32_t>(random() % 3);
            if (all >= 1 && all <= 3) code = all;
            if (random() % 256 < rare) code = 0;
            uint32_t word = static_cast<uint32_t>(random());
            if (steim2_valid && code == 2 && word >> 30 == 0) word |= 0x40000000;
            if (steim2_valid && code == 3 && word >> 30 == 3) word &= 0x7FFFFFFF;
            control |= code << (30 - 2 * w);
            page.put_word(64 + 64 * frame + 4 * w, word);
        }
        page.put_word(64 + 64 * frame, control);
    }
    return page;
}

/// Makes a packet of noise sound: the count and last sample that the plain decoder finds in it.
void make_sound(TextPage& page, DecodeFunction by_word)
{
    uint32_t last = 0;
    by_word(page.packet(), last, Data_buf);
    page.put_count(Data_buf.count);
    if (Data_buf.count) page.put_word(72, static_cast<uint32_t>(Data_buf.sample[Data_buf.count - 1]));
}

struct CallOutcome {
    std::vector<int32_t> samples;
    uint32_t last;
    bool sound;
    bool operator==(const CallOutcome&) const = default;
};

CallOutcome outcome(DecodeFunction decode, const TextPage& page, uint32_t last)
{
    Data_buf = {};
    const Decoded decoded = decode(page.packet(), last, Data_buf);
    return {{Data_buf.sample, Data_buf.sample + Data_buf.count}, last, decoded.sound};
}

struct SteimLevel {
    DecodeFunction decode, by_word;
    bool (*by_table)(const PACKET&, uint32_t, DATA_BUF&);
    bool is_2;
};
const SteimLevel Levels[] = {{Buf_c0, Buf_c0_by_word, steim1_by_table, false},
                             {Buf_c2, Buf_c2_by_word, steim2_by_table, true}};

class Steim_table : public testing::TestWithParam<SteimLevel> {};
INSTANTIATE_TEST_SUITE_P(Levels, Steim_table, testing::ValuesIn(Levels),
                         [](const auto& level) { return level.param.is_2 ? "Steim2" : "Steim1"; });

TEST_P(Steim_table, equals_word_by_word_on_sound_packets)
{
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        TextPage page = noise(random, GetParam().is_2, static_cast<unsigned>(i % 3) * 40);
        make_sound(page, GetParam().by_word);
        ASSERT_TRUE(GetParam().by_table(page.packet(), 0, Data_buf)) << i;
        const CallOutcome fast = outcome(GetParam().decode, page, 0);
        EXPECT_TRUE(fast.sound);
        ASSERT_EQ(fast, outcome(GetParam().by_word, page, 0)) << i;
    }
}

TEST_P(Steim_table, equals_word_by_word_when_checks_fail)
{
    std::mt19937 random(2);
    for (int i = 0; i < 3000; ++i) {
        TextPage page = noise(random, true, static_cast<unsigned>(i % 3) * 40);
        make_sound(page, GetParam().by_word);
        switch (i % 4) {
        case 0: page.bytes[72] ^= 1; break;     // another last sample
        case 1: page.put_count(17); break;      // another count
        case 2: page.bytes[68 + 3] ^= 1; break; // another first sample
        default: break;                         // another sample before: below
        }
        const uint32_t last = i % 4 == 3 ? static_cast<uint32_t>(random()) | 1 : 0;
        ASSERT_EQ(outcome(GetParam().decode, page, last), outcome(GetParam().by_word, page, last)) << i;
    }
}

TEST_P(Steim_table, leaves_every_failing_check_to_the_plain_decoder)
{
    std::mt19937 random(3);
    TextPage page = noise(random, true, 0);
    make_sound(page, GetParam().by_word);
    TextPage other = page;
    other.bytes[72] ^= 1;
    EXPECT_FALSE(GetParam().by_table(other.packet(), 0, Data_buf));
    other = page;
    other.put_count(17);
    EXPECT_FALSE(GetParam().by_table(other.packet(), 0, Data_buf));
    EXPECT_FALSE(GetParam().by_table(page.packet(), 0x12345677, Data_buf));
    EXPECT_TRUE(GetParam().by_table(page.packet(), 0, Data_buf));
}

TEST_P(Steim_table, follows_the_last_sample_before)
{
    std::mt19937 random(4);
    for (int i = 0; i < 500; ++i) {
        TextPage page = noise(random, true, 0);
        make_sound(page, GetParam().by_word);
        // The first difference, as the plain decoder takes it: its running value starts there.
        const uint32_t x0 = static_cast<uint32_t>(page.bytes[68]) << 24 |
                            static_cast<uint32_t>(page.bytes[69]) << 16 |
                            static_cast<uint32_t>(page.bytes[70]) << 8 | page.bytes[71];
        bool fits = false;
        for (int bits_ = 4; bits_ <= 32 && !fits; ++bits_) {
            // Try every field that could stand first in word 3, by width.
            const uint32_t word = static_cast<uint32_t>(page.bytes[76]) << 24 |
                                  static_cast<uint32_t>(page.bytes[77]) << 16 |
                                  static_cast<uint32_t>(page.bytes[78]) << 8 | page.bytes[79];
            for (int skip : {0, 2, 4}) {
                const int32_t field = static_cast<int32_t>(word << skip) >> (32 - bits_);
                const uint32_t last = x0 - static_cast<uint32_t>(field);
                if (last == 0) continue;
                const CallOutcome plain = outcome(GetParam().by_word, page, last);
                ASSERT_EQ(outcome(GetParam().decode, page, last), plain);
                fits |= plain.sound;
            }
        }
        EXPECT_TRUE(fits) << i; // one of them was the first difference
    }
}

TEST_P(Steim_table, leaves_packets_without_data_to_the_plain_decoder)
{
    const TextPage empty;
    EXPECT_FALSE(GetParam().by_table(empty.packet(), 0, Data_buf));
}

TEST(steim1_by_table, starts_at_the_stored_sample_when_word_3_is_empty)
{
    TextPage page;
    page.put_word(64, 3U << (30 - 2 * 4)); // word 4: one 32-bit difference
    page.put_word(68, 100);
    page.put_word(72, 105);
    page.put_word(64 + 16, 5);
    page.put_count(1);
    ASSERT_TRUE(steim1_by_table(page.packet(), 0, Data_buf));
    EXPECT_EQ(Data_buf.count, 1U);
    EXPECT_EQ(Data_buf.sample[0], 105);
    EXPECT_TRUE(steim1_by_table(page.packet(), 100, Data_buf)); // no difference leads from 100 to 100
}

TEST(steim2_by_table, starts_at_the_stored_sample_when_frame_1_holds_no_data)
{
    TextPage page;
    page.put_word(68, 100);
    page.put_word(72, 108);
    page.put_word(128, 1U << (30 - 2 * 1)); // frame 2, word 1: four differences
    page.put_word(132, 0x05010101);
    page.put_count(4);
    const std::vector<int32_t> samples{105, 106, 107, 108};
    EXPECT_EQ(outcome(Buf_c2_by_word, page, 0), (CallOutcome{samples, 108, true}));
    EXPECT_EQ(outcome(Buf_c2, page, 0), (CallOutcome{samples, 108, true}));
    EXPECT_TRUE(steim2_by_table(page.packet(), 100, Data_buf)); // no difference leads from 100 to 100

    page.put_word(72, 103); // where the samples would end, did the first difference lead to the stored one
    EXPECT_EQ(outcome(Buf_c2, page, 0), (CallOutcome{samples, 103, false}));
}

TEST(steim2_by_table, leaves_invalid_sub_codes_to_the_plain_decoder)
{
    for (const auto& [code, word] : {std::pair{2U, 0x00000001U}, std::pair{3U, 0xC0000000U}}) {
        TextPage page;
        page.put_word(64, 1U << (30 - 2 * 3) | code << (30 - 2 * 4));
        page.put_count(4);
        page.put_word(64 + 16, word);
        EXPECT_FALSE(steim2_by_table(page.packet(), 0, Data_buf)) << code;
    }
}

} // namespace
