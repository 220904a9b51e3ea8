#include "mkrec/options.h"
#include "mkrec/survey.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace mkrec;
using testing::ElementsAre;

namespace {

Options read(const std::vector<std::string>& args)
{
    Options options;
    std::string complaint;
    EXPECT_TRUE(read_options(args, options, complaint)) << complaint;
    return options;
}

std::string complaint_about(const std::vector<std::string>& args)
{
    Options options;
    std::string complaint;
    EXPECT_FALSE(read_options(args, options, complaint));
    return complaint;
}

} // namespace

TEST(Mkrec_options, every_option_has_its_place)
{
    const Options o = read({"--units",     "4",
                            "--streams=3", "--channels",
                            "6",           "--rate",
                            "100,20",      "--events",
                            "9999",        "--seconds",
                            "5",           "--format",
                            "C0,16",       "--signal",
                            "loud",        "--seed",
                            "77",          "--size",
                            "3M",          "--interleave",
                            "--no-et",     "--no-parameters",
                            "--bad-check", "--force",
                            "--mseed",     "m",
                            "rec.pkt"});
    EXPECT_EQ(o.units, 4);
    EXPECT_EQ(o.streams, 3);
    EXPECT_EQ(o.channels, 6);
    EXPECT_THAT(o.rates, ElementsAre(100, 20));
    EXPECT_EQ(o.events, 9999);
    EXPECT_EQ(o.seconds, 5);
    EXPECT_THAT(o.formats, ElementsAre(SampleFormat::steim1, SampleFormat::int16));
    EXPECT_EQ(o.motion, Motion::loud);
    EXPECT_EQ(o.seed, 77u);
    EXPECT_EQ(o.size, 3 * 1048576);
    EXPECT_TRUE(o.interleave);
    EXPECT_FALSE(o.trailers);
    EXPECT_FALSE(o.parameters);
    EXPECT_TRUE(o.bad_check);
    EXPECT_TRUE(o.force);
    EXPECT_EQ(o.mseed, "m");
    EXPECT_EQ(o.out, "rec.pkt");
}

TEST(Mkrec_options, a_size_counts_in_bytes_kibi_mebi_or_gibibytes)
{
    EXPECT_EQ(read({"--size", "2048", "o"}).size, 2048);
    EXPECT_EQ(read({"--size", "7k", "o"}).size, 7168);
    EXPECT_EQ(read({"--size", "100G", "o"}).size, int64_t{100} << 30);
    for (const char* bad : {"", "0", "1000", "M", "-1M", "1.5M", "1T", "1048577G", "99999999999999999999"})
        EXPECT_THAT(complaint_about({"--size", bad, "o"}),
                    testing::StartsWith("--size " + (*bad ? std::string(bad) : "''") + " is not "))
            << bad;
}

TEST(Mkrec_options, a_rate_is_a_whole_number_of_milliseconds_from_sample_to_sample)
{
    EXPECT_THAT(read({"--rate", "1,8,1000", "o"}).rates, ElementsAre(1, 8, 1000));
    for (const char* bad : {"3", "30", "300"})
        EXPECT_EQ(complaint_about({"--rate", bad, "o"}),
                  std::string("--rate ") + bad + " does not divide 1000");
    EXPECT_EQ(complaint_about({"--rate", "100,7", "o"}), "--rate 7 does not divide 1000");
    for (const char* bad : {"0", "2000", "x"})
        EXPECT_EQ(complaint_about({"--rate", bad, "o"}),
                  std::string("--rate ") + bad + " is not a whole number from 1 to 1000");
    for (const char* bad : {"", "100,"})
        EXPECT_EQ(complaint_about({"--rate", bad, "o"}), "--rate '' is not a whole number from 1 to 1000");
}

TEST(Mkrec_options, refusals_say_why)
{
    const auto refused = [](const std::string& name, const std::string& value) {
        return complaint_about({name, value, "o"});
    };
    EXPECT_EQ(refused("--units", "0"), "--units 0 is not a whole number from 1 to 20000");
    EXPECT_EQ(refused("--units", "20001"), "--units 20001 is not a whole number from 1 to 20000");
    EXPECT_EQ(refused("--streams", "100"), "--streams 100 is not a whole number from 1 to 99");
    EXPECT_EQ(refused("--channels", "33"), "--channels 33 is not a whole number from 1 to 32");
    EXPECT_EQ(refused("--events", "0"), "--events 0 is not a whole number from 1 to 1000000");
    EXPECT_EQ(refused("--seconds", "ten"), "--seconds ten is not a whole number from 1 to 10000000");
    EXPECT_EQ(refused("--seed", "-1"), "--seed -1 is not a whole number from 0 to 9223372036854775807");
    EXPECT_EQ(refused("--size", "1000"), "--size 1000 is not a multiple of 1024");
    EXPECT_EQ(refused("--format", "c2,c1"), "--format c1 is not one of c2, c0, 32 and 16");
    EXPECT_EQ(refused("--signal", "Quake"),
              "--signal Quake is not one of quake, quiet, loud, offset, full and mixed");
    EXPECT_EQ(refused("--mseed", ""), "--mseed needs a name");
    EXPECT_EQ(refused("--mseed", "o"), "the recording and --mseed are the same file: o");
}

TEST(Mkrec_options, complains_about_what_it_does_not_know)
{
    EXPECT_EQ(complaint_about({"--unit", "2", "o"}), "unknown option --unit");
    EXPECT_EQ(complaint_about({"-x", "o"}), "unknown option -x");
    EXPECT_EQ(complaint_about({"o", "--units"}), "--units needs a value");
    EXPECT_EQ(complaint_about({"--no-et=1", "o"}), "--no-et takes no value");
    EXPECT_EQ(complaint_about({"o", "p"}), "more than one name: o and p");
    EXPECT_EQ(complaint_about({}), "no name given for the recording");
}

TEST(Mkrec_options, a_lone_dash_is_a_name)
{
    EXPECT_EQ(read({"-"}).out, "-");
}

TEST(Mkrec_options, behind_two_dashes_there_are_names_only)
{
    EXPECT_EQ(read({"--units", "1", "--", "--force"}).out, "--force");
    EXPECT_FALSE(read({"--", "--force"}).force);
    EXPECT_EQ(complaint_about({"--"}), "no name given for the recording");
}

TEST(Mkrec_options, help_and_version_need_no_name)
{
    EXPECT_TRUE(read({"-h"}).help);
    EXPECT_TRUE(read({"--help"}).help);
    EXPECT_TRUE(read({"--version"}).version);
}

TEST(Survey, a_size_too_small_for_its_events_is_refused)
{
    // One unit without settings: 100 events of EH, 3 data packets and ET.
    Options o =
        read({"--units", "1", "--streams", "1", "--events", "100", "--no-parameters", "--size", "499K", "o"});
    Survey survey;
    std::string complaint;
    EXPECT_FALSE(make_survey(o, survey, complaint));
    EXPECT_EQ(complaint, "the size is too small: at least 500 packets are needed");
    o.size = 500 * 1024;
    EXPECT_TRUE(make_survey(o, survey, complaint));
}

TEST(Survey, streams_share_the_sixteen_inputs_once_they_are_used_up)
{
    Survey survey;
    std::string complaint;
    ASSERT_TRUE(make_survey(read({"--streams", "7", "--channels", "3", "o"}), survey, complaint));
    EXPECT_EQ(inputs(survey), 15);
    EXPECT_EQ(channel_number(survey, 4, 2), 14);
    EXPECT_EQ(channel_number(survey, 5, 0), 0);
}

TEST(Survey, event_numbers_run_from_1_to_9999_and_start_again)
{
    Survey survey;
    std::string complaint;
    ASSERT_TRUE(make_survey(read({"--streams", "2", "o"}), survey, complaint));
    EXPECT_EQ(event_number(survey, 0, 0), 1);
    EXPECT_EQ(event_number(survey, 1, 0), 2);
    EXPECT_EQ(event_number(survey, 0, 4999), 9999);
    EXPECT_EQ(event_number(survey, 1, 4999), 1);
}

TEST(Survey, every_station_has_its_own_name_of_five_characters)
{
    std::vector<std::string> names;
    for (int unit = 0; unit < 20000; ++unit) names.push_back(station_name(unit));
    EXPECT_THAT(names, testing::Each(testing::SizeIs(5)));
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::unique(names.begin(), names.end()), names.end());
}

TEST(Survey, every_channel_of_a_stream_has_its_own_code)
{
    Survey survey;
    std::string complaint;
    ASSERT_TRUE(make_survey(read({"--channels", "32", "--rate", "200", "o"}), survey, complaint));
    std::vector<std::string> codes;
    for (int c = 0; c < 32; ++c) codes.push_back(seed_code(survey, 1, c));
    EXPECT_EQ(codes[0], "HHZ");
    EXPECT_EQ(codes[4], "HLN");
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(std::unique(codes.begin(), codes.end()), codes.end());
}
