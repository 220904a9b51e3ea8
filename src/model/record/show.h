// The three debugging dumps. A run shows a channel when its trace cannot be finished; the others wait for
// somebody who debugs.
#pragma once

struct CHN_T;
struct EVT_T;
struct UNIT_T;

/// Prints a unit to the console and waits for a key.
void Unit_show(const UNIT_T& unit);
/// Prints an event to the console.
void Evt_show(const EVT_T& evt);
/// Prints a channel to the console and waits for a key.
void Chn_show(const CHN_T& chn);
