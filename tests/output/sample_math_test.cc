// The fast loops over samples give the very bits of the plain ones, in the sums and in the trace.
#include "model/record/records.h"
#include "output/sample_math.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <vector>

namespace {

uint64_t bits(double v)
{
    return std::bit_cast<uint64_t>(v);
}

void expect_same(const TraceStatistics& fast, const TraceStatistics& plain)
{
    EXPECT_EQ(bits(fast.sum), bits(plain.sum));
    EXPECT_EQ(bits(fast.sq_sum), bits(plain.sq_sum));
    EXPECT_EQ(bits(fast.min), bits(plain.min));
    EXPECT_EQ(bits(fast.max), bits(plain.max));
    EXPECT_EQ(fast.min_ndx, plain.min_ndx);
    EXPECT_EQ(fast.max_ndx, plain.max_ndx);
}

struct Pair {
    TraceStatistics fast, plain;
    uint32_t before = 0;

    /// Both ways write the same trace, too.
    void add(const std::vector<int32_t>& samples)
    {
        const auto n = static_cast<uint32_t>(samples.size());
        std::vector<char> trace(4 * samples.size() + 4, '\xEE'), expected = trace;
        add_samples(fast, before, samples.data(), n, trace.data());
        add_samples_one_by_one(plain, before, samples.data(), n, expected.data());
        before += n;
        EXPECT_TRUE(trace == expected);
        EXPECT_EQ(trace[4 * n], '\xEE'); // not a byte more
    }
};

TEST(add_samples, equals_one_by_one_for_every_size_of_signal)
{
    std::mt19937 random(7);
    for (int width = 1; width <= 32; ++width) {
        Pair pair;
        for (int packet = 0; packet < 200; ++packet) {
            std::vector<int32_t> samples(random() % 1561);
            for (int32_t& x : samples) x = static_cast<int32_t>(random()) >> (32 - width);
            pair.add(samples);
        }
        SCOPED_TRACE(width);
        expect_same(pair.fast, pair.plain);
    }
}

TEST(add_samples, equals_one_by_one_on_large_offsets_where_the_sums_leave_the_exact_integers)
{
    std::mt19937 random(8);
    for (const int32_t offset :
         {8000000, -8388608, 33554431, 33554432, -33554432, 1 << 27, 2000000000, -2000000000}) {
        Pair pair;
        for (int packet = 0; packet < 300; ++packet) {
            std::vector<int32_t> samples(1 + random() % 700);
            for (int32_t& x : samples) x = offset + static_cast<int32_t>(random() % 1000);
            pair.add(samples);
        }
        SCOPED_TRACE(offset);
        expect_same(pair.fast, pair.plain);
    }
}

TEST(add_samples, crosses_the_last_exact_sum_as_one_by_one_does)
{
    Pair pair;
    pair.fast.sum = pair.plain.sum = 9007199254740992.0 - 5000.0;
    pair.fast.sq_sum = pair.plain.sq_sum = 9007199254740992.0 - 100000.0;
    std::mt19937 random(9);
    for (int packet = 0; packet < 100; ++packet) {
        std::vector<int32_t> samples(17);
        for (int32_t& x : samples) x = static_cast<int32_t>(random() % 31);
        pair.add(samples);
        expect_same(pair.fast, pair.plain);
    }
    EXPECT_GT(pair.fast.sq_sum, 9007199254740992.0); // so it did cross
    EXPECT_GT(pair.fast.sum, 9007199254740992.0);
}

TEST(add_samples, rounds_halves_to_the_even_sum_as_one_by_one_does)
{
    // From 2^(52+k) to 2^(53+k) a sum is a multiple of 2^k. The squares of odd multiples of 2^((k-1)/2) are
    // then odd multiples of half of that.
    std::mt19937 random(11);
    for (int k = 1; k <= 21; k += 2)
        for (const double start : {1.0, 1.25, 1.9999, 1.9999999, 2.0 - 0x1p-52}) {
            Pair pair;
            pair.fast.sq_sum = pair.plain.sq_sum = std::ldexp(start, 52 + k);
            for (int packet = 0; packet < 20; ++packet) {
                std::vector<int32_t> samples(random() % 1561);
                for (int32_t& x : samples)
                    x = static_cast<int32_t>((random() % 64) << ((k - 1) / 2)) * (random() & 1 ? 1 : -1);
                pair.add(samples);
                ASSERT_EQ(bits(pair.fast.sq_sum), bits(pair.plain.sq_sum)) << k << ' ' << start;
            }
        }
}

TEST(add_samples, sums_samples_that_lie_far_apart_as_one_by_one_does)
{
    Pair pair;
    pair.add({-2147483647 - 1, 2147483647, -2147483647 - 1, 2147483647, 5});
    pair.add(std::vector<int32_t>(2000, 1073741824));
    expect_same(pair.fast, pair.plain);
    EXPECT_EQ(pair.fast.sum, 2147483648003.0);
}

TEST(add_samples, keeps_the_first_of_equal_extremes)
{
    Pair pair;
    pair.add({5, -3, 9, -3, 9});
    pair.add({9, -3});
    EXPECT_EQ(pair.fast.min_ndx, 2U);
    EXPECT_EQ(pair.fast.max_ndx, 3U);
    expect_same(pair.fast, pair.plain);
}

TEST(add_samples, finds_no_minimum_above_the_starting_one_nor_a_maximum_below)
{
    Pair pair;
    pair.add({2147483647, 2147483647});
    EXPECT_EQ(pair.fast.min, 2147483647.0);
    EXPECT_EQ(pair.fast.min_ndx, 0U);
    Pair lowest;
    lowest.add({-2147483647 - 1, -2147483647 - 1});
    EXPECT_EQ(lowest.fast.max, -2147483647.0);
    EXPECT_EQ(lowest.fast.max_ndx, 0U);
    expect_same(lowest.fast, lowest.plain);
}

TEST(add_samples, does_nothing_for_no_sample)
{
    Pair pair;
    pair.add({});
    expect_same(pair.fast, TraceStatistics());
    expect_same(pair.plain, TraceStatistics());
}

uint32_t word_at(const char* bytes)
{
    uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word = word << 8 | static_cast<unsigned char>(bytes[i]);
    return word;
}

/// The word that a trace holds for a sample.
uint32_t written(int32_t sample)
{
    TraceStatistics stats;
    char bytes[4];
    add_samples(stats, 0, &sample, 1, bytes);
    return word_at(bytes);
}

TEST(add_samples, writes_the_nearest_float_and_ties_to_even)
{
    EXPECT_EQ(written(0), 0x00000000U);
    EXPECT_EQ(written(1), 0x3F800000U);
    EXPECT_EQ(written(-2), 0xC0000000U);
    EXPECT_EQ(written(16777217), 0x4B800000U);   // 16777216.0
    EXPECT_EQ(written(16777219), 0x4B800002U);   // 16777220.0
    EXPECT_EQ(written(2147483647), 0x4F000000U); // 2147483648.0
    EXPECT_EQ(written(-2147483647 - 1), 0xCF000000U);
}

TEST(add_samples, writes_every_sample_of_every_length_and_nothing_behind)
{
    std::mt19937 random(10);
    for (uint32_t n = 0; n <= 70; ++n) {
        std::vector<int32_t> samples(n);
        for (int32_t& x : samples) x = static_cast<int32_t>(random());
        std::vector<char> out(4 * n + 4, '\xEE');
        TraceStatistics stats;
        add_samples(stats, 0, samples.data(), n, out.data());
        for (uint32_t i = 0; i < n; ++i)
            ASSERT_EQ(word_at(&out[4 * i]), std::bit_cast<uint32_t>(static_cast<float>(samples[i])));
        EXPECT_EQ(word_at(&out[4 * n]), 0xEEEEEEEEU);
    }
}

} // namespace
