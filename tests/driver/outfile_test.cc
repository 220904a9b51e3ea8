// The writer that all output files share: every byte arrives, in order, and a lost one is reported.
#include "driver/base/outfile.h"

#include "driver/base/fatal.h"
#include "kit/bytes.h"
#include "kit/ending.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::string_view_literals;
using kit::some_bytes;

std::string letters(size_t n, char first = 'a')
{
    std::string text(n, ' ');
    for (size_t i = 0; i < n; ++i) text[i] = static_cast<char>(first + static_cast<char>(i % 23));
    return text;
}

int open_descriptors()
{
    int n = 0;
    for (int fd = 0; fd < 4096; ++fd) n += fcntl(fd, F_GETFD) >= 0;
    return n;
}

int Losses_noted;

void note_loss(const char*)
{
    ++Losses_noted;
}

/// A file in a directory of its own.
class Out_file : public testing::Test {
protected:
    ~Out_file() override
    {
        out_close(file);
        out_limit_slots(0);
    }
    void open(OUT_MODE mode = OUT_MODE::create_new, ON_LOSS on_loss = log_lost)
    {
        ASSERT_TRUE(out_open(file, path.c_str(), mode, on_loss)) << strerror(errno);
    }
    std::string closed()
    {
        out_close(file);
        return scratch.read("file");
    }

    kit::Scratch scratch;
    std::string path = scratch.path("file");
    OUT_FILE file;
};

TEST_F(Out_file, has_the_bytes_in_the_order_of_writing)
{
    open();
    file.write("one\r\n");
    file.print("%s %d\r\n", "two", 2);
    memcpy(file.room(7), "three\r\n", 7);
    file.took(7);
    file.write("");
    file.print("%s", "");
    file.write("four"sv);
    EXPECT_EQ(closed(), "one\r\ntwo 2\r\nthree\r\nfour");
}

TEST_F(Out_file, is_empty_when_nothing_was_written)
{
    open();
    EXPECT_EQ(closed(), "");
}

TEST_F(Out_file, keeps_all_byte_values)
{
    open();
    file.write("a\0b\xFF\x1A\n"sv);
    file.print("%c", 0);
    EXPECT_EQ(closed(), "a\0b\xFF\x1A\n\0"sv);
}

TEST_F(Out_file, takes_pieces_larger_than_any_buffer)
{
    const std::string bytes = some_bytes(1'000'003);
    open();
    file.write("front ");
    file.write(bytes);
    file.write(" behind");
    EXPECT_EQ(closed(), "front " + bytes + " behind");
}

TEST_F(Out_file, prints_texts_larger_than_any_buffer)
{
    const std::string text = letters(300'001);
    open();
    file.print("<%s>%05d", text.c_str(), 42);
    file.print("%s", text.c_str());
    EXPECT_EQ(closed(), "<" + text + ">00042" + text);
}

TEST_F(Out_file, prints_whole_texts_wherever_the_buffer_ends)
{
    std::string expected;
    open();
    for (size_t turn = 0; turn < 400; ++turn) {
        const std::string fill = letters(4096 - turn % 7);
        const std::string text = letters(1 + turn * 41 % 3001, 'A');
        file.write(fill);
        file.print("%s|", text.c_str());
        expected += fill + text + "|";
    }
    EXPECT_EQ(closed(), expected);
}

TEST_F(Out_file, prints_a_text_that_just_fits_or_just_does_not)
{
    for (const size_t size : {8192U, 16384U, 65536U}) {
        for (size_t left = 0; left < 6; ++left) {
            for (size_t n = 1; n < 8; ++n) {
                open(OUT_MODE::truncate);
                const std::string fill = letters(size - left);
                file.write(fill);
                file.print("%s", letters(n, 'A').c_str());
                ASSERT_EQ(closed(), fill + letters(n, 'A')) << size << ' ' << left << ' ' << n;
            }
        }
    }
}

TEST_F(Out_file, takes_nothing_of_a_text_that_cannot_be_formatted)
{
    open();
    file.print("%s ", "one");
    file.print("%s%lc", "lost", wint_t{0x110000}); // no locale has such a character
    file.print("%s", "two");
    EXPECT_EQ(closed(), "one two");
}

TEST_F(Out_file, room_is_there_for_its_most_at_any_time)
{
    std::string expected;
    open();
    for (uint32_t i = 0; i < 100; ++i) {
        const uint32_t n = Out_room_max - i * 3;
        const std::string piece = some_bytes(n, i);
        memcpy(file.room(Out_room_max), piece.data(), n);
        file.took(n);
        expected += piece;
        file.room(Out_room_max); // asked for, not used
    }
    EXPECT_EQ(closed(), expected);
}

TEST_F(Out_file, room_that_just_fits_or_just_does_not_is_whole)
{
    for (const size_t size : {8192U, 16384U, 65536U}) {
        for (const size_t left : {8189U, 8190U, 8191U, 8192U, 8193U}) {
            if (left > size) continue;
            open(OUT_MODE::truncate);
            const std::string fill = letters(size - left), piece = some_bytes(Out_room_max);
            file.write(fill);
            memcpy(file.room(Out_room_max), piece.data(), piece.size());
            file.took(Out_room_max);
            file.write("behind");
            ASSERT_TRUE(closed() == fill + piece + "behind") << size << ' ' << left;
        }
    }
}

TEST_F(Out_file, a_new_file_is_not_made_over_one_that_exists)
{
    scratch.write("file", "old");
    EXPECT_FALSE(out_open(file, path.c_str(), OUT_MODE::create_new, trace_lost));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(file.open);
    EXPECT_EQ(scratch.read("file"), "old");
}

TEST_F(Out_file, a_new_file_does_not_follow_a_link_to_nowhere)
{
    EXPECT_EQ(symlink("elsewhere", path.c_str()), 0);
    EXPECT_FALSE(out_open(file, path.c_str(), OUT_MODE::create_new, trace_lost));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_FALSE(scratch.exists("elsewhere"));
}

TEST_F(Out_file, made_anew_is_emptied)
{
    scratch.write("file", "a long old text");
    open(OUT_MODE::truncate);
    file.write("new");
    EXPECT_EQ(closed(), "new");
}

TEST_F(Out_file, appending_keeps_what_is_there)
{
    scratch.write("file", "old ");
    open(OUT_MODE::append);
    file.write("new");
    EXPECT_EQ(closed(), "old new");
    open(OUT_MODE::append);
    file.write(" newer");
    EXPECT_EQ(closed(), "old new newer");
}

TEST_F(Out_file, tells_why_it_cannot_be_opened)
{
    EXPECT_FALSE(out_open(file, scratch.path("none/file").c_str(), OUT_MODE::append, note_loss));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(out_open(file, scratch.dir().c_str(), OUT_MODE::append, note_loss));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(file.open);
    EXPECT_EQ(Losses_noted, 0) << "there were no bytes to lose";
}

TEST_F(Out_file, closing_twice_or_unopened_does_nothing)
{
    out_close(file);
    open();
    file.write("x");
    out_close(file);
    out_close(file);
    EXPECT_FALSE(file.open);
    EXPECT_EQ(scratch.read("file"), "x");
}

TEST_F(Out_file, two_writers_of_one_name_keep_each_others_bytes)
{
    OUT_FILE other;
    open(OUT_MODE::truncate);
    ASSERT_TRUE(out_open(other, path.c_str(), OUT_MODE::append, log_lost));
    const std::string small(1000, 's'), large(100'000, 'L');
    for (int i = 0; i < 20; ++i) {
        file.write(small);
        other.write(large);
    }
    out_close(other);
    const std::string bytes = closed();
    EXPECT_EQ(bytes.size(), 20 * (small.size() + large.size()));
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 's'), 20'000);
}

/// Writes random pieces to random ones of many files and compares them all.
void expect_every_byte(uint32_t slots, size_t files)
{
    const kit::Scratch scratch;
    std::mt19937 random(slots);
    std::deque<OUT_FILE> out(files);
    std::vector<std::string> names(files), expected(files);
    out_limit_slots(slots);
    const int before = open_descriptors();
    for (size_t i = 0; i < files; ++i) {
        names[i] = scratch.path(std::to_string(i));
        ASSERT_TRUE(out_open(out[i], names[i].c_str(), OUT_MODE::create_new, note_loss));
    }
    for (int turn = 0; turn < 5000; ++turn) {
        const size_t i = random() % files;
        const std::string piece =
            std::to_string(turn) + letters(random() % 40 ? random() % 90 : 20'000) + ";";
        if (turn % 2)
            out[i].write(piece);
        else
            out[i].print("%s", piece.c_str());
        expected[i] += piece;
        if (turn % 500 == 0) {
            EXPECT_LE(open_descriptors() - before, static_cast<int>(slots));
        }
    }
    for (const OUT_FILE& f : out) EXPECT_TRUE(f.open);
    for (size_t i = 0; i < files; ++i) {
        out_close(out[i]);
        EXPECT_EQ(kit::read_file(names[i]), expected[i]) << i;
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(Losses_noted, 0);
    out_limit_slots(0);
}

TEST(Out_slots, one_slot_serves_any_number_of_files)
{
    expect_every_byte(1, 12);
}

TEST(Out_slots, more_files_than_slots_keep_every_byte_in_order)
{
    expect_every_byte(3, 50);
    expect_every_byte(20, 64);
}

TEST(Out_slots, more_files_than_large_buffers_keep_every_byte_in_order)
{
    expect_every_byte(300, 320);
}

TEST(Out_slots, no_file_gives_way_while_slots_are_free_and_later_ones_get_smaller_buffers)
{
    constexpr size_t Files = 300;
    const kit::Scratch scratch;
    std::deque<OUT_FILE> out(Files);
    std::vector<std::string> names(Files);
    out_limit_slots(Files);
    const int before = open_descriptors();
    for (size_t i = 0; i < Files; ++i) {
        names[i] = scratch.path(std::to_string(i));
        ASSERT_TRUE(out_open(out[i], names[i].c_str(), OUT_MODE::create_new, log_lost));
    }
    EXPECT_EQ(open_descriptors() - before, static_cast<int>(Files));
    size_t room = 0;
    for (size_t i = 0; i < Files; ++i) {
        EXPECT_NE(out[i].buf, nullptr) << i;
        EXPECT_GE(out[i].cap, Out_room_max) << i;
        EXPECT_LE(out[i].cap, out[i > 0 ? i - 1 : 0].cap) << i;
        room += out[i].cap;
    }
    EXPECT_LT(out.back().cap, out.front().cap);
    EXPECT_LT(room, Files * out.front().cap / 2); // not all are large
    for (OUT_FILE& file : out) out_close(file);
    EXPECT_EQ(open_descriptors(), before);
    out_limit_slots(0);
}

TEST(Out_slots, the_file_unused_for_longest_gives_way)
{
    const kit::Scratch scratch;
    const std::string names[] = {scratch.path("a"), scratch.path("b"), scratch.path("c")};
    OUT_FILE a, b, c;
    out_limit_slots(2);
    ASSERT_TRUE(out_open(a, names[0].c_str(), OUT_MODE::create_new, log_lost));
    ASSERT_TRUE(out_open(b, names[1].c_str(), OUT_MODE::create_new, log_lost));
    a.write("a"); // b is older now
    b.room(0);
    a.write("a");
    ASSERT_TRUE(out_open(c, names[2].c_str(), OUT_MODE::create_new, log_lost));
    EXPECT_NE(a.buf, nullptr);
    EXPECT_EQ(b.buf, nullptr);
    EXPECT_NE(c.buf, nullptr);
    EXPECT_TRUE(b.open);
    for (OUT_FILE* file : {&a, &b, &c}) out_close(*file);
    out_limit_slots(0);
    EXPECT_EQ(scratch.read("a"), "aa");
}

TEST(Out_slots, a_file_closed_without_its_slot_is_whole)
{
    const kit::Scratch scratch;
    const std::string name = scratch.path("a");
    OUT_FILE a;
    ASSERT_TRUE(out_open(a, name.c_str(), OUT_MODE::create_new, log_lost));
    a.write("first ");
    EXPECT_TRUE(out_give_up_oldest());
    EXPECT_FALSE(out_give_up_oldest());
    EXPECT_EQ(scratch.read("a"), "first ");
    a.write("second");
    EXPECT_TRUE(out_give_up_oldest());
    EXPECT_TRUE(a.open);
    out_close(a);
    EXPECT_FALSE(a.open);
    EXPECT_EQ(scratch.read("a"), "first second");
}

TEST(Out_slots, the_descriptor_limit_of_the_process_is_respected)
{
    const kit::Scratch scratch; // not the child's, which would leave it behind
    kit::expect_ending(
        [&] {
            const rlimit few{40, 40};
            if (setrlimit(RLIMIT_NOFILE, &few) != 0) _exit(99);
            out_limit_slots(0);
            std::deque<OUT_FILE> out(300);
            std::deque<std::string> names;
            for (OUT_FILE& file : out) {
                names.push_back(scratch.path(std::to_string(names.size())));
                if (!out_open(file, names.back().c_str(), OUT_MODE::create_new, trace_lost)) _exit(98);
                file.write("header;");
            }
            FILE* other = fopen("/dev/null", "rb"); // something is left for others
            if (!other) _exit(97);
            fclose(other);
            for (OUT_FILE& file : out) file.write("samples");
            for (OUT_FILE& file : out) out_close(file);
            for (const std::string& name : names)
                if (kit::read_file(name) != "header;samples") _exit(96);
            printf("all there");
            exit(0);
        },
        0, "all there");
}

TEST(Out_slots, others_descriptors_in_the_way_cost_slots_and_no_bytes)
{
    const kit::Scratch scratch; // not the child's, which would leave it behind
    kit::expect_ending(
        [&] {
            const rlimit few{60, 60};
            if (setrlimit(RLIMIT_NOFILE, &few) != 0) _exit(99);
            out_limit_slots(0);
            std::deque<OUT_FILE> out(30);
            std::deque<std::string> names;
            for (OUT_FILE& file : out) {
                names.push_back(scratch.path(std::to_string(names.size())));
                if (!out_open(file, names.back().c_str(), OUT_MODE::create_new, trace_lost)) _exit(98);
                file.write("one ");
            }
            while (dup(0) >= 0) {
            } // now the process has none left
            for (OUT_FILE& file : out) file.write("two");
            const std::string one_more = scratch.path("more");
            OUT_FILE more;
            if (!out_open(more, one_more.c_str(), OUT_MODE::create_new, trace_lost)) _exit(97);
            out_close_all();
            for (const std::string& name : names)
                if (kit::read_file(name) != "one two") _exit(96);
            printf("all there");
            exit(0);
        },
        0, "all there");
}

TEST(Out_close_all, writes_what_all_files_have_collected)
{
    const kit::Scratch scratch;
    const std::string names[] = {scratch.path("a"), scratch.path("b")};
    kit::expect_ending(
        [&] {
            OUT_FILE a, b;
            if (!out_open(a, names[0].c_str(), OUT_MODE::create_new, trace_lost)) _exit(99);
            if (!out_open(b, names[1].c_str(), OUT_MODE::create_new, log_lost)) _exit(98);
            a.write("aa");
            b.write("bb");
            if (!scratch.read("a").empty()) _exit(97); // collected, not yet written
            out_close_all();
            _exit(0); // nothing more is flushed
        },
        0, "");
    EXPECT_EQ(scratch.read("a"), "aa");
    EXPECT_EQ(scratch.read("b"), "bb");
}

// A device that is always full stands for a full disk.

TEST_F(Out_file, that_lost_bytes_is_told_of_once)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    path = "/dev/full";
    kit::expect_ending(
        [&] {
            open(OUT_MODE::append);
            for (int i = 0; i < 40; ++i) file.write(std::string(20'000, 'x'));
            file.print("%s", letters(100'000).c_str());
            out_close(file);
            if (!file.broken || file.open) _exit(99);
            end_run(0);
        },
        22, "", "\nFile write error for '/dev/full'");
}

TEST_F(Out_file, that_lost_bytes_calls_what_it_was_opened_with_once_with_its_name)
{
    static std::vector<std::string> lost;
    path = "/dev/full";
    open(OUT_MODE::append, [](const char* name) { lost.emplace_back(name); });
    for (int i = 0; i < 40; ++i) file.write(std::string(20'000, 'x'));
    out_close(file);
    EXPECT_EQ(lost, std::vector<std::string>{"/dev/full"});
    EXPECT_TRUE(file.broken);
}

TEST_F(Out_file, that_cannot_be_written_at_its_closing_is_told_of)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    path = "/dev/full";
    kit::expect_ending(
        [&] {
            open(OUT_MODE::append);
            file.write("x");
            if (file.broken) _exit(1);
            out_close(file);
            end_run(0);
        },
        22, "", "\nFile write error for '/dev/full'");
}

TEST_F(Out_file, each_file_that_lost_bytes_is_told_of)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    path = "/dev/full";
    const std::string other_path = "/dev/./full";
    kit::expect_ending(
        [&] {
            OUT_FILE other;
            open(OUT_MODE::append);
            if (!out_open(other, other_path.c_str(), OUT_MODE::truncate, log_lost)) _exit(99);
            file.write("x");
            other.write("y");
            out_close(file);
            out_close(other);
            exit(0);
        },
        0, "", "\nFile write error for '/dev/full'\nFile write error for '/dev/./full'");
}

TEST_F(Out_file, that_lost_bytes_leaves_the_others_alone)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    const std::string full = "/dev/full";
    std::string expected;
    for (uint32_t i = 0; i < 30; ++i) expected += some_bytes(9000, i) + std::to_string(i);
    kit::expect_ending(
        [&] {
            OUT_FILE broken;
            open();
            if (!out_open(broken, full.c_str(), OUT_MODE::append, log_lost)) _exit(99);
            for (uint32_t i = 0; i < 30; ++i) {
                const std::string piece = some_bytes(9000, i);
                broken.write(piece);
                file.write(piece);
                broken.print("%u", i);
                file.print("%u", i);
                memset(broken.room(Out_room_max), 'z', Out_room_max);
                broken.took(Out_room_max);
            }
            out_close(broken);
            out_close(file);
            exit(file.broken ? 1 : 0);
        },
        0, "", "\nFile write error for '/dev/full'");
    EXPECT_EQ(scratch.read("file"), expected);
}

TEST_F(Out_file, that_may_not_grow_keeps_its_whole_prefix)
{
    const std::string bytes = some_bytes(200'000);
    kit::expect_ending(
        [&] {
            signal(SIGXFSZ, SIG_IGN);
            rlimit size{};
            if (getrlimit(RLIMIT_FSIZE, &size) != 0) _exit(97);
            size.rlim_cur = 100'000;
            if (setrlimit(RLIMIT_FSIZE, &size) != 0) _exit(99);
            if (!out_open(file, path.c_str(), OUT_MODE::create_new, log_lost)) _exit(98);
            for (size_t at = 0; at < bytes.size(); at += 777)
                file.write(std::string_view(bytes).substr(at, 777));
            out_close(file);
            end_run(0);
        },
        22, "", "\nFile write error for '" + path + "'");
    EXPECT_EQ(scratch.read("file"), bytes.substr(0, 100'000));
}

TEST_F(Out_file, that_vanished_while_it_held_no_slot_has_lost_bytes)
{
    kit::expect_ending(
        [&] {
            open();
            file.write("first");
            if (!out_give_up_oldest() || unlink(path.c_str()) != 0) _exit(99);
            file.write("second");
            out_close(file);
            end_run(0);
        },
        22, "", "\nFile write error for '" + path + "'");
    EXPECT_FALSE(scratch.exists("file"));
}

TEST_F(Out_file, of_a_trace_that_lost_bytes_ends_the_run)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    kit::expect_ending(
        [&] {
            path = "/dev/full";
            open(OUT_MODE::append, trace_lost);
            for (;;) file.write(std::string(20'000, 'x'));
        },
        22, "\nFile write error for '/dev/full'");
}

TEST_F(Out_file, of_a_trace_that_cannot_be_written_at_its_closing_ends_the_run)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    kit::expect_ending(
        [&] {
            path = "/dev/full";
            open(OUT_MODE::append, trace_lost);
            file.write("x");
            out_close(file);
            _exit(99);
        },
        22, "\nFile write error for '/dev/full'");
}

TEST_F(Out_file, of_a_trace_that_lost_bytes_does_not_keep_the_others_from_their_end)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    const std::string full = "/dev/full";
    kit::expect_ending(
        [&] {
            OUT_FILE broken;
            open();
            file.write("whole");
            if (!out_open(broken, full.c_str(), OUT_MODE::append, trace_lost)) _exit(99);
            broken.write("x");
            out_close(broken);
        },
        22, "\nFile write error for '/dev/full'");
    EXPECT_EQ(scratch.read("file"), "whole");
}

constexpr const char* Own_threads = "/proc/self/task"; ///< a directory with an entry for each

int threads()
{
    int n = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(Own_threads)) ++n;
    return n;
}

/// Writes so many files of a length, one after the other, and fails where the number of threads is not this
/// one.
void write_files(const kit::Scratch& scratch, int count, size_t length, int threads_expected)
{
    const std::string bytes = some_bytes(length);
    for (int i = 0; i < count; ++i) {
        const std::string name = scratch.path("file" + std::to_string(length) + "-" + std::to_string(i));
        OUT_FILE file;
        if (!out_open(file, name.c_str(), OUT_MODE::create_new, trace_lost)) _exit(99);
        file.write(bytes);
        if (threads() != threads_expected) _exit(98);
        out_close(file);
        if (kit::read_file(name) != bytes) _exit(97);
    }
}

TEST(Out_thread, is_there_once_files_are_long_and_not_while_they_are_short)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer has a thread of its own, which comes when it likes";
#endif
    if (!std::filesystem::exists(Own_threads)) GTEST_SKIP() << "no " << Own_threads;
    const kit::Scratch scratch;
    kit::expect_ending(
        [&] {
            const int before = threads();
            write_files(scratch, 20, 1'000'000, before);
            write_files(scratch, 2, 1'200'000, before + 1);
            write_files(scratch, 20, 200'000, before + 1);
            write_files(scratch, 2, 3'000'000, before + 1);
            exit(0);
        },
        0, "");
}

/// A file that was created, written and closed, as a finished trace is.
class Out_overwrite_start : public testing::Test {
protected:
    void make(std::string_view bytes, ON_LOSS on_loss = trace_lost)
    {
        ASSERT_TRUE(out_open(file, path.c_str(), OUT_MODE::create_new, on_loss));
        file.mark_start(bytes.substr(0, 4));
        file.write(bytes);
        out_close(file);
    }
    /// Another file takes the name.
    void replace_by(std::string_view bytes)
    {
        scratch.write("other", bytes);
        std::filesystem::rename(scratch.path("other"), path);
    }
    void expect_refused_at_once()
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(out_overwrite_start(file, "abc"));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    }

    const kit::Scratch scratch;
    const std::string path = scratch.path("file");
    OUT_FILE file;
};

TEST_F(Out_overwrite_start, replaces_the_first_bytes_and_keeps_the_rest)
{
    make("0123456789");
    EXPECT_TRUE(out_overwrite_start(file, "abc"));
    EXPECT_EQ(scratch.read("file"), "abc3456789");
    EXPECT_TRUE(out_overwrite_start(file, ""));
    EXPECT_EQ(scratch.read("file"), "abc3456789");
}

TEST_F(Out_overwrite_start, replaces_the_first_bytes_of_a_file_beyond_two_gigabytes)
{
    constexpr std::uintmax_t size = 2147483648u + 4096;
    make("0123456789");
    std::filesystem::resize_file(path, size);
    file.written = size;
    EXPECT_TRUE(out_overwrite_start(file, "abc"));
    EXPECT_EQ(std::filesystem::file_size(path), size);
    std::string start(10, '?');
    std::ifstream(path, std::ios::binary).read(start.data(), 10);
    EXPECT_EQ(start, "abc3456789");
}

TEST_F(Out_overwrite_start, creates_nothing)
{
    make("0123456789");
    std::filesystem::remove(path);
    EXPECT_FALSE(out_overwrite_start(file, "abc"));
    EXPECT_FALSE(scratch.exists("file"));
}

TEST_F(Out_overwrite_start, waits_five_seconds_for_a_file_that_is_missing_but_once)
{
    using Clock = std::chrono::steady_clock;
    make("0123456789");
    std::filesystem::rename(path, scratch.path("away"));
    const auto start = Clock::now();
    EXPECT_FALSE(out_overwrite_start(file, "abc"));
    const auto later = Clock::now();
    EXPECT_FALSE(out_overwrite_start(file, "abc"));
    EXPECT_GE(later - start, std::chrono::seconds(4));
    EXPECT_LT(Clock::now() - later, std::chrono::seconds(2));
    std::filesystem::rename(scratch.path("away"), path);
    EXPECT_TRUE(out_overwrite_start(file, "abc"));
}

TEST_F(Out_overwrite_start, another_file_of_the_name_is_left_alone)
{
    make("0123456789");
    replace_by("9876543210");
    expect_refused_at_once();
    EXPECT_EQ(scratch.read("file"), "9876543210");
}

TEST_F(Out_overwrite_start, a_file_whose_size_changed_is_left_alone)
{
    make("0123456789");
    std::filesystem::resize_file(path, 9);
    expect_refused_at_once();
    EXPECT_EQ(scratch.read("file"), "012345678");
}

TEST_F(Out_overwrite_start, a_link_to_the_very_file_is_left_alone)
{
    make("0123456789");
    std::filesystem::rename(path, scratch.path("moved"));
    std::filesystem::create_symlink("moved", path);
    expect_refused_at_once();
    EXPECT_EQ(scratch.read("moved"), "0123456789");
}

TEST_F(Out_overwrite_start, a_file_with_a_new_inode_number_is_recognised_by_size_and_first_bytes)
{
    make("0123456789");
    replace_by("0123xxxxxx");
    EXPECT_TRUE(out_overwrite_start(file, "abc"));
    EXPECT_EQ(scratch.read("file"), "abc3xxxxxx");
}

TEST_F(Out_overwrite_start, a_file_whose_start_nobody_marked_is_not_recognised_by_it)
{
    make("0123456789");
    file.mark.start_len = 0;
    replace_by("0123xxxxxx");
    expect_refused_at_once();
}

TEST_F(Out_overwrite_start, a_pipe_of_the_name_is_left_alone)
{
    make("0123456789");
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expect_refused_at_once();
}

void let_files_have(rlim_t bytes)
{
    const rlimit limit{bytes, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
}

/// Overwrites "abc" where files may have two bytes.
void lose_the_third_byte(OUT_FILE& file)
{
    signal(SIGXFSZ, SIG_IGN);
    let_files_have(2);
    EXPECT_TRUE(out_overwrite_start(file, "abc"));
    let_files_have(RLIM_INFINITY);
}

TEST_F(Out_overwrite_start, a_byte_lost_is_reported_to_the_files_owner)
{
    static std::string lost;
    make("0123456789", [](const char* name) { lost = name; });
    lose_the_third_byte(file);
    EXPECT_EQ(lost, path);
}

TEST_F(Out_overwrite_start, a_byte_lost_of_a_trace_ends_the_run)
{
    make("0123456789", [](const char* name) {
        let_files_have(RLIM_INFINITY); // the console is a file, too
        trace_lost(name);
    });
    kit::expect_ending([&] { lose_the_third_byte(file); }, 22, "\nFile write error for '" + path + "'");
}

TEST_F(Out_file, the_start_is_replaced_while_all_is_collected)
{
    open();
    file.write("0123456789");
    EXPECT_TRUE(file.replace_start("abc"));
    out_close(file);
    EXPECT_EQ(scratch.read("file"), "abc3456789");
}

TEST_F(Out_file, the_start_is_not_replaced_once_bytes_are_written)
{
    open();
    file.write("0123456789");
    out_write_all();
    EXPECT_FALSE(file.replace_start("abc"));
    file.write("x");
    out_close(file);
    EXPECT_EQ(scratch.read("file"), "0123456789x");
}

TEST_F(Out_file, the_start_is_not_replaced_by_more_than_is_collected_nor_without_a_slot)
{
    open();
    file.write("01");
    EXPECT_FALSE(file.replace_start("abc"));
    out_give_up_oldest();
    EXPECT_FALSE(file.replace_start("a"));
    out_close(file);
    EXPECT_EQ(scratch.read("file"), "01");
}

TEST_F(Out_file, all_that_is_collected_is_written_and_the_file_stays_open)
{
    open();
    file.write("abc");
    EXPECT_EQ(scratch.read("file"), "");
    out_write_all();
    EXPECT_EQ(scratch.read("file"), "abc");
    EXPECT_TRUE(file.open);
    file.write("def");
    out_close(file);
    EXPECT_EQ(scratch.read("file"), "abcdef");
}

TEST(End_run, writes_what_is_collected_and_keeps_the_status)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("file");
    for (const int status : {0, 1, 2, 68, 255}) {
        OUT_FILE file;
        kit::expect_ending(
            [&] {
                if (!out_open(file, path.c_str(), OUT_MODE::truncate, trace_lost)) _exit(99);
                file.write("collected");
                printf("shown");
                end_run(status);
            },
            status, "shown");
        EXPECT_EQ(scratch.read("file"), "collected");
        EXPECT_EQ(unlink(path.c_str()), 0);
    }
}

TEST(End_run, a_lost_byte_shows_where_the_status_would_be_0)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    for (const auto& [asked, got] : {std::pair{0, 22}, {1, 1}, {20, 20}}) {
        kit::expect_ending(
            [asked = asked] {
                OUT_FILE file;
                if (!out_open(file, "/dev/full", OUT_MODE::append, log_lost)) _exit(99);
                file.write("x");
                end_run(asked);
            },
            got, "", "\nFile write error for '/dev/full'");
    }
}

TEST(End_run, a_trace_that_loses_bytes_only_then_is_told_and_shows_too)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    kit::expect_ending(
        [] {
            OUT_FILE file;
            if (!out_open(file, "/dev/full", OUT_MODE::append, trace_lost)) _exit(99);
            file.write("x");
            end_run(0);
        },
        22, "", "\nFile write error for '/dev/full'");
}

} // namespace
