// From the command line to the first packet: paths, the INI file's place, the run-wide files.
#include "driver/setup.h"

#include "driver/base/console.h"
#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/expect.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::string_view No_ini = " - not found; using defaults";

/// A working directory of its own, settings at their defaults, nothing named yet.
class Set_up : public testing::Test {
protected:
    Set_up()
    {
        set_defaults();
        for (std::string* s : {&FileIn, &DirOut, &DirOrg, &FileIni, &FileLog, &FileQcc, &File_temp})
            s->clear();
        unsetenv("VXU");
        EXPECT_EQ(chdir(scratch.dir().c_str()), 0);
    }
    ~Set_up() override
    {
        out_close(FdLog);
        out_close(FdQcc);
        if (FdIn) fclose(FdIn);
        FdIn = nullptr;
        EXPECT_EQ(chdir("/"), 0);
    }
    kit::Scratch scratch;
};

class Base_name : public Set_up {
protected:
    /// The part that input and run-wide files have in common.
    static std::string of(const std::string& input)
    {
        Log_on = Qcc_on = false;
        FileIn = input;
        DirOut = "out/";
        open_run_files();
        EXPECT_EQ(FileLog, "out/" + File_temp + ".vxl");
        EXPECT_EQ(FileQcc, "out/" + File_temp + ".qcc");
        return File_temp;
    }
};

TEST_F(Set_up, the_working_directory_is_the_output_path_when_none_is_given)
{
    FileIn = "in";
    settle_paths();
    EXPECT_EQ(DirOrg, scratch.dir());
    EXPECT_EQ(DirOut, scratch.dir() + "/");
}

TEST_F(Set_up, the_output_path_gets_its_slash_only_when_it_has_none)
{
    scratch.make_dir("out");
    DirOut = "out";
    settle_paths();
    EXPECT_EQ(DirOut, "out/");
    DirOut = "out/";
    settle_paths();
    EXPECT_EQ(DirOut, "out/");
    DirOut = "/";
    settle_paths();
    EXPECT_EQ(DirOut, "/");
}

TEST_F(Set_up, a_missing_output_path_ends_the_run_and_is_not_made)
{
    kit::expect_ending(
        [] {
            DirOut = "out";
            settle_paths();
        },
        10, "\nUnable to change to directory 'out'");
    EXPECT_FALSE(scratch.exists("out"));
}

TEST_F(Set_up, a_regular_file_passes_as_output_path)
{
    scratch.write("out", "");
    DirOut = "out";
    settle_paths();
    EXPECT_EQ(DirOut, "out/");
}

TEST_F(Set_up, paths_of_131_characters_are_taken_and_longer_ones_refused)
{
    // As long as wished: any number of "./" and doubled slashes leads to the same directory.
    scratch.make_dir("out");
    const auto path_of = [](size_t n) { return std::string(n - 4, '/').replace(0, 0, ".") + "out"; };
    ASSERT_EQ(path_of(130).size(), 130U);
    DirOut = path_of(130);
    FileIn = std::string(131, 'i');
    settle_paths();
    EXPECT_EQ(DirOut, path_of(130) + "/");
    DirOut = path_of(130) + "/";
    settle_paths();
    EXPECT_EQ(DirOut, path_of(130) + "/");
    kit::expect_ending(
        [&] {
            DirOut = path_of(131);
            settle_paths();
        },
        10, "\nUnable to change to directory '" + path_of(131) + "'");
    const std::string long_name(132, 'i');
    kit::expect_ending(
        [&] {
            DirOut = "out";
            FileIn = long_name;
            settle_paths();
        },
        20, "\nFile open error for '" + long_name + "'");
}

TEST_F(Set_up, a_working_directory_that_does_not_fit_needs_an_output_path)
{
    const std::string deep = std::string(80, 'd') + "/" + std::string(80, 'e');
    scratch.make_dir(deep + "/out");
    ASSERT_EQ(chdir(deep.c_str()), 0);
    kit::expect_ending([] { settle_paths(); }, 10, "\nUnable to change to directory '.'");
    DirOut = "out";
    settle_paths();
    EXPECT_EQ(DirOut, "out/");
    EXPECT_EQ(DirOrg, "");
}

TEST_F(Set_up, an_ini_file_in_the_working_directory_is_used)
{
    scratch.write("vxu.ini", "");
    DirOrg = scratch.dir();
    find_ini_file("/usr/bin/vx_sac");
    EXPECT_EQ(FileIni, scratch.dir() + "/vxu.ini");
}

TEST_F(Set_up, an_ini_file_in_a_working_directory_without_name_is_used_by_its_own)
{
    scratch.write("vxu.ini", "");
    find_ini_file("/usr/bin/vx_sac");
    EXPECT_EQ(FileIni, "vxu.ini");
}

TEST_F(Set_up, else_the_ini_file_stands_beside_the_program)
{
    scratch.write("bin/vxu.ini", "");
    find_ini_file("bin/vx_sac");
    EXPECT_EQ(FileIni, "bin/vxu.ini");
    find_ini_file("other/bin/vx_sac");
    EXPECT_EQ(FileIni, "other/bin/vxu.ini" + std::string(No_ini));
    find_ini_file("/vx_sac_in_no_such_place");
    EXPECT_EQ(FileIni, "/vxu.ini" + std::string(No_ini));
}

TEST_F(Set_up, a_program_name_without_a_slash_is_not_cut)
{
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, "vx_sacvxu.ini" + std::string(No_ini));
    scratch.write("vx_sacvxu.ini", "");
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, "vx_sacvxu.ini");
}

TEST_F(Set_up, the_environment_is_asked_for_a_name_that_ends_in_an_equals_sign)
{
    scratch.write("vxu.ini", "");
    scratch.write("mine.ini", "");
    DirOrg = scratch.dir();
    setenv("VXU", "=mine.ini", 1); // the entry reads VXU==mine.ini
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, "mine.ini");
    setenv("VXU", "=/nope", 1);
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, "/nope" + std::string(No_ini));
    setenv("VXU", "=", 1);
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, No_ini);
}

TEST_F(Set_up, no_environment_at_all_names_no_ini_file)
{
    scratch.write("bin/vxu.ini", "");
    clearenv();
    find_ini_file("bin/vx_sac");
    EXPECT_EQ(FileIni, "bin/vxu.ini");
}

TEST_F(Set_up, an_ordinary_setting_in_the_environment_is_not_found)
{
    scratch.write("mine.ini", "");
    setenv("VXU", "mine.ini", 1);
    setenv("XVXU", "=mine.ini", 1);
    setenv("VXUX", "=mine.ini", 1);
    find_ini_file("vx_sac");
    EXPECT_EQ(FileIni, "vx_sacvxu.ini" + std::string(No_ini));
}

TEST_F(Base_name, is_what_stands_between_the_slash_and_the_last_dot)
{
    EXPECT_EQ(of("dir/rec.a.pkt"), "rec.a");
    EXPECT_EQ(of("rec.pkt"), "rec");
    EXPECT_EQ(of("/data/rec.pkt"), "rec");
    EXPECT_EQ(of("a/b/rec."), "rec");
}

TEST_F(Base_name, is_all_behind_the_slash_when_there_is_no_dot)
{
    EXPECT_EQ(of("rec"), "rec");
    EXPECT_EQ(of("/d/rec"), "rec");
    EXPECT_EQ(of("d/e/rec"), "rec");
    EXPECT_EQ(of("d/"), "");
}

TEST_F(Base_name, comes_from_a_directory_when_the_last_dot_stands_there)
{
    EXPECT_EQ(of("data.set/file"), "data");
    EXPECT_EQ(of("a.b/c.d/e"), "c");
    EXPECT_EQ(of("../d/rec"), ".");
    EXPECT_EQ(of("./rec"), "");
}

TEST_F(Base_name, keeps_a_slash_that_is_the_first_character)
{
    EXPECT_EQ(of("/abc.pkt"), "/abc");
    EXPECT_EQ(of("/abc"), "/abc");
    EXPECT_EQ(of("//abc.pkt"), "abc");
}

TEST_F(Base_name, may_be_empty)
{
    EXPECT_EQ(of(".pkt"), "");
    EXPECT_EQ(of("a/.b"), "");
}

TEST_F(Set_up, run_wide_files_are_made_anew_when_they_are_switched_on)
{
    scratch.write("out/rec.vxl", "old");
    scratch.write("out/rec.qcc", "old");
    scratch.write("rec.pkt", "input");
    FileIn = "rec.pkt";
    DirOut = "out/";
    Qcc_on = true;
    Sys_time = 0;
    open_run_files();
    EXPECT_TRUE(FdLog.open);
    EXPECT_TRUE(FdQcc.open);
    out_close(FdLog);
    out_close(FdQcc);
    EXPECT_TRUE(scratch.read("out/rec.vxl").starts_with("VX_SAC - Version sps16   \r\n"));
    EXPECT_TRUE(scratch.read("out/rec.qcc").starts_with("VX_SAC - Version sps16   \r\n"));
    EXPECT_EQ(scratch.read("out/rec.vxl").find("old"), std::string::npos);
}

TEST_F(Set_up, run_wide_files_are_left_alone_when_they_are_switched_off)
{
    scratch.write("out/rec.vxl", "old");
    FileIn = "rec.pkt";
    DirOut = "out/";
    Log_on = false;
    open_run_files();
    EXPECT_FALSE(FdLog.open);
    EXPECT_FALSE(FdQcc.open);
    EXPECT_EQ(scratch.read("out/rec.vxl"), "old");
    EXPECT_FALSE(scratch.exists("out/rec.qcc"));
}

TEST_F(Set_up, an_input_that_its_own_log_would_empty_is_refused)
{
    scratch.write("rec.vxl", "precious");
    kit::expect_ending(
        [] {
            FileIn = "rec.vxl";
            DirOut = "./";
            open_run_files();
        },
        20, "\nFile open error for './rec.vxl'");
    EXPECT_EQ(scratch.read("rec.vxl"), "precious");

    EXPECT_EQ(link(scratch.path("rec.vxl").c_str(), scratch.path("other.qcc").c_str()), 0);
    kit::expect_ending(
        [] {
            FileIn = "rec.vxl";
            DirOut = "./";
            Log_on = false;
            Qcc_on = true;
            FileIn = "other.qcc";
            open_run_files();
        },
        20, "\nFile open error for './other.qcc'");
    EXPECT_EQ(scratch.read("rec.vxl"), "precious");
}

TEST_F(Set_up, an_input_with_bytes_is_opened)
{
    FileIn = scratch.write("in", "x");
    EXPECT_TRUE(open_input());
    EXPECT_NE(FdIn, nullptr);
}

TEST_F(Set_up, an_input_without_bytes_is_told)
{
    FileIn = scratch.write("in", "");
    EXPECT_FALSE(open_input());
    fclose(FdIn);
    FileIn = "/dev/zero"; // the file system says that it has none
    EXPECT_FALSE(open_input());
}

TEST_F(Set_up, a_missing_input_ends_the_run_after_five_seconds)
{
    kit::expect_ending(
        [] {
            FileIn = "missing.pkt";
            open_input();
        },
        20, "\nFile open error for 'missing.pkt'");
}

TEST_F(Set_up, the_console_begins_with_program_and_version)
{
    const std::string shown = kit::shown_by([] { print_banner(); });
    EXPECT_TRUE(shown.starts_with("\nVX_SAC - Version sps16   \n")) << shown;
    EXPECT_EQ(shown, kit::console_banner());
    EXPECT_FALSE(shown.ends_with("\n"));
}

TEST_F(Set_up, the_usage_text_is_exact)
{
    EXPECT_EQ(kit::shown_by([] { syntax(); }), kit::usage());
    Smp_skip = 4294967295U;
    EXPECT_EQ(kit::shown_by([] { syntax(); }), kit::usage("4294967295"));
}

/// The summary of settings that differ from the defaults.
TEST_F(Set_up, the_summary_shows_every_setting)
{
    FileIn = "in.pkt", FileIni = "my.ini", DirOrg = "/here", DirOut = "out/";
    FileLog = "out/in.vxl", FileQcc = "out/in.qcc";
    EXPECT_EQ(kit::shown_by([] { print_summary(); }),
              "\n\n     Input File : in.pkt\n       INI File : my.ini\n  Original Path : /here"
              "\n    Output Path : out/\n    Path Option : 0\n    Name Option : Auto"
              "\n     Log enable : YES\n    Log DT Blks : NO\n       Log File : out/in.vxl"
              "\n     QCC enable : NO\n       QCC File : out/in.qcc\n    Sample Rate : 100.0000"
              "\n    Max Samples : 4294967295\n   Skip Samples : 0"
              "\n\nPress CTRL-BRK or CTRL-C to abort.\n");
    Path_option = 3, Name_option = 1, Log_on = false, Log_dt = true, Qcc_on = true;
    Smp_rate_cmd = 33.3f, Smp_limit = 16, Smp_skip = 3000000000U;
    EXPECT_EQ(kit::shown_by([] { print_summary(); }),
              "\n\n     Input File : in.pkt\n       INI File : my.ini\n  Original Path : /here"
              "\n    Output Path : out/\n    Path Option : 3\n    Name Option : Unit ID"
              "\n     Log enable : NO\n    Log DT Blks : YES\n       Log File : out/in.vxl"
              "\n     QCC enable : YES\n       QCC File : out/in.qcc\n    Sample Rate : 33.3000"
              "\n    Max Samples : 16\n   Skip Samples : 3000000000"
              "\n\nPress CTRL-BRK or CTRL-C to abort.\n");
    for (const int option : {2, 3, 65535}) {
        Name_option = static_cast<uint16_t>(option);
        const std::string shown = kit::shown_by([] { print_summary(); });
        EXPECT_NE(shown.find("\n    Name Option : Station\n"), std::string::npos) << option;
    }
}

} // namespace
