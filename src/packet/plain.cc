// Decoders of uncompressed samples.
#include "packet/samples.h"

#include "driver/simd.h"

#include <algorithm>

DATA_BUF Data_buf;

namespace {

/// Where the samples start. kept: offset-46. The test looks not at the flags byte but 22 bytes behind the
/// header, which is a byte of the samples when there is no extension.
int samples_start(const PACKET& pkt)
{
    constexpr Span tested{DT::Data + EVT::Flags.at, 1};
    return (byte(pkt, tested) & FLAG::Extension) ? DT::Data + DT::Extension_len : DT::Data;
}

VX_WIDE void take_16(const uint8_t* from, size_t n, int32_t* to)
{
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<int16_t>(be16(from + 2 * i));
}

VX_WIDE void take_32(const uint8_t* from, size_t n, int32_t* to)
{
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<int32_t>(be32(from + 4 * i));
}

/// Decodes `Width`-byte samples, `cap` at most; those that would lie past the packet's end are 0.
template <int Width>
void decode_plain(const PACKET& pkt, DATA_BUF& out, int cap)
{
    const int start = samples_start(pkt);
    const int count = std::min<int>(bcd(pkt, EVT::Samples), cap);
    const int present = std::min(count, (Packet_size - start) / Width);
    (Width == 2 ? take_16 : take_32)(pkt.bytes + start, static_cast<size_t>(present), out.sample);
    std::fill(out.sample + present, out.sample + count, 0);
    out.count = static_cast<uint32_t>(count);
}

} // namespace

void Buf_16(CHN_T*, const PACKET& pkt, DATA_BUF& out)
{
    decode_plain<2>(pkt, out, 500);
}

void Buf_32(CHN_T*, const PACKET& pkt, DATA_BUF& out)
{
    decode_plain<4>(pkt, out, 250);
}

void decode_samples(CHN_T* chn, const PACKET& pkt, ENCODING encoding)
{
    switch (encoding) {
    case ENCODING::int16: return Buf_16(chn, pkt, Data_buf);
    case ENCODING::int32: return Buf_32(chn, pkt, Data_buf);
    case ENCODING::steim1: return Buf_c0(chn, pkt, Data_buf);
    case ENCODING::steim2: return Buf_c2(chn, pkt, Data_buf);
    case ENCODING::none: Data_buf.count = 0;
    }
}
