// Damage that vx_mkrec plants is found by vx_check at its packet.
#include "tools/check_made.h"
#include "tools/check_run.h"

using namespace check_test;

namespace {

/// A recording of one unit and stream: header 1, data packets from 2 on, trailer.
std::string planted_recording(std::vector<std::string> options, const std::string& format = "c2")
{
    for (const char* option : {"--units", "1", "--streams", "1", "--channels", "2", "--events", "1",
                               "--seconds", "60", "--no-parameters", "--format"})
        options.push_back(option);
    options.push_back(format);
    return made(options);
}

std::string planted_findings(const std::vector<std::string>& options, const std::string& format = "c2")
{
    return findings_of(report_of(planted_recording(options, format)));
}

/// The number of the trailer of a recording without damage.
std::string trailer_number(const std::string& format)
{
    return std::to_string(planted_recording({}, format).size() / 1024);
}

} // namespace

TEST(Check_planted, damage_is_found_at_its_packet)
{
    ASSERT_EQ(planted_findings({}), "");
    ASSERT_EQ(planted_findings({}, "32"), "");
    const std::string last = trailer_number("c2");
    for (const char* kind : {"unknown-type", "zeros", "shifted", "cut-tail", "unknown-format", "overlap",
                             "bad-check", "sequence"}) {
        const std::string all = planted_findings({"--damage", std::string(kind) + "@7"});
        EXPECT_NE((" " + all + " ").find(" " + std::string(kind) + "@7 "), std::string::npos)
            << kind << ": " << all;
    }
    // The converter holds the channel's next packet against the wrong sample, and finds that bad, too.
    EXPECT_EQ(planted_findings({"--damage", "bad-check@7"}), "bad-check@7 bad-check@9");
    EXPECT_EQ(planted_findings({"--damage", "unknown-format@7"}, "32"), "unknown-format@7");
    EXPECT_EQ(planted_findings({"--damage", "duplicate@7"}, "32"),
              "duplicate@8 sequence@8 overlap@8"); // the copy
    EXPECT_EQ(planted_findings({"--damage", "clock@1"}), "clock@1");
    EXPECT_EQ(planted_findings({"--damage", "late-start@1"}), "late-start@2 late-start@3");
    EXPECT_EQ(planted_findings({"--damage", "rate@" + last}), "rate@" + last);
    EXPECT_EQ(planted_findings({"--drop", "1"}), "no-header@1");
    EXPECT_EQ(planted_findings({"--drop", last}), "no-trailer@" + std::to_string(std::stoi(last) - 1));
    EXPECT_EQ(planted_findings({"--damage", "byte-46@7"}, "32"), "byte-46@7");
    EXPECT_EQ(planted_findings({"--damage", "too-many-samples@7"}, "32").substr(0, 18), "too-many-samples@7");
}

TEST(Check_planted, dropped_packets_and_missing_seconds_are_gaps_of_their_length)
{
    const Json whole = report_of(planted_recording({}, "32"));
    EXPECT_EQ(planted_findings({"--drop", "10,11,12"}, "32").substr(0, 11), "sequence@10");
    const Json report = report_of(planted_recording({"--gap", "12"}, "32"));
    EXPECT_EQ(report["counts"]["gap"], 2);
    EXPECT_EQ(report["counts"]["sequence"], 0);
    for (size_t c = 0; c < 2; ++c) {
        const Json& channel = report["units"][0]["events"][0]["channels"][c];
        const Json& before = whole["units"][0]["events"][0]["channels"][c];
        const int missing = before["samples"].get<int>() - channel["samples"].get<int>();
        EXPECT_EQ(channel["gaps"][0]["samples"], missing);
        EXPECT_NEAR(channel["gaps"][0]["seconds"].get<double>(), 12, 1.3);
        EXPECT_EQ(channel["last"], before["last"]);
    }
}

TEST(Check_planted, a_survey_over_new_year_or_a_leap_day_is_sound)
{
    EXPECT_EQ(planted_findings({"--start", "2023-365T23:59"}), "");
    EXPECT_EQ(planted_findings({"--start", "2024-059T23:59"}), "");
    EXPECT_EQ(report_of(planted_recording({"--start", "2024-366T23:59"}))["first"],
              "2024-12-31T23:59:00.000000Z");
}

TEST(Mkrec_damage, mistakes_are_told)
{
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{"--damage", "rust@3"},
                                               {"--damage", "zeros"},
                                               {"--damage", "zeros@0"},
                                               {"--drop", "3,x"},
                                               {"--gap", "0"},
                                               {"--start", "2023-366T00:00"},
                                               {"--start", "noon"}}) {
        std::vector<std::string> args = wrong;
        args.push_back("OUT");
        mkrec::Options options;
        std::string complaint;
        EXPECT_FALSE(mkrec::read_options(args, options, complaint)) << wrong[1];
        EXPECT_EQ(complaint.find(wrong[0] + " "), 0u) << complaint;
    }
}
