// What an event header tells of a channel: every code letter, and what a blank leaves alone.
#include "kit/packets.h"
#include "model/channel.h"
#include "model/event.h"
#include "model/record/records.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kit::Eh;

PACKET packet_of(const std::string& bytes)
{
    return PACKET(reinterpret_cast<const uint8_t*>(bytes.data()));
}

/// An event that has heard these headers.
struct ToldEvent {
    explicit ToldEvent(const std::vector<std::string>& headers)
    {
        evt.unit = &unit;
        for (const std::string& header : headers) Evt_info(evt, packet_of(header));
    }
    /// A channel as it stands after the INI file, with this header's news applied.
    CHN_T channel(uint16_t number)
    {
        CHN_T chn;
        chn.evt = &evt;
        chn.unit = &unit;
        chn.id.channel = number;
        chn.set.band = 'b', chn.set.type = 't', chn.set.axis = 'a';
        chn.set.bits = 99, chn.set.gain_ndx = 9, chn.set.type_code = 9, chn.set.stn_chn = 99;
        chn.set.fsa = chn.set.tbw = chn.set.vpu = chn.set.sns_fsa = 99.0;
        Chn_ehet(chn);
        return chn;
    }
    UNIT_T unit;
    EVT_T evt;
};

CHN_T told(const Eh& header, uint16_t number = 0)
{
    ToldEvent event({header});
    return event.channel(number);
}

std::string letters(const CHN_T& chn)
{
    return {chn.set.band, chn.set.type, chn.set.axis};
}

void expect_untouched(const CHN_T& chn)
{
    EXPECT_EQ(letters(chn), "bta");
    EXPECT_EQ(chn.set.bits, 99);
    EXPECT_EQ(chn.set.gain_ndx, 9);
    EXPECT_EQ(chn.set.type_code, 9);
    EXPECT_EQ(chn.set.fsa, 99.0);
    EXPECT_EQ(chn.set.tbw, 99.0);
    EXPECT_EQ(chn.set.vpu, 99.0);
    EXPECT_EQ(chn.set.sns_fsa, 99.0);
    EXPECT_EQ(chn.set.stn_chn, 99);
}

TEST(Chn_ehet, blank_fields_leave_everything_alone)
{
    expect_untouched(told(Eh()));
}

TEST(Chn_ehet, without_a_header_nothing_changes)
{
    ToldEvent event({});
    expect_untouched(event.channel(0));
    expect_untouched(event.channel(16));
}

TEST(Chn_ehet, takes_the_entries_of_the_channels_own_slot)
{
    const Eh header = Eh().seed(2, "HHZ").seed(3, "LNE").sensor_vpu(2, "1.5").sensor_vpu(3, "2.5");
    EXPECT_EQ(letters(told(header, 2)), "HHZ");
    EXPECT_EQ(letters(told(header, 3)), "LNE");
    EXPECT_EQ(letters(told(header, 4)), "bta");
    EXPECT_EQ(told(header, 2).set.vpu, 1.5);
    EXPECT_EQ(told(header, 3).set.vpu, 2.5);
}

TEST(Chn_ehet, takes_all_fields_of_the_last_slot)
{
    const CHN_T chn = told(Eh().bit_weight(15, "3.81  uV")
                               .gain(15, '3')
                               .resolution(15, '2')
                               .full_scale(15, '4')
                               .seed(15, "BNX")
                               .sensor_full_scale(15, '1')
                               .sensor_vpu(15, "1500.5"),
                           15);
    EXPECT_DOUBLE_EQ(chn.set.tbw, 3.81e-6);
    EXPECT_EQ(chn.set.gain_ndx, 3);
    EXPECT_EQ(chn.set.bits, 16);
    EXPECT_EQ(chn.set.fsa, 20.0);
    EXPECT_EQ(letters(chn), "BNX");
    EXPECT_EQ(chn.set.sns_fsa, 3.75);
    EXPECT_EQ(chn.set.vpu, 1500.5);
}

TEST(Chn_ehet, the_second_bank_is_about_channels_17_to_32)
{
    ToldEvent event({Eh().seed(0, "AAA"), Eh().second_bank().seed(0, "BBB").seed(15, "CCC")});
    EXPECT_EQ(letters(event.channel(0)), "AAA");
    EXPECT_EQ(letters(event.channel(16)), "BBB");
    EXPECT_EQ(letters(event.channel(31)), "CCC");
    EXPECT_EQ(letters(event.channel(15)), "bta");
}

TEST(Chn_ehet, only_the_bank_that_was_told_of_is_known)
{
    ToldEvent event({Eh().second_bank().seed(0, "BBB")});
    expect_untouched(event.channel(0));
    EXPECT_EQ(letters(event.channel(16)), "BBB");
}

TEST(Chn_ehet, channels_beyond_the_second_bank_are_not_described)
{
    ToldEvent event({Eh().seed(0, "AAA"), Eh().second_bank().seed(0, "BBB")});
    expect_untouched(event.channel(32));
    expect_untouched(event.channel(48));
    expect_untouched(event.channel(165));
}

TEST(Chn_ehet, the_true_bit_weight_goes_before_the_nominal_one)
{
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "1.00  V")).set.tbw, 1.0);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "1.00  V").true_weight(0, "2.00  V")).set.tbw, 2.0);
    EXPECT_DOUBLE_EQ(told(Eh().true_weight(0, "2.00  V")).set.tbw, 2.0);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "1.00  V").true_weight(0, " 2.00 V")).set.tbw, 1.0);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, " 1.00 V").true_weight(0, " 2.00 V")).set.tbw, 99.0);
}

TEST(Chn_ehet, the_seventh_character_scales_the_bit_weight)
{
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89 mV")).set.tbw, 0.01589);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89 uV")).set.tbw, 0.00001589);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89 nV")).set.tbw, 0.00000001589);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89 pV")).set.tbw, 15.89);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89  V")).set.tbw, 15.89);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89 MV")).set.tbw, 15.89);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "15.89mV ")).set.tbw, 15.89); // the sixth does not
}

TEST(Chn_ehet, five_characters_are_the_bit_weight)
{
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "1234567u")).set.tbw, 12345.0);
    EXPECT_DOUBLE_EQ(told(Eh().bit_weight(0, "word   V")).set.tbw, 0.0);
    EXPECT_DOUBLE_EQ(told(Eh().raw(288, std::string(8, '\0')).bit_weight(0, "1.00  V")).set.tbw, 0.0);
}

TEST(Chn_ehet, the_gain_is_the_distance_from_the_digit_zero)
{
    for (int i = 0; i < 16; ++i) EXPECT_EQ(told(Eh().gain(0, static_cast<char>('0' + i))).set.gain_ndx, i);
    EXPECT_EQ(told(Eh().gain(0, '@')).set.gain_ndx, 9); // 16
    EXPECT_EQ(told(Eh().gain(0, 'A')).set.gain_ndx, 9); // 17: no hexadecimal digit here
    EXPECT_EQ(told(Eh().gain(0, '/')).set.gain_ndx, 9);
    EXPECT_EQ(told(Eh().gain(0, '\0')).set.gain_ndx, 9);
    EXPECT_EQ(told(Eh().gain(0, '\xB0')).set.gain_ndx, 9);
    EXPECT_EQ(told(Eh().gain(0, '\xFF')).set.gain_ndx, 9);
}

TEST(Chn_ehet, resolution_codes)
{
    const std::pair<char, int> codes[] = {{' ', 99}, {'1', 8},  {'2', 16}, {'4', 32}, {'A', 10}, {'B', 11},
                                          {'C', 12}, {'3', 24}, {'D', 24}, {'a', 24}, {'\0', 24}};
    for (const auto& [code, bits] : codes) EXPECT_EQ(told(Eh().resolution(0, code)).set.bits, bits) << code;
}

TEST(Chn_ehet, full_scale_codes)
{
    const std::pair<char, double> codes[] = {{' ', 99.0}, {'1', 3.75},  {'2', 5.0},    {'4', 20.0},
                                             {'R', 3.34}, {'T', 512.0}, {'V', 20.875}, {'3', 10.0},
                                             {'r', 10.0}, {'\0', 10.0}};
    for (const auto& [code, volts] : codes) EXPECT_EQ(told(Eh().full_scale(0, code)).set.fsa, volts) << code;
}

TEST(Chn_ehet, sensor_full_scale_codes)
{
    const std::pair<char, double> codes[] = {{' ', 99.0}, {'1', 3.75}, {'2', 5.0},  {'4', 20.0},
                                             {'R', 10.0}, {'3', 10.0}, {'\0', 10.0}};
    for (const auto& [code, volts] : codes)
        EXPECT_EQ(told(Eh().sensor_full_scale(0, code)).set.sns_fsa, volts) << code;
}

TEST(Chn_ehet, SEED_letters_come_one_by_one)
{
    EXPECT_EQ(letters(told(Eh().seed(0, "H"))), "Hta");
    EXPECT_EQ(letters(told(Eh().seed(0, " HZ "))), "bHZ");
    EXPECT_EQ(letters(told(Eh().seed(0, "  Z"))), "btZ");
    EXPECT_EQ(letters(told(Eh().seed(0, "   Q"))), "bta");
    EXPECT_EQ(letters(told(Eh().seed(0, "hnz"))), "hnz");
}

TEST(Chn_ehet, SEED_types_G_and_N_have_code_1_and_all_others_3)
{
    EXPECT_EQ(told(Eh().seed(0, "HGZ")).set.type_code, 1);
    EXPECT_EQ(told(Eh().seed(0, "HNZ")).set.type_code, 1);
    EXPECT_EQ(told(Eh().seed(0, "HHZ")).set.type_code, 3);
    EXPECT_EQ(told(Eh().seed(0, "HnZ")).set.type_code, 3);
    EXPECT_EQ(told(Eh().seed(0, "H Z")).set.type_code, 9);
}

TEST(Chn_ehet, a_NUL_is_a_SEED_letter_like_others)
{
    const CHN_T chn = told(Eh().raw(464, std::string(4, '\0')));
    EXPECT_EQ(letters(chn), std::string(3, '\0'));
    EXPECT_EQ(chn.set.type_code, 3);
}

TEST(Chn_ehet, sensor_volts_per_unit_are_six_characters)
{
    EXPECT_EQ(told(Eh().sensor_vpu(0, "1.25")).set.vpu, 1.25);
    EXPECT_EQ(told(Eh().sensor_vpu(0, "123456").sensor_vpu(1, "789")).set.vpu, 123456.0);
    EXPECT_EQ(told(Eh().sensor_vpu(0, "-.5e1")).set.vpu, -5.0);
    EXPECT_EQ(told(Eh().sensor_vpu(0, " 1.25")).set.vpu, 99.0);
    EXPECT_EQ(told(Eh().sensor_vpu(0, "volts")).set.vpu, 0.0);
}

TEST(Chn_ehet, no_field_tells_a_station_channel_number)
{
    EXPECT_EQ(told(Eh().units_code(0, 'V').channel_name(0, "123")).set.stn_chn, 99);
}

TEST(Chn_ehet, a_later_header_of_the_bank_replaces_the_earlier)
{
    ToldEvent event({Eh().seed(0, "AAA").sensor_vpu(0, "1"), Eh().seed(0, "BBB")});
    EXPECT_EQ(letters(event.channel(0)), "BBB");
    EXPECT_EQ(event.channel(0).set.vpu, 99.0);
}

} // namespace
