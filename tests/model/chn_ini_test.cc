// The channel keys: which lines are about a channel, which field each key fills, which of several lines wins.
#include "driver/settings.h"
#include "kit/scratch.h"
#include "model/catalogue.h"
#include "model/channel.h"
#include "model/ini.h"
#include "model/records.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

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
        owner.unit_id = unit_id = 0x9A2F;
        unit = &owner;
        channel = number;
        axis = Axis[number % 6];
        const kit::Scratch scratch;
        FileIni = scratch.write("vxu.ini", file);
        ini_forget();
        Chn_ini(this);
    }
    std::string letters() const { return {band, type, axis}; }
};

int azimuth(const std::string& line, uint16_t number)
{
    return Channel(line, number).azimuth;
}

TEST(Chn_ini, takes_every_key_of_a_channel)
{
    const Channel chn("Ch1FSA=20.5\nCh1Res=16\nCh1Band=H\nCh1Type=N\nCh1Axis=E\nCh1SnsMake=Mark\n"
                      "Ch1SnsSN=4711\nCh1SnsFSA=7.5\nCh1SnsVPU=1500\nCh1SnsFreq=4.5\nCh1SnsDamp=0.7\n"
                      "Ch1SnsModel=L-22D\nCh1Azm=90\nCh1Depth=12.25\nCh1Dip=-90\nCh1SeisComp=HNZ\n"
                      "Ch1StnChn=3");
    EXPECT_EQ(chn.fsa, 20.5);
    EXPECT_EQ(chn.bits, 16);
    EXPECT_EQ(chn.letters(), "HNE");
    EXPECT_EQ(chn.type_code, 1);
    EXPECT_STREQ(chn.make.s, "Mark");
    EXPECT_STREQ(chn.model.s, "L-22D");
    EXPECT_EQ(chn.sns_ndx, 35);
    EXPECT_EQ(chn.sn, 4711U);
    EXPECT_EQ(chn.sns_fsa, 7.5);
    EXPECT_EQ(chn.vpu, 1500.0);
    EXPECT_EQ(chn.freq, 4.5);
    EXPECT_EQ(chn.damp, 0.7);
    EXPECT_EQ(chn.azimuth, 90);
    EXPECT_EQ(chn.depth, 12.25);
    EXPECT_EQ(chn.dip, -90);
    EXPECT_STREQ(chn.SeisComp.s, "HNZ");
    EXPECT_EQ(chn.stn_chn, 3);
}

TEST(Chn_ini, texts_of_every_length_leave_nothing_of_those_before)
{
    const std::string letters = "0123456789ABCD";
    for (size_t n = 1; n <= letters.size(); ++n) {
        std::string text = letters.substr(0, n);
        const Channel chn("Ch1SnsModel=##############\nCh1SnsModel=" + text +
                          "\nCh1SeisComp=###\nCh1SeisComp=" + text);
        text.resize(sizeof chn.model.s, '\0');
        EXPECT_EQ(std::string(chn.model.s, sizeof chn.model.s), text);
        text.replace(sizeof chn.SeisComp.s - 1, std::string::npos, 1, '\0');
        EXPECT_EQ(std::string(chn.SeisComp.s, sizeof chn.SeisComp.s), text);
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
        EXPECT_EQ(std::string(chn.make.s, sizeof chn.make.s), text);
        EXPECT_STREQ(chn.model.s, "L-22D");
        EXPECT_EQ(chn.azimuth, 5);
    }
}

TEST(Chn_ini, without_lines_the_defaults_stand)
{
    const Channel chn("; nothing", 4);
    EXPECT_EQ(chn.letters(), "  N");
    EXPECT_EQ(chn.type_code, 0);
    EXPECT_EQ(chn.bits, 24);
    EXPECT_EQ(chn.fsa, 0.0);
    EXPECT_STREQ(chn.make.s, "");
    EXPECT_EQ(chn.sns_ndx, 0);
    EXPECT_EQ(chn.azimuth, 0);
    EXPECT_EQ(chn.dip, 0);
}

TEST(Chn_ini, knows_seven_keys_that_fill_nothing)
{
    const Channel chn("Ch1Lat=1\nCh1Lon=2\nCh1Alt=3\nCh1NZNP=4\nCh1Zero=5\nCh1Pole=6\nCh1Norm=7");
    EXPECT_EQ(chn.lat, 0.0);
    EXPECT_EQ(chn.lon, 0.0);
    EXPECT_EQ(chn.alt, 0.0);
    EXPECT_EQ(chn.depth, 0.0);
    EXPECT_EQ(chn.azimuth, 0);
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
    EXPECT_EQ(chn.azimuth, 3);
}

TEST(Chn_ini, a_line_without_value_is_as_if_absent)
{
    const Channel chn("Ch1Azm=90\nCh1Azm=\nCh1Azm=;5\nCh1Azm\nCh1Band=H\nCh1Band=\nCh1Type= ;N\n"
                      "Ch1SnsModel=M\nCh1SnsModel=\nCh1FSA=4\nCh1FSA=   \nCh1Res=\nCh1SnsSN=");
    EXPECT_EQ(chn.azimuth, 90);
    EXPECT_EQ(chn.letters(), "H Z");
    EXPECT_EQ(chn.type_code, 0);
    EXPECT_STREQ(chn.model.s, "M");
    EXPECT_EQ(chn.fsa, 4.0);
    EXPECT_EQ(chn.bits, 24);
}

TEST(Chn_ini, integers_saturate_at_32_bits_before_they_are_cut)
{
    EXPECT_EQ(Channel("Ch1Azm=4294967297").azimuth, 65535);
    EXPECT_EQ(Channel("Ch1Dip=99999999999").dip, -1);
    EXPECT_EQ(Channel("Ch1Dip=-99999999999").dip, 0);
    EXPECT_EQ(Channel("Ch1Res=99999999999").bits, 255);
    EXPECT_EQ(Channel("Ch1SnsSN=99999999999").sn, 2147483647U);
    EXPECT_EQ(Channel("Ch1SnsSN=-1").sn, 4294967295U);
    EXPECT_EQ(Channel("Ch1StnChn=99999999999").stn_chn, 65535);
}

TEST(Chn_ini, angles_and_resolution_are_cut_not_checked)
{
    EXPECT_EQ(Channel("Ch1Azm=400").azimuth, 400);
    EXPECT_EQ(Channel("Ch1Azm=-1").azimuth, 65535);
    EXPECT_EQ(Channel("Ch1Azm=65541").azimuth, 5);
    EXPECT_EQ(Channel("Ch1Dip=-90").dip, -90);
    EXPECT_EQ(Channel("Ch1Dip=40000").dip, -25536);
    EXPECT_EQ(Channel("Ch1Res=280").bits, 24);
    EXPECT_EQ(Channel("Ch1Res=-1").bits, 255);
}

TEST(Chn_ini, text_that_is_no_number_is_zero)
{
    EXPECT_EQ(Channel("Ch1Azm=5\nCh1Azm=abc").azimuth, 0);
    EXPECT_EQ(Channel("Ch1FSA=5\nCh1FSA=abc").fsa, 0.0);
    EXPECT_EQ(Channel("Ch1Res=x").bits, 0);
}

TEST(Chn_ini, the_last_line_wins_for_plain_keys)
{
    const Channel chn("Ch1FSA=1\nCh1FSA=2\nCh1Res=3\nCh1Res=4\nCh1Azm=5\nCh1Azm=6\nCh1Depth=7\nCh1Depth=8\n"
                      "Ch1Dip=9\nCh1Dip=10\nCh1SnsSN=11\nCh1SnsSN=12\nCh1SeisComp=A\nCh1SeisComp=B\n"
                      "Ch1Band=A\nCh1Band=B\nCh1Type=G\nCh1Type=H\nCh1Axis=1\nCh1Axis=2");
    EXPECT_EQ(chn.fsa, 2.0);
    EXPECT_EQ(chn.bits, 4);
    EXPECT_EQ(chn.azimuth, 6);
    EXPECT_EQ(chn.depth, 8.0);
    EXPECT_EQ(chn.dip, 10);
    EXPECT_EQ(chn.sn, 12U);
    EXPECT_STREQ(chn.SeisComp.s, "B");
    EXPECT_EQ(chn.letters(), "BH2");
    EXPECT_EQ(chn.type_code, 3);
}

TEST(Chn_ini, the_first_sensor_constant_that_is_not_zero_wins)
{
    const Channel chn("Ch1SnsFSA=0\nCh1SnsFSA=1\nCh1SnsFSA=2\nCh1SnsVPU=3\nCh1SnsVPU=4\nCh1SnsFreq=x\n"
                      "Ch1SnsFreq=5\nCh1SnsFreq=6\nCh1SnsDamp=7\nCh1SnsDamp=8\nCh1StnChn=0\nCh1StnChn=9\n"
                      "Ch1StnChn=10");
    EXPECT_EQ(chn.sns_fsa, 1.0);
    EXPECT_EQ(chn.vpu, 3.0);
    EXPECT_EQ(chn.freq, 5.0);
    EXPECT_EQ(chn.damp, 7.0);
    EXPECT_EQ(chn.stn_chn, 9);
}

TEST(Chn_ini, only_the_type_letter_becomes_a_capital)
{
    EXPECT_EQ(Channel("Ch1Band=h\nCh1Type=h\nCh1Axis=z").letters(), "hHz");
    EXPECT_EQ(Channel("Ch1Band= High\nCh1Type= Normal\nCh1Axis= East").letters(), "HNE");
}

TEST(Chn_ini, types_G_and_N_have_code_1_and_all_others_3)
{
    const Channel g("Ch1Type=g");
    EXPECT_EQ(g.type, 'G');
    EXPECT_EQ(g.type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=n").type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=N").type_code, 1);
    EXPECT_EQ(Channel("Ch1Type=H").type_code, 3);
    EXPECT_EQ(Channel("Ch1Type=\xE9").type_code, 3);
    EXPECT_EQ(Channel("Ch1Type=\xE9").type, '\xE9');
}

TEST(Chn_ini, first_make_wins)
{
    EXPECT_STREQ(Channel("Ch1SnsMake=Mark\nCh1SnsMake=Vexar").make.s, "Mark");
}

TEST(Chn_ini, the_last_model_and_the_first_known_row_stay)
{
    const Channel chn("Ch1SnsMake=Kinemetrics\nCh1SnsModel=FBA-3\nCh1SnsModel=FBA-23");
    EXPECT_STREQ(chn.model.s, "FBA-23");
    EXPECT_EQ(chn.sns_ndx, 3);
}

TEST(Chn_ini, a_model_known_to_nobody_leaves_the_search_open)
{
    const Channel chn("Ch1SnsMake=Vexar\nCh1SnsModel=ZZ-1\nCh1SnsModel=BX-10/1");
    EXPECT_EQ(chn.sns_ndx, 22);
    EXPECT_EQ(chn.freq, 1300.0);
    EXPECT_EQ(chn.damp, 0.1);
    EXPECT_EQ(chn.vpu, 1.6);
    EXPECT_EQ(chn.sns_fsa, 10.0);
    EXPECT_EQ(Channel("Ch1SnsMake=Vexar\nCh1SnsModel=ZZ-1").sns_ndx, 41);
}

TEST(Chn_ini, a_make_that_comes_after_its_model_is_too_late)
{
    const Channel late("Ch1SnsModel=AX-21/1\nCh1SnsMake=Vexar");
    EXPECT_EQ(late.sns_ndx, 41);
    EXPECT_EQ(late.freq, 0.0);
    EXPECT_STREQ(late.make.s, "Vexar");
    EXPECT_EQ(Channel("Ch1SnsModel=AX-21/1\nCh1SnsMake=Vexar\nCh1SnsModel=AX-21/1").sns_ndx, 18);
}

TEST(Chn_ini, the_sensor_with_internal_electronics_has_constants_of_its_own)
{
    const Channel internal("Ch1SnsMake=Vexar\nCh1SnsModel=AX-21/3/INT");
    EXPECT_EQ(internal.sns_ndx, 19);
    EXPECT_EQ(internal.vpu, 1.2);
    EXPECT_EQ(internal.sns_fsa, 5.0);
    const Channel external("Ch1SnsMake=Vexar\nCh1SnsModel=AX-21/3");
    EXPECT_EQ(external.sns_ndx, 20);
    EXPECT_EQ(external.vpu, 2.4);
    EXPECT_EQ(external.sns_fsa, 10.0);
}

TEST(Chn_ini, a_short_model_name_catches_the_longer_ones)
{
    EXPECT_EQ(Channel("Ch1SnsMake=Kinemetrics\nCh1SnsModel=FBA-13DH").sns_ndx, 2);
}

TEST(Chn_ini, told_constants_before_the_model_stay_and_after_it_come_too_late)
{
    const Channel chn("Ch1SnsMake=Vexar\nCh1SnsFreq=450\nCh1SnsDamp=0\nCh1SnsModel=AX-21/1\nCh1SnsDamp=0.7\n"
                      "Ch1SnsVPU=9\nCh1SnsFSA=8");
    EXPECT_EQ(chn.freq, 450.0);
    EXPECT_EQ(chn.damp, 0.1);
    EXPECT_EQ(chn.vpu, 2.4);
    EXPECT_EQ(chn.sns_fsa, 10.0);
}

TEST(Chn_ini, constants_of_a_sensor_without_any_may_follow_its_model)
{
    const Channel chn("Ch1SnsMake=Mark\nCh1SnsModel=L-4\nCh1SnsFreq=1\nCh1SnsVPU=276");
    EXPECT_EQ(chn.sns_ndx, 34);
    EXPECT_EQ(chn.freq, 1.0);
    EXPECT_EQ(chn.vpu, 276.0);
}

TEST(Chn_ini, texts_are_cut_to_their_fields)
{
    const Channel chn("Ch1SnsMake=123456789012345678901234567890X\nCh1SnsModel=12345678901234X\n"
                      "Ch1SeisComp=1234X");
    EXPECT_STREQ(chn.make.s, "123456789012345678901234567890");
    EXPECT_STREQ(chn.model.s, "12345678901234");
    EXPECT_STREQ(chn.SeisComp.s, "1234");
}

TEST(Chn_ini, a_comment_ends_the_value_and_blanks_before_it_stay)
{
    EXPECT_STREQ(Channel("Ch1SnsMake=  Mark  ; the maker\r").make.s, "Mark  ");
    EXPECT_EQ(Channel("Ch1Azm = 90 ; east").azimuth, 90);
}

TEST(Chn_ini, a_NUL_ends_its_line)
{
    EXPECT_STREQ(Channel(std::string("Ch1SnsMake=Ma\0rk", 16)).make.s, "Ma");
    EXPECT_EQ(azimuth(std::string("Ch1Azm\0=5", 9), 0), 0);
}

TEST(Chn_ini, lines_of_another_unit_have_no_effect)
{
    Channel chn("");
    chn.read("Ch1Azm=1\n[1111]\nCh1Azm=2\n[9A2F]\nCh1Dip=3\n[2222]\nCh1Depth=4\n[9A2F]\nCh1Res=5\n", 0);
    EXPECT_EQ(chn.azimuth, 0);
    EXPECT_EQ(chn.dip, 3);
    EXPECT_EQ(chn.depth, 0.0);
    EXPECT_EQ(chn.bits, 24);
    EXPECT_EQ(chn.unit->ini_first, 25);
    EXPECT_EQ(chn.unit->ini_last, 0); // the position behind the section is the unit's own reading
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
    chn.azimuth = 1;
    testing::internal::CaptureStdout();
    Chn_ini(&chn);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(chn.azimuth, 1);
}

TEST(Chn_ini, a_file_of_a_megabyte_costs_a_new_channel_nothing_once_it_was_read)
{
    std::string file;
    for (int i = 0; i < 20000; ++i)
        file += "; a comment before any section, as long as such a comment may be\n";
    Channel chn("");
    chn.read(file + "[1111]\nCh1Azm=1\n", 0);
    const clock_t start = clock();
    for (int i = 0; i < 100000; ++i) Chn_ini(&chn);
    // Reading 1.3 MB a hundred thousand times would take minutes.
    EXPECT_LT(static_cast<double>(clock() - start) / CLOCKS_PER_SEC, 5.0);
    EXPECT_EQ(chn.azimuth, 0);
}

/// A new channel of a unit whose section stands in memory.
CHN_T asks_again(UNIT_T& unit, uint16_t number, double fsa = 0.0)
{
    CHN_T chn;
    chn.unit = &unit;
    chn.unit_id = unit.unit_id;
    chn.channel = number;
    chn.fsa = fsa;
    Chn_ini(&chn);
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
        EXPECT_EQ(one.azimuth, 30);
        EXPECT_EQ(one.band, 'H');
        EXPECT_STREQ(one.make.s, "Mark");
        EXPECT_EQ(one.sns_ndx, 35);
        EXPECT_EQ(one.vpu, first.vpu);
        EXPECT_EQ(two.azimuth, 20);
        EXPECT_EQ(two.band, ' ');
        EXPECT_TRUE(two.make.empty());
    }
    EXPECT_EQ(asks_again(*first.unit, 0, 7.5).fsa, 7.5) << "what a channel has already stays";
    EXPECT_EQ(asks_again(*first.unit, 0).fsa, 0.0);
    EXPECT_EQ(asks_again(*Channel(lines + "Ch1Azm=40\n").unit, 0).azimuth, 40)
        << "another file, another section";
}

TEST(Chn_ini, a_long_section_leaves_each_channel_the_texts_it_has)
{
    std::string lines;
    for (int i = 0; i < 500; ++i) lines += "; a remark\n";
    const Channel first(lines + "Ch1Azm=30\n");
    for (const int which : {0, 1, 2}) {
        for (const char last : {'A', 'B'}) { // one after the other, the same but for one letter of one text
            CHN_T chn;
            chn.unit = first.unit;
            chn.unit_id = first.unit_id;
            const auto text = [&](int of) { return std::string("EH") + (of == which ? last : 'Z'); };
            chn.make.put(text(0));
            chn.model.put(text(1));
            chn.SeisComp.put(text(2));
            Chn_ini(&chn);
            EXPECT_EQ(chn.azimuth, 30);
            EXPECT_EQ(chn.make.s, text(0));
            EXPECT_EQ(chn.model.s, text(1));
            EXPECT_EQ(chn.SeisComp.s, text(2));
        }
    }
}

TEST(Chn_ini, a_long_section_leaves_a_channel_the_make_that_it_has)
{
    std::string lines = "Ch1SnsMake=Mark\nCh1SnsModel=L-22D\n";
    for (int i = 0; i < 500; ++i) lines += "; a remark\n";
    const Channel first(lines);
    EXPECT_EQ(asks_again(*first.unit, 0).sns_ndx, 35);
    CHN_T chn; // like the one that has just asked, but for its make
    chn.unit = first.unit;
    chn.make.put("Vexar");
    Chn_ini(&chn);
    EXPECT_EQ(chn.make.view(), "Vexar");
    EXPECT_EQ(chn.model.view(), "L-22D");
    EXPECT_EQ(chn.sns_ndx, Sensor_unknown) << "no such model of that make";
}

TEST(Chn_ini, very_many_channels_of_a_long_section_do_not_take_very_long)
{
    std::string lines;
    for (int i = 0; i < 100000; ++i) lines += "Ch1Res=\n";
    const Channel first(lines + "Ch1Azm=30\n");
    const clock_t start = clock();
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(asks_again(*first.unit, 0).azimuth, 30);
    EXPECT_LT(static_cast<double>(clock() - start) / CLOCKS_PER_SEC, 3.0);
}

} // namespace
