// QC statistics: the sums of a channel, and the lines of an event at its end.
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

/// Writes the event's block to the QC files of the run and of the unit, and resets the statistics of its
/// channels. `trailer` is the ET that ends the event; without one it is null, and the block says so.
void Qcc_store(UNIT_T& unit, EVT_T& evt, const PACKET* trailer);

/// Writes the head of a network's section to the run-wide QC file.
void Qcc_network(const PACKET& pkt);
