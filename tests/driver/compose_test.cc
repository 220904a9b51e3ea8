// Lines built by hand hold what printf would print.
#include "driver/base/compose.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <random>
#include <string>

namespace {

template <int width>
std::string decimal(uint32_t value)
{
    char line[32];
    return {line, put_decimal<width>(line, value)};
}

std::string printed(const char* format, int width, uint32_t value)
{
    char line[32];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(line, sizeof line, format, width, value);
#pragma GCC diagnostic pop
    return line;
}

template <int width>
void expect_as_printed()
{
    std::mt19937 random(5);
    for (int bits = 0; bits <= 32; ++bits)
        for (int i = 0; i < 50; ++i) {
            const auto value = static_cast<uint32_t>((uint64_t{random()} & ((uint64_t{1} << bits) - 1)));
            ASSERT_EQ(decimal<width>(value), printed("%0*" PRIu32, width, value));
        }
    if constexpr (width < 10) expect_as_printed<width + 1>();
}

TEST(put_decimal, equals_printf_over_all_widths)
{
    expect_as_printed<1>();
}

TEST(put_decimal, keeps_the_digits_that_a_width_has_no_room_for)
{
    EXPECT_EQ(decimal<1>(0), "0");
    EXPECT_EQ(decimal<4>(0), "0000");
    EXPECT_EQ(decimal<2>(99), "99");
    EXPECT_EQ(decimal<2>(100), "100");
    EXPECT_EQ(decimal<2>(166), "166");
    EXPECT_EQ(decimal<7>(4294967295U), "4294967295");
    EXPECT_EQ(decimal<7>(9999999), "9999999");
    EXPECT_EQ(decimal<7>(10000000), "10000000");
}

template <int width>
void expect_lowest_digits()
{
    std::mt19937 random(6);
    for (int i = 0; i < 2000; ++i) {
        const auto value = static_cast<uint32_t>(random());
        const std::string all = printed("%0*" PRIu32, width, value);
        char line[32] = "";
        EXPECT_EQ(put_digits<width>(line, value), line + width);
        ASSERT_EQ(line, all.substr(all.size() - width));
    }
}

TEST(put_digits, are_the_lowest_that_printf_prints)
{
    expect_lowest_digits<1>();
    expect_lowest_digits<2>();
    expect_lowest_digits<3>();
    expect_lowest_digits<4>();
}

TEST(put_hex, equals_printf)
{
    std::mt19937 random(6);
    for (int width = 1; width <= 8; ++width)
        for (int i = 0; i < 500; ++i) {
            const auto value = static_cast<uint32_t>(random() & ((uint64_t{1} << 4 * width) - 1));
            char line[16];
            ASSERT_EQ(std::string(line, put_hex(line, value, width)), printed("%0*" PRIX32, width, value));
        }
}

TEST(put, copies_a_piece_and_moves_behind_it)
{
    char line[16] = {};
    char* to = put(line, "ab");
    to = put(to, "");
    to = put(to, "c");
    EXPECT_EQ(std::string(line, to), "abc");
}

} // namespace
