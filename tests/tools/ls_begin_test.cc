// vx_ls --set-begin: copies with B and E, the originals and what was there before untouched.
#include "tools/ls_tree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace ls_test;

TEST(Ls_set_begin, copies_the_tree_with_B_and_E_and_nothing_else_changed)
{
    const kit::Scratch s;
    s.write("out/2004_123/a.sac", finished());
    s.write("out/b.sac", little_endian(finished()));
    s.write("out/c.vxl", "log");
    const kit::Tree before = s.tree("out");
    const kit::Outcome run = run_ls(s, {"--set-begin", "new/place", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "2 copied to new/place, 0 not copied\n");
    EXPECT_EQ(s.tree("out"), before);
    const std::string expected = with_float(with_float(finished(), B, 0.0F), E, 0.02F);
    EXPECT_EQ(s.tree("new"), (kit::Tree{{"place/", ""},
                                        {"place/2004_123/", ""},
                                        {"place/2004_123/a.sac", expected},
                                        {"place/b.sac", little_endian(expected)}}));
}

TEST(Ls_set_begin, the_end_is_rounded_once)
{
    const kit::Scratch s;
    kit::Sac sac = usual();
    sac.rate(200);
    sac.npts = 17280001;
    s.write("out/a.sac", kit::sac_header(sac));
    std::filesystem::resize_file(s.path("out/a.sac"), 632 + 4 * 17280001);
    ASSERT_EQ(run_ls(s, {"--set-begin", "new", "out"}).status, 0);
    const std::string copy = s.read("new/a.sac");
    EXPECT_EQ(copy.size(), 632U + 4 * 17280001);
    EXPECT_EQ(header_float(copy, B), 0.0F);
    EXPECT_EQ(header_float(copy, E), 86400.0F); // 0.005 as a float is 1.1e-10 less: 86399.998, nearest float
}

TEST(Ls_set_begin, a_file_goes_into_the_directory_under_its_own_name)
{
    const kit::Scratch s;
    s.write("out/x/a.sac", finished());
    EXPECT_EQ(run_ls(s, {"--set-begin", "new/", "out/x/a.sac"}).status, 0);
    EXPECT_TRUE(s.exists("new/a.sac"));
}

TEST(Ls_set_begin, refuses_to_take_the_place_of_anything)
{
    const kit::Scratch s;
    s.write("out/a.sac", finished());
    s.write("out/b.sac", finished());
    s.write("new/a.sac", "mine");
    std::filesystem::create_symlink("nowhere", s.path("new/b.sac"));
    const kit::Outcome run = run_ls(s, {"--set-begin", "new", "out"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: new/a.sac: File exists\nvx_ls: new/b.sac: File exists\n");
    EXPECT_EQ(run.out, "0 copied to new, 2 not copied\n");
    EXPECT_EQ(s.tree("new"), (kit::Tree{{"a.sac", "mine"}, {"b.sac", ""}}));
    EXPECT_FALSE(s.exists("new/nowhere"));
}

TEST(Ls_set_begin, the_second_of_two_traces_with_one_place_is_refused)
{
    const kit::Scratch s;
    s.write("x/a.sac", finished());
    s.write("y/a.sac", finished());
    const kit::Outcome run = run_ls(s, {"--set-begin", "new", "x", "y"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "1 copied to new, 1 not copied\n");
}

TEST(Ls_set_begin, never_writes_over_the_originals)
{
    const kit::Scratch s;
    s.write("out/a.sac", finished());
    EXPECT_EQ(run_ls(s, {"--set-begin", "out", "out"}).status, 1);
    EXPECT_EQ(s.tree("out"), (kit::Tree{{"a.sac", finished()}}));
}

TEST(Ls_set_begin, copies_below_the_tree_are_not_copied_again)
{
    const kit::Scratch s;
    s.write("a.sac", finished());
    EXPECT_EQ(run_ls(s, {"--set-begin", "new", "."}).status, 0);
    EXPECT_EQ(run_ls(s, {"--set-begin", "new", "."}).status, 1); // a.sac is there
    EXPECT_EQ(kit::names(s.tree()), "a.sac\nnew/\nnew/a.sac\n");
}

TEST(Ls_set_begin, leaves_out_what_has_no_end_and_tells_why)
{
    const kit::Scratch s;
    s.write("out/a.sac", unfinished());
    s.write("out/b.sac", finished().substr(0, 640));
    s.write("out/c.sac", unfinished().substr(0, 632));
    s.write("out/d.sac", with_float(finished(), DELTA, -12345.0F));
    s.write("out/e.sac", "");
    s.write("out/f.sac", finished());
    const kit::Outcome run = run_ls(s, {"--set-begin", "new", "out"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: out/a.sac: unfinished; run vx_ls --finish first\n"
                       "vx_ls: out/b.sac: cut: shorter than its header says\n"
                       "vx_ls: out/c.sac: no samples\n"
                       "vx_ls: out/d.sac: no sample rate\n"
                       "vx_ls: out/e.sac: shorter than a SAC header: 0 bytes\n");
    EXPECT_EQ(kit::names(s.tree("new")), "f.sac\n");
}

TEST(Ls_set_begin, copies_have_the_mode_that_the_users_mask_leaves)
{
    const kit::Scratch s;
    s.write("out/a.sac", finished());
    ASSERT_EQ(chmod(s.path("out/a.sac").c_str(), 0664), 0);
    kit::RunOptions strict;
    strict.mask = 0027;
    ASSERT_EQ(run_ls(s, {"--set-begin", "new", "out"}, strict).status, 0);
    struct stat what {};
    ASSERT_EQ(stat(s.path("new/a.sac").c_str(), &what), 0);
    EXPECT_EQ(what.st_mode & 07777, 0640U);
}

TEST(Ls_set_begin, a_full_medium_leaves_no_part_of_a_copy)
{
    const kit::Scratch s;
    s.write("out/a.sac", with_word(finished() + std::string(300000, '\0'), NPTS, 75003));
    kit::RunOptions small;
    small.limits = {{RLIMIT_FSIZE, 100000}};
    const kit::Outcome run = run_ls(s, {"--set-begin", "new", "out"}, small);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: new/a.sac: File too large\n");
    EXPECT_EQ(s.tree("new").size(), 0U);
}

TEST(Ls_set_begin, a_place_that_cannot_be_made_is_status_1)
{
    const kit::Scratch s;
    s.write("out/a.sac", finished());
    s.write("file", "");
    const kit::Outcome run = run_ls(s, {"--set-begin", "file/new", "out"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: file/new: Not a directory\n");
}
