// The packet logs: one line per packet, continuity marks, state-of-health texts, unchecked digits.
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

Recording unknown(int times)
{
    Recording all;
    for (int i = 0; i < times; ++i) all += Params("XX").packet();
    return all;
}

/// What the unit's log says of one SH packet behind its line.
std::string health_text(const Sh& sh)
{
    const Converted run = convert(sh);
    EXPECT_EQ(run.status, 0);
    const std::string log = unit_log(run), line = run_log(run);
    EXPECT_TRUE(log.starts_with(line)) << log;
    return log.substr(line.size());
}

/// The only line of the run-wide log.
std::string line_of(const Recording& packet)
{
    return run_log(convert(packet));
}

} // namespace

TEST(Logs, a_data_packets_line_has_every_field_at_its_place)
{
    EXPECT_EQ(line_of(unknown(41) + Dt().seq(5).event(12).channel(2).count(250)),
              "DT 04:123:10:15:30.250000 X:07 U:9A2F E:0012 D:1 C:3 S:0250 F:32 G:00 L:1024 N:0005 "
              "B:0000000041\r\n");
}

TEST(Logs, an_event_headers_line_has_blanks_for_channel_and_samples)
{
    const std::string rest =
        "04:123:10:15:30.250    X:07 U:9A2F E:0012 D:2            F:00 G:04 L:1024 N:0000 "
        "B:0000000000\r\n";
    EXPECT_EQ(line_of(Eh().event(12).stream(1).flags(4)), "EH " + rest);
    EXPECT_EQ(line_of(Et().event(12).stream(1).flags(4)), "ET " + rest);
    EXPECT_EQ(line_of(Nh().event(12).stream(1).flags(4)), "NH " + rest);
    EXPECT_EQ(line_of(Nt().event(12).stream(1).flags(4)), "NT " + rest);
}

TEST(Logs, other_lines_have_32_blanks_and_the_same_length)
{
    const std::string rest =
        " 04:123:10:15:30.250    X:07 U:9A2F" + std::string(32, ' ') + " L:0100 N:0006 B:0000000042\r\n";
    for (const char* type : {"SH", "SC", "DS", "CD", "OM", "AD", "DR", "FD"})
        EXPECT_EQ(line_of(unknown(42) + Params(type).bytes(100).seq(6)), type + rest) << type;
    EXPECT_EQ(rest.size() + 2, line_of(Dt()).size());
}

TEST(Logs, every_digit_comes_from_the_header)
{
    EXPECT_EQ(line_of(Params("SC")
                          .experiment(98)
                          .year(76)
                          .unit(0x0A0B)
                          .day(365)
                          .at(23, 58, 57, 956)
                          .bytes(4321)
                          .seq(8765)),
              "SC 76:365:23:58:57.956    X:98 U:0A0B" + std::string(32, ' ') +
                  " L:4321 N:8765 B:0000000000\r\n");
}

TEST(Logs, channels_are_a_digit_or_a_letter)
{
    const auto channel_of = [](unsigned n) { return line_of(Dt().channel(n)).substr(49, 4); };
    EXPECT_EQ(channel_of(0), "C:1 ");
    EXPECT_EQ(channel_of(8), "C:9 ");
    EXPECT_EQ(channel_of(9), "C:A ");
    EXPECT_EQ(channel_of(10), "C:B ");
    EXPECT_EQ(channel_of(16), "C:H ");
    EXPECT_EQ(channel_of(34), "C:Z ");
    EXPECT_EQ(channel_of(35), "C:[ ");
}

TEST(Logs, streams_are_decimal_and_widen_the_line)
{
    HeadLine line = data_line("0000", 0, 0);
    line.stream = "10";
    EXPECT_EQ(line_of(Dt().stream(9)), head_line(line));
    line.stream = "166";
    EXPECT_EQ(line_of(Dt().raw(18, "\xFF")), head_line(line));
}

TEST(Logs, an_extension_brings_three_digits_of_microseconds)
{
    HeadLine line = data_line("0000", 1, 0);
    line.flags = "08";
    line.micros = "987";
    EXPECT_EQ(line_of(Dt().extension("987").samples({1})), head_line(line));
    line.micros = "?4:"; // 1F4A....
    EXPECT_EQ(line_of(Dt().extension("000").samples({1}).raw(24, "\x1F\x4A")), head_line(line));
    line.flags = "F7"; // all but the extension's bit
    line.micros = "000";
    EXPECT_EQ(line_of(Dt().samples({1}).raw(24, "\x09\x99").flags(0xF7)), head_line(line));
}

TEST(Logs, digits_are_shown_as_they_are_and_the_sample_count_as_its_value)
{
    HeadLine line = data_line("0000", 0, 0);
    line.samples = "3050"; // 2A50
    line.event = ":;<=";   // ABCD
    line.length = "1>?4";  // 1EF4
    line.seq = ":000";     // A000
    line.experiment = "<7";
    EXPECT_EQ(line_of(Dt().raw(20, "\x2A\x50")
                          .raw(16, "\xAB\xCD")
                          .raw(12, "\x1E\xF4")
                          .raw(14, std::string("\xA0\0", 2))
                          .raw(2, "\xC7")),
              head_line(line));
    line = data_line("0000", 0, 0);
    line.samples = "16665";
    EXPECT_EQ(line_of(Dt().raw(20, "\xFF\xFF")), head_line(line));
}

TEST(Logs, formats_and_flags_are_two_hexadecimal_digits)
{
    HeadLine line = data_line("0000", 0, 0);
    line.format = "AB";
    line.flags = "0C";
    EXPECT_EQ(line_of(Dt().format(0xAB).flags(0x0C)), head_line(line));
    line.format = "02";
    line.flags = "F1";
    EXPECT_EQ(line_of(Dt().format(2).flags(0xF1)), head_line(line));
}

TEST(Logs, unit_zero_shows_as_it_is_in_the_line_and_as_FFFF_elsewhere)
{
    const Converted run = convert(Sh("x").unit(0));
    EXPECT_EQ(run_log(run), head_line([] {
                  HeadLine line = plain_line("SH", 0, "0000");
                  line.length = "0025";
                  return line;
              }()));
    EXPECT_EQ(names(run.tree), "IDFFFF.vxl\nrec.vxl\n");
    EXPECT_NE(run.out.find(progress_sh(1, "FFFF")), run.out.npos);
}

TEST(Logs, a_units_log_repeats_the_header_of_the_run)
{
    const Converted run = convert(Fd());
    const std::string line = head_line(plain_line("FD", 0));
    EXPECT_TRUE(same_tree(run.tree, {{"ID9A2F.vxl", log_header(settings_of(run)) + line},
                                     {"rec.vxl", log_header(settings_of(run)) + line}}));
}

TEST(Logs, data_packets_have_lines_in_the_units_log_on_request_only)
{
    const Recording recording = in_event(data({1}));
    const std::string line = head_line(data_line("0012", 1, 1));
    EXPECT_TRUE(same_bytes(unit_log(convert(recording)), event_log("", 2)));
    EXPECT_TRUE(same_bytes(unit_log(convert(recording, {"-D+"})), event_log(line, 2)));
    EXPECT_EQ(count(run_log(convert(recording)), line), 1U);
}

TEST(Logs, without_logs_no_log_is_written)
{
    EXPECT_EQ(names(convert(in_event(data({1})) + Sh("x") + Params("SC"), {"-L-", "-D+"}).tree),
              std::string(Name_1_1) + "\n");
}

TEST(Logs, a_filter_packet_has_its_line_alone)
{
    const Converted run = convert(Fd() + Fd().unit(0x1234));
    EXPECT_EQ(unit_log(run), head_line(plain_line("FD", 0)));
    EXPECT_EQ(unit_log(run, "ID1234.vxl"), head_line(plain_line("FD", 1, "1234")));
}

TEST(Logs, a_mark_stands_on_the_next_line_of_any_log)
{
    // The run-wide line of the SH packet comes first; its unit's line has no mark left.
    const Converted run = convert(in_event(data({1}) + data({1}).at(11, 0, 0, 0) + Sh("x")));
    HeadLine line = plain_line("SH", 3);
    line.length = "0025";
    EXPECT_EQ(count(unit_log(run), head_line(line)), 1U);
    line.mark = "+";
    EXPECT_EQ(count(run_log(run), head_line(line)), 1U);
    EXPECT_EQ(count(run_log(run), "\r\nDT+") + count(run_log(run), "\r\nET+"), 0U);
}

TEST(Logs, a_packet_that_comes_too_early_is_marked_with_a_minus)
{
    const Converted run = convert(in_event(data({1}) + data({1}).at(9, 0, 0, 0) + data({1}).at(9, 0, 0, 10)));
    const std::string log = run_log(run);
    EXPECT_EQ(count(log, "\r\nDT-04:123:09:00:00.010"), 1U);
    EXPECT_EQ(count(log, "\r\nET 04:123"), 1U);
}

TEST(Logs, only_the_latest_data_packet_counts_for_the_mark)
{
    // With the logs of data packets off in both files nothing would show the mark between the two.
    const Converted run =
        convert(in_event(data({1}) + data({1}).at(11, 0, 0, 0) + data({1}).at(11, 0, 0, 10)), {"-L-", "-Q+"});
    EXPECT_EQ(count(run.file("ID9A2F.qcc"), "\r\n\r\nET 04:123"), 1U);
}

TEST(Logs, an_unknown_packet_does_not_use_up_a_mark)
{
    const Converted run = convert(in_event(data({1}) + data({1}).at(11, 0, 0, 0) + Params("XX")));
    EXPECT_EQ(count(run_log(run), "\r\nET+04:123"), 1U);
}

TEST(Logs, a_data_line_in_the_units_log_shows_no_mark_that_the_run_wide_line_showed)
{
    const Converted run =
        convert(in_event(data({1}) + data({1}).at(11, 0, 0, 0) + data({1}).at(11, 0, 0, 10)), {"-D+"});
    EXPECT_EQ(count(run_log(run), "\r\nDT+04:123:11:00:00.010"), 1U);
    EXPECT_EQ(count(unit_log(run), "\r\nDT 04:123:"), 3U);
    EXPECT_EQ(count(run_log(run), "\r\nET 04:123:"), 1U);
}

TEST(Logs, health_texts_are_indented_line_by_line)
{
    EXPECT_EQ(health_text(Sh("AB\r\nCD")), "     AB\r\n     CD\r\n\r\n");
    EXPECT_EQ(health_text(Sh("AB\nCD\nEF")), "     AB\n     CD\n     EF\r\n\r\n");
}

TEST(Logs, a_health_text_that_ends_its_last_line_leaves_an_indent_behind)
{
    EXPECT_EQ(health_text(Sh("AB\r\n")), "     AB\r\n     \r\n");
    EXPECT_EQ(health_text(Sh("AB\n")), "     AB\n     \r\n");
}

TEST(Logs, the_line_end_of_a_health_text_looks_at_its_last_byte_but_one)
{
    EXPECT_EQ(health_text(Sh("AB\r")), "     AB\r\r\n\r\n");
    EXPECT_EQ(health_text(Sh("A\rB")), "     A\rB\n\r\n");
    EXPECT_EQ(health_text(Sh("AB")), "     AB\r\n\r\n");
}

TEST(Logs, a_health_packet_without_text_shows_an_indent)
{
    for (unsigned bytes : {24U, 23U, 16U, 2U, 1U, 0U})
        EXPECT_EQ(health_text(Sh("").bytes(bytes)), "     \r\n\r\n") << bytes;
    // The tail is looked at even where it is no text: here the byte count reaches a line feed or a return.
    EXPECT_EQ(health_text(Sh("").raw(20, "\n").bytes(21)), "     \r\n");
    EXPECT_EQ(health_text(Sh("").raw(19, "\r").bytes(21)), "     \n\r\n");
}

TEST(Logs, a_health_text_ends_where_the_packet_ends)
{
    const std::string text(1000, 'x');
    EXPECT_EQ(health_text(Sh(text)), "     " + text + "\r\n\r\n");
    EXPECT_EQ(health_text(Sh(text).bytes(2000)), "     " + text + "\r\n\r\n");
    EXPECT_EQ(health_text(Sh(text).raw(12, "\xFF\xFF")), "     " + text + "\r\n\r\n"); // counts 16665
    EXPECT_EQ(health_text(Sh("abcdefgh").raw(12, std::string("\0\x1F", 2))), "     a\r\n\r\n"); // counts 25
}

TEST(Logs, a_health_text_is_written_as_it_is_whatever_bytes_it_holds)
{
    const std::string text("a\0b\xFF%s\t\x1B[1m", 11);
    EXPECT_EQ(health_text(Sh(text)), "     " + text + "\r\n\r\n");
}
