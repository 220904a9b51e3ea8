// The ring of units, and which of them has its files open.
#include "model/unit.h"

#include "kit/ending.h"
#include "kit/stage.h"
#include "model/ring.h"
#include "output/qcc.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

std::string fd(unsigned unit)
{
    return Fd().unit(unit).packet();
}

/// The IDs once round from the current unit.
std::string ring_of(UNIT_T* current)
{
    std::string ids;
    ring_each(current, [&](const UNIT_T& u) { ids += static_cast<char>(u.unit_id); });
    return ids;
}

} // namespace

TEST(Unit_find, makes_a_unit_on_first_sight_with_its_name_in_five_digits)
{
    Stage stage;
    const UNIT_T* unit = stage.unit(fd(0x9A2F));
    EXPECT_EQ(unit->unit_id, 0x9A2F);
    EXPECT_EQ(unit->stn_name.view(), "09A2F");
    EXPECT_EQ(unit->evt, nullptr);
    EXPECT_EQ(unit->nxt, unit);
    EXPECT_EQ(unit->prv, unit);
    EXPECT_EQ(unit->ini_first, 0);
    EXPECT_EQ(unit->ini_last, -1);
    EXPECT_EQ(unit->net_name.view(), "");
    EXPECT_EQ(unit->das_type, 0);
    EXPECT_EQ(unit->log_open, 0);
    EXPECT_EQ(unit->qcc_open, 0);
    EXPECT_EQ(names(stage.scratch.tree()), "");
}

TEST(Unit_find, files_id_zero_under_FFFF)
{
    Stage stage;
    UNIT_T* unit = stage.unit(fd(0));
    EXPECT_EQ(unit->unit_id, 0xFFFF);
    EXPECT_EQ(unit->stn_name.view(), "0FFFF");
    EXPECT_EQ(stage.unit(fd(0xFFFF)), unit);
}

TEST(Unit_find, finds_every_unit_again)
{
    Stage stage;
    UNIT_T* a = stage.unit(fd('A'));
    UNIT_T* b = stage.unit(fd('B'));
    EXPECT_NE(a, b);
    EXPECT_EQ(stage.unit(fd('B')), b);
    EXPECT_EQ(stage.unit(fd('A')), a);
    EXPECT_EQ(stage.unit(fd('B')), b);
}

TEST(Unit_find, puts_a_new_unit_right_behind_the_current_one)
{
    Stage stage;
    stage.unit(fd('A'));
    stage.unit(fd('B'));
    EXPECT_EQ(ring_of(stage.unit(fd('C'))), "CAB");
    stage.unit(fd('A'));
    EXPECT_EQ(ring_of(stage.unit(fd('D'))), "DBCA");
}

TEST(Unit_find, only_the_current_units_files_are_open)
{
    Stage stage;
    Log_on = Qcc_on = 1;
    UNIT_T* a = stage.unit(fd(0xA));
    EXPECT_EQ(a->log_name, DirOut + "ID000A.vxl");
    EXPECT_EQ(a->qcc_name, DirOut + "ID000A.qcc");
    EXPECT_EQ(a->log_open + a->qcc_open, 2);
    UNIT_T* b = stage.unit(fd(0xB));
    EXPECT_EQ(a->log_open + a->qcc_open, 0);
    EXPECT_EQ(b->log_open + b->qcc_open, 2);
    stage.unit(fd(0xA));
    EXPECT_EQ(a->log_open + a->qcc_open, 2);
    EXPECT_EQ(b->log_open + b->qcc_open, 0);
}

TEST(Unit_find, without_logs_a_unit_met_again_keeps_its_statistics_file_closed)
{
    Stage stage;
    Qcc_on = 1;
    UNIT_T* a = stage.unit(fd(0xA));
    EXPECT_EQ(a->qcc_open, 1);
    UNIT_T* b = stage.unit(fd(0xB));
    stage.unit(fd(0xA));
    EXPECT_EQ(a->qcc_open, 0);
    EXPECT_EQ(b->qcc_open, 0);
    EXPECT_EQ(a->log_open, 0);
}

TEST(Unit_find, leaving_a_unit_closes_its_traces_only_when_logs_are_on)
{
    for (const bool log : {false, true}) {
        Stage stage;
        Log_on = log;
        EVT_T* evt = stage.event(Dt().unit(0xA).packet());
        CHN_T* chn = new CHN_T; // belongs to the event
        chn->evt = evt, chn->unit = evt->unit;
        chn->name = stage.scratch.path("a.sac");
        ring_join(evt->chn, chn);
        evt->chn = chn;
        ASSERT_EQ(Chn_file_open(chn, TRACE_MODE::create), 1);
        stage.unit(fd(0xB));
        EXPECT_EQ(chn->file_open, log ? 0 : 1);
    }
}

TEST(Unit_file_create, writes_a_header_behind_what_is_there)
{
    Stage stage;
    Log_on = 1;
    stage.scratch.write("ID9A2F.vxl", "old\r\n");
    UNIT_T* unit = stage.unit(fd(0x9A2F));
    out_close(unit->log_fp);
    const std::string log = stage.scratch.read("ID9A2F.vxl");
    EXPECT_TRUE(log.starts_with("old\r\nVX_SAC - Version sps16   \r\n")) << log;
    EXPECT_TRUE(log.ends_with("   Command Line : \r\n\r\n")) << log;
}

TEST(Unit_file_create, knows_two_kinds_of_files)
{
    Stage stage;
    UNIT_T* unit = stage.unit(fd(0x9A2F));
    for (const uint16_t kind : {uint16_t{2}, uint16_t{3}, uint16_t{65535}}) Unit_file_create(unit, kind);
    EXPECT_EQ(names(stage.scratch.tree()), "");
    EXPECT_EQ(unit->log_open + unit->qcc_open, 0);
    Unit_file_create(unit, UNIT_QCC);
    EXPECT_EQ(names(stage.scratch.tree()), "ID9A2F.qcc\n");
    EXPECT_EQ(unit->qcc_open, 1);
}

TEST(Unit_file_create, ends_the_run_when_the_file_cannot_be_had)
{
    Stage stage;
    stage.scratch.make_dir("ID9A2F.vxl");
    const std::string name = DirOut + "ID9A2F.vxl";
    const std::string packet = fd(0x9A2F);
    expect_ending(
        [&] {
            Log_on = 1;
            stage.unit(packet);
        },
        20, "\nFile open error for '" + name + "'");
}

TEST(Unit_file_close, knows_two_kinds_of_files)
{
    Stage stage;
    UNIT_T* unit = stage.unit(fd(0x9A2F));
    unit->log_open = unit->qcc_open = 1;
    for (const uint16_t kind : {uint16_t{2}, uint16_t{3}, uint16_t{65535}}) Unit_file_close(unit, kind);
    EXPECT_EQ(unit->log_open + unit->qcc_open, 2);
    Unit_file_close(unit, UNIT_QCC);
    EXPECT_EQ(unit->log_open, 1);
    EXPECT_EQ(unit->qcc_open, 0);
}

TEST(Unit_file_close, of_the_log_closes_the_current_events_traces_whether_the_log_is_open_or_not)
{
    Stage stage;
    EVT_T* evt = stage.event(Dt().unit(0xA).packet());
    CHN_T* chn = new CHN_T; // belongs to the event
    chn->evt = evt, chn->unit = evt->unit;
    chn->name = stage.scratch.path("a.sac");
    ring_join(evt->chn, chn);
    evt->chn = chn;
    ASSERT_EQ(Chn_file_open(chn, TRACE_MODE::create), 1);
    Unit_file_close(evt->unit, UNIT_QCC);
    EXPECT_EQ(chn->file_open, 1);
    Unit_file_close(evt->unit, UNIT_LOG);
    EXPECT_EQ(chn->file_open, 0);
    EXPECT_EQ(N_opn_fls, 0);
}

TEST(Unit_qcc_reopen, goes_on_behind_what_the_file_holds_without_a_header)
{
    Stage stage;
    Qcc_on = 1;
    UNIT_T* unit = stage.unit(fd(0x9A2F));
    unit->qcc_fp.write("one");
    Unit_file_close(unit, UNIT_QCC);
    Unit_qcc_reopen(unit);
    EXPECT_EQ(unit->qcc_open, 1);
    unit->qcc_fp.write("two");
    out_close(unit->qcc_fp);
    EXPECT_TRUE(stage.scratch.read("ID9A2F.qcc").ends_with("\r\n\r\n\r\n\r\nonetwo"));
}
