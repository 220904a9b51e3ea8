#include "output/dump.h"

#include "output/log.h"

void log_dump(OUT_FILE& log, const PACKET& pkt)
{
    switch (pkt.kind) { // never taken: the enumeration has no other value
    case PKT_EH:
    case PKT_ET: log_eh_et(log, pkt); break;
    case PKT_NH:
    case PKT_NT: log_nh_nt(log, pkt); break;
    case PKT_DR: log_dr(log, pkt); break;
    case PKT_SC: return log_sc(log, pkt);
    case PKT_DS: return log_ds(log, pkt);
    case PKT_CD: return log_cd(log, pkt);
    case PKT_OM: return log_om(log, pkt);
    case PKT_AD: return log_ad(log, pkt);
    case PKT_SH: return log_block(log, pkt, DUMP_TEXT);
    case PKT_FD: return log_fd();
    case PKT_DT:
    case PKT_UNKNOWN: return;
    }
    log.write("\r\n"); // the other dumps end with an empty line of their own
}

void log_fd() {}
