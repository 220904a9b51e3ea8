// The main loop: vx_cvt, at the end of this file, calls one function for each kind of packet.
#include "packet/loop/convert.h"

#include "driver/base/console.h"
#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "model/channel.h"
#include "model/event.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "model/unit.h"
#include "output/dump.h"
#include "output/log.h"
#include "output/qcc.h"
#include "output/sac.h"
#include "packet/input.h"
#include "packet/loop/progress.h"
#include "packet/samples.h"

#include <cstdint>

namespace {

/// Finds the packet's unit. Writes the summary line to the log of the run and, except for a DT, of the unit.
UNIT_T& enter_unit(const PACKET& pkt)
{
    if (Log_on) log_head(FdLog, pkt, take_mark());
    UNIT_T& unit = Unit_find(pkt);
    if (Log_on && pkt.kind != PKT_DT) log_head(unit.log_fp, pkt, take_mark());
    return unit;
}

/// Finds the packet's event.
EVT_T& enter_event(UNIT_T& unit, const PACKET& pkt)
{
    EVT_T& evt = Evt_find(unit, pkt);
    evt.flag_bit4 |= (flags(pkt) & FLAG::Bit4) != 0;
    return evt;
}

/// Finds the event of an EH or ET, prints the packet's line on the console and logs its fields.
EVT_T& enter_described_event(UNIT_T& unit, const PACKET& pkt)
{
    EVT_T& evt = enter_event(unit, pkt);
    Progress_event(pkt, evt);
    if (Log_on) log_dump(unit.log_fp, pkt);
    return evt;
}

bool about_first_bank(const PACKET& pkt)
{
    return (flags(pkt) & FLAG::Second_bank) == 0;
}

void describe_event(UNIT_T& unit, const PACKET& pkt)
{
    EVT_T& evt = enter_described_event(unit, pkt);
    if (about_first_bank(pkt)) evt.eh_seen = true;
}

void finish_event(UNIT_T& unit, const PACKET& pkt)
{
    EVT_T& evt = enter_described_event(unit, pkt);
    if (!about_first_bank(pkt)) return;
    evt.et_seen = true;
    // kept: statistics-emptied-first. This resets the sums before the final SAC headers show them.
    if (Qcc_on) Qcc_store(unit, evt, &pkt);
    Evt_remove(evt);
}

void take_samples(UNIT_T& unit, const PACKET& pkt)
{
    static DATA_BUF Data_buf;
    EVT_T& evt = enter_event(unit, pkt);
    if (Log_on && Log_dt) log_head(unit.log_fp, pkt, take_mark());
    CHN_T& chn = Chn_find(evt, pkt);
    Progress_data(unit, chn);

    const Encoding encoding = encoding_of(byte(pkt, EVT::Format));
    if (encoding == Encoding::none) return;
    const Decoded decoded = decode_samples(pkt, encoding, chn.last, Data_buf);
    if (!decoded.sound) {
        chn.discontinuous = true;
        if (Log_on) log_mismatch(unit.log_fp, pkt, decoded, Data_buf.count);
    }
    Sac_data_out(chn, Data_buf.sample, static_cast<uint16_t>(Data_buf.count));
}

void note_health(UNIT_T& unit, const PACKET& pkt)
{
    Progress_health(pkt, unit);
    if (Log_on) log_dump(unit.log_fp, pkt);
}

void note_network(UNIT_T& unit, const PACKET& pkt)
{
    Progress_network(pkt, unit);
    if (Log_on) log_dump(unit.log_fp, pkt);
    if (Qcc_on && pkt.kind == PKT_NH) Qcc_network(pkt);
}

void note_parameters(UNIT_T& unit, const PACKET& pkt)
{
    Progress_parameters(pkt);
    if (Log_on) log_dump(unit.log_fp, pkt);
}

/// Writes the statistics of events without a trailer, also to the QC files of units that are not current.
void store_open_events(UNIT_T& unit)
{
    unit.qcc_open = true;
    ring_each(unit.evt, [&](EVT_T& evt) {
        if (evt.chn) Qcc_store(unit, evt, nullptr);
    });
}

void remove_open_events(UNIT_T& unit)
{
    while (unit.evt) Evt_remove(*unit.evt);
}

/// Finishes all open events at the end of the input, as if their trailers had come.
void finish_what_is_open(UNIT_T* units)
{
    if (Qcc_on) ring_each(units, store_open_events);
    ring_each(units, remove_open_events);
}

} // namespace

void vx_cvt()
{
    UNIT_T* current = nullptr;
    Progress_start();
    for (Blk_cnt = 0; const auto pkt = Blk_read(); ++Blk_cnt) {
        if (pkt->kind == PKT_UNKNOWN) { // still counted
            console_tick();
            continue;
        }
        UNIT_T& unit = enter_unit(*pkt);
        switch (pkt->kind) {
        case PKT_EH: describe_event(unit, *pkt); break;
        case PKT_ET: finish_event(unit, *pkt); break;
        case PKT_DT: take_samples(unit, *pkt); break;
        case PKT_SH: note_health(unit, *pkt); break;
        case PKT_NH:
        case PKT_NT: note_network(unit, *pkt); break;
        default: note_parameters(unit, *pkt);
        }
        current = &unit;
    }
    finish_what_is_open(current);
}
