// The packets with a unit's settings, and the directory of what it has written.
#pragma once

#include "mkrec/event_packets.h"

#include <vector>

namespace mkrec {

/// An event in the directory of the recording medium.
struct DirectoryEntry {
    LinePlace event;
    MadeTimes times;
    uint32_t start, blocks; ///< in packets of the unit
};

inline constexpr size_t Directory_most = DR::Entries.count; ///< entries that one packet holds

/// Writes the packets of one unit, each with its byte count in the header. `sequence` counts them.
class ParameterPages {
public:
    ParameterPages(const Survey& survey, int unit) : survey_(survey), unit_(unit) {}

    void health(TextPage& page, std::string_view text, int64_t ms);
    void stations(TextPage& page, int number); ///< SC, number 0 and up: as many channels as it holds
    void streams(TextPage& page, int number);  ///< DS, number 0 and up: as many streams as it holds
    void operation(TextPage& page);            ///< OM
    void auxiliary(TextPage& page);            ///< AD
    void calibration(TextPage& page);          ///< CD
    void filter(TextPage& page);               ///< FD
    void network(TextPage& page, const char* type, const LinePlace& event, const MadeTimes& times);
    void directory(TextPage& page, const std::vector<DirectoryEntry>& entries, uint32_t next_free,
                   int64_t ms);

private:
    void start(TextPage& page, const char* type, int64_t ms, int byte_cnt, char fill);

    const Survey& survey_;
    int unit_;
    int sequence_ = 0;
};

} // namespace mkrec
