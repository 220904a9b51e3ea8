// What is known of a file: plain records, filled by inspect() and written by json, table and gaps.
#pragma once

#include "check/findings.h"
#include "packet/kind.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace check {

/// A gap between two packets of a channel; an overlap when `seconds` is negative.
struct Gap {
    Moment at; ///< when the missing sample was due
    uint64_t packet;
    double seconds;
    int64_t samples;
};

/// A channel of an event.
struct ChannelTally {
    static constexpr size_t Most_gaps = 1000;

    uint8_t format = 0; ///< of its first packet
    uint64_t packets = 0, samples = 0, bad_packets = 0;
    Moment first = No_moment, last = No_moment; ///< of its samples
    std::optional<std::string> trace;
    std::vector<Gap> gaps;
};

/// An event of a stream, from its first packet to its trailer.
struct EventTally {
    uint16_t event = 0;
    uint16_t stream = 0; ///< counted from 0
    double rate = 0.0;   ///< samples per second; 0: unknown
    std::string station;
    Moment told_first = No_moment, told_last = No_moment; ///< by header and trailer
    Moment first = No_moment, last = No_moment;           ///< of the samples
    std::map<uint16_t, ChannelTally> channels;            ///< by number, counted from 0
};

struct PositionTold {
    double lat, lon, elev;
    bool by_header; ///< else by the station file
};

struct ClockTold {
    Moment at;
    char source;             ///< as in the header; a blank when not told
    std::optional<int> days; ///< since the last lock
    bool operator==(const ClockTold& other) const { return source == other.source && days == other.days; }
};

struct HealthTold {
    Moment at;
    uint64_t packet;
    std::string text;
};

struct UnitTally {
    static constexpr size_t Most_told = 200; ///< clock states and health texts that are kept

    std::string station; ///< empty: none told
    std::optional<PositionTold> position;
    std::vector<ClockTold> clock;
    std::vector<HealthTold> health;
    std::vector<std::unique_ptr<EventTally>> events;
};

/// One channel on one day.
struct DayKey {
    uint16_t unit;
    std::string station;
    uint16_t stream, channel; ///< counted from 0
    int64_t day;
    bool operator<(const DayKey& other) const
    {
        return std::tie(unit, station, stream, channel, day) <
               std::tie(other.unit, other.station, other.stream, other.channel, other.day);
    }
};
struct DayMetric {
    uint64_t num_gaps = 0, num_overlaps = 0;
    double max_gap = 0.0, max_overlap = 0.0;
    double present = 0.0, span = 0.0; ///< microseconds
};

enum class FileKind : uint8_t { recording, empty, other };

struct Report {
    std::string file;
    int error = 0; ///< errno when the file could not be read
    uint64_t bytes = 0, packets = 0;
    size_t left_over = 0;
    FileKind kind = FileKind::other;
    std::optional<std::string> looks_like;
    std::array<uint64_t, PKT_FD + 1> types{}; ///< by PKT
    Moment first = No_moment, last = No_moment;
    uint64_t samples = 0;
    std::map<uint16_t, UnitTally> units;
    std::map<DayKey, DayMetric> metrics;
    Findings findings;
};

/// The letters of a packet type.
inline std::string letters_of(size_t kind)
{
    return kind == PKT_UNKNOWN ? "unknown" : std::string(Pkt_codes + 2 * (kind - 1), 2);
}

} // namespace check
