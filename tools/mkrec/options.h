// Reads and checks the command line.
#pragma once

#include "mkrec/damage.h"
#include "mkrec/signal.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mkrec {

enum class SampleFormat : uint8_t { int16 = 0x16, int32 = 0x32, steim1 = 0xC0, steim2 = 0xC2 };

struct Options {
    std::string out;   ///< path of the recording; "-" is standard output
    std::string mseed; ///< path of the same samples as miniSEED; empty for none
    int units = 2;
    int streams = 2;    ///< of each unit
    int channels = 3;   ///< of each stream
    int64_t events = 2; ///< of each stream
    int64_t seconds = 60;
    int64_t size = 0; ///< bytes of the recording; 0: given by the seconds
    std::vector<int> rates{200,
                           50}; ///< samples per second of the streams, repeated if there are more streams
    std::vector<SampleFormat> formats{SampleFormat::steim2, SampleFormat::steim1, SampleFormat::int32,
                                      SampleFormat::int16};
    Motion motion = Motion::quake;
    uint64_t seed = 1;
    bool interleave = false;
    bool trailers = true;   ///< false: events never end
    bool parameters = true; ///< false: only EH, DT and ET packets
    int64_t start_ms =
        (9 * 24 + 6) * int64_t{3600000}; ///< of the survey, since the first year began: day 10, 6 hours
    int gap = 0;                ///< seconds whose data packets are missing from the middle of each event
    std::vector<int64_t> drop;  ///< numbers of packets that are left out, counted from 1
    std::vector<Damage> damage; ///< what else is wrong
    bool bad_check = false;     ///< true: every Steim packet stores a wrong last sample
    bool force = false;         ///< true: files that exist are overwritten
    bool help = false, version = false;
};

/// Reads the arguments after the program's name. On failure false, and `complaint` says why.
bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint);

extern const char Help_text[];

} // namespace mkrec
