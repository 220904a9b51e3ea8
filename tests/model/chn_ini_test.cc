// The channel keys: which lines are about a channel, which field each key fills, which of several lines wins.
#include "driver/base/settings.h"
#include "kit/scratch.h"
#include "kit/stage.h"
#include "model/channel.h"
#include "model/ini.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"

#include <gtest/gtest.h>

#include <ctime>
#include <regex>
#include <string>
#include <tuple>

namespace {

/// A new channel (counted from 0) of unit 9A2F, after the unit's section of an INI file of these lines.
struct Channel : CHN_T {
    explicit Channel(const std::string& lines, uint16_t number = 0)
    {
        read("[9A2F]\n" + lines + "\n", number);
    }
    void read(const std::string& file, uint16_t number)
    {
        static UNIT_T owner;
        owner = UNIT_T();
        owner.unit_id = id.unit_id = 0x9A2F;
        unit = &owner;
        id.channel = number;
        set.axis = Axis[number % 6];
        const kit::Scratch scratch;
        FileIni = scratch.write("vxu.ini", file);
        ini_forget();
        Chn_ini(*this);
    }
    std::string letters() const { return {set.band, set.type, set.axis}; }
};

int azimuth(const std::string& line, uint16_t number)
{
    return Channel(line, number).set.azimuth;
}

TEST(Chn_ini, takes_every_key_of_a_channel)
{
    const Channel chn("Ch1FSA=20.5\nCh1Res=16\nCh1Band=H\nCh1Type=N\nCh1Axis=E\nCh1SnsMake=Mark\n"
                      "Ch1SnsSN=4711\nCh1SnsFSA=7.5\nCh1SnsVPU=1500\nCh1SnsFreq=4.5\nCh1SnsDamp=0.7\n"
                      "Ch1SnsModel=L-22D\nCh1Azm=90\nCh1Depth=12.25\nCh1Dip=-90\nCh1SeisComp=HNZ\n"
                      "Ch1StnChn=3");
    EXPECT_EQ(chn.set.fsa, 20.5);
    EXPECT_EQ(chn.set.bits, 16);
    EXPECT_EQ(chn.letters(), "HNE");
    EXPECT_EQ(chn.set.type_code, 1);
    EXPECT_STREQ(chn.set.make.s, "Mark");
    EXPECT_STREQ(chn.set.model.s, "L-22D");
    EXPECT_EQ(chn.set.sns_ndx, 35);
    EXPECT_EQ(chn.set.sn, 4711U);
    EXPECT_EQ(chn.set.sns_fsa, 7.5);
    EXPECT_EQ(chn.set.vpu, 1500.0);
    EXPECT_EQ(chn.set.freq, 4.5);
    EXPECT_EQ(chn.set.damp, 0.7);
    EXPECT_EQ(chn.set.azimuth, 90);
    EXPECT_EQ(chn.set.depth, 12.25);
    EXPECT_EQ(chn.set.dip, -90);
    EXPECT_STREQ(chn.set.SeisComp.s, "HNZ");
    EXPECT_EQ(chn.set.stn_chn, 3);
}

TEST(Chn_ini, texts_of_every_length_leave_nothing_of_those_before)
{
    const std::string letters = "0123456789ABCD";
    for (size_t n = 1; n <= letters.size(); ++n) {
        std::string text = letters.substr(0, n);
        const Channel chn("Ch1SnsModel=##############\nCh1SnsModel=" + text +
                          "\nCh1SeisComp=###\nCh1SeisComp=" + text);
        text.resize(sizeof chn.set.model.s, '\0');
        EXPECT_EQ(std::string(chn.set.model.s, sizeof chn.set.model.s), text);
        text.replace(sizeof chn.set.SeisComp.s - 1, std::string::npos, 1, '\0');
        EXPECT_EQ(std::string(chn.set.SeisComp.s, sizeof chn.set.SeisComp.s), text);
    }
}

TEST(Chn_ini, makes_of_every_length_are_kept_and_leave_the_fields_beside_alone)
{
    const std::string letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (size_t n = 1; n <= letters.size(); ++n) {
        std::string text = letters.substr(0, n);
        const Channel chn("Ch1SnsModel=L-22D\nCh1SnsMake=" + text + "\nCh1Azm=5");
        text.resize(30, '\0');
        text += '\0';
        EXPECT_EQ(std::string(chn.set.make.s, sizeof chn.set.make.s), text);
        EXPECT_STREQ(chn.set.model.s, "L-22D");
        EXPECT_EQ(chn.set.azimuth, 5);
    }
}

TEST(Chn_ini, without_lines_the_defaults_stand)
{
    const Channel chn("; nothing", 4);
    EXPECT_EQ(chn.letters(), "  N");
    EXPECT_EQ(chn.set.type_code, 0);
    EXPECT_EQ(chn.set.bits, 24);
    EXPECT_EQ(chn.set.fsa, 0.0);
    EXPECT_STREQ(chn.set.make.s, "");
    EXPECT_EQ(chn.set.sns_ndx, 0);
    EXPECT_EQ(chn.set.azimuth, 0);
    EXPECT_EQ(chn.set.dip, 0);
}

TEST(Chn_ini, knows_seven_keys_that_fill_nothing)
{
    const Channel chn("Ch1Lat=1\nCh1Lon=2\nCh1Alt=3\nCh1NZNP=4\nCh1Zero=5\nCh1Pole=6\nCh1Norm=7");
    EXPECT_EQ(chn.position.lat, 0.0);
    EXPECT_EQ(chn.position.lon, 0.0);
    EXPECT_EQ(chn.position.alt, 0.0);
    EXPECT_EQ(chn.set.depth, 0.0);
    EXPECT_EQ(chn.set.azimuth, 0);
}

TEST(Chn_ini, one_and_two_digits_name_a_channel)
{
    EXPECT_EQ(azimuth("Ch1Azm=5", 0), 5);
    EXPECT_EQ(azimuth("Ch01Azm=5", 0), 5);
    EXPECT_EQ(azimuth("Ch1Azm=5", 1), 0);
    EXPECT_EQ(azimuth("Ch9Azm=5", 8), 5);
    EXPECT_EQ(azimuth("Ch10Azm=5", 9), 5);
    EXPECT_EQ(azimuth("Ch32Azm=5", 31), 5);
    EXPECT_EQ(azimuth("Ch99Azm=5", 98), 5);
    EXPECT_EQ(azimuth("Ch12Azm=5", 0), 0);
}

TEST(Chn_ini, a_letter_names_a_channel_from_ten_on)
{
    EXPECT_EQ(azimuth("ChAAzm=5", 9), 5);
    EXPECT_EQ(azimuth("ChGAzm=5", 15), 5);
    EXPECT_EQ(azimuth("ChZAzm=5", 34), 5);
}

TEST(Chn_ini, two_digits_at_most_are_the_number)
{
    EXPECT_EQ(azimuth("Ch010Azm=5", 0), 0); // number 1, key "0Azm"
    EXPECT_EQ(azimuth("Ch010Azm=5", 9), 0);
    EXPECT_EQ(azimuth("Ch100Azm=5", 9), 0); // number 10, key "0Azm"
    EXPECT_EQ(azimuth("Ch100Azm=5", 99), 0);
    EXPECT_EQ(azimuth("ChA1Azm=5", 9), 0); // number 10, key "1Azm"
}

TEST(Chn_ini, channel_zero_is_nobody)
{
    EXPECT_EQ(azimuth("Ch0Azm=5", 0), 0);
    EXPECT_EQ(azimuth("Ch00Azm=5", 0), 0);
}

TEST(Chn_ini, any_third_character_counts_from_the_digit_zero_or_the_letter_A)
{
    EXPECT_EQ(azimuth("Ch:Azm=7", 2), 7);  // 58 - 48 - 7 = 3
    EXPECT_EQ(azimuth("ChaAzm=7", 41), 7); // 97 - 48 - 7 = 42
    EXPECT_EQ(azimuth("ChaAzm=7", 9), 0);  // small letters are no capitals
    EXPECT_EQ(azimuth("Ch~Azm=7", 70), 7); // 126 - 48 - 7 = 71
    EXPECT_EQ(azimuth("Ch/Azm=7", 65527 % 256), 0);
    EXPECT_EQ(azimuth("Ch/Azm=7", 65527), 7); // 47 - 48 - 7 in 16 bits = 65528
}

TEST(Chn_ini, a_third_character_beyond_ASCII_names_no_channel)
{
    for (uint16_t number = 0; number <= 165; ++number) {
        EXPECT_EQ(azimuth("Ch\x80"
                          "Azm=7",
                          number),
                  0);
        EXPECT_EQ(azimuth("Ch\xB0"
                          "Azm=7\nCh\xFF"
                          "Azm=7",
                          number),
                  0);
    }
}

TEST(Chn_ini, letters_and_keys_are_read_in_any_case_right_behind_the_number)
{
    EXPECT_EQ(azimuth("CH1aZmuth=90", 0), 90);
    EXPECT_EQ(azimuth("cH1AZM=90", 0), 90);
    EXPECT_EQ(azimuth("Ch1 Azm=90", 0), 0);
    EXPECT_EQ(azimuth(" Ch1Azm=90", 0), 0);
    EXPECT_EQ(azimuth("Ch1Az=90", 0), 0);
    EXPECT_EQ(azimuth("C1Azm=90", 0), 0);
    EXPECT_EQ(azimuth("Chn1Azm=90", 0), 0);
    EXPECT_EQ(azimuth(";Ch1Azm=90", 0), 0);
}

TEST(Chn_ini, heads_without_a_key_are_skipped)
{
    const Channel chn("Ch\nCh1\nCh1=5\nCh01\nC\nCh1Azm\nCh1Azm=3");
    EXPECT_EQ(chn.set.azimuth, 3);
}

TEST(Chn_ini, a_line_without_value_is_as_if_absent)
{
    const Channel chn("Ch1Azm=90\nCh1Azm=\nCh1Azm=;5\nCh1Azm\nCh1Band=H\nCh1Band=\nCh1Type= ;N\n"
                      "Ch1SnsModel=M\nCh1SnsModel=\nCh1FSA=4\nCh1FSA=   \nCh1Res=\nCh1SnsSN=");
    EXPECT_EQ(chn.set.azimuth, 90);
    EXPECT_EQ(chn.letters(), "H Z");
    EXPECT_EQ(chn.set.type_code, 0);
    EXPECT_STREQ(chn.set.model.s, "M");
    EXPECT_EQ(chn.set.fsa, 4.0);
    EXPECT_EQ(chn.set.bits, 24);
}

TEST(Chn_ini, integers_saturate_at_32_bits_before_they_are_cut)
{
    EXPECT_EQ(Channel("Ch1Azm=4294967297").set.azimuth, 65535);
    EXPECT_EQ(Channel("Ch1Dip=99999999999").set.dip, -1);
    EXPECT_EQ(Channel("Ch1Dip=-99999999999").set.dip, 0);
    EXPECT_EQ(Channel("Ch1Res=99999999999").set.bits, 255);
    EXPECT_EQ(Channel("Ch1SnsSN=99999999999").set.sn, 2147483647U);
    EXPECT_EQ(Channel("Ch1SnsSN=-1").set.sn, 4294967295U);
    EXPECT_EQ(Channel("Ch1StnChn=99999999999").set.stn_chn, 65535);
}

TEST(Chn_ini, angles_and_resolution_are_cut_not_checked)
{
    EXPECT_EQ(Channel("Ch1Azm=400").set.azimuth, 400);
    EXPECT_EQ(Channel("Ch1Azm=-1").set.azimuth, 65535);
    EXPECT_EQ(Channel("Ch1Azm=65541").set.azimuth, 5);
    EXPECT_EQ(Channel("Ch1Dip=-90").set.dip, -90);
    EXPECT_EQ(Channel("Ch1Dip=40000").set.dip, -25536);
    EXPECT_EQ(Channel("Ch1Res=280").set.bits, 24);
    EXPECT_EQ(Channel("Ch1Res=-1").set.bits, 255);
}

TEST(Chn_ini, text_that_is_no_number_is_zero)
{
    EXPECT_EQ(Channel("Ch1Azm=5\nCh1Azm=abc").set.azimuth, 0);
    EXPECT_EQ(Channel("Ch1FSA=5\nCh1FSA=abc").set.fsa, 0.0);
    EXPECT_EQ(Channel("Ch1Res=x").set.bits, 0);
}

TEST(Chn_ini, the_last_line_wins_for_plain_keys)
{
    const Channel chn("Ch1FSA=1\nCh1FSA=2\nCh1Res=3\nCh1Res=4\nCh1Azm=5\nCh1Azm=6\nCh1Depth=7\nCh1Depth=8\n"
                      "Ch1Dip=9\nCh1Dip=10\nCh1SnsSN=11\nCh1SnsSN=12\nCh1SeisComp=A\nCh1SeisComp=B\n"
                      "Ch1Band=A\nCh1Band=B\nCh1Type=G\nCh1Type=H\nCh1Axis=1\nCh1Axis=2");
    EXPECT_EQ(chn.set.fsa, 2.0);
    EXPECT_EQ(chn.set.bits, 4);
    EXPECT_EQ(chn.set.azimuth, 6);
    EXPECT_EQ(chn.set.depth, 8.0);
    EXPECT_EQ(chn.set.dip, 10);
    EXPECT_EQ(chn.set.sn, 12U);
    EXPECT_STREQ(chn.set.SeisComp.s, "B");
    EXPECT_EQ(chn.letters(), "BH2");
    EXPECT_EQ(chn.set.type_code, 3);
}

TEST(Chn_ini, the_first_sensor_constant_that_is_not_zero_wins)
{
    const Channel chn("Ch1SnsFSA=0\nCh1SnsFSA=1\nCh1SnsFSA=2\nCh1SnsVPU=3\nCh1SnsVPU=4\nCh1SnsFreq=x\n"
                      "Ch1SnsFreq=5\nCh1SnsFreq=6\nCh1SnsDamp=7\nCh1SnsDamp=8\nCh1StnChn=0\nCh1StnChn=9\n"
                      "Ch1StnChn=10");
    EXPECT_EQ(chn.set.sns_fsa, 1.0);
    EXPECT_EQ(chn.set.vpu, 3.0);
    EXPECT_EQ(chn.set.freq, 5.0);
    EXPECT_EQ(chn.set.damp, 7.0);
    EXPECT_EQ(chn.set.stn_chn, 9);
}

TEST(Chn_ini, only_the_type_letter_becomes_a_capital)
{
    EXPECT_EQ(Channel("Ch1Band=h\nCh1Type=h\nCh1Axis=z").letters(), "hHz");
    EXPECT_EQ(Channel("Ch1Band= High\nCh1Type= Normal\nCh1Axis= East").letters(), "HNE");
}

TEST(Chn_ini, types_G_and_N_have_code_1_and_all_others_3)
{
    const Channel g("Ch1Type=g");
    EXPECT_EQ(g.set.type, 'G');
    EXPECT_EQ(g.set.type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=n").set.type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=N").set.type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=H").set.type_code, 3);
    EXPECT_EQ(Channel("Ch1Type=\xE9").set.type_code, 3);
    EXPECT_EQ(Channel("Ch1Type=\xE9").set.type, '\xE9');
}

TEST(Chn_ini, first_make_wins)
{
    EXPECT_STREQ(Channel("Ch1SnsMake=Mark\nCh1SnsMake=Vexar").set.make.s, "Mark");
}

TEST(Chn_ini, the_last_model_and_the_first_known_row_stay)
{
    const Channel chn("Ch1SnsMake=Kinemetrics\nCh1SnsModel=FBA-3\nCh1SnsModel=FBA-23");
    EXPECT_STREQ(chn.set.model.s, "FBA-23");
    EXPECT_EQ(chn.set.sns_ndx, 3);
}

TEST(Chn_ini, a_model_known_to_nobody_leaves_the_search_open)
{
    const Channel chn("Ch1SnsMake=Vexar\nCh1SnsModel=ZZ-1\nCh1SnsModel=BX-10/1");
    EXPECT_EQ(chn.set.sns_ndx, 22);
    EXPECT_EQ(chn.set.freq, 1300.0);
    EXPECT_EQ(chn.set.damp, 0.1);
    EXPECT_EQ(chn.set.vpu, 1.6);
    EXPECT_EQ(chn.set.sns_fsa, 10.0);
    EXPECT_EQ(Channel("Ch1SnsMake=Vexar\nCh1SnsModel=ZZ-1").set.sns_ndx, 41);
}

TEST(Chn_ini, a_make_that_comes_after_its_model_is_too_late)
{
    const Channel late("Ch1SnsModel=AX-21/1\nCh1SnsMake=Vexar");
    EXPECT_EQ(late.set.sns_ndx, 41);
    EXPECT_EQ(late.set.freq, 0.0);
    EXPECT_STREQ(late.set.make.s, "Vexar");
    EXPECT_EQ(Channel("Ch1SnsModel=AX-21/1\nCh1SnsMake=Vexar\nCh1SnsModel=AX-21/1").set.sns_ndx, 18);
}

TEST(Chn_ini, the_sensor_with_internal_electronics_has_constants_of_its_own)
{
    const Channel internal("Ch1SnsMake=Vexar\nCh1SnsModel=AX-21/3/INT");
    EXPECT_EQ(internal.set.sns_ndx, 19);
    EXPECT_EQ(internal.set.vpu, 1.2);
    EXPECT_EQ(internal.set.sns_fsa, 5.0);
    const Channel external("Ch1SnsMake=Vexar\nCh1SnsModel=AX-21/3");
    EXPECT_EQ(external.set.sns_ndx, 20);
    EXPECT_EQ(external.set.vpu, 2.4);
    EXPECT_EQ(external.set.sns_fsa, 10.0);
}

TEST(Chn_ini, a_short_model_name_catches_the_longer_ones)
{
    EXPECT_EQ(Channel("Ch1SnsMake=Kinemetrics\nCh1SnsModel=FBA-13DH").set.sns_ndx, 2);
}

TEST(Chn_ini, told_constants_before_the_model_stay_and_after_it_come_too_late)
{
    const Channel chn("Ch1SnsMake=Vexar\nCh1SnsFreq=450\nCh1SnsDamp=0\nCh1SnsModel=AX-21/1\nCh1SnsDamp=0.7\n"
                      "Ch1SnsVPU=9\nCh1SnsFSA=8");
    EXPECT_EQ(chn.set.freq, 450.0);
    EXPECT_EQ(chn.set.damp, 0.1);
    EXPECT_EQ(chn.set.vpu, 2.4);
    EXPECT_EQ(chn.set.sns_fsa, 10.0);
}

TEST(Chn_ini, constants_of_a_sensor_without_any_may_follow_its_model)
{
    const Channel chn("Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsFreq=1\nCh1SnsVPU=276");
    EXPECT_EQ(chn.set.sns_ndx, 34);
    EXPECT_EQ(chn.set.freq, 1.0);
    EXPECT_EQ(chn.set.vpu, 276.0);
}

TEST(Chn_ini, texts_are_cut_to_their_fields)
{
    const Channel chn("Ch1SnsMake=123456789012345678901234567890X\nCh1SnsModel=12345678901234X\n"
                      "Ch1SeisComp=1234X");
    EXPECT_STREQ(chn.set.make.s, "123456789012345678901234567890");
    EXPECT_STREQ(chn.set.model.s, "12345678901234");
    EXPECT_STREQ(chn.set.SeisComp.s, "1234");
}

TEST(Chn_ini, a_comment_ends_the_value_and_blanks_before_it_stay)
{
    EXPECT_STREQ(Channel("Ch1SnsMake=  Mark  ; the maker\r").set.make.s, "Mark  ");
    EXPECT_EQ(Channel("Ch1Azm = 90 ; east").set.azimuth, 90);
}

TEST(Chn_ini, a_NUL_ends_its_line)
{
    EXPECT_STREQ(Channel(std::string("Ch1SnsMake=Ma\0rk", 16)).set.make.s, "Ma");
    EXPECT_EQ(azimuth(std::string("Ch1Azm\0=5", 9), 0), 0);
}

TEST(Chn_ini, lines_of_another_unit_have_no_effect)
{
    Channel chn("");
    chn.read("Ch1Azm=1\n[1111]\nCh1Azm=2\n[9A2F]\nCh1Dip=3\n[2222]\nCh1Depth=4\n[9A2F]\nCh1Res=5\n", 0);
    EXPECT_EQ(chn.set.azimuth, 0);
    EXPECT_EQ(chn.set.dip, 3);
    EXPECT_EQ(chn.set.depth, 0.0);
    EXPECT_EQ(chn.set.bits, 24);
    EXPECT_EQ(chn.unit->ini_first, 0); // the section's positions are for the unit's own reading
    EXPECT_EQ(chn.unit->ini_last, 0);
}

TEST(Chn_ini, a_long_line_is_read_in_pieces)
{
    EXPECT_EQ(azimuth(";" + std::string(98, '-') + "Ch1Azm=5", 0), 5);
    EXPECT_EQ(azimuth(";" + std::string(97, '-') + "Ch1Azm=5", 0), 0);
}

TEST(Chn_ini, without_a_file_the_defaults_stand)
{
    Channel chn("Ch1Azm=5");
    FileIni = "/nowhere/vxu.ini";
    chn.set.azimuth = 1;
    testing::internal::CaptureStdout();
    Chn_ini(chn);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(chn.set.azimuth, 1);
}

TEST(Chn_ini, a_file_of_a_megabyte_costs_a_new_channel_nothing_once_it_was_read)
{
    std::string file;
    for (int i = 0; i < 20000; ++i)
        file += "; a comment before any section, as long as such a comment may be\n";
    Channel chn("");
    chn.read(file + "[1111]\nCh1Azm=1\n", 0);
    const clock_t start = clock();
    for (int i = 0; i < 100000; ++i) Chn_ini(chn);
    // Reading 1.3 MB a hundred thousand times would take minutes.
    EXPECT_LT(static_cast<double>(clock() - start) / CLOCKS_PER_SEC, 5.0);
    EXPECT_EQ(chn.set.azimuth, 0);
}

/// A new channel of a unit whose section stands in memory.
CHN_T asks_again(UNIT_T& unit, uint16_t number)
{
    CHN_T chn;
    chn.unit = &unit;
    chn.id.unit_id = unit.unit_id;
    chn.id.channel = number;
    Chn_ini(chn);
    return chn;
}

TEST(Chn_ini, a_long_section_tells_every_channel_that_asks_the_same)
{
    std::string lines;
    for (int i = 0; i < 500; ++i) lines += "; a remark\n";
    lines += "Ch1Azm=10\nCh1SnsMake=Mark\nCh1SnsModel=L-22D\nCh1SnsVPU=5\nCh2Azm=20\nCh1Azm=30\nCh1Band=H\n";
    Channel first(lines);
    for (int time_and_again = 0; time_and_again < 3; ++time_and_again) {
        const CHN_T one = asks_again(*first.unit, 0), two = asks_again(*first.unit, 1);
        EXPECT_EQ(one.set.azimuth, 30);
        EXPECT_EQ(one.set.band, 'H');
        EXPECT_STREQ(one.set.make.s, "Mark");
        EXPECT_EQ(one.set.sns_ndx, 35);
        EXPECT_EQ(one.set.vpu, first.set.vpu);
        EXPECT_EQ(two.set.azimuth, 20);
        EXPECT_EQ(two.set.band, ' ');
        EXPECT_TRUE(two.set.make.empty());
    }
    EXPECT_EQ(asks_again(*Channel(lines + "Ch1Azm=40\n").unit, 0).set.azimuth, 40)
        << "another file, another section";
}

TEST(Chn_ini, very_many_channels_of_a_long_section_do_not_take_very_long)
{
    std::string lines;
    for (int i = 0; i < 100000; ++i) lines += "Ch1Res=\n";
    const Channel first(lines + "Ch1Azm=30\n");
    const clock_t start = clock();
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(asks_again(*first.unit, 0).set.azimuth, 30);
    EXPECT_LT(static_cast<double>(clock() - start) / CLOCKS_PER_SEC, 3.0);
}

// Every key of a channel, in a section that is too long to be walked often. Each value differs from what a
// channel has when it is made.
std::string section_of_every_key()
{
    std::string lines;
    for (int i = 0; i < 80; ++i) lines += "; a remark\n";
    return lines +
           "Ch3FSA=20.5\nCh3Res=16\nCh3Band=H\nCh3Type=G\nCh3Axis=3\nCh3SnsMake=Mark\nCh3SnsSN=4711\n"
           "Ch3SnsFSA=7.5\nCh3SnsVPU=1500\nCh3SnsFreq=4.5\nCh3SnsDamp=0.7\nCh3SnsModel=L-22D\n"
           "Ch3Lat=1\nCh3Lon=2\nCh3Alt=3\nCh3Azm=90\nCh3Depth=12.25\nCh3Dip=-45\nCh3NZNP=4\nCh3Zero=5\n"
           "Ch3Pole=6\nCh3Norm=7\nCh3SeisComp=HNZ\nCh3StnChn=3\n";
}

/// All settings of a channel. A field that is added to them has to be named here, too: the number of names
/// must be that of the fields.
auto fields_of(const ::ChannelSettings& settings)
{
    const auto& [bits, gain_ndx, type_code, band, type, axis, stn_chn, SeisComp, make, model, sn, sns_ndx,
                 vpu_units, azimuth, dip, freq, damp, sns_fsa, vpu, tbw, fsa, depth] = settings;
    return std::tuple(bits, gain_ndx, type_code, band, type, axis, stn_chn, SeisComp.view(), make.view(),
                      model.view(), sn, sns_ndx, vpu_units, azimuth, dip, freq, damp, sns_fsa, vpu, tbw, fsa,
                      depth);
}

/// What the section of every key says, written down by hand. No key is about gain, units of the sensor and
/// bit weight.
::ChannelSettings settings_by_every_key()
{
    ::ChannelSettings told;
    told.bits = 16;
    told.type_code = 1;
    told.band = 'H', told.type = 'G', told.axis = '3';
    told.stn_chn = 3;
    told.SeisComp.put("HNZ");
    told.make.put("Mark");
    told.model.put("L-22D");
    told.sn = 4711;
    told.sns_ndx = 35;
    told.azimuth = 90;
    told.dip = -45;
    told.freq = 4.5, told.damp = 0.7, told.sns_fsa = 7.5, told.vpu = 1500.0;
    told.fsa = 20.5;
    told.depth = 12.25;
    return told;
}

/// The settings of a unit's third channel, through a data packet of an event.
::ChannelSettings settings_in_event(kit::Stage& stage, unsigned number)
{
    const std::string bytes = kit::Dt().event(number).channel(2);
    return Chn_find(stage.event(bytes), stage.packet(bytes)).set;
}

TEST(Chn_ini, a_channel_of_a_later_event_has_every_setting_of_the_first)
{
    kit::Stage stage;
    FileIni = stage.scratch.write("vxu.ini", "[9A2F]\n" + section_of_every_key());
    const ::ChannelSettings first = settings_in_event(stage, 7), second = settings_in_event(stage, 8);
    EXPECT_EQ(fields_of(first), fields_of(settings_by_every_key()));
    EXPECT_EQ(fields_of(second), fields_of(settings_by_every_key()));
    const ::ChannelSettings none{};
    EXPECT_NE(second.bits, none.bits);
    EXPECT_EQ(second.gain_ndx, none.gain_ndx);
}

TEST(Chn_ini, what_an_events_header_says_is_not_carried_to_the_next_event)
{
    kit::Stage stage;
    FileIni = stage.scratch.write("vxu.ini", "[9A2F]\n" + section_of_every_key());
    stage.event(kit::Eh().event(7).seed(2, "LLL").gain(2, '3').sensor_vpu(2, "2.5").bit_weight(2, "1.00  V"));
    const ::ChannelSettings first = settings_in_event(stage, 7), second = settings_in_event(stage, 8);
    EXPECT_EQ(first.band, 'L');
    EXPECT_EQ(first.gain_ndx, 3);
    EXPECT_EQ(first.vpu, 2.5);
    EXPECT_EQ(first.tbw, 1.0);
    EXPECT_EQ(fields_of(second), fields_of(settings_by_every_key()));
}

/// Every key of the table of channel keys has to stand in the section above.
TEST(Chn_ini, knows_no_key_that_the_section_of_every_key_does_not_have)
{
    const std::string source = kit::read_file(VX_SOURCES "/model/chn_ini.cc");
    const size_t begin = source.find("IniKeyChn[] = {"), end = source.find("};", begin);
    ASSERT_NE(end, std::string::npos);
    const std::string table = source.substr(begin, end - begin), section = section_of_every_key();
    const std::regex key("\\{\"([A-Za-z]+)\",");
    int keys = 0;
    for (std::sregex_iterator at(table.begin(), table.end(), key), none; at != none; ++at, ++keys)
        EXPECT_NE(section.find("\nCh3" + (*at)[1].str() + "="), std::string::npos) << (*at)[1];
    EXPECT_EQ(keys, 24);
}

} // namespace
