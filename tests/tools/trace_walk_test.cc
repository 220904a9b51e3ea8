// Finding and opening traces: which files, in which order, and what is no trace.
#include "tools/sac_words.h"
#include "trace/file.h"
#include "trace/walk.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using namespace ls_test;
using trace::Found;

namespace {

/// Paths found below the scratch directory's "t", told from there on.
std::vector<std::string> found(const kit::Scratch& scratch, const trace::Walk& walk)
{
    std::vector<std::string> names;
    for (const trace::TracePath& file : walk.files)
        names.push_back(file.path.substr(scratch.path("t/").size()) + " " + std::string(file.relative()));
    return names;
}

Found opened(const std::string& path)
{
    trace::InputFile input;
    trace::TraceHeader trace;
    return open_trace(path, input, trace);
}

using Names = std::vector<std::string>;

} // namespace

TEST(Trace_walk, takes_the_traces_of_all_levels_sorted_by_path)
{
    const kit::Scratch s;
    for (const char* name :
         {"t/b.sac", "t/a/z.sac", "t/a/y/x.sac", "t/a/y/x.vxl", "t/c.SAC", "t/e.Sac", "t/sac", "t/d.sac.gz"})
        s.write(name, "");
    const trace::Walk walk = trace::find_traces({s.path("t")});
    EXPECT_EQ(found(s, walk),
              (Names{"a/y/x.sac a/y/x.sac", "a/z.sac a/z.sac", "b.sac b.sac", "c.SAC c.SAC", "e.Sac e.Sac"}));
    EXPECT_TRUE(walk.troubles.empty());
}

TEST(Trace_walk, takes_each_file_once_and_a_named_file_whatever_its_name)
{
    const kit::Scratch s;
    s.write("t/a/b.sac", "");
    s.write("t/note", "");
    const trace::Walk walk = trace::find_traces({s.path("t/a"), s.path("t/a/"), s.path("t/note")});
    EXPECT_EQ(found(s, walk), (Names{"a/b.sac b.sac", "note note"}));
}

TEST(Trace_walk, follows_no_link_to_a_directory_but_one_that_is_asked_for)
{
    const kit::Scratch s;
    s.write("t/a/b.sac", "");
    std::filesystem::create_directory_symlink("..", s.path("t/a/up.sac"));
    std::filesystem::create_directory_symlink(".", s.path("t/a/here"));
    std::filesystem::create_symlink("b.sac", s.path("t/a/link.sac"));
    std::filesystem::create_directory_symlink("a", s.path("t/way"));
    EXPECT_EQ(found(s, trace::find_traces({s.path("t")})),
              (Names{"a/b.sac a/b.sac", "a/link.sac a/link.sac"}));
    EXPECT_EQ(found(s, trace::find_traces({s.path("t/way")})),
              (Names{"way/b.sac b.sac", "way/link.sac link.sac"}));
}

TEST(Trace_walk, a_directory_may_be_named_like_a_trace)
{
    const kit::Scratch s;
    s.write("t/a.sac/b.sac", "");
    EXPECT_EQ(found(s, trace::find_traces({s.path("t")})), (Names{"a.sac/b.sac a.sac/b.sac"}));
}

TEST(Trace_walk, one_directory_can_be_left_out)
{
    const kit::Scratch s;
    s.write("t/a.sac", "");
    s.write("t/new/a.sac", "");
    struct stat own;
    ASSERT_EQ(stat(s.path("t/new").c_str(), &own), 0);
    EXPECT_EQ(found(s, trace::find_traces({s.path("t")}, &own)), (Names{"a.sac a.sac"}));
}

TEST(Trace_walk, tells_what_is_not_there)
{
    const kit::Scratch s;
    const trace::Walk walk = trace::find_traces({s.path("none"), ""});
    ASSERT_EQ(walk.troubles.size(), 2U);
    EXPECT_EQ(walk.troubles[0].path, s.path("none"));
    EXPECT_EQ(walk.troubles[0].error, ENOENT);
    EXPECT_TRUE(walk.files.empty());
}

TEST(Trace_walk, a_tree_deeper_than_a_path_can_tell_is_told_and_the_rest_is_found)
{
    const kit::Scratch s;
    s.write("t/a.sac", "");
    // Deeper than PATH_MAX, made and later removed step by step.
    const std::string step(200, 'd');
    ASSERT_EQ(chdir(s.path("t").c_str()), 0);
    for (int i = 0; i < 40; ++i) {
        ASSERT_EQ(mkdir(step.c_str(), 0777), 0);
        ASSERT_EQ(chdir(step.c_str()), 0);
    }
    const trace::Walk walk = trace::find_traces({s.path("t")});
    EXPECT_EQ(found(s, walk), (Names{"a.sac a.sac"}));
    ASSERT_EQ(walk.troubles.size(), 1U);
    EXPECT_EQ(walk.troubles[0].error, ENAMETOOLONG);
    for (int i = 0; i < 40; ++i) {
        ASSERT_EQ(chdir(".."), 0);
        ASSERT_EQ(rmdir(step.c_str()), 0);
    }
    ASSERT_EQ(chdir("/"), 0);
}

TEST(Trace_file, is_told_from_what_is_none)
{
    const kit::Scratch s;
    EXPECT_EQ(opened(s.write("a.sac", finished())), Found::trace);
    EXPECT_EQ(opened(s.write("b.sac", little_endian(finished()))), Found::trace);
    EXPECT_EQ(opened(s.write("c.sac", "")), Found::too_short);
    EXPECT_EQ(opened(s.write("d.sac", finished().substr(0, 631))), Found::too_short);
    EXPECT_EQ(opened(s.write("e.sac", std::string(2000, ' '))), Found::not_sac);
    EXPECT_EQ(opened(s.path("none.sac")), Found::unreadable);
    EXPECT_EQ(opened(s.dir()), Found::not_sac);
    EXPECT_EQ(opened("/dev/null"), Found::not_sac);
}

TEST(Trace_file, a_pipe_without_a_writer_is_no_trace_and_not_waited_for)
{
    const kit::Scratch s;
    ASSERT_EQ(mkfifo(s.path("a.sac").c_str(), 0666), 0);
    EXPECT_EQ(opened(s.path("a.sac")), Found::not_sac);
}

TEST(Trace_file, samples_follow_the_header)
{
    const kit::Scratch s;
    trace::InputFile input;
    trace::TraceHeader trace;
    ASSERT_EQ(open_trace(s.write("a.sac", little_endian(finished())), input, trace), Found::trace);
    EXPECT_EQ(trace.data_len, 12U);
    char bytes[100];
    ASSERT_EQ(input.read(bytes, sizeof bytes), 12);
    EXPECT_EQ(trace::float_at(bytes, trace.order), 5.0F);
    EXPECT_EQ(trace::float_at(bytes + 4, trace.order), -3.0F);
    EXPECT_EQ(input.read(bytes, sizeof bytes), 0);
    EXPECT_TRUE(input.is_unchanged());
    s.write("a.sac", finished() + "more");
    EXPECT_FALSE(input.is_unchanged());
}
