// Characters as the C locale has them: every one of the 256.
#include "driver/base/ascii.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// All characters of which something is true, in the order of their codes.
template <class Is>
std::string all_that(Is is)
{
    std::string found;
    for (int code = 0; code < 256; ++code)
        if (const char c = static_cast<char>(code); is(c)) found += c;
    return found;
}

TEST(is_space, is_true_for_six_characters)
{
    EXPECT_EQ(all_that(is_space), "\t\n\v\f\r ");
}

TEST(is_digit, is_true_for_ten_characters)
{
    EXPECT_EQ(all_that(is_digit), "0123456789");
}

TEST(to_upper, changes_the_26_small_letters_and_nothing_else)
{
    EXPECT_EQ(all_that([](char c) { return to_upper(c) != c; }), "abcdefghijklmnopqrstuvwxyz");
    std::string capitals;
    for (const char c : std::string("abcdefghijklmnopqrstuvwxyz")) capitals += to_upper(c);
    EXPECT_EQ(capitals, "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
}

TEST(hex_digit, is_the_value_of_a_digit_in_either_case)
{
    const std::string digits = "0123456789ABCDEF", small = "0123456789abcdef";
    for (int value = 0; value < 16; ++value) {
        EXPECT_EQ(hex_digit(digits[static_cast<size_t>(value)]), value);
        EXPECT_EQ(hex_digit(small[static_cast<size_t>(value)]), value);
    }
}

TEST(hex_digit, is_below_zero_for_every_other_character)
{
    EXPECT_EQ(all_that([](char c) { return hex_digit(c) >= 0; }), "0123456789ABCDEFabcdef");
    EXPECT_EQ(all_that([](char c) { return hex_digit(c) == -1; }).size(), 256U - 22U);
}

} // namespace
