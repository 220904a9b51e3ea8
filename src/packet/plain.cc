// Decodes uncompressed samples. decode_samples picks the decoder of a packet.
#include "packet/samples.h"

#include "driver/base/simd.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

/// Where the samples start: byte 64 when byte 46 has the extension bit, else byte 24. kept: offset-46. Byte
/// 46 is not the flags byte; without an extension it belongs to the samples.
int samples_start(const PACKET& pkt)
{
    return (byte(pkt, DT::Extension_flags) & FLAG::Extension) ? DT::Data + DT::Extension_len : DT::Data;
}

VX_WIDE void take_16(const uint8_t* from, size_t n, int32_t* to)
{
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<int16_t>(be16(from + 2 * i));
}

VX_WIDE void take_32(const uint8_t* from, size_t n, int32_t* to)
{
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<int32_t>(be32(from + 4 * i));
}

/// Decodes samples of `Width` bytes, `cap` at most. Samples past the packet's end are 0.
template <int Width>
void decode_plain(const PACKET& pkt, DATA_BUF& out, int cap)
{
    const int start = samples_start(pkt);
    const int count = std::min<int>(pkt.samples, cap);
    const int present = std::min(count, (Packet_size - start) / Width);
    (Width == 2 ? take_16 : take_32)(bytes(pkt, {start, present * Width}), static_cast<size_t>(present),
                                     out.sample);
    std::fill(out.sample + present, out.sample + count, 0);
    out.count = static_cast<uint32_t>(count);
}

} // namespace

void Buf_16(const PACKET& pkt, DATA_BUF& out)
{
    decode_plain<2>(pkt, out, 500);
}

void Buf_32(const PACKET& pkt, DATA_BUF& out)
{
    decode_plain<4>(pkt, out, 250);
}

Decoded decode_samples(const PACKET& pkt, Encoding encoding, uint32_t& last, DATA_BUF& out)
{
    switch (encoding) { // never taken: the enumeration has no other value
    case Encoding::int16: Buf_16(pkt, out); break;
    case Encoding::int32: Buf_32(pkt, out); break;
    case Encoding::steim1: return Buf_c0(pkt, last, out);
    case Encoding::steim2: return Buf_c2(pkt, last, out);
    case Encoding::none: out.count = 0;
    }
    return {};
}
