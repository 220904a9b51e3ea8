// One event of one stream, packet by packet: headers, data in the order in which a recorder fills its
// packets, trailers.
#pragma once

#include "mkrec/event_packets.h"

#include <vector>

namespace mkrec {

class EVENT_PART {
public:
    EVENT_PART(const SURVEY& survey, const PLACE& event);

    /// Gives the next packet; false at the end.
    bool next(PAGE& page);

    const PLACE& event() const { return event_; }
    /// What has happened so far; at the end, all of it.
    EVENT_TIMES times() const;
    uint32_t packets() const { return packets_; }
    bool not_encodable() const;

private:
    struct LANE { // a channel and its packet that waits to be written
        CHANNEL_RUN run;
        BLOCK block;
        bool waiting;
    };

    LANE* first_full();
    int next_sequence();

    const SURVEY& survey_;
    PLACE event_;
    std::vector<LANE> lanes_;
    int headers_left_, trailers_left_;
    int64_t last_sample_ = 0;
    uint32_t packets_ = 0;
};

} // namespace mkrec
