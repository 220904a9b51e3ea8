// SAC traces byte for byte: the header's fields, which samples are written, and the finishing.
#include "runs/traces.h"

#include <ctime>

using namespace kit;
using namespace runs;

namespace {

/// The trace of two samples behind a header that differs from the usual one; no trailer comes.
std::string trace_of(const Eh& eh)
{
    return only_trace(convert(eh + data({1, 2}), {"-L-"}));
}

uint32_t delta_of(const char* rate)
{
    const std::string trace = trace_of(usual_header().rate(rate));
    EXPECT_EQ(header_bits(trace, 0), header_bits(trace, 4)) << "ODELTA is a copy";
    return header_bits(trace, 0);
}

uint32_t origin_of(const char* trigger, const char* first)
{
    return header_bits(trace_of(usual_header().t_trg(trigger).t_first(first)), 7);
}

std::vector<int32_t> time_of(const char* first)
{
    const std::string trace = trace_of(usual_header().t_first(first));
    std::vector<int32_t> fields;
    for (int word = 70; word <= 75; ++word) fields.push_back(header_int(trace, word));
    return fields;
}

/// What the trace holds of packets of ten samples each, numbered on from 1.
std::vector<int32_t> kept_of(int packets, const Args& args)
{
    Recording middle;
    for (int32_t i = 0; i < packets; ++i) middle += data(counting(10 * i + 1, 10 * i + 10));
    const std::string trace = only_trace(convert(in_event(middle), args));
    std::vector<int32_t> samples;
    for (float x : samples_of(trace)) samples.push_back(static_cast<int32_t>(x));
    EXPECT_EQ(header_int(trace, 79), static_cast<int32_t>(samples.size()));
    return samples;
}

/// "2024:070" of a moment, the day counted from 0.
std::string date_text(time_t when)
{
    tm t{};
    gmtime_r(&when, &t);
    char text[32];
    snprintf(text, sizeof text, "%04d:%03d", t.tm_year + 1900, t.tm_yday);
    return text;
}

/// Runs in a time zone of its own: "WEST+12" is twelve hours behind.
void expect_run_date(const std::string& zone, int hours_ahead)
{
    Scratch scratch;
    scratch.write("rec.pkt", in_event(data({1})));
    RunOptions options;
    options.program = "/usr/bin/env";
    options.argv0 = "env";
    const time_t before = time(nullptr) + 3600 * hours_ahead;
    EXPECT_EQ(run_vx(scratch.dir(), {"TZ=" + zone, VX_SAC_PROGRAM, "rec.pkt"}, options).status, 0);
    const time_t after = time(nullptr) + 3600 * hours_ahead;
    const std::string shown = header_text(scratch.read(Name_1_1), 616, 8);
    EXPECT_TRUE(shown == date_text(before) || shown == date_text(after)) << shown << " in " << zone;
}

} // namespace

TEST(Sac_files, a_trace_is_a_header_of_632_bytes_and_four_bytes_per_sample)
{
    const Converted run = convert(in_event(data({5, -3, 4}) + data({-8})), {"-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(
        same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(-8, 5, -0.5f), {5, -3, 4, -8})}}));
    EXPECT_EQ(run.file(Name_1_1).size(), 648U);
}

TEST(Sac_files, every_word_of_a_header_has_its_place_and_its_bits)
{
    const std::string trace = only_trace(convert(in_event(data({5, -3, 4}))));
    for (int word = 0; word < 110; ++word) {
        uint32_t expected = word < 70 ? Undefined : 0xFFFFCFC7; // -12345 as a float and as an integer
        switch (word) {
        case 0:
        case 4: expected = 0x3C23D70A; break; // 0.01
        case 1: expected = 0xC0400000; break; // -3
        case 2: expected = 0x40A00000; break; // 5
        case 3: expected = 0x3F800000; break; // 1
        case 7: expected = 0; break;
        case 56: expected = 0x40000000; break; // 2
        case 57:
        case 58: expected = 0; break;
        case 70: expected = 2004; break;
        case 71: expected = 123; break;
        case 72: expected = 10; break;
        case 73: expected = 15; break;
        case 74: expected = 30; break;
        case 75: expected = 250; break;
        case 76: expected = 6; break;
        case 79: expected = 3; break;
        case 85: expected = 1; break;
        case 86:
        case 87:
        case 92: expected = 5; break;
        case 93: expected = 45; break;
        case 94: expected = 49; break;
        case 105:
        case 106: expected = 1; break;
        case 107:
        case 108:
        case 109: expected = 0; break;
        default: break;
        }
        EXPECT_EQ(header_bits(trace, word), expected) << "word " << word;
    }
    EXPECT_EQ(header_text(trace, 440, 8), std::string("STA01\0\0\0", 8));
    EXPECT_EQ(header_text(trace, 448, 16), "-12345          ");
    for (int at = 464; at < 600; at += 8) EXPECT_EQ(header_text(trace, at, 8), "-12345  ") << at;
    EXPECT_EQ(header_text(trace, 600, 8), "9A2F-1-1");
    EXPECT_EQ(header_text(trace, 608, 8), "-12345  ");
    EXPECT_EQ(header_text(trace, 624, 8), "VX 900  ");
}

TEST(Sac_files, a_trace_without_samples_is_a_header_alone)
{
    const Converted run = convert(in_event(data({1, 2, 3})), {"-L-", "-T3"});
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace(), {})}}));
    const std::string& trace = only_trace(run);
    EXPECT_EQ(trace.size(), 632U);
    EXPECT_EQ(header_bits(trace, 1), 0x4F000000U);
    EXPECT_EQ(header_bits(trace, 2), 0xCF000000U);
    EXPECT_EQ(header_bits(trace, 56), 0U);
}

TEST(Sac_files, the_rate_gives_the_sample_interval)
{
    EXPECT_EQ(delta_of("100 "), 0x3C23D70AU);
    EXPECT_EQ(delta_of(" 100"), 0x3C23D70AU); // blanks before a number do not matter
    EXPECT_EQ(delta_of("+100"), 0x3C23D70AU);
    EXPECT_EQ(delta_of("1e3 "), 0x3A83126FU);
    EXPECT_EQ(delta_of("0.5 "), 0x40000000U);
    EXPECT_EQ(delta_of("1/25"), 0x40A00000U); // 1/5: the divisor starts one character late
    EXPECT_EQ(delta_of("1/10"), 0U);          // 1/0
    EXPECT_EQ(delta_of("inf "), 0U);
}

TEST(Sac_files, a_rate_that_is_not_above_zero_leaves_the_interval_undefined)
{
    for (const char* rate : {"0   ", "    ", "-100", "nan ", "fast"})
        EXPECT_EQ(delta_of(rate), Undefined) << rate;
}

TEST(Sac_files, the_origin_is_the_time_from_first_sample_to_trigger)
{
    EXPECT_EQ(origin_of("2004123101530500", "2004123101530250"), 0x3E800000U); // 0.25
    EXPECT_EQ(origin_of("2004124101530250", "2004123101530250"), 0x47A8C000U); // 86400
}

TEST(Sac_files, the_origin_is_the_difference_of_two_large_numbers)
{
    EXPECT_EQ(origin_of("2004123101530123", "2004123101530001"), 0x3DF9DB20U);
}

TEST(Sac_files, a_trigger_in_the_next_year_can_be_a_day_off)
{
    const auto origin = [](const char* trigger, const char* first) {
        const Et et = Et().event(12).usual().t_trg(trigger).t_first(first);
        return header_bits(only_trace(convert(usual_header() + data({1}) + et.packet())), 7);
    };
    EXPECT_EQ(origin("2004001000000000", "2003365235959000"), 0x47A8C080U); // 86401, not 1
    EXPECT_EQ(origin("2005001000000000", "2004366235959000"), 0U);          // a day too early
    EXPECT_EQ(origin("2006001000000000", "2005365235959000"), 0x3F800000U);
}

TEST(Sac_files, a_trigger_that_is_not_later_than_the_first_sample_gives_an_origin_of_zero)
{
    EXPECT_EQ(origin_of("2004123101530250", "2004123101530250"), 0U);
    EXPECT_EQ(origin_of("2004123101530000", "2004123101530250"), 0U);
    EXPECT_EQ(origin_of("", "2004123101530250"), 0U);
    EXPECT_EQ(header_bits(only_trace(convert(data({1}))), 7), 0U); // no trigger at all
}

TEST(Sac_files, a_blank_first_time_counts_the_origin_from_1984)
{
    const std::string trace = trace_of(usual_header().t_trg("2004123101530250").t_first(""));
    EXPECT_EQ(header_bits(trace, 7), 0x4E190559U);
    for (int word = 70; word <= 75; ++word) EXPECT_EQ(header_int(trace, word), 0) << word;
}

TEST(Sac_files, the_times_of_the_first_sample_are_six_numbers)
{
    EXPECT_EQ(time_of("2003001020304005"), (std::vector<int32_t>{2003, 1, 2, 3, 4, 5}));
}

TEST(Sac_files, a_blank_field_of_a_time_takes_its_number_from_the_next)
{
    EXPECT_EQ(time_of("1999   101530250"), (std::vector<int32_t>{1999, 101, 10, 15, 30, 250}));
}

TEST(Sac_files, a_sign_counts_in_the_width_of_a_time_field)
{
    EXPECT_EQ(time_of("-123001020304005"), (std::vector<int32_t>{-123, 1, 2, 3, 4, 5}));
}

TEST(Sac_files, a_time_field_that_is_no_number_is_zero_and_the_others_stay)
{
    EXPECT_EQ(time_of("19x9abc10--30 25"), (std::vector<int32_t>{19, 0, 10, 0, 30, 25}));
}

TEST(Sac_files, station_names_are_padded_with_NULs)
{
    const std::string trace = only_trace(convert(Eh().event(12) + data({1})));
    EXPECT_EQ(header_text(trace, 440, 8), std::string("09A2F\0\0\0", 8));
    EXPECT_EQ(header_text(trace_of(usual_header().station("A  B ")), 440, 8), std::string("A  B \0\0\0", 8));
    EXPECT_EQ(header_text(trace_of(usual_header().station(std::string("AB\0CD", 5))), 440, 8),
              std::string("AB\0\0\0\0\0\0", 8));
}

TEST(Sac_files, an_empty_station_leaves_the_unit_and_the_rest_of_the_fill)
{
    const std::string trace = only_trace(
        convert(usual_header().unit(0x9F2A).raw(60, std::string(1, '\0')) + data({1}).unit(0x9F2A)));
    EXPECT_EQ(header_text(trace, 440, 8), std::string("9F2A\0005  ", 8));
}

TEST(Sac_files, the_component_has_unit_stream_and_channel)
{
    const auto component = [](const Dt& dt) {
        return header_text(only_trace(convert(Eh().unit(0x9F2A).event(12).usual() + dt.packet())), 600, 8);
    };
    EXPECT_EQ(component(data({1}).unit(0x9F2A).channel(2)), "9F2A-1-3");
    EXPECT_EQ(component(data({1}).unit(0x9F2A).channel(9)), "9F2A-1-:");
    EXPECT_EQ(component(data({1}).unit(0x9F2A).stream(9).channel(8)), "9F2A-:-9");
    EXPECT_EQ(component(data({1}).unit(0x9F2A).raw(18, "\xFF")), "9F2A-\xD6-1");
}

TEST(Sac_files, unit_zero_is_shown_as_FFFF)
{
    const Converted run = convert(data({1}).unit(0), {"-L-"});
    Sac s = Sac().stats(1, 1, 1);
    s.kstnm = "0FFFF";
    s.kcmpnm = "FFFF-1-1";
    EXPECT_TRUE(same_tree(run.tree, {{"2004123101530250_0FFFF_1_1.sac", sac_file(s, {1})}}));
}

TEST(Sac_files, the_run_date_is_local_and_counts_days_from_zero)
{
    expect_run_date("UTC", 0);
    expect_run_date("EAST-14", 14);
    expect_run_date("WEST+12", -12);
}

TEST(Sac_files, samples_are_rounded_to_the_nearest_even_float)
{
    const std::string trace = only_trace(
        convert(in_event(data({16777217, 16777219, -16777217, INT32_MAX, INT32_MIN, 16777216, 0, -1}))));
    EXPECT_TRUE(same_bytes(samples_in(trace), std::string("\x4B\x80\x00\x00\x4B\x80\x00\x02\xCB\x80\x00\x00"
                                                          "\x4F\x00\x00\x00\xCF\x00\x00\x00\x4B\x80\x00\x00"
                                                          "\x00\x00\x00\x00\xBF\x80\x00\x00",
                                                          32)));
}

TEST(Sac_files, the_lowest_sample_stays_below_the_reset_value_of_the_maximum)
{
    const std::string low = only_trace(convert(in_event(data({INT32_MIN, INT32_MIN}))));
    EXPECT_EQ(header_bits(low, 1), 0xCF000000U);
    EXPECT_EQ(header_bits(low, 2), 0xCF000000U);
    EXPECT_EQ(header_bits(low, 56), 0xCF000000U);
    const std::string high = only_trace(convert(in_event(data({INT32_MAX, INT32_MAX}))));
    EXPECT_EQ(header_bits(high, 1), 0x4F000000U);
    EXPECT_EQ(header_bits(high, 2), 0x4F000000U);
}

TEST(Sac_files, the_mean_is_divided_before_it_is_rounded)
{
    EXPECT_EQ(header_bits(only_trace(convert(in_event(data({1, 1, 0})))), 56), 0x3F2AAAABU); // 2/3
    EXPECT_EQ(header_bits(only_trace(convert(in_event(data({16777217, 16777218})))), 56),
              0x4B800001U); // ...217.5
}

TEST(Sac_files, no_more_samples_are_written_than_asked_for)
{
    Recording middle;
    for (int32_t i = 0; i < 4; ++i)
        middle += Dt().event(12).format(0x16).samples(std::vector<int32_t>(400, i == 2   ? -20
                                                                                : i == 3 ? 2000
                                                                                         : 5));
    const Converted run = convert(in_event(middle), {"-L-", "-S1000"});
    const std::vector<int32_t> expected = joined(repeated_sample(5, 800), repeated_sample(-20, 200));
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(-20, 5, 0), expected)}}));
}

TEST(Sac_files, the_limit_counts_for_each_channel_of_each_event)
{
    const Converted run =
        convert(in_event(data({1, 2, 3}) + data({4, 5, 6}).channel(1) + data({7})) + Eh().event(13).usual() +
                    Dt().event(13).at(1, 0, 0, 0).samples({8, 9, 10}),
                {"-L-", "-S2"});
    ASSERT_EQ(run.sac_names().size(), 3U);
    EXPECT_EQ(samples_of(run.file(Name_1_1)), (std::vector<float>{1, 2}));
    EXPECT_EQ(samples_of(run.file("2004123101530250_STA01_1_2.sac")), (std::vector<float>{4, 5}));
    EXPECT_EQ(samples_of(run.file("2004123010000000_STA01_1_1.sac")), (std::vector<float>{8, 9}));
}

TEST(Sac_files, no_samples_wanted_means_no_traces)
{
    const Converted run = convert(in_event(data({1, 2, 3})), {"-L-", "-S0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(names(run.tree), "");
}

TEST(Sac_files, samples_to_drop_are_missing_at_the_end_of_the_first_packet)
{
    EXPECT_EQ(kept_of(2, {"-T3"}), joined(counting(1, 7), counting(11, 20)));
}

TEST(Sac_files, samples_to_drop_may_be_more_than_a_packet_has)
{
    EXPECT_EQ(kept_of(3, {"-T10"}), counting(11, 30));
    EXPECT_EQ(kept_of(3, {"-T12"}), joined(counting(11, 18), counting(21, 30)));
    EXPECT_EQ(kept_of(3, {"-T4294967295"}), std::vector<int32_t>{});
}

TEST(Sac_files, dropped_samples_do_not_count_against_the_limit)
{
    EXPECT_EQ(kept_of(2, {"-T3", "-S9"}), joined(counting(1, 7), counting(11, 12)));
}

TEST(Sac_files, samples_are_dropped_anew_for_each_channel_and_event)
{
    const Converted run =
        convert(in_event(data({1, 2, 3}) + data({4, 5, 6}).channel(1)) + Eh().event(13).usual() +
                    Dt().event(13).at(1, 0, 0, 0).samples({8, 9, 10}),
                {"-L-", "-T1"});
    EXPECT_EQ(samples_of(run.file(Name_1_1)), (std::vector<float>{1, 2}));
    EXPECT_EQ(samples_of(run.file("2004123101530250_STA01_1_2.sac")), (std::vector<float>{4, 5}));
    EXPECT_EQ(samples_of(run.file("2004123010000000_STA01_1_1.sac")), (std::vector<float>{8, 9}));
}

TEST(Sac_files, a_trace_longer_than_any_buffer_is_whole)
{
    Recording middle;
    std::vector<int32_t> expected;
    for (int32_t i = 0; i < 100; ++i) {
        const std::vector<int32_t> part(500, i);
        middle += Dt().event(12).format(0x16).samples(part);
        expected.insert(expected.end(), part.begin(), part.end());
    }
    const Converted run = convert(in_event(middle), {"-L-"});
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(0, 99, 49.5f), expected)}}));
}

TEST(Sac_files, statistics_that_were_stored_show_as_reset_in_the_trace)
{
    const Converted run = convert(in_event(data({5, -3, 4}) + data({7}).channel(1)), {"-Q+"});
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(usual_trace(), {5, -3, 4})));
    // A single sample gives no statistics, and keeps its own.
    Sac single = usual_trace().stats(7, 7, 7);
    single.kcmpnm = "9A2F-1-2";
    EXPECT_TRUE(same_bytes(mask_run_date(run.file("2004123101530250_STA01_1_2.sac")), sac_file(single, {7})));
}

TEST(Sac_files, statistics_of_an_event_out_of_sequence_stay_in_its_traces)
{
    const Converted run =
        convert(usual_header().seq(5) + data({5, -3, 4}).seq(6) + Et().event(12).usual().seq(7), {"-Q+"});
    EXPECT_TRUE(
        same_bytes(mask_run_date(only_trace(run)), sac_file(usual_trace().stats(-3, 5, 2), {5, -3, 4})));
}

TEST(Sac_files, an_event_without_trailer_is_finished_at_the_end_of_the_input)
{
    const Converted run = convert(usual_header() + data({5, -3, 4}), {"-L-"});
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(usual_trace().stats(-3, 5, 2), {5, -3, 4})}}));
}
