// The dumps of whole packets in a recorder's log, field by field. Begin with log_dump, which knows the dump
// of every packet type; each dump is a table of places and labels, in a file of its own.
#pragma once

#include "driver/base/outfile.h"
#include "packet/packet.h"

/// Writes what the log shows of a packet behind its summary line: nothing for DT and FD, the text of an SH,
/// the fields of all others.
void log_dump(OUT_FILE& log, const PACKET& pkt);

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
