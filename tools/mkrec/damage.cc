#include "mkrec/damage.h"

#include "packet/packet.h"

#include <cstring>

namespace mkrec {

namespace {

constexpr struct {
    std::string_view name;
    DamageKind kind;
} Kinds[] = {
    {"bad-check", DamageKind::bad_check},
    {"byte-46", DamageKind::byte_46},
    {"clock", DamageKind::clock},
    {"cut-tail", DamageKind::cut_tail},
    {"duplicate", DamageKind::duplicate},
    {"late-start", DamageKind::late_start},
    {"overlap", DamageKind::overlap},
    {"rate", DamageKind::rate},
    {"sequence", DamageKind::sequence},
    {"shifted", DamageKind::shifted},
    {"too-many-samples", DamageKind::too_many_samples},
    {"unknown-format", DamageKind::unknown_format},
    {"unknown-type", DamageKind::unknown_type},
    {"zeros", DamageKind::zeros},
};

constexpr Span Stored_last{DT::Frames + DT::Xn_word * 4, 4};

/// Moves the samples to where a packet without an extension has them; the byte that tells of one stays as it
/// is.
void move_samples(TextPage& page)
{
    const PACKET pkt(page.bytes);
    put_byte_cnt(page, bcd(pkt, HDR::Byte_cnt) - DT::Extension_len);
    put_binary(page, EVT::Flags, 0);
    memmove(page.bytes + DT::Data, page.bytes + DT::Frames, Packet_size - DT::Frames);
    memset(page.bytes + Packet_size - DT::Extension_len, 0, DT::Extension_len);
    put_binary(page, DT::Extension_flags, FLAG::Extension);
}

} // namespace

std::optional<DamageKind> damage_kind_named(std::string_view name)
{
    for (const auto& k : Kinds)
        if (k.name == name) return k.kind;
    return std::nullopt;
}

void damage_page(TextPage& page, DamageKind kind)
{
    const PACKET pkt(page.bytes);
    switch (kind) {
    case DamageKind::bad_check: put_binary(page, Stored_last, number(pkt, Stored_last) ^ 1); break;
    case DamageKind::byte_46: move_samples(page); break;
    case DamageKind::clock: put_text(page, EH::Pll_days, "4"); break;
    case DamageKind::late_start: put_text(page, EH::T_first, "2022365000000000"); break;
    case DamageKind::overlap: put_binary(page, HDR::Year, 0x22); break;
    case DamageKind::rate: put_text(page, EH::Rate, "7   "); break;
    case DamageKind::sequence: put_bcd(page, HDR::Seq, (pkt.seq + 4711U) % 10000); break;
    case DamageKind::too_many_samples: put_bcd(page, EVT::Samples, 999); break;
    case DamageKind::unknown_format: put_binary(page, EVT::Format, 0x18); break;
    case DamageKind::unknown_type: put_text(page, HDR::Type, "QQ"); break;
    case DamageKind::zeros: memset(page.bytes, 0, sizeof page.bytes); break;
    default: break;
    }
}

} // namespace mkrec
