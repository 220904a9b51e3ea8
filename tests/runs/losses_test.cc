// Bytes that cannot be written, names that others hold: no loss passes with status 0.
#include "runs/common.h"

#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace kit;
using namespace runs;

namespace {

ConvertOptions at_most(unsigned long bytes_per_file)
{
    ConvertOptions options;
    options.run.limits = {{RLIMIT_FSIZE, bytes_per_file}};
    return options;
}

const std::string Told = "\nFile write error for 'out/";

/// A run with some of its files led to a device that is always full.
Outcome with_full(const Scratch& scratch, const Recording& recording, const std::vector<std::string>& files,
                  const Args& more)
{
    scratch.write("rec.pkt", recording);
    scratch.make_dir("out");
    for (const std::string& name : files) {
        EXPECT_EQ(symlink("/dev/full", scratch.path("out/" + name).c_str()), 0);
    }
    Args args = {"rec.pkt", "out"};
    args.insert(args.end(), more.begin(), more.end());
    return run_vx(scratch.dir(), args);
}

bool device_is_there()
{
    return access("/dev/full", W_OK) == 0;
}

} // namespace

TEST(Losses, a_trace_that_cannot_grow_ends_the_run_with_status_22)
{
    Recording recording = Eh().event(12).usual().packet();
    for (int i = 0; i < 40; ++i) recording += Dt().event(12).samples(counting(1, 250));
    const Converted run = convert(recording, {"-L-"}, at_most(20000));
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Name_1_1 + "'")) << run.out;
    EXPECT_EQ(run.err, "");
}

TEST(Losses, a_trace_whose_header_does_not_fit_ends_the_run_with_status_22)
{
    const Converted run = convert(one_event(12, {1, 2}), {"-L-"}, at_most(600));
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Name_1_1 + "'")) << run.out;
}

TEST(Losses, a_trace_that_fails_when_it_is_closed_ends_the_run_with_status_22)
{
    const Converted run =
        convert(Eh().event(12).usual() + Dt().event(12).samples(counting(1, 100)), {"-L-"}, at_most(700));
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Name_1_1 + "'")) << run.out;
}

TEST(Losses, logs_that_cannot_grow_are_told_once_each_and_the_traces_are_whole)
{
    Recording recording = one_event(12, counting(1, 50));
    for (int i = 0; i < 300; ++i) recording += Sh("some state of health");
    recording += one_event(13, {4, 5, 6});
    const Converted run = convert(recording, {}, at_most(2500));
    EXPECT_EQ(run.status, 22);
    EXPECT_EQ(count(run.err, "File write error"), 2u) << run.err;
    EXPECT_EQ(count(run.err, Told + "rec.vxl'"), 1u) << run.err;
    EXPECT_EQ(count(run.err, Told + "ID9A2F.vxl'"), 1u) << run.err;
    EXPECT_EQ(run.out.find("error"), std::string::npos) << "the console is that of any run";
    EXPECT_TRUE(ends_with(run.out, progress_et(306, "9A2F", 13, 1, "EVT", "100.0000") + "\r\n"));
    EXPECT_EQ(run.file("rec.vxl").size(), 2500u) << "all that fits is there";
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)),
                           sac_file(Sac().rate(100).stats(1, 50, 25.5f), counting(1, 50))));
    EXPECT_TRUE(same_bytes(mask_run_date(run.file("2004123101530250_STA01_1A1.sac")),
                           sac_file(Sac().rate(100).stats(4, 6, 5), {4, 5, 6})));
}

TEST(Losses, a_full_device_under_the_run_wide_log_is_told)
{
    if (!device_is_there()) GTEST_SKIP() << "no /dev/full";
    Scratch scratch;
    const Outcome run = with_full(scratch, one_event(12, {1, 2}), {"rec.vxl"}, {});
    EXPECT_EQ(run.status, 22);
    EXPECT_EQ(run.err, Told + "rec.vxl'");
    EXPECT_TRUE(ends_with(run.out, progress_et(3, "9A2F", 12, 1, "EVT", "100.0000") + "\r\n"));
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read(std::string("out/") + Name_1_1)),
                           sac_file(Sac().rate(100).stats(1, 2, 1.5f), {1, 2})));
}

TEST(Losses, a_full_device_under_unit_and_statistics_files_is_told_per_file)
{
    if (!device_is_there()) GTEST_SKIP() << "no /dev/full";
    Scratch scratch;
    const Recording recording = one_event(12, {1, 2}) + Fd().unit(0xB) + Fd() + Fd().unit(0xB);
    const Outcome run = with_full(scratch, recording, {"ID9A2F.vxl", "ID9A2F.qcc", "rec.qcc"}, {"-Q+"});
    EXPECT_EQ(run.status, 22);
    for (const char* name : {"ID9A2F.vxl", "ID9A2F.qcc", "rec.qcc"})
        EXPECT_EQ(count(run.err, Told + name + "'"), 1u) << run.err;
    EXPECT_EQ(count(run.err, "File write error"), 3u) << run.err;
    EXPECT_TRUE(ends_with(scratch.read("out/rec.vxl"), head_line(plain_line("FD", 5, "000B"))));
}

TEST(Losses, a_status_other_than_0_stays_when_a_log_is_lost)
{
    if (!device_is_there()) GTEST_SKIP() << "no /dev/full";
    Scratch scratch;
    const Outcome run = with_full(scratch, "", {"rec.vxl"}, {});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, Told + "rec.vxl'");
}

TEST(Losses, a_dangling_link_under_a_traces_name_is_not_followed)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.make_dir("elsewhere");
    ASSERT_EQ(symlink(scratch.path("elsewhere/target").c_str(),
                      scratch.path(std::string("out/") + Name_1_1).c_str()),
              0);
    scratch.write("rec.pkt", one_event(12, {1, 2}));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(names(scratch.tree("elsewhere")), "");
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read("out/2004123101530250_STA01_1A1.sac")),
                           sac_file(Sac().rate(100).stats(1, 2, 1.5f), {1, 2})));
}

TEST(Losses, runs_side_by_side_in_one_directory_never_share_a_trace)
{
    constexpr int Runs = 6;
    Scratch scratch;
    scratch.make_dir("out");
    for (int i = 0; i < Runs; ++i) {
        Recording recording;
        for (unsigned event = 1; event <= 3; ++event) {
            recording += Eh().event(event).usual();
            for (unsigned channel = 0; channel < 6; ++channel) {
                recording += Dt().event(event).channel(channel).samples(std::vector<int32_t>(200, i));
            }
            recording += Et().event(event).usual();
        }
        scratch.write("rec" + std::to_string(i) + ".pkt", recording);
    }
    std::vector<std::thread> threads;
    std::vector<Outcome> ends(Runs);
    for (int i = 0; i < Runs; ++i) {
        threads.emplace_back([&, i] {
            ends[static_cast<size_t>(i)] =
                run_vx(scratch.dir(), {"rec" + std::to_string(i) + ".pkt", "out", "-L-"});
        });
    }
    for (std::thread& t : threads) t.join();

    std::map<float, int> traces_of;
    const Tree tree = scratch.tree("out");
    for (const auto& [name, bytes] : tree) {
        const std::vector<float> samples = samples_of(bytes);
        ASSERT_EQ(samples.size(), 200u) << name;
        EXPECT_EQ(samples, std::vector<float>(200, samples[0])) << name << " holds one run's samples";
        EXPECT_EQ(header_int(bytes, 79), 200) << name;
        ++traces_of[samples[0]];
    }
    for (int i = 0; i < Runs; ++i) {
        EXPECT_EQ(ends[static_cast<size_t>(i)].status, 0);
        EXPECT_EQ(traces_of[static_cast<float>(i)], 18);
    }
}

TEST(Losses, a_terminal_sees_the_progress_before_a_wait)
{
    Scratch scratch;
    scratch.make_dir("out/ID1234.vxl");
    scratch.write("rec.pkt", one_event(12, {1, 2}) + Fd().unit(0x1234));
    RunOptions options;
    options.terminal = true;
    options.signal_after = 2; // in the middle of the five seconds that a file is waited for
    options.signal = SIGKILL;
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out"}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(ends_with(run.out, progress_et(3, "9A2F", 12, 1, "EVT", "100.0000"))) << run.out;
}

TEST(Losses, many_recorders_need_few_descriptors)
{
    Recording recording;
    for (unsigned unit = 1; unit <= 300; ++unit)
        recording += Dt().unit(unit).event(1).samples({static_cast<int32_t>(unit)});
    for (unsigned unit = 1; unit <= 300; ++unit) recording += Dt().unit(unit).event(1).ms(260).samples({-1});
    ConvertOptions options;
    options.run.limits = {{RLIMIT_NOFILE, 128}};
    const Converted run = convert(recording, {"-L-", "-Q+"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.sac_names().size(), 300u);
    for (const std::string& name : run.sac_names()) EXPECT_EQ(samples_of(run.file(name)).size(), 2u) << name;
}
