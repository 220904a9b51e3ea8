// Texts of fixed capacity, and the pieces of lines that are built by hand.
#include "driver/text.h"

#include "driver/compose.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

namespace {

using namespace std::string_view_literals;

/// All bytes of a text, the terminator and what stands behind it included.
template <size_t N>
std::string_view all_of(const Text<N>& text)
{
    return {text.s, sizeof text.s};
}

TEST(Text, starts_empty)
{
    const Text<5> text;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.length(), 0U);
    EXPECT_EQ(all_of(text), "\0\0\0\0\0\0"sv);
}

TEST(Text, keeps_what_fits_and_ends_it)
{
    Text<5> text;
    text.put("STA1");
    EXPECT_EQ(all_of(text), "STA1\0\0"sv);
    text.put("STA01");
    EXPECT_EQ(all_of(text), "STA01\0"sv);
    text.put("STATION");
    EXPECT_EQ(all_of(text), "STATI\0"sv);
    EXPECT_EQ(text.view(), "STATI");
    EXPECT_EQ(text.length(), 5U);
}

TEST(Text, leaves_nothing_of_what_it_held_before)
{
    Text<5> text;
    text.put("ABCDE");
    text.put("X");
    EXPECT_EQ(all_of(text), "X\0\0\0\0\0"sv);
    text.clear();
    EXPECT_EQ(all_of(text), "\0\0\0\0\0\0"sv);
}

TEST(Text, stops_at_the_first_nul)
{
    Text<5> text;
    text.put("A\0BC"sv);
    EXPECT_EQ(all_of(text), "A\0\0\0\0\0"sv);
    text.put("\0ABC"sv);
    EXPECT_TRUE(text.empty());
}

TEST(Text, keeps_blanks)
{
    Text<5> text;
    text.put("  A  ");
    EXPECT_EQ(text.view(), "  A  ");
    text.put("");
    EXPECT_EQ(text.view(), "");
}

TEST(Text, put_right_aligns_and_cuts_as_print_does)
{
    for (const char* from : {"", "A", "ABCD", "ABCDE", "ABCDEFG", "  AB "}) {
        Text<5> text;
        char expected[16];
        snprintf(expected, sizeof expected, "%*.*s", 5, 5, from);
        text.put_right(from);
        EXPECT_EQ(text.view(), expected);
        EXPECT_EQ(text.s[5], '\0');
    }
}

TEST(before_nul, is_the_part_that_print_shows)
{
    EXPECT_EQ(before_nul("a\0b"sv), "a");
    EXPECT_EQ(before_nul("ab"sv), "ab");
    EXPECT_EQ(before_nul("\0ab"sv), "");
    EXPECT_EQ(before_nul(""sv), "");
}

TEST(put, lays_pieces_one_behind_the_other)
{
    char line[16];
    const char* end = put(put(line, "ab"), "\0c"sv);
    EXPECT_EQ(std::string_view(line, static_cast<size_t>(end - line)), "ab\0c"sv);
}

/// A number as printed and as put by hand.
void expect_decimal(uint32_t value)
{
    for (int width = 0; width <= 12; ++width) {
        char printed[32], line[32];
        snprintf(printed, sizeof printed, "%0*u", width, value);
        const char* end = put_decimal(line, value, width);
        EXPECT_EQ(std::string_view(line, static_cast<size_t>(end - line)), printed) << "width " << width;
    }
}

TEST(put_decimal, prints_as_print_does_over_every_width)
{
    for (uint32_t power = 1; power < 1'000'000'000; power *= 10) {
        expect_decimal(power - 1);
        expect_decimal(power);
        expect_decimal(power + 1);
    }
    expect_decimal(1'000'000'000);
    expect_decimal(4294967295U);
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) expect_decimal(static_cast<uint32_t>(random()) >> random() % 32);
}

TEST(put_hex, prints_as_print_does_over_every_width)
{
    for (unsigned value = 0; value <= 0xFFFF; ++value) {
        char printed[16], line[16];
        snprintf(printed, sizeof printed, "%04X", value);
        EXPECT_EQ(std::string_view(line, static_cast<size_t>(put_hex(line, value, 4) - line)), printed);
    }
    for (unsigned value = 0; value <= 0xFF; ++value) {
        char printed[16], line[16];
        snprintf(printed, sizeof printed, "%02X", value);
        EXPECT_EQ(std::string_view(line, static_cast<size_t>(put_hex(line, value, 2) - line)), printed);
    }
}

TEST(put_hex, shows_the_lowest_digits_of_what_is_wider)
{
    char line[16];
    EXPECT_EQ(std::string_view(line, static_cast<size_t>(put_hex(line, 0x12ABC, 4) - line)), "2ABC");
    EXPECT_EQ(std::string_view(line, static_cast<size_t>(put_hex(line, 0xF1, 1) - line)), "1");
    EXPECT_EQ(std::string_view(line, static_cast<size_t>(put_hex(line, 0xFFFFFFFF, 8) - line)), "FFFFFFFF");
}

} // namespace
