#include "output/qcc.h"

#include "driver/settings.h"
#include "model/records.h"
#include "model/ring.h"
#include "output/log.h"
#include "packet/kind.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr char Column_head[] =
    "\r\n                        Min          Max        Range         Mean       St Dev";

/// The two files of an event's block. The unit's is silent when it is not the current one.
struct BOTH {
    OUT_FILE* run;
    OUT_FILE* unit; ///< null: dropped

    void write(std::string_view piece) const
    {
        write_unit(piece);
        run->write(piece);
    }
    void write_unit(std::string_view piece) const
    {
        if (unit) unit->write(piece);
    }
};

/// What ended the event.
void store_head(const BOTH& files, const EVT_T* evt, const PACKET& pkt)
{
    if (code_set(pkt) == PKT_ET) {
        static OUT_FILE nowhere; // the line is made, and its mark used up, even where nobody sees it
        nowhere.broken = true;
        log_head(files.unit ? *files.unit : nowhere, pkt, PKT_ET, 0);
        return;
    }
    printf("\nNo ET block for U:%04hX E:%04u", evt->unit_id, evt->evt_num);
    if (files.unit) files.unit->print("No ET block for U:%04hX E:%04u\r\n", evt->unit_id, evt->evt_num);
}

/// kept: seven-zeros. An event without statistics shows one zero less than a channel without.
void store_no_event(const BOTH& files, const UNIT_T* unit)
{
    if (files.unit) files.unit->print("\r\n   Channel ---");
    files.run->print("\r\n   %04hX    ---", unit->unit_id);
    files.write(" 0000000.0000 0000000.0000 0000000.0000");
    files.write(" 0000000.0000 0000000.0000");
    files.write_unit("\r\n\r\n");
}

void store_numbers(OUT_FILE& file, const CHN_T* chn)
{
    const double n = chn->cnt;
    const double mean = chn->sum / n;
    double v = chn->sq_sum - chn->sum * chn->sum / n;
    if (v < 0.0) v = 0.0; // rounding, where all samples are alike
    file.print(" %12.4f %12.4f %12.4f", chn->min, chn->max, chn->max - chn->min);
    file.print(" %12.4f %12.4f", mean, std::sqrt(v / (n - 1)));
}

void store_channel(const BOTH& files, const UNIT_T* unit, CHN_T* chn)
{
    if (files.unit) files.unit->print("\r\n   Channel %2u:", chn->channel);
    files.run->print("\r\n   %04hX    %2u:", unit->unit_id, chn->channel);
    if (chn->cnt > 1) {
        if (files.unit) store_numbers(*files.unit, chn);
        store_numbers(*files.run, chn);
        Qcc_init(chn);
    } else {
        files.write(" 00000000.0000 00000000.0000 00000000.0000");
        files.write(" 00000000.0000 00000000.0000");
    }
}

/// kept: one-step-back. Of two neighbours the lower channel comes first; the rest follows as the ring has it.
void turn_ring(EVT_T* evt)
{
    if (evt->chn->channel >= evt->chn->nxt->channel) evt->chn = evt->chn->nxt;
}

} // namespace

void Qcc_init(CHN_T* chn)
{
    chn->sum = 0.0;
    chn->sq_sum = 0.0;
    chn->min = Qcc_start;
    chn->max = -Qcc_start; // kept: not-quite-the-lowest. One more than the lowest sample there is.
    chn->min_ndx = 0;
    chn->max_ndx = 0;
}

void Qcc_fhdr(OUT_FILE& file)
{
    Log_fhdr(file);
    file.write("\r\n\r\n");
}

void Qcc_store(UNIT_T* unit, EVT_T* evt, const PACKET& pkt)
{
    const BOTH files{&FdQcc, unit->qcc_open ? &unit->qcc_fp : nullptr};
    store_head(files, evt, pkt);
    files.write(Column_head);
    if (!evt->chn || evt->bad) {
        store_no_event(files, unit);
        return;
    }
    turn_ring(evt);
    ring_each(evt->chn, [&](CHN_T& chn) { store_channel(files, unit, &chn); });
    files.write_unit("\r\n\r\n");
}

void Qcc_network(const PACKET& pkt)
{
    FdQcc.write("\r\n\r\n");
    log_head(FdQcc, pkt, PKT_NH, 0);
    FdQcc.write(Column_head);
}
