// Bytes that cannot be written, and names that are taken: a run that loses something has another status than
// 0.
#include "runs/common.h"

#include <bit>
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

/// Samples of so many packets, and the packets of an event that never ends.
Recording long_event(unsigned packets, std::vector<int32_t>& all)
{
    Recording recording = Eh().event(12).usual().packet();
    for (unsigned i = 0; i < packets; ++i) {
        const int first = static_cast<int>(i % 100);
        const std::vector<int32_t> samples = counting(first, first + 249);
        all.insert(all.end(), samples.begin(), samples.end());
        recording += Dt().event(12).samples(samples);
    }
    return recording;
}

const std::string Three_names[] = {Name_1_1, "2004123101530250_STA01_1_2.sac",
                                   "2004123101530250_STA01_1_3.sac"};

/// Three traces that grow at the same time; not ended.
Recording three_long_traces(int packets)
{
    Recording recording = Eh().event(12).usual().packet();
    for (int i = 0; i < packets; ++i)
        for (int channel = 0; channel < 3; ++channel)
            recording += Dt().event(12)
                             .channel(static_cast<unsigned>(channel))
                             .samples(counting(i + channel, i + channel + 249));
    return recording;
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

TEST(Losses, a_long_trace_that_cannot_grow_ends_the_run_at_the_same_packet_each_time)
{
    constexpr unsigned long Most = 2'000'000;
    std::vector<int32_t> samples;
    const Recording recording = long_event(4000, samples);
    const Converted run = convert(recording, {"-L-"}, at_most(Most));
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Name_1_1 + "'"));
    EXPECT_EQ(run.err, "");
    const std::string& trace = run.file(Name_1_1);
    EXPECT_EQ(trace.size(), Most) << "all that fits is there";
    EXPECT_TRUE(same_bytes(trace.substr(632), sac_samples(samples).substr(0, Most - 632)));
    const auto progress = [](const Converted& c) { return c.out.substr(c.out.find("  Block ")); };
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(same_bytes(progress(convert(recording, {"-L-"}, at_most(Most))), progress(run))) << i;
}

TEST(Losses, several_long_traces_at_the_same_time_are_whole)
{
    const Converted run = convert(three_long_traces(1200));
    EXPECT_EQ(run.status, 0);
    for (int channel = 0; channel < 3; ++channel) {
        std::vector<int32_t> samples;
        for (int i = 0; i < 1200; ++i)
            for (const int32_t x : counting(i + channel, i + channel + 249)) samples.push_back(x);
        // From i to i + 249 the mean is i + 124.5, and that of i from 0 to 1199 is 599.5.
        const auto c = static_cast<float>(channel);
        const std::string& trace = run.file(Three_names[channel]);
        EXPECT_TRUE(same_bytes(trace.substr(632), sac_samples(samples)));
        EXPECT_EQ(header_int(trace, 79), 1200 * 250);
        EXPECT_EQ(header_bits(trace, 56), std::bit_cast<uint32_t>(724.0F + c));
        EXPECT_EQ(header_bits(trace, 1), std::bit_cast<uint32_t>(c));
        EXPECT_EQ(header_bits(trace, 2), std::bit_cast<uint32_t>(1448.0F + c));
    }
}

TEST(Losses, several_long_traces_that_cannot_grow_end_the_run_once_and_its_logs_are_whole)
{
    constexpr unsigned long Most = 600'000;
    const Converted run = convert(three_long_traces(1200), {}, at_most(Most));
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Three_names[0] + "'"));
    EXPECT_EQ(run.err, Told + Three_names[1] + "'" + Told + Three_names[2] + "'");
    for (const std::string& trace : Three_names) EXPECT_EQ(run.file(trace).size(), Most) << trace;
    EXPECT_TRUE(ends_with(run.file("rec.vxl"), "\r\n"));
    EXPECT_GT(run.file("rec.vxl").size(), 50'000U);
    EXPECT_TRUE(ends_with(run.file("ID9A2F.vxl"), usual_dump()));
}

TEST(Losses, a_long_trace_that_cannot_grow_is_why_a_run_ends_that_would_end_otherwise_soon_after)
{
    std::vector<int32_t> samples;
    const Recording recording = long_event(2000, samples) + one_event(13, {1, 2});
    Scratch scratch;
    scratch.write("rec.pkt", recording);
    for (char letter = 'A'; letter <= 'X'; ++letter)
        scratch.write(std::string("out/2004123101530250_STA01_1") + letter + "1.sac", "taken");
    const Outcome free = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(free.status, 23) << "no name is left for the second event";
    ASSERT_EQ(unlink(scratch.path(std::string("out/") + Name_1_1).c_str()), 0);

    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, at_most(1'900'000).run);
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Told + Name_1_1 + "'"));
    EXPECT_EQ(run.err, "");
}

TEST(Losses, long_logs_that_cannot_grow_are_told_once_each_and_the_traces_are_whole)
{
    constexpr unsigned long Most = 450'000;
    Recording recording = three_long_traces(400) + Et().event(12).usual().packet();
    const std::string line = std::string(100, 'x') + "\r\n";
    for (int i = 0; i < 5000; ++i) recording += Sh(line);
    const Converted run = convert(recording, {}, at_most(Most));
    EXPECT_EQ(run.status, 22);
    EXPECT_EQ(run.err.size(), 2 * Told.size() + std::string("rec.vxl'ID9A2F.vxl'").size());
    EXPECT_EQ(count(run.err, Told + "rec.vxl'"), 1U) << run.err;
    EXPECT_EQ(count(run.err, Told + "ID9A2F.vxl'"), 1U) << run.err;
    EXPECT_TRUE(ends_with(run.out, progress_sh(6202, "9A2F") + "\r\n"));

    const Converted whole = convert(recording);
    EXPECT_EQ(whole.status, 0);
    for (const char* log : {"rec.vxl", "ID9A2F.vxl"}) {
        const size_t header = log_header(settings_of(run)).size();
        EXPECT_EQ(run.file(log).size(), Most) << log;
        EXPECT_TRUE(same_bytes(run.file(log).substr(header), whole.file(log).substr(header, Most - header)));
    }
    for (const std::string& trace : Three_names)
        EXPECT_TRUE(same_bytes(mask_run_date(run.file(trace)), mask_run_date(whole.file(trace))));
}

TEST(Losses, a_full_device_under_the_run_wide_log_is_told)
{
    if (!full_device_is_there()) GTEST_SKIP() << "no /dev/full";
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
    if (!full_device_is_there()) GTEST_SKIP() << "no /dev/full";
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
    if (!full_device_is_there()) GTEST_SKIP() << "no /dev/full";
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
