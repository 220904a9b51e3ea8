// A packet and its readers: the one gate to a packet's bytes. Nobody else adds a number to an address.
// The readers stop at the packet's end; what lies past it is the caller's to decide.
#pragma once

#include "packet/codec.h"
#include "packet/layout.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

struct PACKET {
    const uint8_t* bytes; ///< Packet_size bytes; they belong to the reader and are good until its next block
};

/// The bytes of a field as text: exact width, blanks kept, cut at the packet's end.
inline std::string_view text(const PACKET& pkt, Span field)
{
    const int at = std::min(field.at, Packet_size);
    const int len = std::min(field.len, Packet_size - at);
    return {reinterpret_cast<const char*>(pkt.bytes) + at, static_cast<size_t>(len)};
}

/// The first byte of a field; a blank past the packet's end.
inline uint8_t byte(const PACKET& pkt, Span field)
{
    return field.at < Packet_size ? pkt.bytes[field.at] : ' ';
}

/// The value of a BCD field that lies inside the packet.
inline uint16_t bcd(const PACKET& pkt, Span field)
{
    return bcd2i(pkt.bytes + field.at, static_cast<int16_t>(field.len));
}

/// True when a text field is given, that is, does not begin with a blank.
inline bool given(std::string_view field)
{
    return !field.empty() && field.front() != ' ';
}

inline unsigned flags(const PACKET& pkt)
{
    return byte(pkt, EVT::Flags);
}

/// The unit that wrote the packet, as its bytes tell it (0 is not yet replaced).
inline uint16_t raw_unit_id(const PACKET& pkt)
{
    return static_cast<uint16_t>(pkt.bytes[HDR::Unit_id.at] << 8 | pkt.bytes[HDR::Unit_id.at + 1]);
}

/// True when an EH or ET comes from a telemetry unit.
inline bool from_telemetry(const PACKET& pkt)
{
    return text(pkt, EH::Telemetry) != "      ";
}
