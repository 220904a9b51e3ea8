// Recordings for the stress run, each kind its own way of being hostile.
#pragma once

#include "kit/packets.h"
#include "stress/chance.h"

namespace stress {

/// Random bytes under valid type letters.
kit::Recording noise(Chance& chance);
/// Packets of the right shape, with every field likely to be out of range, and a few units and events, so
/// that they meet.
kit::Recording hostile(Chance& chance);
/// Very many units, events or channels at once.
kit::Recording crowd(Chance& chance);
/// A stretch of a good recording with bytes, fields and packets changed, lost, doubled and shifted.
kit::Recording spoilt(Chance& chance, const kit::Recording& base);

/// Replaces "/" in station names, and puts one into a single name of one recording in many. True when it did.
bool spare_slashes(Chance& chance, kit::Recording& recording);

} // namespace stress
