// Damage that shows in single blocks: unknown ones, zeros, shifts, counts that do not fit, the rule of byte
// 46, packets that stand twice.
#pragma once

#include "packet/packet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace check {

bool all_zeros(const uint8_t* block);

/// True for a block that is a packet beyond doubt: its type is known, and its time is one.
bool is_plausible(const uint8_t* block);

/// The offset in a block, 1 to 1023, at which packets go on; nothing when none of the next ones is there.
std::optional<size_t> shift_of(std::span<const uint8_t> from_here);

/// More samples in an uncompressed packet's header than the packet holds: how many it holds.
std::optional<unsigned> held_if_too_many(const PACKET& pkt, Encoding encoding);

/// What byte 46 does to an uncompressed packet.
struct Byte46 {
    bool eats; ///< samples are lost; else the rule does no harm
    std::string text;
};
std::optional<Byte46> byte_46_of(const PACKET& pkt, Encoding encoding);

/// The packets before, as their hashes.
class LatestPackets {
public:
    static constexpr size_t Remembered = 1000;

    /// True when the same packet was among the last thousand.
    bool has(const uint8_t* block);

private:
    static constexpr size_t Classes = 65536;

    std::vector<uint64_t> ring_;
    size_t next_ = 0; ///< the place of the oldest, once the ring is full
    std::vector<uint16_t> of_class_ =
        std::vector<uint16_t>(Classes); ///< packets of the ring, by the end of their hash
};

} // namespace check
