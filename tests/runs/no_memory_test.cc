// Runs that find no memory for the next record: what they say, how they end, and that everything written so
// far is in its file. The heap of these runs is made to run out at each of their allocations in turn.
#include "runs/common.h"

namespace {

using namespace kit;
using namespace runs;

/// Converts with a program whose n-th allocation fails, and every one behind it.
Converted convert_short_of_memory(const Recording& recording, size_t n, const Args& args = {},
                                  const std::string& ini = "")
{
    ConvertOptions options;
    options.ini = ini;
    options.run.program = VX_SAC_FAILING_NEW_PROGRAM;
    options.run.env = {"VX_FAIL_NEW_FROM=" + std::to_string(n)};
    return convert(recording, args, options);
}

/// Everything on the console up to the last words.
std::string console_until(const Converted& run, const std::string& progress, bool qcc_on = false)
{
    kit::Settings s = settings_of(run);
    s.qcc_on = qcc_on;
    return console_banner() + run_summary(s) + table_start() + progress;
}

/// A trace whose header was never finished: no samples counted, statistics as reset.
std::string unfinished_trace(Sac header, const std::vector<int32_t>& samples)
{
    header.npts = 0;
    return sac_header(header) + sac_samples(samples);
}

/// Header and one packet of samples of event 12; its samples are 5, -3 and 4.
Recording begun_event()
{
    return Eh().event(12).usual() + Dt().event(12).samples({5, -3, 4});
}

std::string begun_console()
{
    return progress_eh(1, "9A2F", 12, 1, "EVT", "100.0000") + progress_dt(2, "9A2F", 12, 1, 1);
}

std::string begun_log()
{
    return head_line(event_line("EH", "0012", 0)) + head_line(data_line("0012", 3, 1));
}

std::string begun_unit_log()
{
    return head_line(event_line("EH", "0012", 0)) + usual_dump();
}

std::string begun_trace()
{
    return unfinished_trace(Sac().rate(100), {5, -3, 4});
}

constexpr const char* Last_words_unit = "\nMemory allocation error for '(null)'";
constexpr const char* Last_words_event = "\n\nOut of Heap allocating Event pointer";
constexpr const char* Last_words_channel = " Out of Heap allocating CHNLST_T pointer";

/// The runs that end with these words behind this progress, when the heap runs out at the first allocation,
/// at the second, and so on until a run needs no more. They are the allocations that one packet makes for
/// its record and whatever goes with that; there must be some.
std::vector<Converted> runs_ended_by(const std::string& words, const std::string& progress,
                                     const Recording& recording, const Args& args = {})
{
    const bool qcc_on = !args.empty();
    std::vector<Converted> ended;
    for (size_t n = 1;; ++n) {
        const Converted run = convert_short_of_memory(recording, n, args);
        EXPECT_EQ(run.signal, 0);
        if (run.status == 0 || testing::Test::HasFailure()) break;
        if (run.out == console_until(run, progress, qcc_on) + words) ended.push_back(run);
    }
    EXPECT_FALSE(ended.empty()) << "no run ends with " << words;
    return ended;
}

} // namespace

TEST(No_memory, for_an_event_ends_with_status_255_and_keeps_what_was_written)
{
    const Recording recording = begun_event() + Eh().event(13).usual().packet();

    for (const Converted& run : runs_ended_by(Last_words_event, begun_console(), recording)) {
        EXPECT_EQ(run.status, 255);
        EXPECT_EQ(run.err, "");
        const Settings s = settings_of(run);
        const std::string third = head_line(event_line("EH", "0013", 2));
        EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, begun_trace()},
                                         {"rec.vxl", log_header(s) + begun_log() + third},
                                         {"ID9A2F.vxl", log_header(s) + begun_unit_log() + third}}));
    }
}

TEST(No_memory, for_the_first_event_of_all_ends_with_status_255)
{
    for (const Converted& run : runs_ended_by(Last_words_event, "", begun_event())) {
        EXPECT_EQ(run.status, 255);
        EXPECT_EQ(run.err, "");
        const std::string log = log_header(settings_of(run)) + head_line(event_line("EH", "0012", 0));
        EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", log}, {"ID9A2F.vxl", log}}));
    }
}

TEST(No_memory, for_a_unit_ends_with_status_40_and_keeps_what_was_written)
{
    const Recording recording = begun_event() + Eh().unit(0x1234).event(1).usual().packet();

    for (const Converted& run : runs_ended_by(Last_words_unit, begun_console(), recording)) {
        EXPECT_EQ(run.status, 40);
        EXPECT_EQ(run.err, "");
        const Settings s = settings_of(run);
        const std::string third = head_line(event_line("EH", "0001", 2, "1234"));
        EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, begun_trace()},
                                         {"rec.vxl", log_header(s) + begun_log() + third},
                                         {"ID9A2F.vxl", log_header(s) + begun_unit_log()}}));
    }
}

TEST(No_memory, for_a_channel_ends_with_status_40_and_keeps_what_was_written)
{
    HeadLine third = data_line("0012", 1, 2);
    third.channel = "2";
    const Recording recording = begun_event() + Dt().event(12).channel(1).samples({9}).packet();

    for (const Converted& run : runs_ended_by(Last_words_channel, begun_console(), recording, {"-QY"})) {
        EXPECT_EQ(run.status, 40);
        EXPECT_EQ(run.err, "");
        Settings s = settings_of(run);
        s.qcc_on = true;
        EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, begun_trace()},
                                         {"rec.vxl", log_header(s) + begun_log() + head_line(third)},
                                         {"ID9A2F.vxl", log_header(s) + begun_unit_log()},
                                         {"rec.qcc", qcc_header(s)},
                                         {"ID9A2F.qcc", qcc_header(s)}}));
    }
}

TEST(No_memory, wherever_it_happens_ends_the_run_with_its_words_and_whole_traces)
{
    const Recording recording = one_event(12, {5, -3, 4}) + begun_event() +
                                Dt().event(12).channel(1).samples({9}).packet() +
                                one_event(7, {1, 2}, 0x1234);
    const std::string ini = "[9A2F]\nStation=INI01\nCh1Azm=90\nCh2SnsMake=Vexar\n[1234]\nLatitude=1.5\n";

    size_t n = 1;
    for (;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        const Converted run = convert_short_of_memory(recording, n, {"-QY", "-P2"}, ini);
        ASSERT_EQ(run.signal, 0);
        if (run.status == 0) break; // it needs no more than that
        if (run.status == 255)
            EXPECT_TRUE(ends_with(run.out, Last_words_event));
        else
            EXPECT_TRUE(ends_with(run.out, Last_words_unit) || ends_with(run.out, Last_words_channel));
        ASSERT_TRUE(run.status == 255 || run.status == 40) << run.status;
        EXPECT_EQ(run.err, "");
        for (const std::string& name : run.sac_names()) {
            const size_t bytes = run.file(name).size();
            EXPECT_TRUE(bytes >= 632 && (bytes - 632) % 4 == 0) << name << " has " << bytes << " bytes";
        }
    }
    EXPECT_GT(n, 7U); // two units, two events and three channels take at least as many
}
