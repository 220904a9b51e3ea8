// Before the first packet: output path, INI path, names of the run-wide files, summary, input.
#include "runs/common.h"

#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace kit;
using namespace runs;

namespace {

const std::string Not_found = " - not found; using defaults";

std::string line(const std::string& label, const std::string& value)
{
    return "\n" + std::string(15 - label.size(), ' ') + label + " : " + value + "\n";
}

/// One FD packet under a name; the run's console and the names of what it leaves behind.
Outcome run_input(const Scratch& scratch, const std::string& name, const Args& more = {},
                  const RunOptions& options = {})
{
    Args args = {name};
    args.insert(args.end(), more.begin(), more.end());
    return run_vx(scratch.dir(), args, options);
}

} // namespace

TEST(Setup, summary_and_log_header_show_every_setting)
{
    const Converted run = convert(Fd().unit(0x1234), {"-D+", "-Q+", "-P2", "-N1", "-R50", "-S300", "-T4"});
    Settings s = settings_of(run);
    s.log_dt = s.qcc_on = true;
    s.path_option = 2;
    s.name_option = "Unit ID";
    s.rate = "50.0000";
    s.max_samples = "300";
    s.skip_samples = "4";
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_params(1, "FD"))));
    const std::string packet = head_line(plain_line("FD", 0, "1234"));
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", log_header(s) + packet},
                                     {"rec.qcc", qcc_header(s)},
                                     {"ID1234.vxl", log_header(s) + packet},
                                     {"ID1234.qcc", qcc_header(s)}}));
}

TEST(Setup, file_names_of_log_and_statistics_are_shown_even_when_off)
{
    const Converted run = convert(Fd(), {"-L-"});
    Settings s = settings_of(run);
    s.log_on = false;
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_params(1, "FD"))));
    EXPECT_EQ(names(run.tree), "");
}

TEST(Setup, the_working_directory_is_the_output_path_when_none_is_given)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(1, {1}));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find(line("Output Path", scratch.dir() + "/")), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(line("Log File", scratch.dir() + "/rec.vxl")), std::string::npos);
    EXPECT_EQ(names(scratch.tree()), "2004123101530250_STA01_1_1.sac\nID9A2F.vxl\nrec.pkt\nrec.vxl\n");
}

TEST(Setup, the_output_path_gets_its_slash_only_when_it_has_none)
{
    Scratch scratch;
    scratch.write("rec.pkt", Fd().packet());
    scratch.make_dir("out");
    const std::pair<const char*, const char*> paths[] = {
        {"out", "out/"}, {"out/", "out/"}, {"out//", "out//"}, {".", "./"}, {"./out", "./out/"}};
    for (const auto& [given, used] : paths) {
        const Outcome run = run_input(scratch, "rec.pkt", {given});
        EXPECT_EQ(run.status, 0) << given;
        EXPECT_NE(run.out.find(line("Output Path", used)), std::string::npos) << run.out;
    }
}

TEST(Setup, a_missing_output_path_ends_the_run_at_once)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(1, {1}));
    const Outcome run = run_input(scratch, "rec.pkt", {"out"});
    EXPECT_EQ(run.status, 10);
    EXPECT_TRUE(same_bytes(run.out, console_banner() + "\nUnable to change to directory 'out'"));
    EXPECT_EQ(run.err, "");
    EXPECT_LT(run.seconds, 3);
    EXPECT_EQ(names(scratch.tree()), "rec.pkt\n");
}

TEST(Setup, an_empty_output_path_is_a_missing_one)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(1, {1}));
    const Outcome run = run_input(scratch, "rec.pkt", {""});
    EXPECT_EQ(run.status, 10);
    EXPECT_TRUE(same_bytes(run.out, console_banner() + "\nUnable to change to directory ''"));
    EXPECT_EQ(names(scratch.tree()), "rec.pkt\n");
}

TEST(Setup, a_regular_file_passes_as_output_path_until_something_is_written)
{
    Scratch scratch;
    scratch.write("rec.pkt", Fd().packet());
    scratch.write("file", "text");
    const Outcome quiet = run_input(scratch, "rec.pkt", {"file", "-L-"});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_NE(quiet.out.find(line("Output Path", "file/")), std::string::npos) << quiet.out;

    const Outcome logging = run_input(scratch, "rec.pkt", {"file"});
    EXPECT_EQ(logging.status, 20);
    EXPECT_TRUE(same_bytes(logging.out, console_banner() + "\nFile open error for 'file/rec.vxl'"));
    EXPECT_GE(logging.seconds, 4.9);
    EXPECT_LT(logging.seconds, 8);
    EXPECT_EQ(scratch.read("file"), "text");
}

TEST(Setup, an_output_path_of_131_characters_works_and_derived_names_are_not_cut)
{
    Scratch scratch;
    const std::string rec(60, 'r');
    scratch.write(rec + ".pkt", one_event(1, {1, 2, 3}));
    const std::string fits(130, 'd'), too_long(131, 'd'), slash_too_long(130, 'e');
    scratch.make_dir(fits);
    scratch.make_dir(too_long);
    const Outcome run = run_input(scratch, rec + ".pkt", {fits, "-P4"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(names(scratch.tree(fits)), "2004_123/\n2004_123/10_15_30/\n2004_123/10_15_30/" +
                                             std::string(Name_1_1) + "\nID9A2F.vxl\n" + rec + ".vxl\n");
    EXPECT_EQ(scratch.read(fits + "/2004_123/10_15_30/" + Name_1_1).size(), 632u + 12u);

    const Outcome refused = run_input(scratch, rec + ".pkt", {too_long});
    EXPECT_EQ(refused.status, 10);
    EXPECT_TRUE(ends_with(refused.out, "\nUnable to change to directory '" + too_long + "'") ||
                ends_with(refused.out, "\nUnable to change to directory '" + too_long + "/'"))
        << refused.out;
    EXPECT_EQ(names(scratch.tree(too_long)), "");
}

TEST(Setup, an_input_name_of_more_than_131_characters_is_refused_at_once)
{
    Scratch scratch;
    const std::string fits(131, 'r'), too_long(132, 'r');
    scratch.write(fits, Fd().packet());
    scratch.write(too_long, Fd().packet());
    EXPECT_EQ(run_input(scratch, fits).status, 0);
    scratch.make_dir("out");
    const Outcome run = run_input(scratch, too_long, {"out"});
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(ends_with(run.out, "\nFile open error for '" + too_long + "'")) << run.out;
    EXPECT_LT(run.seconds, 3);
    EXPECT_EQ(names(scratch.tree("out")), "");
}

TEST(Setup, a_working_directory_that_does_not_fit_needs_an_output_path)
{
    Scratch scratch;
    const std::string deep = std::string(70, 'a') + "/" + std::string(70, 'b');
    scratch.write(deep + "/rec.pkt", one_event(1, {1}));
    scratch.make_dir(deep + "/out");
    const Outcome refused = run_vx(scratch.path(deep), {"rec.pkt"});
    EXPECT_EQ(refused.status, 10);
    EXPECT_TRUE(same_bytes(refused.out, console_banner() + "\nUnable to change to directory '.'"));
    EXPECT_EQ(names(scratch.tree(deep)), "out/\nrec.pkt\n");

    const Outcome run = run_vx(scratch.path(deep), {"rec.pkt", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(scratch.read(deep + "/out/" + Name_1_1).size(), 632u + 4u);
}

TEST(Setup, the_ini_file_is_looked_for_in_the_working_directory)
{
    Scratch scratch;
    scratch.write("rec.pkt", Dt().event(1).samples({1}).packet());
    scratch.write("vxu.ini", "[9A2F]\nStation=HERE\n");
    const Outcome run = run_input(scratch, "rec.pkt", {"-L-"});
    EXPECT_NE(run.out.find(line("INI File", scratch.dir() + "/vxu.ini")), std::string::npos) << run.out;
    EXPECT_TRUE(scratch.exists("2004123101530250__HERE_1_1.sac"));
}

TEST(Setup, the_ini_file_is_looked_for_beside_the_program_named_with_its_path)
{
    Scratch scratch;
    scratch.write("rec.pkt", Dt().event(1).samples({1}).packet());
    scratch.write("bin/vxu.ini", "[9A2F]\nStation=PROG\n");
    RunOptions options;
    options.argv0 = "./bin/vx_sac";
    const Outcome run = run_input(scratch, "rec.pkt", {"-L-"}, options);
    EXPECT_NE(run.out.find(line("INI File", "./bin/vxu.ini")), std::string::npos) << run.out;
    EXPECT_TRUE(scratch.exists("2004123101530250__PROG_1_1.sac"));

    options.argv0 = "nowhere/vx_sac";
    const Outcome without = run_input(scratch, "rec.pkt", {"-L-"}, options);
    EXPECT_NE(without.out.find(line("INI File", "nowhere/vxu.ini" + Not_found)), std::string::npos)
        << without.out;
}

TEST(Setup, a_program_name_without_a_path_is_not_cut_for_the_ini_file)
{
    Scratch scratch;
    scratch.write("rec.pkt", Dt().event(1).samples({1}).packet());
    const Outcome without = run_input(scratch, "rec.pkt", {"-L-"});
    EXPECT_NE(without.out.find(line("INI File", "vx_sacvxu.ini" + Not_found)), std::string::npos)
        << without.out;

    scratch.write("vx_sacvxu.ini", "[9A2F]\nStation=ODD\n");
    const Outcome with = run_input(scratch, "rec.pkt", {"-L-"});
    EXPECT_NE(with.out.find(line("INI File", "vx_sacvxu.ini")), std::string::npos) << with.out;
    EXPECT_TRUE(scratch.exists("2004123101530250___ODD_1_1.sac"));
}

TEST(Setup, the_environment_entry_with_two_equals_signs_names_the_ini_file_before_all_else)
{
    Scratch scratch;
    scratch.write("rec.pkt", Dt().event(1).samples({1}).packet());
    scratch.write("vxu.ini", "[9A2F]\nStation=HERE\n");
    const std::string other = scratch.write("env.ini", "[9A2F]\nStation=ENV\n");
    RunOptions options;
    options.env = {"VXU==" + other};
    const Outcome run = run_input(scratch, "rec.pkt", {"-L-"}, options);
    EXPECT_NE(run.out.find(line("INI File", other)), std::string::npos) << run.out;
    EXPECT_TRUE(scratch.exists("2004123101530250___ENV_1_1.sac"));

    options.env = {"VXU==/nope"};
    const Outcome missing = run_input(scratch, "rec.pkt", {"-L-"}, options);
    EXPECT_NE(missing.out.find(line("INI File", "/nope" + Not_found)), std::string::npos) << missing.out;
    EXPECT_TRUE(scratch.exists("2004123101530250_09A2F_1_1.sac"))
        << "a named but missing file leaves the defaults";

    options.env = {"VXU=" + other};
    const Outcome ordinary = run_input(scratch, "rec.pkt", {"-L-"}, options);
    EXPECT_NE(ordinary.out.find(line("INI File", scratch.dir() + "/vxu.ini")), std::string::npos)
        << ordinary.out;
}

TEST(Setup, a_long_ini_path_keeps_its_note)
{
    Scratch scratch;
    scratch.write("rec.pkt", Fd().packet());
    const std::string path = "/" + std::string(150, 'n');
    RunOptions options;
    options.env = {"VXU==" + path};
    const Outcome run = run_input(scratch, "rec.pkt", {}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find(line("INI File", path + Not_found)), std::string::npos) << run.out;
    EXPECT_NE(scratch.read("rec.vxl").find("\r\n       INI File : " + path + Not_found + "\r\n"),
              std::string::npos);
}

TEST(Setup, an_ini_path_that_is_a_directory_gives_no_entries)
{
    Scratch scratch;
    scratch.write("rec.pkt", Dt().event(1).samples({1}).packet());
    scratch.make_dir("vxu.ini");
    const Outcome run = run_input(scratch, "rec.pkt", {"-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.find("WARNING"), std::string::npos);
    EXPECT_TRUE(scratch.exists("2004123101530250_09A2F_1_1.sac"));
}

TEST(Setup, run_wide_files_are_named_from_the_last_dot_back_to_the_slash_before_it)
{
    Scratch scratch;
    const std::pair<const char*, const char*> inputs[] = {
        {"rec", "rec"},
        {"dir/rec.a.pkt", "rec.a"},
        {"data.set/file", "data"},
        {"a.b/c.d/e", "c"},
        {"./dot", ""},
        {"a/.b", ""},
        {"sub/../dir/rec.x", "rec"},
        {"x.y.z", "x.y"},
    };
    scratch.make_dir("sub");
    for (const auto& [input, base] : inputs) {
        SCOPED_TRACE(input);
        scratch.write(input, Fd().packet());
        scratch.make_dir("out");
        const Outcome run = run_input(scratch, input, {"out", "-Q+"});
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.out.find(line("Log File", std::string("out/") + base + ".vxl")), std::string::npos)
            << run.out;
        EXPECT_NE(run.out.find(line("QCC File", std::string("out/") + base + ".qcc")), std::string::npos);
        EXPECT_TRUE(scratch.exists(std::string("out/") + base + ".vxl"));
        EXPECT_TRUE(scratch.exists(std::string("out/") + base + ".qcc"));
    }
    const Outcome above = run_vx(scratch.path("sub"), {"../rec", "."});
    EXPECT_NE(above.out.find(line("Log File", "./..vxl")), std::string::npos) << above.out;
}

TEST(Setup, an_empty_input_ends_the_run_behind_the_summary)
{
    const Converted run = convert("");
    const Settings s = settings_of(run);
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(same_bytes(run.out, console_banner() + run_summary(s)));
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", log_header(s)}}));
}

TEST(Setup, a_device_without_a_size_is_an_empty_input)
{
    Scratch scratch;
    for (const char* device : {"/dev/zero", "/dev/null"}) {
        const Outcome run = run_input(scratch, device, {".", "-L-"});
        EXPECT_EQ(run.status, 1) << device;
        EXPECT_TRUE(ends_with(run.out, "Press CTRL-BRK or CTRL-C to abort.\n"));
    }
    EXPECT_EQ(names(scratch.tree()), "");
}

TEST(Setup, an_input_of_less_than_a_packet_is_not_empty)
{
    for (const size_t size : {1u, 1023u}) {
        const Converted run = convert(std::string(size, 'E'));
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(same_bytes(run.out, whole_console(settings_of(run), "")));
        EXPECT_EQ(names(run.tree), "rec.vxl\n");
    }
}

TEST(Setup, a_directory_as_input_is_a_read_error_without_a_name)
{
    Scratch scratch;
    scratch.write("recdir/file", "x");
    const Outcome run = run_input(scratch, "recdir", {"-Q+"});
    EXPECT_EQ(run.status, 21);
    EXPECT_TRUE(ends_with(run.out, table_start() + "\nFile read error for '(null)'")) << run.out;
    const std::string log = scratch.read("recdir.vxl");
    EXPECT_TRUE(ends_with(log, "\r\n   Command Line : vx_sac recdir -Q+\r\n\r\n"))
        << "the log's header is complete";
    EXPECT_TRUE(ends_with(scratch.read("recdir.qcc"), " recdir -Q+\r\n\r\n\r\n\r\n"));
}

TEST(Setup, a_missing_input_is_given_up_after_five_seconds_behind_the_summary)
{
    Scratch scratch;
    scratch.make_dir("out");
    const Outcome run = run_input(scratch, "/no-such-recording.pkt", {"out"});
    EXPECT_EQ(run.status, 20);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    EXPECT_TRUE(
        ends_with(run.out, line("QCC File", "out//no-such-recording.qcc") +
                               "    Sample Rate : 100.0000\n    Max Samples : 4294967295\n   Skip Samples : 0"
                               "\n\nPress CTRL-BRK or CTRL-C to abort.\n"
                               "\nFile open error for '/no-such-recording.pkt'"))
        << run.out;
    EXPECT_EQ(names(scratch.tree("out")), "no-such-recording.vxl\n");
    EXPECT_TRUE(ends_with(scratch.read("out/no-such-recording.vxl"),
                          "\r\n   Command Line : vx_sac /no-such-recording.pkt out\r\n\r\n"));
}

TEST(Setup, an_input_that_would_be_emptied_by_its_own_log_is_refused)
{
    const Recording recording = one_event(1, {1, 2});
    Scratch scratch;
    scratch.write("out/rec.vxl", recording);
    const Outcome run = run_input(scratch, "out/rec.vxl", {"out"});
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(ends_with(run.out, "\nFile open error for 'out/rec.vxl'")) << run.out;
    EXPECT_EQ(scratch.read("out/rec.vxl"), recording);

    scratch.write("out/two.qcc", recording);
    const Outcome statistics = run_input(scratch, "out/two.qcc", {"out", "-L-", "-Q+"});
    EXPECT_EQ(statistics.status, 20);
    EXPECT_TRUE(ends_with(statistics.out, "\nFile open error for 'out/two.qcc'")) << statistics.out;
    EXPECT_EQ(scratch.read("out/two.qcc"), recording);

    const Outcome harmless = run_input(scratch, "out/two.qcc", {"out"});
    EXPECT_EQ(harmless.status, 0) << "no statistics file, no danger";
    EXPECT_EQ(scratch.read("out/two.qcc"), recording);
}

TEST(Setup, an_input_that_is_its_own_log_by_another_name_is_refused)
{
    const Recording recording = one_event(1, {1, 2});
    Scratch scratch;
    scratch.write("rec.pkt", recording);
    scratch.make_dir("out");
    ASSERT_EQ(link(scratch.path("rec.pkt").c_str(), scratch.path("out/rec.vxl").c_str()), 0);
    const Outcome hard = run_input(scratch, "rec.pkt", {"out"});
    EXPECT_EQ(hard.status, 20);
    EXPECT_TRUE(ends_with(hard.out, "\nFile open error for 'out/rec.vxl'")) << hard.out;
    EXPECT_EQ(scratch.read("rec.pkt"), recording);

    scratch.make_dir("soft");
    ASSERT_EQ(symlink("../rec.pkt", scratch.path("soft/rec.vxl").c_str()), 0);
    const Outcome soft = run_input(scratch, "rec.pkt", {"soft"});
    EXPECT_EQ(soft.status, 20);
    EXPECT_EQ(scratch.read("rec.pkt"), recording);
}

TEST(Setup, an_input_that_its_units_log_would_be_appended_to_is_refused)
{
    const Recording recording = one_event(1, {1, 2});
    Scratch scratch;
    scratch.write("rec.pkt", recording);
    scratch.make_dir("out");
    ASSERT_EQ(link(scratch.path("rec.pkt").c_str(), scratch.path("out/ID9A2F.vxl").c_str()), 0);
    const Outcome run = run_input(scratch, "rec.pkt", {"out"});
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(ends_with(run.out, "\nFile open error for 'out/ID9A2F.vxl'")) << run.out;
    EXPECT_EQ(scratch.read("rec.pkt"), recording);
}

TEST(Setup, a_run_wide_log_that_is_also_a_units_log_harms_no_trace)
{
    Scratch scratch;
    scratch.write("ID9A2F.x", one_event(1, {1, 2}));
    scratch.make_dir("out");
    const Outcome run = run_input(scratch, "ID9A2F.x", {"out", "-Q+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(samples_of(scratch.read(std::string("out/") + Name_1_1)), (std::vector<float>{1, 2}));
    EXPECT_EQ(names(scratch.tree("out")), std::string(Name_1_1) + "\nID9A2F.qcc\nID9A2F.vxl\n");
}

TEST(Setup, an_input_that_appears_in_time_is_read_but_not_an_ini_file_that_was_missing_at_the_start)
{
    Scratch scratch;
    scratch.make_dir("out");
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        scratch.write("vxu.ini", "[9A2F]\nStation=LATE\n");
        scratch.write("vx_sacvxu.ini", "[9A2F]\nStation=LATE\n");
        scratch.write("whole", Dt().event(1).samples({1}).packet());
        rename(scratch.path("whole").c_str(), scratch.path("rec.pkt").c_str());
    });
    const Outcome run = run_input(scratch, "rec.pkt", {"out", "-L-"});
    late.join();
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(run.seconds, 0.9);
    EXPECT_LT(run.seconds, 4.5);
    EXPECT_EQ(names(scratch.tree("out")), "2004123101530250_09A2F_1_1.sac\n");
}

TEST(Setup, a_pipe_has_no_size_and_is_an_empty_input)
{
    Scratch scratch;
    ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    const int writer = open(scratch.path("pipe").c_str(), O_RDWR); // so that opening it does not wait
    const std::string packet = one_event(1, {1}).substr(0, 1024);
    ASSERT_EQ(write(writer, packet.data(), packet.size()), 1024);
    const Outcome run = run_input(scratch, "pipe", {".", "-L-"});
    close(writer);
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(ends_with(run.out, "Press CTRL-BRK or CTRL-C to abort.\n")) << run.out;
    EXPECT_EQ(names(scratch.tree()), "pipe\n");
}

TEST(Setup, a_working_directory_that_is_gone_needs_an_output_path)
{
    Scratch scratch;
    const std::string input = scratch.write("rec.pkt", one_event(1, {1}));
    scratch.make_dir("out");
    scratch.make_dir("gone");
    RunOptions options;
    options.program = "/bin/sh";
    options.argv0 = "sh";
    const auto run_nowhere = [&](const std::string& output) {
        scratch.make_dir("gone");
        const std::string command =
            "cd gone && rmdir ../gone && exec '" VX_SAC_PROGRAM "' '" + input + "' " + output;
        return run_vx(scratch.dir(), {"-c", command}, options);
    };
    const Outcome refused = run_nowhere("");
    EXPECT_EQ(refused.status, 10);
    EXPECT_TRUE(same_bytes(refused.out, console_banner() + "\nUnable to change to directory '.'"));

    const Outcome run = run_nowhere("'" + scratch.path("out") + "' -L-");
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(names(scratch.tree("out")), std::string(Name_1_1) + "\n");
}
