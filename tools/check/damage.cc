#include "check/damage.h"

#include "check/moment.h"

#include <algorithm>
#include <cstring>

namespace check {

namespace {

constexpr int Words = Packet_size / 8;

int width_of(Encoding encoding)
{
    return encoding == Encoding::int16 ? 2 : encoding == Encoding::int32 ? 4 : 0;
}

bool is_bcd(const PACKET& pkt, Span field)
{
    const uint8_t* b = bytes(pkt, field);
    return std::all_of(b, b + field.len, [](uint8_t x) { return (x >> 4) <= 9 && (x & 15) <= 9; });
}

/// A number that any change of a block changes: four rows of products, mixed at the end.
uint64_t hash_of(const uint8_t* block)
{
    constexpr uint64_t Odd = 0x9E3779B97F4A7C15U;
    uint64_t rows[4] = {1, 2, 3, 4};
    for (int w = 0; w < Words; w += 4)
        for (int r = 0; r < 4; ++r) {
            uint64_t word;
            memcpy(&word, block + 8 * (w + r), sizeof word);
            rows[r] = (rows[r] ^ word) * Odd;
            rows[r] ^= rows[r] >> 32;
        }
    uint64_t all = 0;
    for (const uint64_t row : rows) {
        all = (all ^ row) * Odd;
        all ^= all >> 29;
    }
    return all;
}

} // namespace

bool all_zeros(const uint8_t* block)
{
    return block[0] == 0 && memcmp(block, block + 1, Packet_size - 1) == 0;
}

bool is_plausible(const uint8_t* block)
{
    if (code_set(block) == PKT_UNKNOWN) return false;
    const PACKET pkt(block);
    return is_bcd(pkt, HDR::Byte_cnt) && is_bcd(pkt, HDR::Seq) && moment_of(pkt.time) != No_moment;
}

std::optional<size_t> shift_of(std::span<const uint8_t> from_here)
{
    constexpr size_t Block = Packet_size;
    constexpr size_t Wanted = 3; // packets in a row, or all that are left
    for (size_t shift = 1; shift < Block && shift + Block <= from_here.size(); ++shift) {
        if (code_set(from_here.data() + shift) == PKT_UNKNOWN) continue;
        size_t found = 0;
        size_t at = shift;
        while (found < Wanted && at + Block <= from_here.size() && is_plausible(from_here.data() + at)) {
            ++found;
            at += Block;
        }
        if (found == Wanted || (found > 0 && at + Block > from_here.size())) return shift;
    }
    return std::nullopt;
}

std::optional<unsigned> held_if_too_many(const PACKET& pkt, Encoding encoding)
{
    const int width = width_of(encoding);
    if (width == 0) return std::nullopt;
    const bool extended = byte(pkt, DT::Extension_flags) & FLAG::Extension;
    const int start = extended ? DT::Frames : DT::Data;
    const auto held = static_cast<unsigned>((Packet_size - start) / width);
    return pkt.samples > held ? std::optional(held) : std::nullopt;
}

std::optional<Byte46> byte_46_of(const PACKET& pkt, Encoding encoding)
{
    const int width = width_of(encoding);
    const bool by_flags = flags(pkt) & FLAG::Extension;
    const bool by_byte = byte(pkt, DT::Extension_flags) & FLAG::Extension;
    if (width == 0 || by_flags == by_byte || pkt.samples == 0) return std::nullopt;
    const int told_start = bcd(pkt, HDR::Byte_cnt) - pkt.samples * width; // by the packet's own byte count
    const int read_start = by_byte ? DT::Frames : DT::Data;
    if (told_start == read_start)
        return Byte46{
            false, "byte 46 and the flags disagree on an extension, and byte 46 is right: nothing is lost"};
    if (by_byte)
        return Byte46{true,
                      "the first " + std::to_string(DT::Extension_len / width) +
                          " samples are eaten: byte 46, which is one of them, looks like an extension's"};
    return Byte46{true, "the extension is read as samples: byte 46 does not tell of it"};
}

/// Most packets end here by their class: no other of the ring has it.
bool LatestPackets::has(const uint8_t* block)
{
    const uint64_t hash = hash_of(block);
    const bool known =
        of_class_[hash % Classes] > 0 && std::find(ring_.begin(), ring_.end(), hash) != ring_.end();
    ++of_class_[hash % Classes];
    if (ring_.size() < Remembered) {
        ring_.push_back(hash);
        return known;
    }
    --of_class_[ring_[next_] % Classes];
    ring_[next_] = hash;
    next_ = (next_ + 1) % Remembered;
    return known;
}

} // namespace check
