// The events of a unit: finding, sequence check, description, removal.
#pragma once

#include "packet/packet.h"

struct EVT_T;
struct UNIT_T;

/// The event of an EH, ET or DT packet within its unit, made when needed; takes an EH's or ET's
/// description, checks the sequence and becomes the unit's current event. Without memory the run ends (255).
EVT_T& Evt_find(UNIT_T& unit, const PACKET& pkt);

/// Copies what an EH or ET says into the event and its unit. carried: blank-description. Any other packet
/// blanks the event's texts.
void Evt_info(EVT_T& evt, const PACKET& pkt);

/// Finishes and frees the event's channels, takes it out of its ring (its predecessor becomes the unit's
/// current event) and frees it.
void Evt_remove(EVT_T& evt);

/// carried: channel-list. Fills `list` with the channel numbers in ascending order, 32 at most.
void Evt_chn_sort(EVT_T& evt);
