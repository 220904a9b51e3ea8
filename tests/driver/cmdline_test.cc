// The walk over the arguments: every switch and value, and the two names.
#include "driver/cmdline.h"

#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/expect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Args = std::vector<std::string>;

/// The settings as they are after these arguments, everything else at its default.
void walk(Args args)
{
    set_defaults();
    for (std::string* text : {&Cmd_line, &FileIn, &DirOut}) text->clear();
    args.insert(args.begin(), "vx_sac");
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    read_command_line(static_cast<int>(args.size()), argv.data());
}

void with(const std::string& a_switch)
{
    walk({"in", a_switch});
}

void expect_usage(const Args& args, std::string_view skip = "0")
{
    SCOPED_TRACE(testing::PrintToString(args));
    kit::expect_ending([&] { walk(args); }, 2, kit::usage(skip));
}

TEST(set_defaults, is_what_holds_without_switches)
{
    walk({"in"});
    EXPECT_EQ(Verbose, 1);
    EXPECT_EQ(Log_on, 1);
    EXPECT_EQ(Log_dt, 0);
    EXPECT_EQ(Qcc_on, 0);
    EXPECT_EQ(Name_option, 0);
    EXPECT_EQ(Path_option, 0);
    EXPECT_EQ(Smp_rate_cmd, 100.0f);
    EXPECT_EQ(Smp_limit, 4294967295U);
    EXPECT_EQ(Smp_skip, 0U);
    EXPECT_EQ(FileIn, "in");
    EXPECT_EQ(DirOut, "");
}

TEST(set_defaults, constants_are_the_ones_people_see)
{
    EXPECT_STREQ(Program, "VX_SAC");
    EXPECT_STREQ(Version, "sps16   ");
    EXPECT_STREQ(Dir_sep, "/");
    EXPECT_STREQ(Fname_ini, "vxu.ini");
    EXPECT_STREQ(Fn_ext_log, ".vxl");
    EXPECT_STREQ(Fn_ext_qcc, ".qcc");
}

/// A switch that takes Y, +, N and - in any case, and reads nothing behind them.
template <class Flag>
void expect_yes_no(const std::string& letter, const Flag& flag)
{
    for (const char* on : {"Y", "y", "+", "Yes", "+-", "ynope"}) {
        with("-" + letter + on);
        EXPECT_EQ(flag, 1) << letter << on;
    }
    for (const char* off : {"N", "n", "-", "Nope", "-+", "ny"}) {
        with("-" + letter + off);
        EXPECT_EQ(flag, 0) << letter << off;
    }
    for (const char* bad : {"", "0", "1", "X", " Y", "=", "?"}) expect_usage({"in", "-" + letter + bad});
}

TEST(read_command_line, d_sets_the_lines_of_data_packets)
{
    expect_yes_no("D", Log_dt);
    expect_yes_no("d", Log_dt);
}

TEST(read_command_line, l_sets_the_logs)
{
    expect_yes_no("L", Log_on);
    expect_yes_no("l", Log_on);
}

TEST(read_command_line, q_sets_the_statistics)
{
    expect_yes_no("Q", Qcc_on);
    expect_yes_no("q", Qcc_on);
}

TEST(read_command_line, v_sets_the_progress_table)
{
    expect_yes_no("V", Verbose);
    expect_yes_no("v", Verbose);
}

TEST(read_command_line, n_chooses_between_auto_and_unit_id)
{
    for (const char* automatic : {"-N0", "-NA", "-Na", "-N-", "-NN", "-nn", "-Nnn", "-NAI"}) {
        Name_option = 9;
        with(automatic);
        EXPECT_EQ(Name_option, 0) << automatic;
    }
    for (const char* unit : {"-N1", "-NI", "-Ni", "-ni", "-NIA"}) {
        with(unit);
        EXPECT_EQ(Name_option, 1) << unit;
    }
    for (const char* bad : {"-N", "-NY", "-N2", "-N+", "-NS"}) expect_usage({"in", bad});
}

TEST(read_command_line, p_is_a_32_bit_number_kept_in_16_bits)
{
    const std::pair<const char*, uint16_t> good[] = {
        {"-P0", 0},   {"-P1", 1},     {"-P4", 4},      {"-p2", 2},  {"-P", 0},       {"-Px", 0},
        {"-P+3", 3},  {"-P 3", 3},    {"-P2x", 2},     {"-P04", 4}, {"-P65540", 4},  {"-P-65532", 4},
        {"-P0x3", 0}, {"-P65536", 0}, {"-P-65536", 0}, {"-P-0", 0}, {"-P131074", 2}, {"-P-99999999999", 0}};
    for (const auto& [arg, value] : good) {
        with(arg);
        EXPECT_EQ(Path_option, value) << arg;
    }
    for (const char* bad :
         {"-P5", "-P-1", "-P65541", "-P4294967296", "-P4294967297", "-P99999999999", "-P40"})
        expect_usage({"in", bad});
}

TEST(read_command_line, r_is_a_number_or_a_quotient_whose_divisor_starts_one_character_late)
{
    const std::pair<const char*, float> good[] = {
        {"-R50", 50.0f},      {"-r50", 50.0f},   {"-R33.3", 33.3f},      {"-R", 0.0f},
        {"-Rfast", 0.0f},     {"-R-5", -5.0f},   {"-R100/25", 20.0f},    {"-R100/05", 20.0f},
        {"-R100/0", 100.0f},  {"-R1/ 2", 0.5f},  {"-R100/4", HUGE_VALF}, {"-R16777217", 16777216.0f},
        {"-Rinf", HUGE_VALF}, {"-R0x10", 16.0f}, {"-R1e2", 100.0f},      {"-R0000000000000000001234", 1.0f}};
    for (const auto& [arg, value] : good) {
        with(arg);
        EXPECT_EQ(Smp_rate_cmd, value) << arg;
    }
    with("-R0/4");
    EXPECT_TRUE(std::isnan(Smp_rate_cmd));
}

/// -S and -T read their numbers alike.
void expect_count(const std::string& letter, const uint32_t& count)
{
    const std::pair<const char*, uint32_t> good[] = {{"", 0},
                                                     {"0", 0},
                                                     {"7", 7},
                                                     {"+7", 7},
                                                     {" 7", 7},
                                                     {"1e3", 1},
                                                     {"0x10", 16},
                                                     {"0X1f", 31},
                                                     {"010", 8},
                                                     {"08", 0},
                                                     {"0x", 0},
                                                     {"0b101", 0},
                                                     {"abc", 0},
                                                     {"12a", 12},
                                                     {"-1", 4294967295U},
                                                     {"-4294967295", 1},
                                                     {"4294967295", 4294967295U},
                                                     {"4294967296", 4294967295U},
                                                     {"-4294967296", 4294967295U}};
    for (const auto& [value, expected] : good) {
        with("-" + letter + value);
        EXPECT_EQ(count, expected) << letter << value;
    }
}

TEST(read_command_line, s_limits_the_samples)
{
    expect_count("S", Smp_limit);
    expect_count("s", Smp_limit);
}

TEST(read_command_line, t_trashes_samples)
{
    expect_count("T", Smp_skip);
    expect_count("t", Smp_skip);
}

TEST(read_command_line, f_g_and_h_are_taken_and_mean_nothing)
{
    for (const char* arg : {"-F", "-G", "-H", "-f", "-gx", "-h?", "-H1", "-Fxyz"}) {
        EXPECT_EQ(kit::shown_by([&] { with(arg); }), "") << arg;
        EXPECT_EQ(FileIn, "in");
        EXPECT_EQ(Log_on, 1);
        EXPECT_EQ(Verbose, 1);
    }
}

TEST(read_command_line, any_other_switch_is_an_error)
{
    const std::string known = "DFGHLNPQRSTV";
    for (int c = 1; c < 256; ++c) {
        const char letter = static_cast<char>(c);
        const char upper = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
        if (known.find(upper) != std::string::npos) continue;
        SCOPED_TRACE(c);
        EXPECT_EXIT(walk({"in", std::string("-") + letter}), testing::ExitedWithCode(2), "");
    }
    expect_usage({"in", "-"});
    expect_usage({"in", "-?"});
    expect_usage({"in", "--help"});
    expect_usage({"in", "-X"});
    expect_usage({"-X", "in"});
}

TEST(read_command_line, the_usage_text_shows_what_is_to_be_trashed_by_then)
{
    expect_usage({"-T25", "-X"}, "25");
    expect_usage({"-X", "-T25"}, "0");
    expect_usage({"-T-1", "-V"}, "4294967295");
    expect_usage({"-P3", "-S5", "-QY", "-LN", "-X"}, "0");
}

TEST(read_command_line, a_question_mark_in_front_of_a_name_asks_for_help)
{
    expect_usage({"?"});
    expect_usage({"?x"});
    expect_usage({"in", "?out"});
    walk({"a?b", "c?"});
    EXPECT_EQ(FileIn, "a?b");
    EXPECT_EQ(DirOut, "c?");
}

TEST(read_command_line, the_first_name_is_the_input_and_the_second_the_output_path)
{
    walk({"-v-", "Rec.PKT", "-q+", "Out/Dir", "-l-"});
    EXPECT_EQ(FileIn, "Rec.PKT");
    EXPECT_EQ(DirOut, "Out/Dir");
    EXPECT_EQ(Verbose, 0);
    EXPECT_EQ(Qcc_on, 1);
    EXPECT_EQ(Log_on, 0);
}

TEST(read_command_line, a_third_name_is_an_error)
{
    expect_usage({"in", "out", "more"});
    expect_usage({"in", "out", "-V-", ""});
}

TEST(read_command_line, an_input_must_be_named)
{
    expect_usage({});
    expect_usage({"-V-"});
    expect_usage({""});
    expect_usage({"", "out"});
}

TEST(read_command_line, an_empty_output_path_is_a_missing_directory)
{
    kit::expect_ending([] { walk({"in", ""}); }, 10, "\nUnable to change to directory ''");
}

TEST(read_command_line, the_last_of_a_repeated_switch_wins)
{
    walk({"-L-", "in", "-L+", "-S5", "-S", "-P4", "-P1", "-NI", "-NA"});
    EXPECT_EQ(Log_on, 1);
    EXPECT_EQ(Smp_limit, 0U);
    EXPECT_EQ(Path_option, 1);
    EXPECT_EQ(Name_option, 0);
}

TEST(read_command_line, the_command_line_is_kept_as_typed)
{
    walk({"-v-", "a.pkt", "out", "-S 7"});
    EXPECT_EQ(Cmd_line, "vx_sac -v- a.pkt out -S 7");
}

TEST(read_command_line, the_command_line_is_cut_at_131_characters)
{
    const std::string name(200, 'n');
    walk({name, "out"});
    EXPECT_EQ(Cmd_line, "vx_sac " + std::string(124, 'n'));
    EXPECT_EQ(FileIn, name);
    walk({std::string(120, 'n'), "out", "-V-"});
    EXPECT_EQ(Cmd_line, "vx_sac " + std::string(120, 'n') + " out");
}

TEST(read_command_line, a_caller_that_gives_no_program_name_gets_the_programs_own)
{
    char* nothing[] = {nullptr};
    set_defaults();
    for (std::string* text : {&Cmd_line, &DirOut}) text->clear();
    FileIn = "in";
    read_command_line(0, nothing);
    EXPECT_EQ(Cmd_line, "VX_SAC");
    FileIn.clear();
    kit::expect_ending([&] { read_command_line(0, nothing); }, 2, kit::usage());
}

} // namespace
