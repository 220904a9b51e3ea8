// The command line: what is refused with the usage text, what each switch value comes to.
#include "runs/common.h"

using namespace kit;
using namespace runs;

namespace {

/// A directory with an input that would convert well, and an output directory.
struct Ready {
    Ready()
    {
        scratch.write("good.pkt", one_event(1, {1, 2}));
        scratch.make_dir("out");
    }
    Outcome run(const Args& args) { return run_vx(scratch.dir(), args); }
    Scratch scratch;
};

std::string shown(const Args& args)
{
    std::string line;
    for (const std::string& a : args) line += " '" + a + "'";
    return line;
}

void expect_usage(const Args& args, const char* skip = "0")
{
    SCOPED_TRACE(shown(args));
    Ready ready;
    const Tree before = ready.scratch.tree();
    const Outcome run = ready.run(args);
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(same_bytes(run.out, console_banner() + usage(skip)));
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_tree(ready.scratch.tree(), before)) << "a refused command line touches no file";
}

/// The run summary with these switches, the default settings changed by `change`.
template <class Change>
void expect_settings(const Args& switches, Change change)
{
    SCOPED_TRACE(shown(switches));
    const Converted run = convert(Fd().unit(0x1234), switches);
    Settings s = settings_of(run);
    change(s);
    EXPECT_EQ(run.status, 0);
    const std::string top = console_banner() + run_summary(s);
    EXPECT_TRUE(same_bytes(run.out.substr(0, top.size()), top));
    if (!s.log_on) return;
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.vxl").substr(0, log_header(s).size())), log_header(s)));
}

void expect_limit(const std::string& value, const std::string& number)
{
    expect_settings({"-S" + value}, [&](Settings& s) { s.max_samples = number; });
    expect_settings({"-T" + value}, [&](Settings& s) { s.skip_samples = number; });
}

void expect_rate(const std::string& value, const std::string& number)
{
    expect_settings({"-R" + value}, [&](Settings& s) { s.rate = number; });
}

void expect_path_option(const std::string& value, unsigned level)
{
    expect_settings({"-P" + value}, [&](Settings& s) { s.path_option = level; });
}

} // namespace

TEST(Command_line, banner_and_usage_when_no_input_is_named)
{
    expect_usage({});
    expect_usage({"-L-"});
    expect_usage({"", "out"});
}

TEST(Command_line, usage_for_a_letter_that_is_no_switch)
{
    for (const char* bad : {"-X", "-A", "-1", "-", "-?", "--help", "-x", "-@"})
        expect_usage({"good.pkt", bad});
}

TEST(Command_line, usage_for_a_switch_without_a_known_value)
{
    for (const char* bad : {"-D", "-Dx", "-D1", "-L", "-Lx", "-L0", "-Q", "-Q1", "-V", "-Vx", "-V 0"}) {
        expect_usage({"good.pkt", "out", bad});
    }
    for (const char* bad : {"-N", "-NY", "-N2", "-N+", "-Nope", "-NS"}) expect_usage({bad, "good.pkt"});
}

TEST(Command_line, usage_for_a_path_option_above_four_in_16_bits)
{
    for (const char* bad : {"-P5", "-P-1", "-P4294967296", "-P65535", "-P70000"})
        expect_usage({bad, "good.pkt"});
}

TEST(Command_line, usage_for_a_question_mark_in_front_of_a_name)
{
    expect_usage({"?"});
    expect_usage({"?x", "good.pkt"});
    expect_usage({"good.pkt", "?"});
}

TEST(Command_line, usage_for_a_third_name)
{
    expect_usage({"good.pkt", "out", "more"});
    expect_usage({"good.pkt", "-V-", "out", ""});
}

TEST(Command_line, usage_shows_the_samples_to_skip_as_they_stand_and_else_the_defaults)
{
    expect_usage({"-T25", "-X"}, "25");
    expect_usage({"-X", "-T25"}, "0");
    expect_usage({"-P3", "-S5", "-R7", "-D+", "-Q+", "-L-", "-V-", "-N1", "-X"}, "0");
}

TEST(Command_line, a_question_mark_inside_a_name_is_part_of_it)
{
    Ready ready;
    ready.scratch.write("a?b", Fd().packet());
    const Outcome run = ready.run({"a?b", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("\n     Input File : a?b\n"), std::string::npos);
    EXPECT_TRUE(ready.scratch.exists("out/a?b.vxl"));
}

TEST(Command_line, yes_and_no_switches_read_their_third_character_in_any_case)
{
    for (const char* on : {"Y", "y", "+", "yes", "+-"}) {
        expect_settings({std::string("-D") + on}, [](Settings& s) { s.log_dt = true; });
        expect_settings({std::string("-Q") + on}, [](Settings& s) { s.qcc_on = true; });
        expect_settings({std::string("-l") + on}, [](Settings&) {});
    }
    for (const char* off : {"N", "n", "-", "no", "-+"}) {
        expect_settings({std::string("-d") + off}, [](Settings&) {});
        expect_settings({std::string("-q") + off}, [](Settings&) {});
        expect_settings({std::string("-L") + off}, [](Settings& s) { s.log_on = false; });
    }
}

TEST(Command_line, verbose_switch_chooses_between_table_and_counter)
{
    for (const char* off : {"-V-", "-v-", "-VN", "-Vnope"}) {
        const Converted run = convert(Fd(), {off});
        EXPECT_TRUE(same_bytes(run.out, console_banner() + run_summary(settings_of(run)) +
                                            "\r\n\nMeg:     0\rMeg:     0\r\n"));
    }
    for (const char* on : {"-V+", "-vy"}) {
        const Converted run = convert(Fd(), {on});
        EXPECT_TRUE(same_bytes(run.out, whole_console(settings_of(run), progress_params(1, "FD"))));
    }
}

TEST(Command_line, name_switch_takes_auto_and_unit_id)
{
    for (const char* automatic : {"-N0", "-NA", "-Na", "-N-", "-NN", "-nn"}) {
        expect_settings({automatic}, [](Settings& s) { s.name_option = "Auto"; });
    }
    for (const char* by_id : {"-N1", "-NI", "-Ni", "-nidentity"}) {
        expect_settings({by_id}, [](Settings& s) { s.name_option = "Unit ID"; });
    }
}

TEST(Command_line, path_option_is_a_32_bit_number_kept_in_16_bits)
{
    expect_path_option("0", 0);
    expect_path_option("1", 1);
    expect_path_option("4", 4);
    expect_path_option("", 0);
    expect_path_option("x", 0);
    expect_path_option("3rd", 3);
    expect_path_option(" 2", 2);
    expect_path_option("65540", 4);
    expect_path_option("-65532", 4);
    expect_path_option("-99999999999", 0);
}

TEST(Command_line, sample_counts_are_decimal_hexadecimal_or_octal)
{
    expect_limit("1000", "1000");
    expect_limit("0x10", "16");
    expect_limit("0X1f", "31");
    expect_limit("010", "8");
    expect_limit("08", "0");
    expect_limit("0x", "0");
    expect_limit(" 7", "7");
    expect_limit("+5", "5");
    expect_limit("1e3", "1");
    expect_limit("0b101", "0");
}

TEST(Command_line, sample_counts_that_are_no_number_are_zero)
{
    expect_limit("", "0");
    expect_limit("abc", "0");
}

TEST(Command_line, sample_counts_saturate_and_negate_in_32_bits)
{
    expect_limit("4294967295", "4294967295");
    expect_limit("4294967296", "4294967295");
    expect_limit("-4294967296", "4294967295");
    expect_limit("-4294967295", "1");
    expect_limit("-1", "4294967295");
    expect_limit("99999999999999999999999", "4294967295");
}

TEST(Command_line, rate_is_a_number_or_a_quotient_whose_divisor_starts_one_character_late)
{
    expect_rate("250", "250.0000");
    expect_rate("-5", "-5.0000");
    expect_rate(".5x", "0.5000");
    expect_rate("1e2", "100.0000");
    expect_rate("", "0.0000");
    expect_rate("fast", "0.0000");
    expect_rate("100/25", "20.0000");
    expect_rate("100/4", "inf");
    expect_rate("1/ 2", "0.5000");
    expect_rate("100/0", "100.0000");
    expect_rate("100/05", "20.0000");
}

TEST(Command_line, rate_is_a_single_float_of_at_most_19_characters)
{
    expect_rate("0000000000000000001234", "1.0000");
    expect_rate("16777217", "16777216.0000");
}

TEST(Command_line, three_letters_are_accepted_with_anything_and_ignored)
{
    expect_settings({"-F", "-G", "-H"}, [](Settings&) {});
    expect_settings({"-fast", "-g0", "-Hello", "-f?"}, [](Settings&) {});
}

TEST(Command_line, the_last_of_a_repeated_switch_wins)
{
    expect_settings({"-L-", "-L+", "-S5", "-S7", "-P1", "-P2"}, [](Settings& s) {
        s.max_samples = "7";
        s.path_option = 2;
    });
}

TEST(Command_line, switches_may_stand_anywhere_and_names_keep_their_case)
{
    Ready ready;
    ready.scratch.write("Rec.PKT", one_event(1, {1, 2}));
    const Outcome run = ready.run({"-s1", "Rec.PKT", "-l-", "out", "-v-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("\n     Input File : Rec.PKT\n"), std::string::npos);
    EXPECT_NE(run.out.find("\n       Log File : out/Rec.vxl\n"), std::string::npos);
    EXPECT_NE(run.out.find("\n     Log enable : NO\n"), std::string::npos);
    EXPECT_EQ(names(ready.scratch.tree("out")), std::string(Name_1_1) + "\n");
    EXPECT_EQ(samples_of(ready.scratch.read(std::string("out/") + Name_1_1)).size(), 1u);
}

TEST(Command_line, is_kept_as_typed_for_the_log)
{
    Ready ready;
    RunOptions options;
    options.argv0 = "vx";
    const Outcome run = run_vx(ready.scratch.dir(), {"-v-", "good.pkt", "-Fx  y", "out"}, options);
    EXPECT_EQ(run.status, 0);
    const std::string log = ready.scratch.read("out/good.vxl");
    EXPECT_NE(log.find("\r\n   Command Line : vx -v- good.pkt -Fx  y out\r\n\r\n"), std::string::npos) << log;
}

TEST(Command_line, is_cut_at_131_characters_in_the_log)
{
    Ready ready;
    const std::string padding = "-F" + std::string(200, 'x');
    const Outcome run = ready.run({"good.pkt", padding, "out"});
    EXPECT_EQ(run.status, 0);
    const std::string kept = ("vx_sac good.pkt " + padding).substr(0, 131);
    const std::string log = ready.scratch.read("out/good.vxl");
    EXPECT_NE(log.find("\r\n   Command Line : " + kept + "\r\n\r\n"), std::string::npos) << log;
}

TEST(Command_line, usage_goes_to_standard_output)
{
    Ready ready;
    RunOptions options;
    options.stdout_path = "/dev/null";
    const Outcome run = run_vx(ready.scratch.dir(), {"-X"}, options);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "");
}

TEST(Command_line, the_locale_of_the_user_changes_nothing)
{
    ConvertOptions options;
    options.ini = "[9A2F]\nSTATION=AB\nCH1AXIS=Q\n";
    options.run.env = {"LC_ALL=tr_TR.UTF-8", "LANG=tr_TR.UTF-8"};
    const Converted run = convert(Dt().event(1).samples({1}), {"-l-", "-R1.5"}, options);
    EXPECT_NE(run.out.find("\n    Sample Rate : 1.5000\n"), std::string::npos);
    EXPECT_EQ(names(run.tree), "2004123101530250____AB_1_1.sac\n");
}
