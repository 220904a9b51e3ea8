// Numbers in texts: what counts as one, where it ends, and what becomes of those that are too large.
#include "driver/base/number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

using namespace std::string_view_literals;

constexpr int32_t Least = std::numeric_limits<int32_t>::min();
constexpr int32_t Most = std::numeric_limits<int32_t>::max();
constexpr uint32_t Unsigned_most = 4294967295U;

std::string random_text(std::mt19937& random, std::string_view letters, size_t longest)
{
    std::string text(random() % (longest + 1), ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    return text;
}

TEST(to_int32, reads_digits_behind_white_space_and_one_sign)
{
    EXPECT_EQ(to_int32("42"), 42);
    EXPECT_EQ(to_int32(" \t\n\v\f\r42"), 42);
    EXPECT_EQ(to_int32("+7"), 7);
    EXPECT_EQ(to_int32(" -7"), -7);
    EXPECT_EQ(to_int32("007"), 7);
}

TEST(to_int32, ends_at_the_first_other_character)
{
    EXPECT_EQ(to_int32("12abc"), 12);
    EXPECT_EQ(to_int32("1 2"), 1);
    EXPECT_EQ(to_int32("3.9"), 3);
    EXPECT_EQ(to_int32("0x10"), 0);
    EXPECT_EQ(to_int32("1e3"), 1);
}

TEST(to_int32, is_zero_for_a_text_that_is_no_number)
{
    for (const std::string_view text :
         {""sv, " "sv, "abc"sv, "-"sv, "+"sv, "+-3"sv, "--5"sv, "- 5"sv, ".5"sv})
        EXPECT_EQ(to_int32(text), 0) << text;
}

TEST(to_int32, saturates_at_32_bits)
{
    EXPECT_EQ(to_int32("2147483647"), Most);
    EXPECT_EQ(to_int32("2147483648"), Most);
    EXPECT_EQ(to_int32("4294967296"), Most);
    EXPECT_EQ(to_int32("99999999999"), Most);
    EXPECT_EQ(to_int32("-2147483648"), Least);
    EXPECT_EQ(to_int32("-2147483649"), Least);
    EXPECT_EQ(to_int32(std::string(99, '9')), Most);
    EXPECT_EQ(to_int32("-" + std::string(99, '9')), Least);
    EXPECT_EQ(to_int32(std::string(98, '0') + "5"), 5);
}

TEST(to_int32, stops_at_a_nul)
{
    EXPECT_EQ(to_int32("1\0002"sv), 1);
    EXPECT_EQ(to_int32("\0002"sv), 0);
}

TEST(to_int32, takes_bytes_above_127_for_letters)
{
    EXPECT_EQ(to_int32("\xA0\x35"), 0); // no white space, though some character sets say so
    EXPECT_EQ(to_int32("5\xB2"), 5);
}

TEST(to_int32, agrees_with_the_c_library_on_random_texts)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random_text(random, " \t+-0123456789012345678901234567890123456789x.", 14);
        const long long value = strtoll(text.c_str(), nullptr, 10);
        EXPECT_EQ(to_int32(text), std::clamp<long long>(value, Least, Most)) << '"' << text << '"';
    }
}

TEST(to_uint32_any_base, reads_decimal_hexadecimal_and_octal)
{
    EXPECT_EQ(to_uint32_any_base("16"), 16U);
    EXPECT_EQ(to_uint32_any_base("0x10"), 16U);
    EXPECT_EQ(to_uint32_any_base("0XfF"), 255U);
    EXPECT_EQ(to_uint32_any_base("010"), 8U);
    EXPECT_EQ(to_uint32_any_base("0"), 0U);
    EXPECT_EQ(to_uint32_any_base(" 7"), 7U);
    EXPECT_EQ(to_uint32_any_base("+5"), 5U);
    EXPECT_EQ(to_uint32_any_base("1e3"), 1U);
    EXPECT_EQ(to_uint32_any_base("0x1G"), 1U);
}

TEST(to_uint32_any_base, knows_no_binary_and_needs_a_digit_behind_the_prefix)
{
    EXPECT_EQ(to_uint32_any_base("0b101"), 0U);
    EXPECT_EQ(to_uint32_any_base("0b11"), 0U);
    EXPECT_EQ(to_uint32_any_base("0x"), 0U);
    EXPECT_EQ(to_uint32_any_base("0xG"), 0U);
    EXPECT_EQ(to_uint32_any_base("08"), 0U);
    EXPECT_EQ(to_uint32_any_base("0178"), 15U);
}

TEST(to_uint32_any_base, is_zero_for_a_text_that_is_no_number)
{
    for (const std::string_view text : {""sv, " "sv, "abc"sv, "-"sv, "- 1"sv, "+-1"sv, "x10"sv, "\0001"sv})
        EXPECT_EQ(to_uint32_any_base(text), 0U) << text;
}

TEST(to_uint32_any_base, saturates_at_32_bits)
{
    EXPECT_EQ(to_uint32_any_base("4294967295"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("4294967296"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("18446744073709551616"), Unsigned_most); // 2 to the 64th
    EXPECT_EQ(to_uint32_any_base("18446744073709551621"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("0xFFFFFFFF"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("0x100000000"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("0x10000000000000005"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("037777777777"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("040000000000"), Unsigned_most);
}

TEST(to_uint32_any_base, negates_modulo_32_bits)
{
    EXPECT_EQ(to_uint32_any_base("-1"), Unsigned_most);
    EXPECT_EQ(to_uint32_any_base("-4294967295"), 1U);
    EXPECT_EQ(to_uint32_any_base("-4294967296"), Unsigned_most); // too large before it is negated
    EXPECT_EQ(to_uint32_any_base("-0x10"), 4294967280U);
    EXPECT_EQ(to_uint32_any_base("-0"), 0U);
}

TEST(to_uint32_any_base, agrees_with_the_c_library_on_random_texts)
{
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        const std::string digits = (random() % 2   ? "0x"
                                    : random() % 2 ? "0"
                                                   : "") +
                                   random_text(random, "0123456789abcdefABCDEF g", 12);
        if (digits.empty() || digits[0] == ' ') continue;
        const bool minus = random() % 4 == 0;
        const unsigned long long size = strtoull(digits.c_str(), nullptr, 0);
        const uint32_t expected = size > Unsigned_most ? Unsigned_most
                                  : minus              ? 0U - static_cast<uint32_t>(size)
                                                       : static_cast<uint32_t>(size);
        EXPECT_EQ(to_uint32_any_base((minus ? "-" : "") + digits), expected) << minus << digits;
    }
}

TEST(to_double, reads_what_the_c_library_reads)
{
    EXPECT_EQ(to_double("  1.5"), 1.5);
    EXPECT_EQ(to_double("+.5"), 0.5);
    EXPECT_EQ(to_double("-5."), -5.0);
    EXPECT_EQ(to_double("1e3"), 1000.0);
    EXPECT_EQ(to_double("1E-2x"), 0.01);
    EXPECT_EQ(to_double("0x10"), 16.0);
    EXPECT_EQ(to_double("0x1p4"), 16.0);
    EXPECT_EQ(to_double("inf"), HUGE_VAL);
    EXPECT_EQ(to_double("-INFINITY"), -HUGE_VAL);
    EXPECT_TRUE(std::isnan(to_double("nan")));
    EXPECT_EQ(to_double("1e999"), HUGE_VAL);
}

TEST(to_double, ends_where_the_number_ends)
{
    EXPECT_EQ(to_double("1,5"), 1.0);
    EXPECT_EQ(to_double("1e"), 1.0);
    EXPECT_EQ(to_double("1e+"), 1.0);
    EXPECT_EQ(to_double("1.2.3"), 1.2);
    EXPECT_EQ(to_double("1\0002"sv), 1.0);
}

TEST(to_double, is_zero_for_a_text_that_is_no_number)
{
    for (const std::string_view text : {""sv, "  "sv, "abc"sv, "."sv, "-"sv, "e5"sv, "\0001"sv})
        EXPECT_EQ(to_double(text), 0.0) << text;
}

TEST(to_double, reads_a_line_of_99_characters_to_its_end)
{
    EXPECT_EQ(to_double(std::string(98, '0') + "5"), 5.0);
    EXPECT_EQ(to_double(std::string(98, ' ') + "5"), 5.0);
}

TEST(to_double, takes_255_characters_and_no_more)
{
    const auto right_aligned = [](size_t n) { return std::string(n - 3, ' ') + "2.5"; };
    for (size_t n = 240; n <= 255; ++n) EXPECT_EQ(to_double(right_aligned(n)), 2.5) << n;
    EXPECT_EQ(to_double(right_aligned(256)), 2.0);
    EXPECT_EQ(to_double(right_aligned(257)), 2.0);
    EXPECT_EQ(to_double(right_aligned(258)), 0.0);
}

TEST(scan_int16, reads_a_field_at_its_place)
{
    const std::string_view time = "2004123101530250";
    EXPECT_EQ(scan_int16(time, 0, 4), 2004);
    EXPECT_EQ(scan_int16(time, 4, 3), 123);
    EXPECT_EQ(scan_int16(time, 7, 2), 10);
    EXPECT_EQ(scan_int16(time, 9, 2), 15);
    EXPECT_EQ(scan_int16(time, 11, 2), 30);
    EXPECT_EQ(scan_int16(time, 13, 3), 250);
}

TEST(scan_int16, a_blank_field_takes_from_the_next_one)
{
    EXPECT_EQ(scan_int16("2004   101530250", 4, 3), 101);
    EXPECT_EQ(scan_int16("20 4", 2, 2), 4);
    EXPECT_EQ(scan_int16("                ", 0, 4), 0);
}

TEST(scan_int16, a_sign_counts_in_the_width)
{
    EXPECT_EQ(scan_int16("-1234", 0, 4), -123);
    EXPECT_EQ(scan_int16("+1234", 0, 3), 12);
    EXPECT_EQ(scan_int16("-5", 0, 1), 0);
}

TEST(scan_int16, is_zero_when_nothing_converts)
{
    EXPECT_EQ(scan_int16("", 0, 4), 0);
    EXPECT_EQ(scan_int16("abcd", 0, 4), 0);
    EXPECT_EQ(scan_int16("- 5 ", 0, 4), 0);
    EXPECT_EQ(scan_int16("12", 2, 3), 0);
    EXPECT_EQ(scan_int16("12", 13, 3), 0); // the text ends before the field begins
}

TEST(scan_int16, a_nul_ends_a_field_and_hides_none_behind_it)
{
    EXPECT_EQ(scan_int16("12\00034"sv, 1, 4), 2);
    EXPECT_EQ(scan_int16("12\00034"sv, 2, 3), 0);
    EXPECT_EQ(scan_int16("12\00034"sv, 3, 2), 34);
    EXPECT_EQ(scan_double("1.5\0002.5"sv, 0, 7), 1.5);
    EXPECT_EQ(scan_double("1.5\0002.5"sv, 4, 3), 2.5);
}

TEST(scan_int16, keeps_16_bits)
{
    EXPECT_EQ(scan_int16("70000", 0, 5), 4464);
    EXPECT_EQ(scan_int16("40000", 0, 5), -25536);
}

TEST(scan_int16, agrees_with_scanf_on_random_time_texts)
{
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random_text(random, "012345678901234567890123456789  +-:", 16);
        const size_t at = random() % (text.size() + 1);
        int16_t two = 0, three = 0, four = 0;
        if (sscanf(text.c_str() + at, "%2hd", &two) != 1) two = 0;
        if (sscanf(text.c_str() + at, "%3hd", &three) != 1) three = 0;
        if (sscanf(text.c_str() + at, "%4hd", &four) != 1) four = 0;
        EXPECT_EQ(scan_int16(text, at, 2), two) << '"' << text << "\" at " << at;
        EXPECT_EQ(scan_int16(text, at, 3), three) << '"' << text << "\" at " << at;
        EXPECT_EQ(scan_int16(text, at, 4), four) << '"' << text << "\" at " << at;
    }
}

TEST(scan_word, takes_the_characters_up_to_white_space_behind_what_goes_before)
{
    EXPECT_EQ(scan_word("250", 0, 3), "250");
    EXPECT_EQ(scan_word("  250", 0, 3), "250") << "white space does not count in the width";
    EXPECT_EQ(scan_word(" \t\n\v\f\r25 0", 0, 3), "25");
    EXPECT_EQ(scan_word("2\t5", 0, 3), "2");
    EXPECT_EQ(scan_word("a-b+", 0, 9), "a-b+");
}

TEST(scan_word, begins_at_its_place_and_is_as_long_as_its_width_at_most)
{
    EXPECT_EQ(scan_word("2004123101530250", 13, 3), "250");
    EXPECT_EQ(scan_word("2004123101530250", 4, 3), "123");
    EXPECT_EQ(scan_word("12345", 1, 9), "2345");
    EXPECT_EQ(scan_word("12345", 0, 1), "1");
}

TEST(scan_word, is_empty_where_there_is_none)
{
    EXPECT_EQ(scan_word("", 0, 3), "");
    EXPECT_EQ(scan_word("   ", 0, 3), "");
    EXPECT_EQ(scan_word("12", 2, 3), "");
    EXPECT_EQ(scan_word("12", 13, 3), "") << "the text ends before the field begins";
}

TEST(scan_int32, saturates_at_32_bits)
{
    EXPECT_EQ(scan_int32("  123456", 0, 6), 123456);
    EXPECT_EQ(scan_int32("99999999999", 0, 11), Most);
    EXPECT_EQ(scan_int32("-99999999999", 0, 12), Least);
    EXPECT_EQ(scan_int32("12x", 0, 3), 12);
}

TEST(scan_double, reads_a_decimal_field_of_a_width)
{
    EXPECT_EQ(scan_double("N  34 12.345", 5, 6), 12.345);
    EXPECT_EQ(scan_double("123456.7", 0, 6), 123456.0);
    EXPECT_EQ(scan_double("-1.5x", 0, 6), -1.5);
    EXPECT_EQ(scan_double("   12.5", 0, 2), 12.0); // blanks are not counted
    EXPECT_EQ(scan_double("      ", 0, 6), 0.0);
    EXPECT_EQ(scan_double("abc", 0, 3), 0.0);
    EXPECT_EQ(scan_double("12", 40, 6), 0.0);
}

TEST(scan_double, agrees_with_scanf_on_random_texts)
{
    std::mt19937 random(4);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random_text(random, "01234567890123456789 .-", 10);
        const size_t at = random() % (text.size() + 1);
        double value = 0.0;
        if (sscanf(text.c_str() + at, "%6lf", &value) != 1) value = 0.0;
        EXPECT_EQ(scan_double(text, at, 6), value) << '"' << text << "\" at " << at;
    }
}

TEST(stof, reads_a_decimal_number)
{
    EXPECT_EQ(stof("100", 0), 100.0f);
    EXPECT_EQ(stof(" 33.3", 0), 33.3f);
    EXPECT_EQ(stof("100 ", 0), 100.0f);
    EXPECT_EQ(stof("1e2", 0), 100.0f);
    EXPECT_EQ(stof("", 0), 0.0f);
    EXPECT_EQ(stof("    ", 0), 0.0f);
    EXPECT_EQ(stof("abc", 0), 0.0f);
    EXPECT_EQ(stof("1\0002"sv, 0), 1.0f);
    EXPECT_TRUE(std::isinf(stof("inf ", 0)));
    EXPECT_TRUE(std::isnan(stof("nan ", 0)));
}

TEST(stof, is_a_single_float)
{
    EXPECT_EQ(stof("16777217", 0), 16777216.0f);
    EXPECT_EQ(std::bit_cast<uint32_t>(stof("0.1", 0)), 0x3DCCCCCDu);
}

TEST(stof, uses_no_more_than_the_length_given)
{
    EXPECT_EQ(stof("12345", 3), 123.0f);
    EXPECT_EQ(stof("12", 10), 12.0f);
    EXPECT_EQ(stof("100/25", 4), 100.0f); // no divisor is left
}

TEST(stof, uses_at_most_19_characters)
{
    EXPECT_EQ(stof("0000000000000000001234", 0), 1.0f);
    EXPECT_EQ(stof("0000000000000000001234", 22), 1.0f);
    EXPECT_EQ(stof("00000000000000001/25", 0),
              HUGE_VALF); // of "25" only "2" is left: tested, nothing behind it
}

TEST(stof, divides_by_the_number_two_characters_behind_the_slash)
{
    EXPECT_EQ(stof("100/25", 0), 20.0f);
    EXPECT_EQ(stof("1/ 2", 0), 0.5f);
    EXPECT_EQ(stof("100/05", 0), 20.0f);
    EXPECT_EQ(stof("100/-5", 0), 20.0f);
    EXPECT_EQ(stof("1/25", 4), 0.2f);
    EXPECT_EQ(stof("100/ 4 ", 0), 25.0f);
}

TEST(stof, divides_by_nothing_when_only_one_digit_stands_behind_the_slash)
{
    EXPECT_EQ(stof("100/4", 0), HUGE_VALF);
    EXPECT_EQ(stof("1/10", 4), HUGE_VALF); // "10" is tested, "0" divides
    EXPECT_EQ(stof("-1/4", 0), -HUGE_VALF);
    EXPECT_EQ(stof("100/2/4", 0), HUGE_VALF);
    EXPECT_TRUE(std::isnan(stof("0/4", 0)));
    EXPECT_TRUE(std::isnan(stof("/4", 0)));
}

TEST(stof, does_not_divide_when_the_number_behind_the_slash_is_zero)
{
    EXPECT_EQ(stof("100/0", 0), 100.0f);
    EXPECT_EQ(stof("100/", 0), 100.0f);
    EXPECT_EQ(stof("100/x5", 0), 100.0f);
    EXPECT_EQ(stof("100/0.0", 0), 100.0f);
}

TEST(stoi, reads_at_most_8_characters_into_16_bits)
{
    EXPECT_EQ(stoi("42", 0), 42);
    EXPECT_EQ(stoi("70000", 0), 4464);
    EXPECT_EQ(stoi("123456789", 0), 24910); // 12345678
    EXPECT_EQ(stoi("-1", 0), 65535);
    EXPECT_EQ(stoi(" 42x", 0), 42);
    EXPECT_EQ(stoi("       123", 0), 1);
}

TEST(stoi, uses_no_more_than_the_length_given)
{
    EXPECT_EQ(stoi("1234", 2), 12);
    EXPECT_EQ(stoi("12", 8), 12);
    EXPECT_EQ(stoi("123456789", 9), 24910);
}

TEST(stoi, is_zero_for_a_text_that_is_no_number)
{
    EXPECT_EQ(stoi("", 0), 0);
    EXPECT_EQ(stoi("", 3), 0);
    EXPECT_EQ(stoi("abc", 0), 0);
    EXPECT_EQ(stoi("\0005"sv, 0), 0);
}

} // namespace
