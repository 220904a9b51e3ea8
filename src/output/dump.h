// One door to the dumps of the parameter packets in the unit logs, field by field.
#pragma once

#include "driver/outfile.h"
#include "packet/packet.h"

void log_eh_et(OUT_FILE& log, const PACKET& pkt);
void log_nh_nt(OUT_FILE& log, const PACKET& pkt);
void log_sc(OUT_FILE& log, const PACKET& pkt);
void log_ds(OUT_FILE& log, const PACKET& pkt);
void log_cd(OUT_FILE& log, const PACKET& pkt);
void log_om(OUT_FILE& log, const PACKET& pkt);
void log_ad(OUT_FILE& log, const PACKET& pkt);
void log_dr(OUT_FILE& log, const PACKET& pkt);
