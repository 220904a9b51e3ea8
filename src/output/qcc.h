// QC statistics: the running sums of a channel, and their lines at the end of an event.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"

struct CHN_T;
struct EVT_T;
struct UNIT_T;

/// Resets the channel's sums and extremes; its sample count stays.
void Qcc_init(CHN_T& chn);

/// Writes the header of a QC file.
void Qcc_fhdr(OUT_FILE& file);

/// Writes the event's block to the run-wide and the unit's QC file, and resets its channels. `trailer` is the
/// ET that ends the event; null if none came, which the block reports.
void Qcc_store(UNIT_T& unit, EVT_T& evt, const PACKET* trailer);

/// The head of a network's section in the run-wide QC file.
void Qcc_network(const PACKET& pkt);
