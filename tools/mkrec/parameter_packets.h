// The packets that tell how a unit is set up and what it has written.
#pragma once

#include "mkrec/event_packets.h"

#include <vector>

namespace mkrec {

/// An event as the directory of the recording medium lists it.
struct DIRECTORY_ENTRY {
    PLACE event;
    EVENT_TIMES times;
    uint32_t start, blocks; ///< in packets of the unit
};

inline constexpr size_t Directory_most = DR::Entries.count; ///< entries that one packet holds

/// Writes pages for one unit; each gives its meaningful bytes in the header. `sequence` counts them.
class PARAMETER_PAGES {
public:
    PARAMETER_PAGES(const SURVEY& survey, int unit) : survey_(survey), unit_(unit) {}

    void health(PAGE& page, std::string_view text, int64_t ms);
    void stations(PAGE& page, int number); ///< SC, number 0 and up: as many channels as it holds
    void streams(PAGE& page, int number);  ///< DS, number 0 and up: as many streams as it holds
    void operation(PAGE& page);            ///< OM
    void auxiliary(PAGE& page);            ///< AD
    void calibration(PAGE& page);          ///< CD
    void filter(PAGE& page);               ///< FD
    void network(PAGE& page, const char* type, const PLACE& event, const EVENT_TIMES& times);
    void directory(PAGE& page, const std::vector<DIRECTORY_ENTRY>& entries, uint32_t next_free, int64_t ms);

private:
    void start(PAGE& page, const char* type, int64_t ms, int byte_cnt, char fill);

    const SURVEY& survey_;
    int unit_;
    int sequence_ = 0;
};

} // namespace mkrec
