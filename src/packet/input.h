// The input, one packet at a time.
#pragma once

#include "packet/packet.h"

#include <cstdint>
#include <optional>

extern uint32_t Blk_cnt; ///< packets handled before the current one.  Set: convert.  Read: log, progress.

/// The next packet of FdIn; nothing at the end of the input (a short last packet is dropped). A read failure
/// is fatal error 21, after all packets before it have been handed out.
std::optional<PACKET> Blk_read();

/// Forgets what has been read ahead; for a new input.
void Blk_rewind();
