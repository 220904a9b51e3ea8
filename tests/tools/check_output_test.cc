// What vx_check says of other files, its options and statuses, its table, and the names of traces.
#include "check/codes.h"
#include "tools/check_made.h"
#include "tools/check_run.h"
#include "tools/sac_words.h"

#include <set>

using namespace check_test;

namespace {

kit::Recording check_recording()
{
    return kit::Eh().event(12).usual().pll_days('0') + kit::Dt().event(12).seq(1).samples({1, 2, 3}) +
           kit::Et().event(12).usual().seq(2);
}

std::string looks_of(const std::string& content)
{
    const Json report = report_of(content);
    EXPECT_EQ(report["kind"], content.empty() ? "empty" : "other");
    EXPECT_TRUE(report["units"].empty());
    EXPECT_TRUE(report["findings"].empty());
    return report["looks_like"].is_null() ? "-" : report["looks_like"].get<std::string>();
}

/// The traces that vx_check tells of.
std::set<std::string> told_traces(const Json& report)
{
    std::set<std::string> all;
    for (const Json& unit : report["units"])
        for (const Json& event : unit["events"])
            for (const Json& channel : event["channels"])
                if (!channel["trace"].is_null()) all.insert(channel["trace"].get<std::string>());
    return all;
}

std::set<std::string> made_traces(const kit::Tree& tree)
{
    std::set<std::string> all;
    for (const auto& [path, bytes] : tree)
        if (path.ends_with(".sac")) all.insert(path);
    return all;
}

} // namespace

TEST(Check_kind, other_files_are_named)
{
    EXPECT_EQ(looks_of(""), "-");
    EXPECT_EQ(looks_of(std::string(5000, '\0')), "zeros");
    EXPECT_EQ(looks_of("000001D STA01  00BHZXX" + std::string(2000, '\x07')), "miniSEED");
    EXPECT_EQ(looks_of(kit::sac_file(kit::Sac(), std::vector<int32_t>(500, 3))), "SAC file");
#ifdef VX_CHECK_MAGIC
    EXPECT_EQ(looks_of(std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10) + std::string(2000, 'x')),
              "gzip data");
    std::string prose;
    for (int i = 0; i < 100; ++i) prose += "The quick brown fox jumps over the lazy dog.\n";
    EXPECT_EQ(looks_of(prose), "text");
#endif
}

TEST(Check_kind, zeros_before_other_bytes_are_not_zeros)
{
    EXPECT_NE(looks_of(std::string(5000, '\0') + "x"), "zeros");
}

TEST(Check_status, says_the_highest_of_several_files)
{
    const kit::Scratch s;
    s.write("good.pkt", check_recording());
    s.write("bad.pkt", check_recording() + "x");
    s.write("empty", "");
    EXPECT_EQ(run_check(s, {"good.pkt"}).status, 0);
    EXPECT_EQ(run_check(s, {"good.pkt", "bad.pkt"}).status, 1);
    EXPECT_EQ(run_check(s, {"bad.pkt", "empty", "good.pkt"}).status, 3);
    EXPECT_EQ(run_check(s, {"absent"}).status, 3);
    EXPECT_EQ(run_check(s, {"."}).status, 3);
    EXPECT_EQ(run_check(s, {"--only", "gap,clock", "bad.pkt"}).status, 0);
    EXPECT_EQ(run_check(s, {"--only=cut-tail", "bad.pkt"}).status, 1);
}

TEST(Check_status, a_mistake_on_the_command_line_is_told)
{
    const kit::Scratch s;
    s.write("rec.pkt", check_recording());
    for (const kit::Args& args : std::vector<kit::Args>{{},
                                                        {"--what", "rec.pkt"},
                                                        {"--json", "--gaps", "rec.pkt"},
                                                        {"--only", "gaps", "rec.pkt"},
                                                        {"rec.pkt", "--ini"},
                                                        {"rec.pkt", "--", "out"},
                                                        {"rec.pkt", "--", "-P9"}})
        EXPECT_EQ(run_check(s, args).status, 2) << (args.empty() ? "no argument" : args.back());
}

TEST(Check_status, a_full_device_is_told)
{
    if (!kit::full_device_is_there()) GTEST_SKIP();
    const kit::Scratch s;
    s.write("rec.pkt", check_recording());
    kit::RunOptions options;
    options.stdout_path = "/dev/full";
    const kit::Outcome run = run_check(s, {"rec.pkt"}, options);
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("vx_check: standard output: "), std::string::npos) << run.err;
}

TEST(Check_input, a_pipe_gives_the_same_report)
{
    const kit::Scratch s;
    const std::string rec = made({"--seconds", "20", "--units", "1"});
    s.write("rec.pkt", rec);
    kit::RunOptions options;
    options.stdin_text = rec;
    Json by_file = Json::parse(run_check(s, {"--json", "rec.pkt"}).out);
    Json by_pipe = Json::parse(run_check(s, {"--json", "-"}, options).out);
    EXPECT_EQ(by_pipe["file"], "-");
    by_pipe["file"] = by_file["file"];
    EXPECT_EQ(by_pipe, by_file);
}

TEST(Check_input, nothing_but_the_report_is_on_standard_output_and_nothing_is_written)
{
    const kit::Scratch s;
    kit::Dt invalid; // the decoder prints a complaint about a Steim-2 word of no known width
    s.write("rec.pkt",
            kit::Eh().event(12).usual() + invalid.event(12).steim2(0, 0, {kit::Word{2, 0}}).count(1));
    const kit::Outcome run = run_check(s, {"--json", "rec.pkt", "--", "-QY", "-LY"});
    EXPECT_TRUE(Json::accept(run.out)) << run.out;
    EXPECT_EQ(kit::names(s.tree()), "rec.pkt\n");
}

TEST(Check_input, a_name_that_is_no_utf8_is_told_by_its_bytes)
{
    const kit::Scratch s;
    s.write("r\xE9"
            "c.pkt",
            check_recording());
    const Json report = Json::parse(run_check(s, {"--json", "r\xE9"
                                                            "c.pkt"})
                                        .out);
    EXPECT_EQ(report["file"], "r\u00E9c.pkt");
}

TEST(Check_traces, are_named_as_the_converter_names_them)
{
    const std::string rec = made({"--units", "2", "--seconds", "10", "--interleave"}) +
                            made({"--units", "1", "--seconds", "5"}) +
                            made({"--units", "1", "--seconds", "5"});
    for (const kit::Args& switches :
         std::vector<kit::Args>{{}, {"-P1"}, {"-P4", "-N1"}, {"-N0", "-P2"}, {"-S0"}, {"-S10", "-P3"}}) {
        kit::Args args{"--"};
        args.insert(args.end(), switches.begin(), switches.end());
        const std::set<std::string> told = told_traces(report_of(rec, args));
        EXPECT_EQ(told, made_traces(kit::convert(rec, switches).tree))
            << (switches.empty() ? "" : switches[0]);
        EXPECT_EQ(told.empty(), !switches.empty() && switches[0] == "-S0");
    }
}

TEST(Check_table, tells_units_events_and_findings)
{
    const kit::Scratch s;
    s.write("rec.pkt", check_recording() + "x");
    const kit::Outcome run = run_check(s, {"rec.pkt"});
    EXPECT_EQ(run.out,
              "rec.pkt: recording\n"
              "3073 bytes, 3 packets, EH 1, ET 1, DT 1\n"
              "2004-05-02T10:15:30.250000Z to 2004-05-02T10:15:30.270000Z, 3 samples\n"
              "\n"
              "9A2F  STA01, clock locked 0 days before at most\n"
              "  event stream     rate channels  packets     samples gaps  first                        last"
              "                         format\n"
              "     12      1      100        1        1           3    0  2004-05-02T10:15:30.250000Z  "
              "2004-05-02T10:15:30.270000Z  32\n"
              "\n"
              "cut-tail, 1 error: the last packet is cut\n"
              "    packet 4: the last 1 bytes are no whole packet\n"
              "\n");
}

TEST(Check_table, has_colour_on_a_terminal_unless_told_not_to)
{
    const kit::Scratch s;
    s.write("rec.pkt", check_recording() + "x");
    kit::RunOptions options;
    options.terminal = true;
    EXPECT_NE(run_check(s, {"rec.pkt"}, options).out.find("\033[31m"), std::string::npos);
    options.env = {"NO_COLOR=1"};
    EXPECT_EQ(run_check(s, {"rec.pkt"}, options).out.find('\033'), std::string::npos);
    EXPECT_EQ(run_check(s, {"rec.pkt"}).out.find('\033'), std::string::npos);
}

TEST(Check_table, fits_a_terminal_of_80_columns)
{
    const kit::Scratch s;
    kit::Recording rec = check_recording() + kit::Eh().event(13).usual().pll_days('0').seq(3);
    rec += kit::Dt().event(13).seq(9).samples({1, 2, 3}).packet() + std::string(1024, 'Q');
    s.write("rec.pkt", rec);
    kit::RunOptions options;
    options.terminal = true;
    options.env = {"NO_COLOR=1"};
    std::istringstream in(run_check(s, {"rec.pkt"}, options).out);
    int lines = 0;
    for (std::string line; std::getline(in, line); ++lines)
        EXPECT_LE(line.find_last_not_of('\r') + 1, 80u) << line;
    EXPECT_GT(lines, 10);
}

TEST(Check_codes, are_shown_from_their_table)
{
    const kit::Scratch s;
    const kit::Outcome run = run_check(s, {"--codes"});
    std::istringstream in(run.out);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "code\tseverity\tsentence");
    for (const check::CodeInfo& info : check::Codes) {
        ASSERT_TRUE(std::getline(in, line));
        EXPECT_EQ(line.substr(0, line.find('\t')), info.name);
    }
    EXPECT_FALSE(std::getline(in, line));
}
