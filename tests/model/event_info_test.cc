// What a header or trailer tells of an event and its unit, field by field.
#include "kit/packets.h"
#include "model/event.h"
#include "model/record/records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using kit::Eh;
using kit::Et;

/// An event of a unit whose INI file named it, and whatever packets it hears.
struct Event : EVT_T {
    Event()
    {
        owner.stn_name.put("  INI");
        owner.position.lat = 1.0, owner.position.lon = 2.0, owner.position.alt = 3.0;
        owner.eh_chn_cnt = 9;
        unit = &owner;
    }
    template <class Builder>
    explicit Event(const Builder& packet) : Event()
    {
        hear(packet);
    }
    void hear(const std::string& bytes)
    {
        Evt_info(*this, PACKET(reinterpret_cast<const uint8_t*>(bytes.data())));
    }
    Event(const Event&) = delete;
    UNIT_T owner;
};

TEST(Evt_info, takes_every_text_of_a_header)
{
    const Event evt(Eh().rate("250 ")
                        .trigger_type("EVT ")
                        .stream_name("Triggered stream of the event")
                        .t_trg("2004123101530123")
                        .t_first("2004123101530001")
                        .t_detrg("2004123101630002")
                        .t_last("2004123101640003")
                        .comment("forty characters of a comment, no more: XYZ"));
    EXPECT_EQ(evt.smp_rate, 250.0F);
    EXPECT_STREQ(evt.trg_type.s, "EVT ");
    EXPECT_STREQ(evt.strm_name.s, "Triggered stream");
    EXPECT_STREQ(evt.times.t_trg.s, "2004123101530123");
    EXPECT_STREQ(evt.times.t_first.s, "2004123101530001");
    EXPECT_STREQ(evt.times.t_detrg.s, "2004123101630002");
    EXPECT_STREQ(evt.times.t_last.s, "2004123101640003");
    EXPECT_STREQ(evt.cmnt.s, "forty characters of a comment, no more: ");
}

TEST(Evt_info, blank_texts_are_taken_as_blanks)
{
    const Event evt{Eh()};
    EXPECT_STREQ(evt.trg_type.s, "    ");
    EXPECT_STREQ(evt.strm_name.s, "                ");
    EXPECT_STREQ(evt.times.t_first.s, "                ");
    EXPECT_EQ(evt.cmnt.length(), 40U);
    EXPECT_EQ(evt.smp_rate, 0.0F);
}

TEST(Evt_info, texts_stop_at_a_NUL)
{
    const Event evt(Eh().stream_name(std::string_view("ab\0cd", 5))
                        .trigger_type(std::string_view("E\0VT", 4))
                        .t_first(std::string_view("2004\0", 5))
                        .comment(std::string_view("x\0y", 3)));
    EXPECT_STREQ(evt.strm_name.s, "ab");
    EXPECT_STREQ(evt.trg_type.s, "E");
    EXPECT_STREQ(evt.times.t_first.s, "2004");
    EXPECT_STREQ(evt.cmnt.s, "x");
}

/// All bytes of a text that was put into N characters, behind what stood there before.
template <size_t N>
std::string stored(const std::string& text)
{
    std::string bytes = text.substr(0, N);
    bytes.resize(N + 1, '\0');
    return bytes;
}

TEST(Evt_info, texts_of_every_length_leave_nothing_of_those_before)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN", full(40, '#');
    for (size_t n = 0; n <= letters.size(); ++n) {
        std::string text = letters.substr(0, n);
        Event evt;
        for (std::string put : {full, text}) {
            put.resize(40, '\0');
            evt.hear(Et().stream_name(put)
                         .trigger_type(put)
                         .t_trg(put)
                         .t_first(put)
                         .t_detrg(put)
                         .t_last(put)
                         .comment(put));
        }
        const auto whole = [](const auto& field) { return std::string(field.s, sizeof field.s); };
        EXPECT_EQ(whole(evt.strm_name), stored<16>(text));
        EXPECT_EQ(whole(evt.trg_type), stored<4>(text));
        for (const TIMESTR* time :
             {&evt.times.t_trg, &evt.times.t_first, &evt.times.t_detrg, &evt.times.t_last})
            EXPECT_EQ(whole(*time), stored<16>(text)) << n;
        EXPECT_EQ(whole(evt.cmnt), stored<40>(text));
    }
}

TEST(Evt_info, the_rate_is_a_number_or_a_quotient_of_four_characters)
{
    EXPECT_EQ(Event(Eh().rate(" 100")).smp_rate, 100.0F);
    EXPECT_EQ(Event(Eh().rate("1/25")).smp_rate, 0.2F); // the divisor is read from its second digit on
    EXPECT_TRUE(std::isinf(Event(Eh().rate("1/10")).smp_rate));
    EXPECT_TRUE(std::isinf(Event(Eh().rate("inf ")).smp_rate));
    EXPECT_TRUE(std::isnan(Event(Eh().rate("nan ")).smp_rate));
    EXPECT_EQ(Event(Eh().rate("0x10")).smp_rate, 16.0F);
    EXPECT_EQ(Event(Eh().rate("1e3 ")).smp_rate, 1000.0F);
    EXPECT_EQ(Event(Eh().rate("1000").trigger_type("5678")).smp_rate, 1000.0F);
    EXPECT_EQ(Event(Eh().rate(std::string_view("10\0"
                                               "0",
                                               4)))
                  .smp_rate,
              10.0F);
    EXPECT_EQ(Event(Eh().rate("fast")).smp_rate, 0.0F);
}

TEST(Evt_info, a_telemetry_unit_has_a_rate_of_eight_characters_and_trigger_type_MIM)
{
    const Event evt(Eh().rate_telemetry("100.1256").telemetry("     1"));
    EXPECT_EQ(evt.smp_rate, 100.1256F);
    EXPECT_STREQ(evt.trg_type.s, "MIM ");
}

TEST(Evt_info, six_NULs_are_not_six_blanks_and_so_mean_telemetry)
{
    const Event evt(Eh().rate_telemetry("100.1256").raw(1016, std::string(6, '\0')));
    EXPECT_EQ(evt.smp_rate, 100.1256F);
    EXPECT_STREQ(evt.trg_type.s, "MIM ");
}

TEST(Evt_info, the_bytes_beside_the_six_do_not_mean_telemetry)
{
    const Event evt(Eh().rate("100 ").trigger_type("EVT ").raw(1015, "x").raw(1022, "xx"));
    EXPECT_EQ(evt.smp_rate, 100.0F);
    EXPECT_STREQ(evt.trg_type.s, "EVT ");
}

TEST(Evt_info, keeps_the_channel_entries_of_each_bank)
{
    Event evt(Eh().bit_weight(0, "first").true_weight(15, "true").gain(1, '7').resolution(2, 'A'));
    ASSERT_TRUE(evt.bank[0]);
    EXPECT_FALSE(evt.bank[1]);
    evt.hear(Et().second_bank()
                 .full_scale(3, 'R')
                 .seed(4, "HHZ")
                 .sensor_full_scale(5, '2')
                 .sensor_vpu(6, "1.5")
                 .units_code(15, 'V'));
    ASSERT_TRUE(evt.bank[1]);
    EXPECT_EQ(evt.bank[0]->field(EH::Bit_wght[0]), "first   ");
    EXPECT_EQ(evt.bank[0]->field(EH::True_wght[15]), "true    ");
    EXPECT_EQ(evt.bank[0]->field(EH::Gain[1]), "7");
    EXPECT_EQ(evt.bank[0]->field(EH::Res[2]), "A");
    EXPECT_EQ(evt.bank[1]->field(EH::Bit_wght[0]), "        ");
    EXPECT_EQ(evt.bank[1]->field(EH::Fsv[3]), "R");
    EXPECT_EQ(evt.bank[1]->field(EH::Seed[4]), "HHZ ");
    EXPECT_EQ(evt.bank[1]->field(EH::Sns_fsv[5]), "2");
    EXPECT_EQ(evt.bank[1]->field(EH::Sns_vpu[6]), "1.5   ");
    EXPECT_EQ(evt.bank[1]->field(EH::Units[15]), "V");
}

TEST(Evt_info, only_flag_bit_2_tells_the_bank)
{
    const Event evt(Eh().flags(0xFB));
    EXPECT_TRUE(evt.bank[0]);
    EXPECT_FALSE(evt.bank[1]);
}

TEST(Evt_info, the_fifth_character_of_a_station_stands_before_the_other_four)
{
    const Event evt(Eh().raw(59, "XSTA1"));
    EXPECT_STREQ(evt.stn_name.s, "STA1X");
    EXPECT_STREQ(evt.owner.stn_name.s, "STA1X");
}

TEST(Evt_info, a_blank_first_station_character_leaves_the_units_name)
{
    const Event evt(Eh().raw(59, "X STA"));
    EXPECT_STREQ(evt.stn_name.s, "  INI");
    EXPECT_STREQ(evt.owner.stn_name.s, "  INI");
}

TEST(Evt_info, a_station_of_a_packet_stays_with_the_unit)
{
    Event evt(Eh().station("STA01"));
    evt.hear(Eh());
    EXPECT_STREQ(evt.stn_name.s, "STA01");
}

TEST(Evt_info, a_station_that_begins_with_NUL_is_empty)
{
    const Event evt(Eh().raw(59, std::string_view("X\0STA", 5)));
    EXPECT_STREQ(evt.stn_name.s, "");
    EXPECT_STREQ(evt.owner.stn_name.s, "");
}

TEST(Evt_info, a_NUL_within_a_station_hides_its_fifth_character)
{
    EXPECT_STREQ(Event(Eh().raw(59, std::string_view("XAB\0D", 5))).stn_name.s, "AB");
}

TEST(Evt_info, a_station_keeps_its_blanks)
{
    EXPECT_STREQ(Event(Eh().raw(59, " AB  ")).stn_name.s, "AB   ");
}

TEST(Evt_info, the_channel_count_is_two_digits)
{
    EXPECT_EQ(Event(Eh().installed("06")).owner.eh_chn_cnt, 6);
    EXPECT_EQ(Event(Eh().installed("32").comment("123")).owner.eh_chn_cnt, 32);
    EXPECT_EQ(Event(Eh().installed("6")).owner.eh_chn_cnt, 6);
    EXPECT_EQ(Event(Eh().installed(" 6")).owner.eh_chn_cnt, 9); // begins blank: not given
    EXPECT_EQ(Event(Eh().installed("-1")).owner.eh_chn_cnt, 65535);
    EXPECT_EQ(Event(Eh().installed("xx")).owner.eh_chn_cnt, 0);
}

TEST(Evt_info, days_since_the_last_lock)
{
    EXPECT_EQ(Event(Eh().pll_days('0')).pll_days, 0);
    EXPECT_EQ(Event(Eh().pll_days('7')).pll_days, 7);
    EXPECT_EQ(Event(Eh().pll_days('?')).pll_days, 10);
    EXPECT_EQ(Event(Eh().pll_days(' ')).pll_days, 65535);
    EXPECT_EQ(Event(Eh().pll_days('x')).pll_days, 0);
    Event evt(Eh().pll_days('7'));
    evt.hear(Eh());
    EXPECT_EQ(evt.pll_days, 65535);
}

TEST(Evt_info, a_position_is_degrees_and_minutes_with_the_hemispheres_letters)
{
    const Event evt(Eh().position("N 3530.60 W11730.900000735"));
    EXPECT_DOUBLE_EQ(evt.owner.position.lat, 35.51);
    EXPECT_DOUBLE_EQ(evt.owner.position.lon, -117.515);
    EXPECT_DOUBLE_EQ(evt.owner.position.alt, 735.0);
}

TEST(Evt_info, south_and_west_are_negative_in_either_case)
{
    const Event capital(Eh().position("S 1030.00 W02015.00   -12 "));
    EXPECT_DOUBLE_EQ(capital.owner.position.lat, -10.5);
    EXPECT_DOUBLE_EQ(capital.owner.position.lon, -20.25);
    EXPECT_DOUBLE_EQ(capital.owner.position.alt, -12.0);
    const Event small(Eh().position("s 1030.00 w02015.00     5 "));
    EXPECT_DOUBLE_EQ(small.owner.position.lat, -10.5);
    EXPECT_DOUBLE_EQ(small.owner.position.lon, -20.25);
    const Event other(Eh().position("n 1030.00 e02015.00     5 "));
    EXPECT_DOUBLE_EQ(other.owner.position.lat, 10.5);
    EXPECT_DOUBLE_EQ(other.owner.position.lon, 20.25);
}

TEST(Evt_info, a_position_that_begins_with_blank_or_NUL_is_not_given)
{
    const Event blank(Eh().position("  1030.00 W02015.00    12 "));
    EXPECT_EQ(blank.owner.position.lat, 1.0);
    EXPECT_EQ(blank.owner.position.lon, 2.0);
    EXPECT_EQ(blank.owner.position.alt, 3.0);
    const Event nul(Eh().raw(918, std::string_view("\0 1030.00 W02015.00    12 ", 26)));
    EXPECT_EQ(nul.owner.position.lat, 1.0);
}

TEST(Evt_info, blanks_before_a_number_of_the_position_do_not_count_in_its_width)
{
    // Latitude degrees "  " are read from the minutes that follow; the minutes as ever.
    const Event evt(Eh().position("N   06.00 E  7 1.50     9 "));
    EXPECT_DOUBLE_EQ(evt.owner.position.lat, 6.0 + 6.0 / 60.0);
    EXPECT_DOUBLE_EQ(evt.owner.position.lon, 7.0 + 1.5 / 60.0);
    EXPECT_DOUBLE_EQ(evt.owner.position.alt, 9.0);
}

TEST(Evt_info, position_fields_that_are_no_numbers_are_zero)
{
    const Event evt(Eh().position("Nowhere that anybody knows"));
    EXPECT_EQ(evt.owner.position.lat, 0.0);
    EXPECT_EQ(evt.owner.position.lon, 0.0);
    EXPECT_EQ(evt.owner.position.alt, 0.0);
    const Event empty(Eh().position("N"));
    EXPECT_EQ(empty.owner.position.lat, 0.0);
    EXPECT_EQ(empty.owner.position.alt, 0.0);
}

TEST(Evt_info, a_trailer_tells_the_same_and_the_later_packet_wins)
{
    Event evt(Eh().usual().stream_name("early"));
    evt.hear(Et().station("STA02")
                 .rate("200 ")
                 .t_first("2004123101531000")
                 .position("N 1000.00 E02000.00     5 "));
    EXPECT_EQ(evt.smp_rate, 200.0F);
    EXPECT_STREQ(evt.times.t_first.s, "2004123101531000");
    EXPECT_STREQ(evt.times.t_trg.s, "                ");
    EXPECT_STREQ(evt.strm_name.s, "                ");
    EXPECT_STREQ(evt.stn_name.s, "STA02");
    EXPECT_EQ(evt.owner.position.lat, 10.0);
}

TEST(Evt_info, a_trailer_without_rate_takes_the_rate_away)
{
    Event evt(Eh().usual());
    EXPECT_EQ(evt.smp_rate, 100.0F);
    evt.hear(Et());
    EXPECT_EQ(evt.smp_rate, 0.0F);
}

TEST(Evt_info, a_short_packet_is_taken_like_a_full_one)
{
    const Event evt(Et().fill(24, 1024, '\0').bytes(57));
    EXPECT_EQ(evt.smp_rate, 0.0F);
    EXPECT_STREQ(evt.trg_type.s, "MIM ");
    EXPECT_STREQ(evt.stn_name.s, "");
    EXPECT_STREQ(evt.times.t_first.s, "");
    EXPECT_EQ(evt.owner.eh_chn_cnt, 0);
    EXPECT_EQ(evt.owner.position.lat, 1.0);
    EXPECT_EQ(evt.pll_days, 0);
}

TEST(Evt_info, leaves_the_marks_of_the_event_to_the_stream)
{
    const Event evt(Eh().usual().flags(0x10));
    EXPECT_FALSE(evt.eh_seen);
    EXPECT_FALSE(evt.et_seen);
    EXPECT_FALSE(evt.flag_bit4);
}

TEST(Evt_info, any_other_packet_blanks_the_texts)
{
    Event evt(Eh().usual().stream_name("s").comment("c"));
    evt.chn_cnt = 3;
    evt.hear(kit::Dt());
    EXPECT_STREQ(evt.trg_type.s, "    ");
    EXPECT_STREQ(evt.strm_name.s, "                ");
    EXPECT_STREQ(evt.times.t_trg.s, "                ");
    EXPECT_STREQ(evt.times.t_first.s, "                ");
    EXPECT_STREQ(evt.times.t_detrg.s, "                ");
    EXPECT_STREQ(evt.times.t_last.s, "                ");
    EXPECT_STREQ(evt.cmnt.s, "                                        ");
    EXPECT_STREQ(evt.stn_name.s, "     ");
    EXPECT_EQ(evt.smp_rate, 0.0F);
    EXPECT_EQ(evt.chn_cnt, 0);
    EXPECT_STREQ(evt.owner.stn_name.s, "STA01");
}

TEST(EVT_T, an_event_that_heard_no_header_starts_empty)
{
    const EVT_T evt;
    EXPECT_EQ(evt.pll_days, 0);
    EXPECT_EQ(evt.strm, 0);
    EXPECT_EQ(evt.smp_rate, 0.0F);
    EXPECT_STREQ(evt.strm_name.s, "");
    EXPECT_STREQ(evt.trg_type.s, "");
    EXPECT_STREQ(evt.cmnt.s, "");
    EXPECT_EQ(evt.lo, 99);
}

} // namespace
