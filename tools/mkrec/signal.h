// Synthetic ground motion: an endless trace of one channel, the same on every host.
//
// All arithmetic uses integers, so that it does not depend on a maths library or rounding mode.
#pragma once

#include "mkrec/random.h"

#include <cstdint>

namespace mkrec {

enum class Motion : uint8_t {
    quake,  ///< noise with P and S arrivals in every period
    quiet,  ///< noise of a few counts
    loud,   ///< differences of 9 to 16 bits
    offset, ///< quiet noise far from zero
    full,   ///< random samples over the whole range of the encoding
    mixed,  ///< differences of every width in turn
};

struct SignalPlan {
    Motion motion;
    int word_bits;  ///< samples stay within this many bits: 16 or 32
    int full_bits;  ///< bits of MOTION::full: fewer than word_bits where differences must fit 30 bits
    int rate;       ///< samples per second
    int64_t period; ///< samples from one quake to the next
    int distance;   ///< 0 and up; at a larger distance waves arrive later and weaker
    int axis;       ///< 0 vertical, 1 and 2 horizontal
    uint64_t seed;
};

/// Time of the P arrival from the start of the period, in samples.
int64_t p_arrival(const SignalPlan& plan);
/// The same for the S wave.
int64_t s_arrival(const SignalPlan& plan);

/// A wave: noise with a decaying envelope, filtered by a resonance that sets the frequency.
struct Wave {
    RandomBits noise;
    int64_t arrival;        ///< where in each period it starts
    int64_t strength;       ///< initial value of the envelope
    int fade;               ///< the envelope loses a 2^fade-th of itself with each sample
    int64_t a, b;           ///< the resonance: y = a y[-1] - b y[-2] + input, with 14 binary places
    int64_t y1 = 0, y2 = 0; ///< with 8 binary places
    int64_t envelope = 0;   ///< with 20 binary places
    bool active = false;
};

class SignalMaker {
public:
    explicit SignalMaker(const SignalPlan& plan);

    /// The next n samples. They do not depend on how many are taken per call.
    void fill(int32_t* x, int n);

private:
    void fill_noise(int32_t* x, int n);
    void add_wave(Wave& wave, int32_t* x, int n);
    void fill_full(int32_t* x, int n);
    void fill_walk(int32_t* x, int n, int least, int most, int hold);

    SignalPlan plan_;
    RandomBits noise_;
    uint64_t draws_ = 0; // random bits left, the next ones on top
    int draws_left_ = 0; // number of samples that they are enough for
    int32_t level_ = 0;  // of the noise or the walk
    int width_ = 1;      // bits of the walk's steps at present
    int width_left_ = 0; // steps until they change
    int64_t at_ = 0;     // samples given so far
    Wave p_, s_;
};

} // namespace mkrec
