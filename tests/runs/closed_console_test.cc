// Runs without a console: the console texts are discarded and get into no file.
#include "runs/traces.h"

#include <cstdlib>
#include <sys/wait.h>

using namespace kit;
using namespace runs;

namespace {

constexpr int Packets = 1500; ///< enough that their console lines leave the program's buffer many times

Recording long_event()
{
    Recording middle;
    for (unsigned i = 1; i <= Packets; ++i) middle += data({1}).seq(i);
    return in_event(middle);
}

/// Runs the program from a shell that closes descriptors first. Returns the exit status.
int run_with(const std::string& closing, const Scratch& scratch)
{
    const std::string command =
        "cd '" + scratch.dir() + "' && '" VX_SAC_PROGRAM "' rec.pkt out -L- " + closing;
    const int status = system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class Closed_console : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Descriptors, Closed_console,
                         testing::Values(">&-", "<&- >&-", "<&- >&- 2>&-", "2>&- >/dev/null"));

TEST_P(Closed_console, leaves_the_traces_alone)
{
    Scratch scratch;
    scratch.make_dir("out");
    scratch.write("rec.pkt", long_event());
    EXPECT_EQ(run_with(GetParam(), scratch), 0);
    const std::vector<int32_t> ones(Packets, 1);
    EXPECT_EQ(scratch.tree("out").size(), 1U);
    const std::string trace = scratch.read(std::string("out/") + Name_1_1);
    EXPECT_EQ(trace.size(), 632U + 4U * Packets);
    EXPECT_TRUE(same_bytes(mask_run_date(trace), sac_file(usual_trace().stats(1, 1, 1), ones)));
}

TEST(Closed_descriptors, no_console_text_ends_up_in_the_run_wide_files)
{
    for (const std::string switches : {"-Q+ ", "-Q+ -L+ "}) {
        Scratch scratch;
        scratch.make_dir("out");
        scratch.write("rec.pkt", long_event());
        EXPECT_EQ(run_with(switches + ">&-", scratch), 0); // the next file opened would be the console
        for (const auto& [name, bytes] : scratch.tree("out"))
            EXPECT_EQ(bytes.find(progress_dt(2, "9A2F", 12, 1, 1)), std::string::npos) << name;
    }
}

} // namespace
