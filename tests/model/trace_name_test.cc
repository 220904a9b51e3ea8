// How the path of a trace is made up.
#include "model/trace_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TIMESTR time_of(std::string_view digits)
{
    TIMESTR time;
    time.put(digits);
    return time;
}

/// The first channel of stream 1, of a station that is told.
TraceName name_of(std::string_view station, uint16_t stream = 0, uint16_t channel = 0)
{
    TraceName name{time_of("2004123101530250"), {}, 0x9A2F, stream, channel};
    name.station.put(station);
    return name;
}

TEST(trace_directory, has_up_to_two_levels_of_the_time)
{
    const TIMESTR first = time_of("2004123101530250");
    EXPECT_EQ(trace_directory(first, 0), "");
    EXPECT_EQ(trace_directory(first, 1), "2004_123/");
    EXPECT_EQ(trace_directory(first, 2), "2004_123/10/");
    EXPECT_EQ(trace_directory(first, 3), "2004_123/10_15/");
    EXPECT_EQ(trace_directory(first, 4), "2004_123/10_15_30/");
    EXPECT_EQ(trace_directory(first, 5), "");
    EXPECT_EQ(trace_directory(first, 65535), "");
}

TEST(trace_directory, takes_characters_that_are_no_digits_as_they_are)
{
    EXPECT_EQ(trace_directory(time_of("2084:;<=>?123456"), 4), "2084_:;</=>_?1_23/");
}

TEST(trace_base, is_time_station_stream_and_channel)
{
    EXPECT_EQ(trace_base(name_of("STA01"), 0), "2004123101530250_STA01_1_1");
    EXPECT_EQ(trace_base(name_of("STA01", 0, 2), 0), "2004123101530250_STA01_1_3");
    EXPECT_EQ(trace_base(name_of("STA01", 8, 8), 0), "2004123101530250_STA01_9_9");
}

TEST(trace_base, counts_streams_decimal_and_channels_hexadecimal)
{
    EXPECT_EQ(trace_base(name_of("STA01", 9, 9), 0), "2004123101530250_STA01_10_A");
    EXPECT_EQ(trace_base(name_of("STA01", 15, 15), 0), "2004123101530250_STA01_16_10");
    EXPECT_EQ(trace_base(name_of("STA01", 165, 165), 0), "2004123101530250_STA01_166_A6");
}

TEST(trace_base, by_default_is_named_after_the_station_unless_that_is_five_blanks)
{
    EXPECT_EQ(trace_base(name_of("STA01"), 0), "2004123101530250_STA01_1_1");
    EXPECT_EQ(trace_base(name_of("     "), 0), "2004123101530250_09A2F_1_1");
    EXPECT_EQ(trace_base(name_of("    "), 0), "2004123101530250_______1_1") << "four are not five";
    EXPECT_EQ(trace_base(name_of(""), 0), "2004123101530250_______1_1");
}

TEST(trace_base, may_be_named_after_the_unit_or_always_after_the_station)
{
    EXPECT_EQ(trace_base(name_of("STA01"), 1), "2004123101530250_09A2F_1_1");
    EXPECT_EQ(trace_base(name_of("     "), 1), "2004123101530250_09A2F_1_1");
    EXPECT_EQ(trace_base(name_of("STA01"), 2), "2004123101530250_STA01_1_1");
    EXPECT_EQ(trace_base(name_of("     "), 2), "2004123101530250_______1_1");
}

TEST(trace_base, shows_unit_IDs_with_five_digits)
{
    TraceName name = name_of("STA01");
    name.unit_id = 0x1F;
    EXPECT_EQ(trace_base(name, 1), "2004123101530250_0001F_1_1");
    name.unit_id = 0xFFFF;
    EXPECT_EQ(trace_base(name, 1), "2004123101530250_0FFFF_1_1");
}

TEST(trace_base, aligns_short_stations_right_and_makes_every_blank_an_underscore)
{
    EXPECT_EQ(trace_base(name_of("AB"), 0), "2004123101530250____AB_1_1");
    EXPECT_EQ(trace_base(name_of("A B"), 0), "2004123101530250___A_B_1_1");
    EXPECT_EQ(trace_base(name_of("AB   "), 0), "2004123101530250_AB____1_1");
}

TEST(Trace_letter_place, is_where_a_base_has_the_last_digit_of_a_stream_of_two)
{
    EXPECT_EQ(trace_base(name_of("STA01", 0), 0)[Trace_letter_place - 1], '1');
    EXPECT_EQ(trace_base(name_of("STA01", 11), 0)[Trace_letter_place], '2');
}

} // namespace
