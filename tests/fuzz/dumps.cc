// Everything that a packet leaves in the logs: summary lines, dumps of parameters, block dumps.
//
// Input: a byte that picks the dump, how full the log's buffer is (2 bytes), the packet.
#include "driver/base/settings.h"
#include "fuzz/fuzz.h"
#include "output/dump.h"
#include "output/log.h"
#include "packet/input.h"

#include <memory>

namespace {

using Dump = void (*)(OUT_FILE&, const PACKET&);

constexpr Dump Dumps[] = {
    log_eh_et,
    log_nh_nt,
    log_sc,
    log_ds,
    log_cd,
    log_om,
    log_ad,
    log_dr,
    [](OUT_FILE& log, const PACKET& pkt) { log_head(log, pkt, take_mark()); },
    log_dump,
    [](OUT_FILE& log, const PACKET& pkt) { log_block(log, pkt, DUMP_TEXT); },
    [](OUT_FILE& log, const PACKET& pkt) { log_block(log, pkt, DUMP_WHOLE); },
    [](OUT_FILE& log, const PACKET& pkt) { log_block(log, pkt, DUMP_COUNTED); },
};

/// A directory may name one entry 65535 times, which is the same thing over and over: at most 255 times here.
void few_entries(uint8_t* packet)
{
    packet[26] = 0;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static OUT_FILE log;
    static const std::unique_ptr<uint8_t[]> bytes = std::make_unique<uint8_t[]>(Packet_size);
    if (!log.open) {
        fuzz::silence();
        fuzz::open_nowhere(log);
    }
    if (size < 3) return -1;

    fuzz::Bytes in(data, size);
    const Dump dump = Dumps[in.byte() % std::size(Dumps)];
    const uint32_t high = in.byte(), low = in.byte();
    log.used = (high << 8 | low) % log.cap; // so that any line may meet the end of the buffer
    in.fill(bytes.get(), Packet_size);
    Blk_cnt = high << 24 | low;
    mark_continuity(static_cast<int>(low) - 128);
    if (dump == log_dr || dump == log_dump) few_entries(bytes.get());
    dump(log, PACKET(bytes.get()));
    fuzz::demand(!log.broken && log.used <= log.cap, "the log stays whole");
    return 0;
}
