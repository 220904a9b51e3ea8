// Recordings with real ground motion, from outside the project, and what an independent tool has read out of
// them: every trace's header in full and its samples. Without the folder these tests skip.
#include "kit/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

using Json = nlohmann::json;

const std::string Data = VX_SHARED_DATA;

constexpr size_t Header_len = 632;
constexpr size_t Run_date_at = 616, Run_date_len = 8;

/// The statistics words of a header and their values once the sums have been emptied.
struct Reset {
    size_t at;
    const char* bytes;
};
constexpr Reset Resets[] = {
    {4, "\x4F\x00\x00\x00"},   // least: 2147483647.0
    {8, "\xCF\x00\x00\x00"},   // greatest: -2147483647.0
    {224, "\x00\x00\x00\x00"}, // mean
};

/// With statistics on, an event without a packet out of order has its sums emptied before its headers are
/// finished. Only one of the recordings has such events, and all of its events are: the others count through
/// the unit, so that each event begins alone, at a number that is neither 0 nor 9999.
bool in_order(const std::string& recording)
{
    return recording == "rec2.pkt";
}

std::string from_hex(const std::string& hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

/// SHA-256 of a file behind its first `skip` bytes, by the system's own tools.
std::string sha256_of(const std::string& path, size_t skip)
{
    const std::string command = "tail -c +" + std::to_string(skip + 1) + " '" + path + "' | sha256sum";
    FILE* tool = popen(command.c_str(), "r");
    if (!tool) return "";
    char digits[65] = {};
    const size_t n = fread(digits, 1, 64, tool);
    pclose(tool);
    return std::string(digits, n);
}

/// Where two headers differ, field by field of four bytes, so that a failure says what is wrong.
std::string differences(const std::string& actual, const std::string& expected)
{
    std::string list;
    for (size_t at = 0; at < Header_len; at += 4) {
        const std::string a = actual.substr(at, 4), e = expected.substr(at, 4);
        if (a == e) continue;
        char line[64];
        snprintf(line, sizeof line, "byte %zu:", at);
        list += line;
        for (const std::string* word : {&a, &e}) {
            list += ' ';
            for (const char c : *word) {
                snprintf(line, sizeof line, "%02X", static_cast<unsigned char>(c));
                list += line;
            }
        }
        list += " (is, should be)\n";
    }
    return list;
}

/// The manifest's entry of a recording.
Json entry_of(const std::string& recording)
{
    for (const Json& entry : Json::parse(kit::read_file(Data + "/manifest.json")))
        if (entry.at("recording") == recording) return entry;
    ADD_FAILURE() << "no word of " << recording << " in the manifest";
    return {};
}

std::string expected_header(const Json& trace, bool sums_emptied)
{
    std::string header = from_hex(trace.at("header_hex"));
    if (sums_emptied)
        for (const Reset& r : Resets) header.replace(r.at, 4, std::string(r.bytes, 4));
    return header;
}

void check_trace(const kit::Converted& run, const Json& trace, bool sums_emptied)
{
    const std::string name = trace.at("file");
    SCOPED_TRACE(name);
    const std::string& bytes = run.file(name);
    ASSERT_EQ(bytes.size(), Header_len + 4 * trace.at("npts").get<size_t>());

    std::string header = bytes.substr(0, Header_len);
    header.replace(Run_date_at, Run_date_len, Run_date_len, '?');
    const std::string expected = expected_header(trace, sums_emptied);
    ASSERT_EQ(expected.size(), Header_len);
    EXPECT_EQ(differences(header, expected), "");
    EXPECT_EQ(sha256_of(run.scratch->path("out/" + name), Header_len), trace.at("sha256"));
}

void check_names(const kit::Converted& run, const Json& traces)
{
    std::set<std::string> expected;
    for (const Json& trace : traces) expected.insert(trace.at("file"));
    const std::vector<std::string> made = run.sac_names();
    EXPECT_EQ(std::set<std::string>(made.begin(), made.end()), expected);
}

/// Converts a recording with its station file and holds every trace against the manifest.
void check_recording(const std::string& name, const kit::Args& args, bool sums_emptied)
{
    if (!std::filesystem::exists(Data + "/manifest.json"))
        GTEST_SKIP() << "left out: there are no real recordings at " << Data;

    const Json entry = entry_of(name);
    ASSERT_EQ(sha256_of(Data + "/" + name, 0), entry.at("sha256")) << "not the recording that is described";
    kit::ConvertOptions options;
    options.run.env = {"VXU==" + Data + "/vxu.ini"};
    const kit::Converted run = kit::convert(kit::read_file(Data + "/" + name), args, options);

    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    check_names(run, entry.at("sac"));
    for (const Json& trace : entry.at("sac")) check_trace(run, trace, sums_emptied);
}

void with_default_switches(const std::string& recording)
{
    check_recording(recording, {}, false);
}

void with_statistics(const std::string& recording)
{
    check_recording(recording, {"-QY"}, in_order(recording));
}

} // namespace

TEST(Real_recordings, strong_motion_of_one_unit_in_steim_1_and_2)
{
    with_default_switches("rec1.pkt");
}

TEST(Real_recordings, two_streams_at_a_time_in_16_and_32_bits_and_steim)
{
    with_default_switches("rec2.pkt");
}

TEST(Real_recordings, two_units_with_lost_packets_and_a_missing_trailer)
{
    with_default_switches("rec3.pkt");
}

TEST(Real_recordings, every_data_format_and_channels_10_to_12)
{
    with_default_switches("rec4.pkt");
}

TEST(Real_recordings, statistics_leave_headers_of_events_out_of_order_as_they_are)
{
    with_statistics("rec1.pkt");
}

TEST(Real_recordings, statistics_empty_the_sums_in_headers_of_events_in_order)
{
    with_statistics("rec2.pkt");
}

TEST(Real_recordings, statistics_leave_headers_of_two_units_with_lost_packets_as_they_are)
{
    with_statistics("rec3.pkt");
}

TEST(Real_recordings, statistics_leave_headers_of_every_data_format_as_they_are)
{
    with_statistics("rec4.pkt");
}
