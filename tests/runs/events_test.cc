// Events in the stream: which packets belong together, the sequence check, what header and trailer tell.
#include "runs/common.h"

using namespace kit;
using namespace runs;

namespace {

std::string complaint(unsigned seq, unsigned event)
{
    char text[100];
    snprintf(text, sizeof text, "\nBlock sequence # %u is out of sequence in Event #%u\n\n", seq, event);
    return text;
}

/// The unit log of a recording, from its first complaint on, without anything else: all complaints in order.
std::string complaints(const Recording& recording)
{
    const Converted run = convert(recording);
    EXPECT_EQ(run.status, 0);
    const std::string& log = run.file("ID9A2F.vxl");
    std::string all;
    for (size_t at = log.find("\nBlock sequence"); at != log.npos;
         at = log.find("\nBlock sequence", at + 1)) {
        all += log.substr(at, log.find("\n\n", at) + 2 - at);
    }
    return all;
}

/// The only trace of a recording.
std::string trace_of(const Recording& recording, const Args& more = {})
{
    Args args = {"-L-"};
    args.insert(args.end(), more.begin(), more.end());
    const Converted run = convert(recording, args);
    EXPECT_EQ(run.status, 0);
    if (run.tree.size() != 1) {
        ADD_FAILURE() << "not one file but\n" << names(run.tree);
        return std::string(632, '?');
    }
    return run.tree.begin()->second;
}

constexpr uint32_t No_value = 0xC640E400; // -12345.0
constexpr uint32_t Ten_ms = 0x3C23D70A;   // 0.01

/// DELTA of a trace whose header carries this rate field.
uint32_t delta_for(std::string_view rate)
{
    const Recording recording = Eh().event(1).usual().rate(rate) + Dt().event(1).samples({1});
    return header_bits(trace_of(recording), 0);
}

std::vector<int32_t> start_time(const std::string& trace)
{
    std::vector<int32_t> fields;
    for (int word = 70; word < 76; ++word) fields.push_back(header_int(trace, word));
    return fields;
}

} // namespace

TEST(Events, the_number_alone_joins_packets_of_any_stream)
{
    const Recording recording = Dt().event(7).stream(0).samples({1}) +
                                Dt().event(7).stream(1).ms(260).samples({2}) +
                                Dt().event(7).stream(1).channel(1).samples({3});
    const Converted run = convert(recording, {"-L-"});
    EXPECT_EQ(names(run.tree), "2004123101530250_09A2F_1_1.sac\n2004123101530250_09A2F_2_2.sac\n");
    EXPECT_EQ(samples_of(run.file("2004123101530250_09A2F_1_1.sac")), (std::vector<float>{1, 2}));
}

TEST(Events, an_event_that_begins_alone_is_out_of_sequence)
{
    const Recording recording = Eh().event(12).seq(1).usual() + Dt().event(12).seq(2).samples({1}) +
                                Et().event(12).seq(3).usual() + Eh().event(13).seq(4).usual() +
                                Dt().event(13).seq(5).samples({1}) + Et().event(13).seq(6).usual();
    EXPECT_EQ(complaints(recording), complaint(1, 12) + complaint(4, 13));
}

TEST(Events, an_event_that_begins_beside_another_is_in_sequence)
{
    const Recording recording = Dt().event(12).seq(5).samples({1}) + Dt().event(13).seq(90).samples({1}) +
                                Dt().event(14).seq(40).samples({1}) + Dt().event(12).seq(6).samples({1});
    EXPECT_EQ(complaints(recording), complaint(5, 12));
}

TEST(Events, zero_and_9999_go_before_any_number)
{
    const auto dt = [](unsigned seq) { return Dt().event(12).seq(seq).samples({1}).packet(); };
    EXPECT_EQ(complaints(dt(0) + dt(17)), "");
    EXPECT_EQ(complaints(dt(9999) + dt(17)), "");
    EXPECT_EQ(complaints(dt(9999) + dt(0) + dt(400)), "");
    EXPECT_EQ(complaints(dt(0) + dt(17) + dt(18)), "");
}

TEST(Events, every_break_in_the_sequence_is_told_again)
{
    const auto dt = [](unsigned seq) { return Dt().event(12).seq(seq).samples({1}).packet(); };
    EXPECT_EQ(complaints(dt(0) + dt(1) + dt(3) + dt(3) + dt(4) + dt(2) + dt(9998) + dt(9999) + dt(5)),
              complaint(3, 12) + complaint(3, 12) + complaint(2, 12) + complaint(9998, 12));
}

TEST(Events, an_event_out_of_sequence_is_converted_but_has_no_statistics)
{
    const Recording recording =
        Eh().event(12).seq(5).usual() + Dt().event(12).seq(6).samples({1, 3}) + Et().event(12).seq(7).usual();
    const Converted run = convert(recording, {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    HeadLine et = event_line("ET", "0012", 2);
    et.seq = "0007";
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID9A2F.qcc")), qcc_header(s) + head_line(et) + Qc_head +
                                                                   "\r\n   Channel ---" + Qc_no_event +
                                                                   "\r\n\r\n"));
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                           qcc_header(s) + Qc_head + "\r\n   9A2F    ---" + Qc_no_event));
    EXPECT_TRUE(
        same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(Sac().rate(100).stats(1, 3, 2), {1, 3})))
        << "nothing was told, so nothing was reset";
}

TEST(Events, statistics_are_told_with_the_sample_deviation)
{
    const Converted run = convert(one_event(12, {2, 4, 4, 4, 5, 5, 7, 9}), {"-Q+"});
    // mean 5, squares of the deviations 32, divided by 7.
    EXPECT_TRUE(
        ends_with(run.file("rec.qcc"),
                  "\r\n   9A2F     0:       2.0000       9.0000       7.0000       5.0000       2.1381"))
        << run.file("rec.qcc");
}

TEST(Events, open_events_are_told_from_the_current_one_on_in_ring_order)
{
    const auto dt = [](unsigned event) { return Dt().event(event).samples({1, 3}).packet(); };
    const Converted run = convert(dt(1) + dt(2) + dt(3), {"-Q+"});
    EXPECT_TRUE(ends_with(run.out, "\nNo ET block for U:9A2F E:0003\nNo ET block for U:9A2F E:0001"
                                   "\nNo ET block for U:9A2F E:0002\r\n"))
        << run.out;
    EXPECT_EQ(run.sac_names().size(), 3u);
}

TEST(Events, alternating_events_keep_one_header_in_each_trace)
{
    Recording recording = Eh().event(1).usual() + Eh().event(2).usual().station("STA02");
    for (int i = 0; i < 3; ++i) {
        recording += Dt().event(1).ms(250 + 10 * static_cast<unsigned>(i)).samples({i});
        recording += Dt().event(2).ms(250 + 10 * static_cast<unsigned>(i)).samples({5 * i});
    }
    recording += Et().event(1).usual();
    const Converted run = convert(recording, {"-L-"});
    EXPECT_EQ(names(run.tree), "2004123101530250_STA01_1_1.sac\n2004123101530250_STA02_1_1.sac\n");
    EXPECT_TRUE(
        same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(Sac().rate(100).stats(0, 2, 1), {0, 1, 2})));
    EXPECT_TRUE(same_bytes(mask_run_date(run.file("2004123101530250_STA02_1_1.sac")),
                           sac_file(Sac().rate(100).stats(0, 10, 5), {0, 5, 10})))
        << "the trailer of event 1 named the recorder STA01 again";
}

TEST(Events, a_closed_event_number_begins_anew_and_an_open_one_takes_all)
{
    const Converted closed = convert(one_event(12, {1, 2}) + one_event(12, {3, 4}), {"-L-"});
    EXPECT_EQ(names(closed.tree), "2004123101530250_STA01_1A1.sac\n2004123101530250_STA01_1_1.sac\n");
    EXPECT_EQ(samples_of(closed.file("2004123101530250_STA01_1A1.sac")), (std::vector<float>{3, 4}));
    const Converted open =
        convert(Eh().event(12).usual() + Dt().event(12).samples({1, 2}) + one_event(12, {3, 4}), {"-L-"});
    EXPECT_EQ(names(open.tree), std::string(Name_1_1) + "\n");
    EXPECT_EQ(samples_of(open.file(Name_1_1)), (std::vector<float>{1, 2, 3, 4}));
}

TEST(Events, data_without_a_header_make_an_event_of_the_units_station)
{
    ConvertOptions options;
    options.ini = "[9A2F]\nStation=INI\n";
    const Converted run = convert(Dt().event(12).samples({1, 2}), {"-L-"}, options);
    const std::string& trace = run.file("2004123101530250___INI_1_1.sac");
    Sac expected = Sac().stats(1, 2, 1.5f);
    expected.kstnm = "  INI";
    EXPECT_TRUE(same_bytes(mask_run_date(trace), sac_file(expected, {1, 2}))) << "no rate is known";

    const Converted plain = convert(Dt().event(12).samples({1}), {"-L-"});
    EXPECT_EQ(names(plain.tree), "2004123101530250_09A2F_1_1.sac\n");
}

TEST(Events, stream_of_an_added_event_is_the_first)
{
    const Converted run = convert(Eh().event(1).stream(3).usual() + Eh().event(2).stream(3).usual(), {"-L-"});
    EXPECT_TRUE(ends_with(run.out, progress_eh(1, "9A2F", 1, 4, "EVT", "100.0000") +
                                       progress_eh(2, "9A2F", 2, 1, "EVT", "100.0000") + "\r\n"))
        << run.out;
}

TEST(Events, the_trailer_tells_everything_anew)
{
    const Recording recording = Eh().event(12).usual() + Dt().event(12).samples({1, 2}) +
                                Et().event(12)
                                    .usual()
                                    .rate("    ")
                                    .t_first("2005042112233444")
                                    .t_trg("2005042112234444")
                                    .station("STA02");
    Sac expected = Sac().stats(1, 2, 1.5f);
    expected.kstnm = "STA02", expected.o = 1;
    expected.year = 2005, expected.day = 42, expected.hour = 11;
    expected.min = 22, expected.sec = 33, expected.ms = 444;
    EXPECT_TRUE(same_bytes(mask_run_date(trace_of(recording)), sac_file(expected, {1, 2})));
}

TEST(Events, the_trace_is_named_by_the_header_and_signed_by_the_trailer)
{
    const Recording recording =
        Eh().event(12).usual() + Dt().event(12).samples({1}) + Et().event(12).usual().station("STA02");
    const Converted run = convert(recording, {"-L-"});
    EXPECT_EQ(names(run.tree), std::string(Name_1_1) + "\n");
    EXPECT_EQ(header_text(run.file(Name_1_1), 440, 8), std::string("STA02\0\0\0", 8));
}

TEST(Events, a_trigger_behind_the_first_sample_is_the_origin)
{
    const Recording late = Eh().event(1).usual().t_trg("2004123101532500") + Dt().event(1).samples({1});
    EXPECT_EQ(header_bits(trace_of(late), 7), 0x40100000u) << "2.25 seconds";
    const Recording early = Eh().event(1).usual().t_trg("2004123101529000") + Dt().event(1).samples({1});
    EXPECT_EQ(header_bits(trace_of(early), 7), 0u);
}

TEST(Events, a_blank_first_time_stays_and_reads_as_zero)
{
    const Recording recording = Eh().event(12).usual().t_first("") + Dt().event(12).samples({1});
    const std::string trace = trace_of(recording);
    EXPECT_EQ(start_time(trace), (std::vector<int32_t>{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(header_bits(trace, 7), 0x4E190559u) << "the trigger in seconds since 1984";
}

TEST(Events, an_earlier_packet_moves_the_first_time_a_later_one_does_not)
{
    const Recording recording = Eh().event(12).usual() + Dt().event(12).at(10, 15, 29, 900).samples({1}) +
                                Dt().event(12).channel(1).at(10, 15, 31, 0).samples({1});
    const Converted run = convert(recording, {"-L-"});
    const std::vector<int32_t> earliest = {2004, 123, 10, 15, 29, 900};
    EXPECT_EQ(start_time(run.file("2004123101529900_STA01_1_1.sac")), earliest);
    EXPECT_EQ(start_time(run.file("2004123101531000_STA01_1_2.sac")), earliest)
        << "the event's time, not the channel's";
}

TEST(Events, only_a_first_bank_header_settles_the_rate)
{
    const Recording second = Eh().event(12).usual().second_bank() + Dt().event(12).samples({1});
    EXPECT_EQ(header_bits(trace_of(second), 0), No_value) << "a first data packet estimates it as zero";
    const Recording first = Eh().event(12).usual() + Dt().event(12).samples({1});
    EXPECT_EQ(header_bits(trace_of(first), 0), Ten_ms);
    EXPECT_EQ(header_bits(trace_of(first), 4), Ten_ms);
}

TEST(Events, rate_field_is_read_as_a_number_or_quotient)
{
    EXPECT_EQ(delta_for("100 "), Ten_ms);
    EXPECT_EQ(delta_for(" 100"), Ten_ms);
    EXPECT_EQ(delta_for("+100"), Ten_ms);
    EXPECT_EQ(delta_for("1e2 "), Ten_ms);
    EXPECT_EQ(delta_for("1/25"), 0x40A00000u) << "1 by 5";
    EXPECT_EQ(delta_for("1/10"), 0u) << "1 by 0 is infinite";
    EXPECT_EQ(delta_for("inf "), 0u);
    EXPECT_EQ(delta_for("nan "), No_value);
    EXPECT_EQ(delta_for("    "), No_value);
    EXPECT_EQ(delta_for("-100"), No_value);
    EXPECT_EQ(delta_for("fast"), No_value);
}

TEST(Events, a_telemetry_header_has_a_wide_rate_and_its_own_trigger)
{
    const Recording recording =
        Eh().event(12).usual().rate_telemetry("  62.500").telemetry("01") + Dt().event(12).samples({1});
    const Converted run = convert(recording);
    EXPECT_NE(run.out.find(progress_eh(1, "9A2F", 12, 1, "MIM", "62.5000")), std::string::npos) << run.out;
    EXPECT_EQ(header_bits(run.file(Name_1_1), 0), 0x3C83126Fu) << "0.016";
}

TEST(Events, the_fifth_letter_of_the_station_stands_before_the_others)
{
    const Recording recording =
        Eh().event(12).usual().raw(59, "X").raw(60, "STA1") + Dt().event(12).samples({1});
    const Converted run = convert(recording, {"-L-"});
    EXPECT_EQ(names(run.tree), "2004123101530250_STA1X_1_1.sac\n");
    EXPECT_EQ(header_text(run.tree.begin()->second, 440, 8), std::string("STA1X\0\0\0", 8));
}

TEST(Events, a_header_without_a_station_leaves_the_name_alone)
{
    const Recording recording = Eh().event(12).usual().raw(60, " ") + Dt().event(12).samples({1});
    EXPECT_EQ(names(convert(recording, {"-L-"}).tree), "2004123101530250_09A2F_1_1.sac\n");
}

TEST(Events, a_zero_filled_header_empties_the_station)
{
    const Recording recording = Eh().event(12).fill(24, 1024, '\0') + Dt().event(12).samples({1});
    const Converted run = convert(recording, {"-L-"});
    EXPECT_EQ(names(run.tree), "2004123101530250_______1_1.sac\n");
    const std::string& trace = run.tree.begin()->second;
    EXPECT_EQ(header_text(trace, 440, 8), std::string("9A2F\0005  ", 8));
    EXPECT_EQ(header_bits(trace, 0), No_value);
    EXPECT_EQ(start_time(trace), (std::vector<int32_t>{2004, 123, 10, 15, 30, 250}));
    EXPECT_NE(run.out.find(progress_eh(1, "9A2F", 12, 1, "MIM", "0.0000")), std::string::npos) << run.out;
}

TEST(Events, a_short_header_is_read_like_a_full_one)
{
    const Recording recording = Eh().event(12).usual().bytes(57) + Dt().event(12).samples({1});
    EXPECT_EQ(names(convert(recording, {"-L-"}).tree), std::string(Name_1_1) + "\n");
    const Recording padded =
        Eh().event(12).usual() + Dt().event(12).samples({1}) + Et().event(12).bytes(57).fill(24, 1024, '\0');
    EXPECT_EQ(header_bits(trace_of(padded), 0), No_value)
        << "a trailer padded with zeros takes the rate away";
}
