// Texts of fixed capacity.
#include "driver/base/text.h"

#include <gtest/gtest.h>

#include <cstdio>
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

} // namespace
