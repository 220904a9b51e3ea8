#include "model/channel.h"

#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/settings.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "output/log.h"
#include "output/sac.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <strings.h>

namespace {

/// Updates the lowest and highest channel number of the event.
void note_channel_range(EVT_T& evt, uint16_t channel)
{
    if (channel > evt.hi) evt.hi = channel;
    if (evt.lo == 99 || channel < evt.lo) evt.lo = channel;
}

/// The event begins with the earliest of its channels' first packets.
void note_first_time(EVT_T& evt, const TIMESTR& time)
{
    TIMESTR& first = evt.times.t_first;
    const bool full = first.length() == 16;
    if (!full || strncasecmp(time.s, first.s, 16) <= 0) first = time;
}

/// Creates the channel of a packet and adds it to the event's ring.
CHN_T& add_channel(EVT_T& evt, const PACKET& pkt)
{
    CHN_T& chn = *Chn_create(evt, pkt);
    ring_join(evt.chn, &chn);
    ++evt.chn_cnt;
    note_first_time(evt, pkt.time);
    return chn;
}

/// Compares a packet's time with the expected one. Breaks in time are marked, not filled: samples are
/// appended as they arrive.
void check_continuity(CHN_T& chn, const TIMESTR& time)
{
    const int comparison = strcmp(time.s, chn.times.t_nxt.s);
    mark_continuity(comparison);
    if (comparison) chn.time_tear = true;
}

/// kept: rate-before-estimate. The expected time uses the rate as it was before this packet's estimate.
void move_times_on(CHN_T& chn, const PACKET& pkt)
{
    chn.evt->times.t_last = pkt.time;
    chn.times.t_prv = pkt.time;
    chn.times.t_nxt = pkt.time;
    add_str_tim(chn.times.t_nxt, chn.evt->smp_rate, pkt.samples);
    chn.seq = pkt.seq;
}

/// Creates the trace and its provisional header. If another run has taken the name meanwhile, the next free
/// one is used. The run ends (20) when the trace cannot be created, or when the search returns the taken name
/// again.
void create_trace(CHN_T& chn)
{
    while (!Chn_file_open(chn)) {
        const bool taken = errno == EEXIST;
        const std::string refused = chn.name;
        if (taken) Chn_name(chn);
        if (chn.name == refused) end_without_trace(refused.c_str());
    }
    Sac_dhdr_out(chn);
}

/// Estimates the rate of an event without header, from the samples written and the time between the first and
/// the latest packet. Every step is rounded to single precision.
void estimate_rate(EVT_T& evt, const CHN_T& chn)
{
    if (evt.eh_seen) return;
    const float ms = Time_update(chn.times.t_first, chn.times.t_prv) * 1000.0F;
    evt.smp_rate = chn.cnt == 0 ? 0.0F : 1000.0F / (ms / static_cast<float>(chn.cnt));
    if (evt.smp_rate != 0.0F) evt.eh_seen = true;
}

} // namespace

CHN_T& Chn_find(EVT_T& evt, const PACKET& pkt)
{
    note_channel_range(evt, pkt.channel);
    CHN_T* const known = ring_find(evt.chn, [&](const CHN_T& c) { return c.id.channel == pkt.channel; });
    CHN_T& chn = known ? *known : add_channel(evt, pkt);
    check_continuity(chn, pkt.time);
    move_times_on(chn, pkt);
    if (!chn.fp.open && Smp_limit != 0) create_trace(chn);
    evt.chn = &chn;
    estimate_rate(evt, chn);
    return chn;
}

CHN_T* Chn_create(EVT_T& evt, const PACKET& pkt)
try {
    auto chn = std::make_unique<CHN_T>();
    chn->evt = &evt;
    chn->unit = evt.unit;
    chn->id = {evt.unit_id, pkt.event, pkt.stream, pkt.channel};
    chn->word_bits = byte(pkt, EVT::Format) == Format_16_bit ? 16 : 32;
    chn->position = evt.unit->position;
    chn->times.t_first = chn->times.t_nxt = pkt.time;
    chn->trash = Smp_skip;
    chn->set.axis = Axis[pkt.channel % 6];
    Chn_ini(*chn);
    Chn_ehet(*chn); // the event header overrides the INI file
    Chn_name(*chn);
    return chn.release();
} catch (const std::bad_alloc&) {
    end_without_channel_memory();
}
