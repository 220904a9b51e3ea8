// QC statistics: the running sums of a channel, and their lines at the end of an event.
#pragma once

#include "driver/outfile.h"
#include "packet/packet.h"

struct CHN_T;
struct EVT_T;
struct UNIT_T;

inline constexpr double Qcc_start = 2147483647.0; ///< minimum starts here, maximum at its negative

/// Resets the channel's sums and extremes; its sample count stays.
void Qcc_init(CHN_T* chn);

/// Writes the header of a QC file.
void Qcc_fhdr(OUT_FILE& file);

/// Writes the event's block to the run-wide and the unit's QC file, and resets its channels. `pkt` is the
/// ET that ends the event; any other packet makes the block report that none came.
void Qcc_store(UNIT_T* unit, EVT_T* evt, const PACKET& pkt);

/// The head of a network's section in the run-wide QC file.
void Qcc_network(const PACKET& pkt);
