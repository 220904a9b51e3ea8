#include "output/sample_math.h"

#include "driver/simd.h"
#include "model/records.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

/// Below 2^53 every integer is a double: sums of integers that stay there are exact, in any order.
constexpr double Exact_max = 9007199254740992.0;

/// Samples below this in magnitude have squares whose sum over a packet fits 64 bits with room to spare.
constexpr int64_t Square_max = 1 << 25;

struct PACKET_SUMS {
    int32_t min, max;
    int64_t sum;
    int64_t squares; ///< of use only while all samples are below Square_max
};

VX_WIDE PACKET_SUMS sums_of(const int32_t* samples, size_t n)
{
    int32_t min = samples[0];
    int32_t max = samples[0];
    int64_t sum = 0;
    for (size_t i = 0; i < n; ++i) {
        const int32_t x = samples[i];
        min = x < min ? x : min;
        max = x > max ? x : max;
        sum += x;
    }
    int64_t squares = 0;
    if (max < Square_max && min > -Square_max)
        for (size_t i = 0; i < n; ++i) squares += static_cast<int64_t>(samples[i]) * samples[i];
    return {min, max, sum, squares};
}

void add_to_sum(CHN_T* chn, const int32_t* samples, uint32_t n, const PACKET_SUMS& s)
{
    const double reach =
        std::max(std::fabs(static_cast<double>(s.min)), std::fabs(static_cast<double>(s.max)));
    if (std::fabs(chn->sum) + n * reach <= Exact_max) {
        chn->sum += static_cast<double>(s.sum);
        return;
    }
    for (uint32_t i = 0; i < n; ++i) chn->sum += samples[i];
}

void add_to_squares(CHN_T* chn, const int32_t* samples, uint32_t n, const PACKET_SUMS& s)
{
    const bool small = s.max < Square_max && s.min > -Square_max;
    if (small && chn->sq_sum + static_cast<double>(s.squares) <= Exact_max) {
        chn->sq_sum += static_cast<double>(s.squares);
        return;
    }
    double sum = chn->sq_sum;
    for (uint32_t i = 0; i < n; ++i) sum += static_cast<double>(samples[i]) * samples[i];
    chn->sq_sum = sum;
}

/// A new extreme stands where its value comes first.
void move_extremes(CHN_T* chn, const int32_t* samples, uint32_t n, const PACKET_SUMS& s)
{
    const auto place = [&](int32_t value) {
        return chn->cnt + 1 + static_cast<uint32_t>(std::find(samples, samples + n, value) - samples);
    };
    if (s.min < chn->min) {
        chn->min = s.min;
        chn->min_ndx = place(s.min);
    }
    if (s.max > chn->max) {
        chn->max = s.max;
        chn->max_ndx = place(s.max);
    }
}

} // namespace

VX_WIDE void to_big_endian_floats(const int32_t* samples, uint32_t n, char* to)
{
    for (size_t i = 0; i < n; ++i) {
        uint32_t word = std::bit_cast<uint32_t>(static_cast<float>(samples[i]));
        if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap32(word);
        memcpy(to + 4 * i, &word, 4);
    }
}

void add_samples_one_by_one(CHN_T* chn, const int32_t* samples, uint32_t n)
{
    for (uint32_t i = 0; i < n; ++i) {
        const double x = samples[i];
        ++chn->cnt;
        chn->sum += x;
        chn->sq_sum += x * x;
        if (x < chn->min) {
            chn->min = x;
            chn->min_ndx = chn->cnt;
        }
        if (x > chn->max) {
            chn->max = x;
            chn->max_ndx = chn->cnt;
        }
    }
}

void add_samples(CHN_T* chn, const int32_t* samples, uint32_t n)
{
    if (n == 0) return;
    const PACKET_SUMS s = sums_of(samples, n);
    add_to_sum(chn, samples, n, s);
    add_to_squares(chn, samples, n, s);
    move_extremes(chn, samples, n, s);
    chn->cnt += n;
}
