// Steim decoding by table: the fast way for packets in which nothing is odd.
#pragma once

#include "packet/packet.h"
#include "packet/samples.h"

#include <cstdint>

/// Decodes a packet whose words are all valid, whose first sample follows on `last` (0: unchecked), whose
/// last sample is the stored one and whose count is the header's. Any other packet is left to the plain
/// decoder, which alone complains: false then, and `out` holds nothing of use.
bool steim1_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out);
bool steim2_by_table(const PACKET& pkt, uint32_t last, DATA_BUF& out);
