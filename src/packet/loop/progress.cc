#include "packet/loop/progress.h"

#include "driver/base/compose.h"
#include "driver/base/console.h"
#include "driver/base/settings.h"
#include "model/record/records.h"
#include "packet/input.h"

#include <cinttypes>
#include <cstdio>

// Each line begins with a carriage return, so that it overwrites the one before.

namespace {

/// kept: every-other-mebibyte. Of each 2048 packets, the counter is printed for the first 1024.
void count_mebibytes()
{
    if (Blk_cnt & 1024) return;
    static char line[32];
    static int length = 0;
    static uint32_t shown = 0; // mebibytes in the line
    const uint32_t mebibytes = Blk_cnt >> 10;
    if (length == 0 || shown != mebibytes)
        length = snprintf(line, sizeof line, "\rMeg: %5" PRIu32, shown = mebibytes);
    fwrite(line, 1, static_cast<size_t>(length), stdout);
}

/// Prints the packet's line, or the counter, and flushes it at times if standard output is a terminal.
template <class Print>
void progress(Print line)
{
    if (Verbose)
        line(Blk_cnt + 1);
    else
        count_mebibytes();
    console_tick();
}

} // namespace

void Progress_start()
{
    if (Verbose) {
        printf("\r\n\n  Block     Type      Unit      Event     Stream    Channel   Trg   Rate");
        printf("\r\n\n      0       -          -          -          -          -     -      -");
    } else {
        printf("\r\n\nMeg:     0");
    }
    console_show();
}

void Progress_event(const PACKET& pkt, const EVT_T& evt)
{
    progress([&](uint32_t block) {
        printf("\r%07" PRIu32 "       %2.2s      %04hX       %04u          %02u         -    %3.3s  %.4f",
               block, text(pkt, HDR::Type).data(), evt.unit_id, evt.evt_num, evt.strm + 1U, evt.trg_type.s,
               static_cast<double>(evt.smp_rate));
    });
}

void Progress_data(const UNIT_T& unit, const CHN_T& chn)
{
    // "\r%07lu       DT      %04hX       %04u         %02u         %02u   ", by hand: most packets are data.
    progress([&](uint32_t block) {
        char line[128];
        char* to = put_decimal<7>(put(line, "\r"), block);
        to = put_hex(put(to, "       DT      "), unit.unit_id, 4);
        to = put_decimal<4>(put(to, "       "), chn.id.event);
        to = put_decimal<2>(put(to, "         "), chn.id.stream + 1U);
        to = put_decimal<2>(put(to, "         "), chn.id.channel + 1U);
        to = put(to, "   ");
        fwrite(line, 1, static_cast<size_t>(to - line), stdout);
    });
}

void Progress_health(const PACKET& pkt, const UNIT_T& unit)
{
    progress([&](uint32_t block) {
        printf("\r%07" PRIu32 "       %2.2s      %04hX          -          -          -   ", block,
               text(pkt, HDR::Type).data(), unit.unit_id);
    });
}

void Progress_parameters(const PACKET& pkt)
{
    progress([&](uint32_t block) {
        printf("\r%07" PRIu32 "       %2.2s         -          -          -          -   ", block,
               text(pkt, HDR::Type).data());
    });
}

void Progress_network(const PACKET& pkt, const UNIT_T& unit)
{
    progress([&](uint32_t block) {
        printf("\r%07" PRIu32 "       %2.2s      %04hX       %04u          -          -    ", block,
               text(pkt, HDR::Type).data(), unit.unit_id, pkt.event);
    });
}
