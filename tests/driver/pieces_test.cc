// The thread that writes: every piece arrives, in order, and a lost one is reported.
#include "driver/base/pieces.h"

#include "driver/base/fatal.h"
#include "driver/base/outfile.h"
#include "kit/bytes.h"
#include "kit/ending.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using kit::some_bytes;

constexpr int On_their_way = 16; ///< pieces at most

using Losses = std::vector<uint32_t>;

/// The numbers of the files that lost pieces, in the order in which they are told.
Losses Told;

void note_loss(uint32_t number)
{
    Told.push_back(number);
}

Losses finish()
{
    Told.clear();
    finish_pieces(note_loss);
    return Told;
}

/// A file in a directory of its own, open twice: for writing, and by a descriptor that takes nothing.
struct Place {
    explicit Place(const std::string& name) : path(scratch.path(name))
    {
        scratch.write(name, "");
        writable = open(path.c_str(), O_WRONLY | O_APPEND);
        closed_to_writers = open(path.c_str(), O_RDONLY);
        EXPECT_GE(writable, 0);
        EXPECT_GE(closed_to_writers, 0);
    }
    ~Place()
    {
        close(writable);
        close(closed_to_writers);
    }
    bool give(std::string_view bytes) const { return hand_over(writable, bytes, number); }
    bool give_to_be_lost(std::string_view bytes) const { return hand_over(closed_to_writers, bytes, number); }
    std::string content() const { return kit::read_file(path); }

    kit::Scratch scratch;
    std::string path;
    int writable = -1, closed_to_writers = -1;
    uint32_t number = next_number();

private:
    static uint32_t next_number()
    {
        static uint32_t last = 4711;
        return ++last;
    }
};

} // namespace

TEST(Pieces, arrive_in_the_order_of_handing_over)
{
    Place place("file");
    std::string expected;
    for (uint32_t i = 0; i < 300; ++i) {
        std::string bytes = some_bytes(1 + i * 7919 % Piece_max, i);
        expected += bytes;
        ASSERT_TRUE(place.give(bytes)) << i;
        memset(bytes.data(), '?', bytes.size()); // free for what comes next
    }
    EXPECT_EQ(finish(), Losses{});
    EXPECT_TRUE(place.content() == expected);
}

TEST(Pieces, of_the_largest_size_arrive)
{
    Place place("file");
    const std::string bytes = some_bytes(Piece_max, 1);
    ASSERT_TRUE(place.give(bytes));
    EXPECT_EQ(finish(), Losses{});
    EXPECT_TRUE(place.content() == bytes);
}

TEST(Pieces, of_several_files_arrive_in_theirs)
{
    Place one("one"), two("two"), three("three");
    std::string expected[3];
    for (uint32_t i = 0; i < 200; ++i) {
        const std::string bytes = some_bytes(5000, i);
        expected[i % 3] += bytes;
        ASSERT_TRUE((i % 3 == 0 ? one : i % 3 == 1 ? two : three).give(bytes));
    }
    EXPECT_EQ(finish(), Losses{});
    EXPECT_TRUE(one.content() == expected[0]);
    EXPECT_TRUE(two.content() == expected[1]);
    EXPECT_TRUE(three.content() == expected[2]);
}

TEST(Pieces, are_in_the_file_once_they_are_finished_each_time)
{
    Place place("file");
    EXPECT_EQ(finish(), Losses{}) << "there are none yet";
    std::string expected;
    for (uint32_t i = 0; i < 100; ++i) {
        const std::string bytes = some_bytes(100 + i, i);
        expected += bytes;
        ASSERT_TRUE(place.give(bytes));
        ASSERT_EQ(finish(), Losses{});
        ASSERT_TRUE(place.content() == expected) << i;
    }
}

TEST(Pieces, wait_for_a_reader_that_is_slow)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string arrived;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        char some[3000];
        for (ssize_t n; (n = read(ends[0], some, sizeof some)) > 0;)
            arrived.append(some, static_cast<size_t>(n));
    });
    std::string expected;
    for (uint32_t i = 0; i < 3 * On_their_way; ++i) {
        const std::string bytes = some_bytes(Piece_max, i);
        expected += bytes;
        EXPECT_TRUE(hand_over(ends[1], bytes, 1));
    }
    EXPECT_EQ(finish(), Losses{});
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_TRUE(arrived == expected);
}

TEST(Pieces, that_are_lost_are_told_and_leave_a_whole_prefix_and_other_files_alone)
{
    Place torn("torn"), other("other");
    EXPECT_TRUE(torn.give("first "));
    EXPECT_TRUE(other.give("one "));
    EXPECT_TRUE(torn.give_to_be_lost("second "));
    EXPECT_TRUE(other.give("two "));
    EXPECT_TRUE(torn.give("third ")) << "it is not known yet";
    EXPECT_TRUE(other.give("three"));
    EXPECT_EQ(finish(), (Losses{torn.number, torn.number}));
    EXPECT_EQ(torn.content(), "first ");
    EXPECT_EQ(other.content(), "one two three");
    EXPECT_EQ(finish(), Losses{}) << "told once";
}

TEST(Pieces, that_are_lost_are_told_in_the_order_of_handing_over_wherever_the_count_stands)
{
    Place one("one"), two("two");
    for (int before = 0; before <= On_their_way; ++before) {
        for (int i = 0; i < before; ++i) ASSERT_TRUE(one.give("x"));
        ASSERT_EQ(finish(), Losses{});
        ASSERT_TRUE(two.give_to_be_lost("a"));
        ASSERT_TRUE(one.give_to_be_lost("b"));
        ASSERT_TRUE(two.give_to_be_lost("c"));
        ASSERT_EQ(finish(), (Losses{two.number, one.number, two.number})) << before;
    }
}

TEST(Pieces, are_refused_from_the_one_on_that_would_take_a_lost_ones_place)
{
    Place torn("torn"), other("other");
    std::string expected;
    for (int round = 0; round < 20; ++round) { // the same each time, whoever is the faster
        ASSERT_TRUE(torn.give_to_be_lost("x"));
        for (int i = 1; i < On_their_way; ++i) {
            ASSERT_TRUE(other.give("y"));
            expected += "y";
        }
        ASSERT_FALSE(other.give("z"));
        ASSERT_FALSE(other.give("zz"));
        ASSERT_EQ(finish(), Losses{torn.number});
        ASSERT_TRUE(other.give("+"));
        expected += "+";
        ASSERT_EQ(finish(), Losses{});
    }
    EXPECT_EQ(other.content(), expected);
    EXPECT_EQ(torn.content(), "");
}

TEST(Pieces, start_another_thread_when_theirs_was_ended)
{
    Place place("file");
    std::string expected;
    for (uint32_t i = 0; i < 10; ++i) {
        for (uint32_t k = 0; k < 3; ++k) {
            const std::string bytes = some_bytes(60'000, 3 * i + k);
            expected += bytes;
            ASSERT_TRUE(place.give(bytes));
        }
        end_pieces();
        ASSERT_TRUE(place.content() == expected) << "written before the end";
        end_pieces();
    }
    ASSERT_TRUE(place.give_to_be_lost("x"));
    end_pieces();
    EXPECT_EQ(finish(), Losses{place.number});
}

TEST(Pieces, are_all_written_when_the_run_ends)
{
    Place place("file");
    const std::string bytes = some_bytes(10 * Piece_max, 1);
    kit::expect_ending(
        [&] {
            for (size_t at = 0; at < bytes.size(); at += Piece_max)
                if (!place.give(std::string_view(bytes).substr(at, Piece_max))) _exit(99);
            end_run(0);
        },
        0, "");
    EXPECT_TRUE(place.content() == bytes);
}

// No room for a second stack: what cannot be handed over is written by the file itself. It takes a process of
// its own, since the C library keeps the stack of a thread that was.
TEST(Pieces, are_not_taken_where_no_thread_can_be_had)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need more memory than is left here";
#endif
    Place place("file");
    const std::string path = place.scratch.path("written");
    const std::string bytes = some_bytes(2'000'000, 1); // long enough for a thread
    kit::expect_ending(
        [&] {
            OUT_FILE file;
            if (!out_open(file, path.c_str(), OUT_MODE::create_new, log_lost)) _exit(98);
            file.write("a"); // has its buffer
            rlimit space{};
            if (getrlimit(RLIMIT_AS, &space) != 0) _exit(97);
            const rlimit none{1, space.rlim_max};
            if (setrlimit(RLIMIT_AS, &none) != 0) _exit(96);
            const bool taken = place.give("x");
            file.write(bytes);
            if (setrlimit(RLIMIT_AS, &space) != 0) _exit(95);
            const bool taken_later = place.give("x");
            out_close(file);
            if (taken || taken_later) _exit(94);
            end_run(0); // another status if bytes were lost
        },
        0, "");
    EXPECT_EQ(place.content(), "");
    EXPECT_TRUE(kit::read_file(path) == "a" + bytes);
}
