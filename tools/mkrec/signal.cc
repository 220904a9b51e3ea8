// Noise is a leaky sum of random numbers; a quake is two resonances that are excited in every period.
#include "mkrec/signal.h"

#include <algorithm>

namespace mkrec {

namespace {

constexpr int32_t Far_off_16 = 20000;
constexpr int32_t Far_off_32 = 8000000; // close to the end of a 24-bit digitiser's range
constexpr int Wave_places = 8, Envelope_places = 20, Resonance_places = 14;

/// Cosine for 0 to 2 radians by its series, because sums and products are rounded in the same way on every
/// host.
double cosine(double x)
{
    double term = 1, sum = 1;
    for (int k = 1; k < 12; ++k) {
        term *= -x * x / ((2 * k - 1) * (2 * k));
        sum += term;
    }
    return sum;
}

/// Rounding that recordings depend on; below zero it is not to the nearest.
int64_t fixed_point(double x)
{
    return static_cast<int64_t>(x * (1 << Resonance_places) + 0.5); // NOLINT(bugprone-incorrect-roundings)
}

/// Largest k with 2^k <= n.
int log2_of(int64_t n)
{
    int k = 0;
    while (n > 1) {
        n >>= 1;
        ++k;
    }
    return k;
}

/// A wave of a dominant frequency that fades within so many seconds.
Wave make_wave(double hertz, int fade_sec, int64_t counts, int64_t arrival, const SignalPlan& plan, int which)
{
    const double turn = std::min(hertz, plan.rate / 5.0) / plan.rate;
    const double damping = 1 - 0.4 * turn;
    const double push =
        static_cast<double>(counts) * turn * 100 / hertz; // a sharp resonance has a larger amplitude
    return {.noise = RandomBits(stirred(plan.seed, static_cast<uint64_t>(which))),
            .arrival = arrival,
            .strength = static_cast<int64_t>(push) << Envelope_places,
            .fade = std::max(1, log2_of(static_cast<int64_t>(plan.rate) * fade_sec)),
            .a = fixed_point(2 * damping * cosine(6.283185307179586 * turn)),
            .b = fixed_point(damping * damping)};
}

/// P is strong on the vertical axis, S on the horizontal ones; both are weaker at a distance.
int64_t strength_at(const SignalPlan& plan, int64_t counts, const int (&share)[3])
{
    const int near = 8 - plan.distance % 8;
    return counts * near * share[plan.axis % 3] / 800 * (plan.word_bits == 16 ? 1 : 16);
}

Wave p_wave(const SignalPlan& plan)
{
    return make_wave(6.5, 2, strength_at(plan, 500, {100, 35, 25}), p_arrival(plan), plan, 2);
}

Wave s_wave(const SignalPlan& plan)
{
    return make_wave(2.2, 4, strength_at(plan, 500, {40, 100, 80}), s_arrival(plan), plan, 3);
}

int64_t arrival(const SignalPlan& plan, int twentieths, int tenths_of_a_second)
{
    const int64_t late = static_cast<int64_t>(plan.rate) * (plan.distance % 8) * tenths_of_a_second / 10;
    return (plan.period * twentieths / 20 + late) % plan.period;
}

/// One sample of a wave; 0 without further work once envelope and resonance are too small to show.
int32_t swing(Wave& wave)
{
    const int64_t push = wave.noise.signed_bits(8);
    const int64_t input = ((wave.envelope >> (Envelope_places - Wave_places)) * push) >> 7;
    const int64_t y = ((wave.a * wave.y1 - wave.b * wave.y2) >> Resonance_places) + input;
    wave.y2 = wave.y1;
    wave.y1 = y;
    wave.envelope -= wave.envelope >> wave.fade;
    if (wave.envelope < 1 << (Envelope_places - 2)) wave.envelope = 0;
    const auto still = [](int64_t v) { return v > -(1 << Wave_places) && v < 1 << Wave_places; };
    if (wave.envelope == 0 && still(wave.y1) && still(wave.y2)) {
        wave.y1 = wave.y2 = 0;
        wave.active = false;
    }
    return static_cast<int32_t>(y >> Wave_places);
}

} // namespace

int64_t p_arrival(const SignalPlan& plan)
{
    return arrival(plan, 3, 3);
}

int64_t s_arrival(const SignalPlan& plan)
{
    return arrival(plan, 7, 5);
}

SignalMaker::SignalMaker(const SignalPlan& plan)
    : plan_(plan), noise_(stirred(plan.seed, 1)), p_(p_wave(plan)), s_(s_wave(plan))
{
}

void SignalMaker::fill(int32_t* x, int n)
{
    switch (plan_.motion) {
    case Motion::quake:
        fill_noise(x, n);
        add_wave(p_, x, n);
        add_wave(s_, x, n);
        break;
    case Motion::quiet: fill_noise(x, n); break;
    case Motion::offset:
        fill_noise(x, n);
        for (int i = 0; i < n; ++i) x[i] += plan_.word_bits == 16 ? Far_off_16 : Far_off_32;
        break;
    case Motion::loud: fill_walk(x, n, 9, 16, 16); break;
    case Motion::full: fill_full(x, n); break;
    case Motion::mixed: fill_walk(x, n, 1, plan_.word_bits == 16 ? 16 : 30, 12); break;
    }
    if (plan_.word_bits == 16) // a digitiser clips at its limit
        for (int i = 0; i < n; ++i) x[i] = std::clamp(x[i], -32768, 32767);
    at_ += n;
}

/// Makes sixteen samples from one random number.
void SignalMaker::fill_noise(int32_t* x, int n)
{
    int32_t level = level_;
    for (int i = 0; i < n;) {
        if (draws_left_ == 0) {
            draws_ = noise_.next();
            draws_left_ = 16;
        }
        const int part = std::min(n - i, draws_left_);
        uint64_t draws = draws_;
        for (int k = 0; k < part; ++k, draws <<= 4) {
            level += static_cast<int32_t>(draws >> 60) - 8 - (level >> 3);
            x[i + k] = level;
        }
        draws_ = draws;
        draws_left_ -= part;
        i += part;
    }
    level_ = level;
}

void SignalMaker::add_wave(Wave& wave, int32_t* x, int n)
{
    int64_t at = at_ % plan_.period;
    for (int done = 0; done < n;) {
        if (at == wave.arrival) {
            wave.envelope = wave.strength;
            wave.active = true;
        }
        const int64_t until_next = (at < wave.arrival ? 0 : plan_.period) + wave.arrival - at;
        const int end = static_cast<int>(std::min<int64_t>(n, done + until_next));
        at = (at + (end - done)) % plan_.period;
        for (; done < end && wave.active; ++done) x[done] += swing(wave);
        done = end;
    }
}

void SignalMaker::fill_full(int32_t* x, int n)
{
    for (int i = 0; i < n; ++i) x[i] = noise_.signed_bits(plan_.full_bits);
}

/// A random walk with steps of `least` to `most` bits; the width changes every 1 to `hold` samples. At the
/// end of the range a step is reversed, so it never needs more bits than its width.
void SignalMaker::fill_walk(int32_t* x, int n, int least, int most, int hold)
{
    const int32_t limit = plan_.word_bits == 16 ? 32767 : most > 16 ? 1 << 30 : 1 << 22;
    for (int i = 0; i < n; ++i) {
        if (width_left_-- == 0) {
            const uint64_t draw = noise_.next();
            width_ = least + static_cast<int>((draw >> 32) % static_cast<unsigned>(most - least + 1));
            width_left_ = static_cast<int>((draw >> 48) % static_cast<unsigned>(hold));
        }
        int32_t step = noise_.signed_bits(width_);
        if (width_ > 1 && step == -(1 << (width_ - 1))) ++step; // so that it can be reversed
        const int64_t there = static_cast<int64_t>(level_) + step;
        level_ += there > limit || there < -limit ? -step : step;
        x[i] = level_;
    }
}

} // namespace mkrec
