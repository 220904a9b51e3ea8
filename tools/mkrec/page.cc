#include "mkrec/page.h"

#include <algorithm>
#include <cstring>

namespace mkrec {

static void put_time(TextPage& page, const RecorderClock& clock)
{
    // Day, hour, minute, second and millisecond are 12 digits, too many for a number of 32 bits.
    put_bcd(page, HDR::Year, static_cast<unsigned>(clock.year % 100));
    const int at = HDR::Time.at;
    put_bcd(page, {at, 3}, static_cast<unsigned>((clock.day * 100 + clock.hour) * 10 + clock.minute / 10));
    const int rest = (clock.minute % 10 * 100 + clock.second) * 1000 + clock.ms;
    put_bcd(page, {at + 3, 3}, static_cast<unsigned>(rest));
}

void start_page(TextPage& page, const PacketHeader& header, char fill)
{
    memset(page.bytes, fill, Packet_size);
    put_text(page, HDR::Type, header.type);
    put_bcd(page, HDR::Experiment, Experiment);
    put_binary(page, HDR::Unit_id, header.unit);
    put_time(page, header.time);
    put_byte_cnt(page, header.byte_cnt);
    put_bcd(page, HDR::Seq, static_cast<unsigned>(header.sequence));
}

void put_byte_cnt(TextPage& page, int byte_cnt)
{
    put_bcd(page, HDR::Byte_cnt, static_cast<unsigned>(byte_cnt));
}

void put_text(TextPage& page, Span field, std::string_view text)
{
    const size_t room = static_cast<size_t>(std::clamp(Packet_size - field.at, 0, field.len));
    memcpy(page.bytes + field.at, text.data(), std::min(text.size(), room));
}

void put_bcd(TextPage& page, Span field, unsigned value)
{
    for (int i = field.at + field.len - 1; i >= field.at; --i, value /= 100)
        page.bytes[i] = static_cast<uint8_t>(value / 10 % 10 << 4 | value % 10);
}

void put_binary(TextPage& page, Span field, uint32_t value)
{
    for (int i = field.at + field.len - 1; i >= field.at; --i, value >>= 8)
        page.bytes[i] = static_cast<uint8_t>(value);
}

} // namespace mkrec
