// When the texts of the console reach a terminal or the reader of a pipe.
#include "driver/base/console.h"

#include "kit/ending.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Everything that comes before the other end is given up. A terminal tells that by an error.
std::string all_from(int fd)
{
    std::string all;
    char piece[256];
    for (ssize_t n = 0; (n = read(fd, piece, sizeof piece)) > 0;) all.append(piece, static_cast<size_t>(n));
    return all;
}

/// What reaches `reader` of a process that shows things at `writer`, with ticks between them, and ends
/// without another word. The last thing has no tick behind it.
std::string seen_of_a_run_that_is_cut_off(int reader, int writer)
{
    const pid_t child = fork();
    if (child == 0) {
        // A fresh stream, as it is when a run begins.
        if (!freopen(("/dev/fd/" + std::to_string(writer)).c_str(), "w", stdout)) _exit(1);
        close(writer), close(reader);
        console_start();
        console_tick();
        printf("one ");
        console_tick();
        usleep(150'000);
        printf("two ");
        console_tick();
        printf("three ");
        _exit(0);
    }
    close(writer);
    const std::string seen = all_from(reader);
    close(reader);
    int state = 0;
    waitpid(child, &state, 0);
    EXPECT_TRUE(WIFEXITED(state) && WEXITSTATUS(state) == 0);
    return seen;
}

TEST(Console, of_a_terminal_shows_what_stands_in_the_buffer_several_times_a_second)
{
    const int reader = posix_openpt(O_RDWR | O_NOCTTY);
    if (reader < 0 || grantpt(reader) != 0 || unlockpt(reader) != 0) GTEST_SKIP() << "no terminal to be had";
    const int writer = open(ptsname(reader), O_RDWR | O_NOCTTY);
    ASSERT_GE(writer, 0);
    EXPECT_EQ(seen_of_a_run_that_is_cut_off(reader, writer), "one two ");
}

TEST(Console, of_a_pipe_is_not_written_before_its_buffer_is_full)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(seen_of_a_run_that_is_cut_off(ends[0], ends[1]), "");
}

#ifdef __GLIBC__ // where a stream can be made of functions

/// How many pieces a console at `writer`, a terminal, gets of a thousand things with a tick behind each, and
/// in how many milliseconds they are shown.
struct Shown {
    int pieces = 0;
    int64_t ms = 0;
};

Shown shown_in_a_thousand_ticks(int writer)
{
    static int pieces;
    pieces = 0;
    const auto count = [](void*, const char*, size_t n) {
        ++pieces;
        return static_cast<ssize_t>(n);
    };
    if (dup2(writer, STDOUT_FILENO) < 0) abort();
    stdout = fopencookie(nullptr, "w", {nullptr, count, nullptr, nullptr});
    const auto start = std::chrono::steady_clock::now();
    console_start();
    for (int i = 0; i < 1000; ++i) {
        printf("%d ", i);
        console_tick();
    }
    const auto taken = std::chrono::steady_clock::now() - start;
    return {pieces, std::chrono::duration_cast<std::chrono::milliseconds>(taken).count()};
}

TEST(Console, of_a_terminal_is_written_ten_times_a_second_at_most)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
        GTEST_SKIP() << "no terminal to be had";
    const int writer = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    ASSERT_GE(writer, 0);
    EXPECT_EXIT(
        {
            const Shown shown = shown_in_a_thousand_ticks(writer);
            fprintf(stderr, "%d pieces in %d ms", shown.pieces, static_cast<int>(shown.ms));
            exit(shown.pieces >= 1 && shown.pieces <= 2 + shown.ms / 100 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    close(writer), close(terminal);
}

#endif

TEST(Console, that_finds_nothing_to_take_the_place_of_a_closed_descriptor_goes_on)
{
    kit::expect_ending(
        [] {
            rlimit limit{};
            if (getrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(99);
            const rlimit none{0, limit.rlim_max};
            close(STDIN_FILENO);
            if (setrlimit(RLIMIT_NOFILE, &none) != 0) _exit(98);
            console_start();
            setrlimit(RLIMIT_NOFILE, &limit);
            printf("shown");
            exit(fcntl(STDIN_FILENO, F_GETFD) < 0 ? 0 : 1);
        },
        0, "shown");
}

} // namespace
