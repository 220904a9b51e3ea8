// The packet log: run header, one summary line per packet, block dumps.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"
#include "packet/samples.h"

#include <cstdint>

/// Stores how the time of a data packet compares with the expected one: below 0 earlier, above 0 later, 0 as
/// expected.
void mark_continuity(int comparison);

/// Returns the mark of the latest comparison: "-" earlier, "+" later, else a blank. Resets it, so that one
/// summary line shows it. kept: mark-on-the-next-line. That is the next line made, of any recorder.
char take_mark();

/// Writes the header of a log: program, start of the run, settings and paths.
void Log_fhdr(OUT_FILE& file);

/// Writes the summary line of a packet, with a mark from take_mark().
void log_head(OUT_FILE& file, const PACKET& pkt, char mark);

enum BlockDump : uint16_t {
    DUMP_WHOLE = 0,   ///< the whole packet in hexadecimal
    DUMP_TEXT = 4,    ///< as text, from byte 24 up to the byte count
    DUMP_COUNTED = 5, ///< carried: counted-dump. In hexadecimal up to the byte count
};

/// Dumps a packet and an empty line; for an unknown kind of dump only the empty line.
void log_block(OUT_FILE& file, const PACKET& pkt, BlockDump dump);

/// Writes first sample, last sample and count of a compressed packet, as stored and as decoded (`count`
/// samples), and dumps the packet.
void log_mismatch(OUT_FILE& file, const PACKET& pkt, const Decoded& decoded, uint32_t count);
