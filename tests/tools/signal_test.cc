#include "mkrec/signal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace mkrec;

namespace {

SignalPlan plan(Motion motion, int word_bits = 32)
{
    return {.motion = motion,
            .word_bits = word_bits,
            .full_bits = word_bits,
            .rate = 100,
            .period = 6000,
            .distance = 0,
            .axis = 0,
            .seed = 1};
}

std::vector<int32_t> samples(const SignalPlan& p, int n)
{
    SignalMaker signal(p);
    std::vector<int32_t> x(static_cast<size_t>(n));
    signal.fill(x.data(), n);
    return x;
}

int32_t largest(const std::vector<int32_t>& x, int64_t from, int64_t to)
{
    int32_t most = 0;
    for (int64_t i = from; i < to; ++i) most = std::max(most, std::abs(x[static_cast<size_t>(i)]));
    return most;
}

/// Bits that a two's complement field needs for the number.
int bits_of(int64_t d)
{
    int bits = 1;
    while (d < -(int64_t{1} << (bits - 1)) || d >= int64_t{1} << (bits - 1)) ++bits;
    return bits;
}

/// How many differences need so many bits.
std::vector<int> widths(const std::vector<int32_t>& x)
{
    std::vector<int> count(34);
    for (size_t i = 1; i < x.size(); ++i) ++count[static_cast<size_t>(bits_of(int64_t{x[i]} - x[i - 1]))];
    return count;
}

} // namespace

TEST(Signal, is_the_same_however_it_is_asked_for)
{
    for (const Motion motion :
         {Motion::quake, Motion::quiet, Motion::loud, Motion::offset, Motion::full, Motion::mixed}) {
        const std::vector<int32_t> whole = samples(plan(motion), 14000);
        SignalMaker signal(plan(motion));
        std::vector<int32_t> pieces(14000);
        int at = 0;
        for (int piece = 1; at < 14000; piece = piece * 5 % 1009) {
            const int n = std::min(piece, 14000 - at);
            signal.fill(pieces.data() + at, n);
            at += n;
        }
        EXPECT_EQ(pieces, whole) << "motion " << static_cast<int>(motion);
    }
}

TEST(Signal, another_seed_gives_other_samples)
{
    SignalPlan other = plan(Motion::quiet);
    other.seed = 2;
    EXPECT_NE(samples(other, 100), samples(plan(Motion::quiet), 100));
}

TEST(Signal, quiet_noise_swings_about_zero_by_a_few_counts)
{
    const std::vector<int32_t> x = samples(plan(Motion::quiet), 100000);
    int64_t sum = 0;
    for (const int32_t v : x) sum += v;
    EXPECT_LT(std::abs(sum), 100000);
    EXPECT_LT(largest(x, 0, 100000), 100);
    EXPECT_GT(largest(x, 0, 100000), 20);
}

TEST(Signal, a_quake_comes_after_noise_P_before_the_larger_S_and_fades)
{
    SignalPlan p = plan(Motion::quake);
    p.axis = 1;
    const std::vector<int32_t> x = samples(p, 6000);
    EXPECT_EQ(p_arrival(p), 900);
    EXPECT_EQ(s_arrival(p), 2100);
    const int32_t noise = largest(x, 0, 900), first = largest(x, 900, 1100), between = largest(x, 1900, 2100);
    const int32_t second = largest(x, 2100, 2400), end = largest(x, 5800, 6000);
    EXPECT_LT(noise, 100);
    EXPECT_GT(first, 10 * noise);
    EXPECT_LT(between, first / 2);
    EXPECT_GT(second, 2 * first);
    EXPECT_LT(end, second / 50);
}

TEST(Signal, the_vertical_axis_shows_more_P_and_less_S_than_a_horizontal_one)
{
    SignalPlan up = plan(Motion::quake), east = up;
    east.axis = 2;
    const std::vector<int32_t> z = samples(up, 6000), e = samples(east, 6000);
    EXPECT_GT(largest(z, 900, 2100), largest(e, 900, 2100));
    EXPECT_LT(largest(z, 2100, 6000), largest(e, 2100, 6000));
}

TEST(Signal, a_farther_site_is_shaken_later_and_less)
{
    SignalPlan far = plan(Motion::quake);
    far.distance = 4;
    EXPECT_EQ(p_arrival(far), 900 + 120);
    EXPECT_EQ(s_arrival(far), 2100 + 200);
    const std::vector<int32_t> near_x = samples(plan(Motion::quake), 6000), far_x = samples(far, 6000);
    EXPECT_LT(largest(far_x, 0, 6000), largest(near_x, 0, 6000));
    EXPECT_LT(largest(far_x, 900, 1020), 100);
}

TEST(Signal, a_quake_comes_again_in_every_period)
{
    const std::vector<int32_t> x = samples(plan(Motion::quake), 18000);
    for (int k = 0; k < 3; ++k) {
        EXPECT_GT(largest(x, 6000 * k + 900, 6000 * k + 1100),
                  20 * largest(x, 6000 * k + 700, 6000 * k + 900));
    }
}

TEST(Signal, loud_has_differences_of_9_to_16_bits)
{
    const std::vector<int> count = widths(samples(plan(Motion::loud), 100000));
    for (size_t bits = 9; bits <= 16; ++bits) EXPECT_GT(count[bits], 3000) << bits;
    for (size_t bits = 17; bits < count.size(); ++bits) EXPECT_EQ(count[bits], 0) << bits;
}

TEST(Signal, offset_is_small_steps_far_from_zero)
{
    const std::vector<int32_t> x = samples(plan(Motion::offset), 10000);
    EXPECT_GT(*std::min_element(x.begin(), x.end()), 7999000);
    EXPECT_LT(*std::max_element(x.begin(), x.end()), 8001000);
    EXPECT_EQ(widths(x)[9], 0);
}

TEST(Signal, full_uses_the_whole_range)
{
    const std::vector<int32_t> x = samples(plan(Motion::full), 10000);
    EXPECT_LT(*std::min_element(x.begin(), x.end()), -2140000000);
    EXPECT_GT(*std::max_element(x.begin(), x.end()), 2140000000);
}

TEST(Signal, mixed_has_differences_of_every_width_up_to_30_bits)
{
    const std::vector<int> count = widths(samples(plan(Motion::mixed), 100000));
    for (size_t bits = 2; bits <= 30; ++bits) EXPECT_GT(count[bits], 500) << bits;
    for (size_t bits = 31; bits < count.size(); ++bits) EXPECT_EQ(count[bits], 0) << bits;
}

TEST(Signal, keeps_within_16_bits_where_the_words_are_so_short)
{
    for (const Motion motion :
         {Motion::quake, Motion::quiet, Motion::loud, Motion::offset, Motion::full, Motion::mixed}) {
        const std::vector<int32_t> x = samples(plan(motion, 16), 50000);
        EXPECT_GE(*std::min_element(x.begin(), x.end()), -32768);
        EXPECT_LE(*std::max_element(x.begin(), x.end()), 32767);
        EXPECT_GT(largest(x, 0, 50000), 20);
    }
}

TEST(Signal, sample_rates_of_any_kind_give_a_quake_that_stays_in_bounds)
{
    for (const int rate : {1, 2, 5, 10, 40, 200, 1000}) {
        SignalPlan p = plan(Motion::quake);
        p.rate = rate;
        p.period = 60 * rate;
        const std::vector<int32_t> x = samples(p, 600 * rate);
        EXPECT_LT(largest(x, 0, 600 * rate), 1 << 23) << rate;
    }
}

TEST(Random, is_the_same_sequence_on_every_host)
{
    // From the definition, worked out with arbitrary-precision integers.
    RandomBits random(1);
    EXPECT_EQ(random.next(), 0x478FA168DC938658u);
    EXPECT_EQ(random.next(), 0x78E2330A1FC65308u);
}
