// The packet log: run header, one summary line per packet, block dumps.
#pragma once

#include "driver/outfile.h"
#include "packet/packet.h"

#include <cstdint>

/// Result of the latest comparison of a packet's time with the expected one; below, at or above 0. The next
/// summary line shows and clears it.  Set: channel.  Read: log_head.
extern int sign;

/// Writes the run header: what was asked for, and how it was understood.
void Log_fhdr(OUT_FILE& file);

/// Writes the summary line of a packet. `file_num` 0: only the block number is shown.
void log_head(OUT_FILE& file, const PACKET& pkt, uint16_t type, uint16_t file_num);

enum BLOCK_DUMP : uint16_t { DUMP_WHOLE = 0, DUMP_TEXT = 4, DUMP_COUNTED = 5 };

/// Dumps a packet: as text from its 24th byte (kind 4), all in hexadecimal (0), or up to its byte count (5).
/// Other kinds write only the closing line end.
void log_block(OUT_FILE& file, const PACKET& pkt, uint16_t kind);

/// FD packets have no dump.
void log_fd();
