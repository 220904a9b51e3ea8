// The input, packet by packet, however it arrives.
#include "packet/input.h"

#include "driver/base/run_files.h"
#include "kit/bytes.h"
#include "kit/ending.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace {

using kit::some_bytes;

class Input : public testing::Test {
protected:
    ~Input() override
    {
        if (FdIn) fclose(FdIn);
        FdIn = nullptr;
    }
    void open(const std::string& bytes)
    {
        if (FdIn) fclose(FdIn);
        FdIn = fopen(scratch.write("in", bytes).c_str(), "rb");
        ASSERT_NE(FdIn, nullptr);
        Blk_rewind();
    }
    void open(int descriptor)
    {
        FdIn = fdopen(descriptor, "rb");
        Blk_rewind();
    }
    /// All packets up to the end, one behind the other.
    static std::string all()
    {
        std::string bytes;
        while (const auto pkt = Blk_read())
            bytes.append(reinterpret_cast<const char*>(pkt->bytes), Packet_size);
        return bytes;
    }
    kit::Scratch scratch;
};

TEST_F(Input, gives_every_packet_in_its_order)
{
    const std::string bytes = some_bytes(1024 * 3);
    open(bytes);
    EXPECT_EQ(all(), bytes);
}

TEST_F(Input, drops_a_short_last_packet)
{
    const std::string bytes = some_bytes(1024 * 2);
    for (const size_t tail : {1U, 512U, 1023U}) {
        open(bytes + std::string(tail, 'x'));
        EXPECT_EQ(all(), bytes) << tail;
    }
}

TEST_F(Input, of_less_than_a_packet_is_at_its_end)
{
    for (const size_t n : {0U, 1U, 1023U}) {
        open(std::string(n, 'x'));
        EXPECT_EQ(all(), "") << n;
    }
}

TEST_F(Input, stays_at_its_end)
{
    open(some_bytes(1024));
    all();
    EXPECT_FALSE(Blk_read());
    EXPECT_FALSE(Blk_read());
}

TEST_F(Input, of_any_length_comes_whole)
{
    for (const size_t packets : {255U, 256U, 257U, 1000U, 2048U}) {
        const std::string bytes = some_bytes(1024 * packets);
        open(bytes + "tail");
        EXPECT_TRUE(all() == bytes) << packets;
    }
}

TEST_F(Input, is_read_anew_after_it_was_forgotten)
{
    open(some_bytes(1024 * 5));
    EXPECT_TRUE(Blk_read());
    const std::string other(2048, 'o');
    open(other);
    EXPECT_EQ(all(), other);
}

TEST_F(Input, that_comes_in_drops_comes_whole)
{
    const std::string bytes = some_bytes(1024 * 40 + 17);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread writer([&] {
        for (size_t at = 0; at < bytes.size(); at += 333) {
            const std::string piece = bytes.substr(at, 333);
            EXPECT_EQ(write(ends[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
        }
        close(ends[1]);
    });
    open(ends[0]);
    EXPECT_TRUE(all() == bytes.substr(0, 1024 * 40));
    writer.join();
}

TEST_F(Input, interrupted_by_a_signal_goes_on)
{
    struct sigaction quiet = {};
    quiet.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGALRM, &quiet, nullptr), 0);
    const itimerval often{{0, 2000}, {0, 2000}};
    const itimerval never{};
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string bytes = some_bytes(1024 * 4);
    const pid_t writer = fork();
    if (writer == 0) {
        for (size_t at = 0; at < bytes.size(); at += 512) {
            usleep(20'000);
            if (write(ends[1], bytes.data() + at, 512) != 512) _exit(1);
        }
        _exit(0);
    }
    close(ends[1]);
    open(ends[0]);
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_TRUE(all() == bytes);
    ASSERT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
}

TEST_F(Input, that_cannot_be_read_ends_the_run_without_a_name)
{
    kit::expect_ending(
        [] {
            FdIn = fopen("/tmp", "rb");
            Blk_rewind();
            Blk_read();
        },
        21, "\nFile read error for '(null)'");
}

TEST_F(Input, that_fails_on_the_way_gives_all_whole_packets_before)
{
    const std::string bytes = some_bytes(1024 * 3 + 500);
    kit::expect_ending(
        [&] {
            // A peer that goes away without having read what it was sent: its bytes, then an error.
            int ends[2];
            if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) _exit(99);
            if (write(ends[0], "unread", 6) != 6) _exit(98);
            if (write(ends[1], bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) _exit(97);
            close(ends[1]);
            open(ends[0]);
            for (size_t at = 0; at < 3072; at += 1024) {
                const auto pkt = Blk_read();
                if (!pkt) _exit(96);
                if (memcmp(pkt->bytes, bytes.data() + at, 1024) != 0) _exit(95);
                printf("packet ");
            }
            Blk_read();
            _exit(94);
        },
        21, "packet packet packet \nFile read error for '(null)'");
}

} // namespace
