// How a run ends: status, last words, and what has reached the files by then.
#include "runs/common.h"

#include <csignal>
#include <filesystem>

using namespace kit;
using namespace runs;

namespace {

const char* const Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// Plain name and those with a letter up to `last` present in out/ before the run.
void occupy(const Scratch& scratch, char last)
{
    scratch.write(std::string("out/") + Name_1_1, "taken");
    for (const char* c = Letters; *c && *c <= last; ++c) {
        std::string name = Name_1_1;
        name[24] = *c;
        scratch.write("out/" + name, "taken");
    }
}

} // namespace

TEST(Endings, a_recording_read_to_its_end_is_status_0)
{
    const Converted run = convert(one_event(12, {5, -3, 4}));
    const Settings s = settings_of(run);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_bytes(run.out, whole_console(s, progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") +
                                                         progress_dt(2, "9A2F", 12, 1, 1) +
                                                         progress_et(3, "9A2F", 12, 1, "EVT", "100.0000"))));
    const std::string eh = head_line(event_line("EH", "0012", 0)),
                      et = head_line(event_line("ET", "0012", 2));
    EXPECT_TRUE(
        same_tree(run.tree, {{"rec.vxl", log_header(s) + eh + head_line(data_line("0012", 3, 1)) + et},
                             {"ID9A2F.vxl", log_header(s) + eh + usual_dump() + et + usual_dump()},
                             {Name_1_1, sac_file(Sac().rate(100).stats(-3, 5, 2), {5, -3, 4})}}));
}

TEST(Endings, twenty_five_taken_names_are_status_23_and_nothing_is_created)
{
    Scratch scratch;
    occupy(scratch, 'X');
    scratch.write("rec.pkt", one_event(12, {1, 2}));
    const Tree before = scratch.tree("out");
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(run.status, 23);
    EXPECT_TRUE(ends_with(run.out, "\n\nERROR!!!!!\n   Unable to create an unique filename.")) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_tree(scratch.tree("out"), before));
}

TEST(Endings, the_last_name_tried_carries_an_X)
{
    Scratch scratch;
    occupy(scratch, 'W');
    scratch.write("rec.pkt", one_event(12, {1, 2}));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read("out/2004123101530250_STA01_1X1.sac")),
                           sac_file(Sac().rate(100).stats(1, 2, 1.5f), {1, 2})));
}

TEST(Endings, a_fatal_stop_leaves_all_samples_so_far_behind_provisional_headers_and_complete_logs)
{
    Scratch scratch;
    occupy(scratch, 'X');
    const Recording before = Eh().event(12).usual() + Dt().event(12).channel(4).samples({10, 20, 30}) +
                             Dt().event(12).channel(4).ms(280).samples({40, 50}) + Sh("STATE");
    scratch.write("rec.pkt", before + Dt().event(12).channel(0).samples({1}));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-D+", "-Q+"});
    EXPECT_EQ(run.status, 23);

    const std::string trace = scratch.read("out/2004123101530250_STA01_1_5.sac");
    Sac provisional;
    provisional.rate(100).kcmpnm = "9A2F-1-5";
    EXPECT_TRUE(
        same_bytes(mask_run_date(trace), sac_header(provisional) + sac_samples({10, 20, 30, 40, 50})));

    HeadLine second = data_line("0012", 2, 2);
    second.channel = "5", second.time = "04:123:10:15:30.280";
    HeadLine first = data_line("0012", 3, 1);
    first.channel = "5";
    HeadLine state = plain_line("SH", 3);
    state.length = "0029";
    const std::string lines[] = {head_line(event_line("EH", "0012", 0)), head_line(first), head_line(second),
                                 head_line(state), head_line(data_line("0012", 1, 4))};
    EXPECT_TRUE(ends_with(scratch.read("out/rec.vxl"),
                          "\r\n\r\n" + lines[0] + lines[1] + lines[2] + lines[3] + lines[4]));
    EXPECT_TRUE(ends_with(scratch.read("out/ID9A2F.vxl"), "\r\n\r\n" + lines[0] + usual_dump() + lines[1] +
                                                              lines[2] + lines[3] + "     STATE\r\n\r\n" +
                                                              lines[4]))
        << scratch.read("out/ID9A2F.vxl");
    EXPECT_TRUE(ends_with(scratch.read("out/rec.qcc"), " -D+ -Q+\r\n\r\n\r\n\r\n"));
    EXPECT_TRUE(ends_with(scratch.read("out/ID9A2F.qcc"), " -D+ -Q+\r\n\r\n\r\n\r\n"));
}

TEST(Endings, a_units_log_that_cannot_be_opened_is_status_20_after_five_seconds)
{
    Scratch scratch;
    scratch.make_dir("out/ID1234.vxl");
    scratch.write("rec.pkt", one_event(12, {1, 2}) + Fd().unit(0x1234) + one_event(13, {3}));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out"});
    EXPECT_EQ(run.status, 20);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    EXPECT_TRUE(ends_with(run.out, progress_et(3, "9A2F", 12, 1, "EVT", "100.0000") +
                                       "\nFile open error for 'out/ID1234.vxl'"))
        << run.out;
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(std::string("out/") + Name_1_1)),
                           sac_file(Sac().rate(100).stats(1, 2, 1.5f), {1, 2})));
    EXPECT_TRUE(ends_with(scratch.read("out/rec.vxl"), head_line(plain_line("FD", 3, "1234"))));
}

TEST(Endings, a_trace_that_cannot_be_opened_is_status_20_with_its_own_text)
{
    const Converted run =
        convert(Eh().event(1).usual().station("A/B") + Dt().event(1).samples({1, 2}), {"-L-"});
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(
        ends_with(run.out, "\n\nERROR!!!!\n   unable to open out/2004123101530250_A/B___1_1.sac for output."))
        << run.out;
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_EQ(names(run.tree), "");
}

TEST(Endings, an_interrupt_ends_the_run_without_a_word)
{
    Scratch scratch;
    RunOptions options;
    options.signal_after = 1;
    options.signal = SIGINT;
    const Outcome run = run_vx(scratch.dir(), {"missing.pkt", "-L-"}, options); // waits for its input
    EXPECT_EQ(run.status, -1);
    EXPECT_EQ(run.signal, SIGINT);
    EXPECT_EQ(run.out.find("aborted"), std::string::npos);
    EXPECT_LT(run.seconds, 4);
}

TEST(Endings, ordinary_runs_write_nothing_to_standard_error)
{
    const Recording recording =
        one_event(12, {1, 2}) + "XX" + std::string(1022, ' ') + Sh("x") + Dt().event(4).samples({1});
    const Converted run = convert(recording, {"-Q+", "-D+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
}

TEST(Endings, a_run_without_standard_input_ends_alike)
{
    ConvertOptions options;
    options.run.close_stdin = true;
    const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, sac_file(Sac().rate(100).stats(-3, 5, 2), {5, -3, 4})}}));
}

TEST(Endings, a_trace_that_cannot_be_opened_again_keeps_its_first_header_and_is_status_22)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(12, {5, -3, 4}));
    scratch.make_dir("out");
    for (const char* below : {"", "out"}) {
        std::filesystem::permissions(scratch.path(below), std::filesystem::perms::all);
    }
    std::filesystem::copy_file(VX_SAC_PROGRAM, scratch.path("vx_sac"));
    RunOptions options;
    options.program = scratch.path("vx_sac");
    options.as_nobody = true; // who owns everything may write everything
    options.mask = 0222;
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, options);
    EXPECT_EQ(run.status, 22);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_EQ(run.err, "\r\nPress ENTER/RETURN to continue.");
    const size_t at = run.out.find("\n!!!Could not re-open 'out/" + std::string(Name_1_1) +
                                   "' to update header!!!\nChan structure (9A2F):\n   Ptrs chan prv = ");
    EXPECT_NE(at, run.out.npos) << run.out;
    EXPECT_NE(run.out.find("\n             cnt =  3\n", at), run.out.npos) << run.out;
    EXPECT_TRUE(ends_with(run.out, "\n             dip =  0\n\r\n")) << run.out;
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(std::string("out/") + Name_1_1)),
                           sac_header(Sac().rate(100)) + sac_samples({5, -3, 4})));
}

TEST(Endings, a_console_that_nobody_reads_any_more_does_not_end_the_run)
{
    Scratch scratch;
    Recording recording;
    for (int i = 0; i < 5000; ++i) recording += Fd(); // their lines are more than a pipe holds
    scratch.write("rec.pkt", recording + one_event(12, {5, -3, 4}));
    RunOptions options;
    options.program = "/bin/sh";
    options.argv0 = "sh";
    signal(SIGPIPE, SIG_DFL); // also where the tests are run by something that ignores it
    const Outcome run =
        run_vx(scratch.dir(),
               {"-c", "('" VX_SAC_PROGRAM "' rec.pkt -L-; echo $? > status) | head -c 10 > first"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(scratch.read("first"), console_banner().substr(0, 10));
    EXPECT_EQ(scratch.read("status"), "0\n");
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(Name_1_1)),
                           sac_file(Sac().rate(100).stats(-3, 5, 2), {5, -3, 4})));
}
