// The ring of units, and the log and QC files of each.
#pragma once

#include "packet/packet.h"

#include <cstdint>

struct UNIT_T;

enum UNIT_FILE : uint16_t { UNIT_LOG = 0, UNIT_QCC = 1 };

/// The unit of a packet, made on first sight. Switching units closes the log, the QC file and the
/// traces of the one left; the log of the one entered opens again, and its QC file with the log. Never null:
/// no memory is fatal error 40.
UNIT_T* Unit_find(const PACKET& pkt);

/// Makes the unit's log or QC file: name, opening (fatal error 20 on failure), header.
void Unit_file_create(UNIT_T* unit, uint16_t kind);

/// Closes the unit's log or QC file. With the log go the traces of the unit's current event.
void Unit_file_close(UNIT_T* unit, uint16_t kind);

/// Opens a unit's QC file again, behind what it holds; no header.
void Unit_qcc_reopen(UNIT_T* unit);

/// Reads the unit's keys from its section of the INI file.
void Unit_ini(UNIT_T* unit);

/// Forgets all units; for tests.
void Unit_forget_all();
