// A channel's record, packet by packet.
#include "model/channel.h"

#include "kit/expect.h"
#include "kit/stage.h"
#include "model/ring.h"
#include "output/sac.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

CHN_T* find(Stage& stage, const Dt& dt)
{
    const std::string bytes = dt.packet();
    EVT_T* evt = stage.event(bytes);
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
    ring_each(evt->chn, [&](const CHN_T& c) { numbers.push_back(c.channel); });
    return numbers;
}

} // namespace

TEST(Chn_find, makes_a_channel_from_its_first_packet)
{
    Stage stage;
    Smp_skip = 12;
    const CHN_T* chn = find(stage, packet().stream(2).channel(4).seq(9).count(100));
    EXPECT_EQ(chn->evt, chn->unit->evt);
    EXPECT_EQ(chn->evt->chn, chn);
    EXPECT_EQ(chn->evt->chn_cnt, 1);
    EXPECT_EQ(chn->unit_id, 0x9A2F);
    EXPECT_EQ(chn->event, 7);
    EXPECT_EQ(chn->stream, 2);
    EXPECT_EQ(chn->channel, 4);
    EXPECT_EQ(chn->seq, 9);
    EXPECT_EQ(chn->trash, 12U);
    EXPECT_EQ(chn->cnt, 0U);
    EXPECT_EQ(chn->last, 0U);
    EXPECT_EQ(chn->bits, 24);
    EXPECT_EQ(chn->band, ' ');
    EXPECT_EQ(chn->type, ' ');
    EXPECT_EQ(chn->type_code, 0);
    EXPECT_EQ(chn->axis, 'N');
    EXPECT_EQ(chn->min, 2147483647.0);
    EXPECT_EQ(chn->max, -2147483647.0);
    EXPECT_EQ(chn->t_first.view(), "2004123101530250");
    EXPECT_EQ(chn->t_prv.view(), "2004123101530250");
    EXPECT_EQ(chn->t_nxt.view(), "2004123101530250"); // no rate is known
    EXPECT_EQ(chn->time_tear, 0);
    EXPECT_EQ(chn->evt->t_first.view(), "2004123101530250");
    EXPECT_EQ(chn->evt->t_last.view(), "2004123101530250");
}

TEST(Chn_find, the_default_orientation_repeats_after_six_channels)
{
    Stage stage;
    std::string axes;
    for (unsigned n = 0; n < 8; ++n) axes += find(stage, packet().channel(n))->axis;
    EXPECT_EQ(axes, "ZNEZNEZN");
}

TEST(Chn_find, only_format_16_makes_a_channel_of_16_bits)
{
    Stage stage;
    EXPECT_EQ(find(stage, packet().channel(0).format(0x16))->word_bits, 16);
    unsigned n = 1;
    for (const unsigned format : {0x17U, 0x01U, 0x32U, 0x00U, 0xC0U, 0x20U})
        EXPECT_EQ(find(stage, packet().channel(n++).format(format))->word_bits, 32) << format;
    EXPECT_EQ(find(stage, packet().channel(0).format(0x32))->word_bits, 16); // the first packet's
}

TEST(Chn_find, position_comes_from_the_unit_as_it_is_then)
{
    Stage stage;
    stage.event(Eh().event(7).usual().position("S 3330.000W11815.000000123"));
    const CHN_T* chn = find(stage, packet());
    EXPECT_EQ(chn->lat, -33.5);
    EXPECT_EQ(chn->lon, -118.25);
    EXPECT_EQ(chn->alt, 123.0);
    stage.event(Eh().event(7).usual().position("N 3330.000E11815.000000124"));
    EXPECT_EQ(find(stage, packet())->lat, -33.5);
}

TEST(Chn_find, a_known_channel_moves_on)
{
    Stage stage;
    stage.event(Eh().event(7).usual())->eh_seen = 1;
    CHN_T* chn = find(stage, packet().seq(1).stream(0).count(250));
    EXPECT_EQ(chn->t_nxt.view(), "2004123101532750");
    EXPECT_EQ(find(stage, packet().at(10, 15, 32, 750).seq(2).stream(1).count(50)), chn);
    EXPECT_EQ(chn->seq, 2);
    EXPECT_EQ(chn->stream, 0);
    EXPECT_EQ(chn->t_first.view(), "2004123101530250");
    EXPECT_EQ(chn->t_prv.view(), "2004123101532750");
    EXPECT_EQ(chn->t_nxt.view(), "2004123101533250");
    EXPECT_EQ(chn->time_tear, 0);
    EXPECT_EQ(sign, 0);
    EXPECT_EQ(chn->evt->chn_cnt, 1);
}

TEST(Chn_find, a_packet_that_does_not_begin_in_time_tears_the_channel)
{
    Stage stage;
    stage.event(Eh().event(7).usual())->eh_seen = 1;
    CHN_T* chn = find(stage, packet().count(250));
    find(stage, packet().at(10, 15, 32, 751).count(250));
    EXPECT_GT(sign, 0);
    EXPECT_EQ(chn->time_tear, 1);
    find(stage, packet().at(10, 15, 35, 251).count(250));
    EXPECT_EQ(sign, 0);
    EXPECT_EQ(chn->time_tear, 1); // stays
    find(stage, packet().at(10, 15, 37, 750).count(250));
    EXPECT_LT(sign, 0);
}

TEST(Chn_find, a_new_channel_joins_behind_the_current_one)
{
    Stage stage;
    for (const unsigned n : {0U, 1U, 2U}) find(stage, packet().channel(n));
    EXPECT_EQ(ring_of(find(stage, packet().channel(0))->evt), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(ring_of(find(stage, packet().channel(3))->evt), (std::vector<int>{3, 1, 2, 0}));
}

TEST(Chn_find, the_event_learns_its_lowest_and_highest_channel)
{
    Stage stage;
    const EVT_T* evt = find(stage, packet().channel(5))->evt;
    EXPECT_EQ(evt->lo, 5);
    EXPECT_EQ(evt->hi, 5);
    find(stage, packet().channel(9));
    find(stage, packet().channel(2));
    EXPECT_EQ(evt->lo, 2);
    EXPECT_EQ(evt->hi, 9);
    EXPECT_EQ(evt->chn_cnt, 3);
}

TEST(Chn_find, the_events_first_time_is_the_earliest_first_packet)
{
    Stage stage;
    const EVT_T* evt = find(stage, packet().channel(0))->evt;
    find(stage, packet().channel(1).at(10, 15, 29, 0));
    EXPECT_EQ(evt->t_first.view(), "2004123101529000");
    find(stage, packet().channel(2).at(10, 15, 31, 0));
    find(stage, packet().channel(0).at(1, 0, 0, 0)); // not a first packet
    EXPECT_EQ(evt->t_first.view(), "2004123101529000");
    EXPECT_EQ(evt->t_last.view(), "2004123010000000");
}

TEST(Chn_find, makes_the_trace_with_a_provisional_header)
{
    Stage stage;
    CHN_T* chn = find(stage, packet());
    EXPECT_EQ(chn->file_open, 1);
    EXPECT_EQ(N_opn_fls, 1);
    EXPECT_EQ(chn->name, DirOut + "2004123101530250_09A2F_1_1.sac");
    out_close(chn->fp);
    Sac s;
    s.kstnm = "09A2F";
    EXPECT_TRUE(same_bytes(mask_run_date(read_file(chn->name)), sac_header(s)));
}

TEST(Chn_find, opens_a_closed_trace_again_without_a_header)
{
    Stage stage;
    CHN_T* chn = find(stage, packet());
    Chn_file_close(chn);
    find(stage, packet());
    EXPECT_EQ(chn->file_open, 1);
    EXPECT_EQ(N_opn_fls, 1);
    out_close(chn->fp);
    EXPECT_EQ(read_file(chn->name).size(), 632U);
}

TEST(Chn_find, makes_no_trace_when_no_samples_are_wanted)
{
    Stage stage;
    Smp_limit = 0;
    const CHN_T* chn = find(stage, packet());
    EXPECT_EQ(chn->file_open, 0);
    EXPECT_EQ(N_opn_fls, 0);
    EXPECT_EQ(chn->name, DirOut + "2004123101530250_09A2F_1_1.sac");
    EXPECT_EQ(names(stage.scratch.tree()), "");
}

TEST(Chn_find, with_33_traces_open_the_one_used_before_gives_way)
{
    Stage stage;
    std::vector<CHN_T*> channels;
    for (unsigned n = 0; n < 33; ++n) channels.push_back(find(stage, packet().channel(n)));
    EXPECT_EQ(N_opn_fls, 33);
    CHN_T* next = find(stage, packet().channel(33));
    EXPECT_EQ(N_opn_fls, 33);
    EXPECT_EQ(channels[32]->file_open, 0);
    EXPECT_EQ(next->file_open, 1);
    find(stage, packet().channel(32));
    EXPECT_EQ(channels[32]->file_open, 1);
    EXPECT_EQ(next->file_open, 0);
    EXPECT_EQ(channels[0]->file_open, 1);
}

TEST(Chn_find, a_rate_is_estimated_until_there_is_one)
{
    Stage stage;
    CHN_T* chn = find(stage, packet().count(250));
    EVT_T* evt = chn->evt;
    EXPECT_EQ(evt->smp_rate, 0.0F);
    EXPECT_EQ(evt->eh_seen, 0);
    chn->cnt = 250;
    find(stage, packet().at(10, 15, 32, 750).count(250));
    EXPECT_EQ(evt->smp_rate, 100.0F);
    EXPECT_EQ(evt->eh_seen, 1);
    EXPECT_EQ(chn->t_nxt.view(), "2004123101532750"); // still with the rate before
    chn->cnt = 1000;
    find(stage, packet().at(10, 15, 35, 250).count(250));
    EXPECT_EQ(evt->smp_rate, 100.0F);
}

TEST(Chn_find, a_header_of_the_first_bank_leaves_nothing_to_estimate)
{
    Stage stage;
    EVT_T* evt = stage.event(Eh().event(7).usual().rate("20  "));
    evt->eh_seen = 1;
    find(stage, packet());
    EXPECT_EQ(evt->smp_rate, 20.0F);
    evt->eh_seen = 0;
    find(stage, packet());
    EXPECT_EQ(evt->smp_rate, 0.0F);
}

TEST(Chn_create, takes_the_ini_file_first_and_the_header_over_it)
{
    Stage stage;
    FileIni =
        stage.scratch.write("vxu.ini", "[9A2F]\nCh1Band=H\nCh1Type=L\nCh1Axis=1\nCh1Res=16\nCh1SnsVPU=2.5\n");
    EVT_T* evt = stage.event(Eh().event(7).usual().seed(0, "B   ").sensor_vpu(0, "1500"));
    TIMESTR time;
    time.put("2004123101530250");
    CHN_T* chn = Chn_create(evt, 0, 7, 0, time);
    EXPECT_EQ(std::string({chn->band, chn->type, chn->axis}), "BL1");
    EXPECT_EQ(chn->type_code, 3);
    EXPECT_EQ(chn->bits, 16);
    EXPECT_EQ(chn->vpu, 1500.0);
    EXPECT_EQ(evt->chn, nullptr); // not yet in the ring
    EXPECT_EQ(chn->file_open, 0);
    delete chn;
}
