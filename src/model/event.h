// The events of a unit: finding, sequence check, description, removal.
#pragma once

#include "packet/packet.h"

struct EVT_T;
struct UNIT_T;

/// Finds the event of an EH, ET or DT packet, or creates it. Takes the description of an EH or ET, checks the
/// sequence number, and makes the event the unit's current one. Without memory the run ends (255).
EVT_T& Evt_find(UNIT_T& unit, const PACKET& pkt);

/// Copies the fields of an EH or ET into the event and its unit. carried: blank-description. For any other
/// packet blanks the event's texts.
void Evt_info(EVT_T& evt, const PACKET& pkt);

/// Finishes and frees the event's channels, removes the event from its ring and frees it. Its predecessor
/// becomes the unit's current event.
void Evt_remove(EVT_T& evt);

/// carried: channel-list. Fills `list` with the channel numbers in ascending order, 32 at most.
void Evt_chn_sort(EVT_T& evt);
