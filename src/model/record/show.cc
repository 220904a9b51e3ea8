// The debugging dumps of a unit, an event and a channel: one line per field, label and value.
#include "model/record/show.h"

#include "driver/base/fatal.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>

/// The address of an output file while it is open, else null.
static const void* handle(const OUT_FILE& file, bool open)
{
    return open ? &file : nullptr;
}

static const void* address(const void* record)
{
    return record;
}

static const char* true_false(bool flag)
{
    return flag ? "TRUE" : "FALSE";
}

void Unit_show(const UNIT_T& unit)
{
    printf("\nUnit structure (%04hX):", unit.unit_id);
    printf("\n   Ptrs unit prv =  %p", address(unit.prv));
    printf("\n             nxt =  %p", address(unit.nxt));
    printf("\n             evt =  %p", address(unit.evt));
    printf("\n   log file name = '%s'", unit.log_name.c_str());
    printf("\n            open =  %s", true_false(unit.log_fp.open));
    printf("\n            ptr  =  %p", handle(unit.log_fp, unit.log_fp.open));
    printf("\n   qcc file name = '%s'", unit.qcc_name.c_str());
    printf("\n            open =  %s", true_false(unit.qcc_open));
    printf("\n            ptr  =  %p", handle(unit.qcc_fp, unit.qcc_open));
    printf("\n   network  name = '%s'", unit.net_name.s);
    printf("\n            SEED = '%s'", unit.SEED.s);
    printf("\n             COS = '%s'", unit.COS.s);
    printf("\n            Cnum =  %u", unit.Cnum);
    printf("\n   station  name = '%s'", unit.stn_name.s);
    printf("\n            geol = '%s'", unit.geol.s);
    printf("\n            type =  %u", unit.type);
    printf("\n             lat =  %f", unit.position.lat);
    printf("\n             lon =  %f", unit.position.lon);
    printf("\n             alt =  %f", unit.position.alt);
    printf("\n        DAS type =  %u", unit.das_type);
    printf("\n         DAS cnt =  %u", unit.das_cnt);
    printf("\n         CHN cnt =  %u", unit.chn_cnt);
    printf("\n   DAS orientatn =  %u", unit.orient);
    printf("\n         CHN cnt =  %u", unit.eh_chn_cnt);
    printf("\n   INI fpos frst =  %" PRIX32, static_cast<uint32_t>(unit.ini_first));
    printf("\n            last =  %" PRIX32, static_cast<uint32_t>(unit.ini_last));
    any_key();
}

void Evt_show(const EVT_T& evt)
{
    printf("\nEvt structure (%04hX):", evt.unit_id);
    printf("\n    Ptrs evt prv =  %p", address(evt.prv));
    printf("\n             nxt =  %p", address(evt.nxt));
    printf("\n             chn =  %p", address(evt.chn));
    printf("\n            unit =  %p", address(evt.unit));
    printf("\n         Unit ID = %04X", evt.unit_id);
    printf("\n            strm = %u", evt.strm);
    printf("\n             evt = %u", evt.evt_num);
    printf("\n             seq = %u", evt.seq);
    printf("\n             bad = %u", evt.bad);
    printf("\n            wrap = %u", evt.wrap);
    printf("\n     sample rate = %f", static_cast<double>(evt.smp_rate));
    printf("\n         Chn cnt = %u", evt.chn_cnt);
    printf("\n              lo = %u", evt.lo);
    printf("\n              hi = %u", evt.hi);
    printf("\n            list =");
    for (const uint16_t channel : evt.list) printf(" %u", channel);
    printf("\n          Pkt EH = %u", evt.eh_seen);
    printf("\n              ET = %u", evt.et_seen);
    printf("\n       strm name = '%-26.26s'", evt.strm_name.s);
    printf("\n    trigger type = '%-6.6s'", evt.trg_type.s);
    printf("\n    Smp time 1st = '%s'", evt.times.t_first.s);
    printf("\n             trg = '%s'", evt.times.t_trg.s);
    printf("\n          de-trg = '%s'", evt.times.t_detrg.s);
    printf("\n            last = '%s'", evt.times.t_last.s);
    printf("\n    Station name = '%s'", evt.stn_name.s);
    printf("\n            cmnt = '%40.40s'", evt.cmnt.s);
    printf("\n   Evt file name = '%s'", evt.evt_name.s);
}

void Chn_show(const CHN_T& chn)
{
    printf("\nChan structure (%04hX):", chn.id.unit_id);
    printf("\n   Ptrs chan prv =  %p", address(chn.prv));
    printf("\n             nxt =  %p", address(chn.nxt));
    printf("\n             evt =  %p", address(chn.evt));
    printf("\n            unit =  %p", address(chn.unit));
    printf("\n   chn file open =  %u", chn.fp.open);
    printf("\n            name = '%s'", chn.name.c_str());
    printf("\n             ptr =  %p", handle(chn.fp, chn.fp.open));
    printf("\n   qcc       sum =  %lg", chn.stats.sum);
    printf("\n          sq sum =  %lg", chn.stats.sq_sum);
    printf("\n             min =  %lg (%" PRIu32 ")", chn.stats.min, chn.stats.min_ndx);
    printf("\n             max =  %lg (%" PRIu32 ")", chn.stats.max, chn.stats.max_ndx);
    printf("\n   event     num =  %u", chn.id.event);
    printf("\n             seq =  %u", chn.seq);
    printf("\n          stream =  %u", chn.id.stream);
    printf("\n         channel =  %u", chn.id.channel);
    printf("\n   smpl time prv = '%s'", chn.times.t_prv.s);
    printf("\n             1st = '%s'", chn.times.t_first.s);
    printf("\n             nxt = '%s'", chn.times.t_nxt.s);
    printf("\n             cnt =  %" PRIu32, chn.cnt);
    printf("\n           trash =  %" PRIu32, chn.trash);
    printf("\n            last =  %" PRIu32, chn.last);
    printf("\n            fpos =  %" PRId32, chn.fpos);
    printf("\n            bits =  %u", chn.set.bits);
    printf("\n        gain_ndx =  %u (%f)", chn.set.gain_ndx,
           static_cast<double>(Gain_info[chn.set.gain_ndx].factor));
    printf("\n             tbw =  %.10lf", chn.set.tbw);
    printf("\n             fsa =  %lg", chn.set.fsa);
    printf("\n   sensor   make = '%s'", chn.set.make.s);
    printf("\n           model = '%s'", chn.set.model.s);
    printf("\n              sn =  %" PRIu32, chn.set.sn);
    printf("\n           index =  %u (%s)", chn.set.sns_ndx, Sensor[chn.set.sns_ndx].name);
    printf("\n            band = '%c'", chn.set.band);
    printf("\n            type = '%c'", chn.set.type);
    printf("\n            axis = '%c'", chn.set.axis);
    printf("\n        SeisComp = '%s'", chn.set.SeisComp.s);
    printf("\n            freq =  %lg", chn.set.freq);
    printf("\n            damp =  %lg", chn.set.damp);
    printf("\n             vpu =  %lg (%s)", chn.set.vpu, Measures[chn.set.vpu_units].name);
    printf("\n             fsa =  %lg", chn.set.sns_fsa);
    printf("\n   position  Lat =  %lg", chn.position.lat);
    printf("\n             Lon =  %lg", chn.position.lon);
    printf("\n             Alt =  %lg", chn.position.alt);
    printf("\n           depth =  %lg", chn.set.depth);
    printf("\n         azimuth =  %u", chn.set.azimuth);
    printf("\n             dip =  %d", chn.set.dip);
    printf("\n");
    any_key();
}
