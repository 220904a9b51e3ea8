// Bytes turned into digits and numbers, and back.
#include "packet/codec.h"

#include "kit/ending.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

std::string digits_of(const Bytes& bytes)
{
    std::string digits(2 * bytes.size() + 1, '#');
    unbcd(digits.data(), bytes.data(), static_cast<uint16_t>(bytes.size()));
    EXPECT_EQ(digits.back(), '#'); // no terminator
    digits.pop_back();
    return digits;
}

TEST(unbcd, writes_two_digits_per_byte)
{
    EXPECT_EQ(digits_of({0x12, 0x34}), "1234");
    EXPECT_EQ(digits_of({0x00, 0x99, 0x07}), "009907");
    EXPECT_EQ(digits_of({}), "");
}

TEST(unbcd, nibbles_above_9_come_out_as_the_characters_behind_it)
{
    EXPECT_EQ(digits_of({0xAB, 0xCD, 0xEF}), ":;<=>?");
    EXPECT_EQ(digits_of({0x1A, 0xF2}), "1:?2");
}

uint16_t value_of(const Bytes& bytes)
{
    return bcd2i(bytes.data(), static_cast<int16_t>(bytes.size()));
}

TEST(bcd2i, reads_decimal_digits)
{
    EXPECT_EQ(value_of({0x12, 0x34}), 1234);
    EXPECT_EQ(value_of({0x99, 0x99}), 9999);
    EXPECT_EQ(value_of({0x07}), 7);
    EXPECT_EQ(value_of({}), 0);
}

TEST(bcd2i, nibbles_above_9_count_as_what_they_are)
{
    EXPECT_EQ(value_of({0xAB}), 111);
    EXPECT_EQ(value_of({0xFF}), 165);
    EXPECT_EQ(value_of({0xAB, 0xCD}), 11233);
    EXPECT_EQ(value_of({0xFF, 0xFF}), 16665);
    EXPECT_EQ(value_of({0x2A, 0x50}), 3050);
}

TEST(bcd2i, wraps_at_16_bits)
{
    EXPECT_EQ(value_of({0x99, 0x99, 0x99}), 999999 - 15 * 65536);
    EXPECT_EQ(value_of({0x06, 0x55, 0x36}), 0);
}

TEST(bcd2i, a_count_below_1_is_no_digits)
{
    const uint8_t byte = 0x12;
    EXPECT_EQ(bcd2i(&byte, 0), 0);
    EXPECT_EQ(bcd2i(&byte, -1), 0);
}

TEST(bcdtoi, gives_the_same_value_a_byte_at_a_time)
{
    for (unsigned hi = 0; hi < 256; ++hi) {
        for (unsigned lo = 0; lo < 256; ++lo) {
            const uint8_t bytes[] = {static_cast<uint8_t>(hi), static_cast<uint8_t>(lo)};
            const unsigned value = (hi / 16 * 10 + hi % 16) * 100 + lo / 16 * 10 + lo % 16;
            ASSERT_EQ(bcdtoi(bytes, 2), value) << hi << ' ' << lo;
            ASSERT_EQ(bcd2i(bytes, 2), value) << hi << ' ' << lo;
        }
    }
    const uint8_t three[] = {0x99, 0x99, 0x99};
    EXPECT_EQ(bcdtoi(three, 3), 999999 - 15 * 65536);
    EXPECT_EQ(bcdtoi(three, 0), 0);
}

std::string split(const Bytes& packed)
{
    char text[16] = "###############";
    EXPECT_EQ(secs_split(packed.data(), text), 13);
    EXPECT_EQ(text[13], '\0');
    return text;
}

TEST(secs_split, year_and_second_of_the_year_become_a_time)
{
    EXPECT_EQ(split({0x28, 0x00, 0x00, 0x3D}), "2004001000101");
    EXPECT_EQ(split({0x00, 0x00, 0x00, 0x00}), "1984001000000");
    EXPECT_EQ(split({0x00, 0x01, 0x51, 0x7F}), "1984001235959");
    EXPECT_EQ(split({0x00, 0x01, 0x51, 0x80}), "1984002000000");
}

TEST(secs_split, the_lowest_bit_of_the_first_byte_belongs_to_the_seconds)
{
    EXPECT_EQ(split({0x01, 0x00, 0x00, 0x00}), "1984195042016"); // 16777216 seconds
    EXPECT_EQ(split({0x02, 0x00, 0x00, 0x00}), "1985001000000");
}

TEST(secs_split, reaches_day_389_of_2111)
{
    EXPECT_EQ(split({0xFF, 0xFF, 0xFF, 0xFF}), "2111389084031");
}

TEST(swap16, exchanges_two_bytes_and_is_signed)
{
    EXPECT_EQ(swap16(0x1234), 0x3412);
    EXPECT_EQ(swap16(0x00FF), -256);
    EXPECT_EQ(swap16(0xFEFF), -2);
}

TEST(swap32, reverses_four_bytes)
{
    EXPECT_EQ(swap32(0x12345678U), 0x78563412U);
    EXPECT_EQ(swap32(0x000000FFU), 0xFF000000U);
}

TEST(be16, and_be32_read_the_most_significant_byte_first)
{
    const uint8_t bytes[] = {0xFE, 0xDC, 0xBA, 0x98};
    EXPECT_EQ(be16(bytes), 0xFEDC);
    EXPECT_EQ(be32(bytes), 0xFEDCBA98U);
}

TEST(little_endian_in, reads_upward_with_the_first_byte_most_significant_and_signed)
{
    EXPECT_EQ(little_endian_in(Bytes{0x80, 0x01}.data(), 2), -32767);
    EXPECT_EQ(little_endian_in(Bytes{0x01, 0x02, 0x03, 0x04}.data(), 4), 0x01020304);
    EXPECT_EQ(little_endian_in(Bytes{0xFF, 0xFE, 0xFD}.data(), 3), -259);
    EXPECT_EQ(little_endian_in(Bytes{0xFF}.data(), 1), -1);
    EXPECT_EQ(little_endian_in(Bytes{0x7F}.data(), 1), 127);
    EXPECT_EQ(little_endian_in(Bytes{0x80, 0, 0, 0}.data(), 4), INT32_MIN);
}

TEST(big_endian_in, reads_downward_from_the_fourth_byte)
{
    const Bytes bytes = {0x01, 0x02, 0x03, 0x04};
    EXPECT_EQ(big_endian_in(bytes.data(), 4), 0x04030201);
    EXPECT_EQ(big_endian_in(bytes.data(), 3), 0x040302);
    EXPECT_EQ(big_endian_in(bytes.data(), 2), 0x0403);
    EXPECT_EQ(big_endian_in(bytes.data(), 1), 4);
    EXPECT_EQ(big_endian_in(Bytes{0, 0, 0, 0x80}.data(), 1), -128);
    EXPECT_EQ(big_endian_in(Bytes{0, 0, 0x01, 0x80}.data(), 2), -32767);
}

TEST(little_endian_in, complains_about_a_bad_count_and_gives_the_first_byte)
{
    const Bytes bytes = {0xFF, 0x02, 0x03, 0x04, 0x05};
    for (const int n : {0, 5, 6, 256}) {
        int32_t value = 0;
        EXPECT_EQ(kit::shown_by([&] { value = little_endian_in(bytes.data(), static_cast<uint16_t>(n)); }),
                  "\n ERROR: Incorrect no of bytes passed")
            << n;
        EXPECT_EQ(value, -1) << n;
    }
}

TEST(big_endian_in, complains_about_a_bad_count_and_gives_the_fourth_byte)
{
    const Bytes bytes = {0x01, 0x02, 0x03, 0xFE, 0x05};
    for (const int n : {0, 5, 6, 256}) {
        int32_t value = 0;
        EXPECT_EQ(kit::shown_by([&] { value = big_endian_in(bytes.data(), static_cast<uint16_t>(n)); }),
                  "\n ERROR: Incorrect no of bytes passed")
            << n;
        EXPECT_EQ(value, -2) << n;
    }
}

TEST(little_endian_out, writes_the_lowest_byte_first)
{
    Bytes to(6, 0xEE);
    little_endian_out(0x01020304, to.data() + 1, 4);
    EXPECT_EQ(to, (Bytes{0xEE, 0x04, 0x03, 0x02, 0x01, 0xEE}));
    to.assign(6, 0xEE);
    little_endian_out(0x01020304, to.data(), 2);
    EXPECT_EQ(to, (Bytes{0x04, 0x03, 0xEE, 0xEE, 0xEE, 0xEE}));
    little_endian_out(0x01020304, to.data(), 0);
    EXPECT_EQ(to[0], 0x04);
}

TEST(big_endian_out, writes_downward_from_the_fourth_byte)
{
    Bytes to(6, 0xEE);
    big_endian_out(0x01020304, to.data() + 1, 4);
    EXPECT_EQ(to, (Bytes{0xEE, 0x01, 0x02, 0x03, 0x04, 0xEE}));
    to.assign(6, 0xEE);
    big_endian_out(0x01020304, to.data(), 2);
    EXPECT_EQ(to, (Bytes{0xEE, 0xEE, 0x03, 0x04, 0xEE, 0xEE}));
    big_endian_out(0, to.data(), 0);
    EXPECT_EQ(to[3], 0x04);
}

TEST(big_endian_out, is_the_way_back_of_big_endian_in_reversed)
{
    std::mt19937 random(1);
    for (int i = 0; i < 1000; ++i) {
        const uint32_t value = static_cast<uint32_t>(random());
        uint8_t bytes[4];
        big_endian_out(value, bytes, 4);
        EXPECT_EQ(be32(bytes), value);
        little_endian_out(value, bytes, 4);
        EXPECT_EQ(static_cast<uint32_t>(big_endian_in(bytes, 4)), value);
    }
}

TEST(reverse, gives_the_value_of_a_big_endian_field_without_its_sign)
{
    EXPECT_EQ(reverse(Bytes{0x80, 0x01}.data(), 2), 32769U);
    EXPECT_EQ(reverse(Bytes{0x01, 0x02, 0x03, 0x04}.data(), 4), 0x01020304U);
    EXPECT_EQ(reverse(Bytes{0xFF, 0xFF, 0xFF, 0xFE}.data(), 4), 0xFFFFFFFEU);
}

TEST(reverse, complains_about_any_other_count_and_gives_0)
{
    const Bytes bytes = {0x01, 0x02, 0x03, 0x04, 0x05};
    for (const int n : {0, 1, 3, 5}) {
        uint32_t value = 99;
        EXPECT_EQ(kit::shown_by([&] { value = reverse(bytes.data(), static_cast<uint16_t>(n)); }),
                  "reverse: Incorrect no of bytes passed\n")
            << n;
        EXPECT_EQ(value, 0U) << n;
    }
}

std::string line_of(const Bytes& bytes)
{
    char line[80];
    memset(line, '#', sizeof line);
    hex_str(line, bytes.data());
    EXPECT_EQ(line[Hex_str_len], '\0');
    EXPECT_EQ(line[Hex_str_len + 1], '#');
    return line;
}

TEST(hex_str, shows_sixteen_bytes_as_digits_and_characters)
{
    EXPECT_EQ(line_of(Bytes(16, 0x41)),
              "41 41 41 41 41 41 41 41 - 41 41 41 41 41 41 41 41   AAAAAAAAAAAAAAAA");
    EXPECT_EQ(
        line_of({0x00, 0x1F, 0x20, 0x7E, 0x7F, 0x80, 0xA0, 0xFF, 'D', 'T', 0x0D, 0x0A, '%', 's', 0xC3, 0xA9}),
        "00 1F 20 7E 7F 80 A0 FF - 44 54 0D 0A 25 73 C3 A9   .. ~....DT..%s..");
}

TEST(hex_str, shows_every_byte_value_in_its_own_way)
{
    for (unsigned b = 0; b < 256; ++b) {
        char pair[8];
        snprintf(pair, sizeof pair, "%02X", b);
        const std::string line = line_of(Bytes(16, static_cast<uint8_t>(b)));
        EXPECT_EQ(line.size(), 68U);
        EXPECT_EQ(line.substr(0, 2), pair);
        EXPECT_EQ(line.substr(47, 2), pair);
        EXPECT_EQ(line.substr(49, 3), "   ");
        EXPECT_EQ(line.back(), b >= 32 && b <= 126 ? static_cast<char>(b) : '.');
    }
}

} // namespace
