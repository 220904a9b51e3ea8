// The running statistics of a channel, and what an event's block says of them.
#include "output/qcc.h"

#include "kit/ending.h"
#include "kit/expect.h"
#include "kit/stage.h"
#include "model/record/ring.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

const std::string Head =
    "\r\n                        Min          Max        Range         Mean       St Dev";

/// An event with channels of these numbers in the ring, the first one current, and both QC files.
struct Block {
    explicit Block(Stage& stage, const std::vector<unsigned>& numbers)
        : channels(numbers.size()), run_name(stage.scratch.path("run"))
    {
        unit.unit_id = evt.unit_id = 0x9A2F;
        unit.qcc_name = stage.scratch.path("unit");
        unit.qcc_open = true;
        evt.unit = &unit;
        evt.evt_num = 7;
        for (size_t i = 0; i < numbers.size(); ++i) {
            channels[i].id.channel = static_cast<uint16_t>(numbers[i]);
            Qcc_init(channels[i]);
            ring_join(i ? &channels[i - 1] : nullptr, &channels[i]);
        }
        evt.chn = numbers.empty() ? nullptr : &channels[0];
        EXPECT_TRUE(out_open(FdQcc, run_name.c_str(), OUT_MODE::truncate, log_lost));
        EXPECT_TRUE(out_open(unit.qcc_fp, unit.qcc_name.c_str(), OUT_MODE::truncate, log_lost));
    }
    /// Two samples, -1 and 1.
    void fill(size_t i)
    {
        CHN_T& c = channels[i];
        c.cnt = 2;
        c.stats = {.sum = 0, .sq_sum = 2, .min = -1, .max = 1, .min_ndx = 1, .max_ndx = 2};
    }
    void store_with(const PACKET& trailer) { store(&trailer); }
    void store_without_trailer() { store(nullptr); }

    UNIT_T unit;
    EVT_T evt;
    std::vector<CHN_T> channels;
    std::string run_name, of_run, of_unit;

private:
    void store(const PACKET* trailer)
    {
        Qcc_store(unit, evt, trailer);
        out_close(FdQcc);
        out_close(unit.qcc_fp);
        of_run = read_file(run_name);
        of_unit = read_file(unit.qcc_name);
    }
};

const std::string Two = "      -1.0000       1.0000       2.0000       0.0000       1.4142";

std::string trailer()
{
    return Et().event(7).packet();
}

} // namespace

TEST(Qcc_init, resets_sums_and_extremes_but_not_the_count)
{
    CHN_T chn;
    chn.stats = {.sum = 1, .sq_sum = 2, .min = 3, .max = 4, .min_ndx = 5, .max_ndx = 6};
    chn.cnt = 7;
    Qcc_init(chn);
    EXPECT_EQ(chn.stats.sum, 0.0);
    EXPECT_EQ(chn.stats.sq_sum, 0.0);
    EXPECT_EQ(chn.stats.min, 2147483647.0);
    EXPECT_EQ(chn.stats.max, -2147483647.0);
    EXPECT_EQ(chn.stats.min_ndx, 0U);
    EXPECT_EQ(chn.stats.max_ndx, 0U);
    EXPECT_EQ(chn.cnt, 7U);
}

TEST(Qcc_store, resets_the_channels_it_shows_numbers_of)
{
    Stage stage;
    Block block(stage, {0, 1});
    block.fill(0);
    block.channels[1].cnt = 1;
    block.channels[1].stats = {.sum = 5, .min = 5, .max = 5};
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.channels[0].cnt, 2U);
    EXPECT_EQ(block.channels[0].stats.sq_sum, 0.0);
    EXPECT_EQ(block.channels[0].stats.min, 2147483647.0);
    EXPECT_EQ(block.channels[1].stats.sum, 5.0);
    EXPECT_EQ(block.channels[1].stats.min, 5.0);
}

TEST(Qcc_store, makes_the_lower_of_two_neighbours_the_current_channel)
{
    Stage stage;
    Block block(stage, {3, 1, 2});
    for (size_t i = 0; i < 3; ++i) block.fill(i);
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.evt.chn, &block.channels[1]);
    EXPECT_EQ(block.of_run,
              Head + "\r\n   9A2F     1:" + Two + "\r\n   9A2F     2:" + Two + "\r\n   9A2F     3:" + Two);

    Stage another;
    Block ordered(another, {1, 3, 0});
    ordered.store_with(another.packet(trailer()));
    EXPECT_EQ(ordered.evt.chn, &ordered.channels[0]);
}

TEST(Qcc_store, a_bad_event_is_left_as_it_is)
{
    Stage stage;
    Block block(stage, {3, 1});
    block.fill(0);
    block.evt.bad = true;
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.channels[0].stats.sq_sum, 2.0);
    EXPECT_EQ(block.evt.chn, &block.channels[0]);
    EXPECT_EQ(block.of_run,
              Head + "\r\n   9A2F    --- 0000000.0000 0000000.0000 0000000.0000 0000000.0000 0000000.0000");
}

TEST(Qcc_store, says_that_no_trailer_came_and_leaves_the_mark_to_the_next_line)
{
    Stage stage;
    Block block(stage, {0});
    block.fill(0);
    mark_continuity(1);
    EXPECT_EQ(shown_by([&] { block.store_without_trailer(); }), "\nNo ET block for U:9A2F E:0007");
    EXPECT_EQ(block.of_unit,
              "No ET block for U:9A2F E:0007\r\n" + Head + "\r\n   Channel  0:" + Two + "\r\n\r\n");
    EXPECT_EQ(take_mark(), '+'); // no line was written that could show it
}

TEST(Qcc_store, a_trailers_line_shows_and_clears_the_mark)
{
    Stage stage;
    Block block(stage, {});
    mark_continuity(-1);
    block.store_with(stage.packet(trailer()));
    EXPECT_TRUE(block.of_unit.starts_with("ET-04:123:10:15:30.250    X:07 U:9A2F E:0007 ")) << block.of_unit;
    EXPECT_EQ(take_mark(), ' ');
}

TEST(Qcc_store, without_the_units_file_all_else_is_done)
{
    Stage stage;
    Block block(stage, {0});
    block.fill(0);
    block.unit.qcc_open = false;
    mark_continuity(1);
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.of_unit, "");
    EXPECT_EQ(block.of_run, Head + "\r\n   9A2F     0:" + Two);
    EXPECT_EQ(block.channels[0].stats.sq_sum, 0.0);
    EXPECT_EQ(take_mark(), ' ');
}

TEST(Qcc_store, without_the_units_file_a_missing_trailer_is_told_on_the_console_alone)
{
    Stage stage;
    Block block(stage, {0});
    block.fill(0);
    block.unit.qcc_open = false;
    EXPECT_EQ(shown_by([&] { block.store_without_trailer(); }), "\nNo ET block for U:9A2F E:0007");
    EXPECT_EQ(block.of_unit, "");
    EXPECT_EQ(block.of_run, Head + "\r\n   9A2F     0:" + Two);
}

TEST(Qcc_store, a_variance_below_zero_counts_as_zero)
{
    Stage stage;
    Block block(stage, {0});
    block.fill(0);
    block.channels[0].stats.sum = 3;
    block.channels[0].stats.sq_sum = 4.499999;
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.of_run,
              Head + "\r\n   9A2F     0:      -1.0000       1.0000       2.0000       1.5000       0.0000");
}

TEST(Qcc_store, numbers_wider_than_their_column_push_the_others_on)
{
    Stage stage;
    Block block(stage, {0});
    block.fill(0);
    block.channels[0].stats.min = -2147483648.0;
    block.channels[0].stats.max = 2147483647.0;
    block.channels[0].stats.sum = -1;
    block.channels[0].stats.sq_sum = 9223372032559808512.0;
    block.store_with(stage.packet(trailer()));
    EXPECT_EQ(block.of_run, Head + "\r\n   9A2F     0: -2147483648.0000 2147483647.0000 4294967295.0000"
                                   "      -0.5000 3037000499.2689");
}

TEST(Qcc_fhdr, is_the_header_of_the_logs_and_two_line_ends)
{
    Stage stage;
    Cmd_line = "vx_sac rec.pkt";
    const std::string log = written_by([](OUT_FILE& f) { Log_fhdr(f); });
    EXPECT_EQ(written_by([](OUT_FILE& f) { Qcc_fhdr(f); }), log + "\r\n\r\n");
    EXPECT_TRUE(log.ends_with("   Command Line : vx_sac rec.pkt\r\n\r\n"));
}
