// The ring of units, and the log and QC files of each.
#pragma once

#include "packet/packet.h"

struct UNIT_T;

/// The unit of a packet, which becomes the current one. On first sight it is made and its log and QC file are
/// opened, with their headers. QC lines go to the QC file of the current unit only. Without memory the run
/// ends (40).
UNIT_T& Unit_find(const PACKET& pkt);

/// Reads the unit's keys from its section of the INI file.
void Unit_ini(UNIT_T& unit);

/// Forgets all units; for tests.
void Unit_forget_all();
