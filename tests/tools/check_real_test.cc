// vx_check on real ground motion, held against what is known of these recordings.
#include "tools/check_run.h"

#include <filesystem>

using namespace check_test;

namespace {

/// What --gaps says of the four recordings; the test is left out where they are absent.
bool real_recordings_are_there()
{
    return std::filesystem::exists(VX_SHARED_DATA "/rec4.pkt");
}

std::string real_path(int number)
{
    return VX_SHARED_DATA "/rec" + std::to_string(number) + ".pkt";
}

} // namespace

TEST(Check_real, three_gaps_and_no_other_break_are_in_the_four_recordings)
{
    if (!real_recordings_are_there()) GTEST_SKIP() << "the recordings are not here";
    const kit::Scratch s;
    s.write("vxu.ini", kit::read_file(VX_SHARED_DATA "/vxu.ini"));
    kit::Args args{"--gaps"};
    for (int i = 1; i <= 4; ++i) args.push_back(real_path(i));
    const kit::Outcome run = run_check(s, args);
    EXPECT_EQ(run.status, 1);
    std::istringstream in(run.out);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "file\tunit\tstation\tevent\tstream\tchannel\tat\tpacket\tseconds\tsamples\ttrace");
    for (int channel = 1; channel <= 3; ++channel) {
        ASSERT_TRUE(std::getline(in, line));
        EXPECT_NE(line.find("\t6A20\tQ0056\t8\t1\t" + std::to_string(channel) + "\t"), std::string::npos)
            << line;
        EXPECT_NE(line.find("\t8.920000\t1784\t"), std::string::npos) << line;
    }
    EXPECT_FALSE(std::getline(in, line)) << line;
}

TEST(Check_real, traces_samples_formats_and_breaks_are_those_of_the_manifest)
{
    if (!real_recordings_are_there()) GTEST_SKIP() << "the recordings are not here";
    const kit::Scratch s;
    s.write("vxu.ini", kit::read_file(VX_SHARED_DATA "/vxu.ini"));
    kit::Args args;
    for (int i = 1; i <= 4; ++i) args.push_back(real_path(i));
    std::map<std::string, Json> found;
    for (const Json& report : reports(s, args)) {
        for (const char* kind : {"overlap", "drift", "rate", "duplicate", "zeros", "unknown-type", "cut-tail",
                                 "clock", "late-start", "no-header", "too-many-samples", "unknown-format"})
            EXPECT_EQ(report["counts"][kind], 0) << kind << " in " << report["file"];
        for (const Json& unit : report["units"])
            for (const Json& event : unit["events"])
                for (const Json& channel : event["channels"]) {
                    found[channel["trace"]] = channel;
                    found[channel["trace"]]["rate"] = event["rate"];
                }
    }
    std::istringstream manifest(kit::read_file(VX_SHARED_DATA "/manifest.md"));
    int rows = 0;
    for (std::string line; std::getline(manifest, line);) {
        if (!line.starts_with("| `") || line.find(".sac`") == std::string::npos) continue;
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, '|');) {
            const size_t from = cell.find_first_not_of(" `"), to = cell.find_last_not_of(" `");
            cells.push_back(from == std::string::npos ? "" : cell.substr(from, to - from + 1));
        }
        ++rows;
        const Json& channel = found[cells[1]];
        ASSERT_TRUE(channel.is_object()) << cells[1];
        std::string format = cells[5];
        for (char& c : format) c = static_cast<char>(tolower(c));
        EXPECT_EQ(channel["format"], format) << cells[1];
        EXPECT_EQ(channel["rate"], std::stod(cells[6])) << cells[1];
        EXPECT_EQ(channel["samples"], std::stoi(cells[7])) << cells[1];
        EXPECT_EQ(channel["gaps"].size(), cells[1].find("2019187031923040_Q0056") == 0 ? 1u : 0u) << cells[1];
    }
    EXPECT_EQ(rows, 45);
    EXPECT_EQ(found.size(), 45u);
}
