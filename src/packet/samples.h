// The samples of the current DT packet, and the decoders that fill them.
#pragma once

#include "packet/kind.h"
#include "packet/packet.h"

#include <cstdint>

struct CHN_T;

inline constexpr int Samples_max = 1581;

struct DATA_BUF {
    uint32_t count;              ///< samples decoded from the current packet
    int32_t sample[Samples_max]; ///< the samples in host order
};
static_assert(sizeof(DATA_BUF) == 6328);

extern DATA_BUF Data_buf; ///< Set: the decoders.  Read: convert, which hands it to the SAC writer.

/// Decodes 16-bit samples, 500 at most. Those past the packet's end are 0.
void Buf_16(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);

/// Decodes 32-bit samples, 250 at most. Those past the packet's end are 0.
void Buf_32(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);

/// Decodes Steim-1 frames and checks them against the packet's integration constants and the channel's
/// last sample. A mismatch marks the channel and is logged; the samples are kept.
void Buf_c0(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);

/// The same for Steim-2.
void Buf_c2(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);

/// The decoders that go word by word: for packets in which something is odd, which they tell; for any other
/// they give what Buf_c0 and Buf_c2 give.
void Buf_c0_by_word(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);
void Buf_c2_by_word(CHN_T* chn, const PACKET& pkt, DATA_BUF& out);

/// Decodes a DT packet of a known encoding into Data_buf.
void decode_samples(CHN_T* chn, const PACKET& pkt, ENCODING encoding);

/// Unpacks the sixteen 2-bit codes of a control word as it lies in memory (big-endian).
void C0_flag_cvt(const uint8_t* control, uint8_t* codes);

/// Sets sixteen codes to 0.
void C0_flag_clr(uint8_t* codes);

/// A signed field of `width` bits, `shift` bits up from the lowest. 0 for a width of 0 or above 32 or a
/// shift above 32; counts of 32 act as 0, so a width of 32 gives 0.
int32_t Steim2_get_bits(uint32_t word, uint32_t shift, uint32_t width);
