// The INI file as text: how it falls into sections and lines, what is a key, what is a value.
#include "model/ini.h"

#include "driver/base/settings.h"
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace {

using Lines = std::vector<std::string>;

Lines lines_of(const IniSection& section)
{
    Lines lines;
    for (const std::string_view line : section.lines) lines.emplace_back(line);
    EXPECT_EQ(section.lines.size(), lines.size());
    return lines;
}

/// An INI file of its own for each test, and the unit 9A2F that reads it.
class Ini_file : public testing::Test {
protected:
    Ini_file() { ini_forget(); }
    void ini(std::string_view text) { FileIni = scratch.write("vxu.ini", text); }
    const IniSection& section()
    {
        const IniSection* found = ini_section(unit_id, from);
        EXPECT_NE(found, nullptr);
        static const IniSection missing;
        return found ? *found : missing;
    }

    Lines lines() { return lines_of(section()); }

    kit::Scratch scratch;
    uint16_t unit_id = 0x9A2F;
    int32_t from = 0; ///< where the scan starts
};

/// The console output of one look at the file.
std::string warning_of(uint16_t unit_id, int32_t from)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(ini_section(unit_id, from), nullptr);
    return testing::internal::GetCapturedStdout();
}

/// A socket stands in a directory, yet nobody can open it as a file, not even the superuser.
std::string make_socket(const kit::Scratch& scratch)
{
    const int before = open(".", O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(chdir(scratch.dir().c_str()), 0); // a socket's name must be short
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, "vxu.ini", 8);
    EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(fd);
    EXPECT_EQ(fchdir(before), 0);
    close(before);
    return scratch.path("vxu.ini");
}

TEST_F(Ini_file, a_section_has_the_lines_between_its_header_and_the_next)
{
    ini("; notes\n[1111]\nStation=X\n[9A2F]\nStation=AB\nCh1Azm=5\n[2222]\nStation=Y\n");
    EXPECT_EQ(lines(), (Lines{"Station=AB\n", "Ch1Azm=5\n"}));
    EXPECT_EQ(section().first, 25); // 8 + 7 + 10 characters stand before
    EXPECT_EQ(section().last, 59);  // 7 + 11 + 9 of the section, 7 of the header that ends it
}

TEST_F(Ini_file, the_last_section_ends_with_the_file)
{
    ini("[9A2F]\nStation=AB\n");
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
    EXPECT_EQ(section().first, 0);
    EXPECT_EQ(section().last, 18);
}

TEST_F(Ini_file, a_unit_without_section_gets_no_lines_and_the_length_of_the_file)
{
    ini("[1111]\nStation=X\n");
    EXPECT_EQ(lines(), Lines());
    EXPECT_EQ(section().last, 17);
    EXPECT_EQ(section().first, 0);
}

TEST_F(Ini_file, an_empty_file_is_a_file_without_sections)
{
    ini("");
    EXPECT_EQ(lines(), Lines());
    EXPECT_EQ(section().last, 0);
}

TEST_F(Ini_file, a_header_matches_in_any_case_whatever_follows_it)
{
    ini("[9a2f]xyz = 1\nStation=AB\n");
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
}

TEST_F(Ini_file, a_header_must_begin_its_line)
{
    ini(" [9A2F]\nStation=AB\n");
    EXPECT_EQ(lines(), Lines());
}

TEST_F(Ini_file, a_byte_order_mark_hides_the_first_header)
{
    ini("\xEF\xBB\xBF[9A2F]\nStation=AB\n");
    EXPECT_EQ(lines(), Lines());
}

TEST_F(Ini_file, a_header_has_exactly_four_digits)
{
    ini("[09A2F]\na\n[9A2]\nb\n[9A2G]\nc\n[9A2F\nd\n[ 9A2F]\ne\n");
    EXPECT_EQ(lines(), Lines());
    unit_id = 0x09A2;
    EXPECT_EQ(lines(), Lines());
}

TEST_F(Ini_file, small_IDs_are_written_with_leading_zeros)
{
    ini("[001F]\nStation=AB\n");
    unit_id = 0x1F;
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
}

TEST_F(Ini_file, any_bracket_at_a_line_start_ends_the_section)
{
    ini("[9A2F]\na\n[\nb\n");
    EXPECT_EQ(lines(), (Lines{"a\n"}));
    EXPECT_EQ(section().last, 11);
}

TEST_F(Ini_file, only_the_first_section_of_a_unit_is_read)
{
    ini("[9A2F]\na\n[9A2F]\nb\n[1111]\nc\n[9A2F]\nd\n");
    EXPECT_EQ(lines(), (Lines{"a\n"}));
    EXPECT_EQ(section().last, 16);
    EXPECT_EQ(lines(), (Lines{"a\n"}));
}

TEST_F(Ini_file, the_scan_starts_at_the_remembered_position)
{
    ini("[9A2F]\na\n[1111]\nc\n[9A2F]\nd\n");
    from = 1;
    EXPECT_EQ(lines(), (Lines{"d\n"}));
    EXPECT_EQ(section().first, 18);
    from = 19;
    EXPECT_EQ(lines(), Lines());
    EXPECT_EQ(section().first, 0); // of no section
}

TEST_F(Ini_file, a_line_of_ninety_nine_characters_is_followed_by_a_line_of_its_own)
{
    const std::string comment = ";" + std::string(98, '-');
    ini("[9A2F]\n" + comment + "Station=FAKE\n");
    EXPECT_EQ(lines(), (Lines{comment, "Station=FAKE\n"}));
}

TEST_F(Ini_file, ninety_nine_characters_and_a_line_end_leave_the_end_as_a_line)
{
    const std::string comment(99, ';');
    ini("[9A2F]\n" + comment + "\nStation=AB\n");
    EXPECT_EQ(lines(), (Lines{comment, "\n", "Station=AB\n"}));
}

TEST_F(Ini_file, a_header_may_stand_at_a_piece_of_a_long_line)
{
    ini(std::string(198, ';') + "[9A2F]\nStation=AB\n");
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
    EXPECT_EQ(section().first, 198);
}

TEST_F(Ini_file, a_bracket_at_a_piece_of_a_long_line_ends_the_section)
{
    ini("[9A2F]\n" + std::string(99, ';') + "[x\nStation=AB\n");
    EXPECT_EQ(lines(), (Lines{std::string(99, ';')}));
    EXPECT_EQ(section().last, 7 + 99 + 3);
}

TEST_F(Ini_file, the_last_line_needs_no_end)
{
    ini("[9A2F]\nStation=AB");
    EXPECT_EQ(lines(), (Lines{"Station=AB"}));
    EXPECT_EQ(section().last, 17);
}

TEST_F(Ini_file, a_header_without_line_end_is_an_empty_section)
{
    ini("[9A2F]");
    EXPECT_EQ(lines(), Lines());
    EXPECT_EQ(section().last, 6);
}

TEST_F(Ini_file, a_NUL_ends_its_line_early)
{
    ini(std::string_view("[9A2F]\nStation=A\0B\n\0[1111]\nCh1Azm=5\n", 36));
    EXPECT_EQ(lines(), (Lines{"Station=A", "", "Ch1Azm=5\n"}));
    EXPECT_EQ(section().last, 36);
}

TEST_F(Ini_file, a_NUL_within_a_header_spoils_it)
{
    ini(std::string_view("[9A\0F]\nStation=A\n", 17));
    EXPECT_EQ(lines(), Lines());
}

TEST_F(Ini_file, is_read_once_and_then_served_from_memory)
{
    ini("[9A2F]\nStation=AB\n[1111]\nStation=C\n");
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
    std::filesystem::remove(FileIni);
    ASSERT_NE(ini_section(0x1111, 0), nullptr);
    EXPECT_EQ(lines_of(*ini_section(0x1111, 0)), (Lines{"Station=C\n"}));
    EXPECT_EQ(lines(), (Lines{"Station=AB\n"}));
}

TEST_F(Ini_file, a_missing_file_is_passed_over_in_silence)
{
    FileIni = scratch.path("vxu.ini");
    EXPECT_EQ(warning_of(unit_id, from), "");
}

TEST_F(Ini_file, a_missing_file_is_looked_for_once)
{
    FileIni = scratch.path("vxu.ini");
    EXPECT_EQ(ini_section(unit_id, from), nullptr);
    scratch.write("vxu.ini", "[9A2F]\nStation=AB\n");
    EXPECT_EQ(ini_section(unit_id, from), nullptr);
    ini_forget();
    EXPECT_NE(ini_section(unit_id, from), nullptr);
}

TEST_F(Ini_file, a_path_with_the_not_found_note_names_no_file)
{
    scratch.write("vxu.ini", "[9A2F]\nStation=AB\n");
    FileIni = scratch.path("vxu.ini") + " - not found; using defaults";
    EXPECT_EQ(warning_of(unit_id, from), "");
}

TEST_F(Ini_file, a_directory_opens_and_holds_nothing)
{
    scratch.make_dir("vxu.ini");
    FileIni = scratch.path("vxu.ini");
    testing::internal::CaptureStdout();
    EXPECT_EQ(lines(), Lines());
    EXPECT_EQ(section().last, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Ini_file, one_that_cannot_be_opened_is_tried_for_five_seconds_once_and_warned_of_each_time)
{
    FileIni = make_socket(scratch);
    const std::string warning = "\nWARNING: Unable to open the INI file " + FileIni;
    for (const bool first : {true, false, false}) {
        const time_t start = time(nullptr);
        EXPECT_EQ(warning_of(unit_id, from), warning);
        const time_t waited = time(nullptr) - start;
        EXPECT_EQ(waited >= 5, first) << waited;
        EXPECT_LE(waited, 8);
    }
}

TEST_F(Ini_file, a_pipe_cannot_be_opened_and_leaves_no_descriptor)
{
    FileIni = scratch.path("vxu.ini");
    ASSERT_EQ(mkfifo(FileIni.c_str(), 0600), 0);
    const int writer = open(FileIni.c_str(), O_RDWR);
    ASSERT_GE(writer, 0);
    const int next_free = dup(writer);
    close(next_free);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(warning_of(unit_id, from), "\nWARNING: Unable to open the INI file " + FileIni);
    const int after = dup(writer);
    EXPECT_EQ(after, next_free);
    close(after);
    close(writer);
}

TEST_F(Ini_file, a_position_before_the_start_cannot_be_set)
{
    ini("[9A2F]\nStation=AB\n");
    from = -1;
    EXPECT_EQ(warning_of(unit_id, from), "\nWARNING: Unable to set position within the INI file " + FileIni);
}

struct Key {
    std::string_view name;
};
const Key Table[] = {{"ChnAzm"}, {"ChnDip"}, {"ChnDipole"}, {"Station"}};

TEST(ini_row, is_the_first_whose_name_the_text_begins_with)
{
    EXPECT_EQ(ini_row("Station=AB", Table), &Table[3]);
    EXPECT_EQ(ini_row("stationX = AB", Table), &Table[3]);
    EXPECT_EQ(ini_row("CHNDIPOLE", Table), &Table[1]);
    EXPECT_EQ(ini_row(" Station=AB", Table), nullptr);
    EXPECT_EQ(ini_row("Statio", Table), nullptr);
    EXPECT_EQ(ini_row("", Table), nullptr);
}

TEST(set_once, keeps_the_first_value_that_is_not_zero)
{
    double field = 0.0;
    set_once(field, 0.0);
    set_once(field, 2.5);
    set_once(field, 3.5);
    EXPECT_EQ(field, 2.5);
}

TEST(ini_value, stands_between_the_first_equals_sign_and_a_comment_or_line_end)
{
    EXPECT_EQ(ini_value("Station=AB\n"), "AB");
    EXPECT_EQ(ini_value("Station = AB ; c\r\n"), "AB ");
    EXPECT_EQ(ini_value("Station=AB\r\n"), "AB");
    EXPECT_EQ(ini_value("Station=A\rB\n"), "A");
    EXPECT_EQ(ini_value("a=b=c"), "b=c");
    EXPECT_EQ(ini_value("a==b"), "=b");
    EXPECT_EQ(ini_value("a;b=c"), "c");
}

TEST(ini_value, skips_leading_blanks_but_no_tabs)
{
    EXPECT_EQ(ini_value("Station=   AB"), "AB");
    EXPECT_EQ(ini_value("Station=\tAB"), "\tAB");
    EXPECT_EQ(ini_value("Station= \t AB"), "\t AB");
    EXPECT_EQ(ini_value("Station=AB  "), "AB  ");
}

TEST(ini_value, may_be_empty)
{
    EXPECT_EQ(ini_value("Station="), "");
    EXPECT_EQ(ini_value("Station=;AB"), "");
    EXPECT_EQ(ini_value("Station=   ; AB"), "");
    EXPECT_EQ(ini_value("Station=\r\n"), "");
}

TEST(ini_value, is_missing_without_an_equals_sign)
{
    EXPECT_EQ(ini_value("Station AB"), std::nullopt);
    EXPECT_EQ(ini_value(""), std::nullopt);
}

} // namespace
