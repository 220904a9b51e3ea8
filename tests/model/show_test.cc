// The debugging dumps, character by character.
#include "model/record/show.h"

#include "model/record/records.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

std::string at(const void* address)
{
    char text[32];
    snprintf(text, sizeof text, "%p", address);
    return text;
}

struct Shown {
    std::string out, err;
};

/// What a dump prints, a person pressing nothing: standard input is at its end.
template <class Record>
Shown shown(void (*show)(const Record&), const Record& record)
{
    EXPECT_NE(freopen("/dev/null", "r", stdin), nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    show(record);
    Shown all;
    all.out = testing::internal::GetCapturedStdout();
    all.err = testing::internal::GetCapturedStderr();
    return all;
}

const char Prompt[] = "\r\nPress ENTER/RETURN to continue.";

TEST(Unit_show, prints_every_field_and_waits_for_a_key)
{
    UNIT_T unit;
    EVT_T evt;
    unit.prv = unit.nxt = &unit;
    unit.evt = &evt;
    unit.unit_id = 0x9A2F;
    unit.log_name = "out/ID9A2F.vxl";
    unit.log_fp.open = unit.qcc_fp.open = true; // the QC file stays open, but gets no lines: qcc_open
    unit.qcc_name = "out/ID9A2F.qcc";
    unit.net_name.put("Network");
    unit.SEED.put("XX");
    unit.COS.put("COSM");
    unit.Cnum = 1;
    unit.stn_name.put("STA01");
    unit.geol.put("alluvium");
    unit.type = 50;
    unit.position.lat = 35.68;
    unit.position.lon = -117.35;
    unit.position.alt = 700;
    unit.das_type = 2;
    unit.das_cnt = 3;
    unit.chn_cnt = 4;
    unit.orient = 359;
    unit.eh_chn_cnt = 6;
    unit.ini_first = 0x1A2B;
    unit.ini_last = -1;
    const Shown dump = shown(Unit_show, unit);
    EXPECT_EQ(dump.out, "\nUnit structure (9A2F):"
                        "\n   Ptrs unit prv =  " +
                            at(&unit) + "\n             nxt =  " + at(&unit) +
                            "\n             evt =  " + at(&evt) +
                            "\n   log file name = 'out/ID9A2F.vxl'"
                            "\n            open =  TRUE"
                            "\n            ptr  =  " +
                            at(&unit.log_fp) +
                            "\n   qcc file name = 'out/ID9A2F.qcc'"
                            "\n            open =  FALSE"
                            "\n            ptr  =  " +
                            at(nullptr) +
                            "\n   network  name = 'Network'"
                            "\n            SEED = 'XX'"
                            "\n             COS = 'COSM'"
                            "\n            Cnum =  1"
                            "\n   station  name = 'STA01'"
                            "\n            geol = 'alluvium'"
                            "\n            type =  50"
                            "\n             lat =  35.680000"
                            "\n             lon =  -117.350000"
                            "\n             alt =  700.000000"
                            "\n        DAS type =  2"
                            "\n         DAS cnt =  3"
                            "\n         CHN cnt =  4"
                            "\n   DAS orientatn =  359"
                            "\n         CHN cnt =  6"
                            "\n   INI fpos frst =  1A2B"
                            "\n            last =  FFFFFFFF");
    EXPECT_EQ(dump.err, Prompt);
}

TEST(Unit_show, shows_small_IDs_with_four_digits)
{
    UNIT_T unit;
    unit.unit_id = 0x1F;
    EXPECT_EQ(shown(Unit_show, unit).out.substr(0, 23), "\nUnit structure (001F):");
}

TEST(Evt_show, prints_every_field_and_does_not_wait)
{
    UNIT_T unit;
    CHN_T chn;
    EVT_T evt;
    evt.prv = evt.nxt = &evt;
    evt.chn = &chn;
    evt.unit = &unit;
    evt.unit_id = 0x0A2F;
    evt.strm = 1;
    evt.evt_num = 12;
    evt.seq = 9999;
    evt.bad = true;
    evt.smp_rate = 250.5F;
    evt.chn_cnt = 3;
    evt.lo = 0;
    evt.hi = 31;
    evt.list[1] = 5;
    evt.list[31] = 165;
    evt.eh_seen = true;
    evt.strm_name.put("stream");
    evt.trg_type.put("EVT ");
    evt.times.t_first.put("2004123101530001");
    evt.times.t_trg.put("2004123101530123");
    evt.times.t_detrg.put("2004123101630002");
    evt.times.t_last.put("2004123101640003");
    evt.stn_name.put("STA01");
    evt.cmnt.put("a comment");
    const Shown dump = shown(Evt_show, evt);
    EXPECT_EQ(dump.out,
              "\nEvt structure (0A2F):"
              "\n    Ptrs evt prv =  " +
                  at(&evt) + "\n             nxt =  " + at(&evt) + "\n             chn =  " + at(&chn) +
                  "\n            unit =  " + at(&unit) +
                  "\n         Unit ID = 0A2F"
                  "\n            strm = 1"
                  "\n             evt = 12"
                  "\n             seq = 9999"
                  "\n             bad = 1"
                  "\n            wrap = 0"
                  "\n     sample rate = 250.500000"
                  "\n         Chn cnt = 3"
                  "\n              lo = 0"
                  "\n              hi = 31"
                  "\n            list = 0 5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 165"
                  "\n          Pkt EH = 1"
                  "\n              ET = 0"
                  "\n       strm name = 'stream                    '"
                  "\n    trigger type = 'EVT   '"
                  "\n    Smp time 1st = '2004123101530001'"
                  "\n             trg = '2004123101530123'"
                  "\n          de-trg = '2004123101630002'"
                  "\n            last = '2004123101640003'"
                  "\n    Station name = 'STA01'"
                  "\n            cmnt = '                               a comment'"
                  "\n   Evt file name = ''");
    EXPECT_EQ(dump.err, "");
}

TEST(Chn_show, prints_every_field_and_waits_for_a_key)
{
    UNIT_T unit;
    EVT_T evt;
    CHN_T chn;
    chn.prv = chn.nxt = &chn;
    chn.evt = &evt;
    chn.unit = &unit;
    chn.id.unit_id = 0x9A2F;
    chn.fp.open = 1;
    chn.name = "out/2004123101530250_STA01_1_3.sac";
    chn.stats.sum = 1234567.5;
    chn.stats.sq_sum = 2.5e10;
    chn.stats.min = -3;
    chn.stats.min_ndx = 4000000000U;
    chn.stats.max = 2147483647.0;
    chn.stats.max_ndx = 2;
    chn.id.event = 12;
    chn.seq = 34;
    chn.id.stream = 1;
    chn.id.channel = 2;
    chn.times.t_prv.put("2004123101530250");
    chn.times.t_first.put("2004123101529250");
    chn.times.t_nxt.put("2004123101531250");
    chn.cnt = 4294967295U;
    chn.trash = 5;
    chn.last = 0x80000001;
    chn.fpos = -7;
    chn.set.bits = 16;
    chn.set.gain_ndx = 11;
    chn.set.tbw = 0.00001589;
    chn.set.fsa = 20.875;
    chn.set.make.put("Vexar");
    chn.set.model.put("AX-21/3/INT");
    chn.set.sn = 3000000000U;
    chn.set.sns_ndx = 19;
    chn.set.band = 'H', chn.set.type = 'N', chn.set.axis = 'Z';
    chn.set.SeisComp.put("HNZ");
    chn.set.freq = 900;
    chn.set.damp = 0.1;
    chn.set.vpu = 1.2;
    chn.set.vpu_units = 2;
    chn.set.sns_fsa = 5;
    chn.position.lat = 35.68;
    chn.position.lon = -117.35;
    chn.position.alt = 700;
    chn.set.depth = 12.5;
    chn.set.azimuth = 65535;
    chn.set.dip = -90;
    const Shown dump = shown(Chn_show, chn);
    EXPECT_EQ(dump.out, "\nChan structure (9A2F):"
                        "\n   Ptrs chan prv =  " +
                            at(&chn) + "\n             nxt =  " + at(&chn) +
                            "\n             evt =  " + at(&evt) + "\n            unit =  " + at(&unit) +
                            "\n   chn file open =  1"
                            "\n            name = 'out/2004123101530250_STA01_1_3.sac'"
                            "\n             ptr =  " +
                            at(&chn.fp) +
                            "\n   qcc       sum =  1.23457e+06"
                            "\n          sq sum =  2.5e+10"
                            "\n             min =  -3 (4000000000)"
                            "\n             max =  2.14748e+09 (2)"
                            "\n   event     num =  12"
                            "\n             seq =  34"
                            "\n          stream =  1"
                            "\n         channel =  2"
                            "\n   smpl time prv = '2004123101530250'"
                            "\n             1st = '2004123101529250'"
                            "\n             nxt = '2004123101531250'"
                            "\n             cnt =  4294967295"
                            "\n           trash =  5"
                            "\n            last =  2147483649"
                            "\n            fpos =  -7"
                            "\n            bits =  16"
                            "\n        gain_ndx =  11 (15.850000)"
                            "\n             tbw =  0.0000158900"
                            "\n             fsa =  20.875"
                            "\n   sensor   make = 'Vexar'"
                            "\n           model = 'AX-21/3/INT'"
                            "\n              sn =  3000000000"
                            "\n           index =  19 (AX-21/3/INT)"
                            "\n            band = 'H'"
                            "\n            type = 'N'"
                            "\n            axis = 'Z'"
                            "\n        SeisComp = 'HNZ'"
                            "\n            freq =  900"
                            "\n            damp =  0.1"
                            "\n             vpu =  1.2 (G)"
                            "\n             fsa =  5"
                            "\n   position  Lat =  35.68"
                            "\n             Lon =  -117.35"
                            "\n             Alt =  700"
                            "\n           depth =  12.5"
                            "\n         azimuth =  65535"
                            "\n             dip =  -90"
                            "\n");
    EXPECT_EQ(dump.err, Prompt);
}

TEST(Chn_show, an_empty_channel_shows_the_first_rows_of_the_tables)
{
    CHN_T chn;
    const std::string dump = shown(Chn_show, chn).out;
    EXPECT_NE(dump.find("\n            bits =  24\n        gain_ndx =  0 (1.000000)\n"), std::string::npos);
    EXPECT_NE(dump.find("\n           index =  0 ()\n"), std::string::npos);
    EXPECT_NE(dump.find("\n             vpu =  0 (???"
                        ")\n"),
              std::string::npos);
    EXPECT_NE(dump.find("\n             ptr =  " + at(nullptr) + "\n"), std::string::npos);
}

TEST(Chn_show, letters_that_are_NUL_come_out_as_such)
{
    CHN_T chn;
    chn.set.band = '\0';
    EXPECT_NE(shown(Chn_show, chn).out.find(std::string("\n            band = '\0'\n", 24)),
              std::string::npos);
}

} // namespace
