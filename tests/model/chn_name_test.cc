// The path of a trace: levels, name part, letters.
#include "kit/ending.h"
#include "kit/stage.h"
#include "model/channel.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

/// A channel of an event whose station is told, ready to be named.
struct Named {
    explicit Named(const char* station = "STA01")
    {
        evt.stn_name.put(station);
        chn.evt = &evt;
        chn.id.unit_id = 0x9A2F;
        chn.times.t_first.put("2004123101530250");
    }
    /// The path behind the output path.
    std::string name()
    {
        Chn_name(chn);
        EXPECT_TRUE(chn.name.starts_with(DirOut)) << chn.name;
        return chn.name.substr(DirOut.size());
    }
    EVT_T evt;
    CHN_T chn;
};

} // namespace

TEST(Chn_name, has_time_station_stream_and_channel)
{
    Stage stage;
    Named n;
    n.chn.id.stream = 0;
    n.chn.id.channel = 2;
    EXPECT_EQ(n.name(), "2004123101530250_STA01_1_3.sac");
    n.chn.id.stream = 165;
    n.chn.id.channel = 165;
    EXPECT_EQ(n.name(), "2004123101530250_STA01_166_A6.sac");
}

TEST(Chn_name, by_default_is_the_station_unless_it_is_five_blanks)
{
    Stage stage;
    EXPECT_EQ(Named("STA01").name(), "2004123101530250_STA01_1_1.sac");
    EXPECT_EQ(Named("   AB").name(), "2004123101530250____AB_1_1.sac");
    EXPECT_EQ(Named("AB").name(), "2004123101530250____AB_1_1.sac");
    EXPECT_EQ(Named("").name(), "2004123101530250_______1_1.sac");
    EXPECT_EQ(Named("    ").name(), "2004123101530250_______1_1.sac"); // four are not five
    EXPECT_EQ(Named("     ").name(), "2004123101530250_09A2F_1_1.sac");
}

TEST(Chn_name, by_unit_is_five_digits)
{
    Stage stage;
    Name_option = 1;
    EXPECT_EQ(Named().name(), "2004123101530250_09A2F_1_1.sac");
}

TEST(Chn_name, by_station_is_the_station_even_of_five_blanks)
{
    Stage stage;
    Name_option = 2;
    EXPECT_EQ(Named("     ").name(), "2004123101530250_______1_1.sac");
    EXPECT_EQ(Named("STA01").name(), "2004123101530250_STA01_1_1.sac");
}

TEST(Chn_name, path_options_add_levels_and_make_them)
{
    const char* const levels[] = {"", "2004_123/", "2004_123/10/", "2004_123/10_15/", "2004_123/10_15_30/",
                                  ""};
    for (uint16_t option = 0; option <= 5; ++option) {
        Stage stage;
        Path_option = option;
        EXPECT_EQ(Named().name(), std::string(levels[option]) + "2004123101530250_STA01_1_1.sac");
        EXPECT_TRUE(stage.scratch.exists(levels[option])) << option;
        EXPECT_FALSE(stage.scratch.exists(std::string(levels[option]) + "2004123101530250_STA01_1_1.sac"));
    }
}

TEST(Chn_name, missing_levels_are_made_below_the_output_path_only)
{
    Stage stage;
    DirOut = stage.scratch.path("a/");
    Path_option = 2;
    Named().name();
    EXPECT_EQ(names(stage.scratch.tree()), "") << "a disk that is unmounted is no place for a trace";
    stage.scratch.make_dir("a");
    DirOut = stage.scratch.path("a/") + "./";
    Named().name();
    EXPECT_EQ(names(stage.scratch.tree()), "a/\na/2004_123/\na/2004_123/10/\n");
}

TEST(Chn_name, letters_A_to_X_stand_in_for_the_25th_character)
{
    Stage stage;
    stage.scratch.write("2004123101530250_STA01_1_1.sac", "");
    for (char c = 'A'; c <= 'X'; ++c) {
        const std::string expected = std::string("2004123101530250_STA01_1") + c + "1.sac";
        EXPECT_EQ(Named().name(), expected);
        stage.scratch.write(expected, "");
    }
    expect_ending([] { Named().name(); }, 23, "\n\nERROR!!!!!\n   Unable to create an unique filename.");
}

TEST(Chn_name, a_longer_stream_number_gives_its_second_digit_to_the_letter)
{
    Stage stage;
    stage.scratch.write("2004123101530250_STA01_10_3.sac", "");
    stage.scratch.write("2004123101530250_STA01_1A_3.sac", "");
    Named n;
    n.chn.id.stream = 9;
    n.chn.id.channel = 2;
    EXPECT_EQ(n.name(), "2004123101530250_STA01_1B_3.sac");
}
