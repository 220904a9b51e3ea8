// Random numbers that are the same on every host: 64-bit integer steps and nothing else.
#pragma once

#include <cstdint>

namespace mkrec {

/// Hashes several numbers (seed, unit, stream, ...) to one.
inline uint64_t stirred(uint64_t a, uint64_t b)
{
    uint64_t z = a + 0x9E3779B97F4A7C15u * (b + 1);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

struct RandomBits {
    uint64_t state;

    explicit RandomBits(uint64_t seed) : state(stirred(seed, 0) | 1) {}

    /// The next 64 bits; the upper ones are of better quality.
    uint64_t next()
    {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state * 0x2545F4914F6CDD1Du;
    }

    /// A number from -2^(bits-1) to 2^(bits-1) - 1; bits is 1 to 32.
    int32_t signed_bits(int bits)
    {
        return static_cast<int32_t>(static_cast<int64_t>(next()) >> (64 - bits));
    }
};

} // namespace mkrec
