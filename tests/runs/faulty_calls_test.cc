// Runs whose system calls fail at a chosen point: what they say, how they end, what they leave alone.
// proof/trials goes through every call in turn; here are those that once went wrong.
#include "runs/common.h"

#include <csignal>
#include <cstring>
#include <sys/resource.h>

using namespace kit;
using namespace runs;

namespace {

#ifdef VX_FAULTY_CALLS
constexpr bool Have_faults = true;
constexpr const char* Library = VX_FAULTY_CALLS;
#else
constexpr bool Have_faults = false;
constexpr const char* Library = "";
#endif

/// Calls that fail from the n-th of their kind on, or that one alone.
enum class When { once, from_then_on };

/// A run whose calls of a kind fail, as "open", "read", "stat" and so on are named by the library.
RunOptions failing(const std::string& kind, unsigned at, int why, When when)
{
    RunOptions options;
    options.timeout = 20;
    options.env = {std::string("LD_PRELOAD=") + Library, "VX_FAULT_KIND=" + kind,
                   "VX_FAULT_AT=" + std::to_string(at), "VX_FAULT_HOW=" + std::to_string(why),
                   std::string("VX_FAULT_ALWAYS=") + (when == When::once ? "0" : "1")};
    return options;
}

/// The same for requests for memory that is to be a file's buffer: nothing else asks for so much at once.
RunOptions failing_buffers(unsigned at, When when)
{
    RunOptions options = failing("memory", at, ENOMEM, when);
    options.env.push_back("VX_FAULT_LEAST=8192");
    return options;
}

class Faulty_calls : public testing::Test {
protected:
    void SetUp() override
    {
        if (!Have_faults) GTEST_SKIP() << "calls cannot be made to fail in this build";
    }
};

constexpr unsigned Calls = 12; ///< of a kind, in these runs at most

const std::string Station_file = "[9A2F]\nCh1Azm=90\nCh1Dip=-45\n";

/// What a run leaves that took the whole station file in.
Tree whole_tree()
{
    Sac expected = Sac().rate(100).stats(-3, 5, 2);
    expected.cmpaz = 90, expected.cmpinc = -45;
    return {{Name_1_1, sac_file(expected, {5, -3, 4})}};
}

/// The same with the logs of a run of one_event(12, {5, -3, 4}).
Tree whole_tree_with_logs(const Converted& run)
{
    const std::string head = log_header(settings_of(run));
    const std::string begin = head_line(event_line("EH", "0012", 0)),
                      data = head_line(data_line("0012", 3, 1)), end = head_line(event_line("ET", "0012", 2));
    Tree tree = whole_tree();
    tree["rec.vxl"] = head + begin + data + end;
    tree["ID9A2F.vxl"] = head + begin + usual_dump() + end + usual_dump();
    return tree;
}

constexpr int Long_packets = 80; ///< of a trace that no buffer holds: its header is written twice

Recording event_of_a_long_trace()
{
    Recording recording = Eh().event(12).usual().packet();
    for (int i = 0; i < Long_packets; ++i) recording += Dt().event(12).samples(counting(1, 250));
    return recording + Et().event(12).usual();
}

std::vector<int32_t> long_samples()
{
    std::vector<int32_t> all;
    for (int i = 0; i < Long_packets; ++i)
        for (const int32_t x : counting(1, 250)) all.push_back(x);
    return all;
}

std::string long_trace()
{
    Sac expected = Sac().rate(100).stats(1, 250, 125.5F);
    expected.cmpaz = 90, expected.cmpinc = -45;
    return sac_file(expected, long_samples());
}

/// The same when its end never came.
std::string unfinished_long_trace()
{
    Sac header = Sac().rate(100);
    header.cmpaz = 90, header.cmpinc = -45;
    return sac_header(header) + sac_samples(long_samples());
}

/// A call that failed made no difference.
void expect_undisturbed(const Converted& run, const Tree& tree)
{
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_tree(run.tree, tree));
}

const std::string Cannot_write = "\nFile write error for 'out/";

TEST_F(Faulty_calls, in_the_middle_of_the_station_file_end_the_run_instead_of_half_its_keys)
{
    ConvertOptions options;
    options.ini = std::string(5000, ';') + "\n" + Station_file;
    unsigned of_the_station_file = 0;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("read", at, EIO, When::once);
        const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
        if (run.status == 0) {
            EXPECT_TRUE(same_tree(run.tree, whole_tree()));
            continue;
        }
        EXPECT_EQ(run.status, 21);
        const std::string words = "\nFile read error for '";
        if (ends_with(run.out, words + settings_of(run).file_ini + "'"))
            ++of_the_station_file;
        else
            EXPECT_TRUE(ends_with(run.out, words + "(null)'")) << run.out;
    }
    EXPECT_GE(of_the_station_file, 2U);
}

TEST_F(Faulty_calls, that_are_interrupted_are_made_again)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (const char* kind : {"read", "write"}) {
        for (unsigned at = 1; at <= Calls; ++at) {
            SCOPED_TRACE(kind + std::to_string(at));
            options.run = failing(kind, at, EINTR, When::once);
            const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
            expect_undisturbed(run, whole_tree());
        }
    }
}

TEST_F(Faulty_calls, that_look_for_the_station_file_do_not_make_it_vanish_unseen)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("stat", at, EIO, When::from_then_on);
        const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
        if (run.status != 0) continue;
        if (run.out.find("not found; using defaults") == run.out.npos) {
            EXPECT_TRUE(same_tree(run.tree, whole_tree()));
        }
    }
}

TEST_F(Faulty_calls, that_hide_a_taken_name_end_the_run_instead_of_trying_it_for_ever)
{
    const Converted before = convert(one_event(12, {5, -3, 4}), {"-L-"});
    ASSERT_EQ(names(before.tree), std::string(Name_1_1) + "\n");
    unsigned refused = 0;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        ConvertOptions options;
        options.run = failing("stat", at, EIO, When::from_then_on);
        const Converted run = convert_again(before, one_event(12, {1, 2}), {"-L-"}, options);
        ASSERT_FALSE(run.timed_out);
        if (run.status == 0 || run.status == 10) continue;
        EXPECT_EQ(run.status, 20);
        const std::string last =
            "\n\nERROR!!!!\n   unable to open out/" + std::string(Name_1_1) + " for output.";
        if (ends_with(run.out, last)) ++refused;
        EXPECT_TRUE(same_bytes(run.file(Name_1_1), before.file(Name_1_1)));
    }
    EXPECT_GE(refused, 1U);
}

TEST_F(Faulty_calls, that_compare_the_log_with_the_input_do_not_let_the_input_be_emptied)
{
    Scratch scratch;
    scratch.make_dir("out");
    const Recording recording = one_event(12, {5, -3, 4});
    scratch.write("out/rec.vxl", recording); // its log would have the same name
    for (unsigned at = 1; at <= 6; ++at) {
        SCOPED_TRACE(at);
        const Outcome run =
            run_vx(scratch.dir(), {"out/rec.vxl", "out"}, failing("stat", at, EIO, When::once));
        EXPECT_TRUE(run.status == 20 || run.status == 10) << run.status;
        EXPECT_TRUE(scratch.read("out/rec.vxl") == recording);
    }
}

/// A run of which the library tells how often it opened a file.
class Counted {
public:
    ConvertOptions with(ConvertOptions options) const
    {
        options.run.env.push_back("VX_FAULT_COUNTS=" + path_);
        return options;
    }
    uint32_t opens() const { return calls(0); }
    uint32_t writes() const { return calls(2); } ///< of files, not of the console
    uint32_t closes() const { return calls(3); } ///< of files that were written

private:
    /// Of a kind, by its place in the library's order.
    uint32_t calls(size_t kind) const
    {
        uint32_t n = 0;
        memcpy(&n, scratch_.read("counts").data() + kind * sizeof n, sizeof n);
        return n;
    }
    Scratch scratch_;
    std::string path_ = scratch_.write("counts", std::string(64, '\0'));
};

Converted convert_counting_opens(const Recording& recording, const Args& args, const ConvertOptions& options,
                                 uint32_t& opens)
{
    const Counted counted;
    Converted run = convert(recording, args, counted.with(options));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    opens = counted.opens();
    return run;
}

RunOptions undisturbed()
{
    RunOptions options;
    options.env = {std::string("LD_PRELOAD=") + Library};
    return options;
}

TEST_F(Faulty_calls, that_find_no_descriptor_are_made_again_once_a_file_gave_way_or_some_time_has_passed)
{
    // The run's log, the input, the station file, the unit's log, the trace. Nobody can give way to the
    // first; the file that gives way to another is opened once more.
    constexpr unsigned More[] = {1, 2, 2, 2, 2, 0};
    ConvertOptions options;
    options.ini = Station_file;
    options.run = undisturbed();
    uint32_t usual = 0;
    convert_counting_opens(one_event(12, {5, -3, 4}), {}, options, usual);
    for (const int why : {EMFILE, ENFILE}) {
        for (unsigned at = 1; at <= std::size(More); ++at) {
            SCOPED_TRACE(std::to_string(why) + " at " + std::to_string(at));
            options.run = failing("open", at, why, When::once);
            uint32_t opens = 0;
            const Converted run = convert_counting_opens(one_event(12, {5, -3, 4}), {}, options, opens);
            EXPECT_TRUE(same_tree(run.tree, whole_tree_with_logs(run)));
            EXPECT_EQ(opens, usual + More[at - 1]);
        }
    }
}

TEST_F(Faulty_calls, that_find_no_descriptor_for_a_long_traces_final_header_are_made_again)
{
    // Behind the log, the input, the station file, the unit's log and the trace. The file that gives way is
    // not written any more.
    constexpr unsigned Again = 6;
    ConvertOptions options;
    options.ini = Station_file;
    options.run = undisturbed();
    uint32_t usual = 0, opens = 0;
    convert_counting_opens(event_of_a_long_trace(), {}, options, usual);
    EXPECT_EQ(usual, Again);
    for (const int why : {EMFILE, ENFILE}) {
        options.run = failing("open", Again, why, When::once);
        const Converted run = convert_counting_opens(event_of_a_long_trace(), {}, options, opens);
        EXPECT_EQ(opens, usual + 1);
        EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), long_trace()));
    }
}

TEST_F(Faulty_calls, that_find_no_descriptor_where_no_file_can_give_way_are_made_again_after_some_time)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("open", at, EMFILE, When::once);
        const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
        expect_undisturbed(run, whole_tree());
    }
}

TEST_F(Faulty_calls, that_hide_a_taken_name_for_a_moment_lead_to_the_next_name)
{
    ConvertOptions options;
    options.run = undisturbed();
    uint32_t usual = 0;
    convert_counting_opens(one_event(12, {1, 2}), {"-L-"}, options, usual);
    unsigned refused = 0;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        const Converted before = convert(one_event(12, {5, -3, 4}), {"-L-"});
        const Counted counted;
        options.run = failing("stat", at, EIO, When::once);
        const Converted run = convert_again(before, one_event(12, {1, 2}), {"-L-"}, counted.with(options));
        if (run.status == 10) continue; // it was the output path that seemed not to be there
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, before.file(Name_1_1)},
                                         {"2004123101530250_STA01_1A1.sac",
                                          sac_file(Sac().rate(100).stats(1, 2, 1.5f), {1, 2})}}));
        if (counted.opens() == usual + 1) ++refused;
    }
    EXPECT_EQ(refused, 1U);
}

TEST_F(Faulty_calls, of_a_trace_that_is_closed_end_the_run)
{
    ConvertOptions options;
    options.ini = Station_file;
    // A short trace is written and closed once, a long one behind its samples and behind its final header.
    const struct {
        Recording recording;
        std::vector<std::string> traces; ///< as each closing leaves them
    } cases[] = {{one_event(12, {5, -3, 4}), {whole_tree().at(Name_1_1)}},
                 {event_of_a_long_trace(), {unfinished_long_trace(), long_trace()}}};
    for (const auto& [recording, traces] : cases) {
        for (unsigned at = 1; at <= traces.size() + 1; ++at) {
            SCOPED_TRACE(std::to_string(traces.size()) + " at " + std::to_string(at));
            const bool lost = at <= traces.size();
            options.run = failing("close", at, EIO, When::once);
            const Converted run = convert(recording, {"-L-"}, options);
            EXPECT_EQ(run.status, lost ? 22 : 0);
            EXPECT_EQ(ends_with(run.out, Cannot_write + Name_1_1 + "'"), lost);
            EXPECT_EQ(run.err, "");
            EXPECT_TRUE(same_tree(run.tree, {{Name_1_1, lost ? traces[at - 1] : traces.back()}}));
        }
    }
}

TEST_F(Faulty_calls, of_a_log_that_is_closed_are_told_and_the_run_goes_on)
{
    ConvertOptions options;
    options.ini = Station_file;
    std::string told;
    for (unsigned at = 2; at <= 3; ++at) { // behind that of the trace
        SCOPED_TRACE(at);
        options.run = failing("close", at, EIO, When::once);
        const Converted run = convert(one_event(12, {5, -3, 4}), {}, options);
        EXPECT_EQ(run.status, 22);
        EXPECT_TRUE(same_tree(run.tree, whole_tree_with_logs(run)));
        told += run.err;
    }
    EXPECT_EQ(told, Cannot_write + "rec.vxl'" + Cannot_write + "ID9A2F.vxl'");
}

TEST_F(Faulty_calls, of_closing_that_are_interrupted_lose_nothing)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= 4; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("close", at, EINTR, When::once);
        const Converted run = convert(one_event(12, {5, -3, 4}), {}, options);
        expect_undisturbed(run, whole_tree_with_logs(run));
    }
}

TEST_F(Faulty_calls, of_closing_a_finished_long_trace_that_are_interrupted_lose_nothing)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= 2; ++at) { // after the samples, after the final header
        SCOPED_TRACE(at);
        options.run = failing("close", at, EINTR, When::once);
        const Converted run = convert(event_of_a_long_trace(), {"-L-"}, options);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), long_trace()));
    }
}

TEST_F(Faulty_calls, of_writing_and_then_of_closing_one_file_are_told_once)
{
    ConvertOptions options;
    options.run = failing("close", 1, EIO, When::from_then_on);
    options.run.env.push_back("VX_FAULT_SPACE=0");
    const Converted run = convert(Sh("fine"), {}, options);
    EXPECT_EQ(run.status, 22);
    EXPECT_EQ(run.err, Cannot_write + "rec.vxl'" + Cannot_write + "ID9A2F.vxl'");
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", ""}, {"ID9A2F.vxl", ""}}));
}

TEST_F(Faulty_calls, for_a_large_buffer_leave_a_smaller_one)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing_buffers(at, When::once);
        const Converted run = convert(one_event(12, {5, -3, 4}), {}, options);
        expect_undisturbed(run, whole_tree_with_logs(run));
    }
}

TEST_F(Faulty_calls, for_every_buffer_but_the_first_make_all_files_share_that_one)
{
    ConvertOptions options;
    options.ini = Station_file;
    options.run = failing_buffers(2, When::from_then_on);
    const Converted run = convert(one_event(12, {5, -3, 4}), {}, options);
    expect_undisturbed(run, whole_tree_with_logs(run));
}

TEST_F(Faulty_calls, for_every_buffer_end_the_run_like_a_file_that_cannot_be_opened)
{
    ConvertOptions options;
    options.run = failing_buffers(1, When::from_then_on);
    const Converted with = convert(one_event(12, {5, -3, 4}), {}, options);
    EXPECT_EQ(with.status, 20);
    EXPECT_TRUE(ends_with(with.out, "\nFile open error for 'out/rec.vxl'")) << with.out;
    EXPECT_EQ(with.err, "");
    EXPECT_TRUE(same_tree(with.tree, {{"rec.vxl", ""}}));

    const Converted without = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
    EXPECT_EQ(without.status, 20);
    EXPECT_TRUE(ends_with(without.out,
                          "\n\nERROR!!!!\n   unable to open out/" + std::string(Name_1_1) + " for output."))
        << without.out;
    EXPECT_EQ(without.err, "");
    EXPECT_EQ(names(without.tree), "") << "a trace without a byte is none";
}

TEST_F(Faulty_calls, are_few_for_a_short_trace)
{
    ConvertOptions options;
    options.ini = Station_file;
    options.run = undisturbed();
    const Counted counted;
    const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, counted.with(options));
    expect_undisturbed(run, whole_tree());
    EXPECT_EQ(counted.opens(), 3U) << "input, station file, trace";
    EXPECT_EQ(counted.writes(), 1U);
    EXPECT_EQ(counted.closes(), 1U);
}

TEST_F(Faulty_calls, are_more_for_a_short_trace_that_gave_way_and_lead_to_the_same_bytes)
{
    Recording recording = Eh().event(12).usual();
    for (int round = 0; round < 3; ++round)
        for (unsigned c = 0; c < 3; ++c)
            recording += Dt().event(12).channel(c).samples({round, static_cast<int32_t>(c)});
    recording += Et().event(12).usual();
    ConvertOptions options;
    options.run = undisturbed();
    const Counted in_one, in_turn;
    const Converted once = convert(recording, {"-L-"}, in_one.with(options));
    options.run.limits = {{RLIMIT_NOFILE, 20}}; // two files at a time
    const Converted often = convert(recording, {"-L-"}, in_turn.with(options));
    EXPECT_EQ(in_one.writes(), 3U);
    EXPECT_EQ(in_turn.writes(), 3U * 3 + 3) << "a piece each time a trace gives way, then the header";
    EXPECT_TRUE(same_tree(often.tree, once.tree));
    EXPECT_TRUE(same_bytes(mask_run_date(once.file(Name_1_1)),
                           sac_file(Sac().rate(100).stats(0, 2, 0.5F), {0, 0, 1, 0, 2, 0})));
}

TEST_F(Faulty_calls, of_a_short_trace_that_lose_a_part_of_it_leave_a_beginning_of_it)
{
    const Converted whole = convert(one_event(12, {5, -3, 4}), {"-L-"});
    ConvertOptions options;
    options.run = undisturbed();
    options.run.env.push_back("VX_FAULT_SPACE=640");
    const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
    EXPECT_EQ(run.status, 22);
    EXPECT_TRUE(ends_with(run.out, Cannot_write + Name_1_1 + "'")) << run.out;
    EXPECT_TRUE(
        same_bytes(mask_run_date(run.file(Name_1_1)), mask_run_date(whole.file(Name_1_1)).substr(0, 640)));
}

/// A run on a terminal that ends without a word before its n-th reading of the input.
RunOptions on_terminal_until_read(unsigned n)
{
    RunOptions options = undisturbed();
    options.terminal = true;
    options.env.insert(options.env.end(),
                       {"VX_FAULT_KIND=read", "VX_FAULT_AT=" + std::to_string(n), "VX_FAULT_HOW=kill"});
    return options;
}

TEST_F(Faulty_calls, for_the_first_packet_come_after_the_terminal_shows_the_head_of_the_table)
{
    ConvertOptions options;
    options.run = on_terminal_until_read(1);
    const Converted run = convert(one_event(12, {1}), {}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(same_bytes(run.out, console_banner() + run_summary(settings_of(run)) + table_start()));
}

TEST_F(Faulty_calls, for_packets_of_no_known_type_do_not_keep_the_terminal_waiting)
{
    constexpr int In_one_piece = 256; ///< packets that are read at a time
    Recording recording = Fd() + Fd();
    recording.resize(size_t{Packet_len} * (In_one_piece + 1)); // with zeros
    ConvertOptions options;
    options.run = on_terminal_until_read(2);
    options.run.env.push_back("VX_FAULT_TICK=1"); // milliseconds: a terminal is served ten times a second
    const Converted run = convert(recording, {"-L-"}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    EXPECT_TRUE(ends_with(run.out, table_start() + progress_params(1, "FD") + progress_params(2, "FD")))
        << run.out;
}

TEST_F(Faulty_calls, for_the_next_packets_come_after_all_that_was_collected_for_a_second_is_written)
{
    // Every look at the clock takes a second: whatever is read comes after everything that was taken is
    // written.
    constexpr int In_one_piece = 256;
    Recording recording = Eh().event(12).usual() + Dt().event(12).samples({1, 2}) + Fd().unit(0x1234);
    recording.resize(size_t{Packet_len} * (In_one_piece + 1));
    ConvertOptions options;
    options.run = on_terminal_until_read(2);
    options.run.terminal = false;
    options.run.env.push_back("VX_FAULT_TICK=1000");
    const Converted run = convert(recording, {}, options);
    EXPECT_EQ(run.signal, SIGKILL);
    const std::string head = log_header(settings_of(run)), begin = head_line(event_line("EH", "0012", 0)),
                      other = head_line(plain_line("FD", 2, "1234"));
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", head + begin + head_line(data_line("0012", 2, 1)) + other},
                                     {"ID9A2F.vxl", head + begin + usual_dump()},
                                     {"ID1234.vxl", head + other},
                                     {Name_1_1, sac_header(Sac().rate(100)) + sac_samples({1, 2})}}));
    EXPECT_TRUE(ends_with(run.out, progress_params(3, "FD"))) << run.out;
}

/// Runs whose files have fewer descriptors than they want. That a file had to give way shows in how often
/// files are opened.
class Few_descriptors : public Faulty_calls {
protected:
    /// How often a run opens files that writes a sample to each of so many traces in turn, and then another
    /// one.
    static unsigned opens(const RunOptions& options, unsigned channels)
    {
        Recording recording = Eh().event(12).usual();
        for (const unsigned ms : {250U, 260U})
            for (unsigned c = 0; c < channels; ++c)
                recording += Dt().event(12).channel(c).ms(ms).samples({static_cast<int32_t>(c + ms)});
        recording += Et().event(12).usual();

        ConvertOptions all;
        all.run = options;
        uint32_t opened = 0;
        const Converted run = convert_counting_opens(recording, {"-L-"}, all, opened);
        EXPECT_EQ(run.sac_names().size(), channels);
        for (unsigned c = 0; c < channels; ++c) {
            const std::string name = "2004123101530250_STA01_1_" + std::string(1, "123456789ABC"[c]) + ".sac";
            const auto first = static_cast<float>(c + 250);
            EXPECT_EQ(samples_of(run.file(name)), (std::vector<float>{first, first + 10})) << name;
        }
        return opened;
    }

    /// So many files at a time: one more, and each is opened twice more, for its second sample and for its
    /// final header, since its first bytes are written by then.
    static void expect_at_a_time(unsigned files, const RunOptions& options)
    {
        EXPECT_EQ(opens(options, files), opens(undisturbed(), files));
        EXPECT_EQ(opens(options, files + 1), opens(undisturbed(), files + 1) + 2 * (files + 1));
    }
};

TEST_F(Few_descriptors, let_two_files_be_open_at_a_time_at_least)
{
    RunOptions options = undisturbed();
    options.limits = {{RLIMIT_NOFILE, 20}};
    expect_at_a_time(2, options);
}

TEST_F(Few_descriptors, of_a_number_that_cannot_be_learnt_let_eight_files_be_open_at_a_time)
{
    expect_at_a_time(8, failing("limit", 1, EPERM, When::once));
}

TEST_F(Few_descriptors, of_a_number_that_cannot_be_raised_are_shared_as_they_are)
{
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = 24 + 10; // 24 are for others
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    expect_at_a_time(10, failing("limit", 2, EPERM, When::once));
}

} // namespace
