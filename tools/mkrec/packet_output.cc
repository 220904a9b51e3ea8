#include "mkrec/packet_output.h"

#include <algorithm>

namespace mkrec {

/// True when the latest packet is to be damaged so.
bool PacketOutput::is_damaged(DamageKind kind) const
{
    return std::any_of(options_.damage.begin(), options_.damage.end(),
                       [&](const Damage& d) { return d.kind == kind && d.packet == number_; });
}

void PacketOutput::write(const TextPage& page)
{
    ++number_;
    const bool dropped =
        std::find(options_.drop.begin(), options_.drop.end(), number_) != options_.drop.end();
    if (dropped || cut_) return;
    if (options_.damage.empty()) return out_.write(page.bytes, sizeof page.bytes);
    TextPage made = page;
    for (const Damage& d : options_.damage)
        if (d.packet == number_) damage_page(made, d.kind);
    const uint8_t stray = 0;
    if (is_damaged(DamageKind::shifted)) out_.write(&stray, 1);
    cut_ = is_damaged(DamageKind::cut_tail);
    out_.write(made.bytes, cut_ ? sizeof made.bytes / 2 : sizeof made.bytes);
    if (is_damaged(DamageKind::duplicate)) out_.write(made.bytes, sizeof made.bytes);
}

} // namespace mkrec
