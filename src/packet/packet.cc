#include "packet/packet.h"

/// True for the years 85 to 99 of a header, which are 1985 to 1999; 00 to 84 are 2000 to 2084. A year with a
/// nibble above 9 is in the later century, too.
static bool before_2000(const char* year)
{
    const int tens = year[0] - '0';
    const int ones = year[1] - '0';
    return tens <= 9 && ones <= 9 && tens * 10 + ones >= 85;
}

/// The header's time with its century.
static TIMESTR header_time(const PACKET& pkt)
{
    TIMESTR t;
    char* const year = t.s + AT::Year + 2;
    digits(pkt, HDR::Year, year);
    digits(pkt, HDR::Time, t.s + AT::Day);
    memcpy(t.s, before_2000(year) ? "19" : "20", 2);
    return t;
}

PACKET::PACKET(const uint8_t* packet_bytes) : bytes(packet_bytes), kind(code_set(packet_bytes))
{
    unit_id = static_cast<uint16_t>(number(*this, HDR::Unit_id));
    seq = bcd(*this, HDR::Seq);
    event = bcd(*this, EVT::Number);
    stream = bcd(*this, EVT::Stream);
    channel = bcd(*this, EVT::Channel);
    samples = bcd(*this, EVT::Samples);
    time = header_time(*this);
}
