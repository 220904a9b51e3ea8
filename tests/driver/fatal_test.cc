// Early endings: their texts, their statuses, and what is closed on the way.
#include "driver/base/fatal.h"

#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using kit::expect_ending;

/// What a message with a name, and one without, must look like.
void expect_named(uint8_t code, const std::string& before, const std::string& behind)
{
    expect_ending([=] { shut_down(code, "the name"); }, code, before + "the name" + behind);
    expect_ending([=] { shut_down(code, nullptr); }, code, before + "(null)" + behind);
}
void expect_plain(uint8_t code, const std::string& message)
{
    expect_ending([=] { shut_down(code, "the name"); }, code, message);
    expect_ending([=] { shut_down(code, nullptr); }, code, message);
}

/// The run-wide files, open in a directory of their own.
class Run_wide_files : public testing::Test {
protected:
    ~Run_wide_files() override
    {
        FdIn = nullptr;
        out_close(FdLog);
        out_close(FdQcc);
    }
    void open_input() { FdIn = fopen(scratch.write("in", "packets").c_str(), "rb"); }
    void open_log() { EXPECT_TRUE(out_open(FdLog, log.c_str(), OUT_MODE::truncate, log_lost)); }
    void open_qcc() { EXPECT_TRUE(out_open(FdQcc, qcc.c_str(), OUT_MODE::truncate, log_lost)); }

    kit::Scratch scratch;
    std::string log = scratch.path("log"), qcc = scratch.path("qcc");
};

TEST(shut_down, names_what_went_wrong)
{
    expect_named(10, "\nUnable to change to directory '", "'");
    expect_named(20, "\nFile open error for '", "'");
    expect_named(21, "\nFile read error for '", "'");
    expect_named(22, "\nFile write error for '", "'");
    expect_named(23, "\nERROR: unable to generate a unique filename '", "'");
    expect_named(40, "\nMemory allocation error for '", "'");
}

TEST(shut_down, some_messages_have_no_name)
{
    expect_plain(1, "\nProgram aborted by user");
    expect_plain(29, "\nUnexpected end of file error on input");
    expect_plain(41, "\nMemory linkage error");
}

TEST(shut_down, keeps_the_messages_of_the_disk_reading_tool)
{
    expect_plain(130, "\nSCSI RESET error");
    expect_plain(131, "\nSCSI READY error");
    expect_plain(132, "\nSCSI MODE error");
    expect_plain(133, "\nSCSI LOW-LEVEL FORMAT error");
    expect_plain(134, "\nSCSI VEXAR FORMAT error");
    expect_plain(135, "\nSCSI READ error");
    expect_plain(136, "\nSCSI WRITE error");
}

TEST(shut_down, any_other_code_is_an_unknown_error)
{
    for (const int code : {0, 2, 11, 24, 39, 42, 129, 137, 255})
        expect_named(static_cast<uint8_t>(code), "\nUnknown error: processing terminated. (", ")");
}

TEST(shut_down, prints_a_name_as_it_stands)
{
    expect_ending([] { shut_down(20, "100%s%n%%/a'b\x1B[0m"); }, 20,
                  "\nFile open error for '100%s%n%%/a'b\x1B[0m'");
    expect_ending([] { shut_down(10, ""); }, 10, "\nUnable to change to directory ''");
    const std::string long_name(5000, 'n');
    expect_ending([&] { shut_down(20, long_name.c_str()); }, 20, "\nFile open error for '" + long_name + "'");
}

TEST(shut_down, leaves_the_code_in_the_status_byte)
{
    void* shared = mmap(nullptr, 2, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    uint8_t* bytes = static_cast<uint8_t*>(shared);
    bytes[0] = 'E', bytes[1] = 'H';
    expect_ending([=] { shut_down(130, nullptr, bytes); }, 130, "\nSCSI RESET error");
    EXPECT_EQ(bytes[0], 130);
    EXPECT_EQ(bytes[1], 'H');
    munmap(shared, 2);
}

TEST(shut_down, keeps_what_was_shown_before)
{
    expect_ending(
        [] {
            printf("\r0000001");
            shut_down(21, nullptr);
        },
        21, "\r0000001\nFile read error for '(null)'");
}

/// What comes up after a file has lost bytes that the writing thread was given.
void end_after_a_loss(const std::string& path, ON_LOSS on_loss, void (*ending)())
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit size{};
    if (getrlimit(RLIMIT_FSIZE, &size) != 0) _exit(99);
    size.rlim_cur = 1'500'000; // the thread is there by then
    if (setrlimit(RLIMIT_FSIZE, &size) != 0) _exit(98);
    OUT_FILE file;
    if (!out_open(file, path.c_str(), OUT_MODE::truncate, on_loss)) _exit(97);
    file.write(std::string(2'000'000, 'x'));
    ending();
}

TEST(Every_ending, is_for_a_trace_that_lost_bytes_before)
{
    void (*const endings[])() = {[] { shut_down(21, nullptr); }, end_without_event_memory,
                                 end_without_channel_memory, end_without_name,
                                 [] { end_without_trace("another"); }};
    const kit::Scratch scratch;
    const std::string path = scratch.path("trace");
    for (const auto ending : endings)
        expect_ending([&] { end_after_a_loss(path, trace_lost, ending); }, 22,
                      "\nFile write error for '" + path + "'");
}

TEST(Every_ending, keeps_its_status_where_a_log_lost_bytes_before)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("log");
    expect_ending([&] { end_after_a_loss(path, log_lost, end_without_name); }, 23,
                  "\n\nERROR!!!!!\n   Unable to create an unique filename.",
                  "\nFile write error for '" + path + "'");
}

TEST_F(Run_wide_files, are_whole_after_a_fatal_error)
{
    expect_ending(
        [&] {
            open_input();
            open_log();
            open_qcc();
            FdLog.write("a line\r\n");
            FdQcc.write("some statistics");
            shut_down(21, nullptr);
        },
        21, "\nFile read error for '(null)'");
    EXPECT_EQ(scratch.read("log"), "a line\r\n");
    EXPECT_EQ(scratch.read("qcc"), "some statistics");
}

TEST_F(Run_wide_files, that_lost_bytes_do_not_change_the_status_of_a_fatal_error)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    log = "/dev/full";
    expect_ending(
        [&] {
            open_log();
            FdLog.write("a line\r\n");
            shut_down(21, nullptr);
        },
        21, "\nFile read error for '(null)'", "\nFile write error for '/dev/full'");
}

TEST_F(Run_wide_files, fcloseall_counts_what_it_closes)
{
    for (unsigned which = 0; which < 8; ++which) {
        FdIn = nullptr;
        if (which & 1) open_input();
        if (which & 2) open_log();
        if (which & 4) open_qcc();
        EXPECT_EQ(vx::fcloseall(), (which & 1) + (which >> 1 & 1) + (which >> 2 & 1)) << which;
    }
}

TEST_F(Run_wide_files, fcloseall_writes_what_is_collected)
{
    open_log();
    open_qcc();
    FdLog.write("log");
    FdQcc.write("qcc");
    EXPECT_EQ(vx::fcloseall(), 2);
    EXPECT_EQ(scratch.read("log"), "log");
    EXPECT_EQ(scratch.read("qcc"), "qcc");
}

TEST_F(Run_wide_files, fcloseall_leaves_other_files_alone)
{
    OUT_FILE unit;
    const std::string name = scratch.path("unit");
    EXPECT_TRUE(out_open(unit, name.c_str(), OUT_MODE::append, log_lost));
    unit.write("x");
    EXPECT_EQ(vx::fcloseall(), 0);
    EXPECT_TRUE(unit.open);
    out_close(unit);
    EXPECT_EQ(scratch.read("unit"), "x");
}

TEST_F(Run_wide_files, gen_error_says_so_and_closes_them)
{
    open_log();
    open_qcc();
    uint16_t result = 99;
    EXPECT_EQ(kit::shown_by([&] { result = gen_error(); }), "\r\n\n!!!ERROR!!! Processing halted.\n");
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(FdLog.open);
    EXPECT_FALSE(FdQcc.open);
}

TEST_F(Run_wide_files, are_whole_after_an_end_without_a_name_or_a_trace)
{
    expect_ending(
        [&] {
            open_log();
            FdLog.write("first");
            end_without_name();
        },
        23, "\n\nERROR!!!!!\n   Unable to create an unique filename.");
    EXPECT_EQ(scratch.read("log"), "first");
    expect_ending(
        [&] {
            open_log();
            FdLog.write("second");
            end_without_trace("out/2004_123/x.sac");
        },
        20, "\n\nERROR!!!!\n   unable to open out/2004_123/x.sac for output.");
    EXPECT_EQ(scratch.read("log"), "second");
}

TEST_F(Run_wide_files, are_whole_after_an_end_without_memory)
{
    expect_ending(
        [&] {
            open_log();
            FdLog.write("first");
            end_without_event_memory();
        },
        255, "\n\nOut of Heap allocating Event pointer");
    EXPECT_EQ(scratch.read("log"), "first");
    expect_ending(
        [&] {
            open_log();
            FdLog.write("second");
            end_without_channel_memory();
        },
        40, " Out of Heap allocating CHNLST_T pointer");
    EXPECT_EQ(scratch.read("log"), "second");
}

TEST(c_break, is_an_abort_by_the_user)
{
    expect_ending([] { c_break(); }, 1, "\nProgram aborted by user");
}

/// Standard input holds this text, then ends.
void type_in(const std::string& text)
{
    static const kit::Scratch scratch;
    ASSERT_NE(freopen(scratch.write("typed", text).c_str(), "rb", stdin), nullptr);
}

TEST(open_file, appends_to_what_is_there)
{
    const kit::Scratch scratch;
    const std::string path = scratch.write("log", "old\r\n");
    OUT_FILE file;
    open_file(file, path.c_str());
    file.write("new\r\n");
    out_close(file);
    EXPECT_EQ(scratch.read("log"), "old\r\nnew\r\n");
}

TEST(open_file, creates_what_is_missing)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("log");
    OUT_FILE file;
    open_file(file, path.c_str());
    EXPECT_TRUE(file.open);
    out_close(file);
    EXPECT_EQ(scratch.read("log"), "");
}

TEST(open_file, ends_the_run_after_five_seconds_naming_the_file_that_cannot_be_opened)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("none/log");
    const auto start = std::chrono::steady_clock::now();
    expect_ending(
        [&] {
            OUT_FILE file;
            open_file(file, path.c_str());
        },
        20, "\nFile open error for '" + path + "'");
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited.count(), 4.95);
    EXPECT_LT(waited.count(), 7.5);
}

TEST(open_file, a_byte_lost_is_told_and_shows_in_the_status)
{
    expect_ending(
        [] {
            OUT_FILE file;
            open_file(file, "/dev/full");
            file.write("x");
            out_close(file);
            printf("the run goes on");
            end_run(0);
        },
        22, "the run goes on", "\nFile write error for '/dev/full'");
}

/// A person at a terminal, which becomes standard input.
class Terminal {
public:
    Terminal()
    {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return;
        const int slave = open(ptsname(master), O_RDWR | O_NOCTTY);
        if (slave < 0) return;
        dup2(slave, STDIN_FILENO);
        close(slave);
        clearerr(stdin);
        is_there = isatty(STDIN_FILENO) != 0;
    }
    ~Terminal() { close(master); }
    void type(std::string_view text) const
    {
        EXPECT_EQ(write(master, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    int master = -1;
    bool is_there = false;
};

TEST(any_key, prompts_on_standard_error_and_gives_the_character_typed_at_a_terminal)
{
    const Terminal terminal;
    ASSERT_TRUE(terminal.is_there);
    terminal.type("yx\n");
    uint16_t key = 0;
    std::string shown;
    const std::string prompt = kit::complained_by([&] { shown = kit::shown_by([&] { key = any_key(); }); });
    EXPECT_EQ(prompt, "\r\nPress ENTER/RETURN to continue.");
    EXPECT_EQ(shown, "");
    EXPECT_EQ(key, 'y');
}

TEST(any_key, reads_one_character_at_a_time)
{
    const Terminal terminal;
    ASSERT_TRUE(terminal.is_there);
    terminal.type("\nb\n");
    kit::complained_by([&] {
        EXPECT_EQ(any_key(), '\n');
        EXPECT_EQ(any_key(), 'b');
    });
}

TEST(any_key, prompts_but_reads_nothing_where_standard_input_is_no_terminal)
{
    type_in("yx");
    uint16_t key = 0;
    EXPECT_EQ(kit::complained_by([&] { key = any_key(); }), "\r\nPress ENTER/RETURN to continue.");
    EXPECT_EQ(key, 65535);
    EXPECT_EQ(getchar(), 'y');
}

TEST(any_key, does_not_wait_at_the_end_of_the_input)
{
    type_in("");
    kit::complained_by([&] {
        EXPECT_EQ(any_key(), 65535);
        EXPECT_EQ(any_key(), 65535);
    });
}

TEST(any_key, does_not_wait_without_an_input)
{
    expect_ending(
        [] {
            close(STDIN_FILENO);
            exit(any_key() == 65535 ? 0 : 1);
        },
        0, "", "\r\nPress ENTER/RETURN to continue.");
}

TEST(any_key, shows_everything_before_it_waits)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("shown");
    const Terminal terminal;
    ASSERT_TRUE(terminal.is_there);
    ASSERT_EXIT(
        {
            if (!freopen(path.c_str(), "w", stdout)) _exit(99);
            printf("a question");
            const pid_t person = fork();
            if (person == 0) { // answers only when the question can be read
                for (int i = 0; i < 500 && kit::read_file(path) != "a question"; ++i) usleep(10'000);
                terminal.type(kit::read_file(path) == "a question" ? "y\n" : "n\n");
                _exit(0);
            }
            _exit(any_key() == 'y' ? 0 : 1);
        },
        testing::ExitedWithCode(0), "Press ENTER/RETURN");
}

} // namespace
