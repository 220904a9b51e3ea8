#include "tools/maker.h"

#include "mkrec/event_packets.h"
#include "mkrec/parameter_packets.h"

#include <gmock/gmock.h>

#include <cstring>

using namespace mkrec;

namespace {

std::string_view seen(const TextPage& page)
{
    return {reinterpret_cast<const char*>(page.bytes), sizeof page.bytes};
}

std::string bytes(const TextPage& page, int at, int len)
{
    return std::string(seen(page).substr(static_cast<size_t>(at), static_cast<size_t>(len)));
}

using std::string_literals::operator""s;

} // namespace

TEST(Clock, the_recordings_first_millisecond_is_the_start_of_2023)
{
    char digits[Time_len + 1];
    time_digits(clock_at(0), digits);
    EXPECT_STREQ(digits, "2023001000000000");
}

TEST(Clock, counts_days_over_the_years_with_their_leap_days)
{
    const int64_t day = 86400000;
    char digits[Time_len + 1];
    time_digits(clock_at(365 * day - 1), digits);
    EXPECT_STREQ(digits, "2023365235959999");
    time_digits(clock_at(365 * day), digits);
    EXPECT_STREQ(digits, "2024001000000000");
    time_digits(clock_at((365 + 365) * day + 3661001), digits);
    EXPECT_STREQ(digits, "2024366010101001");
    time_digits(clock_at((365 + 366) * day), digits);
    EXPECT_STREQ(digits, "2025001000000000");
}

TEST(Page, the_header_is_binary_coded_decimal_but_for_type_and_unit)
{
    TextPage page;
    start_page(page, {"SH", 0x9A2F, {2004, 123, 10, 15, 30, 250}, 6, 100}, 0);
    EXPECT_EQ(bytes(page, 0, 16), "SH\x07\x04\x9A\x2F\x12\x31\x01\x53\x02\x50\x01\x00\x00\x06"s);
    EXPECT_EQ(bytes(page, 16, 1008), std::string(1008, '\0'));
}

TEST(Page, the_latest_time_of_a_day_keeps_all_its_digits)
{
    TextPage page;
    start_page(page, {"DT", 1, {2099, 366, 23, 59, 59, 999}, 9999}, ' ');
    EXPECT_EQ(bytes(page, 2, 14), "\x07\x99\x00\x01\x36\x62\x35\x95\x99\x99\x10\x24\x99\x99"s);
}

TEST(Page, text_is_cut_to_its_field)
{
    TextPage page;
    start_page(page, {"SC", 1, {2004, 1, 0, 0, 0, 0}, 0}, ' ');
    put_text(page, {20, 4}, "abcdef");
    put_text(page, {1020, 8}, "abcdef");
    EXPECT_EQ(bytes(page, 19, 6), " abcd ");
    EXPECT_EQ(bytes(page, 1019, 5), " abcd");
}

TEST(Data_packet, carries_header_extension_and_payload)
{
    const Survey survey = survey_of({"--units", "3", "--rate", "100", "--format", "32"});
    SampleBlock block{};
    memcpy(block.payload, "\x01\x02\x03\x04", 4);
    block.used = 4 * 150;
    block.samples = 150;
    block.first = 240;
    TextPage page;
    // Third unit, second stream, second event, third channel: unit 9A03, event 4, channel number 5.
    write_data_page(page, survey, {2, 1, 1, 2}, block, 7);
    // 06:00:00 on day 10; a slot of 3 minutes; 300 ms late; 240 samples of 10 ms.
    EXPECT_EQ(bytes(page, 0, 24), "DT\x07\x23\x9A\x03\x01\x00\x60\x30\x27\x00\x06\x64\x00\x07"
                                  "\x00\x04\x01\x05\x01\x50\x08\x32"s);
    EXPECT_EQ(bytes(page, 24, 4), "\x02\x00\x00\x00"s); // 200 microseconds in the digits 2 to 4
    EXPECT_EQ(bytes(page, 46, 1), "\x08"s);             // samples stand behind the extension
    EXPECT_EQ(bytes(page, 64, 5), "\x01\x02\x03\x04\x00"s);
}

TEST(Event_header, tells_station_stream_times_and_channels)
{
    const Survey survey = survey_of({"--rate", "200,50", "--format", "c2"});
    TextPage page;
    const LinePlace event{1, 0, 0, 0};
    write_event_page(page, survey, event, {1000, 2500, -1, -1}, false, 0, 0);
    const Seen eh{seen(page)};
    EXPECT_EQ(bytes(page, 0, 24), "EH\x07\x23\x9A\x02\x00\x10\x00\x00\x10\x00\x10\x24\x00\x00"
                                  "\x00\x01\x00\x00\x00\x00\x00\xC2"s);
    EXPECT_EQ(bytes(page, 57, 7), "20HBIRC"); // clock, days, fifth letter, name
    EXPECT_EQ(eh.text(EH::Strm_name), "strong motion           ");
    EXPECT_EQ(bytes(page, 88, 8), "200 EVT ");
    EXPECT_EQ(eh.text(EH::T_trg), "2023001000002500");
    EXPECT_EQ(eh.text(EH::T_first), "2023001000001000");
    EXPECT_EQ(eh.text(EH::T_detrg), std::string(16, ' '));
    EXPECT_EQ(eh.text(EH::T_last), std::string(16, ' '));
    EXPECT_EQ(bytes(page, 848, 12), "100100      ");
    EXPECT_EQ(eh.text(EH::Bit_wght.all()), "1.907 uV1.907 uV1.907 uV" + std::string(13 * 8, ' '));
    EXPECT_EQ(eh.text(EH::True_wght.all()), "1.905 uV1.905 uV1.905 uV" + std::string(13 * 8, ' '));
    EXPECT_EQ(eh.text(EH::Gain.all()), "111" + std::string(13, ' '));
    EXPECT_EQ(eh.text(EH::Res.all()), "333" + std::string(13, ' '));
    EXPECT_EQ(eh.text(EH::Fsv.all()), "444" + std::string(13, ' '));
    EXPECT_EQ(eh.text(EH::Seed.all()), "HNZ HNN HNE " + std::string(13 * 4, ' '));
    EXPECT_EQ(eh.text(EH::Sns_fsv.all()), "444" + std::string(13, ' '));
    EXPECT_EQ(eh.text(EH::Sns_vpu.all()), "2.50  2.50  2.50  " + std::string(13 * 6, ' '));
    EXPECT_EQ(eh.text(EH::Units.all()), "GGG" + std::string(13, ' '));
    EXPECT_EQ(eh.text(EH::Chn_name.all()), " 1  2  3 " + std::string(13 * 3, ' '));
    EXPECT_EQ(eh.text(EH::Chn_cnt), " 6");
    EXPECT_EQ(eh.text(EH::Position), "N 4601.287E01200.553+00833");
    EXPECT_EQ(bytes(page, 944, 80), std::string(80, ' ')); // no telemetry
}

TEST(Event_header, the_second_stream_has_the_next_channels)
{
    const Survey survey = survey_of({"--rate", "200,50"});
    TextPage page;
    write_event_page(page, survey, {0, 1, 0, 0}, {0, 0, -1, -1}, false, 0, 0);
    const Seen eh{seen(page)};
    EXPECT_EQ(eh.text(EH::Strm_name), "broad band              ");
    EXPECT_EQ(eh.text(EH::Seed.all()), std::string(3 * 4, ' ') + "BHZ BHN BHE " + std::string(10 * 4, ' '));
    EXPECT_EQ(eh.text(EH::Rate), "50  ");
}

TEST(Event_trailer, tells_the_end_too)
{
    const Survey survey = survey_of({});
    TextPage page;
    write_event_page(page, survey, {0, 0, 1, 0}, {1000, 2500, 61000, 61995}, true, 0, 42);
    const Seen et{seen(page)};
    EXPECT_EQ(bytes(page, 0, 2), "ET");
    EXPECT_EQ(bytes(page, 6, 6), "\x00\x10\x00\x10\x19\x95"s);
    EXPECT_EQ(et.text(EH::T_detrg), "2023001000101000");
    EXPECT_EQ(et.text(EH::T_last), "2023001000101995");
    EXPECT_EQ(et.bcd(EVT::Number), 3); // events of two streams are numbered in turn
    EXPECT_EQ(et.bcd(HDR::Seq), 42);
}

TEST(Event_header, channels_from_17_on_are_told_by_a_second_one)
{
    const Survey survey = survey_of({"--channels", "18"});
    TextPage page;
    write_event_page(page, survey, {}, {0, 0, -1, -1}, false, 0, 0);
    EXPECT_EQ(seen(page)[22], '\0');
    EXPECT_EQ(bytes(page, 656, 48), " 1  2  3  4  5  6  7  8  9 10 11 12 13 14 15 16 ");
    write_event_page(page, survey, {}, {0, 0, -1, -1}, false, 1, 1);
    EXPECT_EQ(seen(page)[22], '\x04');
    EXPECT_EQ(bytes(page, 656, 48), "17 18 " + std::string(42, ' '));
}

TEST(Station_packet, lists_five_channels_each)
{
    const Survey survey = survey_of({"--streams", "2", "--channels", "3"});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.stations(page, 0);
    EXPECT_EQ(bytes(page, 12, 4), "\x09\x32\x00\x00"s); // 202 + 5 x 146 bytes
    EXPECT_EQ(bytes(page, 16, 26), "07Valley site response    ");
    EXPECT_EQ(bytes(page, 82, 28), "1   ALDER                   ");
    EXPECT_EQ(bytes(page, 150, 38), "VX 900      9A01        2023010060000 ");
    EXPECT_EQ(bytes(page, 202, 32), "1 vertical  0         -90       ");
    EXPECT_EQ(bytes(page, 202 + 62, 24), "M   M   1   AX-21/3     ");
    EXPECT_EQ(bytes(page, 202 + 138, 8), "1.907 uV");
    EXPECT_EQ(bytes(page, 202 + 2 * 146, 32), "3 east      90        0         ");
    EXPECT_EQ(bytes(page, 202 + 4 * 146, 12), "5 north     ");
    pages.stations(page, 1);
    EXPECT_EQ(bytes(page, 12, 4), "\x03\x48\x00\x01"s);
    EXPECT_EQ(bytes(page, 202, 12), "6 east      ");
    EXPECT_EQ(bytes(page, 202 + 146, 1), " ");
}

TEST(Stream_packet, tells_channels_rate_format_and_trigger)
{
    const Survey survey = survey_of({"--streams", "5", "--rate", "200,50", "--format", "c2,16"});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.streams(page, 0);
    EXPECT_EQ(bytes(page, 12, 2), "\x09\x36"s); // 16 + 4 x 230 bytes
    EXPECT_EQ(bytes(page, 16, 26), "1 strong motion           ");
    EXPECT_EQ(bytes(page, 16 + 26, 22), "123             200 C2");
    EXPECT_EQ(bytes(page, 16 + 64, 4), "EVT ");
    EXPECT_EQ(bytes(page, 16 + 68, 18), "123              2");
    EXPECT_EQ(bytes(page, 16 + 230, 48), "2 broad band                 456          50  16");
    pages.streams(page, 1);
    EXPECT_EQ(bytes(page, 16, 10), "5 stream 5");
    EXPECT_EQ(bytes(page, 16 + 230, 1), " ");
}

TEST(Stream_packet, has_no_event_trigger_when_there_is_no_quake)
{
    const Survey survey = survey_of({"--signal", "quiet"});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.streams(page, 0);
    EXPECT_EQ(bytes(page, 16 + 64, 12), "CON 3600    ");
}

TEST(Operation_packet, has_two_wake_entries)
{
    const Survey survey = survey_of({});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.operation(page);
    EXPECT_EQ(bytes(page, 12, 4), "\x01\x76\x00\x00"s); // 48 + 2 x 64 bytes
    EXPECT_EQ(bytes(page, 16, 32), "ACSC12 DYN6660  NYOT            ");
    EXPECT_EQ(bytes(page, 48, 28), "1 20230100600 00010001000024");
    EXPECT_EQ(bytes(page, 112, 28), "2 20230101800 00010001000024");
    EXPECT_EQ(bytes(page, 176, 1), " ");
}

TEST(Calibration_packet, has_a_step)
{
    const Survey survey = survey_of({});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.calibration(page);
    EXPECT_EQ(bytes(page, 16, 66), "2023010060000 86400   1   60      ON  10.0    2.0     0.5     1   ");
}

TEST(Auxiliary_packet, names_its_channels)
{
    const Survey survey = survey_of({});
    ParameterPages pages(survey, 0);
    TextPage page;
    pages.auxiliary(page);
    EXPECT_EQ(bytes(page, 16, 36), "  123             60      163600    ");
}

TEST(Directory_packet, lists_an_event_with_packed_times)
{
    const Survey survey = survey_of({"--format", "c0"});
    ParameterPages pages(survey, 0);
    const int64_t ms = (9 * 24 + 6) * 3600000 + 61002;
    TextPage page;
    pages.directory(page, {{{0, 1, 0, 0}, {ms, ms, ms, ms}, 12, 34}}, 99, ms);
    EXPECT_EQ(bytes(page, 12, 2), "\x01\x04"s);
    EXPECT_EQ(bytes(page, 16, 16), "\0\0\0\0\0\0\0\x63\0\0\0\x01\0\0\0\x01"s);
    EXPECT_EQ(bytes(page, 32, 16), "\0\0\0\x01\x01\x01\0\x48\x9A\x01\0\x02\x01\x01\0\x01"s);
    EXPECT_EQ(bytes(page, 48, 12), "broad baEVT ");
    // 39 years since 1984 in the top 7 bits; 9 days, 6 hours, 1 minute, 1 second are 799261 seconds.
    EXPECT_EQ(bytes(page, 60, 4), "\x4E\x0C\x32\x1D"s);
    EXPECT_EQ(bytes(page, 80, 2), "\0\x02"s);
    EXPECT_EQ(bytes(page, 90, 14), "\0\xC0\0\0\0\x0C\0\0\0\x22\0\0\0\0"s);
}
