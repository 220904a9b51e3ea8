// Steim decoding by table: fast, for sound packets only.
#pragma once

#include "packet/packet.h"
#include "packet/samples.h"

#include <cstdint>

/// Decodes a packet that is sound (see Decoded), holds samples and has no invalid word; `last` is as for
/// Buf_c0. For any other packet returns false, with nothing of use in `out`; steim.cc then decodes it word by
/// word.
bool steim1_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out);
bool steim2_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out);
