#include "model/event.h"

#include "driver/fatal.h"
#include "driver/settings.h"
#include "model/open_files.h"
#include "model/records.h"
#include "model/ring.h"
#include "output/sac.h"
#include "packet/kind.h"

#include <memory>
#include <new>

namespace {

/// What a packet says of its place in the stream.
struct STAMP {
    uint16_t event, seq, stream;
};

STAMP stamp_of(const PACKET& pkt)
{
    return {bcd(pkt, EVT::Number), bcd(pkt, HDR::Seq), bcd(pkt, EVT::Stream)};
}

/// kept: event-number-only. Two streams that use one number share the event.
EVT_T* known_event(const UNIT_T* unit, uint16_t number)
{
    if (unit->evt && unit->evt->evt_num == number) return unit->evt;
    const auto found = unit->event_by_number.find(number);
    return found == unit->event_by_number.end() ? nullptr : found->second;
}

EVT_T* new_event(UNIT_T* unit, const STAMP& stamp)
try {
    auto evt = std::make_unique<EVT_T>();
    evt->unit = unit;
    evt->unit_id = unit->unit_id;
    evt->evt_num = stamp.event;
    evt->stn_name = unit->stn_name; // a DT may be all that ever comes of this event, and it names the file
    // kept: first-event-flagged. A unit's only event starts at the packet's own number, so that this packet
    // counts as out of sequence; an event beside others starts at 0 and takes any number.
    if (!unit->evt) {
        evt->strm = stamp.stream;
        evt->seq = stamp.seq;
    }
    unit->event_by_number[stamp.event] = evt.get();
    ring_join(unit->evt, evt.get());
    return evt.release();
} catch (const std::bad_alloc&) {
    end_without_event_memory();
}

/// The counter ends at 9999; 0 is where it starts, and where an added event stands.
bool in_sequence(uint16_t stored, uint16_t seq)
{
    return seq == stored + 1 || stored == 0 || stored == 9999;
}

void check_sequence(EVT_T* evt, uint16_t seq)
{
    if (in_sequence(evt->seq, seq)) return;
    evt->bad = 1;
    if (Log_on)
        evt->unit->log_fp.print("\nBlock sequence # %d is out of sequence in Event #%d\n\n", seq,
                                evt->evt_num);
}

bool tells_about_event(const PACKET& pkt)
{
    const uint16_t kind = code_set(pkt);
    return kind == PKT_EH || kind == PKT_ET;
}

/// Finishes and frees all channels. The ring is opened first: while it is taken apart, walks would not end.
void remove_channels(EVT_T* evt)
{
    if (!evt->chn) return;
    ring_each(evt->chn, [](CHN_T& chn) { Sac_data_close(&chn); });
    evt->chn->prv->nxt = nullptr;
    for (CHN_T* chn = evt->chn; chn;) {
        CHN_T* next = chn->nxt;
        delete chn;
        chn = next;
    }
    evt->chn = nullptr;
}

} // namespace

EVT_T* Evt_find(UNIT_T* unit, const PACKET& pkt)
{
    const STAMP stamp = stamp_of(pkt);
    if (unit->evt && unit->evt->evt_num != stamp.event) Evt_close_files(unit->evt);
    EVT_T* evt = known_event(unit, stamp.event);
    if (!evt) evt = new_event(unit, stamp);
    if (tells_about_event(pkt)) Evt_info(evt, pkt);
    check_sequence(evt, stamp.seq);
    evt->seq = stamp.seq;
    return unit->evt = evt;
}

void Evt_remove(EVT_T* evt)
{
    remove_channels(evt);
    evt->unit->evt = ring_leave(evt);
    evt->unit->event_by_number.erase(evt->evt_num);
    delete evt;
}
