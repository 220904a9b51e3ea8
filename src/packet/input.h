// The input, one packet at a time.
#pragma once

#include "packet/packet.h"

#include <cstdint>
#include <optional>

extern uint32_t Blk_cnt; ///< packets handled before the current one.  Set: convert.  Read: log, progress.

/// The next packet of FdIn, or nothing at the end of the input. Bytes after the last whole packet are
/// dropped. After a read error the packets before it are returned; then the run ends (21).
std::optional<PACKET> Blk_read();

/// Drops what has been read ahead, for a new input. For tests.
void Blk_rewind();
