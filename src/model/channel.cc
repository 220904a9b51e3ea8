#include "model/channel.h"

#include "driver/fatal.h"
#include "driver/settings.h"
#include "model/catalogue.h"
#include "model/open_files.h"
#include "model/records.h"
#include "model/ring.h"
#include "output/log.h"
#include "output/qcc.h"
#include "output/sac.h"
#include "packet/kind.h"

#include <cerrno>
#include <memory>
#include <new>
#include <strings.h>

namespace {

void note_channel_range(EVT_T* evt, uint16_t channel)
{
    if (channel > evt->hi) evt->hi = channel;
    if (evt->lo == 99 || channel < evt->lo) evt->lo = channel;
}

/// An event begins with the earliest first packet of its channels.
void note_first_time(EVT_T* evt, const TIMESTR& time)
{
    const bool full = evt->t_first.length() == 16;
    if (!full || strncasecmp(time.s, evt->t_first.s, 16) <= 0) evt->t_first = time;
}

CHN_T* add_channel(EVT_T* evt, const PACKET& pkt, uint16_t channel, const TIMESTR& time)
{
    CHN_T* chn = Chn_create(evt, channel, bcd(pkt, EVT::Number), bcd(pkt, EVT::Stream), time);
    ring_join(evt->chn, chn);
    ++evt->chn_cnt;
    chn->word_bits = byte(pkt, EVT::Format) == Format_16_bit ? 16 : 32;
    chn->t_first = chn->t_nxt = time;
    note_first_time(evt, time);
    return chn;
}

/// Breaks are marked, not mended: samples are appended as they arrive.
void check_continuity(CHN_T* chn, const TIMESTR& time)
{
    sign = strcmp(time.s, chn->t_nxt.s);
    if (sign) chn->time_tear = 1;
}

/// kept: rate-before-estimate. The expected time uses the rate as it is before this packet's estimate.
void move_times_on(CHN_T* chn, const PACKET& pkt, const TIMESTR& time)
{
    chn->evt->t_last = time;
    chn->t_prv = time;
    chn->t_nxt = time;
    add_str_tim(chn->t_nxt.s, chn->evt->smp_rate, pkt.bytes + EVT::Samples.at);
    chn->seq = bcd(pkt, HDR::Seq);
}

/// Makes the trace. Another run may take the name at the last moment: then the next free one is. A name that
/// is taken and yet looks free cannot be had.
void create_trace(CHN_T* chn)
{
    while (!Chn_file_open(chn, TRACE_MODE::create)) {
        const bool taken = errno == EEXIST;
        const std::string refused = chn->name;
        if (taken) Chn_name(chn, chn->t_first);
        if (chn->name == refused) end_without_trace(refused.c_str());
    }
    Sac_dhdr_out(chn);
}

void open_trace(CHN_T* chn, CHN_T* current)
{
    if (chn->file_open || Smp_limit == 0) return;
    make_room(current, chn);
    if (chn->file_made)
        Chn_file_open(chn, TRACE_MODE::append);
    else
        create_trace(chn);
}

/// Without an event header the rate comes from the samples written and the time they took. Every step is
/// rounded to single precision.
void estimate_rate(EVT_T* evt, const CHN_T* chn)
{
    if (evt->eh_seen) return;
    const float ms = Time_update(chn->t_first.s, chn->t_prv.s) * 1000.0F;
    evt->smp_rate = chn->cnt == 0 ? 0.0F : 1000.0F / (ms / static_cast<float>(chn->cnt));
    if (evt->smp_rate != 0.0F) evt->eh_seen = 1;
}

} // namespace

CHN_T* Chn_find(EVT_T* evt, const PACKET& pkt)
{
    const uint16_t channel = bcd(pkt, EVT::Channel);
    const TIMESTR time = header_time(pkt);
    CHN_T* const current = evt->chn;

    note_channel_range(evt, channel);
    CHN_T* chn = ring_find(current, [=](const CHN_T& c) { return c.channel == channel; });
    if (!chn) chn = add_channel(evt, pkt, channel, time);
    check_continuity(chn, time);
    move_times_on(chn, pkt, time);
    open_trace(chn, current);
    evt->chn = chn;
    estimate_rate(evt, chn);
    return chn;
}

CHN_T* Chn_create(EVT_T* evt, uint16_t channel, uint16_t event, uint16_t stream, const TIMESTR& time)
try {
    auto chn = std::make_unique<CHN_T>();
    chn->evt = evt;
    chn->unit = evt->unit;
    chn->unit_id = evt->unit_id;
    chn->lat = chn->unit->lat;
    chn->lon = chn->unit->lon;
    chn->alt = chn->unit->alt;
    chn->trash = Smp_skip;
    chn->event = event;
    chn->stream = stream;
    chn->channel = channel;
    chn->axis = Axis[channel % 6];
    Qcc_init(chn.get());
    Chn_ini(chn.get());
    Chn_ehet(chn.get()); // the event header overrides the INI file
    Chn_name(chn.get(), time);
    return chn.release();
} catch (const std::bad_alloc&) {
    end_without_channel_memory();
}
