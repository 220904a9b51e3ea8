// The events of a unit: which one a packet belongs to, its sequence check, and its end.
#include "model/event.h"

#include "kit/stage.h"
#include "model/channel.h"
#include "model/record/ring.h"
#include "output/sac.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

/// The event numbers once round from the unit's current event.
std::vector<int> ring_of(const UNIT_T& unit)
{
    std::vector<int> numbers;
    ring_each(unit.evt, [&](const EVT_T& e) { numbers.push_back(e.evt_num); });
    return numbers;
}

Dt packet(unsigned event, unsigned seq = 0)
{
    return Dt().event(event).seq(seq);
}

/// A data packet all the way to its channel.
CHN_T& channel(Stage& stage, const Dt& dt)
{
    EVT_T& evt = stage.event(dt.packet());
    return Chn_find(evt, stage.packet(dt.packet()));
}

/// True when `second` behind `first` counts as out of sequence.
bool breaks(unsigned first, unsigned second)
{
    Stage stage;
    EVT_T& evt = stage.event(packet(7, first));
    evt.bad = false;
    EXPECT_EQ(evt.seq, first);
    EXPECT_EQ(&stage.event(packet(7, second)), &evt);
    EXPECT_EQ(evt.seq, second);
    return evt.bad;
}

} // namespace

TEST(Evt_find, header_trailer_and_data_make_an_event)
{
    for (const std::string& bytes : {Eh().event(7).packet(), Et().event(7).packet(), packet(7).packet()}) {
        Stage stage;
        const EVT_T& evt = stage.event(bytes);
        EXPECT_EQ(evt.evt_num, 7);
        EXPECT_EQ(evt.unit_id, 0x9A2F);
        EXPECT_EQ(evt.unit->evt, &evt);
        EXPECT_EQ(evt.nxt, &evt);
        EXPECT_EQ(evt.prv, &evt);
        EXPECT_EQ(evt.chn, nullptr);
        EXPECT_EQ(evt.chn_cnt, 0);
        EXPECT_EQ(evt.lo, 99);
        EXPECT_EQ(evt.hi, 0);
        EXPECT_EQ(evt.eh_seen + evt.et_seen + evt.wrap + evt.flag_bit4, 0);
        EXPECT_EQ(evt.evt_name.view(), "");
    }
}

TEST(Evt_find, an_event_of_data_alone_has_the_units_station_and_no_rate_or_times)
{
    Stage stage;
    const EVT_T& evt = stage.event(packet(7));
    EXPECT_EQ(evt.stn_name.view(), "09A2F");
    EXPECT_EQ(evt.smp_rate, 0.0F);
    for (const TIMESTR* time : {&evt.times.t_first, &evt.times.t_last, &evt.times.t_trg, &evt.times.t_detrg})
        EXPECT_TRUE(time->empty());
    EXPECT_TRUE(evt.strm_name.empty() && evt.trg_type.empty() && evt.cmnt.empty());
    EXPECT_EQ(evt.bank[0], nullptr);
    EXPECT_EQ(evt.bank[1], nullptr);
}

TEST(Evt_find, a_header_describes_its_event_and_data_do_not)
{
    Stage stage;
    const EVT_T& evt = stage.event(Eh().event(7).usual());
    EXPECT_EQ(evt.smp_rate, 100.0F);
    EXPECT_EQ(evt.trg_type.view(), "EVT ");
    EXPECT_EQ(evt.times.t_first.view(), "2004123101530250");
    EXPECT_EQ(&stage.event(packet(7)), &evt);
    EXPECT_EQ(evt.smp_rate, 100.0F);
    EXPECT_EQ(&stage.event(Et().event(7).usual().rate("50  ")), &evt);
    EXPECT_EQ(evt.smp_rate, 50.0F);
}

TEST(Evt_find, the_number_is_the_only_key)
{
    Stage stage;
    const EVT_T& evt = stage.event(packet(7).stream(0));
    EXPECT_EQ(&stage.event(packet(7).stream(1)), &evt);
    EXPECT_NE(&stage.event(packet(8).stream(0)), &evt);
    EXPECT_EQ(evt.strm, 0);
}

TEST(Evt_find, units_have_events_of_their_own)
{
    Stage stage;
    const EVT_T& a = stage.event(packet(7).unit(0xA));
    const EVT_T& b = stage.event(packet(7).unit(0xB));
    EXPECT_NE(&a, &b);
    EXPECT_EQ(&stage.event(packet(7).unit(0xA)), &a);
}

TEST(Evt_find, the_first_event_takes_stream_and_number_of_its_packet_and_is_bad_for_it)
{
    Stage stage;
    const EVT_T& first = stage.event(packet(7, 5).stream(3));
    EXPECT_EQ(first.strm, 3);
    EXPECT_EQ(first.seq, 5);
    EXPECT_TRUE(first.bad);
    const EVT_T& added = stage.event(packet(8, 6).stream(3));
    EXPECT_EQ(added.strm, 0);
    EXPECT_EQ(added.seq, 6);
    EXPECT_FALSE(added.bad);
}

TEST(Evt_find, a_first_event_that_begins_at_0_or_9999_is_not_bad)
{
    for (const unsigned seq : {0U, 9999U}) {
        Stage stage;
        EXPECT_EQ(stage.event(packet(7, seq)).bad, 0) << seq;
    }
}

TEST(Evt_find, a_packet_follows_its_predecessor_or_anything_that_0_or_9999_went_before)
{
    EXPECT_FALSE(breaks(5, 6));
    EXPECT_TRUE(breaks(5, 5));
    EXPECT_TRUE(breaks(5, 7));
    EXPECT_TRUE(breaks(5, 0));
    EXPECT_FALSE(breaks(0, 17));
    EXPECT_FALSE(breaks(9999, 0));
    EXPECT_FALSE(breaks(9999, 17));
    EXPECT_FALSE(breaks(9998, 9999));
    EXPECT_TRUE(breaks(9998, 0));
}

TEST(Evt_find, bad_stays)
{
    Stage stage;
    EVT_T& evt = stage.event(packet(7, 5));
    for (unsigned seq : {6U, 7U, 9999U, 1U}) stage.event(packet(7, seq));
    EXPECT_TRUE(evt.bad);
}

TEST(Evt_find, numbers_of_bad_digits_wrap_at_16_bits)
{
    Stage stage;
    EVT_T& evt = stage.event(packet(7).raw(14, "\xFF\xFF"));
    EXPECT_EQ(evt.seq, 16665);
    EXPECT_TRUE(evt.bad);
    stage.event(packet(7).raw(14, std::string("\xFF\x00", 2))); // 16500
    EXPECT_EQ(evt.seq, 16500);
}

TEST(Evt_find, each_event_keeps_its_own_count)
{
    Stage stage;
    Log_on = true;
    stage.event(packet(7, 0));
    stage.event(packet(8, 100));
    stage.event(packet(7, 200));
    stage.event(packet(8, 101));
    EVT_T& evt = stage.event(packet(7, 202));
    out_close(evt.unit->log_fp);
    EXPECT_TRUE(stage.scratch.read("ID9A2F.vxl")
                    .ends_with("\r\n\r\n\nBlock sequence # 202 is out of sequence in Event #7\n\n"));
}

TEST(Evt_find, without_logs_nothing_is_told)
{
    Stage stage;
    stage.event(packet(7, 5));
    EXPECT_EQ(names(stage.scratch.tree()), "");
}

TEST(Evt_find, a_new_event_joins_behind_the_current_one)
{
    Stage stage;
    const UNIT_T& unit = *stage.event(packet(1)).unit;
    stage.event(packet(2));
    stage.event(packet(3));
    EXPECT_EQ(ring_of(unit), (std::vector<int>{3, 1, 2}));
    stage.event(packet(1));
    stage.event(packet(4));
    EXPECT_EQ(ring_of(unit), (std::vector<int>{4, 2, 3, 1}));
}

TEST(Evt_find, a_change_of_events_leaves_traces_open_and_whole)
{
    Stage stage;
    CHN_T& one = channel(stage, packet(1));
    CHN_T& other = channel(stage, packet(2));
    one.fp.write("a");
    EXPECT_EQ(&channel(stage, packet(1)), &one);
    one.fp.write("b");
    EXPECT_TRUE(one.fp.open && other.fp.open);
    Chn_file_close(one);
    Chn_file_close(other);
    EXPECT_EQ(read_file(one.name).substr(632), "ab");
    EXPECT_EQ(read_file(other.name).size(), 632U);
}

TEST(Evt_remove, makes_the_predecessor_current)
{
    Stage stage;
    UNIT_T& unit = *stage.event(packet(1)).unit;
    stage.event(packet(2));
    stage.event(packet(3)); // 3 1 2
    Evt_remove(*unit.evt);
    EXPECT_EQ(ring_of(unit), (std::vector<int>{2, 1}));
    Evt_remove(*unit.evt);
    EXPECT_EQ(ring_of(unit), (std::vector<int>{1}));
    Evt_remove(*unit.evt);
    EXPECT_EQ(unit.evt, nullptr);
}

TEST(Evt_remove, makes_the_predecessor_current_also_of_an_event_that_was_not)
{
    Stage stage;
    EVT_T& first = stage.event(packet(1));
    UNIT_T& unit = *first.unit;
    stage.event(packet(2));
    stage.event(packet(3)); // 3 1 2
    Evt_remove(first);
    EXPECT_EQ(ring_of(unit), (std::vector<int>{3, 2}));
}

TEST(Evt_remove, forgets_the_number)
{
    Stage stage;
    EVT_T& evt = stage.event(packet(7, 0));
    stage.event(packet(8, 0));
    evt.smp_rate = 5;
    Evt_remove(evt);
    EXPECT_EQ(stage.event(packet(7, 0)).smp_rate, 0.0F);
}

TEST(Evt_remove, finishes_every_channels_trace)
{
    Stage stage;
    const std::string a = channel(stage, packet(1).channel(0)).name;
    const std::string b = channel(stage, packet(1).channel(1)).name;
    UNIT_T& unit = stage.unit(packet(1).packet());
    Evt_remove(*unit.evt);
    EXPECT_EQ(read_file(a).size(), 632U);
    EXPECT_EQ(read_file(b).size(), 632U);
}
