// Traces written by hand: good ones, and others with words changed.
#pragma once

#include "kit/expect.h"

#include <cstring>
#include <string>

namespace ls_test {

/// Places of header words, by the format's own numbering.
enum SacWord {
    DELTA = 0,
    DEPMIN = 1,
    DEPMAX = 2,
    B = 5,
    E = 6,
    DEPMEN = 56,
    NZYEAR = 70,
    NZJDAY = 71,
    NZHOUR = 72,
    NZMIN = 73,
    NZSEC = 74,
    NZMSEC = 75,
    NVHDR = 76,
    NPTS = 79,
    IFTYPE = 85,
    LEVEN = 105,
    SECOND_SAMPLE = 159,
};

/// Overwrites a big-endian word of a trace.
inline std::string with_word(std::string sac, SacWord word, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i)
        sac[4 * static_cast<size_t>(word) + i] = static_cast<char>(value >> (24 - 8 * i) & 0xFF);
    return sac;
}

inline std::string with_float(const std::string& sac, SacWord word, float value)
{
    uint32_t bits;
    memcpy(&bits, &value, 4);
    return with_word(sac, word, bits);
}

inline float header_float(const std::string& sac, SacWord word)
{
    const uint32_t bits = kit::header_bits(sac, word);
    float value;
    memcpy(&value, &bits, 4);
    return value;
}

inline std::string with_text(std::string sac, size_t at, std::string_view text)
{
    return sac.replace(at, text.size(), text);
}

/// The same trace with all numbers turned round.
inline std::string little_endian(std::string sac)
{
    for (size_t at = 0; at + 4 <= sac.size(); at += 4) {
        if (at == 440) at = 632;
        if (at + 4 > sac.size()) break;
        std::swap(sac[at], sac[at + 3]);
        std::swap(sac[at + 1], sac[at + 2]);
    }
    return sac;
}

/// A trace as vx_sac finishes it: 100 samples per second from 2 May 2004 10:15:30.250 on.
inline kit::Sac usual()
{
    kit::Sac s;
    s.rate(100).stats(-3, 5, 2);
    return s;
}
inline std::string finished()
{
    return kit::sac_file(usual(), {5, -3, 4});
}

/// The same as a run leaves it that is killed: no count, statistics as before the first sample.
inline std::string unfinished()
{
    kit::Sac s;
    s.rate(100);
    return with_word(kit::sac_file(s, {5, -3, 4}), NPTS, 0);
}

} // namespace ls_test
