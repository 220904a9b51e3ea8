// One event of one stream, packet by packet: headers, data in the order in which a recorder fills its
// packets, trailers.
#pragma once

#include "mkrec/event_packets.h"

#include <vector>

namespace mkrec {

class EventPart {
public:
    EventPart(const Survey& survey, const LinePlace& event);

    /// Makes the next packet; returns false at the end.
    bool next(TextPage& page);

    const LinePlace& event() const { return event_; }
    /// The times of the event so far; at the end, all of them.
    MadeTimes times() const;
    uint32_t packets() const { return packets_; }
    bool not_encodable() const;

private:
    struct Lane { // a channel and its next packet
        ChannelRun run;
        SampleBlock block;
        bool waiting;
    };

    Lane* first_full();
    Lane* next_lane();
    bool is_missing(const SampleBlock& block) const;
    void pass_on(Lane& lane);
    int next_sequence();

    const Survey& survey_;
    LinePlace event_;
    std::vector<Lane> lanes_;
    int headers_left_, trailers_left_;
    int64_t last_sample_ = 0;
    uint32_t packets_ = 0;
};

} // namespace mkrec
