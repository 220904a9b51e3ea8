// The station INI file as it shows in traces: station names, component letters, azimuth and dip.
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

/// A run whose INI file has these lines in the section of unit 9A2F; one packet of channel `n` and a header
/// without a station.
Converted run_with(const std::string& ini, unsigned n = 0, const Eh& eh = Eh().event(12))
{
    ConvertOptions options;
    options.ini = ini;
    Converted run = convert(eh + data({1}).channel(n), {"-L-"}, options);
    EXPECT_EQ(run.status, 0);
    return run;
}

std::string section(const std::string& lines)
{
    return "[9A2F]\r\n" + lines;
}

std::string component_by(const std::string& lines, unsigned n = 0)
{
    return header_text(only_trace(run_with(section(lines), n)), 600, 8);
}

float azimuth(const std::string& lines, unsigned n = 0)
{
    const uint32_t bits = header_bits(only_trace(run_with(section(lines), n)), 57);
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

float dip(const std::string& lines)
{
    const uint32_t bits = header_bits(only_trace(run_with(section(lines))), 58);
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

/// Station as the trace shows it; the rest of its eight bytes must be NULs.
std::string station(const std::string& ini)
{
    const std::string field = header_text(only_trace(run_with(ini)), 440, 8);
    EXPECT_EQ(field.substr(5), std::string(3, '\0'));
    return field.substr(0, 5);
}

} // namespace

TEST(Ini_keys, a_section_describes_station_and_channels)
{
    const Converted run =
        run_with("; stations of the valley\r\n\r\n[1234]\r\nStation = OTHER\r\nCh1Azm = 1\r\n"
                 "[9A2F] old quarry\r\nStation = QUARY ; renamed\r\nLatitude = 47.5\r\n"
                 "Ch1SnsMake = Guralp\r\nCh1SnsModel = CMG-3T\r\nCh1Band = B\r\nCh1Type = h\r\n"
                 "Ch1Axis = N ; true north\r\nCh1Azm = 90\r\nCh1Dip = -90\r\nCh2Azm = 7\r\n"
                 "[1235]\r\nCh1Azm = 2\r\n");
    Sac s = Sac().stats(1, 1, 1);
    s.kstnm = "QUARY";
    s.kcmpnm = "9A2F-BHN";
    s.cmpaz = 90;
    s.cmpinc = -90;
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0; // a blank header told no time
    EXPECT_TRUE(same_tree(run.tree, {{"2004123101530250_QUARY_1_1.sac", sac_file(s, {1})}}));
}

TEST(Ini_keys, azimuths_are_16_bits_without_sign)
{
    EXPECT_EQ(azimuth("Ch1Azm=400\n"), 400.0f);
    EXPECT_EQ(azimuth("Ch1Azm=-1\n"), 65535.0f);
    EXPECT_EQ(azimuth("Ch1Azm=65536\n"), 0.0f);
    EXPECT_EQ(azimuth("Ch1Azm=abc\n"), 0.0f);
    EXPECT_EQ(azimuth("Ch1Azm= +12.9 degrees\n"), 12.0f);
}

TEST(Ini_keys, dips_are_16_bits_with_sign)
{
    EXPECT_EQ(dip("Ch1Dip=-90\n"), -90.0f);
    EXPECT_EQ(dip("Ch1Dip=40000\n"), -25536.0f);
}

TEST(Ini_keys, integers_saturate_at_32_bits_before_they_are_cut)
{
    EXPECT_EQ(azimuth("Ch1Azm=4294967297\n"), 65535.0f);
    EXPECT_EQ(dip("Ch1Dip=99999999999\n"), -1.0f);
    EXPECT_EQ(dip("Ch1Dip=-99999999999\n"), 0.0f);
}

TEST(Ini_keys, the_last_azimuth_wins)
{
    EXPECT_EQ(azimuth("Ch1Azm=10\nCh1Azm=20\n"), 20.0f);
}

TEST(Ini_keys, a_type_is_made_upper_case_and_the_other_letters_are_not)
{
    EXPECT_EQ(component_by("Ch1Band=h\nCh1Type=h\nCh1Axis=z\n"), "9A2F-hHz");
    EXPECT_EQ(component_by("Ch1Band=High\nCh1Type=gauge\nCh1Axis=Zenith\n"), "9A2F-HGZ");
}

TEST(Ini_keys, letters_that_are_not_told_keep_their_defaults)
{
    EXPECT_EQ(component_by("Ch1Type=H\nCh1Axis=Z\n"), "9A2F-1-1"); // no band, no letters
    EXPECT_EQ(component_by("Ch1Band=H\n"), "9A2F-H Z");
    EXPECT_EQ(component_by("Ch2Band=H\n", 1), "9A2F-H N");
    EXPECT_EQ(component_by("Ch3Band=H\n", 2), "9A2F-H E");
    EXPECT_EQ(component_by("Ch4Band=H\n", 3), "9A2F-H Z");
    EXPECT_EQ(component_by("Ch7Band=H\n", 6), "9A2F-H Z");
}

TEST(Ini_keys, channels_are_one_or_two_digits_or_a_letter)
{
    EXPECT_EQ(azimuth("Ch1Azm=5\n", 0), 5.0f);
    EXPECT_EQ(azimuth("Ch01Azm=5\n", 0), 5.0f);
    EXPECT_EQ(azimuth("Ch10Azm=5\n", 9), 5.0f);
    EXPECT_EQ(azimuth("ChAAzm=5\n", 9), 5.0f);
    EXPECT_EQ(azimuth("Ch99Azm=5\n", 98), 5.0f);
    EXPECT_EQ(azimuth("ChZAzm=5\n", 34), 5.0f);
}

TEST(Ini_keys, any_character_counts_by_its_distance_from_zero)
{
    EXPECT_EQ(azimuth("Ch:Azm=7\n", 2), 7.0f);
    EXPECT_EQ(azimuth("ChaAzm=7\n", 41), 7.0f);
    EXPECT_EQ(azimuth("Ch/Azm=7\n", 0), 0.0f);
    EXPECT_EQ(azimuth("Ch\xB1\x41zm=7\n", 0), 0.0f); // a high byte names no channel
}

TEST(Ini_keys, heads_of_three_digits_and_of_channel_zero_name_nothing)
{
    EXPECT_EQ(azimuth("Ch010Azm=5\n", 9) + azimuth("Ch010Azm=5\n", 0), 0.0f);
    EXPECT_EQ(azimuth("Ch100Azm=5\n", 9) + azimuth("Ch100Azm=5\n", 99), 0.0f);
    EXPECT_EQ(azimuth("Ch0Azm=5\n", 0), 0.0f);
    EXPECT_EQ(azimuth("Ch00Azm=5\n", 0), 0.0f);
}

TEST(Ini_keys, a_channel_key_is_a_prefix_behind_the_number_in_any_case)
{
    EXPECT_EQ(azimuth("CH1aZmuth=90\n"), 90.0f);
    EXPECT_EQ(azimuth("cH1AZM=90\n"), 90.0f);
    EXPECT_EQ(azimuth("Ch1 Azm=90\n"), 0.0f);
    EXPECT_EQ(azimuth(" Ch1Azm=90\n"), 0.0f);
    EXPECT_EQ(azimuth("Ch1Az=90\n"), 0.0f);
}

TEST(Ini_keys, a_channel_key_without_value_is_as_if_absent)
{
    EXPECT_EQ(azimuth("Ch1Azm=90\nCh1Azm\nCh1Azm=\nCh1Azm=   ; none\n"), 90.0f);
    EXPECT_EQ(component_by("Ch1Band=H\nCh1Band=\nCh1Band=;\n"), "9A2F-H Z");
}

TEST(Ini_keys, a_channel_key_in_another_units_section_has_no_effect)
{
    EXPECT_EQ(azimuth("[9A30]\nCh1Azm=90\n"), 0.0f);
    EXPECT_EQ(header_bits(only_trace(run_with("Ch1Azm=90\n[9A30]\nCh1Azm=90\n")), 57), 0U);
}

TEST(Ini_keys, the_header_overrides_the_ini_file_letter_by_letter)
{
    const std::string ini = section("Station=INI\nCh1Band=H\nCh1Type=L\nCh1Axis=1\n");
    const auto with = [&](const Eh& eh) {
        const std::string trace = only_trace(run_with(ini, 0, eh));
        return header_text(trace, 440, 5) + header_text(trace, 600, 8);
    };
    EXPECT_EQ(with(Eh().event(12)), "  INI9A2F-HL1");
    EXPECT_EQ(with(Eh().event(12).seed(0, " HZ ").station("STA01")), "STA019A2F-HHZ");
    EXPECT_EQ(with(Eh().event(12).seed(0, "B   ")), "  INI9A2F-BL1");
}

TEST(Ini_keys, a_station_that_a_header_told_stays_for_the_units_later_events)
{
    ConvertOptions options;
    options.ini = section("Station=INI\n");
    const Converted run =
        convert(one_event(1, {1}) + Dt().event(2).at(1, 0, 0, 0).samples({2}), {"-L-"}, options);
    EXPECT_EQ(run.sac_names(), (std::vector<std::string>{"2004123010000000_STA01_1_1.sac", Name_1_1}));
    EXPECT_EQ(header_text(run.file("2004123010000000_STA01_1_1.sac"), 440, 5), "STA01");
}

TEST(Ini_keys, stations_are_aligned_right_and_cut_to_five)
{
    EXPECT_EQ(station("[9A2F]\nStation=A\n"), "    A");
    EXPECT_EQ(station("[9A2F]\nStation=ABCDEFG\n"), "ABCDE");
    EXPECT_EQ(station("[9A2F]\nStation = AB ; comment\n"), "  AB ");
    EXPECT_EQ(station("[9A2F]\nStation=\tAB\n"), "  \tAB");
    EXPECT_EQ(station("[9A2F]\nStation=\n"), "     ");
    EXPECT_EQ(station("[9A2F]\nStation\n"), "09A2F");
}

TEST(Ini_keys, the_last_station_of_a_section_wins)
{
    EXPECT_EQ(station("[9A2F]\nStation=FIRST\nStation=LAST\n[9A2F]\nStation=LATER\n"), " LAST");
}

TEST(Ini_keys, a_station_key_is_a_prefix_at_the_line_start_in_any_case)
{
    EXPECT_EQ(station("[9A2F]\nstationX = AB\n"), "   AB");
    EXPECT_EQ(station("[9A2F]\nSTATION=AB\n"), "   AB");
    EXPECT_EQ(station("[9A2F]\n Station=AB\n"), "09A2F");
}

TEST(Ini_keys, a_section_begins_with_its_six_characters_at_the_line_start)
{
    EXPECT_EQ(station("[9a2f]xyz\nStation=AB\n"), "   AB");
    EXPECT_EQ(station(" [9A2F]\nStation=AB\n"), "09A2F");
    EXPECT_EQ(station("\xEF\xBB\xBF[9A2F]\nStation=AB\n"), "09A2F");
    EXPECT_EQ(station("[9A2]\nStation=AB\n"), "09A2F");
    EXPECT_EQ(station("[09A2F]\nStation=AB\n"), "09A2F");
}

TEST(Ini_keys, any_bracket_at_a_line_start_ends_a_section)
{
    EXPECT_EQ(station("[9A2F]\n[comment\nStation=AB\n"), "09A2F");
    EXPECT_EQ(station("[9A2F]\nStation=AB\n[9A2F]\nStation=CD\n"), "   AB");
    EXPECT_EQ(station("[9A2F]\n ;[x]\nStation=AB\n"), "   AB");
}

TEST(Ini_keys, long_lines_are_read_in_pieces_of_99_characters)
{
    EXPECT_EQ(station("[9A2F]\n;" + std::string(98, '-') + "Station=FAKE\n"), " FAKE");
    EXPECT_EQ(station("[9A2F]\n;" + std::string(97, '-') + "Station=FAKE\n"), "09A2F");
    EXPECT_EQ(azimuth(";" + std::string(98, '-') + "Ch1Azm=90\n"), 90.0f);
}

TEST(Ini_keys, line_ends_of_either_kind_or_none_give_the_same)
{
    for (const char* ini :
         {"[9A2F]\nStation=AB", "[9A2F]\r\nStation=AB", "[9A2F]\nStation=AB\n", "[9A2F]\r\nStation=AB\r\n"})
        EXPECT_EQ(station(ini), "   AB") << ini;
}

TEST(Ini_keys, bytes_that_are_no_text_do_no_harm)
{
    EXPECT_EQ(station(std::string("[9A2F]\nSta\0tion=X\nStation=A\0B\nStation\xFF=AB\n", 42)), "   AB");
    EXPECT_EQ(station(std::string(5000, '\xFF') + "\n[9A2F]\nStation=AB\n"), "   AB");
}

TEST(Ini_keys, every_unit_has_its_own_section)
{
    ConvertOptions options;
    options.ini = "[000B]\nStation=BBB\n[FFFF]\nStation=FFF\n[000A]\nStation=AAA\n";
    const Converted run =
        convert(data({1}).unit(0xA) + data({2}).unit(0xB) + data({3}).unit(0) + data({4}).unit(0xC), {"-L-"},
                options);
    EXPECT_EQ(run.sac_names(),
              (std::vector<std::string>{"2004123101530250_0000C_1_1.sac", "2004123101530250___AAA_1_1.sac",
                                        "2004123101530250___BBB_1_1.sac", "2004123101530250___FFF_1_1.sac"}));
}
