#include "output/sample_math.h"

#include "driver/base/simd.h"
#include "model/record/records.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace {

/// Writes the float nearest to a sample, most significant byte first. put_be32 does the same, but the
/// compiler makes vectors of this form: eight times as fast.
[[gnu::always_inline]] inline void put_float(int32_t sample, char* to)
{
    uint32_t word = std::bit_cast<uint32_t>(static_cast<float>(sample));
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap32(word);
    memcpy(to, &word, 4);
}

/// A double holds every integer up to 2^53. Sums of integers that stay below are exact in any order.
constexpr double Exact_max = 9007199254740992.0;

/// What one pass over samples finds.
struct Digest {
    int32_t min, max;
    uint32_t sum;     ///< modulo 2^32
    uint64_t squares; ///< sum of the squares, modulo 2^64; 0 unless asked for
};

/// Writes n samples as floats, n at least 1, and returns their digest. Sums the squares only if `squares` is
/// true.
VX_WIDE Digest write_and_digest(const int32_t* samples, size_t n, char* to, bool squares)
{
    Digest d{samples[0], samples[0], 0, 0};
    for (size_t i = 0; i < n; ++i) {
        const int32_t x = samples[i];
        d.min = x < d.min ? x : d.min;
        d.max = x > d.max ? x : d.max;
        d.sum += static_cast<uint32_t>(x);
        if (squares) d.squares += static_cast<uint64_t>(int64_t{x} * x);
        put_float(x, to + 4 * i);
    }
    return d;
}

/// The largest magnitude among the samples.
double reach(const Digest& d)
{
    return std::max(std::fabs(static_cast<double>(d.min)), std::fabs(static_cast<double>(d.max)));
}

VX_WIDE int64_t whole_sum(const int32_t* samples, size_t n)
{
    int64_t sum = 0;
    for (size_t i = 0; i < n; ++i) sum += samples[i];
    return sum;
}

/// The exact sum. Where n times the range of the samples fits into 31 bits, as in most packets, the sum
/// modulo 2^32 is enough to compute it.
int64_t sum_of(const int32_t* samples, uint32_t n, const Digest& d)
{
    const int64_t width = static_cast<int64_t>(d.max) - d.min;
    if (width * n > INT32_MAX) return whole_sum(samples, n);
    const uint32_t above_first = d.sum - n * static_cast<uint32_t>(samples[0]);
    return static_cast<int64_t>(samples[0]) * n + static_cast<int32_t>(above_first);
}

/// Adds the samples to the sum: at once while that is exact, else one after the other.
void add_to_sum(TraceStatistics& s, const int32_t* samples, uint32_t n, const Digest& d)
{
    if (std::fabs(s.sum) + n * reach(d) <= Exact_max) {
        s.sum += static_cast<double>(sum_of(samples, n, d));
        return;
    }
    for (uint32_t i = 0; i < n; ++i) s.sum += samples[i];
}

constexpr uint32_t Lanes = 4;
constexpr uint32_t Runs = 2 * Lanes;
using DoubleLanes = double __attribute__((vector_size(8 * Lanes)));

/// Transposes a matrix.
[[gnu::always_inline]] inline void transpose(DoubleLanes (&m)[Lanes])
{
    const DoubleLanes a = __builtin_shufflevector(m[0], m[1], 0, 4, 2, 6);
    const DoubleLanes b = __builtin_shufflevector(m[0], m[1], 1, 5, 3, 7);
    const DoubleLanes c = __builtin_shufflevector(m[2], m[3], 0, 4, 2, 6);
    const DoubleLanes d = __builtin_shufflevector(m[2], m[3], 1, 5, 3, 7);
    m[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
    m[1] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
    m[2] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
    m[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}

/// Adds up the squares of Runs runs of `length` samples each, all runs at the same time. Each sum begins once
/// with start[0] and once with start[1]; end[0] and end[1] hold the sums of the runs.
VX_WIDE void add_runs(const int32_t* samples, size_t length, const double (&start)[2], double (&end)[2][Runs])
{
    DoubleLanes even[2] = {DoubleLanes{} + start[0], DoubleLanes{} + start[0]};
    DoubleLanes odd[2] = {DoubleLanes{} + start[1], DoubleLanes{} + start[1]};
    size_t at = 0;
    for (; at + Lanes <= length; at += Lanes)
        for (size_t half = 0; half < 2; ++half) {
            DoubleLanes squares[Lanes];
            for (size_t i = 0; i < Lanes; ++i) {
                const int32_t* const x = samples + (half * Lanes + i) * length + at;
                squares[i] = DoubleLanes{1.0 * x[0], 1.0 * x[1], 1.0 * x[2], 1.0 * x[3]};
                squares[i] *= squares[i];
            }
            transpose(squares);
            for (const DoubleLanes& step : squares) {
                even[half] += step;
                odd[half] += step;
            }
        }
    for (; at < length; ++at)
        for (size_t half = 0; half < 2; ++half) {
            const int32_t* const x = samples + half * Lanes * length + at;
            DoubleLanes step{1.0 * x[0], 1.0 * x[length], 1.0 * x[2 * length], 1.0 * x[3 * length]};
            step *= step;
            even[half] += step;
            odd[half] += step;
        }
    memcpy(end[0], even, sizeof even);
    memcpy(end[1], odd, sizeof odd);
}

uint64_t bits_of(double v)
{
    return std::bit_cast<uint64_t>(v);
}

/// The sum with n squares added one after the other.
double with_squares(double sum, const int32_t* samples, uint32_t n)
{
    for (uint32_t i = 0; i < n; ++i) sum += static_cast<double>(samples[i]) * samples[i];
    return sum;
}

/// Adds squares as if one after the other, with the rounding of each addition, but Runs runs of them at a
/// time.
///
/// Between two powers of two all doubles are multiples of one unit. There the rounding of an addition depends
/// on one thing about the sum: whether it is an even or an odd multiple, since a tie goes to the even one. So
/// each run is added up twice, from `sum` and from the next double, of which one is even and one is odd. Then
/// the gains of the runs are added in order; the last bit of each end says which of the two gains of the next
/// run applies.
///
/// Returns false, and leaves the sum, when it would reach the next power of two. The test of the total is
/// enough: squares are not negative, so if any run passes the power of two, the total does, too.
bool add_squares_in_runs(double& sum, const int32_t* samples, uint32_t n)
{
    const uint64_t first = bits_of(sum);
    const double start[2] = {sum, std::bit_cast<double>(first + 1)};
    const double next_power = std::bit_cast<double>(((first >> 52) + 1) << 52);
    const uint32_t length = n / Runs;
    double end[2][Runs];
    add_runs(samples, length, start, end);

    double gain = 0.0;
    uint64_t odd = 0;
    for (uint32_t run = 0; run < Runs; ++run) {
        gain += end[odd][run] - start[odd];
        odd = (bits_of(end[odd][run]) ^ first) & 1;
    }
    const double all = with_squares(sum + gain, samples + Runs * length, n - Runs * length);
    if (!(all < next_power)) return false;
    sum = all;
    return true;
}

/// Adds the samples' squares to their sum, in the fastest way that gives the same bits.
void add_to_squares(TraceStatistics& s, const int32_t* samples, uint32_t n, const Digest& d)
{
    if (s.sq_sum + n * reach(d) * reach(d) <= Exact_max) {
        s.sq_sum += static_cast<double>(d.squares);
        return;
    }
    if (!add_squares_in_runs(s.sq_sum, samples, n)) s.sq_sum = with_squares(s.sq_sum, samples, n);
}

/// Updates the extremes. The place of a new one is that of the first sample with its value.
void move_extremes(TraceStatistics& s, uint32_t before, const int32_t* samples, uint32_t n, const Digest& d)
{
    const auto place = [&](int32_t value) {
        return before + 1 + static_cast<uint32_t>(std::find(samples, samples + n, value) - samples);
    };
    if (d.min < s.min) {
        s.min = d.min;
        s.min_ndx = place(d.min);
    }
    if (d.max > s.max) {
        s.max = d.max;
        s.max_ndx = place(d.max);
    }
}

} // namespace

void add_samples_one_by_one(TraceStatistics& s, uint32_t before, const int32_t* samples, uint32_t n, char* to)
{
    for (uint32_t i = 0; i < n; ++i) {
        const double x = samples[i];
        put_float(samples[i], to + size_t{4} * i);
        s.sum += x;
        s.sq_sum += x * x;
        if (x < s.min) {
            s.min = x;
            s.min_ndx = before + 1 + i;
        }
        if (x > s.max) {
            s.max = x;
            s.max_ndx = before + 1 + i;
        }
    }
}

void add_samples(TraceStatistics& s, uint32_t before, const int32_t* samples, uint32_t n, char* to)
{
    if (n == 0) return;
    const bool squares = s.sq_sum <= Exact_max; // above, add_to_squares does not use them
    const Digest d = write_and_digest(samples, n, to, squares);
    add_to_sum(s, samples, n, d);
    add_to_squares(s, samples, n, d);
    move_extremes(s, before, samples, n, d);
}
