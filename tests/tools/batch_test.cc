// vx_batch from outside: many recordings, each converted as if it were alone, also after an interruption.
#include "kit/expect.h"
#include "kit/run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <sys/stat.h>
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

/// Columns of the table, by input.
using Columns = std::map<std::string, std::string>;
using Table = std::map<std::string, Columns>;

class Batch : public testing::Test {
protected:
    void SetUp() override
    {
        if (system("parallel --version 2>/dev/null | grep -q ^GNU && perl -MDigest::SHA -e 1") != 0)
            GTEST_SKIP() << "GNU parallel is not installed (scripts/setup batch)";
    }

    kit::Outcome batch(kit::Args args) const
    {
        kit::RunOptions options;
        options.program = VX_TOOLS_BIN "/vx_batch";
        options.argv0 = "vx_batch";
        options.env = {"HOME=" + here.dir()};
        return run_vx(here.dir(), args, options);
    }

    kit::Outcome batch_with(const std::string& program, kit::Args args) const
    {
        args.insert(args.begin(), {"--program", program});
        return batch(args);
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
        const kit::Outcome alone = run_vx(here.dir(), args, options);
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
    const std::string program = program_that("[ -e go ] || [ \"$1\" = a.pkt ] || { echo $$ >>stuck\n"
                                             "[ $(wc -l <stuck) -lt 2 ] || kill -$(cat signal) $(cat batch)\n"
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
        const kit::Outcome run = run_vx(here.dir(), shell, options);
        EXPECT_EQ(run.status, 128 + signal) << run.err;
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
    const kit::Args args = {"-o", "out", "good.pkt", "empty.pkt", "absent.pkt"};
    EXPECT_EQ(batch_with(VX_SAC_PROGRAM, args).status, 1);
    Table rows = table();
    EXPECT_EQ(rows["empty.pkt"]["status"] + " " + rows["empty.pkt"]["meaning"], "1 the input is empty");
    EXPECT_EQ(rows["absent.pkt"]["status"] + " " + rows["absent.pkt"]["meaning"],
              "20 a file could not be opened");

    here.write("empty.pkt", recording(0x9A30, {4}));
    EXPECT_EQ(batch_with(VX_SAC_PROGRAM, args).status, 1);
    EXPECT_EQ(table()["empty.pkt"]["status"], "1");

    kit::Args again = args;
    again.push_back("--retry-failed");
    EXPECT_EQ(batch_with(VX_SAC_PROGRAM, again).status, 1);
    rows = table();
    EXPECT_EQ(rows["empty.pkt"]["status"], "0");
    EXPECT_EQ(rows["absent.pkt"]["status"], "20");
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
        {{"in/rec.pkt"}, "where to?"},
        {{"-o", "out"}, "no inputs"},
        {{"-o", "out", "-j", "0", "in"}, "-j takes a number"},
        {{"-o", "out", "-x", "in"}, "unknown option '-x'"},
        {{"-o", "out", "in", "--", "-Z"}, "does not take these switches: -Z"},
        {{"-o", "out", "in", "--", "x"}, "'x' is no switch"},
        {{"-o", "in/out", "in"}, "inside the input folder in"},
        {{"-o", "full", "in"}, "full holds other files"},
        {{"-o", "out", "-l", "nosuch", "in"}, "cannot read the list nosuch"},
        {{"-o", "out", "a\nb"}, "a name with a line end"},
        {{"-o", std::string(120, 'x'), "in"}, "too long"},
    };
    for (const auto& [args, complaint] : cases) {
        const kit::Outcome run = batch_with(VX_SAC_PROGRAM, args);
        EXPECT_EQ(run.status, 2) << complaint;
        EXPECT_THAT(run.err, testing::HasSubstr(complaint));
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(here.tree(), before) << complaint;
    }
    EXPECT_EQ(batch_with("nosuch", {"-o", "out", "in"}).status, 2);
}

TEST_F(Batch, help_and_version_are_told)
{
    EXPECT_EQ(batch({"--version"}).out, "vx_batch " VX_VERSION "\n");
    const kit::Outcome help = batch({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.starts_with("Usage: vx_batch "));
}

} // namespace
