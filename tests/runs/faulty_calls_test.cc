// Runs whose system calls fail at a chosen point: what they say, how they end, what they leave alone.
// proof/faults goes through every call in turn; here stand those that once went wrong.
#include "runs/common.h"

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
enum class WHEN { once, from_then_on };

/// A run whose calls of a kind fail, as "open", "read", "stat" and so on are named by the library.
RunOptions failing(const std::string& kind, unsigned at, int why, WHEN when)
{
    RunOptions options;
    options.timeout = 20;
    options.env = {std::string("LD_PRELOAD=") + Library, "VX_FAULT_KIND=" + kind,
                   "VX_FAULT_AT=" + std::to_string(at), "VX_FAULT_HOW=" + std::to_string(why),
                   std::string("VX_FAULT_ALWAYS=") + (when == WHEN::once ? "0" : "1")};
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

TEST_F(Faulty_calls, in_the_middle_of_the_station_file_end_the_run_instead_of_half_its_keys)
{
    ConvertOptions options;
    options.ini = std::string(5000, ';') + "\n" + Station_file;
    unsigned of_the_station_file = 0;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("read", at, EIO, WHEN::once);
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
            options.run = failing(kind, at, EINTR, WHEN::once);
            const Converted run = convert(one_event(12, {5, -3, 4}), {"-L-"}, options);
            EXPECT_EQ(run.status, 0);
            EXPECT_TRUE(same_tree(run.tree, whole_tree()));
        }
    }
}

TEST_F(Faulty_calls, that_look_for_the_station_file_do_not_make_it_vanish_unseen)
{
    ConvertOptions options;
    options.ini = Station_file;
    for (unsigned at = 1; at <= Calls; ++at) {
        SCOPED_TRACE(at);
        options.run = failing("stat", at, EIO, WHEN::from_then_on);
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
        options.run = failing("stat", at, EIO, WHEN::from_then_on);
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
            run_vx(scratch.dir(), {"out/rec.vxl", "out"}, failing("stat", at, EIO, WHEN::once));
        EXPECT_TRUE(run.status == 20 || run.status == 10) << run.status;
        EXPECT_TRUE(scratch.read("out/rec.vxl") == recording);
    }
}

} // namespace
