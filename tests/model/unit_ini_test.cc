// The station keys: which field each fills, and which of several lines wins.
#include "driver/base/settings.h"
#include "kit/scratch.h"
#include "model/ini.h"
#include "model/record/records.h"
#include "model/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

struct Unit : UNIT_T {
    /// Unit 9A2F as it is made, after its section of an INI file of these lines.
    explicit Unit(const std::string& lines)
    {
        unit_id = 0x9A2F;
        ini_last = -1;
        stn_name.put("09A2F");
        const kit::Scratch scratch;
        FileIni = scratch.write("vxu.ini", "[9A2F]\n" + lines + "\n");
        ini_forget();
        Unit_ini(*this);
    }
};

std::string station(const std::string& lines)
{
    return Unit(lines).stn_name.s;
}

TEST(Unit_ini, takes_every_key_of_a_section)
{
    const Unit unit("DASType=7\nAltitude=700.5\nLatitude=35.25\nLongitude=-117.5\nNetwork=Net\nNetSEED=XX\n"
                    "Station=ABCDE\nOrientation=12\nStatDASCnt=2\nStatChnCnt=6\nCosGeology=deep alluvium\n"
                    "CosNet=NN\nCosStn=50");
    EXPECT_EQ(unit.position.alt, 700.5);
    EXPECT_EQ(unit.position.lat, 35.25);
    EXPECT_EQ(unit.position.lon, -117.5);
    EXPECT_STREQ(unit.stn_name.s, "ABCDE");
    EXPECT_EQ(unit.orient, 12);
    EXPECT_EQ(unit.das_cnt, 2);
    EXPECT_EQ(unit.chn_cnt, 6);
    EXPECT_STREQ(unit.geol.s, "deep alluvium");
    EXPECT_EQ(unit.type, 50);
    EXPECT_EQ(unit.ini_first, 0);
    EXPECT_EQ(unit.ini_last, 187);
}

TEST(Unit_ini, knows_four_keys_that_fill_nothing)
{
    const Unit unit("DASType=7\nNetwork=Net\nNetSEED=XX\nCosNet=NN\nEhChnCnt=3\nCnum=4");
    EXPECT_EQ(unit.das_type, 0);
    EXPECT_EQ(unit.Cnum, 0);
    EXPECT_EQ(unit.eh_chn_cnt, 0);
    EXPECT_STREQ(unit.net_name.s, "");
    EXPECT_STREQ(unit.SEED.s, "");
    EXPECT_STREQ(unit.COS.s, "");
    EXPECT_EQ(unit.type, 0);
}

TEST(Unit_ini, aligns_the_station_right_and_cuts_it_to_five)
{
    EXPECT_EQ(station("Station=A"), "    A");
    EXPECT_EQ(station("Station=STA01"), "STA01");
    EXPECT_EQ(station("Station=ABCDEFG"), "ABCDE");
}

TEST(Unit_ini, keeps_blanks_behind_a_station_and_tabs_before_it)
{
    EXPECT_EQ(station("Station = AB ; comment"), "  AB ");
    EXPECT_EQ(station("Station=\tAB"), "  \tAB");
    EXPECT_EQ(station("Station=A B "), " A B ");
}

TEST(Unit_ini, an_empty_station_is_five_blanks)
{
    EXPECT_EQ(station("Station="), "     ");
    EXPECT_EQ(station("Station = ; none"), "     ");
}

TEST(Unit_ini, a_line_without_equals_sign_is_skipped)
{
    EXPECT_EQ(station("Station AB"), "09A2F");
}

TEST(Unit_ini, a_key_is_a_prefix_at_the_line_start_in_any_case)
{
    EXPECT_EQ(station("stationX = AB"), "   AB");
    EXPECT_EQ(station("STATION=AB"), "   AB");
    EXPECT_EQ(station(" Station=AB"), "09A2F");
    EXPECT_EQ(station("Stat=AB"), "09A2F");
    EXPECT_EQ(station("; Station=AB"), "09A2F");
}

TEST(Unit_ini, line_ends_of_either_kind_or_none_give_the_same)
{
    EXPECT_EQ(station("Station=AB\r\n; more\r"), "   AB");
    const kit::Scratch scratch;
    FileIni = scratch.write("vxu.ini", "[9A2F]\r\nLatitude=1.5\r\nStation=AB");
    UNIT_T unit;
    unit.unit_id = 0x9A2F;
    Unit_ini(unit);
    EXPECT_STREQ(unit.stn_name.s, "   AB");
    EXPECT_EQ(unit.position.lat, 1.5);
}

TEST(Unit_ini, the_first_position_and_count_that_is_not_zero_wins)
{
    EXPECT_EQ(Unit("latitude=0\nLatitude=12.5").position.lat, 12.5);
    EXPECT_EQ(Unit("Latitude=12.5\nLatitude=13").position.lat, 12.5);
    EXPECT_EQ(Unit("Longitude=-0.0\nLongitude=7\nLongitude=8").position.lon, 7.0);
    EXPECT_EQ(Unit("Altitude=high\nAltitude=9\nAltitude=10").position.alt, 9.0);
    EXPECT_EQ(Unit("Orientation=0\nOrientation=5\nOrientation=6").orient, 5);
    EXPECT_EQ(Unit("StatDASCnt=x\nStatDASCnt=2\nStatDASCnt=3").das_cnt, 2);
    EXPECT_EQ(Unit("StatChnCnt=\nStatChnCnt=4\nStatChnCnt=5").chn_cnt, 4);
}

TEST(Unit_ini, the_last_station_geology_and_station_type_wins)
{
    const Unit unit("Station=A\nStation=B\nCosGeology=rock\nCosGeology=mud\nCosStn=5\nCosStn=6");
    EXPECT_STREQ(unit.stn_name.s, "    B");
    EXPECT_STREQ(unit.geol.s, "mud");
    EXPECT_EQ(unit.type, 6);
    EXPECT_EQ(Unit("CosStn=5\nCosStn=none").type, 0);
    EXPECT_EQ(Unit("CosStn=5\nCosStn=").type, 0);
    EXPECT_STREQ(Unit("CosGeology=rock\nCosGeology=").geol.s, "");
}

TEST(Unit_ini, cuts_the_geology_at_forty_characters)
{
    EXPECT_STREQ(Unit("CosGeology=1234567890123456789012345678901234567890X").geol.s,
                 "1234567890123456789012345678901234567890");
}

TEST(Unit_ini, a_geology_of_any_length_leaves_nothing_of_the_one_before)
{
    const std::string letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcd";
    for (size_t n = 0; n <= letters.size(); ++n) {
        std::string text = letters.substr(0, n);
        const Unit unit("CosGeology=" + std::string(40, '#') + "\nCosGeology=" + text);
        text.resize(41, '\0');
        EXPECT_EQ(std::string(unit.geol.s, sizeof unit.geol.s), text);
    }
}

TEST(Unit_ini, integers_saturate_at_32_bits_and_keep_their_low_16)
{
    EXPECT_EQ(Unit("Orientation=4294967297").orient, 65535);
    EXPECT_EQ(Unit("StatChnCnt=-99999999999\nStatChnCnt=3").chn_cnt, 3); // -2147483648 has 16 zero bits
    EXPECT_EQ(Unit("CosStn=65541").type, 5);
    EXPECT_EQ(Unit("CosStn=-1").type, 65535);
}

TEST(Unit_ini, numbers_are_those_of_the_C_library)
{
    EXPECT_EQ(Unit("Latitude=\t+1.25e1 degrees").position.lat, 12.5);
    EXPECT_EQ(Unit("Latitude=0x10").position.lat, 16.0);
    EXPECT_TRUE(std::isinf(Unit("Altitude=inf").position.alt));
    EXPECT_EQ(Unit("Orientation= +12.9").orient, 12);
    EXPECT_EQ(Unit("Orientation=0x10\nOrientation=7").orient, 7);
}

TEST(Unit_ini, a_long_line_is_read_in_pieces)
{
    EXPECT_EQ(station(";" + std::string(98, '-') + "Station=FAKE"), " FAKE");
}

TEST(Unit_ini, a_NUL_ends_a_value)
{
    EXPECT_EQ(station(std::string("Station=A\0BC", 12)), "    A");
}

TEST(Unit_ini, a_unit_without_section_keeps_its_defaults_and_learns_the_length_of_the_file)
{
    const kit::Scratch scratch;
    FileIni = scratch.write("vxu.ini", "[1111]\nStation=AB\n");
    UNIT_T unit;
    unit.unit_id = 0x9A2F;
    unit.ini_last = -1;
    unit.stn_name.put("09A2F");
    Unit_ini(unit);
    EXPECT_STREQ(unit.stn_name.s, "09A2F");
    EXPECT_EQ(unit.ini_first, 0);
    EXPECT_EQ(unit.ini_last, 18);
}

TEST(Unit_ini, remembers_where_its_section_begins_and_ends)
{
    const kit::Scratch scratch;
    FileIni = scratch.write("vxu.ini", "; head\n[9A2F]\nStation=AB\n[1111]\n[9A2F]\nStation=CD\n");
    UNIT_T unit;
    unit.unit_id = 0x9A2F;
    Unit_ini(unit);
    EXPECT_STREQ(unit.stn_name.s, "   AB");
    EXPECT_EQ(unit.ini_first, 7);
    EXPECT_EQ(unit.ini_last, 32);
}

TEST(Unit_ini, without_a_file_nothing_is_touched)
{
    const kit::Scratch scratch;
    FileIni = scratch.path("none.ini");
    UNIT_T unit;
    unit.unit_id = 0x9A2F;
    unit.ini_last = -1;
    unit.stn_name.put("09A2F");
    Unit_ini(unit);
    EXPECT_STREQ(unit.stn_name.s, "09A2F");
    EXPECT_EQ(unit.ini_last, -1);
}

TEST(Unit_ini, reads_the_section_FFFF_of_a_unit_whose_packets_say_0)
{
    const kit::Scratch scratch;
    FileIni = scratch.write("vxu.ini", "[0000]\nStation=NO\n[ffff]\nStation=YES\n");
    UNIT_T unit;
    unit.unit_id = 0xFFFF;
    Unit_ini(unit);
    EXPECT_STREQ(unit.stn_name.s, "  YES");
}

} // namespace
