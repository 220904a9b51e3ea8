// QC statistics: the lines of the run-wide and of the units' files, byte for byte.
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

const std::string No_event = Qc_no_event, No_samples = Qc_no_samples, Head = Qc_head;

/// A QC file behind its header.
std::string qcc_of(const Converted& run, const std::string& name)
{
    Settings s = settings_of(run);
    s.qcc_on = true;
    s.log_on = std::find(run.args.begin(), run.args.end(), "-L-") == run.args.end();
    for (const std::string& arg : run.args) {
        if (arg.starts_with("-S")) s.max_samples = arg.substr(2);
        if (arg.starts_with("-T")) s.skip_samples = arg.substr(2);
    }
    const std::string text = mask_clock(run.file(name)), header = qcc_header(s);
    if (text.starts_with(header)) return text.substr(header.size());
    ADD_FAILURE() << name
                  << " has another header: " << same_bytes(text.substr(0, header.size()), header).message();
    return text;
}

std::string unit_qcc(const Converted& run, const std::string& unit = "9A2F")
{
    return qcc_of(run, "ID" + unit + ".qcc");
}

std::string run_qcc(const Converted& run)
{
    return qcc_of(run, "rec.qcc");
}

std::string channel_line(unsigned channel, const std::string& numbers)
{
    char head[32];
    snprintf(head, sizeof head, "\r\n   Channel %2u:", channel);
    return head + numbers;
}

std::string run_line(unsigned channel, const std::string& numbers, const std::string& unit = "9A2F")
{
    char head[32];
    snprintf(head, sizeof head, "    %2u:", channel);
    return "\r\n   " + unit + head + numbers;
}

/// The numbers of a run of one event and channel, from both files, which must agree.
std::string numbers_of(const Recording& middle, const Args& args = {"-Q+"})
{
    const Converted run = convert(in_event(middle), args);
    const std::string unit = unit_qcc(run), whole = run_qcc(run);
    const std::string head = "\r\n   Channel  0:", run_head = Head + "\r\n   9A2F     0:";
    const size_t at = unit.find(head);
    if (at == unit.npos || !whole.starts_with(run_head)) {
        ADD_FAILURE() << unit << whole;
        return "";
    }
    const std::string numbers = unit.substr(at + head.size());
    EXPECT_EQ(numbers, whole.substr(run_head.size()) + "\r\n\r\n");
    return numbers.substr(0, numbers.size() - 4);
}

/// The channel numbers of the run-wide file's lines, in order.
std::vector<int> order_of(const Recording& middle)
{
    const std::string text = run_qcc(convert(in_event(middle), {"-Q+"}));
    std::vector<int> order;
    const std::string mark = "\r\n   9A2F    ";
    for (size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1))
        order.push_back(atoi(text.c_str() + at + mark.size()));
    return order;
}

Dt channel(unsigned n)
{
    return data({1, 2}).channel(n);
}

std::string no_trailer(const std::string& unit, unsigned event)
{
    char text[64];
    snprintf(text, sizeof text, "No ET block for U:%s E:%04u", unit.c_str(), event);
    return text;
}

/// The places of the given texts in another; ascending when they stand in this order.
void expect_in_order(const std::string& text, const std::vector<std::string>& pieces)
{
    size_t at = 0;
    for (const std::string& piece : pieces) {
        const size_t found = text.find(piece, at);
        EXPECT_NE(found, text.npos) << piece << " is missing or out of order in\n" << text;
        if (found != text.npos) at = found + piece.size();
        EXPECT_EQ(count(text, piece), 1U) << piece;
    }
}

} // namespace

TEST(Qcc_files, an_event_gives_a_block_of_its_channels_in_both_files)
{
    const Converted run = convert(in_event(data({1, 2, 3, 4}) + data({-7, 7}).channel(1)), {"-Q+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string first = "       1.0000       4.0000       3.0000       2.5000       1.2910";
    const std::string second = "      -7.0000       7.0000      14.0000       0.0000       9.8995";
    EXPECT_TRUE(same_bytes(unit_qcc(run), head_line(event_line("ET", "0012", 3)) + Head +
                                              channel_line(0, first) + channel_line(1, second) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + run_line(0, first) + run_line(1, second)));
    EXPECT_EQ(count(run.out, "No ET"), 0U);
}

TEST(Qcc_files, blocks_follow_each_other_event_by_event)
{
    const Converted run = convert(one_event(1, {1, 3}) + one_event(2, {5, 5}), {"-Q+"});
    const std::string good = "       1.0000       3.0000       2.0000       2.0000       1.4142";
    // Event 2 is the only one of its unit again, but its sequence numbers are 0, so it is not bad.
    const std::string same = "       5.0000       5.0000       0.0000       5.0000       0.0000";
    EXPECT_TRUE(same_bytes(unit_qcc(run), head_line(event_line("ET", "0001", 2)) + Head +
                                              channel_line(0, good) + "\r\n\r\n" +
                                              head_line(event_line("ET", "0002", 5)) + Head +
                                              channel_line(0, same) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + run_line(0, good) + Head + run_line(0, same)));
}

TEST(Qcc_files, one_sample_gives_zeros_of_eight_places)
{
    const Converted run = convert(in_event(data({4})), {"-Q+"});
    EXPECT_TRUE(same_bytes(unit_qcc(run), head_line(event_line("ET", "0012", 2)) + Head +
                                              channel_line(0, No_samples) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + run_line(0, No_samples)));
}

TEST(Qcc_files, no_sample_gives_zeros_of_eight_places)
{
    EXPECT_EQ(numbers_of(data({})), No_samples);
    EXPECT_EQ(numbers_of(data({1, 2}), {"-Q+", "-S0"}), No_samples);
}

TEST(Qcc_files, two_samples_are_divided_by_one)
{
    EXPECT_EQ(numbers_of(data({1, 3})), "       1.0000       3.0000       2.0000       2.0000       1.4142");
}

TEST(Qcc_files, equal_samples_do_not_deviate)
{
    EXPECT_EQ(numbers_of(data({7, 7, 7})),
              "       7.0000       7.0000       0.0000       7.0000       0.0000");
    // Here the sum of squares falls 872 short of the square of the sum.
    Recording middle;
    for (int i = 0; i < 5; ++i) middle += data(repeated_sample(8388607, 200)).extension();
    EXPECT_EQ(numbers_of(middle), " 8388607.0000 8388607.0000       0.0000 8388607.0000       0.0000");
}

TEST(Qcc_files, sums_are_rounded_sample_by_sample_in_the_order_of_the_file)
{
    Recording middle;
    for (int32_t from = 0; from < 10000; from += 200) {
        std::vector<int32_t> samples;
        for (int32_t i = from; i < from + 200; ++i) samples.push_back(8000000 + i % 7);
        middle += runs::data(samples).extension();
    }
    EXPECT_EQ(numbers_of(middle), " 8000000.0000 8000006.0000       6.0000 8000002.9994       0.2771");
}

TEST(Qcc_files, a_small_negative_mean_is_minus_zero)
{
    Recording middle;
    for (int i = 0; i < 200; ++i) {
        std::vector<int32_t> samples(500, 0);
        if (i == 100) samples[499] = -1;
        middle += Dt().event(12).format(0x16).samples(samples);
    }
    EXPECT_EQ(numbers_of(middle), "      -1.0000       0.0000       1.0000      -0.0000       0.0032");
}

TEST(Qcc_files, the_lowest_sample_stays_below_the_reset_value_of_the_maximum)
{
    EXPECT_EQ(numbers_of(data({INT32_MIN, INT32_MIN})),
              " -2147483648.0000 -2147483647.0000       1.0000 -2147483648.0000       0.0000");
    EXPECT_EQ(numbers_of(data({INT32_MAX, INT32_MAX})),
              " 2147483647.0000 2147483647.0000       0.0000 2147483647.0000       0.0000");
}

TEST(Qcc_files, only_samples_that_were_written_count)
{
    EXPECT_EQ(numbers_of(data({1, 2, 3, 4, 5, 6}), {"-Q+", "-S3"}),
              "       1.0000       3.0000       2.0000       2.0000       1.0000");
    EXPECT_EQ(numbers_of(data({1, 2, 3, 4, 5, 6}), {"-Q+", "-T3"}),
              "       1.0000       3.0000       2.0000       2.0000       1.0000");
}

TEST(Qcc_files, an_event_out_of_sequence_gives_zeros_of_seven_places)
{
    const Converted run =
        convert(Eh().event(12).usual().seq(5) + data({1, 2}).seq(6) + Et().event(12).usual().seq(7), {"-Q+"});
    HeadLine et = event_line("ET", "0012", 2);
    et.seq = "0007";
    EXPECT_TRUE(
        same_bytes(unit_qcc(run), head_line(et) + Head + "\r\n   Channel ---" + No_event + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + "\r\n   9A2F    ---" + No_event));
}

TEST(Qcc_files, an_event_without_channels_gives_zeros_of_seven_places)
{
    const Converted run = convert(Et().event(12).usual(), {"-Q+"});
    EXPECT_TRUE(same_bytes(unit_qcc(run), head_line(event_line("ET", "0012", 0)) + Head +
                                              "\r\n   Channel ---" + No_event + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + "\r\n   9A2F    ---" + No_event));
    EXPECT_EQ(run.sac_names().size(), 0U);
}

TEST(Qcc_files, an_event_that_the_end_of_the_input_closes_is_reported)
{
    const Converted run = convert(Eh().event(12).usual() + data({1, 3}), {"-Q+"});
    const std::string numbers = "       1.0000       3.0000       2.0000       2.0000       1.4142";
    EXPECT_TRUE(same_bytes(unit_qcc(run), "No ET block for U:9A2F E:0012\r\n" + Head +
                                              channel_line(0, numbers) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + run_line(0, numbers)));
    EXPECT_TRUE(
        ends_with(run.out, progress_dt(2, "9A2F", 12, 1, 1) + "\n" + no_trailer("9A2F", 12) + "\r\n"));
    EXPECT_TRUE(same_bytes(mask_run_date(only_trace(run)), sac_file(usual_trace(), {1, 3})));
}

TEST(Qcc_files, an_open_event_out_of_sequence_is_reported_with_zeros)
{
    const Converted run = convert(data({1, 3}).seq(5), {"-Q+"});
    EXPECT_TRUE(same_bytes(unit_qcc(run), "No ET block for U:9A2F E:0012\r\n" + Head + "\r\n   Channel ---" +
                                              No_event + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(run), Head + "\r\n   9A2F    ---" + No_event));
}

TEST(Qcc_files, an_open_event_without_channels_is_not_reported)
{
    const Converted run = convert(Eh().event(12).usual(), {"-Q+"});
    EXPECT_EQ(unit_qcc(run), "");
    EXPECT_EQ(run_qcc(run), "");
    EXPECT_EQ(count(run.out, "No ET"), 0U);
}

TEST(Qcc_files, the_lower_of_the_current_channel_and_its_successor_comes_first)
{
    EXPECT_EQ(order_of(channel(0)), (std::vector<int>{0}));
    EXPECT_EQ(order_of(channel(0) + channel(1)), (std::vector<int>{0, 1}));
    EXPECT_EQ(order_of(channel(0) + channel(1) + channel(0)), (std::vector<int>{0, 1}));
    EXPECT_EQ(order_of(channel(0) + channel(1) + channel(2) + channel(1)), (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(order_of(channel(0) + channel(1) + channel(2)), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(order_of(channel(0) + channel(1) + channel(0) + channel(2)), (std::vector<int>{1, 0, 2}));
}

TEST(Qcc_files, open_events_of_a_unit_are_reported_from_the_current_one_onward)
{
    const Recording three = Dt().event(1).samples({1, 2}) + Dt().event(2).at(1, 0, 0, 0).samples({1, 2}) +
                            Dt().event(3).at(2, 0, 0, 0).samples({1, 2});
    const Converted run = convert(three, {"-Q+"});
    const std::vector<std::string> order = {no_trailer("9A2F", 3), no_trailer("9A2F", 1),
                                            no_trailer("9A2F", 2)};
    expect_in_order(unit_qcc(run), order);
    expect_in_order(run.out, order);
}

TEST(Qcc_files, units_with_open_events_are_reported_from_the_current_one_onward)
{
    Recording recording;
    for (unsigned unit : {0xAU, 0xBU, 0xCU})
        recording += Dt().unit(unit).event(unit).samples({1, 2}).packet();
    const Converted run = convert(recording, {"-Q+"});
    expect_in_order(run.out, {no_trailer("000C", 12), no_trailer("000A", 10), no_trailer("000B", 11)});
    expect_in_order(run_qcc(run), {"\r\n   000C     0:", "\r\n   000A     0:", "\r\n   000B     0:"});
    const std::string numbers = "       1.0000       2.0000       1.0000       1.5000       0.7071";
    const std::string block = Head + channel_line(0, numbers) + "\r\n\r\n";
    EXPECT_TRUE(same_bytes(unit_qcc(run, "000A"), no_trailer("000A", 10) + "\r\n" + block));
    EXPECT_TRUE(same_bytes(unit_qcc(run, "000B"), no_trailer("000B", 11) + "\r\n" + block));
    EXPECT_TRUE(same_bytes(unit_qcc(run, "000C"), no_trailer("000C", 12) + "\r\n" + block));
}

TEST(Qcc_files, a_unit_met_again_without_logs_gets_no_text_of_its_own_but_all_else)
{
    const Recording recording = Eh().unit(0xA).event(1).usual() + Dt().unit(0xA).event(1).samples({1, 3}) +
                                Fd().unit(0xB) + Et().unit(0xA).event(1).usual() +
                                Dt().unit(0xA).event(2).at(1, 0, 0, 0).samples({5, 7});
    const Converted run = convert(recording, {"-Q+", "-L-"});
    EXPECT_EQ(run.status, 0);
    const std::string numbers = "       1.0000       3.0000       2.0000       2.0000       1.4142";
    const std::string later = "       5.0000       7.0000       2.0000       6.0000       1.4142";
    EXPECT_TRUE(
        same_bytes(run_qcc(run), Head + run_line(0, numbers, "000A") + Head + run_line(0, later, "000A")));
    // At the end of the input the file is opened once more.
    EXPECT_TRUE(same_bytes(unit_qcc(run, "000A"),
                           no_trailer("000A", 2) + "\r\n" + Head + channel_line(0, later) + "\r\n\r\n"));
    EXPECT_EQ(unit_qcc(run, "000B"), "");
    EXPECT_EQ(header_bits(run.file(Name_1_1), 1), 0x4F000000U); // the statistics were reset
    EXPECT_EQ(count(run.out, "No ET"), 1U);
}

TEST(Qcc_files, a_dropped_block_uses_up_the_mark_of_a_gap)
{
    const Recording recording = Eh().unit(0xA).event(1).usual() + Dt().unit(0xA).event(1).samples({1, 3}) +
                                Fd().unit(0xB) + Dt().unit(0xA).event(1).at(11, 0, 0, 0).samples({1, 3}) +
                                Et().unit(0xA).event(1).usual() + Nh().unit(0xA);
    const Converted run = convert(recording, {"-Q+", "-L-"});
    EXPECT_EQ(count(run_qcc(run), "\r\n\r\nNH 04:123:"), 1U) << run_qcc(run);
}

TEST(Qcc_files, the_line_of_the_trailer_shows_a_gap_when_nothing_else_was_logged)
{
    const Converted run = convert(in_event(data({1, 3}) + data({1, 3}).at(11, 0, 0, 0)), {"-Q+", "-L-"});
    EXPECT_TRUE(unit_qcc(run).starts_with("ET+04:123:10:15:30.250    X:07 U:9A2F E:0012 D:1"));
}

TEST(Qcc_files, a_network_header_stands_in_the_run_wide_file_only)
{
    const Converted run = convert(Nh().event(34) + Nt().event(34) + one_event(1, {1, 3}), {"-Q+"});
    const std::string numbers = "       1.0000       3.0000       2.0000       2.0000       1.4142";
    EXPECT_TRUE(same_bytes(run_qcc(run), "\r\n\r\n" + head_line(event_line("NH", "0034", 0)) + Head + Head +
                                             run_line(0, numbers)));
    EXPECT_TRUE(unit_qcc(run).starts_with(head_line(event_line("ET", "0001", 4)) + Head));
}

TEST(Qcc_files, a_second_run_writes_behind_the_units_first_and_over_the_run_wide_file)
{
    const Converted first = convert(one_event(1, {1, 3}), {"-Q+"});
    const Converted second = convert_again(first, one_event(1, {5, 7}), {"-Q+"});
    EXPECT_TRUE(second.file("ID9A2F.qcc").starts_with(first.file("ID9A2F.qcc")));
    const std::string behind = second.file("ID9A2F.qcc").substr(first.file("ID9A2F.qcc").size());
    const std::string numbers = "       5.0000       7.0000       2.0000       6.0000       1.4142";
    Settings s = settings_of(second);
    s.qcc_on = true;
    EXPECT_TRUE(same_bytes(mask_clock(behind), qcc_header(s) + head_line(event_line("ET", "0001", 2)) + Head +
                                                   channel_line(0, numbers) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(run_qcc(second), Head + run_line(0, numbers)));
}

TEST(Qcc_files, a_trailer_of_the_second_bank_stores_nothing)
{
    const Converted run =
        convert(Eh().event(12).usual() + data({1, 3}) + Et().event(12).usual().second_bank() + data({5}) +
                    Et().event(12).usual(),
                {"-Q+"});
    EXPECT_TRUE(
        same_bytes(run_qcc(run),
                   Head + run_line(0, "       1.0000       5.0000       4.0000       3.0000       2.0000")));
}

TEST(Qcc_files, channel_numbers_count_from_zero)
{
    const std::string text = run_qcc(convert(in_event(channel(11)), {"-Q+"}));
    EXPECT_TRUE(text.starts_with(Head + "\r\n   9A2F    11:")) << text;
}
