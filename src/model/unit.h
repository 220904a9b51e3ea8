// The ring of units, and the log and QC files of each.
#pragma once

#include "packet/packet.h"

struct UNIT_T;

/// Finds the unit of a packet, or creates it, and makes it the current one. For a new unit, opens its log and
/// its QC file and writes their headers. Only the current unit's QC lines go to its QC file. Without memory
/// the run ends (40).
UNIT_T& Unit_find(const PACKET& pkt);

/// Applies the unit's keys in its section of the INI file.
void Unit_ini(UNIT_T& unit);

/// Frees all units and closes their files. For tests.
void Unit_forget_all();
