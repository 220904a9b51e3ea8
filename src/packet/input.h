// The input, one packet at a time.
#pragma once

#include "packet/packet.h"

#include <cstdint>

extern uint32_t Blk_cnt; ///< packets handled before the current one.  Set: convert.  Read: log, progress.

extern uint16_t Blk_len;   ///< length of a block; nothing reads it
extern uint32_t Blk_start; ///< first block; nothing reads it

inline constexpr uint16_t Blk_end = 29; ///< what Blk_read returns at the end of the input

/// The next packet of FdIn. Returns 0, or Blk_end at the end of the input (a short last packet is
/// dropped). A read failure is fatal error 21, after all packets before it have been handed out.
uint16_t Blk_read(PACKET& pkt);

/// Forgets what has been read ahead; for a new input.
void Blk_rewind();
