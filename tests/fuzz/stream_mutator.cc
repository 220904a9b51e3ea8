// How libFuzzer changes a recording: mostly packet by packet and field by field, so that packets keep their
// place, their type and numbers that meet, and the program is not stopped at the first letter.
#include "packet/layout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned seed);

namespace {

constexpr size_t Switches = 2; ///< bytes before the first packet
constexpr size_t Packet = Packet_size;

/// The fields that decide where a packet goes, and those that are read as numbers, times and names.
constexpr Span Fields[] = {
    HDR::Experiment, HDR::Year,        HDR::Time,      HDR::Byte_cnt, HDR::Seq,        EVT::Number,
    EVT::Stream,     EVT::Channel,     EVT::Samples,   EVT::Flags,    EVT::Format,     EH::Time_src,
    EH::Pll_days,    EH::Stn_name_5th, EH::Stn_name,   EH::Strm_name, EH::Rate,        EH::Trg_type,
    EH::T_trg,       EH::T_first,      EH::T_detrg,    EH::T_last,    EH::Bit_wght[0], EH::Gain[0],
    EH::Seed[0],     EH::Chn_cnt,      EH::Sns_vpu[0], EH::Comment,   EH::Position,    EH::Telemetry,
    {16, 16},        {32, 72},         {64, 64},       {128, 64},     {46, 1},         EH::True_wght.all()};
constexpr char Types[] = "EHETDTDTDTDTSHSCDSCDOMADDRNHNTFD";
constexpr uint8_t Units[][2] = {{0x9A, 0x2F}, {0x9A, 0x30}, {0, 1}, {0, 0}, {0xFF, 0xFF}};
constexpr uint8_t Formats[] = {0x16, 0x17, 0x32, 0x33, 0xC0, 0xC1, 0xC2, 0xC3, 0x01, 0x00, 0x20};

using CHANCE = std::minstd_rand;

size_t below(CHANCE& chance, size_t n)
{
    return chance() % n;
}

uint8_t bcd_below(CHANCE& chance, size_t n)
{
    const size_t value = below(chance, n);
    return static_cast<uint8_t>(value / 10 << 4 | value % 10);
}

void change_field(uint8_t* packet, CHANCE& chance)
{
    const Span field = Fields[below(chance, std::size(Fields))];
    LLVMFuzzerMutate(packet + field.at, static_cast<size_t>(field.len), static_cast<size_t>(field.len));
}

/// Gives a packet numbers that others have too.
void place(uint8_t* packet, CHANCE& chance)
{
    memcpy(packet + HDR::Unit_id.at, Units[below(chance, std::size(Units))], 2);
    packet[EVT::Number.at] = 0;
    packet[EVT::Number.at + 1] = bcd_below(chance, 4);
    packet[EVT::Stream.at] = bcd_below(chance, 3);
    packet[EVT::Channel.at] = bcd_below(chance, below(chance, 4) ? 4 : 100);
    if (memcmp(packet, "DT", 2) == 0) packet[EVT::Format.at] = Formats[below(chance, std::size(Formats))];
}

void change_packet(uint8_t* packet, CHANCE& chance)
{
    switch (below(chance, 8)) {
    case 0: memcpy(packet, Types + 2 * below(chance, (sizeof Types - 1) / 2), 2); break;
    case 1: place(packet, chance); break;
    case 2: LLVMFuzzerMutate(packet + 2, Packet - 2, Packet - 2); break;
    case 3: LLVMFuzzerMutate(packet + DT::Frames, Packet - DT::Frames, Packet - DT::Frames); break;
    default: change_field(packet, chance);
    }
}

/// Doubles, drops or swaps packets. Returns how many there are then.
size_t change_order(uint8_t* packets, size_t count, size_t most, CHANCE& chance)
{
    uint8_t* const a = packets + Packet * below(chance, count);
    uint8_t* const b = packets + Packet * below(chance, count);
    switch (below(chance, 4)) {
    case 0:
    case 1:
        if (count == most) return count;
        memcpy(packets + Packet * count, a, Packet);
        if (below(chance, 2)) place(packets + Packet * count, chance);
        return count + 1;
    case 2:
        if (count == 1) return count;
        memmove(a, a + Packet, static_cast<size_t>(packets + Packet * count - (a + Packet)));
        return count - 1;
    default:
        if (a != b) std::swap_ranges(a, a + Packet, b);
        return count;
    }
}

} // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned seed)
{
    CHANCE chance(seed);
    if (size < Switches + Packet || below(chance, 50) == 0) return LLVMFuzzerMutate(data, size, max_size);

    if (below(chance, 8) == 0) data[below(chance, Switches)] = static_cast<uint8_t>(chance() >> 8);
    uint8_t* const packets = data + Switches;
    size_t count = (size - Switches) / Packet;
    const size_t most = (max_size - Switches) / Packet;
    if (below(chance, 4) == 0) count = change_order(packets, count, most, chance);
    for (size_t n = 1 + below(chance, 3); n > 0; --n)
        change_packet(packets + Packet * below(chance, count), chance);
    return Switches + Packet * count;
}
