// The decoders: they make samples from the bytes of a DT packet. They know neither units nor logs; they
// return a verdict, and the caller logs it.
#pragma once

#include "packet/kind.h"
#include "packet/packet.h"

#include <cstdint>

inline constexpr int Samples_max = 1581;

/// The samples of one packet.
struct DATA_BUF {
    uint32_t count;              ///< samples decoded from the current packet
    int32_t sample[Samples_max]; ///< the samples in host order
};
static_assert(sizeof(DATA_BUF) == 6328);

/// The verdict on a packet's samples. A Steim packet stores its first and its last sample. It is sound when
/// the last decoded sample is the stored one, the number of samples is that of the header, and the last
/// sample of the packet before plus the first difference is the stored first sample. Uncompressed packets are
/// always sound. The samples of an unsound packet are used all the same. read_... and calc_... are set in the
/// verdict on an unsound packet.
struct Decoded {
    bool sound = true;
    uint32_t read_first = 0, read_last = 0; ///< as stored
    uint32_t calc_first = 0, calc_last = 0; ///< as decoded; "Calc start" and "stop" of the log
};

/// Decodes 16-bit samples, 500 at most. Those past the packet's end are 0.
void Buf_16(const PACKET& pkt, DATA_BUF& out);

/// Decodes 32-bit samples, 250 at most. Those past the packet's end are 0.
void Buf_32(const PACKET& pkt, DATA_BUF& out);

/// Decodes and checks a Steim-1 packet. `last` is the stored last sample of the channel's packet before (0:
/// none, no check); it becomes that of this packet.
Decoded Buf_c0(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// The same for Steim-2.
Decoded Buf_c2(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// The same, word by word. Buf_c0 and Buf_c2 call these for packets that the table decoders refuse
/// (packet/steim_table); of any other packet they make the same samples.
Decoded Buf_c0_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out);
Decoded Buf_c2_by_word(const PACKET& pkt, uint32_t& last, DATA_BUF& out);

/// Decodes a DT packet by its encoding; ENCODING::none gives no samples. `last` is as for Buf_c0;
/// uncompressed packets do not change it.
Decoded decode_samples(const PACKET& pkt, Encoding encoding, uint32_t& last, DATA_BUF& out);

/// Unpacks the sixteen 2-bit codes of a control word from its four bytes (big-endian).
void C0_flag_cvt(const uint8_t* control, uint8_t* codes);

/// carried: clear-codes. Sets sixteen codes to 0.
void C0_flag_clr(uint8_t* codes);

/// The signed field of `width` bits whose lowest bit is `shift` bits above the lowest of the word. 0 for a
/// width of 0, or of 32 and more, and for a shift above 32; a shift of 32 acts as 0.
int32_t Steim2_get_bits(uint32_t word, uint32_t shift, uint32_t width);
