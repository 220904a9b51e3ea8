// Channels of an event: one trace each, their times, the rate that is estimated where no header told it, and
// what headers and trailers leave in the traces.
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

/// The continuity marks of the run-wide log, one character per packet.
std::string marks(const Converted& run)
{
    std::string all;
    const std::string log = run_log(run);
    for (size_t at = 0, end; (end = log.find("\r\n", at)) != log.npos; at = end + 2) all += log.at(at + 2);
    return all;
}

/// 250 samples of event 12 that begin `ms` milliseconds behind 10:15:30.250.
Dt packet_after(unsigned ms, unsigned samples = 250)
{
    const unsigned at = 30250 + ms;
    return Dt()
        .event(12)
        .at(10, 15 + at / 60000, at / 1000 % 60, at % 1000)
        .samples(counting(1, static_cast<int32_t>(samples)));
}

uint32_t delta_of(const std::string& trace)
{
    return header_bits(trace, 0);
}

constexpr uint32_t Hundredth = 0x3C23D70A; // 0.01

const std::string Untold_1_1 = "2004123101530250_09A2F_1_1.sac"; ///< no station name was told

std::string component(const std::string& trace)
{
    return header_text(trace, 600, 8);
}

/// The component name of channel `n` in a run of one event that this header describes.
std::string component_of(const Recording& headers, unsigned n, const std::string& ini = "")
{
    ConvertOptions options;
    options.ini = ini;
    return component(only_trace(convert(headers + Dt().event(12).channel(n).samples({1}), {}, options)));
}

} // namespace

TEST(Channels, packets_of_a_channel_are_appended_as_they_arrive_whatever_their_times)
{
    const Converted run =
        convert(in_event(packet_after(0, 2) + packet_after(9000, 3) + packet_after(1000, 1)), {"-L-"});
    EXPECT_TRUE(same_tree(run.tree,
                          {{Name_1_1, sac_file(usual_trace().stats(1, 3, 10.0f / 6), {1, 2, 1, 2, 3, 1})}}));
}

TEST(Channels, channels_of_an_event_are_told_apart_by_their_number_alone)
{
    const Converted run = convert(
        in_event(data({1}).stream(0) + data({2}).stream(1) + data({3}).stream(1).channel(1)), {"-L-"});
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(1, 2, 1.5f), {1, 2})},
                                     {"2004123101530250_STA01_2_2.sac", [] {
                                          Sac s = usual_trace().stats(3, 3, 3);
                                          s.kcmpnm = "9A2F-2-2";
                                          return sac_file(s, {3});
                                      }()}}));
}

TEST(Channels, a_gap_is_marked_on_the_line_behind_its_packet)
{
    const Converted run = convert(in_event(packet_after(0) + packet_after(2500) + packet_after(5001) +
                                           packet_after(7501) + packet_after(10000) + Sh("x")));
    EXPECT_EQ(marks(run), "    + - "); // EH and five data packets, SH, ET
}

TEST(Channels, the_first_packet_of_a_channel_is_continuous)
{
    EXPECT_EQ(marks(convert(in_event(packet_after(0) + packet_after(700).channel(1) +
                                     packet_after(100).channel(2) + Sh("x")))),
              "      ");
}

TEST(Channels, milliseconds_of_the_next_packet_are_cut_not_rounded)
{
    const Eh slow = usual_header().rate("0.1 "); // the nearest float is a little more
    const Recording first = slow + Dt().event(12).at(0, 0, 0, 0).samples({1});
    EXPECT_EQ(marks(convert(first + Dt().event(12).at(0, 0, 9, 999).samples({1}) + Sh("x"))), "    ");
    EXPECT_EQ(marks(convert(first + Dt().event(12).at(0, 0, 10, 0).samples({1}) + Sh("x"))), "   +");
}

TEST(Channels, a_rate_of_zero_moves_no_time_but_puts_hour_24_into_the_next_day)
{
    const Eh still = usual_header().rate("0   ");
    const Dt late = Dt().event(12).at(24, 0, 0, 0).samples({1});
    EXPECT_EQ(marks(convert(still + late + late + Sh("x"))), "   -");
    EXPECT_EQ(marks(convert(still + late + Dt().event(12).day(124).at(0, 0, 0, 0).samples({1}) + Sh("x"))),
              "    ");
}

TEST(Channels, the_time_that_follows_the_end_of_a_year_is_in_the_year_0000)
{
    const Recording first =
        usual_header().rate("1   ") + Dt().event(12).year(12).day(366).at(23, 59, 59, 999).samples({1});
    EXPECT_EQ(marks(convert(first + Dt().event(12).year(13).day(1).at(0, 0, 0, 999).samples({1}) + Sh("x"))),
              "   +");
    const Dt no_such_day = Dt().event(12).year(3).day(366).at(0, 0, 0, 0).samples({1});
    EXPECT_EQ(marks(convert(usual_header().rate("0   ") + no_such_day + no_such_day + Sh("x"))), "   +");
}

TEST(Channels, the_length_of_a_year_goes_by_its_division_by_four)
{
    const auto around = [](unsigned year, unsigned day) {
        const Dt dt = Dt().event(12).year(year).day(day).at(0, 0, 0, 0).samples({1});
        return marks(convert(usual_header().rate("0   ") + dt + dt + Sh("x")));
    };
    EXPECT_EQ(around(4, 366), "    ");
    EXPECT_EQ(around(3, 365), "    ");
    EXPECT_EQ(around(3, 366), "   +");
}

TEST(Channels, odd_rates_move_the_expected_time_as_32_bits_of_milliseconds)
{
    const auto fits = [](const char* rate, const Dt& next) {
        return marks(convert(usual_header().rate(rate) + packet_after(0) + next + Sh("x"))) == "    ";
    };
    // 2250 ms before 0 is 4294965046 ms, that is 49 days and a bit.
    EXPECT_TRUE(fits("-100", Dt().event(12).day(173).at(3, 18, 15, 46).samples({1})));
    EXPECT_TRUE(fits("inf ", packet_after(0)));
    EXPECT_TRUE(fits("nan ", Dt().event(12).at(10, 15, 30, 0).samples({1})));
}

TEST(Channels, an_event_without_header_gets_its_rate_from_samples_and_time)
{
    const Converted run =
        convert(packet_after(0) + packet_after(2500) + packet_after(5000) + packet_after(7500) + Sh("x"));
    // The second packet is met with a rate of 0; so is the expected time of the third, which the rate comes
    // too late for.
    EXPECT_EQ(marks(run), "  ++ ");
    Sac s = Sac().rate(100.0f).stats(1, 250, 125.5f);
    s.kstnm = "09A2F";
    const std::vector<int32_t> twice = joined(counting(1, 250), counting(1, 250));
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Untold_1_1)), sac_file(s, joined(twice, twice))));
    EXPECT_EQ(delta_of(run.file(Untold_1_1)), Hundredth);
}

TEST(Channels, an_event_of_one_packet_without_header_has_no_rate_and_the_units_name)
{
    const Converted run = convert(Dt().event(12).samples({4, 6}), {"-L-"});
    Sac s = Sac().stats(4, 6, 5);
    s.kstnm = "09A2F";
    EXPECT_TRUE(same_tree(run.tree, {{Untold_1_1, sac_file(s, {4, 6})}}));

    ConvertOptions named;
    named.ini = "[9A2F]\nStation=ABC\n";
    const Converted with_ini = convert(Dt().event(12).samples({4, 6}), {"-L-"}, named);
    s.kstnm = "  ABC";
    EXPECT_TRUE(same_tree(with_ini.tree, {{"2004123101530250___ABC_1_1.sac", sac_file(s, {4, 6})}}));
}

TEST(Channels, the_estimate_counts_the_samples_that_were_written)
{
    const Recording two = packet_after(0) + packet_after(2500);
    EXPECT_EQ(delta_of(only_trace(convert(two))), Hundredth);
    EXPECT_EQ(delta_of(only_trace(convert(two, {"-S100"}))), 0x3CCCCCCDU);
    EXPECT_EQ(delta_of(only_trace(convert(two, {"-T100"}))), 0x3C888888U);
}

TEST(Channels, the_estimate_is_rounded_to_single_precision_at_every_step)
{
    const std::vector<Word> words(13 + 14 * 15, four(1, 1, 1, 1));
    const Dt first = Dt().event(12).steim1(1, 892, words).count(892);
    EXPECT_EQ(delta_of(only_trace(convert(first + packet_after(8921)))), 0x3C23DBBFU);
}

TEST(Channels, the_estimate_waits_for_samples)
{
    const Dt empty = packet_after(0).samples({}).count(0);
    EXPECT_EQ(delta_of(only_trace(convert(empty + packet_after(2500)))), Undefined);
    EXPECT_EQ(delta_of(only_trace(convert(empty + packet_after(2500) + packet_after(5000)))),
              0x3CA3D70AU); // 250 samples in 5 s
}

TEST(Channels, the_estimate_is_made_once)
{
    EXPECT_EQ(delta_of(only_trace(convert(packet_after(0) + packet_after(2500) + packet_after(20000)))),
              Hundredth);
}

TEST(Channels, the_estimate_of_one_channel_serves_the_whole_event)
{
    const Converted run = convert(packet_after(0) + packet_after(0).channel(1) + packet_after(2500) +
                                  packet_after(9999).channel(1) + packet_after(9999).channel(2));
    ASSERT_EQ(run.sac_names().size(), 3U);
    for (const std::string& name : run.sac_names()) EXPECT_EQ(delta_of(run.file(name)), Hundredth) << name;
}

TEST(Channels, first_packets_of_two_channels_leave_the_event_without_a_rate)
{
    const Converted run = convert(packet_after(0) + packet_after(2500).channel(1));
    for (const std::string& name : run.sac_names()) EXPECT_EQ(delta_of(run.file(name)), Undefined) << name;
}

TEST(Channels, two_packets_of_one_time_give_an_infinite_rate)
{
    EXPECT_EQ(delta_of(only_trace(convert(packet_after(0) + packet_after(0)))), 0U);
}

TEST(Channels, an_earlier_second_packet_gives_a_rate_that_no_header_shows)
{
    const Converted run = convert(packet_after(2500) + packet_after(0) + packet_after(7500));
    EXPECT_EQ(delta_of(only_trace(run)), Undefined);
}

TEST(Channels, a_header_of_the_second_bank_alone_does_not_keep_its_rate)
{
    const Eh second = Eh().event(12).usual().rate("50  ").second_bank();
    EXPECT_EQ(delta_of(only_trace(convert(second + packet_after(0)))), Undefined);
    EXPECT_EQ(delta_of(only_trace(convert(second + packet_after(0) + packet_after(2500)))), Hundredth);
    // Until the first packet has taken it back, its rate serves for the expected time.
    EXPECT_EQ(marks(convert(second + packet_after(0) + packet_after(5000) + Sh("x"))), "    ");
}

TEST(Channels, a_header_with_a_rate_of_zero_leaves_nothing_to_estimate)
{
    const Converted run = convert(usual_header().rate("0   ") + packet_after(0) + packet_after(2500));
    EXPECT_EQ(delta_of(only_trace(run)), Undefined);
}

TEST(Channels, an_event_begins_with_the_earliest_first_packet_of_its_channels)
{
    const Converted run = convert(packet_after(5000, 2) + packet_after(1000, 2).channel(1) +
                                      packet_after(3000, 2).channel(2) + packet_after(0, 2).channel(1),
                                  {"-L-"});
    ASSERT_EQ(run.sac_names().size(), 3U);
    for (const std::string& name : run.sac_names()) {
        EXPECT_EQ(header_int(run.file(name), 74), 31) << name; // 10:15:31.250, also for the later ones
        EXPECT_EQ(header_int(run.file(name), 75), 250) << name;
    }
    EXPECT_EQ(run.sac_names()[0], "2004123101531250_09A2F_1_2.sac");
    EXPECT_EQ(run.sac_names()[1], "2004123101533250_09A2F_1_3.sac");
    EXPECT_EQ(run.sac_names()[2], "2004123101535250_09A2F_1_1.sac");
}

TEST(Channels, a_header_that_begins_earlier_or_later_than_the_data)
{
    const auto second_of = [](const char* told) {
        return header_int(only_trace(convert(usual_header().t_first(told) + packet_after(0))), 74);
    };
    EXPECT_EQ(second_of("2004123101512000"), 12); // the header is earlier and stays
    EXPECT_EQ(second_of("2004123101545000"), 30); // the data are
}

TEST(Channels, a_blank_first_time_stays_and_shows_as_zeros)
{
    const std::string trace = only_trace(convert(usual_header().t_first("") + packet_after(0)));
    for (int word = 70; word <= 75; ++word) EXPECT_EQ(header_int(trace, word), 0) << word;
}

TEST(Channels, a_first_time_that_a_NUL_cuts_gives_way_to_the_first_packets)
{
    const std::string trace =
        only_trace(convert(usual_header().raw(112 + 15, std::string(1, '\0')) + packet_after(1000)));
    EXPECT_EQ(header_int(trace, 74), 31);
}

TEST(Channels, the_trailer_has_the_last_word_on_rate_times_trigger_and_station)
{
    const Converted run = convert(usual_header() + packet_after(0, 2) +
                                      Et().event(12)
                                          .station("OTHER")
                                          .rate("50  ")
                                          .t_trg("2003001000000500")
                                          .t_first("2003001000000000"),
                                  {"-L-"});
    Sac s = Sac().rate(50.0f).stats(1, 2, 1.5f);
    s.kstnm = "OTHER";
    s.o = 0.5f;
    s.year = 2003, s.day = 1, s.hour = 0, s.min = 0, s.sec = 0, s.ms = 0;
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(s, {1, 2})}})); // the name is the header's
}

TEST(Channels, a_blank_trailer_takes_rate_and_times_away_but_not_the_station)
{
    const Converted run = convert(usual_header() + packet_after(0, 2) + Et().event(12), {"-L-"});
    Sac s = Sac().stats(1, 2, 1.5f);
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0;
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(s, {1, 2})}}));
}

TEST(Channels, a_traces_name_has_the_events_station_and_its_header_the_units)
{
    // Event 13 renames the unit while event 12 is open.
    const Converted run =
        convert(usual_header() + Eh().event(13).usual().station("LATER") + packet_after(0, 1), {"-L-"});
    Sac s = usual_trace().stats(1, 1, 1);
    s.kstnm = "LATER";
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(s, {1})}}));
}

TEST(Channels, packets_of_two_events_in_turn_leave_one_header_in_each_trace)
{
    const Converted run =
        convert(Eh().event(1).usual() + Dt().event(1).samples({1}) + Eh().event(2).usual() +
                    Dt().event(2).samples({10}) + Dt().event(1).samples({2}) + Dt().event(2).samples({20}) +
                    Dt().event(1).samples({3}) + Et().event(1).usual() + Et().event(2).usual(),
                {"-L-"});
    EXPECT_TRUE(same_tree(
        run.tree, {{Name_1_1, sac_file(usual_trace().stats(1, 3, 2), {1, 2, 3})},
                   {"2004123101530250_STA01_1A1.sac", sac_file(usual_trace().stats(10, 20, 15), {10, 20})}}));
}

TEST(Channels, sixty_channels_of_an_event_get_whole_traces)
{
    Recording middle;
    Tree expected;
    for (int round = 0; round < 3; ++round) {
        for (unsigned n = 0; n < 60; ++n) middle += data({static_cast<int32_t>(n), round}).channel(n);
    }
    for (int32_t n = 0; n < 60; ++n) {
        Sac s = usual_trace();
        const std::vector<int32_t> samples = {n, 0, n, 1, n, 2};
        s.stats(0, static_cast<float>(n < 2 ? 2 : n), static_cast<float>((3.0 * n + 3) / 6));
        s.kcmpnm = std::string("9A2F-1-") + static_cast<char>('1' + n);
        char name[64];
        snprintf(name, sizeof name, "2004123101530250_STA01_1_%X.sac", static_cast<unsigned>(n + 1));
        expected[name] = sac_file(s, samples);
    }
    EXPECT_TRUE(same_tree(convert(in_event(middle), {"-L-"}).tree, expected));
}

TEST(Channels, channel_16_is_called_by_five_names)
{
    const Converted run = convert(in_event(data({1}).channel(16)), {"-Q+"});
    const std::string name = "2004123101530250_STA01_1_11.sac";
    EXPECT_EQ(run.sac_names(), (std::vector<std::string>{name}));
    EXPECT_EQ(component(run.file(name)), "9A2F-1-A");
    EXPECT_NE(run.out.find(progress_dt(2, "9A2F", 12, 1, 17)), run.out.npos);
    HeadLine line = data_line("0012", 1, 1);
    line.channel = "H";
    EXPECT_EQ(count(run_log(run), head_line(line)), 1U);
    EXPECT_EQ(count(run.file("ID9A2F.qcc"), "\r\n   Channel 16:"), 1U);
    EXPECT_EQ(count(run.file("rec.qcc"), "\r\n   9A2F    16:"), 1U);
}

TEST(Channels, a_channel_number_of_bad_digits_reaches_165)
{
    const Converted run = convert(in_event(data({1}).raw(19, "\xFF")), {"-Q+"});
    const std::string name = "2004123101530250_STA01_1_A6.sac";
    EXPECT_EQ(run.sac_names(), (std::vector<std::string>{name}));
    EXPECT_EQ(component(run.file(name)), "9A2F-1-\xD6");
    EXPECT_NE(run.out.find(progress_dt(2, "9A2F", 12, 1, 166)), run.out.npos);
    HeadLine line = data_line("0012", 1, 1);
    line.channel = "\xDD";
    EXPECT_EQ(count(run_log(run), head_line(line)), 1U);
    EXPECT_EQ(count(run.file("ID9A2F.qcc"), "\r\n   Channel 165:"), 1U);
    EXPECT_EQ(count(run.file("rec.qcc"), "\r\n   9A2F    165:"), 1U);
}

TEST(Channels, letters_of_the_header_name_the_component_one_by_one)
{
    EXPECT_EQ(component_of(usual_header().seed(0, "BHN "), 0), "9A2F-BHN");
    EXPECT_EQ(component_of(usual_header().seed(0, "H  x"), 0),
              "9A2F-H Z"); // the default orientation of channel 1
    EXPECT_EQ(component_of(usual_header().seed(4, "H   "), 4), "9A2F-H N"); // and of channel 5
    EXPECT_EQ(component_of(usual_header().seed(0, " HN "), 0), "9A2F-1-1"); // no band, no letters
    EXPECT_EQ(component_of(usual_header().seed(0, " HN "), 0, "[9A2F]\nCh1Band=E\nCh1Type=L\nCh1Axis=1\n"),
              "9A2F-EHN");
}

TEST(Channels, a_NUL_is_a_letter_like_others)
{
    EXPECT_EQ(component_of(usual_header().raw(464, std::string(4, '\0')), 0), std::string("9A2F-\0\0\0", 8));
}

TEST(Channels, headers_of_two_banks_describe_channels_1_to_16_and_17_to_32)
{
    const Recording both = usual_header().seed(0, "BHN ").seed(15, "BHE ") +
                           usual_header().second_bank().seed(0, "HGZ ").seed(15, "HGE ");
    EXPECT_EQ(component_of(both, 0), "9A2F-BHN");
    EXPECT_EQ(component_of(both, 15), "9A2F-BHE");
    EXPECT_EQ(component_of(both, 16), "9A2F-HGZ");
    EXPECT_EQ(component_of(both, 31), "9A2F-HGE");
    EXPECT_EQ(component_of(usual_header().second_bank().seed(0, "HGZ "), 0), "9A2F-1-1");
    EXPECT_EQ(component_of(usual_header().seed(0, "BHN "), 16), "9A2F-1-A");
}

TEST(Channels, a_channel_above_32_has_only_the_ini_files_letters)
{
    const Recording both = usual_header().seed(0, "BHN ") + usual_header().second_bank().seed(0, "HGZ ");
    EXPECT_EQ(component_of(both, 32), "9A2F-1-Q");
    EXPECT_EQ(component_of(both, 32, "[9A2F]\nChXBand=H\nChXType=L\n"), "9A2F-HLE");
}

TEST(Channels, a_header_behind_a_channels_first_packet_comes_too_late_for_its_letters)
{
    const Converted run = convert(data({1}) + usual_header().seed(0, "BHN ").seed(1, "BHE ") + data({2}) +
                                  data({3}).channel(1));
    EXPECT_EQ(component(run.file(Untold_1_1)), "9A2F-1-1");
    EXPECT_EQ(component(run.file("2004123101530250_STA01_1_2.sac")), "9A2F-BHE");
}

TEST(Channels, years_below_85_are_in_this_century)
{
    const auto year_of = [](const Dt& dt, const std::string& name) {
        return header_int(convert(dt, {"-L-"}).file(name), 70);
    };
    EXPECT_EQ(year_of(data({1}).year(84), "2084123101530250_09A2F_1_1.sac"), 2084);
    EXPECT_EQ(year_of(data({1}).year(85), "1985123101530250_09A2F_1_1.sac"), 1985);
    EXPECT_EQ(year_of(data({1}).year(0), "2000123101530250_09A2F_1_1.sac"), 2000);
    EXPECT_EQ(year_of(data({1}).year(99), "1999123101530250_09A2F_1_1.sac"), 1999);
    EXPECT_EQ(year_of(data({1}).raw(3, "\x8A"), "208:123101530250_09A2F_1_1.sac"), 208); // read up to the ":"
}
