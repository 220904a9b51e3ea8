// The decoders: from the bytes of a DT packet to its samples. They know neither units nor logs, and answer
// with a verdict.
#pragma once

#include "packet/kind.h"
#include "packet/packet.h"

#include <cstdint>

inline constexpr int Samples_max = 1581;

struct DATA_BUF {
    uint32_t count;              ///< samples decoded from the current packet
    int32_t sample[Samples_max]; ///< the samples in host order
};
static_assert(sizeof(DATA_BUF) == 6328);

/// The verdict on a packet's samples. A Steim packet says which its first and last sample are. It is sound
/// when the decoded ones agree, their number is the header's, and the first difference leads on from the
/// packet before. The samples of a packet that is not sound are kept all the same.
struct Decoded {
    bool sound = true;
    uint32_t read_first = 0, read_last = 0; ///< as the packet says; uncompressed packets say nothing
    uint32_t calc_first = 0, calc_last = 0; ///< as they came out
};

/// Decodes 16-bit samples, 500 at most. Those past the packet's end are 0.
void Buf_16(const PACKET& pkt, DATA_BUF& out);

/// Decodes 32-bit samples, 250 at most. Those past the packet's end are 0.
void Buf_32(const PACKET& pkt, DATA_BUF& out);

/// Decodes Steim-1 frames and checks them. `last` is the channel's latest sample (0: none, unchecked), and
/// becomes the one that this packet says.
Decoded Buf_c0(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// The same for Steim-2.
Decoded Buf_c2(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// The decoders that go word by word: for packets in which something is odd, which they tell; for any other
/// they give what Buf_c0 and Buf_c2 give.
Decoded Buf_c0_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out);
Decoded Buf_c2_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// Decodes a DT packet by its encoding. `last` is as for Buf_c0; uncompressed packets leave it alone.
Decoded decode_samples(const PACKET& pkt, ENCODING encoding, uint32_t& last, DATA_BUF& out);

/// Unpacks the sixteen 2-bit codes of a control word as it lies in memory (big-endian).
void C0_flag_cvt(const uint8_t* control, uint8_t* codes);

/// carried: clear-codes. Sets sixteen codes to 0.
void C0_flag_clr(uint8_t* codes);

/// A signed field of `width` bits, `shift` bits up from the lowest. 0 for a width of 0 or above 32 or a
/// shift above 32; counts of 32 act as 0, so a width of 32 gives 0.
int32_t Steim2_get_bits(uint32_t word, uint32_t shift, uint32_t width);
