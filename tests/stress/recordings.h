// Random recordings that are hostile in different ways: for the stress run, for the relations between
// runs (metamorphic), and, by change(), for the fuzz target of whole streams. What grows to a limit, or goes
// through all limits of all fields, is made by proof/trial/hostile.py.
#pragma once

#include "kit/packets.h"
#include "stress/chance.h"

#include <functional>

namespace stress {

/// Puts other bytes in the place of `n`.
using Rewrite = std::function<void(char* bytes, size_t n)>;

/// One change of a recording of at least one packet: of a packet's type, numbers or fields, or of which
/// packets there are, and in which order. Packets keep their places, and there is one left.
void change(Chance& chance, kit::Recording& recording, const Rewrite& rewrite);

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
