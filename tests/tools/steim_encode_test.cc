#include "mkrec/steim_encode.h"

#include "mkrec/random.h"
#include "tools/steim_reference.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace mkrec;
using testing::Each;
using testing::ElementsAre;

namespace {

struct SteimFrames {
    uint8_t bytes[Steim_len];
};

struct Encoded {
    SteimFrames frames;
    SteimFill fill;
    uint32_t word(int frame, int w) const { return steim_word(frames.bytes, frame, w); }
};

Encoded encode(SteimLevel level, const std::vector<int32_t>& x, int32_t previous)
{
    Encoded e;
    std::fill(std::begin(e.frames.bytes), std::end(e.frames.bytes), uint8_t{0xEE});
    e.fill = steim_encode(level, x.data(), static_cast<int>(x.size()), previous, e.frames.bytes);
    return e;
}

/// Packs all samples, packet after packet, and decodes them again, checking each packet's constants.
void expect_same_after_round_trip(SteimLevel level, const std::vector<int32_t>& x)
{
    int32_t previous = 17;
    size_t at = 0;
    while (at < x.size()) {
        SteimFrames frames;
        const SteimFill fill =
            steim_encode(level, x.data() + at, static_cast<int>(x.size() - at), previous, frames.bytes);
        ASSERT_FALSE(fill.too_wide);
        ASSERT_GT(fill.samples, 0);
        const SteimDecoded got = steim_decode(static_cast<int>(level), frames.bytes);
        const auto first = x.begin() + static_cast<ptrdiff_t>(at);
        ASSERT_TRUE(got.sound);
        ASSERT_EQ(got.samples, std::vector<int32_t>(first, first + fill.samples));
        ASSERT_EQ(got.xn, got.samples.back());
        ASSERT_EQ(static_cast<uint32_t>(got.first_difference),
                  static_cast<uint32_t>(x[at]) - static_cast<uint32_t>(previous));
        if (at + static_cast<size_t>(fill.samples) < x.size()) {
            ASSERT_EQ(fill.frames, Steim_frames);
        }
        at += static_cast<size_t>(fill.samples);
        previous = x[at - 1];
    }
}

/// Steps of so many bits and no more, turning back within 31 bits.
std::vector<int32_t> walk(int bits, int n, uint64_t seed)
{
    RandomBits random(seed);
    std::vector<int32_t> x;
    int64_t v = 0;
    const int64_t limit = int64_t{1} << 30;
    const int64_t most = (int64_t{1} << (bits - 1)) - 1;
    for (int i = 0; i < n; ++i) {
        const int64_t step = std::clamp<int64_t>(random.signed_bits(bits), -most, most);
        v += v + step > limit || v + step < -limit ? -step : step;
        x.push_back(static_cast<int32_t>(v));
    }
    return x;
}

} // namespace

TEST(Steim_encode, level_1_packs_four_eight_bit_differences_into_a_word)
{
    const Encoded e = encode(SteimLevel::level1, {100, 101, 100, 102}, 100);
    EXPECT_EQ(e.fill.samples, 4);
    EXPECT_EQ(e.word(0, 0), 0x01000000u); // code 1 for word 3
    EXPECT_EQ(e.word(0, 1), 100u);
    EXPECT_EQ(e.word(0, 2), 102u);
    EXPECT_EQ(e.word(0, 3), 0x0001FF02u);
    for (int w = 4; w < 16; ++w) EXPECT_EQ(e.word(0, w), 0u);
}

TEST(Steim_encode, level_1_packs_two_sixteen_bit_differences_into_a_word)
{
    const Encoded e = encode(SteimLevel::level1, {1000, -1}, 0);
    EXPECT_EQ(e.word(0, 0), 0x02000000u);
    EXPECT_EQ(e.word(0, 3), 0x03E8FC17u); // 1000, -1001
}

TEST(Steim_encode, level_1_takes_any_difference_alone_in_a_word)
{
    const Encoded e = encode(SteimLevel::level1, {0x7FFFFFFF, -0x7FFFFFFF - 1}, -1);
    EXPECT_EQ(e.fill.samples, 2);
    EXPECT_FALSE(e.fill.too_wide);
    EXPECT_EQ(e.word(0, 0), 0x03C00000u);
    EXPECT_EQ(e.word(0, 3), 0x80000000u);
    EXPECT_EQ(e.word(0, 4), 0x00000001u); // differences wrap round like the samples
}

TEST(Steim_encode, three_small_differences_at_the_end_of_level_1_take_two_words)
{
    const Encoded e = encode(SteimLevel::level1, {1, 2, 3}, 0);
    EXPECT_EQ(e.fill.samples, 3);
    EXPECT_EQ(e.word(0, 0), 0x02000000u | 0x00C00000u); // 2 x 16, 1 x 32
    EXPECT_EQ(e.word(0, 3), 0x00010001u);
    EXPECT_EQ(e.word(0, 4), 0x00000001u);
}

struct FormCase {
    std::vector<int32_t> x; ///< packed after a 0
    uint32_t control, word;
};

class Steim2_form : public testing::TestWithParam<FormCase> {};

TEST_P(Steim2_form, packs_its_count_of_differences_from_the_top_of_the_word_down)
{
    const Encoded e = encode(SteimLevel::level2, GetParam().x, 0);
    EXPECT_EQ(e.fill.samples, static_cast<int>(GetParam().x.size()));
    EXPECT_EQ(e.word(0, 0), GetParam().control);
    EXPECT_EQ(e.word(0, 3), GetParam().word);
    EXPECT_EQ(e.word(0, 4), 0u);
}

// The extremes of each width: 15 and -16 in 5 bits, and so on.
INSTANTIATE_TEST_SUITE_P(each, Steim2_form,
                         testing::Values(FormCase{{-1, -2, -3, -4, -5, -6, -7}, 0x03000000, 0x8FFFFFFF},
                                         FormCase{{15, -1, 0, -1, -1, 7}, 0x03000000, 0x5F00FC08},
                                         FormCase{{31, -1, 15, 14, 14}, 0x03000000, 0x1F810FC0},
                                         FormCase{{127, -1, 63, 62}, 0x01000000, 0x7F8040FF},
                                         FormCase{{511, -1, -2}, 0x02000000, 0xDFF803FF},
                                         FormCase{{16383, -1}, 0x02000000, 0x9FFFC000},
                                         FormCase{{536870911}, 0x02000000, 0x5FFFFFFF},
                                         FormCase{{-536870912}, 0x02000000, 0x60000000}));

TEST(Steim_encode, one_difference_too_wide_for_a_form_moves_the_word_to_the_next_one)
{
    // Six times 0 and then 8, which 4 bits do not hold: six in 5 bits, and the 8 alone.
    const Encoded e = encode(SteimLevel::level2, {0, 0, 0, 0, 0, 0, 8}, 0);
    EXPECT_EQ(e.word(0, 0), 0x03000000u | 0x00800000u);
    EXPECT_EQ(e.word(0, 3), 0x40000000u);
    EXPECT_EQ(e.word(0, 4), 0x40000008u);
}

TEST(Steim_encode, the_first_difference_carries_on_from_the_packet_before)
{
    const Encoded e = encode(SteimLevel::level2, {1007}, 1000);
    EXPECT_EQ(e.word(0, 1), 1007u);
    EXPECT_EQ(e.word(0, 3), 0x40000007u);
}

TEST(Steim_encode, a_single_sample_takes_one_frame)
{
    for (const SteimLevel level : {SteimLevel::level1, SteimLevel::level2}) {
        const Encoded e = encode(level, {-5}, -5);
        EXPECT_EQ(e.fill.samples, 1);
        EXPECT_EQ(e.fill.frames, 1);
        EXPECT_EQ(e.word(0, 1), 0xFFFFFFFBu);
        EXPECT_EQ(e.word(0, 2), 0xFFFFFFFBu);
        EXPECT_THAT(steim_decode(static_cast<int>(level), e.frames.bytes).samples, ElementsAre(-5));
    }
}

TEST(Steim_encode, no_sample_leaves_all_frames_empty)
{
    const Encoded e = encode(SteimLevel::level2, {}, 9);
    EXPECT_EQ(e.fill.samples, 0);
    EXPECT_EQ(e.fill.frames, 0);
    EXPECT_FALSE(e.fill.too_wide);
    EXPECT_THAT(e.frames.bytes, Each(uint8_t{0}));
}

TEST(Steim_encode, a_constant_fills_a_packet_with_892_or_1561_samples)
{
    const std::vector<int32_t> x(3000, 77);
    const Encoded one = encode(SteimLevel::level1, x, 77), two = encode(SteimLevel::level2, x, 77);
    EXPECT_EQ(one.fill.samples, 892);
    EXPECT_EQ(two.fill.samples, 1561);
    EXPECT_EQ(one.fill.frames, 15);
    EXPECT_THAT(steim_decode(1, one.frames.bytes).samples, std::vector<int32_t>(892, 77));
    EXPECT_THAT(steim_decode(2, two.frames.bytes).samples, std::vector<int32_t>(1561, 77));
}

TEST(Steim_encode, samples_that_just_fill_the_packet_leave_no_word_free)
{
    for (const int n : {1560, 1561, 1562}) {
        const Encoded e = encode(SteimLevel::level2, std::vector<int32_t>(static_cast<size_t>(n), 0), 0);
        EXPECT_EQ(e.fill.samples, std::min(n, 1561));
        EXPECT_EQ(e.word(14, 0) & 3, 3u);
        EXPECT_EQ(e.word(14, 15), n == 1560 ? 0x40000000u : 0x80000000u); // the last six in 5 bits
    }
}

TEST(Steim_encode, frames_without_samples_stay_zero)
{
    const Encoded e = encode(SteimLevel::level2, std::vector<int32_t>(13 * 7 + 1, 0), 0);
    EXPECT_EQ(e.fill.frames, 2);
    EXPECT_EQ(e.word(1, 0), 0x20000000u); // one difference, in word 1
    for (int f = 2; f < 15; ++f)
        for (int w = 0; w < 16; ++w) EXPECT_EQ(e.word(f, w), 0u);
}

TEST(Steim_encode, extremes_in_turn_need_a_word_each_at_level_1)
{
    std::vector<int32_t> x;
    for (int i = 0; i < 300; ++i) x.push_back(i % 2 ? 2147483647 : -2147483647 - 1 + 70000);
    EXPECT_EQ(encode(SteimLevel::level1, x, x[1]).fill.samples, 223);
    expect_same_after_round_trip(SteimLevel::level1, x);
}

TEST(Steim_encode, level_2_stops_before_a_difference_of_more_than_30_bits)
{
    const Encoded e = encode(SteimLevel::level2, {1, 2, 3, 536870916, 4}, 0);
    EXPECT_TRUE(e.fill.too_wide);
    EXPECT_EQ(e.fill.samples, 3);
    EXPECT_EQ(e.word(0, 2), 3u);
    EXPECT_THAT(steim_decode(2, e.frames.bytes).samples, ElementsAre(1, 2, 3));
}

TEST(Steim_encode, level_2_has_nothing_to_give_when_the_first_difference_is_too_wide)
{
    const Encoded below = encode(SteimLevel::level2, {-536870913}, 0);
    EXPECT_TRUE(below.fill.too_wide);
    EXPECT_EQ(below.fill.samples, 0);
    EXPECT_THAT(below.frames.bytes, Each(uint8_t{0}));
    EXPECT_TRUE(encode(SteimLevel::level2, {536870912}, 0).fill.too_wide);
}

TEST(Steim_encode, a_difference_too_wide_behind_a_full_packet_is_the_next_packets)
{
    std::vector<int32_t> x(1561, 0);
    x.push_back(2000000000);
    const Encoded e = encode(SteimLevel::level2, x, 0);
    EXPECT_EQ(e.fill.samples, 1561);
    EXPECT_FALSE(e.fill.too_wide);
}

class Steim_walk : public testing::TestWithParam<int> {};

TEST_P(Steim_walk, comes_back_the_same_from_both_levels)
{
    const std::vector<int32_t> x = walk(GetParam(), 5000, static_cast<uint64_t>(GetParam()));
    expect_same_after_round_trip(SteimLevel::level1, x);
    expect_same_after_round_trip(SteimLevel::level2, x);
}

INSTANTIATE_TEST_SUITE_P(bits, Steim_walk, testing::Range(1, 31));

TEST(Steim_encode, differences_of_all_widths_mixed_come_back_the_same)
{
    RandomBits random(5);
    for (int round = 0; round < 200; ++round) {
        std::vector<int32_t> x;
        const size_t length = 1 + static_cast<size_t>(random.next() % 4000);
        int32_t v = 0;
        while (x.size() < length) {
            const int bits = 1 + static_cast<int>(random.next() % 29);
            for (uint64_t n = random.next() % 20; n-- > 0 && x.size() < length;) {
                const int32_t step = random.signed_bits(bits);
                v += v > 0 ? -std::abs(step) : std::abs(step); // stays near zero
                x.push_back(v);
            }
        }
        expect_same_after_round_trip(SteimLevel::level1, x);
        expect_same_after_round_trip(SteimLevel::level2, x);
    }
}

TEST(Steim_encode, samples_of_any_value_come_back_the_same_from_level_1)
{
    RandomBits random(6);
    std::vector<int32_t> x;
    for (int i = 0; i < 5000; ++i) x.push_back(random.signed_bits(32));
    expect_same_after_round_trip(SteimLevel::level1, x);
}
