// A packet of 1024 bytes, and functions that write to its fields.
#pragma once

#include "mkrec/clock.h"
#include "packet/layout.h"

#include <cstdint>
#include <string_view>

namespace mkrec {

struct TextPage {
    uint8_t bytes[Packet_size];
};

/// The header of every packet.
struct PacketHeader {
    std::string_view type; ///< two letters
    uint16_t unit;
    RecorderClock time;
    int sequence;
    int byte_cnt = Packet_size;
};

inline constexpr unsigned Experiment = 7;

/// Begins a packet: writes the header, and `fill` after it.
void start_page(TextPage& page, const PacketHeader& header, char fill);
void put_byte_cnt(TextPage& page, int byte_cnt);

/// Writes a text at the left of the field, cut to its length; the bytes after it stay as they are.
void put_text(TextPage& page, Span field, std::string_view text);
/// Writes the last digits of a number, two per byte, as many as fit.
void put_bcd(TextPage& page, Span field, unsigned value);
/// Writes a number, big-endian.
void put_binary(TextPage& page, Span field, uint32_t value);

} // namespace mkrec
