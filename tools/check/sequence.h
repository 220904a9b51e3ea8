// Do packet numbers follow each other? Some recorders number all their packets in one row, others those of
// each event.
#pragma once

#include "packet/packet.h"

#include <cstdint>
#include <map>

namespace check {

/// The packet numbers of one recorder.
class Sequence {
public:
    /// True when the packet's number follows the recorder's packet before it, or that of its event. Where an
    /// event's first packet follows none, 0 and 1 begin a row, and so does any number of a recorder that
    /// counts by event.
    bool takes(const PACKET& pkt);

    /// Forgets an event that ended.
    void end_event(uint16_t number) { rows_.erase(number); }

    int before() const { return before_; } ///< number of the recorder's packet before; -1: none

private:
    int before_ = -1, latest_ = -1;
    bool by_event_ = false;
    std::map<int, uint16_t> rows_; ///< number of the latest packet, by event
};

} // namespace check
