// One packet under the pen: 1024 bytes and the ways to put something into a field.
#pragma once

#include "mkrec/clock.h"
#include "packet/layout.h"

#include <cstdint>
#include <string_view>

namespace mkrec {

struct TextPage {
    uint8_t bytes[Packet_size];
};

/// What every packet begins with.
struct PacketHeader {
    std::string_view type; ///< two letters
    uint16_t unit;
    RecorderClock time;
    int sequence;
    int byte_cnt = Packet_size;
};

inline constexpr unsigned Experiment = 7;

/// Begins a packet: the header, and `fill` behind it.
void start_page(TextPage& page, const PacketHeader& header, char fill);
void put_byte_cnt(TextPage& page, int byte_cnt);

/// Text from the field's left end on, cut to the field; what is behind it stays.
void put_text(TextPage& page, Span field, std::string_view text);
/// The digits of a number, two per byte; digits that do not fit are left out.
void put_bcd(TextPage& page, Span field, unsigned value);
/// A number, big-endian.
void put_binary(TextPage& page, Span field, uint32_t value);

} // namespace mkrec
