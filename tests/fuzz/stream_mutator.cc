// How libFuzzer changes a recording: mostly packet by packet and field by field, so that packets keep their
// place, their type and matching numbers, and the program does not skip them at the first letter.
#include "stress/recordings.h"

#include <algorithm>
#include <cstdint>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned seed);

constexpr size_t Switches = 2; ///< bytes before the first packet
constexpr size_t Packet = kit::Packet_len;

static void rewrite(char* bytes, size_t n)
{
    LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(bytes), n, n);
}

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned seed)
{
    stress::Chance chance(seed);
    if (size < Switches + Packet || chance.one_in(50)) return LLVMFuzzerMutate(data, size, max_size);

    if (chance.one_in(8)) data[chance.below(Switches)] = static_cast<uint8_t>(chance.byte());
    uint8_t* const packets = data + Switches;
    kit::Recording recording(packets, packets + (size - Switches) / Packet * Packet);
    for (unsigned n = chance.from_to(1, 3); n > 0; --n) stress::change(chance, recording, rewrite);
    recording.resize(std::min(recording.size(), (max_size - Switches) / Packet * Packet));
    std::copy(recording.begin(), recording.end(), packets);
    return Switches + recording.size();
}
