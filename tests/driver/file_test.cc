// Files: opened with patience, looked for, and the directories above them.
#include "driver/base/file.h"

#include "driver/base/fatal.h"
#include "driver/base/outfile.h"
#include "kit/ending.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Five to six seconds by the clock, and a little for a busy machine.
void expect_patience(double seconds)
{
    EXPECT_GE(seconds, 4.95);
    EXPECT_LT(seconds, 7.5);
}

unsigned mode_of(const std::string& path)
{
    struct stat what = {};
    EXPECT_EQ(stat(path.c_str(), &what), 0) << path;
    return what.st_mode & 07777U;
}

TEST(fopen_vx, opens_a_file_at_once)
{
    const kit::Scratch scratch;
    const std::string path = scratch.write("a", "abc");
    const Clock::time_point start = Clock::now();
    FILE* file = fopen_vx(path.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_LT(seconds_since(start), 1.0);
    char bytes[4] = {};
    EXPECT_EQ(fread(bytes, 1, 3, file), 3U);
    EXPECT_STREQ(bytes, "abc");
    fclose(file);
}

TEST(fopen_vx, an_output_file_gives_way_when_no_descriptor_is_left)
{
    const kit::Scratch scratch;
    const std::string input = scratch.write("input", "abc"), output = scratch.path("output");
    EXPECT_EXIT(
        {
            OUT_FILE file;
            if (!out_open(file, output.c_str(), OUT_MODE::truncate, log_lost)) _exit(98);
            file.write("kept");
            rlimit few;
            few.rlim_cur = few.rlim_max = 32;
            if (setrlimit(RLIMIT_NOFILE, &few) != 0) _exit(99);
            while (dup(STDERR_FILENO) >= 0) {
            }
            const bool opened = fopen_vx(input.c_str(), "rb") != nullptr;
            out_close(file);
            _exit(opened ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(scratch.read("output"), "kept");
}

TEST(fopen_vx, gives_up_when_the_clock_has_passed_five_seconds)
{
    const kit::Scratch scratch;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(fopen_vx(scratch.path("missing").c_str(), "rb"), nullptr);
    expect_patience(seconds_since(start));
}

TEST(fopen_vx, waits_for_a_file_that_comes_late)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("late");
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        kit::write_file(path, "here");
    });
    const Clock::time_point start = Clock::now();
    FILE* file = fopen_vx(path.c_str(), "rb");
    const double waited = seconds_since(start);
    other.join();
    ASSERT_NE(file, nullptr);
    fclose(file);
    EXPECT_GE(waited, 1.1);
    EXPECT_LT(waited, 4.0);
}

TEST(out_open_vx, a_name_that_is_taken_fails_at_once)
{
    const kit::Scratch scratch;
    const std::string path = scratch.write("taken", "old");
    OUT_FILE file;
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(out_open_vx(file, path.c_str(), OUT_MODE::create_new, log_lost));
    EXPECT_LT(seconds_since(start), 1.0);
    EXPECT_FALSE(file.open);
    EXPECT_EQ(scratch.read("taken"), "old");
}

TEST(out_open_vx, waits_for_a_directory_that_comes_late)
{
    const kit::Scratch scratch;
    const std::string path = scratch.path("dir/file");
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        scratch.make_dir("dir");
    });
    OUT_FILE file;
    EXPECT_TRUE(out_open_vx(file, path.c_str(), OUT_MODE::create_new, log_lost));
    other.join();
    file.write("x");
    out_close(file);
    EXPECT_EQ(scratch.read("dir/file"), "x");
}

TEST(fexist, is_true_for_anything_that_exists)
{
    const kit::Scratch scratch;
    scratch.write("file", "");
    scratch.make_dir("dir");
    EXPECT_EQ(mkfifo(scratch.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(symlink("file", scratch.path("link").c_str()), 0);
    for (const char* name : {"file", "dir", "dir/", "fifo", "link"})
        EXPECT_EQ(fexist(scratch.path(name).c_str()), 1) << name;
}

TEST(fexist, is_false_for_what_cannot_be_reached)
{
    const kit::Scratch scratch;
    scratch.write("file", "");
    EXPECT_EQ(symlink("nowhere", scratch.path("dangling").c_str()), 0);
    for (const char* name : {"missing", "missing/", "file/", "file/below", "dangling"})
        EXPECT_EQ(fexist(scratch.path(name).c_str()), 0) << name;
    EXPECT_EQ(fexist(""), 0);
}

TEST(name_taken, is_true_also_for_a_link_to_nowhere)
{
    const kit::Scratch scratch;
    scratch.write("file", "");
    EXPECT_EQ(symlink("nowhere", scratch.path("dangling").c_str()), 0);
    EXPECT_TRUE(name_taken(scratch.path("file").c_str()));
    EXPECT_TRUE(name_taken(scratch.path("dangling").c_str()));
    EXPECT_TRUE(name_taken(scratch.dir().c_str()));
    EXPECT_FALSE(name_taken(scratch.path("missing").c_str()));
}

TEST(same_file, goes_by_the_file_and_not_by_its_name)
{
    const kit::Scratch scratch;
    const std::string a = scratch.write("a", "same bytes");
    const std::string b = scratch.write("b", "same bytes");
    const std::string hard = scratch.path("hard"), soft = scratch.path("soft");
    EXPECT_EQ(link(a.c_str(), hard.c_str()), 0);
    EXPECT_EQ(symlink("a", soft.c_str()), 0);
    EXPECT_TRUE(same_file(a.c_str(), a.c_str()));
    EXPECT_TRUE(same_file(a.c_str(), hard.c_str()));
    EXPECT_TRUE(same_file(soft.c_str(), a.c_str()));
    EXPECT_TRUE(same_file(a.c_str(), scratch.path("./a").c_str()));
    EXPECT_FALSE(same_file(a.c_str(), b.c_str()));
    EXPECT_FALSE(same_file(a.c_str(), scratch.path("missing").c_str()));
    EXPECT_FALSE(same_file(scratch.path("missing").c_str(), scratch.path("missing").c_str()));
}

/// Everything below a new directory after Make_dir(path), called in it.
std::string made_by(const kit::Scratch& scratch, const std::string& path)
{
    EXPECT_EQ(chdir(scratch.dir().c_str()), 0);
    Make_dir(path.c_str());
    EXPECT_EQ(chdir("/"), 0);
    return kit::names(scratch.tree());
}

TEST(Make_dir, creates_every_directory_above_a_file_but_not_the_file)
{
    const kit::Scratch scratch;
    EXPECT_EQ(made_by(scratch, "out/2012_100/12/x.sac"), "out/\nout/2012_100/\nout/2012_100/12/\n");
}

TEST(Make_dir, never_creates_the_last_component)
{
    const kit::Scratch scratch;
    EXPECT_EQ(made_by(scratch, "out/a"), "out/\n");
}

TEST(Make_dir, creates_nothing_for_a_bare_name)
{
    const kit::Scratch scratch;
    EXPECT_EQ(made_by(scratch, "a"), "");
    EXPECT_EQ(made_by(scratch, ""), "");
}

TEST(Make_dir, keeps_what_is_there)
{
    const kit::Scratch scratch;
    scratch.write("out/kept", "x");
    EXPECT_EQ(made_by(scratch, "out/new/a"), "out/\nout/kept\nout/new/\n");
    EXPECT_EQ(scratch.read("out/kept"), "x");
}

TEST(Make_dir, takes_full_paths_and_doubled_slashes)
{
    const kit::Scratch scratch;
    EXPECT_EQ(made_by(scratch, scratch.path("a//b/./c/x")), "a/\na/b/\na/b/c/\n");
}

TEST(Make_dir, ignores_what_cannot_be_created)
{
    const kit::Scratch scratch;
    scratch.write("file", "x");
    EXPECT_EQ(made_by(scratch, "file/dir/a"), "file\n");
    EXPECT_EQ(scratch.read("file"), "x");
}

TEST(Make_dir, leaves_the_permission_to_the_process_mask)
{
    const kit::Scratch scratch;
    const mode_t before = umask(0);
    Make_dir(scratch.path("open/x").c_str());
    umask(027);
    Make_dir(scratch.path("masked/x").c_str());
    umask(before);
    EXPECT_EQ(mode_of(scratch.path("open")), 0777U);
    EXPECT_EQ(mode_of(scratch.path("masked")), 0750U);
}

TEST(Make_dir, reaches_beyond_152_characters)
{
    const kit::Scratch scratch;
    std::string deep(90, 'd');
    deep += "/";
    deep.append(90, 'e');
    deep += "/";
    Make_dir((scratch.dir() + "/" + deep + "x.sac").c_str());
    EXPECT_TRUE(scratch.exists(deep));
}

} // namespace
