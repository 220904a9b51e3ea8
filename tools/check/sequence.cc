#include "check/sequence.h"

namespace check {

static constexpr int Outside = -1; // the row of packets that belong to no event
static constexpr int Last_number = 9999;

/// Real recorders count from 9999 to 0, vx_mkrec's do, too, and some count to 1.
static bool follows(int before, uint16_t seq)
{
    return seq == before + 1 || (before == Last_number && seq <= 1);
}

bool Sequence::takes(const PACKET& pkt)
{
    const bool in_event = describes_event(pkt) || pkt.kind == PKT_DT;
    const int row = in_event ? pkt.event : Outside;
    const bool first_of_all = latest_ < 0;
    const bool follows_unit = first_of_all || follows(latest_, pkt.seq);
    const auto [place, is_new] = rows_.try_emplace(row, pkt.seq);
    const bool follows_row = !is_new && follows(place->second, pkt.seq);
    const bool begins_row = is_new && (pkt.seq <= 1 || by_event_);
    if (follows_row && !follows_unit) by_event_ = true;
    place->second = pkt.seq;
    before_ = latest_;
    latest_ = pkt.seq;
    return follows_unit || follows_row || begins_row;
}

} // namespace check
