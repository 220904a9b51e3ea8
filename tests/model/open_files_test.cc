// Which traces count as open, and who gives way.
#include "model/open_files.h"

#include "kit/stage.h"
#include "model/ring.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace kit;

namespace {

/// Channels of one event in a ring, the first one current. Their traces count as made already.
struct Traces {
    explicit Traces(size_t n) : channels(n)
    {
        for (size_t i = 0; i < n; ++i) {
            ring_join(i ? &channels[i - 1] : nullptr, &channels[i]);
            channels[i].file_made = 1;
        }
        evt.chn = n ? &channels[0] : nullptr;
    }
    void open(size_t from, size_t to)
    {
        for (size_t i = from; i < to; ++i) EXPECT_EQ(Chn_file_open(&channels[i], TRACE_MODE::append), 1);
    }
    /// The numbers of the channels that are closed.
    std::vector<size_t> closed() const
    {
        std::vector<size_t> list;
        for (size_t i = 0; i < channels.size(); ++i) {
            if (!channels[i].file_open) list.push_back(i);
        }
        return list;
    }
    std::vector<CHN_T> channels;
    EVT_T evt;
};

} // namespace

TEST(Chn_file_open, makes_the_trace_and_counts_it)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.path("a.sac");
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::create), 1);
    EXPECT_EQ(chn.file_open, 1);
    EXPECT_EQ(chn.file_made, 1);
    EXPECT_EQ(N_opn_fls, 1);
    EXPECT_TRUE(stage.scratch.exists("a.sac"));
    out_close(chn.fp);
}

TEST(Chn_file_open, does_nothing_to_an_open_trace)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.path("a.sac");
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::create), 1);
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::create), 1);
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::append), 1);
    EXPECT_EQ(N_opn_fls, 1);
    out_close(chn.fp);
}

TEST(Chn_file_open, refuses_a_name_that_is_taken_at_once)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.write("a.sac", "someone else's");
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::create), 0);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(chn.file_open, 0);
    EXPECT_EQ(N_opn_fls, 0);
    EXPECT_EQ(stage.scratch.read("a.sac"), "someone else's");
}

TEST(Chn_file_open, goes_on_behind_what_this_run_wrote)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.path("a.sac");
    ASSERT_EQ(Chn_file_open(&chn, TRACE_MODE::create), 1);
    chn.fp.write("head");
    Chn_file_close(&chn);
    ASSERT_EQ(Chn_file_open(&chn, TRACE_MODE::append), 1);
    chn.fp.write("tail");
    out_close(chn.fp);
    EXPECT_EQ(stage.scratch.read("a.sac"), "headtail");
}

TEST(Chn_file_open, has_nothing_to_append_to_when_no_trace_was_made)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.write("a.sac", "someone else's");
    EXPECT_EQ(Chn_file_open(&chn, TRACE_MODE::append), 0);
    EXPECT_EQ(N_opn_fls, 0);
}

TEST(Chn_file_close, counts_each_open_trace_once_and_never_below_zero)
{
    Stage stage;
    Traces traces(2);
    traces.open(0, 2);
    EXPECT_EQ(N_opn_fls, 2);
    Chn_file_close(&traces.channels[0]);
    Chn_file_close(&traces.channels[0]);
    EXPECT_EQ(N_opn_fls, 1);
    EXPECT_EQ(traces.closed(), std::vector<size_t>{0});
    N_opn_fls = 0;
    Chn_file_close(&traces.channels[1]);
    EXPECT_EQ(N_opn_fls, 0);
    EXPECT_EQ(traces.channels[1].file_open, 0);
}

TEST(Evt_close_files, closes_every_open_trace_of_the_event)
{
    Stage stage;
    Traces traces(4), others(1);
    others.open(0, 1);
    traces.open(1, 3);
    Evt_close_files(&traces.evt);
    EXPECT_EQ(traces.closed().size(), 4U);
    EXPECT_EQ(N_opn_fls, 1);
    EXPECT_EQ(others.channels[0].file_open, 1);
}

TEST(Evt_close_files, passes_over_no_event_and_no_channels)
{
    Stage stage;
    Traces none(0);
    Evt_close_files(nullptr);
    Evt_close_files(&none.evt);
    EXPECT_EQ(N_opn_fls, 0);
}

TEST(make_room, closes_nothing_while_32_or_fewer_are_open)
{
    Stage stage;
    Traces traces(40);
    traces.open(0, 32);
    make_room(&traces.channels[31], &traces.channels[39]);
    EXPECT_EQ(N_opn_fls, 32);
}

TEST(make_room, closes_the_first_open_trace_backward_and_no_other)
{
    Stage stage;
    Traces traces(40);
    traces.open(0, 33);
    make_room(&traces.channels[35], &traces.channels[39]); // 35, 34 and 33 are closed already
    EXPECT_EQ(traces.closed(), (std::vector<size_t>{32, 33, 34, 35, 36, 37, 38, 39}));
    EXPECT_EQ(N_opn_fls, 32);
}

TEST(make_room, begins_with_the_current_channel_itself)
{
    Stage stage;
    Traces traces(34);
    traces.open(0, 33);
    make_room(&traces.channels[5], &traces.channels[33]);
    EXPECT_EQ(traces.closed(), (std::vector<size_t>{5, 33}));
}

TEST(make_room, goes_on_round_the_ring_behind_its_first_member)
{
    Stage stage;
    Traces traces(36), others(1);
    traces.open(3, 36);
    others.open(0, 1);
    make_room(&traces.channels[2], &traces.channels[0]); // 2, 1: closed; 0 is the one at hand
    EXPECT_EQ(N_opn_fls, 34);
    make_room(&traces.channels[2], &traces.channels[34]); // 2, 1, 0, 35
    EXPECT_EQ(traces.closed(), (std::vector<size_t>{0, 1, 2, 35}));
    EXPECT_EQ(others.channels[0].file_open, 1);
}

TEST(make_room, closes_nothing_when_no_channel_was_current_or_it_is_the_one_at_hand)
{
    Stage stage;
    Traces traces(34);
    traces.open(0, 34);
    make_room(nullptr, &traces.channels[0]);
    make_room(&traces.channels[7], &traces.channels[7]);
    EXPECT_EQ(N_opn_fls, 34);
}
