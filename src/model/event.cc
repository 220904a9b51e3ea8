#include "model/event.h"

#include "driver/base/fatal.h"
#include "driver/base/settings.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "output/sac.h"

#include <cstdint>
#include <memory>
#include <new>

namespace {

/// The unit's open event with a number, or null. kept: event-number-only. Two streams that use one number
/// share the event.
EVT_T* known_event(const UNIT_T& unit, uint16_t number)
{
    if (unit.evt && unit.evt->evt_num == number) return unit.evt;
    const auto found = unit.event_by_number.find(number);
    return found == unit.event_by_number.end() ? nullptr : found->second;
}

EVT_T& new_event(UNIT_T& unit, const PACKET& pkt)
try {
    auto evt = std::make_unique<EVT_T>();
    evt->unit = &unit;
    evt->unit_id = unit.unit_id;
    evt->evt_num = pkt.event;
    evt->stn_name = unit.stn_name; // names the event's traces if no EH comes
    // kept: first-event-flagged. A unit's only event starts at the packet's own sequence number, so that this
    // packet is out of sequence. An event beside others starts at 0, and any number may follow.
    if (!unit.evt) {
        evt->strm = pkt.stream;
        evt->seq = pkt.seq;
    }
    unit.event_by_number[pkt.event] = evt.get();
    ring_join(unit.evt, evt.get());
    return *evt.release();
} catch (const std::bad_alloc&) {
    end_without_event_memory();
}

/// True if `seq` may follow. After 9999, where the counter ends, and after 0 any number may.
bool in_sequence(uint16_t stored, uint16_t seq)
{
    return seq == stored + 1 || stored == 0 || stored == 9999;
}

/// Stores the sequence number. If it is out of sequence, marks the event as bad and logs that.
void check_sequence(EVT_T& evt, uint16_t seq)
{
    const bool good = in_sequence(evt.seq, seq);
    evt.seq = seq;
    if (good) return;
    evt.bad = true;
    if (Log_on)
        evt.unit->log_fp.print("\nBlock sequence # %d is out of sequence in Event #%d\n\n", seq, evt.evt_num);
}

/// Finishes all channels, then frees them.
void remove_channels(EVT_T& evt)
{
    ring_each(evt.chn, Sac_data_close);
    while (CHN_T* chn = evt.chn) {
        evt.chn = ring_leave(chn);
        delete chn;
    }
}

} // namespace

EVT_T& Evt_find(UNIT_T& unit, const PACKET& pkt)
{
    EVT_T* const known = known_event(unit, pkt.event);
    EVT_T& evt = known ? *known : new_event(unit, pkt);
    if (describes_event(pkt)) Evt_info(evt, pkt);
    check_sequence(evt, pkt.seq);
    unit.evt = &evt;
    return evt;
}

void Evt_remove(EVT_T& evt)
{
    const std::unique_ptr<EVT_T> freed(&evt);
    remove_channels(evt);
    evt.unit->evt = ring_leave(&evt);
    evt.unit->event_by_number.erase(evt.evt_num);
}
