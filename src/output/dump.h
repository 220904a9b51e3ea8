// The dumps of packets in a recorder's log, field by field. Begin with log_dump, which picks the dump of each
// packet type. A dump is mostly a table of places and labels.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"

/// Writes what follows a packet's summary line in the log: nothing for DT and FD, the text of an SH, the
/// fields of all others.
void log_dump(OUT_FILE& log, const PACKET& pkt);

// The dumps of single types: event, network, station and channels, data streams, calibration, operating mode,
// auxiliary data, directory of a medium.
void log_eh_et(OUT_FILE& log, const PACKET& pkt);
void log_nh_nt(OUT_FILE& log, const PACKET& pkt);
void log_sc(OUT_FILE& log, const PACKET& pkt);
void log_ds(OUT_FILE& log, const PACKET& pkt);
void log_cd(OUT_FILE& log, const PACKET& pkt);
void log_om(OUT_FILE& log, const PACKET& pkt);
void log_ad(OUT_FILE& log, const PACKET& pkt);
void log_dr(OUT_FILE& log, const PACKET& pkt);

/// carried: filter-dump. FD packets have no dump.
void log_fd();
