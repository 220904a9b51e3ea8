// A channel's record, packet by packet.
#include "model/channel.h"

#include "kit/expect.h"
#include "kit/stage.h"
#include "model/record/ring.h"
#include "output/sac.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

CHN_T& find(Stage& stage, const Dt& dt)
{
    const std::string bytes = dt.packet();
    EVT_T& evt = stage.event(bytes);
    return Chn_find(evt, stage.packet(bytes));
}

Dt packet()
{
    return Dt().event(7);
}

/// The channel numbers once round from the event's current channel.
std::vector<int> ring_of(const EVT_T* evt)
{
    std::vector<int> numbers;
    ring_each(evt->chn, [&](const CHN_T& c) { numbers.push_back(c.id.channel); });
    return numbers;
}

} // namespace

TEST(Chn_find, makes_a_channel_from_its_first_packet)
{
    Stage stage;
    Smp_skip = 12;
    const CHN_T& chn = find(stage, packet().stream(2).channel(4).seq(9).count(100));
    EXPECT_EQ(chn.evt, chn.unit->evt);
    EXPECT_EQ(chn.evt->chn, &chn);
    EXPECT_EQ(chn.evt->chn_cnt, 1);
    EXPECT_EQ(chn.id.unit_id, 0x9A2F);
    EXPECT_EQ(chn.id.event, 7);
    EXPECT_EQ(chn.id.stream, 2);
    EXPECT_EQ(chn.id.channel, 4);
    EXPECT_EQ(chn.seq, 9);
    EXPECT_EQ(chn.trash, 12U);
    EXPECT_EQ(chn.cnt, 0U);
    EXPECT_EQ(chn.last, 0U);
    EXPECT_EQ(chn.set.bits, 24);
    EXPECT_EQ(chn.set.band, ' ');
    EXPECT_EQ(chn.set.type, ' ');
    EXPECT_EQ(chn.set.type_code, 0);
    EXPECT_EQ(chn.set.axis, 'N');
    EXPECT_EQ(chn.stats.min, 2147483647.0);
    EXPECT_EQ(chn.stats.max, -2147483647.0);
    EXPECT_EQ(chn.times.t_first.view(), "2004123101530250");
    EXPECT_EQ(chn.times.t_prv.view(), "2004123101530250");
    EXPECT_EQ(chn.times.t_nxt.view(), "2004123101530250"); // no rate is known
    EXPECT_FALSE(chn.time_tear);
    EXPECT_EQ(chn.evt->times.t_first.view(), "2004123101530250");
    EXPECT_EQ(chn.evt->times.t_last.view(), "2004123101530250");
}

TEST(Chn_find, the_default_orientation_repeats_after_six_channels)
{
    Stage stage;
    std::string axes;
    for (unsigned n = 0; n < 8; ++n) axes += find(stage, packet().channel(n)).set.axis;
    EXPECT_EQ(axes, "ZNEZNEZN");
}

TEST(Chn_find, only_format_16_makes_a_channel_of_16_bits)
{
    Stage stage;
    EXPECT_EQ(find(stage, packet().channel(0).format(0x16)).word_bits, 16);
    unsigned n = 1;
    for (const unsigned format : {0x17U, 0x01U, 0x32U, 0x00U, 0xC0U, 0x20U})
        EXPECT_EQ(find(stage, packet().channel(n++).format(format)).word_bits, 32) << format;
    EXPECT_EQ(find(stage, packet().channel(0).format(0x32)).word_bits, 16); // the first packet's
}

TEST(Chn_find, position_comes_from_the_unit_as_it_is_then)
{
    Stage stage;
    stage.event(Eh().event(7).usual().position("S 3330.000W11815.000000123"));
    const CHN_T& chn = find(stage, packet());
    EXPECT_EQ(chn.position.lat, -33.5);
    EXPECT_EQ(chn.position.lon, -118.25);
    EXPECT_EQ(chn.position.alt, 123.0);
    stage.event(Eh().event(7).usual().position("N 3330.000E11815.000000124"));
    EXPECT_EQ(find(stage, packet()).position.lat, -33.5);
}

TEST(Chn_find, a_known_channel_moves_on)
{
    Stage stage;
    stage.event(Eh().event(7).usual()).eh_seen = true;
    CHN_T& chn = find(stage, packet().seq(1).stream(0).count(250));
    EXPECT_EQ(chn.times.t_nxt.view(), "2004123101532750");
    EXPECT_EQ(&find(stage, packet().at(10, 15, 32, 750).seq(2).stream(1).count(50)), &chn);
    EXPECT_EQ(chn.seq, 2);
    EXPECT_EQ(chn.id.stream, 0);
    EXPECT_EQ(chn.times.t_first.view(), "2004123101530250");
    EXPECT_EQ(chn.times.t_prv.view(), "2004123101532750");
    EXPECT_EQ(chn.times.t_nxt.view(), "2004123101533250");
    EXPECT_FALSE(chn.time_tear);
    EXPECT_EQ(take_mark(), ' ');
    EXPECT_EQ(chn.evt->chn_cnt, 1);
}

TEST(Chn_find, a_packet_that_does_not_begin_in_time_tears_the_channel)
{
    Stage stage;
    stage.event(Eh().event(7).usual()).eh_seen = true;
    CHN_T& chn = find(stage, packet().count(250));
    find(stage, packet().at(10, 15, 32, 751).count(250));
    EXPECT_EQ(take_mark(), '+');
    EXPECT_TRUE(chn.time_tear);
    find(stage, packet().at(10, 15, 35, 251).count(250));
    EXPECT_EQ(take_mark(), ' ');
    EXPECT_TRUE(chn.time_tear); // stays
    find(stage, packet().at(10, 15, 37, 750).count(250));
    EXPECT_EQ(take_mark(), '-');
}

TEST(Chn_find, a_new_channel_joins_behind_the_current_one)
{
    Stage stage;
    for (const unsigned n : {0U, 1U, 2U}) find(stage, packet().channel(n));
    EXPECT_EQ(ring_of(find(stage, packet().channel(0)).evt), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(ring_of(find(stage, packet().channel(3)).evt), (std::vector<int>{3, 1, 2, 0}));
}

TEST(Chn_find, the_event_learns_its_lowest_and_highest_channel)
{
    Stage stage;
    const EVT_T& evt = *find(stage, packet().channel(5)).evt;
    EXPECT_EQ(evt.lo, 5);
    EXPECT_EQ(evt.hi, 5);
    find(stage, packet().channel(9));
    find(stage, packet().channel(2));
    EXPECT_EQ(evt.lo, 2);
    EXPECT_EQ(evt.hi, 9);
    EXPECT_EQ(evt.chn_cnt, 3);
}

TEST(Chn_find, the_events_first_time_is_the_earliest_first_packet)
{
    Stage stage;
    const EVT_T& evt = *find(stage, packet().channel(0)).evt;
    find(stage, packet().channel(1).at(10, 15, 29, 0));
    EXPECT_EQ(evt.times.t_first.view(), "2004123101529000");
    find(stage, packet().channel(2).at(10, 15, 31, 0));
    find(stage, packet().channel(0).at(1, 0, 0, 0)); // not a first packet
    EXPECT_EQ(evt.times.t_first.view(), "2004123101529000");
    EXPECT_EQ(evt.times.t_last.view(), "2004123010000000");
}

TEST(Chn_find, makes_the_trace_with_a_provisional_header)
{
    Stage stage;
    CHN_T& chn = find(stage, packet());
    EXPECT_TRUE(chn.fp.open);
    EXPECT_EQ(chn.name, DirOut + "2004123101530250_09A2F_1_1.sac");
    out_close(chn.fp);
    Sac s;
    s.kstnm = "09A2F";
    EXPECT_TRUE(same_bytes(mask_run_date(read_file(chn.name)), sac_header(s)));
}

TEST(Chn_find, leaves_any_number_of_traces_open_with_one_header_each)
{
    Stage stage;
    std::vector<CHN_T*> channels;
    for (unsigned n = 0; n < 40; ++n) channels.push_back(&find(stage, packet().channel(n)));
    for (unsigned n = 0; n < 40; ++n) EXPECT_EQ(&find(stage, packet().channel(n)), channels[n]);
    for (CHN_T* chn : channels) {
        EXPECT_TRUE(chn->fp.open);
        Chn_file_close(*chn);
        EXPECT_EQ(read_file(chn->name).size(), 632U);
    }
}

TEST(Chn_find, makes_the_trace_anew_under_the_next_name_when_its_own_is_taken_meanwhile)
{
    Stage stage;
    Smp_limit = 0; // the first packet names the trace and makes none
    CHN_T& chn = find(stage, packet());
    EXPECT_EQ(chn.name, DirOut + "2004123101530250_09A2F_1_1.sac");
    stage.scratch.write("2004123101530250_09A2F_1_1.sac", "someone else's");
    Smp_limit = 100;
    find(stage, packet());
    EXPECT_EQ(chn.name, DirOut + "2004123101530250_09A2F_1A1.sac");
    Chn_file_close(chn);
    EXPECT_EQ(stage.scratch.read("2004123101530250_09A2F_1A1.sac").size(), 632U);
    EXPECT_EQ(stage.scratch.read("2004123101530250_09A2F_1_1.sac"), "someone else's");
}

TEST(Chn_find, makes_no_trace_when_no_samples_are_wanted)
{
    Stage stage;
    Smp_limit = 0;
    const CHN_T& chn = find(stage, packet());
    EXPECT_FALSE(chn.fp.open);
    EXPECT_EQ(chn.name, DirOut + "2004123101530250_09A2F_1_1.sac");
    EXPECT_EQ(names(stage.scratch.tree()), "");
}

TEST(Chn_find, a_rate_is_estimated_until_there_is_one)
{
    Stage stage;
    CHN_T& chn = find(stage, packet().count(250));
    EVT_T& evt = *chn.evt;
    EXPECT_EQ(evt.smp_rate, 0.0F);
    EXPECT_FALSE(evt.eh_seen);
    chn.cnt = 250;
    find(stage, packet().at(10, 15, 32, 750).count(250));
    EXPECT_EQ(evt.smp_rate, 100.0F);
    EXPECT_TRUE(evt.eh_seen);
    EXPECT_EQ(chn.times.t_nxt.view(), "2004123101532750"); // still with the rate before
    chn.cnt = 1000;
    find(stage, packet().at(10, 15, 35, 250).count(250));
    EXPECT_EQ(evt.smp_rate, 100.0F);
}

TEST(Chn_find, a_header_of_the_first_bank_leaves_nothing_to_estimate)
{
    Stage stage;
    EVT_T& evt = stage.event(Eh().event(7).usual().rate("20  "));
    evt.eh_seen = true;
    find(stage, packet());
    EXPECT_EQ(evt.smp_rate, 20.0F);
    evt.eh_seen = false;
    find(stage, packet());
    EXPECT_EQ(evt.smp_rate, 0.0F);
}

TEST(Chn_create, takes_the_ini_file_first_and_the_header_over_it)
{
    Stage stage;
    FileIni =
        stage.scratch.write("vxu.ini", "[9A2F]\nCh1Band=H\nCh1Type=L\nCh1Axis=1\nCh1Res=16\nCh1SnsVPU=2.5\n");
    EVT_T& evt = stage.event(Eh().event(7).usual().seed(0, "B   ").sensor_vpu(0, "1500"));
    const std::unique_ptr<CHN_T> made(Chn_create(evt, stage.packet(packet().packet())));
    const CHN_T& chn = *made;
    EXPECT_EQ(std::string({chn.set.band, chn.set.type, chn.set.axis}), "BL1");
    EXPECT_EQ(chn.set.type_code, 3);
    EXPECT_EQ(chn.set.bits, 16);
    EXPECT_EQ(chn.set.vpu, 1500.0);
    EXPECT_EQ(chn.times.t_first.view(), "2004123101530250");
    EXPECT_EQ(evt.chn, nullptr); // not yet in the ring
    EXPECT_FALSE(chn.fp.open);
    EXPECT_FALSE(stage.scratch.exists("2004123101530250_STA01_1_1.sac"));
}
