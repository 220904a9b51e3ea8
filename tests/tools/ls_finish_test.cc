// vx_ls --finish: headers completed by hand-written and by really killed runs, and all that stays untouched.
#include "ls/finish.h"
#include "tools/ls_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ls_test;

namespace {

constexpr int Patience_ms = 60000;
constexpr size_t Console_buffer = 65536; ///< bytes that the converter writes to its console at a time

/// As if nobody had touched the files for a minute.
void age(const kit::Scratch& scratch)
{
    const auto then = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1);
    for (const auto& e : std::filesystem::recursive_directory_iterator(scratch.dir()))
        if (e.is_regular_file()) std::filesystem::last_write_time(e.path(), then);
}

/// Of files that have been left in peace.
kit::Outcome finish(const kit::Scratch& scratch, const std::string& path = ".",
                    const kit::RunOptions& options = {})
{
    age(scratch);
    return run_ls(scratch, {"--finish", path}, options);
}

struct stat stat_of(const std::string& path)
{
    struct stat what {};
    EXPECT_EQ(stat(path.c_str(), &what), 0) << path;
    return what;
}

/// A pair of sockets, the second one for the converter's console. They hold a few thousand bytes that nobody
/// has read yet: much less than a console buffer, where a pipe may hold a whole one.
void make_narrow_console(int console[2])
{
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, console), 0);
    const int few = 4096;
    ASSERT_EQ(setsockopt(console[0], SOL_SOCKET, SO_RCVBUF, &few, sizeof few), 0);
    ASSERT_EQ(setsockopt(console[1], SOL_SOCKET, SO_SNDBUF, &few, sizeof few), 0);
}

pid_t start_converter(const kit::Scratch& scratch, const std::string& out, const int console[2])
{
    const pid_t child = fork();
    if (child != 0) return child;
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, 0);
    dup2(console[1], 1);
    close(console[0]);
    close(console[1]);
    alarm(100);
    if (chdir(scratch.dir().c_str()) == 0)
        execl(VX_SAC_PROGRAM, "vx_sac", "rec.pkt", out.c_str(), "-L-", static_cast<char*>(nullptr));
    _exit(127);
}

void read_bytes(int fd, size_t wanted)
{
    std::vector<char> bytes(wanted);
    for (size_t got = 0; got < wanted;) {
        pollfd ready = {fd, POLLIN, 0};
        ASSERT_EQ(poll(&ready, 1, Patience_ms), 1) << "the run writes nothing more";
        const ssize_t n = read(fd, bytes.data() + got, wanted - got);
        ASSERT_GT(n, 0) << "the run ended by itself";
        got += static_cast<size_t>(n);
    }
}

bool is_unfinished(const std::string& trace)
{
    return trace.size() > 632 && kit::header_int(trace, NPTS) == 0;
}

size_t unfinished_in(const kit::Tree& tree)
{
    return static_cast<size_t>(
        std::count_if(tree.begin(), tree.end(), [](const auto& file) { return is_unfinished(file.second); }));
}

/// A converter that stands still in the middle of its work.
struct HeldRun {
    pid_t child = -1;
    int console = -1;
};

/// Starts the converter and holds it while it writes its console buffer number `buffer`, counted from 0. The
/// first byte of that buffer is read, and the socket is too narrow for the rest: the run has stopped, always
/// at the same packet. Its thread that writes the files goes on; the hold waits until it has written samples.
void convert_and_hold(const kit::Scratch& scratch, const std::string& out, size_t buffer, HeldRun& run)
{
    scratch.make_dir(out);
    int console[2];
    ASSERT_NO_FATAL_FAILURE(make_narrow_console(console));
    run.child = start_converter(scratch, out, console);
    run.console = console[0];
    close(console[1]);
    ASSERT_NO_FATAL_FAILURE(read_bytes(run.console, buffer * Console_buffer + 1));
    for (int ms = 0; unfinished_in(scratch.tree(out)) == 0; ++ms, usleep(1000)) ASSERT_LT(ms, Patience_ms);
    int state = 0;
    kill(run.child, SIGSTOP);
    ASSERT_EQ(waitpid(run.child, &state, WUNTRACED), run.child);
    ASSERT_TRUE(WIFSTOPPED(state));
}

void convert_and_kill(const kit::Scratch& scratch, const std::string& out, size_t buffer)
{
    HeldRun run;
    ASSERT_NO_FATAL_FAILURE(convert_and_hold(scratch, out, buffer, run));
    kill(run.child, SIGKILL);
    int state = 0;
    waitpid(run.child, &state, 0);
    close(run.console);
    ASSERT_TRUE(WIFSIGNALED(state) && WTERMSIG(state) == SIGKILL) << state;
}

/// The exit status of a run that goes on to its end.
int let_go(const HeldRun& run)
{
    kill(run.child, SIGCONT);
    char bytes[4096];
    while (read(run.console, bytes, sizeof bytes) > 0) {
    }
    close(run.console);
    int state = 0;
    waitpid(run.child, &state, 0);
    return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
}

void make_long_recording(const kit::Scratch& scratch)
{
    kit::RunOptions maker;
    maker.program = VX_MKREC_PROGRAM;
    const kit::Outcome run = kit::run_vx(scratch.dir(),
                                         {"--units", "1", "--streams", "2", "--channels", "2", "--events",
                                          "3", "--size", "5M", "--interleave", "rec.pkt"},
                                         maker);
    ASSERT_EQ(run.status, 0);
}

/// Starts --finish, holds it while it is copying, lets `meddle` change the file meanwhile, and lets it go on.
/// False when it was too fast to be held.
bool finish_while(const kit::Scratch& scratch, const char* option, const std::function<void()>& meddle,
                  int& status)
{
    const auto copied = [&] { // bytes, 0 while there is no copy
        std::error_code gone;
        std::uintmax_t size = 0;
        for (const auto& e : std::filesystem::directory_iterator(scratch.dir()))
            if (e.path().filename().string().starts_with(".vx_ls-")) size = e.file_size(gone);
        return gone ? 0 : size;
    };
    age(scratch);
    const pid_t child = fork();
    if (child == 0) {
        alarm(100);
        if (chdir(scratch.dir().c_str()) == 0 && freopen("err", "w", stderr) && freopen("out", "w", stdout))
            execl(VX_LS_PROGRAM, "vx_ls", "--finish", option, "a.sac", static_cast<char*>(nullptr));
        _exit(127);
    }
    int state = 0;
    while (copied() == 0) {
        if (waitpid(child, &state, WNOHANG) == child) return false;
        usleep(200);
    }
    kill(child, SIGSTOP);
    if (waitpid(child, &state, WUNTRACED) != child || !WIFSTOPPED(state)) return false;
    const bool held = copied() < std::filesystem::file_size(scratch.path("a.sac"));
    if (held) meddle();
    kill(child, SIGCONT);
    waitpid(child, &state, 0);
    status = WEXITSTATUS(state);
    return held;
}

/// Until it was held in time; a fast machine may need a few attempts.
std::string error_after(const kit::Scratch& scratch, const char* option, const std::function<void()>& meddle)
{
    for (int i = 0; i < 20; ++i) {
        int status = 0;
        scratch.write("a.sac", unfinished());
        std::filesystem::resize_file(scratch.path("a.sac"), 100'000'000);
        if (!finish_while(scratch, option, meddle, status)) continue;
        EXPECT_EQ(status, 1);
        return scratch.read("err");
    }
    ADD_FAILURE() << "never held while it was copying";
    return "";
}

/// The header's statistics, as they follow from the samples.
std::string with_statistics(std::string header, const std::vector<float>& samples)
{
    double sum = 0;
    float least = samples[0], most = samples[0];
    for (const float v : samples) {
        sum += static_cast<double>(v);
        least = std::fmin(least, v);
        most = std::fmax(most, v);
    }
    header = with_float(with_float(header, DEPMIN, least), DEPMAX, most);
    header = with_float(header, DEPMEN, static_cast<float>(sum / static_cast<double>(samples.size())));
    return with_word(header, NPTS, static_cast<uint32_t>(samples.size()));
}

} // namespace

class Ls_finish_killed : public testing::TestWithParam<size_t> {};
INSTANTIATE_TEST_SUITE_P(Console_buffers, Ls_finish_killed, testing::Values(0, 1, 2, 3));

TEST_P(Ls_finish_killed, a_killed_runs_traces_become_the_starts_of_the_whole_runs)
{
    const kit::Scratch s;
    ASSERT_NO_FATAL_FAILURE(make_long_recording(s));
    s.make_dir("whole");
    const kit::Outcome whole_run = kit::run_vx(s.dir(), {"rec.pkt", "whole", "-L-"});
    ASSERT_EQ(whole_run.status, 0);
    ASSERT_GT(whole_run.out.size(), (GetParam() + 1) * Console_buffer) << "the run ends before it is killed";
    ASSERT_NO_FATAL_FAILURE(convert_and_kill(s, "killed", GetParam()));
    const kit::Tree whole = s.tree("whole"), killed = s.tree("killed");

    const kit::Outcome run = finish(s, "killed");
    const kit::Tree after = s.tree("killed");
    EXPECT_EQ(kit::names(after), kit::names(killed));
    size_t finished = 0, without_header = 0;
    for (const auto& [name, bytes] : killed) {
        ASSERT_TRUE(whole.count(name)) << name;
        const std::string expected = kit::mask_run_date(whole.at(name));
        const std::string now = after.at(name);
        if (bytes.size() < 632) {
            EXPECT_TRUE(kit::same_bytes(now, bytes));
            EXPECT_NE(run.err.find(name + ": shorter than a SAC header"), std::string::npos) << run.err;
            ++without_header;
        } else if (is_unfinished(bytes)) {
            ASSERT_GE(now.size(), 636U);
            const std::vector<float> samples = kit::samples_of(now);
            EXPECT_EQ(samples.size(), (bytes.size() - 632) / 4);
            const std::string start = with_statistics(expected.substr(0, now.size()), samples);
            EXPECT_TRUE(kit::same_bytes(kit::mask_run_date(now), start)) << name;
            ++finished;
        } else {
            EXPECT_TRUE(kit::same_bytes(now, bytes)) << name;
        }
    }
    EXPECT_GT(finished, 0U);
    EXPECT_EQ(run.status, without_header == 0 ? 0 : 1) << run.err;
    EXPECT_NE(run.out.find(std::to_string(finished) + " finished, "), std::string::npos) << run.out;
    EXPECT_EQ(finish(s, "killed").out.substr(0, 11), "0 finished,");
}

#ifdef F_SETLEASE
TEST(Ls_finish, a_converter_that_is_held_loses_nothing)
{
    const kit::Scratch s;
    ASSERT_NO_FATAL_FAILURE(make_long_recording(s));
    s.make_dir("whole");
    ASSERT_EQ(kit::run_vx(s.dir(), {"rec.pkt", "whole", "-L-"}).status, 0);
    HeldRun held;
    ASSERT_NO_FATAL_FAILURE(convert_and_hold(s, "live", 1, held));
    const kit::Tree before = s.tree("live");
    const kit::Outcome run = finish(s, "live");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.substr(0, 11), "0 finished,");
    const std::string why =
        ": unfinished, but another program has it open for writing; left as it is (--force finishes it)";
    for (const auto& [name, bytes] : before) {
        if (!is_unfinished(bytes)) continue;
        EXPECT_NE(run.err.find(name + why), std::string::npos) << run.err;
    }
    EXPECT_EQ(s.tree("live"), before);
    EXPECT_EQ(let_go(held), 0);
    const kit::Tree whole = s.tree("whole"), live = s.tree("live");
    EXPECT_EQ(kit::names(live), kit::names(whole));
    for (const auto& [name, bytes] : whole)
        EXPECT_TRUE(kit::same_bytes(kit::mask_run_date(live.at(name)), kit::mask_run_date(bytes))) << name;
}

TEST(Ls_finish, a_trace_that_somebody_has_open_for_writing_is_finished_only_by_force)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    const int writer = open(s.path("a.sac").c_str(), O_WRONLY | O_APPEND);
    EXPECT_EQ(finish(s).err,
              "vx_ls: a.sac: unfinished, but another program has it open for writing; left as it is "
              "(--force finishes it)\n");
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), unfinished()));
    EXPECT_EQ(run_ls(s, {"--finish", "--force", "."}).status, 0);
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
    close(writer);
}

TEST(Ls_finish, a_writer_who_comes_meanwhile_stops_it)
{
    const kit::Scratch s;
    int writer = -1;
    const std::string err =
        error_after(s, "--", [&] { // without O_NONBLOCK it would wait for the end of the lease
            writer = open(s.path("a.sac").c_str(), O_WRONLY | O_NONBLOCK);
            EXPECT_EQ(errno, EWOULDBLOCK);
        });
    EXPECT_EQ(err, "vx_ls: a.sac: another program is opening it for writing; left as it is\n");
    EXPECT_EQ(writer, -1);
    EXPECT_EQ(kit::names(s.tree()), "a.sac\nerr\nout\n");
}

TEST(Ls_finish, what_a_writer_writes_who_had_to_wait_is_not_lost)
{
    const kit::Scratch s;
    std::future<bool> written;
    error_after(s, "--", [&] {
        written = std::async(std::launch::async, [&] {
            const int writer = open(s.path("a.sac").c_str(), O_WRONLY | O_APPEND);
            const bool well = write(writer, "more", 4) == 4;
            close(writer);
            return well;
        });
        usleep(100'000); // until it waits
    });
    EXPECT_TRUE(written.get());
    EXPECT_EQ(std::filesystem::file_size(s.path("a.sac")), 100'000'004U);
}

TEST(Ls_finish, a_trace_that_nobody_can_ask_about_is_left_as_it_is)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs a file of somebody else";
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    ASSERT_EQ(chmod(s.dir().c_str(), 0777), 0);
    kit::RunOptions nobody;
    nobody.as_nobody = true;
    const kit::Outcome run = finish(s, "a.sac", nobody);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: a.sac: unfinished, but the check for writers failed: Permission "
                       "denied; left as it is (--force finishes it)\n");
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), unfinished()));
}
#endif

TEST(Ls_finish, a_trace_just_changed_is_finished_only_by_force)
{
    const kit::Scratch s;
    const auto now = std::filesystem::file_time_type::clock::now();
    const auto finish_changed = [&](int seconds_ago) {
        s.write("a.sac", unfinished());
        std::filesystem::last_write_time(s.path("a.sac"), now - std::chrono::seconds(seconds_ago));
        return run_ls(s, {"--finish", "a.sac"});
    };
    EXPECT_EQ(finish_changed(3).err,
              "vx_ls: a.sac: unfinished, but changed within the last ten seconds; left as it is "
              "(--force finishes it)\n");
    EXPECT_EQ(finish_changed(-100).err,
              "vx_ls: a.sac: unfinished, but its time of change is in the future; left as it is "
              "(--force finishes it)\n");
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), unfinished()));
    EXPECT_EQ(finish_changed(12).status, 0);
    s.write("a.sac", unfinished());
    EXPECT_EQ(run_ls(s, {"--finish", "--force", "a.sac"}).status, 0);
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
}

TEST(Ls_finish, a_dry_run_tells_what_would_be_done_and_changes_nothing)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    s.write("b.sac", finished());
    age(s);
    const ino_t node = stat_of(s.path("a.sac")).st_ino;
    const kit::Outcome run = run_ls(s, {"--finish", "--dry-run", "."});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "a.sac: would be finished: 3 samples, minimum -3, maximum 5, mean 2\n"
                       "1 would be finished, 1 left as they were, 0 could not be read or finished\n");
    EXPECT_EQ(s.tree(), (kit::Tree{{"a.sac", unfinished()}, {"b.sac", finished()}}));
    EXPECT_EQ(stat_of(s.path("a.sac")).st_ino, node);
    s.write("a.sac", unfinished());
    EXPECT_NE(run_ls(s, {"--finish", "--dry-run", "."}).err.find("within the last ten seconds"),
              std::string::npos);
}

TEST(Ls_finish, completes_the_header_as_the_converter_would_have)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "a.sac: finished: 3 samples, minimum -3, maximum 5, mean 2\n"
                       "1 finished, 0 left as they were, 0 could not be read or finished\n");
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
    EXPECT_EQ(s.tree().size(), 1U); // nothing beside it
}

TEST(Ls_finish, an_undefined_count_is_completed_too_and_so_is_the_other_byte_order)
{
    const kit::Scratch s;
    s.write("a.sac", with_word(unfinished(), NPTS, static_cast<uint32_t>(-12345)));
    s.write("b.sac", little_endian(unfinished()));
    EXPECT_EQ(finish(s).status, 0);
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
    EXPECT_TRUE(kit::same_bytes(s.read("b.sac"), little_endian(finished())));
}

TEST(Ls_finish, drops_the_start_of_a_sample_and_shows_its_bytes)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished() + "\x44\x9A\x01");
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("mean 2; dropped an incomplete last sample: 44 9a 01\n"), std::string::npos)
        << run.out;
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
}

TEST(Ls_finish, a_trace_longer_than_the_buffer_is_summed_over_its_whole_length)
{
    const kit::Scratch s;
    std::vector<int32_t> samples(100001, 1);
    samples[16383] = 1000;
    samples[16384] = -1000;
    samples[100000] = 100001;
    kit::Sac sac;
    sac.rate(100);
    s.write("a.sac", with_word(kit::sac_file(sac, samples), NPTS, 0) + "xy");
    EXPECT_EQ(finish(s).status, 0);
    sac.stats(-1000, 100001, static_cast<float>((99998.0 + 100001.0) / 100001.0));
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), kit::sac_file(sac, samples)));
}

TEST(Ls_finish, sums_are_doubles_in_the_order_of_the_file)
{
    ls::Sums sums;
    for (const float v : {16777216.0F, 1.0F, 1.0F}) sums.add(v); // in single precision the ones would be lost
    EXPECT_EQ(sums.result().mean, static_cast<float>(16777218.0 / 3));
    ls::Sums wide;
    for (const float v : {1e20F, 1.0F, -1e20F}) wide.add(v);
    EXPECT_EQ(wide.result().mean, 0.0F);
}

TEST(Ls_finish, the_extremes_start_where_the_converters_do)
{
    ls::Sums none, low, high;
    EXPECT_EQ(none.result().least, 2147483648.0F);
    EXPECT_EQ(none.result().most, -2147483648.0F);
    EXPECT_EQ(none.result().mean, 0.0F);
    low.add(-2147483648.0F);
    EXPECT_EQ(low.result().most, -2147483648.0F);
    high.add(2147483648.0F);
    EXPECT_EQ(high.result().least, 2147483648.0F);
}

TEST(Ls_finish, never_touches_what_is_not_unfinished)
{
    const kit::Scratch s;
    s.write("cut.sac", finished().substr(0, 640));
    s.write("empty.sac", unfinished().substr(0, 632));
    s.write("extra.sac", finished() + "more");
    s.write("good.sac", finished());
    s.write("qc.sac", with_word(unfinished(), NPTS, 3));
    const kit::Tree before = s.tree();
    std::vector<ino_t> nodes;
    for (const auto& [name, bytes] : before) nodes.push_back(stat_of(s.path(name)).st_ino);
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "0 finished, 5 left as they were, 0 could not be read or finished\n");
    EXPECT_EQ(s.tree(), before);
    for (const auto& [name, bytes] : before) {
        EXPECT_EQ(stat_of(s.path(name)).st_ino, nodes[0]) << name;
        nodes.erase(nodes.begin());
    }
}

TEST(Ls_finish, tells_what_it_cannot_finish_and_leaves_it_as_it_is)
{
    const kit::Scratch s;
    s.write("a.sac", "");
    s.write("b.sac", std::string(700, 'x'));
    s.write("c.sac", with_float(unfinished(), SECOND_SAMPLE, std::nanf("")));
    s.write("d.sac", with_word(unfinished(), IFTYPE, 2));
    s.write("e.sac", with_word(unfinished(), LEVEN, 0));
    const kit::Tree before = s.tree();
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "0 finished, 0 left as they were, 5 could not be read or finished\n");
    EXPECT_EQ(run.err, "vx_ls: a.sac: shorter than a SAC header: 0 bytes\n"
                       "vx_ls: b.sac: not a SAC file\n"
                       "vx_ls: c.sac: unfinished, but sample 2 is not a number; left as it is\n"
                       "vx_ls: d.sac: unfinished, but not an evenly spaced time series\n"
                       "vx_ls: e.sac: unfinished, but not an evenly spaced time series\n");
    EXPECT_EQ(s.tree(), before);
}

TEST(Ls_finish, does_not_put_a_file_in_the_place_of_a_link)
{
    const kit::Scratch s;
    s.write("store/a.dat", unfinished());
    std::filesystem::create_symlink("store/a.dat", s.path("a.sac"));
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: a.sac: unfinished, but a symbolic link; name the file itself\n");
    EXPECT_TRUE(std::filesystem::is_symlink(s.path("a.sac")));
    EXPECT_TRUE(kit::same_bytes(s.read("store/a.dat"), unfinished()));
    EXPECT_EQ(finish(s, "store/a.dat").status, 0);
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), finished()));
}

TEST(Ls_finish, keeps_mode_and_owner)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    s.write("b.sac", unfinished());
    ASSERT_EQ(chmod(s.path("a.sac").c_str(), 0640), 0);
    ASSERT_EQ(chmod(s.path("b.sac").c_str(), 0464), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(s.path("b.sac").c_str(), 65534, 65534), 0);
    }
    const struct stat before = stat_of(s.path("b.sac"));
    kit::RunOptions strict;
    strict.mask = 0077;
    ASSERT_EQ(finish(s, ".", strict).status, 0);
    EXPECT_EQ(stat_of(s.path("a.sac")).st_mode & 07777, 0640U);
    EXPECT_EQ(stat_of(s.path("b.sac")).st_mode & 07777, 0464U);
    EXPECT_EQ(stat_of(s.path("b.sac")).st_uid, before.st_uid);
    EXPECT_EQ(stat_of(s.path("b.sac")).st_gid, before.st_gid);
}

TEST(Ls_finish, a_trace_that_grows_meanwhile_is_left_as_it_is_even_with_force)
{
    const kit::Scratch s;
    const std::string err = error_after(s, "--force", [&] {
        std::ofstream more(s.path("a.sac"), std::ios::binary | std::ios::app);
        more << "more";
    });
    EXPECT_EQ(err, "vx_ls: a.sac: changed while it was read; left as it is\n");
    EXPECT_EQ(std::filesystem::file_size(s.path("a.sac")), 100'000'004U);
    EXPECT_EQ(kit::names(s.tree()), "a.sac\nerr\nout\n");
}

TEST(Ls_finish, a_trace_whose_name_goes_to_another_file_meanwhile_is_left_as_it_is)
{
    const kit::Scratch s;
    const std::string err = error_after(s, "--", [&] {
        std::filesystem::rename(s.path("a.sac"), s.path("old.sac"));
        s.write("a.sac", "new");
    });
    EXPECT_EQ(err, "vx_ls: a.sac: changed while it was read; left as it is\n");
    EXPECT_EQ(s.read("a.sac"), "new");
}

TEST(Ls_finish, a_full_medium_leaves_the_file_and_nothing_beside_it)
{
    const kit::Scratch s;
    std::string large = unfinished();
    large.resize(300000, '\0');
    s.write("a.sac", large);
    kit::RunOptions small;
    small.limits = {{RLIMIT_FSIZE, 100000}};
    const kit::Outcome run = finish(s, ".", small);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: a.sac: File too large\n");
    EXPECT_EQ(s.tree().size(), 1U);
    EXPECT_TRUE(kit::same_bytes(s.read("a.sac"), large));
}

TEST(Ls_finish, works_alike_when_the_caller_closed_the_standard_descriptors)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    s.write("b.sac", unfinished());
    age(s);
    const std::string command = "cd '" + s.dir() + "' && '" VX_LS_PROGRAM "' --finish . <&- >&- 2>&-";
    const int status = system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(s.tree(), (kit::Tree{{"a.sac", finished()}, {"b.sac", finished()}}));
}

TEST(Ls_finish, needs_the_same_memory_for_a_large_file)
{
    const kit::Scratch s;
    s.write("a.sac", unfinished());
    std::filesystem::resize_file(s.path("a.sac"), 100'000'000);
    const kit::Outcome run = finish(s);
    EXPECT_EQ(run.status, 0);
    EXPECT_LT(run.peak_kb, 80000); // the sanitizers' own included
    EXPECT_EQ(std::filesystem::file_size(s.path("a.sac")), 100'000'000U);
    EXPECT_EQ(list(s)[0]["npts"], (100'000'000 - 632) / 4);
}
