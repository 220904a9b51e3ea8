// The ring of units, and the log and QC file of each.
#include "model/unit.h"

#include "kit/ending.h"
#include "kit/stage.h"
#include "model/record/ring.h"
#include "output/sac.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

std::string fd(unsigned unit)
{
    return Fd().unit(unit).packet();
}

/// The IDs once round from the current unit.
std::string ring_of(UNIT_T& current)
{
    std::string ids;
    ring_each(&current, [&](const UNIT_T& u) { ids += static_cast<char>(u.unit_id); });
    return ids;
}

} // namespace

TEST(Unit_find, makes_a_unit_on_first_sight_with_its_name_in_five_digits)
{
    Stage stage;
    const UNIT_T& unit = stage.unit(fd(0x9A2F));
    EXPECT_EQ(unit.unit_id, 0x9A2F);
    EXPECT_EQ(unit.stn_name.view(), "09A2F");
    EXPECT_EQ(unit.evt, nullptr);
    EXPECT_EQ(unit.nxt, &unit);
    EXPECT_EQ(unit.prv, &unit);
    EXPECT_EQ(unit.ini_first, 0);
    EXPECT_EQ(unit.ini_last, -1);
    EXPECT_EQ(unit.net_name.view(), "");
    EXPECT_EQ(unit.das_type, 0);
    EXPECT_FALSE(unit.log_fp.open || unit.qcc_fp.open);
    EXPECT_FALSE(unit.qcc_open);
    EXPECT_EQ(names(stage.scratch.tree()), "");
}

TEST(Unit_find, files_id_zero_under_FFFF)
{
    Stage stage;
    UNIT_T& unit = stage.unit(fd(0));
    EXPECT_EQ(unit.unit_id, 0xFFFF);
    EXPECT_EQ(unit.stn_name.view(), "0FFFF");
    EXPECT_EQ(&stage.unit(fd(0xFFFF)), &unit);
}

TEST(Unit_find, finds_every_unit_again)
{
    Stage stage;
    UNIT_T& a = stage.unit(fd('A'));
    UNIT_T& b = stage.unit(fd('B'));
    EXPECT_NE(&a, &b);
    EXPECT_EQ(&stage.unit(fd('B')), &b);
    EXPECT_EQ(&stage.unit(fd('A')), &a);
    EXPECT_EQ(&stage.unit(fd('B')), &b);
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

TEST(Unit_find, names_a_units_files_and_opens_them_for_the_rest_of_the_run)
{
    Stage stage;
    Log_on = Qcc_on = true;
    UNIT_T& a = stage.unit(fd(0xA));
    EXPECT_EQ(a.log_name, DirOut + "ID000A.vxl");
    EXPECT_EQ(a.qcc_name, DirOut + "ID000A.qcc");
    EXPECT_TRUE(a.log_fp.open);
    EXPECT_TRUE(a.qcc_fp.open);
    UNIT_T& b = stage.unit(fd(0xB));
    stage.unit(fd(0xA));
    EXPECT_TRUE(a.log_fp.open && a.qcc_fp.open && b.log_fp.open && b.qcc_fp.open);
    EXPECT_EQ(names(stage.scratch.tree()), "ID000A.qcc\nID000A.vxl\nID000B.qcc\nID000B.vxl\n");
}

TEST(Unit_find, statistics_go_to_the_file_of_the_current_unit)
{
    Stage stage;
    Log_on = Qcc_on = true;
    const UNIT_T& a = stage.unit(fd(0xA));
    EXPECT_TRUE(a.qcc_open);
    const UNIT_T& b = stage.unit(fd(0xB));
    EXPECT_FALSE(a.qcc_open);
    EXPECT_TRUE(b.qcc_open);
    stage.unit(fd(0xA));
    EXPECT_TRUE(a.qcc_open);
    EXPECT_FALSE(b.qcc_open);
}

TEST(Unit_find, without_logs_a_unit_met_again_keeps_its_statistics_file_closed)
{
    Stage stage;
    Qcc_on = true;
    const UNIT_T& a = stage.unit(fd(0xA));
    EXPECT_TRUE(a.qcc_open);
    const UNIT_T& b = stage.unit(fd(0xB));
    EXPECT_TRUE(b.qcc_open);
    stage.unit(fd(0xA));
    EXPECT_FALSE(a.qcc_open);
    EXPECT_FALSE(b.qcc_open);
    EXPECT_EQ(names(stage.scratch.tree()), "ID000A.qcc\nID000B.qcc\n");
}

TEST(Unit_find, opens_only_the_files_that_are_switched_on)
{
    Stage stage;
    Log_on = true;
    UNIT_T& unit = stage.unit(fd(0x9A2F));
    EXPECT_TRUE(unit.log_fp.open);
    EXPECT_FALSE(unit.qcc_fp.open || unit.qcc_open);
    EXPECT_EQ(names(stage.scratch.tree()), "ID9A2F.vxl\n");
}

TEST(Unit_find, a_traces_slot_outlasts_a_change_of_units)
{
    for (const bool log : {false, true}) {
        Stage stage;
        Log_on = log;
        EVT_T& evt = stage.event(Dt().unit(0xA).packet());
        CHN_T* chn = new CHN_T; // belongs to the event
        chn->evt = &evt, chn->unit = evt.unit;
        chn->name = stage.scratch.path("a.sac");
        ring_join(evt.chn, chn);
        evt.chn = chn;
        ASSERT_TRUE(Chn_file_open(*chn));
        chn->fp.write("head");
        stage.unit(fd(0xB));
        stage.unit(fd(0xA));
        EXPECT_TRUE(chn->fp.open);
        chn->fp.write("tail");
        Chn_file_close(*chn);
        EXPECT_EQ(stage.scratch.read("a.sac"), "headtail");
    }
}

TEST(Unit_find, writes_a_logs_header_behind_what_is_there)
{
    Stage stage;
    Log_on = true;
    stage.scratch.write("ID9A2F.vxl", "old\r\n");
    UNIT_T& unit = stage.unit(fd(0x9A2F));
    out_close(unit.log_fp);
    const std::string log = stage.scratch.read("ID9A2F.vxl");
    EXPECT_TRUE(log.starts_with("old\r\nVX_SAC - Version sps16   \r\n")) << log;
    EXPECT_TRUE(log.ends_with("   Command Line : \r\n\r\n")) << log;
}

TEST(Unit_find, writes_each_files_header_once_however_often_units_change)
{
    Stage stage;
    Log_on = Qcc_on = true;
    UNIT_T& unit = stage.unit(fd(0x9A2F));
    unit.log_fp.write("one");
    unit.qcc_fp.write("one");
    stage.unit(fd(0xB));
    stage.unit(fd(0x9A2F));
    unit.log_fp.write("two");
    unit.qcc_fp.write("two");
    out_close(unit.log_fp);
    out_close(unit.qcc_fp);
    EXPECT_TRUE(stage.scratch.read("ID9A2F.vxl").ends_with("\r\n\r\nonetwo"));
    EXPECT_TRUE(stage.scratch.read("ID9A2F.qcc").ends_with("\r\n\r\n\r\n\r\nonetwo"));
}

TEST(Unit_find, ends_the_run_when_a_file_cannot_be_had)
{
    for (const bool log : {false, true}) {
        Stage stage;
        const std::string base = log ? "ID9A2F.vxl" : "ID9A2F.qcc";
        stage.scratch.make_dir(base);
        const std::string packet = fd(0x9A2F);
        expect_ending(
            [&] {
                Log_on = log;
                Qcc_on = !log;
                stage.unit(packet);
            },
            20, "\nFile open error for '" + DirOut + base + "'");
    }
}

TEST(Unit_find, ends_the_run_when_a_file_would_be_the_input)
{
    for (const std::string base : {"ID9A2F.vxl", "ID9A2F.qcc"}) {
        Stage stage;
        FileIn = stage.scratch.write(base, "packets");
        const std::string packet = fd(0x9A2F);
        expect_ending(
            [&] {
                Log_on = Qcc_on = true;
                stage.unit(packet);
            },
            20, "\nFile open error for '" + FileIn + "'");
        EXPECT_EQ(stage.scratch.read(base), "packets");
    }
}
