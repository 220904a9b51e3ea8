// Runs that something from outside disturbs while they stand still: ended, or with their files exchanged
// under them. What is kept, what is told, and what is left alone.
#include "runs/held_console.h"
#include "runs/traces.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace kit;
using namespace runs;

namespace {

const std::string Trace = std::string("out/") + Name_1_1;
const std::string Second_trace = "out/2004123101530250_STA01_1A1.sac";

void sleep_ms(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

/// Packets of 250 samples each for one channel of event 12; neither header nor trailer.
Recording packets_of(int packets, unsigned channel = 0, int first = 1)
{
    Recording recording;
    for (int i = 0; i < packets; ++i)
        recording += Dt().event(12).channel(channel).samples(counting(first, first + 249));
    return recording;
}

std::vector<int32_t> samples_of_packets(int packets, int first = 1)
{
    std::vector<int32_t> all;
    for (int i = 0; i < packets; ++i)
        for (const int32_t x : counting(first, first + 249)) all.push_back(x);
    return all;
}

constexpr int Long =
    2000; ///< packets: their lines are more than two console buffers, their samples two megabytes
constexpr size_t Long_size = 632 + 4 * 250 * size_t{Long}; ///< of their trace

/// An event whose trace is written in many pieces.
Recording long_disturbed_event()
{
    return in_event(packets_of(Long));
}

/// A run that stands still in its console; `meanwhile` happens then, and the run goes on.
struct Disturbed {
    Outcome run;
    std::string console;
};
Disturbed disturb(const Scratch& scratch, const Args& args, const std::function<void(pid_t run)>& meanwhile,
                  RunOptions options = {})
{
    HeldConsole console;
    Disturbed d;
    options.stdout_fd = console.for_the_run();
    options.meanwhile = [&](pid_t run) {
        EXPECT_TRUE(console.take_up_to(1)) << "the run ended before it could be disturbed";
        meanwhile(run);
        d.console = console.take_all();
    };
    d.run = run_vx(scratch.dir(), args, options);
    return d;
}

std::string cannot_reopen(const std::string& trace)
{
    return "\n!!!Could not re-open '" + trace + "' to update header!!!\nChan structure (9A2F):";
}

constexpr const char* Prompt = "\r\nPress ENTER/RETURN to continue.";

/// The run told that a trace could not get its final header, and waited for nothing.
void expect_header_refused_at_once(const Disturbed& d)
{
    EXPECT_EQ(d.run.status, 22);
    EXPECT_EQ(d.run.err, Prompt);
    EXPECT_EQ(count(d.console, cannot_reopen(Trace)), 1U) << d.console.substr(d.console.size() / 2);
    EXPECT_LT(d.run.seconds, 4);
}

/// A file that is as long as the trace will be, and no trace.
std::string foreign_text(size_t size = Long_size)
{
    return std::string(size, 'F');
}

/// A run with a umask that takes rights from the owner of a new file. Who owns everything may do everything,
/// so root's rights are given up.
Outcome run_with_umask(const Scratch& scratch, int mask, const Args& args, RunOptions options = {})
{
    scratch.make_dir("out");
    for (const char* below : {"", "out"})
        std::filesystem::permissions(scratch.path(below), std::filesystem::perms::all);
    std::filesystem::copy_file(VX_SAC_PROGRAM, scratch.path("vx_sac"));
    options.program = scratch.path("vx_sac");
    options.as_nobody = true;
    options.mask = mask;
    return run_vx(scratch.dir(), args, options);
}

/// The same where it cannot open its traces again.
Outcome run_without_reopening(const Scratch& scratch, const Args& args, const RunOptions& options)
{
    return run_with_umask(scratch, 0222, args, options);
}

/// Few enough that two files can be open at a time.
RunOptions two_files_at_a_time()
{
    RunOptions options;
    options.limits = {{RLIMIT_NOFILE, 20}};
    return options;
}

/// Three traces in turn: with two files at a time, each is opened again for every packet.
Recording three_traces_in_turn(int first = 1)
{
    Recording middle;
    for (int i = 0; i < 700; ++i)
        for (unsigned channel = 0; channel < 3; ++channel) middle += packets_of(1, channel, first);
    return in_event(middle);
}

/// The files that a process has open, by their paths.
std::set<std::string> open_files(pid_t process)
{
    std::set<std::string> paths;
    std::error_code gone;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd", gone))
        paths.insert(std::filesystem::read_symlink(entry.path(), gone));
    return paths;
}

void empty_folder(const Scratch& scratch, const char* folder)
{
    std::filesystem::remove_all(scratch.path(folder));
    scratch.make_dir(folder);
}

} // namespace

TEST(Disturbed, once_a_second_all_is_written_also_of_recorders_that_were_left)
{
    constexpr unsigned Others = 3000;
    Recording recording = usual_header() + data({1, 2, 3});
    for (unsigned i = 0; i < Others; ++i) recording += Fd().unit(0x1234);
    HeldConsole console;
    ConvertOptions options;
    options.run.stdout_fd = console.for_the_run();
    options.run.meanwhile = [&](pid_t run) {
        EXPECT_TRUE(console.take_up_to(1));
        sleep_ms(1200);
        // What it says next comes after a look at the clock: behind a buffer are hundreds of packets.
        EXPECT_TRUE(console.take_up_to(Console_buffer + 1));
        kill(run, SIGKILL);
    };
    const Converted run = convert(recording, {}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(
        same_bytes(mask_run_date(run.file(Name_1_1)), sac_header(usual_trace()) + sac_samples({1, 2, 3})));
    const std::string begin = head_line(event_line("EH", "0012", 0)),
                      first = head_line(data_line("0012", 3, 1));
    EXPECT_TRUE(same_bytes(unit_log(run), begin + usual_dump())) << "of a recorder that was left";
    std::string other;
    for (unsigned i = 0; i < 256; ++i) other += head_line(plain_line("FD", i + 2, "1234"));
    EXPECT_TRUE(run_log(run).starts_with(begin + first + other));
    EXPECT_TRUE(unit_log(run, "ID1234.vxl").starts_with(other.substr(0, 200)));
}

TEST(Disturbed, before_a_pause_all_is_written)
{
    Scratch scratch;
    scratch.make_dir("out/ID1234.vxl");
    scratch.write("rec.pkt", usual_header() + data({1, 2}) + Fd().unit(0x1234));
    RunOptions options;
    options.signal_after = 2; // in the middle of the five seconds that a file is waited for
    options.signal = SIGKILL;
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out"}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(ends_with(run.out, progress_dt(2, "9A2F", 12, 1, 1))) << run.out;
    EXPECT_TRUE(
        same_bytes(mask_run_date(scratch.read(Trace)), sac_header(usual_trace()) + sac_samples({1, 2})));
    const std::string begin = head_line(event_line("EH", "0012", 0));
    EXPECT_TRUE(ends_with(scratch.read("out/rec.vxl"), "\r\n\r\n" + begin +
                                                           head_line(data_line("0012", 2, 1)) +
                                                           head_line(plain_line("FD", 2, "1234"))));
    EXPECT_TRUE(ends_with(scratch.read("out/ID9A2F.vxl"), "\r\n\r\n" + begin + usual_dump()));
}

TEST(Disturbed, before_a_prompt_all_is_written_and_a_terminal_is_waited_for)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    grantpt(terminal), unlockpt(terminal);
    Scratch scratch;
    scratch.write("rec.pkt", one_event(12, {1, 2}) + one_event(13, {3}));
    RunOptions options;
    options.stdin_fd = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    const auto written = [&](unsigned packets, unsigned event) {
        const std::string last = head_line(event_line("ET", "00" + std::to_string(event), packets - 1));
        return eventually(
            [&] { return scratch.exists("out/rec.vxl") && ends_with(scratch.read("out/rec.vxl"), last); });
    };
    options.meanwhile = [&](pid_t) {
        EXPECT_TRUE(written(3, 12)) << "before the first prompt";
        sleep_ms(7000);
        EXPECT_FALSE(scratch.exists(Second_trace)) << "the run did not wait for a key";
        EXPECT_EQ(write(terminal, "\n", 1), 1);
        EXPECT_TRUE(written(6, 13)) << "before the second one";
        EXPECT_EQ(write(terminal, "\n", 1), 1);
    };
    const Outcome run = run_without_reopening(scratch, {"rec.pkt", "out"}, options);
    close(terminal);
    EXPECT_EQ(run.status, 22);
    EXPECT_EQ(run.err, std::string(Prompt) + Prompt);
}

TEST(Disturbed, a_terminal_shows_the_summary_before_an_input_that_is_waited_for)
{
    Scratch scratch;
    scratch.make_dir("out");
    ASSERT_EQ(mkfifo(scratch.path("rec.pkt").c_str(), 0600), 0);
    RunOptions options;
    options.terminal = true;
    options.signal_after = 1;
    options.signal = SIGKILL;
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(run.out.starts_with(console_banner())) << run.out;
    EXPECT_TRUE(ends_with(run.out, "\n\nPress CTRL-BRK or CTRL-C to abort.\n")) << run.out;
}

TEST(Disturbed, headers_that_cannot_be_rewritten_are_status_22_after_five_seconds_in_all_and_no_question)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(12, {1, 2}) + one_event(13, {3}));
    int held_open[2]; // standard input: nothing comes, and no end
    ASSERT_EQ(pipe(held_open), 0);
    RunOptions options;
    options.stdin_fd = held_open[0];
    options.timeout = 20;
    const Outcome run = run_without_reopening(scratch, {"rec.pkt", "out", "-L-"}, options);
    close(held_open[1]);
    EXPECT_EQ(run.status, 22);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8) << "the patience was spent twice";
    EXPECT_EQ(run.err, std::string(Prompt) + Prompt);
    EXPECT_EQ(count(run.out, cannot_reopen(Trace)), 1U);
    EXPECT_EQ(count(run.out, cannot_reopen(Second_trace)), 1U);
    EXPECT_TRUE(
        same_bytes(mask_run_date(scratch.read(Trace)), sac_header(usual_trace()) + sac_samples({1, 2})));
    EXPECT_TRUE(
        same_bytes(mask_run_date(scratch.read(Second_trace)), sac_header(usual_trace()) + sac_samples({3})));
}

TEST(Disturbed, traces_that_their_owner_may_write_and_not_read_are_finished)
{
    Scratch scratch;
    scratch.write("rec.pkt", in_event(packets_of(100)) + one_event(13, {3}));
    const Outcome run = run_with_umask(scratch, 0400, {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    for (const std::string& trace : {Trace, Second_trace})
        std::filesystem::permissions(scratch.path(trace), std::filesystem::perms::all);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(Trace)),
                           sac_file(usual_trace().stats(1, 250, 125.5F), samples_of_packets(100))));
    EXPECT_TRUE(
        same_bytes(mask_run_date(scratch.read(Second_trace)), sac_file(usual_trace().stats(3, 3, 3), {3})));
}

TEST(Disturbed, a_file_of_the_same_size_in_place_of_a_trace_gets_no_byte_of_it)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_disturbed_event());
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"}, [&](pid_t) {
        std::filesystem::rename(scratch.path(Trace), scratch.path("away"));
        scratch.write(Trace, foreign_text());
    });
    expect_header_refused_at_once(d);
    EXPECT_TRUE(same_bytes(scratch.read(Trace), foreign_text()));
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read("away")),
                           sac_header(usual_trace()) + sac_samples(samples_of_packets(Long))));
}

TEST(Disturbed, a_link_in_place_of_a_trace_leads_no_byte_elsewhere)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_disturbed_event());
    scratch.write("victim", foreign_text());
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"}, [&](pid_t) {
        std::filesystem::remove(scratch.path(Trace));
        std::filesystem::create_symlink(scratch.path("victim"), scratch.path(Trace));
    });
    expect_header_refused_at_once(d);
    EXPECT_TRUE(same_bytes(scratch.read("victim"), foreign_text()));
}

TEST(Disturbed, a_link_to_the_trace_itself_in_its_place_is_not_followed)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_disturbed_event());
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"}, [&](pid_t) {
        std::filesystem::rename(scratch.path(Trace), scratch.path("away"));
        std::filesystem::create_symlink(scratch.path("away"), scratch.path(Trace));
    });
    expect_header_refused_at_once(d);
}

TEST(Disturbed, a_trace_that_somebody_cut_keeps_its_first_header)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_disturbed_event());
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"},
                                [&](pid_t) { std::filesystem::resize_file(scratch.path(Trace), 632); });
    expect_header_refused_at_once(d);
    const std::string trace = scratch.read(Trace);
    EXPECT_LT(trace.size(), Long_size);
    EXPECT_TRUE(same_bytes(mask_run_date(trace.substr(0, 632)), sac_header(usual_trace())));
}

TEST(Disturbed, a_trace_that_was_renamed_is_waited_for_and_its_loss_is_told)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_disturbed_event());
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"}, [&](pid_t) {
        std::filesystem::rename(scratch.path(Trace), scratch.path("away"));
    });
    EXPECT_EQ(d.run.status, 22);
    EXPECT_EQ(count(d.console, cannot_reopen(Trace)), 1U);
    EXPECT_GE(d.run.seconds, 4.9);
    EXPECT_LT(d.run.seconds, 9);
    EXPECT_FALSE(scratch.exists(Trace));
}

TEST(Disturbed, a_copy_of_a_trace_is_taken_for_it_as_some_file_systems_give_new_inode_numbers)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", three_traces_in_turn());
    int copied = 0;
    const auto copy_those_that_gave_way = [&](pid_t run) {
        const std::set<std::string> open = open_files(run);
        for (const auto& name : scratch.tree("out")) {
            const std::string path = std::filesystem::canonical(scratch.path("out/" + name.first));
            if (open.contains(path)) continue;
            std::filesystem::copy_file(path, scratch.path("copy"));
            std::filesystem::rename(scratch.path("copy"), path);
            ++copied;
        }
    };
    const Disturbed d =
        disturb(scratch, {"rec.pkt", "out", "-L-"}, copy_those_that_gave_way, two_files_at_a_time());
    EXPECT_EQ(copied, 1);
    EXPECT_EQ(d.run.status, 0);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(Trace)),
                           sac_file(usual_trace().stats(1, 250, 125.5F), samples_of_packets(700))));
    EXPECT_EQ(scratch.tree("out").size(), 3U);
    for (const auto& [name, bytes] : scratch.tree("out"))
        EXPECT_EQ(bytes.size(), 632 + 4 * 250 * 700U) << name;
}

TEST(Disturbed, samples_never_go_into_another_file)
{
    for (const bool link : {false, true}) {
        SCOPED_TRACE(link ? "a link" : "a file");
        Scratch scratch;
        scratch.make_dir("out");
        scratch.write("rec.pkt", three_traces_in_turn());
        scratch.write("victim", foreign_text(5000));
        const Disturbed d = disturb(
            scratch, {"rec.pkt", "out", "-L-"},
            [&](pid_t) {
                std::filesystem::remove(scratch.path(Trace));
                if (link)
                    std::filesystem::create_symlink(scratch.path("victim"), scratch.path(Trace));
                else
                    std::filesystem::rename(scratch.path("victim"), scratch.path(Trace));
            },
            two_files_at_a_time());
        EXPECT_EQ(d.run.status, 22);
        EXPECT_TRUE(ends_with(d.console, "\nFile write error for '" + Trace + "'"));
        EXPECT_LT(d.run.seconds, 4);
        EXPECT_TRUE(same_bytes(scratch.read(link ? "victim" : Trace), foreign_text(5000)));
    }
}

TEST(Disturbed, a_trace_that_comes_back_in_time_gets_its_samples)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", three_traces_in_turn());
    std::thread later;
    const Disturbed d = disturb(
        scratch, {"rec.pkt", "out", "-L-"},
        [&](pid_t) {
            std::filesystem::rename(scratch.path(Trace), scratch.path("away"));
            later = std::thread([&] {
                sleep_ms(1500);
                std::filesystem::rename(scratch.path("away"), scratch.path(Trace));
            });
        },
        two_files_at_a_time());
    later.join();
    EXPECT_EQ(d.run.status, 0);
    EXPECT_GE(d.run.seconds, 1.4);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(Trace)),
                           sac_file(usual_trace().stats(1, 250, 125.5F), samples_of_packets(700))));
}

TEST(Disturbed, the_patience_is_there_again_once_a_trace_could_be_opened)
{
    const std::string third = "out/2004123101530250_STA01_1B1.sac";
    Scratch scratch;
    scratch.make_dir("out");
    Recording recording;
    for (const unsigned event : {12U, 13U, 14U}) recording += Eh().event(event).usual();
    for (int i = 0; i < 700; ++i)
        for (const unsigned event : {12U, 13U, 14U}) recording += Dt().event(event).samples(counting(1, 250));
    for (const unsigned event : {12U, 13U, 14U}) recording += Et().event(event).usual();
    scratch.write("rec.pkt", recording);
    std::thread later;
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-"}, [&](pid_t) {
        std::filesystem::rename(scratch.path(Trace), scratch.path("away"));
        std::filesystem::rename(scratch.path(third), scratch.path("away for a while"));
        later = std::thread([&] {
            sleep_ms(7500); // five seconds are spent on the first one
            std::filesystem::rename(scratch.path("away for a while"), scratch.path(third));
        });
    });
    later.join();
    EXPECT_EQ(d.run.status, 22);
    EXPECT_EQ(count(d.console, cannot_reopen(Trace)), 1U);
    EXPECT_EQ(count(d.console, "!!!Could not re-open"), 1U);
    for (const std::string& trace : {Second_trace, third})
        EXPECT_EQ(header_int(scratch.read(trace), 79), 250 * 700) << trace;
}

TEST(Disturbed, two_runs_crossed_over_one_folder_leave_the_second_ones_traces_alone)
{
    for (const bool few : {false, true}) {
        SCOPED_TRACE(few ? "two files at a time" : "all files");
        Scratch scratch;
        scratch.make_dir("out");
        scratch.write("first.pkt", three_traces_in_turn());
        scratch.write("second.pkt", three_traces_in_turn(500));
        const RunOptions options = few ? two_files_at_a_time() : RunOptions();
        Tree second;
        const Disturbed first = disturb(
            scratch, {"first.pkt", "out", "-L-"},
            [&](pid_t) {
                empty_folder(scratch, "out");
                EXPECT_EQ(run_vx(scratch.dir(), {"second.pkt", "out", "-L-"}, options).status, 0);
                second = scratch.tree("out");
            },
            options);
        EXPECT_EQ(first.run.status, 22);
        EXPECT_EQ(second.size(), 3U);
        const Tree now = scratch.tree("out");
        EXPECT_EQ(names(now), names(second));
        for (const auto& [name, bytes] : second) EXPECT_TRUE(same_bytes(now.at(name), bytes)) << name;
        const std::string& trace = second.at(Name_1_1);
        EXPECT_TRUE(same_bytes(mask_run_date(trace), sac_file(usual_trace().stats(500, 749, 624.5F),
                                                              samples_of_packets(700, 500))));
    }
}

TEST(Disturbed, a_day_folder_that_vanished_is_made_again)
{
    for (const char* levels : {"-P1", "-P2"}) {
        SCOPED_TRACE(levels);
        const std::string below = std::string("out/2004_123/") + (levels[2] == '2' ? "10/" : "");
        Scratch scratch;
        scratch.make_dir("out");
        Recording recording = one_event(12, {1, 2});
        for (unsigned i = 0; i < 3000; ++i) recording += Fd();
        scratch.write("rec.pkt", recording + one_event(13, {3}));
        const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-", levels}, [&](pid_t) {
            EXPECT_TRUE(scratch.exists(below + Name_1_1));
            std::filesystem::remove_all(scratch.path("out/2004_123"));
        });
        EXPECT_EQ(d.run.status, 0);
        EXPECT_EQ(d.run.err, "");
        EXPECT_LT(d.run.seconds, 4);
        EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(below + Name_1_1)),
                               sac_file(usual_trace().stats(3, 3, 3), {3})));
    }
}

TEST(Disturbed, an_output_path_that_vanished_is_not_made_again)
{
    Scratch scratch;
    scratch.make_dir("out");
    Recording recording = one_event(12, {1, 2});
    for (unsigned i = 0; i < 3000; ++i) recording += Fd();
    scratch.write("rec.pkt", recording + one_event(13, {3}));
    const Disturbed d = disturb(scratch, {"rec.pkt", "out", "-L-", "-P1"},
                                [&](pid_t) { std::filesystem::remove_all(scratch.path("out")); });
    EXPECT_EQ(d.run.status, 20);
    EXPECT_TRUE(ends_with(d.console, "\n\nERROR!!!!\n   unable to open out/2004_123/" +
                                         std::string(Name_1_1) + " for output."));
    EXPECT_FALSE(scratch.exists("out"));
}

TEST(Disturbed, a_console_that_nobody_reads_costs_no_trace)
{
    int console[2];
    ASSERT_EQ(pipe(console), 0);
    close(console[0]);
    signal(SIGPIPE, SIG_DFL); // also where the tests are run by something that ignores it
    ConvertOptions options;
    options.run.stdout_fd = console[1];
    const Converted run =
        convert(one_event(12, {1, 2}) + in_event(packets_of(1500, 1)) + one_event(13, {3}), {}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.signal, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.sac_names().size(), 3U);
    EXPECT_TRUE(same_bytes(mask_run_date(run.file("2004123101530250_STA01_1A1.sac")),
                           sac_file(usual_trace().stats(3, 3, 3), {3})));
}
