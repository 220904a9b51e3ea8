// What can be made wrong with a packet of a recording.
#pragma once

#include "mkrec/page.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace mkrec {

enum class DamageKind : uint8_t {
    bad_check,
    byte_46,
    clock,
    cut_tail,
    duplicate,
    late_start,
    overlap,
    rate,
    sequence,
    shifted,
    too_many_samples,
    unknown_format,
    unknown_type,
    zeros,
};

struct Damage {
    DamageKind kind;
    int64_t packet; ///< counted from 1
};

/// The kind with a name such as "bad-check", or nothing.
std::optional<DamageKind> damage_kind_named(std::string_view name);

/// Changes the bytes of a packet. Kinds that change what is around it do nothing here.
void damage_page(TextPage& page, DamageKind kind);

} // namespace mkrec
