// From the payload of data packets to the samples of the traces, and what the logs say when a compressed
// packet contradicts itself.
#include "kit/hex_lines.h"
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

Dt packet()
{
    return Dt().event(12);
}

/// Samples of the one trace that packets of one channel make; nothing is logged but the event.
void expect_good(const Recording& middle, const std::vector<int32_t>& samples)
{
    const Converted run = convert(in_event(middle));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_bytes(samples_in(only_trace(run)), sac_samples(samples)));
    const unsigned last = static_cast<unsigned>(middle.size() / Packet_len) + 1;
    EXPECT_TRUE(same_bytes(unit_log(run), event_log("", last)));
}

/// The same when the log has something to say.
void expect_logged(const Recording& middle, const std::vector<int32_t>& samples, const std::string& log)
{
    const Converted run = convert(in_event(middle));
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_bytes(samples_in(only_trace(run)), sac_samples(samples)));
    const unsigned last = static_cast<unsigned>(middle.size() / Packet_len) + 1;
    EXPECT_TRUE(same_bytes(unit_log(run), event_log(log, last)));
}

/// What the console shows of in_event(one packet of channel 1) with `said` behind the packet's line.
std::string console_with(const Converted& run, const std::string& said)
{
    return whole_console(settings_of(run), progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") +
                                               progress_dt(2, "9A2F", 12, 1, 1) + said +
                                               progress_et(3, "9A2F", 12, 1, "EVT", "100.0000"));
}

std::string dump_of(const Dt& dt)
{
    return hex_lines(dt) + "\r\n";
}

} // namespace

TEST(Decoding, sixteen_bit_samples_are_signed_and_big_endian_in_three_formats)
{
    for (unsigned format : {0x16U, 0x17U, 0x01U}) {
        expect_good(packet().format(format).count(5).raw(
                        24, {0xFF, 0xFE, 0x7F, 0xFF, 0x80, 0x00, 0x01, 0x02, 0x00, 0x00}),
                    {-2, 32767, -32768, 258, 0});
    }
}

TEST(Decoding, thirty_two_bit_samples_are_signed_and_big_endian_in_three_formats)
{
    for (unsigned format : {0x32U, 0x33U, 0x00U}) {
        expect_good(
            packet().format(format).count(4).raw(24, {0x80, 0x00, 0x00, 0x00, 0x00, 0x01, 0x02, 0x03, 0xFF,
                                                      0xFF, 0xFF, 0xFE, 0x7F, 0xFF, 0xFF, 0xFF}),
            {INT32_MIN, 66051, -2, INT32_MAX});
    }
}

TEST(Decoding, a_count_of_600_gives_500_samples_of_16_bits)
{
    expect_good(packet().format(0x16).count(600).samples(counting(1, 500)), counting(1, 500));
}

TEST(Decoding, a_count_of_300_gives_250_samples_of_32_bits)
{
    expect_good(packet().format(0x32).count(300).samples(counting(1, 250)), counting(1, 250));
}

TEST(Decoding, a_count_of_zero_gives_no_samples)
{
    for (unsigned format : {0x16U, 0x32U}) expect_good(packet().format(format).count(0), {});
}

TEST(Decoding, samples_start_behind_the_extension_when_byte_46_tells_so_whatever_the_flags_are)
{
    const std::vector<int> four_16 = {0, 7, 0, 8, 0xFF, 0xF7, 0, 10};
    expect_good(packet().format(0x16).count(4).raw(46, "\x08").raw(64, four_16), {7, 8, -9, 10});
    expect_good(packet().format(0x16).count(4).flags(0x08).raw(46, "\x08").raw(64, four_16), {7, 8, -9, 10});
    expect_good(packet().format(0x32).count(1).raw(46, "\xFF").raw(64, {0, 0, 1, 0}), {256});
}

TEST(Decoding, samples_start_behind_the_header_when_byte_46_does_not_tell_of_an_extension)
{
    expect_good(packet().format(0x16).count(4).flags(0x08).raw(24, {0, 7, 0, 8, 0xFF, 0xF7, 0, 10}),
                {7, 8, -9, 10});
    expect_good(packet().format(0x16).count(1).flags(0x08).raw(46, "\xF7").raw(24, big_endian(7, 2)), {7});
    expect_good(packet().format(0x32).count(1).flags(0x08).raw(24, {0, 0, 1, 0}), {256});
}

TEST(Decoding, a_sample_that_stands_at_byte_46_can_be_taken_for_an_extension)
{
    // The twelfth of 16 bits has its high byte there, the sixth of 32 bits its third byte.
    std::vector<int32_t> few = counting(0, 24);
    few[11] = -5;
    expect_good(packet().format(0x16).count(3).samples(few), {20, 21, 22});
    few[11] = 0x07FF;
    expect_good(packet().format(0x16).count(3).samples(few), {0, 1, 2});
    few = counting(0, 24);
    few[5] = 0x00000800;
    expect_good(packet().format(0x32).count(3).samples(few), {10, 11, 12});
    few[5] = 0x00FF00FF;
    expect_good(packet().format(0x32).count(3).samples(few), {0, 1, 2});
}

TEST(Decoding, samples_that_would_lie_past_the_packets_end_are_zero)
{
    std::vector<int32_t> expected = counting(1, 480);
    expected.resize(500, 0);
    expect_good(packet().format(0x16).extension().count(500).samples(counting(1, 480)), expected);
    expected = counting(1, 240);
    expected.resize(250, 0);
    expect_good(packet().format(0x32).extension().count(250).samples(counting(1, 240)), expected);
}

TEST(Decoding, four_bytes_of_differences_start_at_the_first_sample)
{
    expect_good(packet().steim1(100, 102, {{1, 0x0001FF02}}).count(4), {100, 101, 100, 102});
}

TEST(Decoding, first_kind_of_compression_has_differences_of_8_16_and_32_bits_in_four_formats)
{
    for (unsigned format : {0xC0U, 0xC1U, 0x02U, 0x03U}) {
        expect_good(
            packet()
                .steim1(1000, -1999969873, {four(5, 1, -1, 127), none(), two(-1000, 30000), one(-2000000000)})
                .format(format)
                .count(7),
            {1000, 1001, 1000, 1127, 127, 30127, -1999969873});
    }
}

TEST(Decoding, a_first_difference_of_each_width_leads_to_the_first_sample)
{
    expect_good(packet().steim1(-7, -6, {two(-300, 1)}).count(2), {-7, -6});
    expect_good(packet().steim1(-7, -7, {one(INT32_MIN)}).count(1), {-7});
    expect_good(packet().steim2(-7, -6, {four(-128, 1, 0, 0)}).count(4), {-7, -6, -6, -6});
    expect_good(packet().steim2(-7, -7, {sub(2, 1, {-536870912})}).count(1), {-7});
    expect_good(packet().steim2(-7, -6, {sub(2, 2, {-16384, 1})}).count(2), {-7, -6});
    expect_good(packet().steim2(-7, -6, {sub(2, 3, {-512, 1, 0})}).count(3), {-7, -6, -6});
    expect_good(packet().steim2(-7, -6, {sub(3, 0, {-32, 1, 0, 0, 0})}).count(5), {-7, -6, -6, -6, -6});
    expect_good(packet().steim2(-7, -6, {sub(3, 1, {-16, 1, 0, 0, 0, 0})}).count(6),
                {-7, -6, -6, -6, -6, -6});
    expect_good(packet().steim2(-7, -6, {sub(3, 2, {-8, 1, 0, 0, 0, 0, 0})}).count(7),
                {-7, -6, -6, -6, -6, -6, -6});
}

TEST(Decoding, all_fifteen_frames_hold_892_differences_of_8_bits)
{
    const std::vector<Word> words(13 + 14 * 15, four(1, 1, 1, 1));
    expect_good(packet().steim1(1, 892, words).count(892), counting(1, 892));
}

TEST(Decoding, all_fifteen_frames_hold_1561_differences_of_4_bits)
{
    const std::vector<Word> words(13 + 14 * 15, sub(3, 2, {1, 1, 1, 1, 1, 1, 1}));
    expect_good(packet().steim2(1, 1561, words).count(1561), counting(1, 1561));
}

TEST(Decoding, second_kind_of_compression_has_seven_widths_in_two_formats)
{
    const std::vector<Word> words = {
        four(0, 127, -128, 1),
        sub(2, 1, {536870911}),
        sub(2, 1, {-536870912}),
        none(),
        sub(2, 2, {16383, -16384}),
        sub(2, 3, {511, -512, 1}),
        sub(3, 0, {31, -32, 1, 0, -1}),
        sub(3, 1, {15, -16, 1, -1, 0, 2}),
        sub(3, 2, {7, -8, 1, -1, 2, -2, 3}),
    };
    const std::vector<int32_t> samples = {0,  127, -1, 0,  536870911, -1, 16382, -2, 509, -3,
                                          -2, 29,  -3, -2, -2,        -3, 12,    -4, -3,  -4,
                                          -4, -2,  5,  -3, -2,        -3, -1,    -3, 0};
    for (unsigned format : {0xC2U, 0xC3U})
        expect_good(packet().steim2(0, 0, words).format(format).count(29), samples);
}

TEST(Decoding, seven_differences_of_4_bits_come_most_significant_first_below_two_spare_bits)
{
    expect_good(packet().steim2(100, 93, {sub(2, 1, {0}), {3, 0x8FFFFFFF}}).count(8),
                {100, 99, 98, 97, 96, 95, 94, 93});
    expect_good(packet().steim2(100, 93, {sub(2, 1, {0}), {3, 0xBFFFFFFF}}).count(8), // spare bits set
                {100, 99, 98, 97, 96, 95, 94, 93});
}

TEST(Decoding, the_running_value_wraps_at_32_bits)
{
    expect_good(packet().steim1(INT32_MAX, INT32_MIN, {four(0, 1, 0, 0)}).count(4),
                {INT32_MAX, INT32_MIN, INT32_MIN, INT32_MIN});
    expect_good(packet().steim1(INT32_MIN, INT32_MAX, {two(1, -1)}).count(2), {INT32_MIN, INT32_MAX});
    expect_good(packet().steim2(INT32_MAX, INT32_MIN, {sub(2, 2, {0, 1})}).count(2), {INT32_MAX, INT32_MIN});
}

TEST(Decoding, without_data_in_the_first_word_the_first_sample_is_one_difference_further)
{
    expect_good(packet().steim1(100, 105, {none(), one(5)}).count(1), {105});
}

TEST(Decoding, second_kind_starts_at_the_first_word_that_holds_data)
{
    expect_good(packet().steim2(100, 101, {none(), none(), sub(2, 2, {9, 1})}).count(2), {100, 101});
}

TEST(Decoding, a_first_frame_without_data_leaves_the_start_to_the_second)
{
    Dt second = packet().steim2(100, 104, {});
    second.word(2, 1, four(1, 1, 1, 1)).count(4);
    expect_good(second, {101, 102, 103, 104});
    Dt first = packet().steim1(100, 104, {});
    first.word(2, 1, four(1, 1, 1, 1)).count(4);
    expect_good(first, {101, 102, 103, 104});
    expect_logged(packet().steim2(100, 100, {}).count(1), {},
                  "     Read start 0x00000064  stop 0x00000064  samples 1\r\n"
                  "     Calc start 0x00000000  stop 0x00000064  samples 0\r\n" +
                      dump_of(packet().steim2(100, 100, {}).count(1)));
}

TEST(Decoding, all_frames_are_walked_whatever_the_counts_in_the_header_are)
{
    Dt dt = packet().steim1(10, 13, {four(0, 1, 1, 1)}).count(3).bytes(128);
    expect_logged(dt, {10, 11, 12, 13},
                  "     Read start 0x0000000A  stop 0x0000000D  samples 3\r\n"
                  "     Calc start 0x00000001  stop 0x0000000D  samples 4\r\n" +
                      dump_of(dt));
    dt = packet().steim2(10, 17, {four(0, 1, 1, 1)}).count(9);
    dt.word(15, 15, four(1, 1, 1, 1));
    expect_logged(dt, {10, 11, 12, 13, 14, 15, 16, 17},
                  "     Read start 0x0000000A  stop 0x00000011  samples 9\r\n"
                  "     Calc start 0x00000001  stop 0x00000011  samples 8\r\n" +
                      dump_of(dt));
}

TEST(Decoding, a_last_sample_that_is_not_the_stored_one_is_logged_with_the_last_short_difference)
{
    const Dt dt = packet().steim1(100, 999, {one(0), two(5, 7), one(10)}).count(4);
    expect_logged(dt, {100, 105, 112, 122},
                  "     Read start 0x00000064  stop 0x000003E7  samples 4\r\n"
                  "     Calc start 0x00000007  stop 0x0000007A  samples 4\r\n" +
                      dump_of(dt));
}

TEST(Decoding, second_kind_logs_the_last_difference_of_any_width)
{
    const Dt dt = packet().steim2(100, 999, {sub(2, 1, {0}), sub(2, 2, {5, 7}), sub(2, 1, {10})}).count(4);
    expect_logged(dt, {100, 105, 112, 122},
                  "     Read start 0x00000064  stop 0x000003E7  samples 4\r\n"
                  "     Calc start 0x0000000A  stop 0x0000007A  samples 4\r\n" +
                      dump_of(dt));
}

TEST(Decoding, a_mismatch_shows_32_bits_of_a_negative_first_sample)
{
    const Dt dt = packet().steim1(INT32_MIN + 1, 0, {one(-1)}).count(1);
    expect_logged(dt, {INT32_MIN + 1},
                  "     Read start 0x80000001  stop 0x00000000  samples 1\r\n"
                  "     Calc start 0xFFFFFFFF  stop 0x80000001  samples 1\r\n" +
                      dump_of(dt));
}

TEST(Decoding, the_dump_of_a_mismatch_is_the_whole_packet_whatever_its_byte_count)
{
    const Dt dt = packet().steim1(1, 2, {one(0)}).count(1).bytes(128);
    const std::string log = unit_log(convert(in_event(dt)));
    EXPECT_EQ(
        count(log, "\r\n     000   44 54 07 04 9A 2F 12 31 - 01 53 02 50 01 28 00 00   DT.../.1.S.P.(..\r\n"),
        1U);
    EXPECT_EQ(
        count(log,
              "\r\n     3F0   00 00 00 00 00 00 00 00 - 00 00 00 00 00 00 00 00   ................\r\n\r\n"),
        1U);
}

TEST(Decoding, a_packet_that_does_not_continue_the_one_before_is_logged_and_kept)
{
    const Dt first = packet().steim1(10, 13, {four(0, 1, 1, 1)}).count(4);
    const Dt good = packet().steim1(18, 21, {four(5, 1, 1, 1)}).count(4);
    expect_good(first + good, {10, 11, 12, 13, 18, 19, 20, 21});
    const Dt bad = packet().steim1(50, 53, {four(5, 1, 1, 1)}).count(4);
    const std::string said = "     Read start 0x00000032  stop 0x00000035  samples 4\r\n"
                             "     Calc start 0x0000000E  stop 0x00000035  samples 4\r\n";
    expect_logged(first + bad, {10, 11, 12, 13, 50, 51, 52, 53}, said + dump_of(bad));

    const Dt first_2 = packet().steim2(10, 13, {four(0, 1, 1, 1)}).count(4);
    const Dt good_2 = packet().steim2(18, 19, {sub(2, 2, {5, 1})}).count(2);
    expect_good(first_2 + good_2, {10, 11, 12, 13, 18, 19});
    const Dt bad_2 = packet().steim2(50, 53, {four(5, 1, 1, 1)}).count(4);
    expect_logged(first_2 + bad_2, {10, 11, 12, 13, 50, 51, 52, 53}, said + dump_of(bad_2));
}

TEST(Decoding, a_channels_first_packet_may_start_with_any_difference)
{
    expect_good(packet().steim1(1000, 1001, {two(-77, 1)}).count(2), {1000, 1001});
    expect_good(packet().steim2(1000, 1001, {sub(2, 2, {-77, 1})}).count(2), {1000, 1001});
}

TEST(Decoding, a_packet_behind_a_last_sample_of_zero_may_start_with_any_difference)
{
    expect_good(packet().steim1(-1, 0, {two(0, 1)}).count(2) + packet().steim1(50, 51, {two(7, 1)}).count(2),
                {-1, 0, 50, 51});
    expect_good(packet().steim2(-1, 0, {sub(2, 2, {0, 1})}).count(2) +
                    packet().steim2(50, 51, {sub(2, 2, {7, 1})}).count(2),
                {-1, 0, 50, 51});
}

TEST(Decoding, behind_a_mismatch_the_next_packet_is_checked_against_the_recorders_own_last_sample)
{
    const Dt bad = packet().steim1(100, 999, {two(0, 1)}).count(2);
    const std::string said = "     Read start 0x00000064  stop 0x000003E7  samples 2\r\n"
                             "     Calc start 0x00000001  stop 0x00000065  samples 2\r\n";
    const Dt follows_recorder = packet().steim1(1000, 1000, {one(1)}).count(1);
    expect_logged(bad + follows_recorder, {100, 101, 1000}, said + dump_of(bad));

    const Dt follows_decoded = packet().steim1(102, 102, {one(1)}).count(1);
    expect_logged(bad + follows_decoded, {100, 101, 102},
                  said + dump_of(bad) +
                      "     Read start 0x00000066  stop 0x00000066  samples 1\r\n"
                      "     Calc start 0x000003E8  stop 0x00000066  samples 1\r\n" +
                      dump_of(follows_decoded));
}

TEST(Decoding, packets_without_compression_leave_the_carried_value_alone)
{
    expect_good(packet().steim1(10, 13, {four(0, 1, 1, 1)}).count(4) + packet().samples({7, 8}) +
                    packet().steim1(14, 14, {one(1)}).count(1),
                {10, 11, 12, 13, 7, 8, 14});
}

TEST(Decoding, each_channel_carries_its_own_last_sample)
{
    const Recording middle = packet().channel(0).steim1(10, 10, {one(0)}).count(1) +
                             packet().channel(1).steim1(500, 500, {one(3)}).count(1) +
                             packet().channel(0).steim1(11, 11, {one(1)}).count(1);
    const Converted run = convert(in_event(middle));
    EXPECT_TRUE(same_bytes(unit_log(run), event_log("", 4)));
    EXPECT_TRUE(same_bytes(samples_in(run.file("2004123101530250_STA01_1_1.sac")), sac_samples({10, 11})));
    EXPECT_TRUE(same_bytes(samples_in(run.file("2004123101530250_STA01_1_2.sac")), sac_samples({500})));
}

TEST(Decoding, a_mismatch_stands_behind_the_packets_own_line_when_data_lines_are_on)
{
    const Dt dt = packet().steim1(1, 2, {one(0)}).count(1);
    const Converted run = convert(in_event(dt), {"-D+"});
    HeadLine line = data_line("0012", 1, 1);
    line.format = "C0";
    EXPECT_TRUE(
        same_bytes(unit_log(run), event_log(head_line(line) +
                                                "     Read start 0x00000001  stop 0x00000002  samples 1\r\n"
                                                "     Calc start 0x00000000  stop 0x00000001  samples 1\r\n" +
                                                dump_of(dt),
                                            2)));
}

TEST(Decoding, a_mismatch_without_logs_leaves_nothing_but_the_samples)
{
    const Converted run = convert(in_event(packet().steim1(1, 2, {one(0)}).count(1)), {"-L-"});
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(1, 1, 1), {1})}}));
    EXPECT_EQ(run.err, "");
}

TEST(Decoding, a_word_of_no_known_width_is_told_on_the_console_and_gives_nothing)
{
    const Converted run = convert(
        in_event(packet()
                     .steim2(100, 104, {sub(2, 1, {0}), {3, 0xC0000000}, {2, 0x3FFFFFFF}, sub(2, 1, {4})})
                     .count(2)));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_bytes(run.out, console_with(run, "Error in Steim2 W-type (3) for C=2\n"
                                                      "Error in Steim2 W-type (0) for C=2\n")));
    EXPECT_TRUE(same_bytes(samples_in(only_trace(run)), sac_samples({100, 104})));
    EXPECT_TRUE(same_bytes(unit_log(run), event_log("", 2)));
}

TEST(Decoding, a_first_word_of_no_known_width_counts_whole_as_the_first_difference)
{
    const Converted code_2 = convert(in_event(packet().steim2(100, 96, {{2, 5}, sub(2, 1, {1})}).count(1)));
    EXPECT_TRUE(same_bytes(samples_in(only_trace(code_2)), sac_samples({96})));
    EXPECT_TRUE(same_bytes(unit_log(code_2), event_log("", 2)));
    EXPECT_TRUE(same_bytes(code_2.out, console_with(code_2, "Error in Steim2 W-type (0) for C=2\n")));

    const Converted code_3 =
        convert(in_event(packet().steim2(100, 1073741925, {{3, 0xC0000000}, sub(2, 1, {1})}).count(1)));
    EXPECT_TRUE(same_bytes(samples_in(only_trace(code_3)), sac_samples({1073741925})));
    EXPECT_TRUE(same_bytes(unit_log(code_3), event_log("", 2)));
    EXPECT_TRUE(same_bytes(code_3.out, console_with(code_3, "Error in Steim2 W-type (3) for C=2\n")));
}

TEST(Decoding, a_format_that_is_not_known_adds_no_samples)
{
    const Converted alone = convert(in_event(packet().format(0x20).samples({1, 2, 3})));
    EXPECT_TRUE(same_bytes(mask_run_date(only_trace(alone)), sac_file(usual_trace(), {})));
    EXPECT_TRUE(same_bytes(alone.out, console_with(alone, "")));
    const Converted behind =
        convert(in_event(packet().samples({4, 5}) + packet().format(0x20).samples({1, 2, 3})));
    EXPECT_TRUE(same_bytes(samples_in(only_trace(behind)), sac_samples({4, 5})));
}

TEST(Decoding, formats_may_change_from_packet_to_packet)
{
    expect_good(packet().format(0x16).samples({1, -1}) + packet().format(0x32).samples({100000}) +
                    packet().steim1(5, 6, {two(0, 1)}).count(2) +
                    packet().steim2(8, 8, {sub(2, 1, {2})}).count(1),
                {1, -1, 100000, 5, 6, 8});
}
