// The three debugging dumps. A run prints that of a channel when its trace cannot be finished.
#pragma once

struct CHN_T;
struct EVT_T;
struct UNIT_T;

/// carried: debugging-dumps. Prints a unit to the console and waits for a key.
void Unit_show(const UNIT_T& unit);
/// carried: debugging-dumps. Prints an event to the console.
void Evt_show(const EVT_T& evt);
/// Prints a channel to the console and waits for a key.
void Chn_show(const CHN_T& chn);
