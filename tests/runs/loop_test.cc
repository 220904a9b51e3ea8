// The stream of packets: what each type does on the console, in the logs and at the end of the input.
#include "kit/hex_lines.h"
#include "runs/common.h"

#include <filesystem>
#include <fstream>
#include <map>

using namespace kit;
using namespace runs;

namespace {

Recording repeated(const std::string& packet, int times)
{
    Recording all;
    for (int i = 0; i < times; ++i) all += packet;
    return all;
}

std::string unknown(std::string_view type)
{
    return Params(type).packet();
}

std::string console_of(const Recording& recording, const Args& args = {})
{
    const Converted run = convert(recording, args);
    EXPECT_EQ(run.status, 0);
    const size_t at = run.out.find("to abort.\n");
    return at == run.out.npos ? run.out : run.out.substr(at + 10);
}

std::string table(const std::string& lines)
{
    return table_start() + lines + "\r\n";
}

} // namespace

TEST(Loop, counter_prints_in_every_other_mebibyte)
{
    std::string expected = "\r\n\nMeg:     0";
    for (int i = 0; i < 1024; ++i) expected += "\rMeg:     0";
    for (int i = 2048; i < 3000; ++i) expected += "\rMeg:     2";
    EXPECT_TRUE(same_bytes(console_of(repeated(Fd(), 3000), {"-V-", "-L-"}), expected + "\r\n"));
}

TEST(Loop, counter_counts_unknown_packets_without_printing_for_them)
{
    const Recording recording =
        repeated(unknown("XX"), 1023) + Fd() + Fd() + repeated(unknown("XX"), 1023) + Fd();
    EXPECT_TRUE(
        same_bytes(console_of(recording, {"-V-", "-L-"}), "\r\n\nMeg:     0\rMeg:     0\rMeg:     2\r\n"));
}

TEST(Loop, every_type_has_its_own_console_line)
{
    const Recording recording = Eh().event(12).usual().stream(2) +
                                Dt().event(12).stream(2).channel(9).samples({1}) + Sh("x") + Params("SC") +
                                Params("DS") + Params("CD") + Params("OM") + Params("AD") +
                                Params("DR").fill(16, 1024, '\0') + Nh().event(34) + Nt().event(56) + Fd() +
                                Et().event(12).usual().stream(2);
    EXPECT_TRUE(
        same_bytes(console_of(recording),
                   table("\r0000001       EH      9A2F       0012          03         -    EVT  100.0000"
                         "\r0000002       DT      9A2F       0012         03         10   "
                         "\r0000003       SH      9A2F          -          -          -   "
                         "\r0000004       SC         -          -          -          -   "
                         "\r0000005       DS         -          -          -          -   "
                         "\r0000006       CD         -          -          -          -   "
                         "\r0000007       OM         -          -          -          -   "
                         "\r0000008       AD         -          -          -          -   "
                         "\r0000009       DR         -          -          -          -   "
                         "\r0000010       NH      9A2F       0034          -          -    "
                         "\r0000011       NT      9A2F       0056          -          -    "
                         "\r0000012       FD         -          -          -          -   "
                         "\r0000013       ET      9A2F       0012          03         -    EVT  100.0000")));
}

TEST(Loop, console_shows_fractional_rates_and_unchecked_digits)
{
    const Recording recording = Eh().event(12).usual().rate("33.3") + Dt().raw(16, "\xAB\xCD").samples({1});
    // The event number's digits 10 11 12 13 make 10000 + 1100 + 120 + 13.
    EXPECT_TRUE(same_bytes(console_of(recording), table(progress_eh(1, "9A2F", 12, 1, "EVT", "33.3000") +
                                                        progress_dt(2, "9A2F", 11233, 1, 1))));
}

TEST(Loop, trigger_type_stops_at_nul_and_is_padded_on_the_left)
{
    const Recording recording = Eh().event(12).usual().trigger_type(std::string_view("A\0BC", 4));
    EXPECT_TRUE(same_bytes(console_of(recording), table(progress_eh(1, "9A2F", 12, 1, "  A", "100.0000"))));
}

TEST(Loop, data_line_shows_the_channel_records_stream)
{
    const Recording recording = Dt().event(7).stream(0).channel(1).samples({1}) +
                                Dt().event(7).stream(4).channel(1).samples({2}) +
                                Dt().event(7).stream(4).channel(2).samples({3});
    EXPECT_TRUE(same_bytes(console_of(recording),
                           table(progress_dt(1, "9A2F", 7, 1, 2) + progress_dt(2, "9A2F", 7, 1, 2) +
                                 progress_dt(3, "9A2F", 7, 5, 3))));
}

TEST(Loop, unknown_types_only_count)
{
    for (const char* type : {"XX", "eh", "Dt", "  "}) {
        const Converted run = convert(unknown(type) + Sh("A").packet());
        const Settings s = settings_of(run);
        HeadLine line = plain_line("SH", 1);
        line.length = "0025";
        EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_sh(2, "9A2F"))));
        EXPECT_TRUE(
            same_tree(run.tree, {{"rec.vxl", log_header(s) + head_line(line)},
                                 {"ID9A2F.vxl", log_header(s) + head_line(line) + "     A\r\n\r\n"}}));
    }
}

TEST(Loop, a_file_of_unknown_packets_ends_well)
{
    const Converted run = convert(repeated(unknown("ZZ"), 3), {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, "")));
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", log_header(s)}, {"rec.qcc", qcc_header(s)}}));
}

TEST(Loop, every_known_type_makes_its_unit_known)
{
    Recording recording;
    unsigned unit = 0x1000;
    const std::vector<std::string> types = {"EH", "ET", "DT", "SH", "SC", "DS", "CD",
                                            "OM", "AD", "DR", "NH", "NT", "FD"};
    for (const std::string& type : types) recording += Params(type).unit(unit++).fill(16, 24, '\0');
    const Converted run = convert(recording, {"-S0"});
    EXPECT_EQ(run.status, 0);
    std::string expected;
    for (unit = 0x1000; unit < 0x1000 + types.size(); ++unit) {
        char name[16];
        snprintf(name, sizeof name, "ID%04X.vxl\n", unit);
        expected += name;
    }
    EXPECT_EQ(names(run.tree), expected + "rec.vxl\n");
}

TEST(Loop, run_wide_log_has_every_packet_and_unit_log_all_but_data)
{
    const Converted run = convert(one_event(12, {5, -3, 4}));
    const Settings s = settings_of(run);
    const std::string eh = head_line(event_line("EH", "0012", 0)), dt = head_line(data_line("0012", 3, 1)),
                      et = head_line(event_line("ET", "0012", 2));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.vxl")), log_header(s) + eh + dt + et));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.vxl")),
                           log_header(s) + eh + usual_dump() + et + usual_dump()));
}

TEST(Loop, unit_log_gets_data_lines_when_asked)
{
    const Converted run = convert(one_event(12, {5, -3, 4}), {"-D+"});
    Settings s = settings_of(run);
    s.log_dt = true;
    const std::string eh = head_line(event_line("EH", "0012", 0)), dt = head_line(data_line("0012", 3, 1)),
                      et = head_line(event_line("ET", "0012", 2));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.vxl")), log_header(s) + eh + dt + et));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.vxl")),
                           log_header(s) + eh + usual_dump() + dt + et + usual_dump()));
}

TEST(Loop, without_logging_no_log_is_written)
{
    const Converted run = convert(one_event(12, {5, -3, 4}) + Sh("x"), {"-LN", "-D+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(names(run.tree), std::string(Name_1_1) + "\n");
}

TEST(Loop, out_of_sequence_message_stands_before_a_data_line_and_behind_a_header_line)
{
    const std::string message = "\nBlock sequence # 5 is out of sequence in Event #12\n\n";
    const Converted data = convert(Dt().event(12).seq(5).samples({1}), {"-D+"});
    HeadLine dt = data_line("0012", 1, 0);
    dt.seq = "0005";
    EXPECT_TRUE(ends_with(data.file("ID9A2F.vxl"), "\r\n\r\n" + message + head_line(dt)))
        << data.file("ID9A2F.vxl");

    const Converted header = convert(Eh().event(12).seq(5).usual());
    HeadLine eh = event_line("EH", "0012", 0);
    eh.seq = "0005";
    EXPECT_TRUE(ends_with(header.file("ID9A2F.vxl"), "\r\n\r\n" + head_line(eh) + message + usual_dump()))
        << header.file("ID9A2F.vxl");
    EXPECT_EQ(data.file("rec.vxl").find("Block sequence"), std::string::npos)
        << "the run-wide log has no complaints";
}

TEST(Loop, mark_of_a_break_shows_on_the_next_line_of_any_log)
{
    const Recording recording =
        Eh().event(12).usual() + Dt().event(12).samples({1, 2}) + Dt().event(12).ms(280).samples({3}) +
        Sh("A") + Dt().event(12).ms(280).samples({4}) + Fd() + Dt().event(12).ms(290).samples({5}) + Fd();
    const Converted run = convert(recording);
    // 2 samples of 10 ms from .250: .270 is expected, .280 is late; then .290 is expected, .280 is early.
    HeadLine third = data_line("0012", 1, 2), fifth = data_line("0012", 1, 4),
             seventh = data_line("0012", 1, 6);
    third.time = fifth.time = "04:123:10:15:30.280";
    seventh.time = "04:123:10:15:30.290";
    HeadLine state = plain_line("SH", 3), filter = plain_line("FD", 5), last = plain_line("FD", 7);
    state.length = "0025", state.mark = "+", filter.mark = "-";
    EXPECT_TRUE(ends_with(run.file("rec.vxl"), head_line(third) + head_line(state) + head_line(fifth) +
                                                   head_line(filter) + head_line(seventh) + head_line(last)))
        << run.file("rec.vxl");
    state.mark = filter.mark = " ";
    EXPECT_TRUE(ends_with(run.file("ID9A2F.vxl"), usual_dump() + head_line(state) + "     A\r\n\r\n" +
                                                      head_line(filter) + head_line(last)))
        << "taken by the run-wide log";
}

TEST(Loop, extra_line_end_follows_the_dumps_of_five_types_only)
{
    const Converted run =
        convert(Params("CD").text(50, 4, "OFF") + Params("AD") + Params("SC") + Params("DS") + Nt().event(1));
    const std::string log = run.file("ID9A2F.vxl");
    HeadLine cd = plain_line("CD", 0), ad = plain_line("AD", 1), sc = plain_line("SC", 2),
             ds = plain_line("DS", 3);
    EXPECT_NE(log.find("     Step                         : OFF \r\n\r\n" + head_line(ad)), log.npos) << log;
    EXPECT_NE(log.find(head_line(ds) + head_line(event_line("NT", "0001", 4))), log.npos)
        << "no entry, no line: " << log;
    EXPECT_TRUE(ends_with(log, "   Stream Name            : " + std::string(24, ' ') + "\r\n\r\n")) << log;
}

TEST(Loop, each_printed_stream_entry_is_followed_by_one_empty_line)
{
    const Converted run =
        convert(Params("DS").raw(16, "1").raw(16 + 230, "2").text(16 + 64, 4, "CON") + Fd());
    const std::string log = run.file("ID9A2F.vxl");
    EXPECT_NE(log.find("      Record Length               :         \r\n\r\n\r\n     Data Stream No          "
                       "     : 2 \r\n"),
              log.npos)
        << log;
    EXPECT_TRUE(
        ends_with(log, "     Trigger Type                 :     \r\n\r\n" + head_line(plain_line("FD", 1))))
        << log;
}

TEST(Loop, a_nul_byte_shown_as_a_character_reaches_the_log)
{
    const Converted run = convert(Params("OM").raw(22, std::string(1, '\0')));
    const std::string log = run.file("ID9A2F.vxl");
    EXPECT_NE(log.find("     Tape ID                      : " + std::string(1, '\0') + "\r\n"), log.npos);
}

TEST(Loop, data_format_chooses_the_decoder)
{
    const std::map<unsigned, std::vector<int32_t>> plain = {{0x01, {-2, 300}},   {0x16, {-2, 300}},
                                                            {0x17, {-2, 300}},   {0x00, {-2, 70000}},
                                                            {0x32, {-2, 70000}}, {0x33, {-2, 70000}}};
    for (const auto& [code, samples] : plain) {
        const Converted run = convert(Dt().event(1).format(code).samples(samples), {"-L-", "-NI"});
        EXPECT_TRUE(same_bytes(run.file("2004123101530250_09A2F_1_1.sac").substr(632), sac_samples(samples)))
            << code;
    }
    for (const unsigned code : {0x02U, 0x03U, 0xC0U, 0xC1U}) {
        const Dt dt = Dt().event(1).steim1(100, 104, {four(0, 1, -1, 2), two(5, -3)}).format(code).count(6);
        const Converted run = convert(dt, {"-L-", "-NI"});
        EXPECT_TRUE(same_bytes(run.file("2004123101530250_09A2F_1_1.sac").substr(632),
                               sac_samples({100, 101, 100, 102, 107, 104})))
            << code;
    }
    for (const unsigned code : {0xC2U, 0xC3U}) {
        const Dt dt =
            Dt().event(1).steim2(100, 95, {sub(2, 2, {0, 2}), sub(3, 2, {-1, -1, -1, -1, -1, -1, -1})});
        const Converted run = convert(Dt(dt).format(code).count(9), {"-L-", "-NI"});
        EXPECT_TRUE(same_bytes(run.file("2004123101530250_09A2F_1_1.sac").substr(632),
                               sac_samples({100, 102, 101, 100, 99, 98, 97, 96, 95})))
            << code;
    }
}

TEST(Loop, an_unknown_data_format_makes_its_trace_but_no_samples)
{
    const Recording recording = Eh().event(12).usual() + Dt().event(12).channel(1).samples({7, 8}) +
                                Dt().event(12).format(0x20).samples({9, 9, 9}) + Et().event(12).usual();
    const Converted run = convert(recording, {"-L-"});
    Settings s = settings_of(run);
    s.log_on = false;
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") +
                                                         progress_dt(2, "9A2F", 12, 1, 2) +
                                                         progress_dt(3, "9A2F", 12, 1, 1) +
                                                         progress_et(4, "9A2F", 12, 1, "EVT", "100.0000"))));
    Sac second = Sac().rate(100).stats(7, 8, 7.5f);
    second.kcmpnm = "9A2F-1-2";
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(Sac().rate(100), {})},
                                     {"2004123101530250_STA01_1_2.sac", sac_file(second, {7, 8})}}));
}

TEST(Loop, a_partial_last_packet_is_dropped)
{
    const Converted whole = convert(one_event(12, {1, 2}));
    const Converted cut =
        convert(one_event(12, {1, 2}) + Dt().event(12).samples({9}).packet().substr(0, 1023));
    EXPECT_EQ(cut.status, 0);
    EXPECT_EQ(cut.err, "");
    EXPECT_TRUE(same_bytes(cut.file(Name_1_1), whole.file(Name_1_1)));
    EXPECT_EQ(count(cut.out, "\r000000"), 3u);
}

TEST(Loop, second_bank_trailer_closes_nothing)
{
    const Recording recording = Eh().event(12).usual() + Dt().event(12).samples({1, 2}) +
                                Et().event(12).usual().second_bank() +
                                Dt().event(12).ms(270).samples({3, 6}) + Et().event(12).usual();
    const Converted run = convert(recording, {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(Sac().rate(100), {1, 2, 3, 6})));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")),
                           qcc_header(s) + head_line(event_line("ET", "0012", 4)) + Qc_head +
                               "\r\n   Channel  0:" + qc_numbers(1, 6, 5, 3, 2.1602) + "\r\n\r\n"));
}

TEST(Loop, second_bank_trailer_behind_the_first_opens_the_event_again)
{
    const Recording recording =
        Eh().event(1).seq(1).usual() + Dt().event(1).seq(2).samples({1, 3}) + Et().event(1).seq(3).usual() +
        Et().event(1).seq(4).usual().second_bank() + Eh().event(2).seq(5).usual() +
        Dt().event(2).seq(6).channel(1).samples({1, 3}) + Et().event(2).seq(7).usual();
    const Converted run = convert(recording, {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    HeadLine first = event_line("ET", "0001", 2), second = event_line("ET", "0002", 6);
    first.seq = "0003", second.seq = "0007";
    // Event 1 begins alone and out of sequence; event 2 finds the re-opened event 1 and has real numbers.
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")),
                           qcc_header(s) + head_line(first) + Qc_head + "\r\n   Channel ---" + Qc_no_event +
                               "\r\n\r\n" + head_line(second) + Qc_head +
                               "\r\n   Channel  1:" + qc_numbers(1, 3, 2, 2, 1.4142) + "\r\n\r\n"));
    EXPECT_EQ(run.out.find("No ET"), std::string::npos) << "an event without channels is not told";
}

TEST(Loop, a_lone_trailer_opens_and_closes_its_event)
{
    const Converted run = convert(Et().event(12).usual(), {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_et(1, "9A2F", 12, 1, "EVT", "100.0000"))));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")),
                           qcc_header(s) + head_line(event_line("ET", "0012", 0)) + Qc_head +
                               "\r\n   Channel ---" + Qc_no_event + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                           qcc_header(s) + Qc_head + "\r\n   9A2F    ---" + Qc_no_event));
    EXPECT_EQ(names(run.tree), "ID9A2F.qcc\nID9A2F.vxl\nrec.qcc\nrec.vxl\n");
}

TEST(Loop, network_header_starts_a_block_in_the_run_wide_statistics)
{
    const Converted run = convert(Nh().event(34) + Nt().event(34), {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                           qcc_header(s) + "\r\n\r\n" + head_line(event_line("NH", "0034", 0)) + Qc_head));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")), qcc_header(s)));
}

TEST(Loop, events_open_at_the_end_are_told_and_finished)
{
    const Recording recording = Eh().event(12).usual() + Dt().event(12).samples({1, 3});
    const Converted run = convert(recording, {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") +
                                                         progress_dt(2, "9A2F", 12, 1, 1) +
                                                         "\nNo ET block for U:9A2F E:0012")));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")),
                           qcc_header(s) + "No ET block for U:9A2F E:0012\r\n" + Qc_head +
                               "\r\n   Channel  0:" + qc_numbers(1, 3, 2, 2, 1.4142) + "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                           qcc_header(s) + Qc_head + "\r\n   9A2F     0:" + qc_numbers(1, 3, 2, 2, 1.4142)));
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(Sac().rate(100), {1, 3})))
        << "the statistics are reset when they have been told";
}

TEST(Loop, without_statistics_events_open_at_the_end_are_finished_silently)
{
    const Converted run = convert(Eh().event(12).usual() + Dt().event(12).samples({1, 3}));
    EXPECT_TRUE(
        same_bytes(run.out, whole_console(settings_of(run), progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") +
                                                                progress_dt(2, "9A2F", 12, 1, 1))));
    EXPECT_TRUE(
        same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(Sac().rate(100).stats(1, 3, 2), {1, 3})));
}

TEST(Loop, summary_lines_are_these_bytes)
{
    const Recording recording = repeated(unknown("XX"), 41) +
                                Dt().event(12).channel(2).seq(5).samples(counting(1, 250)) +
                                Sh(std::string(76, 'x')).seq(6);
    const Converted run = convert(recording);
    EXPECT_TRUE(ends_with(
        run.file("rec.vxl"),
        "\r\n\r\nDT 04:123:10:15:30.250000 X:07 U:9A2F E:0012 D:1 C:3 S:0250 F:32 G:00 L:1024 N:0005 "
        "B:0000000041\r\n"
        "SH 04:123:10:15:30.250    X:07 U:9A2F                                 L:0100 N:0006 "
        "B:0000000042\r\n"))
        << run.file("rec.vxl");
}

TEST(Loop, a_compressed_packet_that_fails_its_check_is_told_in_the_unit_log)
{
    const Dt dt = Dt().event(12).steim1(static_cast<int32_t>(0x80000001), 0, {one(0)}).count(1);
    const Converted run = convert(dt);
    const Settings s = settings_of(run);
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.vxl")),
                           log_header(s) +
                               "     Read start 0x80000001  stop 0x00000000  samples 1\r\n"
                               "     Calc start 0x00000000  stop 0x80000001  samples 1\r\n" +
                               hex_lines(dt.packet()) + "\r\n"));
    EXPECT_TRUE(
        same_bytes(run.file("2004123101530250_09A2F_1_1.sac").substr(632), sac_samples({-2147483647})))
        << "its samples are written all the same";
}

TEST(Loop, an_input_beyond_two_gigabytes_is_read_to_its_end)
{
    constexpr std::uintmax_t hole = 2147483648u + 4096;
    Scratch scratch;
    scratch.write("rec.pkt", "");
    std::filesystem::resize_file(scratch.path("rec.pkt"), hole);
    std::ofstream(scratch.path("rec.pkt"), std::ios::binary | std::ios::app) << Fd().packet();
    ASSERT_EQ(std::filesystem::file_size(scratch.path("rec.pkt")), hole + 1024);
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(ends_with(
        run.out, table_start() + "\r2097157       FD         -          -          -          -   \r\n"))
        << run.out;
    EXPECT_TRUE(ends_with(scratch.read("rec.vxl"), " B:0002097156\r\n"));
}

TEST(Loop, trigger_type_is_shown_as_it_is_whatever_bytes_it_holds)
{
    const Recording recording =
        Eh().event(1).usual().trigger_type("%s%n") + Eh().event(2).usual().trigger_type("\x1B[2J");
    EXPECT_TRUE(same_bytes(console_of(recording), table(progress_eh(1, "9A2F", 1, 1, "%s%", "100.0000") +
                                                        progress_eh(2, "9A2F", 2, 1, "\x1B[2", "100.0000"))));
}

TEST(Loop, a_terminal_sees_the_progress_while_the_run_goes_on)
{
    Scratch scratch;
    RunOptions options;
    options.terminal = true;
    Outcome run;
    uint64_t packets = 1 << 20; // unknown ones but the first and the last; so many that the run takes a while
    for (;; packets += 1 << 20) {
        scratch.write("rec.pkt", Fd().packet());
        std::filesystem::resize_file(scratch.path("rec.pkt"), packets * 1024);
        std::ofstream(scratch.path("rec.pkt"), std::ios::binary | std::ios::app) << Fd().packet();
        run = run_vx(scratch.dir(), {"rec.pkt", "-L-"}, options);
        if (run.seconds > 0.5 || packets >= 3 << 20) break;
    }
    EXPECT_GT(run.last_out - run.first_out, 0.3 * run.seconds) << "the first line did not wait for the last";
    options.terminal = false;
    const Outcome pipe = run_vx(scratch.dir(), {"rec.pkt", "-L-"}, options);
    EXPECT_EQ(pipe.first_out, pipe.last_out) << "a pipe gets it all at once";
    EXPECT_TRUE(same_bytes(run.out, pipe.out));
    const auto last = static_cast<uint32_t>(packets) + 1;
    EXPECT_TRUE(
        ends_with(run.out, table_start() + progress_params(1, "FD") + progress_params(last, "FD") + "\r\n"))
        << run.out;
}
