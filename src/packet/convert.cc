// The main loop: the program's table of contents. It names the stations of a packet's way and does none of
// their work.
#include "packet/convert.h"

#include "driver/fatal.h"
#include "driver/settings.h"
#include "model/channel.h"
#include "model/event.h"
#include "model/open_files.h"
#include "model/records.h"
#include "model/ring.h"
#include "model/unit.h"
#include "output/dump.h"
#include "output/log.h"
#include "output/qcc.h"
#include "output/sac.h"
#include "packet/input.h"
#include "packet/kind.h"
#include "packet/progress.h"
#include "packet/samples.h"

namespace {

/// Where in the model the current packet stands.
struct HERE {
    UNIT_T* unit = nullptr;
    EVT_T* evt = nullptr;
};

/// What the loop returns when a packet cannot be placed: its type's letters, the first one low.
uint16_t first_letters(const PACKET& pkt)
{
    const std::string_view letters = text(pkt, HDR::Type);
    return static_cast<uint16_t>(static_cast<uint8_t>(letters[0]) | static_cast<uint8_t>(letters[1]) << 8);
}

bool enter_unit(HERE& at, const PACKET& pkt, uint16_t kind)
{
    if (Log_on) log_head(FdLog, pkt, kind, 0);
    at.unit = Unit_find(pkt);
    if (!at.unit) return false;
    if (Log_on && kind != PKT_DT) log_head(at.unit->log_fp, pkt, kind, 0);
    return true;
}

/// What the flags of an EH or ET leave in the event's record. True when the packet is about the first bank.
bool note_flags(EVT_T* evt, const PACKET& pkt)
{
    evt->flag_bit4 = static_cast<uint8_t>(evt->flag_bit4 | (flags(pkt) & FLAG::Bit4));
    return (flags(pkt) & FLAG::Second_bank) == 0;
}

void log_event(const HERE& at, const PACKET& pkt)
{
    if (!Log_on) return;
    log_eh_et(at.unit->log_fp, pkt);
    at.unit->log_fp.write("\r\n");
}

void describe_event(HERE& at, const PACKET& pkt)
{
    at.evt = Evt_find(at.unit, pkt);
    if (!at.evt) shut_down(FATAL_MEMORY, "caseEH", nullptr);
    if (note_flags(at.evt, pkt)) at.evt->eh_seen = 1;
    Progress_event(pkt, at.evt);
    log_event(at, pkt);
}

bool finish_event(HERE& at, const PACKET& pkt)
{
    at.evt = Evt_find(at.unit, pkt);
    if (!at.evt) return false;
    const bool ends = note_flags(at.evt, pkt);
    if (ends) at.evt->et_seen = 1;
    Progress_event(pkt, at.evt);
    log_event(at, pkt);
    if (!ends) return true;
    // Statistics first: storing empties the sums that the final SAC headers show. The order is part of the
    // output.
    if (Qcc_on) Qcc_store(at.unit, at.evt, pkt);
    Evt_remove(at.evt);
    at.evt = nullptr;
    return true;
}

bool take_samples(HERE& at, const PACKET& pkt)
{
    at.evt = Evt_find(at.unit, pkt);
    if (!at.evt) return false;
    note_flags(at.evt, pkt);
    if (Log_on && Log_dt) log_head(at.unit->log_fp, pkt, PKT_DT, 0);
    CHN_T* chn = Chn_find(at.evt, pkt);
    if (!chn) return false;
    Progress_data(at.unit, chn);

    const ENCODING encoding = encoding_of(byte(pkt, EVT::Format));
    if (encoding == ENCODING::none) return true;
    decode_samples(chn, pkt, encoding);
    Sac_data_out(chn, Data_buf.sample, static_cast<uint16_t>(Data_buf.count));
    return true;
}

void note_health(const HERE& at, const PACKET& pkt)
{
    Progress_health(pkt, at.unit);
    if (Log_on) log_block(at.unit->log_fp, pkt, DUMP_TEXT);
}

void note_network(const HERE& at, const PACKET& pkt, uint16_t kind)
{
    Progress_network(pkt, at.unit);
    if (Log_on) {
        log_nh_nt(at.unit->log_fp, pkt);
        at.unit->log_fp.write("\r\n");
    }
    if (Qcc_on && kind == PKT_NH) Qcc_network(pkt);
}

void log_parameters(OUT_FILE& log, const PACKET& pkt, uint16_t kind)
{
    switch (kind) {
    case PKT_SC: log_sc(log, pkt); break;
    case PKT_DS: log_ds(log, pkt); break;
    case PKT_CD: log_cd(log, pkt); break;
    case PKT_OM: log_om(log, pkt); break;
    case PKT_AD: log_ad(log, pkt); break;
    case PKT_DR:
        log_dr(log, pkt);
        log.write("\r\n");
        break;
    default: log_fd();
    }
}

void note_parameters(const HERE& at, const PACKET& pkt, uint16_t kind)
{
    Progress_parameters(pkt);
    if (Log_on) log_parameters(at.unit->log_fp, pkt, kind);
}

/// Statistics of an event that no trailer ended. A unit that is not the current one has its QC file closed.
void store_open_event(UNIT_T* unit, EVT_T* evt, const PACKET& pkt)
{
    if (!evt->chn) return;
    const bool closed = !unit->qcc_open;
    if (closed) Unit_qcc_reopen(unit);
    Qcc_store(unit, evt, pkt);
    if (closed) Unit_file_close(unit, UNIT_QCC);
}

/// The input has ended: what is still open is finished as if its trailers had come.
void close_what_is_open(const HERE& at)
{
    static constexpr uint8_t no_packet[Packet_size] = {'X', 'X'};
    const PACKET pkt{no_packet};
    if (Qcc_on)
        ring_each(at.unit, [&](UNIT_T& unit) {
            ring_each(unit.evt, [&](EVT_T& evt) { store_open_event(&unit, &evt, pkt); });
        });
    ring_each(at.unit, [&](UNIT_T& unit) {
        while (unit.evt) Evt_remove(unit.evt);
        if (Log_on) Unit_file_close(&unit, UNIT_LOG);
    });
}

} // namespace

uint16_t vx_cvt()
{
    Progress_start();
    Blk_cnt = 0;
    N_opn_fls = 0;
    PACKET pkt;
    HERE at;

    for (; Blk_read(pkt) == 0; ++Blk_cnt) {
        const uint16_t kind = code_set(pkt);
        if (kind == PKT_UNKNOWN) continue; // still counted
        if (!enter_unit(at, pkt, kind)) return first_letters(pkt);

        bool had = true;
        switch (kind) {
        case PKT_EH: describe_event(at, pkt); break;
        case PKT_ET: had = finish_event(at, pkt); break;
        case PKT_DT: had = take_samples(at, pkt); break;
        case PKT_SH: note_health(at, pkt); break;
        case PKT_NH:
        case PKT_NT: note_network(at, pkt, kind); break;
        default: note_parameters(at, pkt, kind);
        }
        if (!had) return first_letters(pkt);
    }
    close_what_is_open(at);
    return 0;
}
