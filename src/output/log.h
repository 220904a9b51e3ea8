// The packet log: run header, one summary line per packet, block dumps.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"
#include "packet/samples.h"

#include <cstdint>

/// Notes how the time of a data packet compares with the expected one: below 0 earlier, above 0 later, 0 as
/// expected.
void mark_continuity(int comparison);

/// kept: mark-on-the-next-line. The mark of the latest comparison: "-" earlier, "+" later, else blank. Taking
/// it clears it, so that it appears on one summary line: the next one made, of whichever recorder.
char take_mark();

/// Writes the run header: what was asked for, and how it was understood.
void Log_fhdr(OUT_FILE& file);

/// Writes the summary line of a packet, with a mark from take_mark().
void log_head(OUT_FILE& file, const PACKET& pkt, char mark);

enum BLOCK_DUMP : uint16_t {
    DUMP_WHOLE = 0,   ///< all in hexadecimal
    DUMP_TEXT = 4,    ///< as text, from the 24th byte to the byte count
    DUMP_COUNTED = 5, ///< carried: counted-dump. In hexadecimal up to the byte count
};

/// Dumps a packet. An unknown kind of dump writes only the closing line end.
void log_block(OUT_FILE& file, const PACKET& pkt, BLOCK_DUMP dump);

/// Writes what a compressed packet says of its samples beside what came out (`count` of them), and dumps it.
void log_mismatch(OUT_FILE& file, const PACKET& pkt, const Decoded& decoded, uint32_t count);
