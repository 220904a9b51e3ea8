#include "output/qcc.h"

#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "output/log.h"

#include <cmath>
#include <cstdio>
#include <string_view>

namespace {

constexpr char Column_head[] =
    "\r\n                        Min          Max        Range         Mean       St Dev";

/// The two files to which the lines of an event are written.
struct BothFiles {
    OUT_FILE* run;
    OUT_FILE* unit; ///< null when the unit is not the current one

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

/// Writes the summary line of the trailer, or that there is none.
void store_head(const BothFiles& files, const EVT_T& evt, const PACKET* trailer)
{
    if (trailer) {
        const char mark = take_mark(); // reset even if no line shows it
        if (files.unit) log_head(*files.unit, *trailer, mark);
        return;
    }
    printf("\nNo ET block for U:%04hX E:%04u", evt.unit_id, evt.evt_num);
    if (files.unit) files.unit->print("No ET block for U:%04hX E:%04u\r\n", evt.unit_id, evt.evt_num);
}

/// kept: seven-zeros. An event without statistics shows one zero less than a channel without.
void store_no_event(const BothFiles& files, const UNIT_T& unit)
{
    if (files.unit) files.unit->print("\r\n   Channel ---");
    files.run->print("\r\n   %04hX    ---", unit.unit_id);
    files.write(" 0000000.0000 0000000.0000 0000000.0000");
    files.write(" 0000000.0000 0000000.0000");
    files.write_unit("\r\n\r\n");
}

void store_numbers(OUT_FILE& file, const CHN_T& chn)
{
    const double n = chn.cnt;
    const double mean = chn.stats.sum / n;
    double v = chn.stats.sq_sum - chn.stats.sum * chn.stats.sum / n;
    if (v < 0.0) v = 0.0; // rounding can give this when all samples are equal
    file.print(" %12.4f %12.4f %12.4f", chn.stats.min, chn.stats.max, chn.stats.max - chn.stats.min);
    file.print(" %12.4f %12.4f", mean, std::sqrt(v / (n - 1)));
}

void store_channel(const BothFiles& files, const UNIT_T& unit, CHN_T& chn)
{
    // kept: qc-channels-from-zero. Everything else counts channels from 1.
    if (files.unit) files.unit->print("\r\n   Channel %2u:", chn.id.channel);
    files.run->print("\r\n   %04hX    %2u:", unit.unit_id, chn.id.channel);
    if (chn.cnt > 1) {
        if (files.unit) store_numbers(*files.unit, chn);
        store_numbers(*files.run, chn);
        Qcc_init(chn);
    } else {
        files.write(" 00000000.0000 00000000.0000 00000000.0000");
        files.write(" 00000000.0000 00000000.0000");
    }
}

/// kept: one-step-back. The block begins with the current channel, or with the next one if that is lower; the
/// others follow in the order of the ring.
void turn_ring(EVT_T& evt)
{
    if (evt.chn->id.channel >= evt.chn->nxt->id.channel) evt.chn = evt.chn->nxt;
}

} // namespace

void Qcc_init(CHN_T& chn)
{
    chn.stats = {};
}

void Qcc_fhdr(OUT_FILE& file)
{
    Log_fhdr(file);
    file.write("\r\n\r\n");
}

void Qcc_store(UNIT_T& unit, EVT_T& evt, const PACKET* trailer)
{
    const BothFiles files{&FdQcc, unit.qcc_open ? &unit.qcc_fp : nullptr};
    store_head(files, evt, trailer);
    files.write(Column_head);
    if (!evt.chn || evt.bad) {
        store_no_event(files, unit);
        return;
    }
    turn_ring(evt);
    ring_each(evt.chn, [&](CHN_T& chn) { store_channel(files, unit, chn); });
    files.write_unit("\r\n\r\n");
}

void Qcc_network(const PACKET& pkt)
{
    FdQcc.write("\r\n\r\n");
    log_head(FdQcc, pkt, take_mark());
    FdQcc.write(Column_head);
}
