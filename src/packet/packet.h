// A packet as a value, and the readers of its fields. This room is the gate to a packet's bytes: no other
// code adds an offset to their address.
#pragma once

#include "packet/codec.h"
#include "packet/kind.h"
#include "packet/layout.h"
#include "packet/timestr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// A packet with its header decoded. Not every type has all fields: `event` and `stream` are valid where
/// belongs_to_event() is true, `channel` and `samples` in DT packets.
struct PACKET {
    explicit PACKET(const uint8_t* packet_bytes);

    const uint8_t* bytes; ///< Packet_size bytes in the buffer of Blk_read, valid until its next call
    PKT kind;
    uint16_t unit_id; ///< as in the packet; 0 is possible
    uint16_t seq;     ///< packet sequence number
    uint16_t event;   ///< event number
    uint16_t stream;  ///< counted from 0
    uint16_t channel; ///< counted from 0
    uint16_t samples; ///< count of samples, as the header gives it
    TIMESTR time;     ///< of the packet, to the millisecond
};

/// The bytes of a field that lies inside the packet.
inline const uint8_t* bytes(const PACKET& pkt, Span field)
{
    return pkt.bytes + field.at;
}

/// The bytes of a field as text: exact width, blanks kept, cut at the packet's end.
inline std::string_view text(const PACKET& pkt, Span field)
{
    const int at = std::min(field.at, Packet_size);
    const int len = std::min(field.len, Packet_size - at);
    return {reinterpret_cast<const char*>(pkt.bytes) + at, static_cast<size_t>(len)};
}

/// The first byte of a field; a blank if that is past the packet's end.
inline uint8_t byte(const PACKET& pkt, Span field)
{
    // never taken: no field that src reads lies behind the end
    return field.at < Packet_size ? pkt.bytes[field.at] : ' ';
}

/// The value of a BCD field that lies inside the packet, modulo 65536.
inline uint16_t bcd(const PACKET& pkt, Span field)
{
    return bcd2i(bytes(pkt, field), static_cast<int16_t>(field.len));
}

/// Writes the digits of a BCD field that lies inside the packet, two per byte, without a NUL. Returns the
/// place after them.
inline char* digits(const PACKET& pkt, Span field, char* to)
{
    unbcd(to, bytes(pkt, field), static_cast<uint16_t>(field.len));
    return to + 2 * field.len;
}

/// The value of a binary field of 1, 2 or 4 bytes that lies inside the packet.
inline uint32_t number(const PACKET& pkt, Span field)
{
    return field.len == 1 ? byte(pkt, field) : reverse(bytes(pkt, field), static_cast<uint16_t>(field.len));
}

/// True when a text field is given: it does not begin with a blank.
inline bool given(std::string_view field)
{
    return !field.empty() && field.front() != ' '; // never taken: no field that src reads lies behind the end
}

/// The flags byte; FLAG has its bits.
inline unsigned flags(const PACKET& pkt)
{
    return byte(pkt, EVT::Flags);
}

/// True for the packets that describe an event as a whole: its header and its trailer.
inline bool describes_event(const PACKET& pkt)
{
    return pkt.kind == PKT_EH || pkt.kind == PKT_ET;
}

/// True for the packets that carry the fields of EVT.
inline bool belongs_to_event(const PACKET& pkt)
{
    return describes_event(pkt) || pkt.kind == PKT_DT || pkt.kind == PKT_NH || pkt.kind == PKT_NT;
}

/// True when an EH or ET comes from a telemetry unit.
inline bool from_telemetry(const PACKET& pkt)
{
    return text(pkt, EH::Telemetry) != "      ";
}
