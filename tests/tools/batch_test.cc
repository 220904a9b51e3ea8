// vx_batch and vx_array from outside: many recordings, each converted as if it were alone, also after an
// interruption and in a results folder that somebody else has written to.
#include "kit/expect.h"
#include "kit/run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

kit::Recording recording(uint16_t unit, std::vector<int32_t> samples)
{
    return kit::Eh().unit(unit).event(12).usual() + kit::Dt().unit(unit).event(12).samples(samples) +
           kit::Et().unit(unit).event(12).usual();
}

std::vector<std::string> split(const std::string& text, char at)
{
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, at);) parts.push_back(part);
    return parts;
}

/// A process that runs; one that has ended and only waits to be asked for its status does not.
bool is_alive(const std::string& pid)
{
    std::ifstream state("/proc/" + pid + "/stat");
    std::string text;
    if (std::getline(state, text)) return text.find(") Z") == text.npos;
    return kill(std::stoi(pid), 0) == 0; // it is gone, or this system has no such files
}

/// What a shell command prints, without its last line end.
std::string said_by(const std::string& command)
{
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    for (int c; pipe && (c = getc(pipe)) != EOF;) text.push_back(static_cast<char>(c));
    EXPECT_EQ(pipe ? pclose(pipe) : -1, 0) << command;
    while (text.ends_with('\n')) text.pop_back();
    return text;
}

size_t lines_in(const std::string& text)
{
    return split(text, '\n').size();
}

/// Columns of the table, by input.
using Columns = std::map<std::string, std::string>;
using Table = std::map<std::string, Columns>;

class Batch : public testing::Test {
protected:
    void SetUp() override
    {
        if (system("python3 -c 'import sys; sys.exit(sys.version_info < (3, 11))' 2>/dev/null") != 0)
            GTEST_SKIP() << "Python 3.11 is not installed (scripts/setup batch)";
    }

    kit::Outcome batch(const kit::Args& args, kit::RunOptions options = {}) const
    {
        options.program = VX_TOOLS_BIN "/vx_batch";
        options.argv0 = "vx_batch";
        options.env.push_back("HOME=" + here.dir());
        return kit::run_vx(here.dir(), args, options);
    }

    kit::Outcome batch_with(const std::string& program, kit::Args args,
                            const kit::RunOptions& options = {}) const
    {
        args.insert(args.begin(), {"--program", program});
        return batch(args, options);
    }

    /// vx_sac on these inputs, into out.
    kit::Outcome convert_all(kit::Args args, const kit::RunOptions& options = {}) const
    {
        args.insert(args.begin(), {"-o", "out"});
        return batch_with(VX_SAC_PROGRAM, args, options);
    }

    /// A refusal in so many words, with nothing changed.
    void expect_refused(const kit::Outcome& run, const std::string& complaint, const kit::Tree& before) const
    {
        EXPECT_EQ(run.status, 2) << complaint;
        EXPECT_THAT(run.err, testing::HasSubstr(complaint));
        for (const std::string& line : split(run.err, '\n')) EXPECT_TRUE(line.starts_with("vx_")) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(here.tree(), before) << complaint;
    }

    /// A program that does `first` and then all that vx_sac does, but for the trial with an empty input.
    std::string program_that(const std::string& first) const
    {
        const std::string path = here.write("wrapped", "#!/bin/sh\nif [ -s \"$1\" ]; then\n" + first +
                                                           "\nfi\nexec '" VX_SAC_PROGRAM "' \"$@\"\n");
        chmod(path.c_str(), 0755);
        return path;
    }

    Table table() const
    {
        Table rows;
        const std::vector<std::string> lines = split(here.read("out/summary.tsv"), '\n');
        if (lines.empty()) return rows;
        const std::vector<std::string> heads = split(lines[0], '\t');
        for (size_t i = 1; i < lines.size(); ++i) {
            const std::vector<std::string> cells = split(lines[i], '\t');
            EXPECT_EQ(cells.size(), heads.size()) << lines[i];
            for (size_t c = 0; c < std::min(cells.size(), heads.size()); ++c)
                rows[cells[0]][heads[c]] = cells[c];
        }
        return rows;
    }

    /// What a finished folder holds against a run by hand under the path that its console text names.
    void expect_as_alone(const Columns& row, const kit::Args& switches = {}) const
    {
        const std::string& folder = row.at("folder");
        const std::string& input = row.at("input");
        kit::Tree found = here.tree(folder);
        const std::string console = found["run.out"];
        EXPECT_EQ(found.count("run.status"), 1U);
        const std::string label = "    Output Path : ";
        const size_t at = console.find(label) + label.size();
        const std::string path = console.substr(at, console.find('\n', at) - at - 1);
        ASSERT_TRUE(path.starts_with("out/work/")) << path;

        here.make_dir(path);
        kit::Args args = {input, path};
        args.insert(args.end(), switches.begin(), switches.end());
        kit::RunOptions options;
        options.argv0 = VX_SAC_PROGRAM;
        const kit::Outcome alone = kit::run_vx(here.dir(), args, options);
        EXPECT_EQ(row.at("status"), std::to_string(alone.status));
        EXPECT_EQ(console, alone.out);
        EXPECT_EQ(found["run.err"], alone.err);
        for (const char* own : {"run.out", "run.err", "run.status"}) found.erase(own);
        EXPECT_TRUE(kit::same_tree(found, here.tree(path))) << input;
        EXPECT_EQ(system(("rm -r '" + here.path(path) + "'").c_str()), 0);
    }

    kit::Scratch here;
};

TEST_F(Batch, each_input_has_a_folder_of_its_own_with_what_a_single_run_leaves)
{
    here.write("in/a/rec.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write("in/b/rec.pkt", recording(0x9A2F, {7, 8}));
    here.write("in/it's \"two\" $(x)`\xff.pkt", recording(0x9A30, {4, 5}));
    here.write("-P9.pkt", recording(0x9A31, {6}));
    here.write("listed in a file.pkt", recording(0x9A32, {-6}));
    here.write("list", "listed in a file.pkt\n\nin/a/rec.pkt\n-P9.pkt");
    const kit::Outcome run =
        batch_with(VX_SAC_PROGRAM, {"-o", "out", "-j2", "in", "-l", "list", "--", "-P1", "-VN"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, testing::HasSubstr("5 of 5 inputs converted to the end, 0 not"));

    const Table rows = table();
    std::vector<std::string> inputs;
    for (const auto& [input, row] : rows) {
        inputs.push_back(input);
        EXPECT_EQ(row.at("traces"), "1");
        EXPECT_EQ(row.at("bytes_read"), "3072");
        EXPECT_EQ(row.at("meaning"), "converted to the end");
        expect_as_alone(row, {"-P1", "-VN"});
    }
    EXPECT_EQ(inputs, (std::vector<std::string>{"./-P9.pkt", "in/a/rec.pkt", "in/b/rec.pkt",
                                                "in/it's \"two\" $(x)`\xff.pkt", "listed in a file.pkt"}));
}

TEST_F(Batch, an_interrupted_run_counts_for_nothing_and_is_done_anew)
{
    here.write("good.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write("late.pkt", recording(0x9A30, {4, 5}));
    const std::string program = program_that("if [ \"$1\" = late.pkt ] && [ ! -e go ]; then\n"
                                             "'" VX_SAC_PROGRAM "' \"$@\"; echo half >>\"$2/ID9A30.vxl\"\n"
                                             "kill -TERM $$; fi");
    const kit::Args args = {"-o", "out", "good.pkt", "late.pkt"};
    EXPECT_EQ(batch_with(program, args).status, 1);
    Table rows = table();
    EXPECT_EQ(rows["good.pkt"]["status"], "0");
    EXPECT_EQ(rows["late.pkt"]["status"], "143");
    EXPECT_EQ(rows["late.pkt"]["meaning"], "ended by signal 15; to be done again");
    EXPECT_TRUE(rows["late.pkt"]["folder"].starts_with("out/work/"));
    const std::string folder = rows["good.pkt"]["folder"];
    const kit::Tree first = here.tree(folder);

    here.write("go", "");
    EXPECT_EQ(batch_with(program, args).status, 0);
    rows = table();
    EXPECT_EQ(rows["good.pkt"]["folder"], folder);
    EXPECT_EQ(here.tree(folder), first) << "what was done is left alone";
    EXPECT_EQ(rows["late.pkt"]["traces"], "1");
    expect_as_alone(rows["late.pkt"]);
    kit::Tree work = here.tree("out/work");
    work.erase("lock"), work.erase("pending");
    EXPECT_EQ(kit::names(work), "") << "nothing is left of the half";
}

TEST_F(Batch, ended_by_a_signal_it_takes_its_jobs_along_and_goes_on_when_started_again)
{
    const kit::Args args = {"-j2", "-o", "out", "a.pkt", "b.pkt", "c.pkt"};
    for (const std::string& input : {args[3], args[4], args[5]})
        here.write(input, recording(0x9A2F, {1, 2, 3}));
    // All but a.pkt get stuck; the second of them ends the batch.
    const std::string program = program_that(
        "[ -e go ] || [ \"$1\" = a.pkt ] || { echo $$ >>stuck\n"
        "[ $(wc -l <stuck) -lt 2 ] || ! mkdir told.$(cat signal) || kill -$(cat signal) $(cat batch)\n"
        "exec sleep 50; }");
    for (const int signal : {SIGTERM, SIGINT}) {
        here.write("stuck", "");
        here.write("signal", std::to_string(signal));
        kit::RunOptions options;
        options.program = "/bin/sh";
        options.env = {"HOME=" + here.dir()};
        kit::Args shell = {"-c", "echo $$ >batch; exec \"$0\" \"$@\"", VX_TOOLS_BIN "/vx_batch", "--program",
                           program};
        shell.insert(shell.end(), args.begin(), args.end());
        const kit::Outcome run = kit::run_vx(here.dir(), shell, options);
        EXPECT_EQ(run.status, 128 + signal);
        EXPECT_EQ(run.err, "vx_batch: interrupted; start it again to continue\n");
        const std::vector<std::string> stuck = split(here.read("stuck"), '\n');
        EXPECT_EQ(stuck.size(), 2U);
        for (const std::string& pid : stuck) EXPECT_FALSE(is_alive(pid)) << pid;
    }
    here.write("go", "");
    EXPECT_EQ(batch_with(program, args).status, 0);
    const Table rows = table();
    EXPECT_EQ(rows.size(), 3U);
    for (const auto& [input, row] : rows) expect_as_alone(row);
}

TEST_F(Batch, failures_are_told_and_stay_until_they_are_to_be_retried)
{
    here.write("good.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write("empty.pkt", "");
    here.write("closed.pkt", recording(0x9A2F, {5}));
    const std::string program = program_that("[ \"$1\" != closed.pkt ] || exit 20");
    const kit::Args all = {"-o", "out", "good.pkt", "empty.pkt", "closed.pkt"};
    EXPECT_EQ(batch_with(program, all).status, 1);
    Table rows = table();
    EXPECT_EQ(rows["empty.pkt"]["status"] + " " + rows["empty.pkt"]["meaning"], "1 the input is empty");
    EXPECT_EQ(rows["closed.pkt"]["status"] + " " + rows["closed.pkt"]["meaning"],
              "20 a file could not be opened");

    here.write("empty.pkt", recording(0x9A30, {4}));
    EXPECT_EQ(batch_with(program, all).status, 1);
    EXPECT_EQ(table()["empty.pkt"]["status"], "1");

    kit::Args again = all;
    again.push_back("--retry-failed");
    EXPECT_EQ(batch_with(program, again).status, 1);
    rows = table();
    EXPECT_EQ(rows["empty.pkt"]["status"], "0");
    EXPECT_EQ(rows["closed.pkt"]["status"], "20");
    expect_as_alone(rows["empty.pkt"]);
}

TEST_F(Batch, an_input_that_changed_after_its_run_is_told)
{
    here.write("rec.pkt", recording(0x9A2F, {1, 2, 3}));
    ASSERT_EQ(batch_with(VX_SAC_PROGRAM, {"-o", "out", "rec.pkt"}).status, 0);
    here.write("rec.pkt", recording(0x9A2F, {1, 2, 3}) + recording(0x9A30, {4}));
    EXPECT_EQ(batch_with(VX_SAC_PROGRAM, {"-o", "out", "rec.pkt"}).status, 1);
    EXPECT_EQ(table()["rec.pkt"]["meaning"], "the input has changed since");
    EXPECT_EQ(batch_with(VX_SAC_PROGRAM, {"-o", "out", "--retry-failed", "rec.pkt"}).status, 0);
    EXPECT_EQ(table()["rec.pkt"]["traces"], "2");
}

TEST_F(Batch, other_switches_or_another_station_file_do_not_come_into_one_output)
{
    here.write("rec.pkt", recording(0x9A2F, {1, 2, 3}));
    ASSERT_EQ(batch_with(VX_SAC_PROGRAM, {"-o", "out", "rec.pkt", "--", "-QY"}).status, 0);
    const kit::Tree before = here.tree("out");
    const kit::Outcome other = batch_with(VX_SAC_PROGRAM, {"-o", "out", "rec.pkt", "--", "-QN"});
    EXPECT_EQ(other.status, 2);
    EXPECT_THAT(other.err, testing::HasSubstr("other switches (-QY)"));
    here.write("vxu.ini", "[9A2F]\nStation=ABC\n");
    const kit::Outcome station = batch_with(VX_SAC_PROGRAM, {"-o", "out", "rec.pkt", "--", "-QY"});
    EXPECT_EQ(station.status, 2);
    EXPECT_THAT(station.err, testing::HasSubstr("another station file"));
    EXPECT_EQ(here.tree("out"), before);
}

TEST_F(Batch, what_makes_no_sense_is_refused_before_anything_is_begun)
{
    here.write("in/rec.pkt", recording(0x9A2F, {1}));
    here.write("full/of", "other things");
    const kit::Tree before = here.tree();
    const std::vector<std::pair<kit::Args, std::string>> cases = {
        {{"in/rec.pkt"}, "no output folder given"},
        {{"-o", "out"}, "no inputs"},
        {{"-o", "out", "-j", "0", "in"}, "-j takes a number"},
        {{"-o", "out", "-x", "in"}, "unknown option '-x'"},
        {{"-o", "out", "in", "--", "-Z"}, "does not take these switches: -Z"},
        {{"-o", "out", "in", "--", "x"}, "'x' is not a switch"},
        {{"-o", "in/out", "in"}, "inside the input folder in"},
        {{"-o", "full", "in"}, "full holds other files"},
        {{"-o", "out", "-l", "nosuch", "in"}, "cannot read the list nosuch"},
        {{"-o", "out", "a\nb"}, "a name with a line end"},
        {{"-o", std::string(120, 'x'), "in"}, "too long"},
    };
    for (const auto& [args, complaint] : cases)
        expect_refused(batch_with(VX_SAC_PROGRAM, args), complaint, before);
    expect_refused(batch_with("nosuch", {"-o", "out", "in"}), "there is no program nosuch", before);
}

TEST_F(Batch, inputs_that_cannot_be_converted_are_told_before_anything_is_begun)
{
    here.write("good.pkt", recording(0x9A2F, {1}));
    here.write("x", recording(0x9A2F, {1}));
    here.write("in/two\nlines", recording(0x9A2F, {1}));
    mkfifo(here.path("fifo").c_str(), 0600);
    const kit::Scratch there; // which no tree is read of
    std::filesystem::create_symlink("circle.pkt", there.path("circle.pkt"));
    here.make_dir("turn/deep");
    std::filesystem::create_directory_symlink("..", here.path("turn/deep/back"));
    const kit::Tree before = here.tree();
    const std::vector<std::pair<kit::Args, std::string>> cases = {
        {{"good.pkt", "absent.pkt"},
         "vx_batch: absent.pkt: No such file or directory\nvx_batch: 1 of 2 inputs"},
        {{"good.pkt", "fifo"}, "fifo: not a regular file"},
        {{there.path("circle.pkt")}, "/circle.pkt: Too many levels of symbolic links"},
        {{"x\n"}, "a name with a line end: 'x\\n'"},
        {{"in"}, "a name with a line end: 'in/two\\nlines'"},
        {{"turn"}, "turn/deep/back leads back to a folder above it"},
        {{"--include", "*.sac", "in"}, "no inputs that --include matches"},
    };
    for (const auto& [args, complaint] : cases) expect_refused(convert_all(args), complaint, before);
}

TEST_F(Batch, a_station_file_that_cannot_be_read_is_told_before_anything_is_begun)
{
    here.write("rec.pkt", recording(0x9A2F, {1}));
    const kit::Scratch there; // which no tree is read of
    std::filesystem::create_symlink("circle", there.path("circle"));
    mkfifo(here.path("vxu.ini").c_str(), 0600);
    kit::Tree before = here.tree();
    expect_refused(convert_all({"rec.pkt"}), "the station file vxu.ini is not a regular file", before);
    kit::RunOptions options;
    options.env = {"VXU==" + there.path("circle")};
    expect_refused(convert_all({"rec.pkt"}, options), "/circle cannot be read: Too many levels", before);
    if (geteuid() == 0) return; // who may read everything
    unlink(here.path("vxu.ini").c_str());
    here.write("vxu.ini", "[9A2F]\n");
    before = here.tree();
    chmod(here.path("vxu.ini").c_str(), 0);
    const kit::Outcome run = convert_all({"rec.pkt"});
    chmod(here.path("vxu.ini").c_str(), 0600);
    expect_refused(run, "the station file vxu.ini cannot be read: Permission denied", before);
}

TEST_F(Batch, a_path_too_long_for_vx_sac_works_by_a_link)
{
    const std::string deep = std::string(90, 'd') + "/" + std::string(60, 'e');
    here.write(deep + "/rec.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write(deep + "/plain", recording(0x9A30, {4, 5}));
    EXPECT_EQ(convert_all({deep, "--", "-P1"}).status, 0);
    const Table rows = table();
    for (const std::string name : {"rec.pkt", "plain"}) {
        const auto& row = rows.at(deep + "/" + name);
        const kit::Tree found = here.tree(row.at("folder"));
        EXPECT_EQ(found.count(name == "plain" ? "plain.vxl" : "rec.vxl"), 1U) << kit::names(found);
        EXPECT_EQ(found.count("in"), 0U) << "the link is gone";
        EXPECT_EQ(row.at("traces"), "1");
    }
    EXPECT_EQ(convert_all({"--dry-run", deep, "--", "-P1"}).out,
              "0 of 2 inputs would be converted, 2 are done\n");
}

TEST_F(Batch, a_long_path_without_room_for_a_link_is_told_before_anything_is_begun)
{
    const std::string name = std::string(120, 'n') + ".pkt";
    here.write("folder/in/" + name, recording(0x9A2F, {1}));
    const kit::Tree before = here.tree();
    expect_refused(convert_all({"folder/../folder/in"}), "leaves no room for a link", before);
    EXPECT_EQ(convert_all({"folder"}).status, 2) << "134 characters";
    std::filesystem::rename(here.path("folder"), here.path("f"));
    EXPECT_EQ(convert_all({"f"}).status, 0) << "129 characters";
}

TEST_F(Batch, what_somebody_wrote_into_run_status_runs_nothing_and_counts_as_not_finished)
{
    here.write("good.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write("odd.pkt", recording(0x9A30, {4, 5}));
    ASSERT_EQ(convert_all({"good.pkt", "odd.pkt"}).status, 0);
    Table rows = table();
    const std::string good = rows["good.pkt"]["folder"], odd = rows["odd.pkt"]["folder"];
    const std::string whole = here.read(odd + "/run.status");
    const auto with = [&](const std::string& line, const std::string& other) {
        std::string text = whole;
        const size_t at = text.find("\n" + line) + 1;
        return text.replace(at, text.find('\n', at) - at, other);
    };
    const std::vector<std::string> plants = {
        with("status", "status\tUID[$(touch PWNED)0]"),
        with("status", "status\t256"),
        with("status", "status\t"),
        with("status", "status\t-0"),
        with("traces", "traces\tUID[$(touch PWNED)0]"),
        with("read", "read\t0; touch PWNED"),
        with("of", "of\t$(touch PWNED)"),
        with("seconds", "seconds\tx"),
        whole.substr(0, whole.find("program_sum")),
        whole.substr(0, whole.find("status")),
        whole.substr(0, whole.size() - 1),
        "",
        std::string("\0\xff\n\t\n", 5),
        std::string(200000, '\n') + whole,
    };
    for (const std::string& planted : plants)
        for (const bool again : {false, true}) {
            here.write(odd + "/run.status", planted);
            here.write(good + "/mark", "");
            kit::Args args = {"good.pkt", "odd.pkt"};
            if (again) args.push_back("--retry-failed");
            const kit::Outcome run = convert_all(args);
            EXPECT_EQ(run.status, 0) << planted.substr(0, 400);
            EXPECT_EQ(run.err, "");
            EXPECT_FALSE(here.exists("PWNED")) << planted;
            EXPECT_TRUE(here.exists(good + "/mark")) << "left alone";
            EXPECT_EQ(lines_in(here.read(odd + "/run.status")), lines_in(whole)) << "done anew";
        }
    rows = table();
    unlink(here.path(good + "/mark").c_str());
    for (const auto& [input, row] : rows) expect_as_alone(row);
}

TEST_F(Batch, a_pipe_in_the_place_of_a_status_is_not_waited_for)
{
    here.write("rec.pkt", recording(0x9A2F, {1, 2, 3}));
    ASSERT_EQ(convert_all({"rec.pkt"}).status, 0);
    const std::string path = here.path(table()["rec.pkt"]["folder"] + "/run.status");
    unlink(path.c_str());
    mkfifo(path.c_str(), 0600);
    kit::RunOptions options;
    options.timeout = 20;
    EXPECT_EQ(convert_all({"rec.pkt"}, options).status, 0);
    EXPECT_EQ(table()["rec.pkt"]["status"], "0");
}

TEST_F(Batch, goes_on_in_a_folder_that_version_1_0_0_began)
{
    here.write("in/a rec.pkt", recording(0x9A2F, {1, 2, 3}));
    here.write("in/new.pkt", recording(0x9A30, {4, 5}));
    const std::string key =
        said_by("printf %s '" + here.path("in/a rec.pkt") + "' | sha256sum | cut -c 1-16");
    const std::string folder = "out/a_rec.pkt-" + key;
    const std::string sum = said_by("sha256sum <'" VX_SAC_PROGRAM "' | cut -c 1-64");
    const std::string status =
        "input\tin/a rec.pkt\nof\t" + said_by("stat -c '%s %.9Y' '" + here.path("in/a rec.pkt") + "'") +
        "\nstatus\t0\ntraces\t7\nread\t3072\nwritten\t9\nseconds\t0.010\nprogram_sum\t" + sum + "\n";
    here.write(folder + "/run.status", status);
    here.write("out/settings", "program\t" VX_SAC_PROGRAM "\nprogram_sum\t" + sum +
                                   "\nstation_sum\tnone\nswitch\t-P1\nswitch\t-VN\n");
    here.write("out/work/lock", "");
    here.write("out/work/" + key + ".123/half.sac", "");
    const kit::Outcome run = convert_all({"in", "--", "-P1", "-VN"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    Table rows = table();
    EXPECT_EQ(rows["in/a rec.pkt"]["folder"], folder);
    EXPECT_EQ(rows["in/a rec.pkt"]["traces"], "7") << "left as it is";
    EXPECT_EQ(here.read(folder + "/run.status"), status);
    EXPECT_EQ(rows["in/new.pkt"]["traces"], "1");
}

TEST_F(Batch, the_table_keeps_a_row_for_every_run_folder)
{
    for (const std::string name : {"a.pkt", "b\tb.pkt", "c.pkt"}) here.write(name, recording(0x9A2F, {1, 2}));
    ASSERT_EQ(convert_all({"a.pkt", "b\tb.pkt", "c.pkt"}).status, 0);
    const Table before = table();
    const kit::Outcome run = convert_all({"a.pkt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out,
                testing::HasSubstr("1 of 1 inputs converted to the end, 0 not; the table, with 2 earlier "
                                   "runs, is out/summary.tsv"));
    EXPECT_EQ(table(), before);

    here.write("d.pkt", recording(0x9A2F, {1, 2}));
    const std::string killed = program_that("[ \"$1\" != d.pkt ] || kill -KILL $$");
    EXPECT_EQ(batch_with(killed, {"-o", "out", "d.pkt"}).status, 1);
    EXPECT_EQ(batch_with(killed, {"-o", "out", "a.pkt"}).status, 0);
    EXPECT_EQ(table().at("d.pkt").at("meaning"), "ended by signal 9; to be done again");
    EXPECT_EQ(convert_all({"d.pkt"}).status, 0);
    EXPECT_EQ(table().size(), 4U);

    here.write(before.at("c.pkt").at("folder") + "/run.status", "input\t$(touch PWNED)\n");
    here.write("b\tb.pkt", recording(0x9A2F, {1, 2}) + recording(0x9A30, {1}));
    EXPECT_EQ(convert_all({"a.pkt"}).status, 0) << "others do not count";
    const Table after = table();
    EXPECT_EQ(after.at("-").at("folder"), before.at("c.pkt").at("folder"));
    EXPECT_EQ(after.at("-").at("meaning"), "not finished; to be done again");
    EXPECT_EQ(after.at("b\\tb.pkt").at("meaning"), "the input has changed since");
    EXPECT_EQ(after.size(), 4U);
}

TEST_F(Batch, include_lets_only_some_files_of_folders_in)
{
    for (const std::string name : {"in/a.pkt", "in/deep/b.PKT", "in/notes.pdf", "in/.pkt/c", "other"})
        here.write(name, recording(0x9A2F, {1}));
    EXPECT_EQ(convert_all({"--include", "*.pkt", "in", "--include=*.PKT", "other"}).status, 0);
    std::vector<std::string> inputs;
    for (const auto& [input, row] : table()) inputs.push_back(input);
    EXPECT_EQ(inputs, (std::vector<std::string>{"in/a.pkt", "in/deep/b.PKT", "other"}));
}

TEST_F(Batch, a_dry_run_tells_what_is_to_be_done_and_changes_nothing)
{
    for (const std::string name : {"a.pkt", "b.pkt", "c.pkt"}) here.write(name, recording(0x9A2F, {1}));
    kit::Tree before = here.tree();
    kit::Outcome run = convert_all({"--dry-run", "a.pkt", "b.pkt"});
    EXPECT_EQ(run.out, "a.pkt\nb.pkt\n2 of 2 inputs would be converted, 0 are done\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(here.tree(), before);
    ASSERT_EQ(convert_all({"b.pkt"}).status, 0);
    before = here.tree();
    EXPECT_EQ(convert_all({"--dry-run", "a.pkt", "b.pkt", "c.pkt"}).out,
              "a.pkt\nc.pkt\n2 of 3 inputs would be converted, 1 are done\n");
    EXPECT_EQ(convert_all({"--dry-run", "a.pkt", "--", "-P1"}).status, 2) << "other switches";
    EXPECT_EQ(here.tree(), before);
}

TEST_F(Batch, quiet_tells_only_what_was_not_converted)
{
    here.write("good.pkt", recording(0x9A2F, {1}));
    here.write("empty.pkt", "");
    kit::Outcome run = convert_all({"--quiet", "good.pkt"});
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
    run = convert_all({"--quiet", "good.pkt", "empty.pkt"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(lines_in(run.out), 2U) << run.out;
    EXPECT_THAT(run.out, testing::HasSubstr("  empty.pkt: the input is empty\n1 of 2 inputs converted"));
    EXPECT_EQ(table().size(), 2U);
}

TEST_F(Batch, only_one_works_in_a_folder_at_a_time)
{
    here.write("rec.pkt", recording(0x9A2F, {1}));
    ASSERT_EQ(convert_all({"rec.pkt"}).status, 0);
    const int lock = open(here.path("out/work/lock").c_str(), O_RDWR);
    ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
    expect_refused(convert_all({"rec.pkt"}), "another vx_batch is at work in out", here.tree());
    close(lock);
    EXPECT_EQ(convert_all({"rec.pkt"}).status, 0);
}

TEST_F(Batch, what_does_not_heed_the_signal_is_killed)
{
    here.write("rec.pkt", recording(0x9A2F, {1}));
    const std::string program = program_that(
        "trap '' TERM; echo $$ >stuck; while :; do sleep 1; done & echo $! >deeper; wait; sleep 50");
    kit::RunOptions options;
    options.signal = SIGTERM;
    options.signal_after = 3;
    const kit::Outcome run = batch_with(program, {"-o", "out", "rec.pkt"}, options);
    EXPECT_EQ(run.status, 143);
    EXPECT_EQ(run.err, "vx_batch: interrupted; start it again to continue\n");
    for (const char* file : {"stuck", "deeper"}) EXPECT_FALSE(is_alive(split(here.read(file), '\n').at(0)));
    EXPECT_EQ(convert_all({"rec.pkt"}).status, 0);
}

TEST_F(Batch, what_cannot_be_written_is_told_in_a_sentence)
{
    here.write("rec.pkt", recording(0x9A2F, {1, 2, 3}));
    kit::RunOptions options;
    options.limits = {{RLIMIT_FSIZE, 100}};
    const kit::Outcome run = convert_all({"rec.pkt"}, options);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "vx_batch: out/settings: File too large\n");

    kit::RunOptions shell;
    shell.program = "/bin/sh";
    const kit::Outcome gone =
        kit::run_vx(here.dir(),
                    {"-c", "\"$0\" \"$@\" | true; test -s out/summary.tsv", VX_TOOLS_BIN "/vx_batch",
                     "--program", VX_SAC_PROGRAM, "-o", "out", "rec.pkt"},
                    shell);
    EXPECT_EQ(gone.status, 0);
    EXPECT_EQ(gone.err, "") << "who does not want to read the table is left alone";
}

TEST_F(Batch, a_table_that_cannot_be_written_is_shown_all_the_same)
{
    kit::Args inputs;
    for (const std::string n : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14"})
        inputs.push_back("recording" + n + ".pkt");
    for (const std::string& input : inputs) here.write(input, recording(0x9A2F, {1}));
    ASSERT_EQ(convert_all(inputs).status, 0);
    const std::string before = here.read("out/summary.tsv");
    kit::RunOptions options;
    options.limits = {{RLIMIT_FSIZE, 1000}};
    ASSERT_GT(before.size(), 1000U);
    const kit::Outcome run = convert_all(inputs, options);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_batch: the table cannot be written: out/summary.tsv: File too large\n");
    EXPECT_EQ(lines_in(run.out), 16U);
    EXPECT_THAT(run.out,
                testing::HasSubstr("14 of 14 inputs converted to the end, 0 not; the table is not written"));
    EXPECT_EQ(here.read("out/summary.tsv"), before);
}

TEST_F(Batch, help_and_version_are_told)
{
    EXPECT_EQ(batch({"--version"}).out, "vx_batch " VX_VERSION "\n");
    for (const char* asked : {"-h", "--help"}) {
        const kit::Outcome help = batch({asked});
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.out.starts_with("Usage: vx_batch "));
    }
}

/// vx_array with a Slurm that runs each job at once, from a copy of its file, as Slurm does.
class Array : public Batch {
protected:
    void SetUp() override
    {
        Batch::SetUp();
        program_in_path("scontrol", "echo 'MaxArraySize            = 3'");
        program_in_path("sbatch",
                        "tasks=\n"
                        "while case $1 in --*) : ;; *) false ;; esac; do\n"
                        "    case $1 in --array=0-*) tasks=${1#--array=0-} ;; esac\n"
                        "    echo \"$1\" >>options; shift\n"
                        "done\n"
                        "cp \"$1\" job; chmod +x job; shift\n"
                        "[ ! -e before ] || . ./before\n"
                        "if [ -n \"$tasks\" ]; then\n"
                        "    for n in $(seq 0 ${tasks%%\"%\"*}); do\n"
                        "        SLURM_ARRAY_TASK_ID=$n ./job \"$@\" >>tasks.log 2>&1; echo $? >>statuses\n"
                        "    done; echo '17;cluster'\n"
                        "else ./job \"$@\" >summary.log 2>&1; echo 18; fi");
    }

    void program_in_path(const std::string& name, const std::string& text) const
    {
        chmod(here.write("bin/" + name, "#!/bin/sh\n" + text + "\n").c_str(), 0755);
    }

    kit::Outcome array_with_path(const std::string& path, const kit::Args& args) const
    {
        kit::Args words = {"PATH=" + path, VX_TOOLS_BIN "/vx_array"};
        words.insert(words.end(), args.begin(), args.end());
        kit::RunOptions options;
        options.program = "/usr/bin/env";
        return kit::run_vx(here.dir(), words, options);
    }

    kit::Outcome array(kit::Args args) const
    {
        args.insert(args.begin(), {"--program", VX_SAC_PROGRAM});
        return array_with_path(here.path("bin") + ":" + getenv("PATH"), args);
    }

    /// Seven good inputs and an empty one, named in the file list.
    void write_inputs() const
    {
        for (const std::string n : {"1", "2", "3", "4", "5", "6", "7"})
            here.write("in/rec " + n + ".pkt", recording(0x9A2F, {1, 2, 3}));
        here.write("empty.pkt", "");
        here.write("list", "in\nempty.pkt\n");
    }
};

TEST_F(Array, converts_as_vx_batch_does)
{
    write_inputs();
    const kit::Outcome run = array({"-t", "2", "-s", "--comment=x y", "list", "out", "--", "-P1", "-VN"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "array 17: 8 inputs in 3 tasks of 3\nsummary 18: out/slurm/18.log\n");
    EXPECT_EQ(here.read("statuses"), "0\n0\n1\n") << "the empty one is in the last task";
    const std::string options = here.read("options");
    for (const std::string option : {"--array=0-2%2", "--comment=x y", "--dependency=afterany:17"})
        EXPECT_THAT(options, testing::HasSubstr(option + "\n"));
    const Table rows = table();
    EXPECT_EQ(rows.size(), 8U);
    EXPECT_EQ(rows.at("empty.pkt").at("status"), "1");
    expect_as_alone(rows.at("in/rec 3.pkt"), {"-P1", "-VN"});

    const kit::Outcome again = array({"list", "out", "--", "-P1", "-VN"});
    EXPECT_EQ(again.status, 1) << "the empty one";
    EXPECT_THAT(again.out, testing::HasSubstr("7 of 8 inputs converted to the end"));
    EXPECT_EQ(here.read("statuses"), "0\n0\n1\n") << "nothing was submitted";
}

TEST_F(Array, what_somebody_writes_into_the_folder_while_jobs_wait_is_not_run)
{
    write_inputs();
    const std::string evil = here.write("evil", "#!/bin/sh\ntouch PWNED\n");
    chmod(evil.c_str(), 0755);
    here.write("before", "sed -i 's|^program\t.*|program\t" + evil +
                             "|' out/settings\n"
                             "sed -i '1s|^[^\t]*|../../stray|' out/work/jobs.*/pending\n");
    const kit::Outcome run = array({"list", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(here.exists("PWNED"));
    EXPECT_EQ(here.read("statuses"), "2\n0\n1\n") << "a task whose lines are not as they were does nothing";
    EXPECT_THAT(here.read("tasks.log"), testing::HasSubstr("was changed after vx_array wrote it"));
    EXPECT_THAT(here.read("summary.log"), testing::HasSubstr("4 of 8 inputs converted to the end"));
}

TEST_F(Array, a_dry_run_submits_nothing)
{
    write_inputs();
    const kit::Tree before = here.tree();
    const kit::Outcome run = array({"--dry-run", "--include", "*3.pkt", "list", "out"});
    EXPECT_EQ(run.out,
              "in/rec 3.pkt\nempty.pkt\n2 of 2 inputs would be converted, 0 are done\n2 tasks of 1\n");
    EXPECT_EQ(here.tree(), before);
}

TEST_F(Array, quiet_says_nothing_of_jobs)
{
    write_inputs();
    const kit::Outcome run = array({"--quiet", "list", "out"});
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(table().size(), 8U);
}

TEST_F(Array, mistakes_are_told_in_its_own_name)
{
    write_inputs();
    kit::Tree before = here.tree();
    const std::vector<std::pair<kit::Args, std::string>> cases = {
        {{"list"}, "vx_array: a list and an output folder are needed"},
        {{"-c", "0", "list", "out"}, "vx_array: -c takes a number from 1"},
        {{"-x", "list", "out"}, "vx_array: unknown option '-x' (see vx_array --help"},
        {{"list", "out", "--", "-Z"}, "vx_array: vx_sac does not take these switches: -Z"},
        {{"nosuch", "out"}, "vx_array: cannot read the list nosuch: No such file or directory"},
        {{"list", "o\\ut"}, "vx_array: sbatch takes no backslash in the output path"},
    };
    for (const auto& [args, complaint] : cases) expect_refused(array(args), complaint, before);

    const std::string python = said_by("python3 -c 'import sys; print(sys.executable)'");
    here.make_dir("bare");
    std::filesystem::create_symlink(python, here.path("bare/python3"));
    before = here.tree();
    expect_refused(array_with_path(here.path("bare"), {"list", "out"}),
                   "vx_array: sbatch is needed and not installed (on Debian: apt-get install slurm-client)",
                   before);
}

TEST_F(Array, help_and_version_are_told)
{
    EXPECT_EQ(array({"--version"}).out, "vx_array " VX_VERSION "\n");
    EXPECT_TRUE(array({"-h"}).out.starts_with("Usage: vx_array "));
}

} // namespace
