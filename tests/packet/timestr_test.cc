// Times as sixteen digits: made, taken apart, compared, moved on.
#include "packet/timestr.h"

#include "kit/packets.h"
#include "packet/block.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

TIMESTR at(std::string_view text)
{
    TIMESTR t;
    t.put(text);
    return t;
}

/// The digits of a packet's header time.
std::string time_of(const std::string& packet)
{
    return Block(packet).pkt().time.s;
}

TIME_T parsed(const std::string& text)
{
    TIME_T t{};
    Time_atoil(t, at(text));
    return t;
}

double seconds_of(const std::string& text)
{
    const TIME_T t = parsed(text);
    return Time_cvt(t);
}

TEST(header_time, is_made_of_the_headers_digits)
{
    EXPECT_EQ(time_of(kit::Dt()), "2004123101530250");
    EXPECT_EQ(time_of(kit::Sh("x").year(12).day(1).at(0, 0, 0, 7)), "2012001000000007");
    EXPECT_EQ(time_of(kit::Dt().year(99).day(366).at(23, 59, 59, 999)), "1999366235959999");
}

TEST(header_time, years_from_85_on_are_of_the_last_century)
{
    EXPECT_EQ(time_of(kit::Dt().year(84)).substr(0, 4), "2084");
    EXPECT_EQ(time_of(kit::Dt().year(85)).substr(0, 4), "1985");
    EXPECT_EQ(time_of(kit::Dt().year(0)).substr(0, 4), "2000");
    EXPECT_EQ(time_of(kit::Dt().year(99)).substr(0, 4), "1999");
}

TEST(header_time, a_year_that_is_no_number_counts_as_far_as_it_is_one)
{
    EXPECT_EQ(time_of(kit::Dt().raw(3, "\x8A")).substr(0, 4), "208:"); // 8
    EXPECT_EQ(time_of(kit::Dt().raw(3, "\x9F")).substr(0, 4), "209?"); // 9
    EXPECT_EQ(time_of(kit::Dt().raw(3, "\xA9")).substr(0, 4), "20:9"); // nothing
}

TEST(header_time, keeps_digits_that_are_none)
{
    EXPECT_EQ(time_of(kit::Dt().raw(6, "\xAB\xCD\xEF\x12\x34\x56")), "2004:;<=>?123456");
}

TEST(Time_atoil, takes_the_six_fields_apart)
{
    const TIME_T t = parsed("2004123101530250");
    EXPECT_EQ(t.year, 2004);
    EXPECT_EQ(t.day, 123);
    EXPECT_EQ(t.hour, 10);
    EXPECT_EQ(t.minute, 15);
    EXPECT_EQ(t.second, 30);
    EXPECT_EQ(t.milli, 250);
}

TEST(Time_atoil, clears_the_microseconds_and_leaves_the_spare_fields)
{
    TIME_T t{};
    t.spare[0] = 11, t.spare[1] = -12, t.micro = 99;
    Time_atoil(t, at("2004123101530250"));
    EXPECT_EQ(t.spare[0], 11);
    EXPECT_EQ(t.spare[1], -12);
    EXPECT_EQ(t.micro, 0);
}

TEST(Time_atoil, a_record_is_nine_fields_of_16_bits)
{
    EXPECT_EQ(sizeof(TIME_T), 18U);
    EXPECT_EQ(offsetof(TIME_T, hour), 8U);
    EXPECT_EQ(offsetof(TIME_T, micro), 16U);
}

TEST(Time_atoil, a_blank_field_takes_from_the_next_one)
{
    const TIME_T t = parsed("2004   101530250");
    EXPECT_EQ(t.day, 101);
    EXPECT_EQ(t.hour, 10);
    EXPECT_EQ(t.milli, 250);
}

TEST(Time_atoil, a_sign_counts_in_the_width)
{
    EXPECT_EQ(parsed("-123123101530250").year, -123);
    EXPECT_EQ(parsed("2004-12101530250").day, -12);
}

TEST(Time_atoil, a_field_that_is_no_number_is_0_and_the_others_are_read)
{
    const TIME_T t = parsed("abcd123x153ss250");
    EXPECT_EQ(t.year, 0);
    EXPECT_EQ(t.day, 123);
    EXPECT_EQ(t.hour, 0);
    EXPECT_EQ(t.minute, 53);
    EXPECT_EQ(t.second, 0);
    EXPECT_EQ(t.milli, 250);
    for (const char* text : {"", "                ", "abcdefghijklmnop"}) {
        const TIME_T none = parsed(text);
        EXPECT_EQ(none.year | none.day | none.hour | none.minute | none.second | none.milli, 0) << text;
    }
}

TEST(Time_atoil, a_short_text_fills_what_it_reaches)
{
    const TIME_T t = parsed("20041231");
    EXPECT_EQ(t.year, 2004);
    EXPECT_EQ(t.day, 123);
    EXPECT_EQ(t.hour, 1);
    EXPECT_EQ(t.minute, 0);
    EXPECT_EQ(t.milli, 0);
}

TEST(Time_atoil, agrees_with_scanf_on_random_texts)
{
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string s(16, '0');
        const bool odd = i % 2;
        for (char& c : s) c = odd ? "0123456789 -+x:"[random() % 15] : "0123456789"[random() % 10];
        int16_t year = 0, day = 0, hour = 0, minute = 0, second = 0, milli = 0;
        sscanf(s.c_str(), "%4hd", &year);
        sscanf(s.c_str() + 4, "%3hd", &day);
        sscanf(s.c_str() + 7, "%2hd", &hour);
        sscanf(s.c_str() + 9, "%2hd", &minute);
        sscanf(s.c_str() + 11, "%2hd", &second);
        sscanf(s.c_str() + 13, "%3hd", &milli);
        const TIME_T t = parsed(s);
        EXPECT_EQ(t.year, year) << s;
        EXPECT_EQ(t.day, day) << s;
        EXPECT_EQ(t.hour, hour) << s;
        EXPECT_EQ(t.minute, minute) << s;
        EXPECT_EQ(t.second, second) << s;
        EXPECT_EQ(t.milli, milli) << s;
    }
}

TEST(Time_cvt, counts_seconds_with_a_leap_day_per_four_full_years)
{
    EXPECT_EQ(seconds_of("1984001000000000"), 86400.0);
    EXPECT_EQ(seconds_of("1985001000000000"), 31622400.0);
    EXPECT_EQ(seconds_of("1987365235959000"), (3 * 365 + 365) * 86400.0 + 86399.0);
    EXPECT_EQ(seconds_of("1988001000000000"), 1462 * 86400.0);
    EXPECT_EQ(seconds_of("2004123101530250"), 641816130.25);
}

TEST(Time_cvt, is_0_before_1984)
{
    EXPECT_EQ(seconds_of("1983365000000000"), 0.0);
    EXPECT_EQ(seconds_of("0000001000000000"), 0.0);
    EXPECT_EQ(seconds_of("-123123101530250"), 0.0);
}

TEST(Time_cvt, reaches_far_beyond_32_bits)
{
    // 8015 years of 365 days, 2003 leap days, day 366, and the last second of that day
    EXPECT_EQ(seconds_of("9999366235959000"), (8015.0 * 365 + 2003 + 366) * 86400.0 + 86399.0);
    EXPECT_EQ(seconds_of("2053001000000000"), (69.0 * 365 + 17 + 1) * 86400.0);
}

TEST(Time_cvt, adds_milliseconds_and_microseconds)
{
    TIME_T t = parsed("1984001000000500");
    t.micro = 250;
    EXPECT_EQ(Time_cvt(t), 86400.0 + 0.5 + 0.00025);
}

TEST(Time_cvt, ignores_the_spare_fields)
{
    TIME_T t = parsed("1984001000000000");
    t.spare[0] = t.spare[1] = 1000;
    EXPECT_EQ(Time_cvt(t), 86400.0);
}

TEST(Time_dif, is_the_time_from_the_second_to_the_first)
{
    EXPECT_EQ(Time_dif(at("2004123101530250"), at("2004123101530000")), 0.25);
    EXPECT_EQ(Time_dif(at("2004124000000000"), at("2004123000000000")), 86400.0);
    EXPECT_EQ(Time_dif(at("2005001000000000"), at("2004365235959000")), 1.0);
}

TEST(Time_dif, over_the_end_of_a_leap_year_is_a_day_short)
{
    EXPECT_EQ(Time_dif(at("2005001000000000"), at("2004366235959000")),
              0.0); // that day counts as the same one
    EXPECT_EQ(Time_dif(at("2005002000000000"), at("2004366000000000")), 86400.0);
    EXPECT_EQ(Time_dif(at("2008001000000000"), at("2007365000000000")), 2 * 86400.0);
}

TEST(Time_dif, is_0_when_the_first_is_not_later)
{
    EXPECT_EQ(Time_dif(at("2004123101530000"), at("2004123101530250")), 0.0);
    EXPECT_EQ(Time_dif(at("2004123101530250"), at("2004123101530250")), 0.0);
    EXPECT_EQ(Time_dif(at(""), at("2004123101530250")), 0.0);
    EXPECT_EQ(Time_dif(at(""), at("")), 0.0);
}

TEST(Time_dif, of_a_time_and_none_is_the_whole_time)
{
    EXPECT_EQ(Time_dif(at("2004123101530250"), at("")), 641816130.25);
    EXPECT_EQ(std::bit_cast<uint32_t>(static_cast<float>(Time_dif(at("2004123101530250"), at("")))),
              0x4E190559U);
}

TEST(Time_dif, is_a_difference_of_two_large_numbers)
{
    const double difference = Time_dif(at("2004123101530123"), at("2004123101530001"));
    EXPECT_EQ(std::bit_cast<uint32_t>(static_cast<float>(difference)),
              0x3DF9DB20U); // not ...23, which 0.122 is
}

TEST(Time_update, is_the_time_from_the_first_to_the_second)
{
    EXPECT_EQ(Time_update(at("2004001000000000"), at("2004001000001500")), 1.5f);
    EXPECT_EQ(Time_update(at("2004001000001500"), at("2004001000000000")), -1.5f);
    EXPECT_EQ(Time_update(at("2004001000000000"), at("2004001000000000")), 0.0f);
    EXPECT_EQ(Time_update(at("2003365235959000"), at("2004001000000000")), 1.0f);
}

TEST(Time_update, every_year_has_365_days)
{
    EXPECT_EQ(Time_update(at("2004366235959000"), at("2005001000000000")), -86399.0f);
    EXPECT_EQ(Time_update(at("2004001000000000"), at("2005001000000000")), 365 * 86400.0f);
}

TEST(Time_update, short_milliseconds_count_ten_times)
{
    EXPECT_EQ(Time_update(at("2004001000000000"), at("200400100000150")), 1.5f);
    EXPECT_EQ(Time_update(at("200400100000150"), at("2004001000002000")), 0.5f);
    EXPECT_EQ(Time_update(at("2004001000001000"), at("20040010000015")), 0.05f);
    EXPECT_EQ(Time_update(at("2004001000000000"), at("2004001000001")), 1.0f);
    EXPECT_EQ(Time_update(at("2004001000001000"), at("2004001000001 15")), 0.15f); // a word of two characters
    EXPECT_EQ(Time_update(at("2004001000001000"), at("20040010000011 5")), 0.01f); // a word of one
}

/// Milliseconds that this text at their place stands for.
double milliseconds_of(const std::string& text)
{
    return std::round(1000 * Time_update(at("2004001000000000"), at("2004001000000" + text)));
}

TEST(Time_update, milliseconds_are_one_word_between_white_space)
{
    for (const char white : {' ', '\t', '\n', '\v', '\f', '\r'}) {
        const std::string space(1, white);
        EXPECT_EQ(milliseconds_of(space + "25"), 250) << int{white};
        EXPECT_EQ(milliseconds_of(space + space + "1"), 10) << int{white};
        EXPECT_EQ(milliseconds_of("1" + space + "5"), 10) << int{white};
        EXPECT_EQ(milliseconds_of("15" + space), 150) << int{white};
    }
    EXPECT_EQ(milliseconds_of("1\b5"), 1) << "a word of three characters";
    EXPECT_EQ(milliseconds_of("1\x0E"), 10) << "and one of two";
    EXPECT_EQ(milliseconds_of("\b15"), 0) << "and no number";
}

TEST(Time_update, is_a_single_float)
{
    // 123 days, 10 hours, 15 minutes, 30.25 seconds less a day
    EXPECT_EQ(Time_update(at("2004001000000000"), at("2004123101530250")),
              static_cast<float>(((122.0 * 24 + 10) * 60 + 15) * 60 + 30.25));
    EXPECT_EQ(std::bit_cast<uint32_t>(Time_update(at("2004001000000000"), at("2004001000000001"))),
              0x3A83126FU);
}

TEST(Time_compr, tells_whether_the_first_is_later)
{
    EXPECT_EQ(Time_compr(at("2004123101530250"), at("2004123101530249")), 1);
    EXPECT_EQ(Time_compr(at("2004123101530249"), at("2004123101530250")), 0);
    EXPECT_EQ(Time_compr(at("2004123101530250"), at("2004123101530250")), 0);
}

TEST(Time_compr, wraps_at_32_bits)
{
    EXPECT_EQ(Time_compr(at("2004027000000000"), at("2004026000000000")), 0); // the wrap lies between
    EXPECT_EQ(Time_compr(at("2004026000000000"), at("2004027000000000")), 1);
    EXPECT_EQ(Time_compr(at("2004028000000000"), at("2004027000000000")), 1);
}

TEST(Time_compr, compares_milliseconds_modulo_32_bits)
{
    std::mt19937 random(12);
    const auto some_time = [&] {
        char text[32];
        snprintf(text, sizeof text, "%04u%03u%02u%02u%02u%03u", unsigned(random() % 10000),
                 unsigned(random() % 1000), unsigned(random() % 100), unsigned(random() % 100),
                 unsigned(random() % 100), unsigned(random() % 1000));
        return std::string(text);
    };
    const auto ms_of = [](const std::string& s) {
        const uint64_t days = std::stoull(s.substr(0, 4)) * 365 + std::stoull(s.substr(4, 3));
        const uint64_t minutes = (days * 24 + std::stoull(s.substr(7, 2))) * 60 + std::stoull(s.substr(9, 2));
        return static_cast<uint32_t>((minutes * 60 + std::stoull(s.substr(11, 2))) * 1000 +
                                     std::stoull(s.substr(13, 3)));
    };
    for (int i = 0; i < 5000; ++i) {
        const std::string a = some_time(), b = some_time();
        EXPECT_EQ(Time_compr(at(a), at(b)), ms_of(a) > ms_of(b)) << a << ' ' << b;
    }
}

TEST(Time_r64toil, converts_nothing)
{
    TIME_T t{2004, 123, {1, 2}, 10, 15, 30, 250, 7};
    Time_r64toil(t, 641816130.25);
    const TIME_T before{2004, 123, {1, 2}, 10, 15, 30, 250, 7};
    EXPECT_EQ(memcmp(&t, &before, sizeof t), 0);
}

/// A time moved on by a packet.
std::string moved(const std::string& time, float rate, unsigned count)
{
    TIMESTR t;
    t.put(time);
    add_str_tim(t, rate, static_cast<uint16_t>(count));
    return t.s;
}

TEST(add_str_tim, moves_a_time_on_by_samples_over_rate)
{
    EXPECT_EQ(moved("2004123101530250", 100.0f, 250), "2004123101532750");
    EXPECT_EQ(moved("2004123101530250", 1.0f, 9999), "2004123130209250");
    EXPECT_EQ(moved("2004123101530250", 100.0f, 0), "2004123101530250");
}

TEST(add_str_tim, carries_from_milliseconds_to_days)
{
    EXPECT_EQ(moved("2004123235959999", 1000.0f, 1), "2004124000000000");
    EXPECT_EQ(moved("2004123235959000", 1.0f, 1), "2004124000000000");
    EXPECT_EQ(moved("2004123101530000", 1.0f, 30), "2004123101600000");
}

TEST(add_str_tim, cuts_fractions_of_a_millisecond)
{
    EXPECT_EQ(moved("2004001000000000", 3.0f, 1), "2004001000000333");
    EXPECT_EQ(moved("2004001000000000", 3.0f, 2), "2004001000000666");
    EXPECT_EQ(moved("2004001000000000", 0.1f, 1), "2004001000009999"); // 0.1f is a little more than 0.1
}

TEST(add_str_tim, a_year_that_rolls_over_becomes_0)
{
    EXPECT_EQ(moved("2012366235959999", 1.0f, 1), "0000001000000999");
    EXPECT_EQ(moved("2011365235959999", 1.0f, 1), "0000001000000999");
    EXPECT_EQ(moved("1999365235959999", 1.0f, 1), "0000001000000999");
    EXPECT_EQ(moved("0099365235959999", 1.0f, 1), "0000001000000999");
}

TEST(add_str_tim, a_year_of_two_digits_counts_on_to_99)
{
    EXPECT_EQ(moved("0098365235959999", 1.0f, 1), "0099001000000999");
    EXPECT_EQ(moved("0000366235959999", 1.0f, 1), "0001001000000999");
    EXPECT_EQ(moved("0000365235959999", 1.0f, 1), "0000366000000999");
}

TEST(add_str_tim, a_day_before_the_first_keeps_its_sign)
{
    EXPECT_EQ(moved("2004-12101530250", 100.0f, 250), "2004-12101532750");
}

TEST(add_str_tim, a_year_with_a_sign_is_one_of_16_bits_and_pushes_the_last_digit_out)
{
    EXPECT_EQ(moved("-999001000000000", 100.0f, 250), "6453700100000250"); // 65536 - 999
}

TEST(add_str_tim, every_fourth_year_has_366_days)
{
    EXPECT_EQ(moved("2012365235959999", 1.0f, 1), "2012366000000999");
    EXPECT_EQ(moved("2100365235959999", 1.0f, 1), "2100366000000999");
    EXPECT_EQ(moved("2003366000000000", 0.0f, 0), "0000001000000000");
    EXPECT_EQ(moved("2004366000000000", 0.0f, 0), "2004366000000000");
}

TEST(add_str_tim, the_length_of_the_first_year_serves_for_all)
{
    EXPECT_EQ(moved("0000999000000000", 0.0f, 0), "0002267000000000"); // twice 366
    EXPECT_EQ(moved("0003999000000000", 0.0f, 0), "0005269000000000"); // twice 365, though 4 is longer
    EXPECT_EQ(moved("2003999000000000", 0.0f, 0), "0001269000000000");
}

TEST(add_str_tim, a_rate_of_0_only_normalises)
{
    EXPECT_EQ(moved("2004123240000000", 0.0f, 250), "2004124000000000");
    EXPECT_EQ(moved("2004123101530250", 0.0f, 9999), "2004123101530250");
    EXPECT_EQ(moved("2004123996099999", -0.0f, 9999), "2004127040139999");
}

TEST(add_str_tim, milliseconds_are_32_bits_without_a_sign)
{
    EXPECT_EQ(moved("2004123101530250", -100.0f, 250), "2004173031815046"); // -2250 is 4294965046
    // 10 samples at 0.001, which is a little more as a float: 9999999.5 ms
    EXPECT_EQ(moved("2004123101530000", 1e-3f, 10), "2004123130209999");
    // 1000 samples at 1e-4: ten thousand million milliseconds, of which 32 bits hold the rest
    const double v = 1000 * 1000.0 / static_cast<double>(1e-4f);
    const uint64_t ms = static_cast<uint64_t>(v) & 0xFFFFFFFF;
    char expected[32];
    const unsigned days = static_cast<unsigned>(ms / 86400000), rest = static_cast<unsigned>(ms % 86400000);
    snprintf(expected, sizeof expected, "2004%03u%02u%02u%02u%03u", 1 + days, rest / 3600000,
             rest / 60000 % 60, rest / 1000 % 60, rest % 1000);
    EXPECT_EQ(moved("2004001000000000", 1e-4f, 1000), expected);
}

TEST(add_str_tim, a_rate_that_makes_no_number_of_milliseconds_gives_0_of_them)
{
    EXPECT_EQ(moved("2004123101530250", NAN, 250), "2004123101530000");
    EXPECT_EQ(moved("2004123101530250", 1e-30f, 250), "2004123101530000");
    EXPECT_EQ(moved("2004123101530250", -1e-30f, 250), "2004123101530000");
}

TEST(add_str_tim, an_infinite_rate_adds_nothing)
{
    EXPECT_EQ(moved("2004123101530250", HUGE_VALF, 250), "2004123101530250");
    EXPECT_EQ(moved("2004123101530250", -HUGE_VALF, 250), "2004123101530250");
}

TEST(add_str_tim, the_slowest_rate_of_a_header_takes_no_time)
{
    // 9999 samples at 1e-9: thousands of millions of milliseconds in whole 32-bit turns
    const double v = 9999 * 1000.0 / static_cast<double>(1e-9f);
    const uint32_t ms = static_cast<uint32_t>(static_cast<uint64_t>(v));
    for (int i = 0; i < 100000; ++i) moved("2004001000000000", 1e-9f, 9999);
    const std::string time = moved("2004001000000000", 1e-9f, 9999);
    EXPECT_EQ(std::stoul(time.substr(13, 3)), ms % 1000);
    EXPECT_EQ(std::stoul(time.substr(11, 2)), ms / 1000 % 60);
}

/// The same, step by step.
std::string moved_step_by_step(const std::string& time, float rate, unsigned count)
{
    const auto field = [&](size_t at, size_t width) {
        return static_cast<uint32_t>(strtoul(time.substr(at, width).c_str(), nullptr, 10));
    };
    uint32_t year = field(0, 4), day = field(4, 3), hour = field(7, 2), minute = field(9, 2);
    uint32_t second = field(11, 2), ms = field(13, 3);
    if (rate != 0.0f) {
        const double v = count * 1000.0 / static_cast<double>(rate) + ms;
        const bool fits = v > -9223372036854775808.0 && v < 9223372036854775808.0;
        ms = fits ? static_cast<uint32_t>(static_cast<int64_t>(v)) : 0;
    }
    while (ms > 999) ++second, ms -= 1000;
    while (second > 59) ++minute, second -= 60;
    while (minute > 59) ++hour, minute -= 60;
    while (hour > 23) ++day, hour -= 24;
    const uint32_t length = year % 4 != 0 ? 365 : 366;
    while (day > length) {
        day -= length;
        ++year;
        if (year > 99) year = 0;
    }
    char text[64];
    snprintf(text, sizeof text, "%04u%03u%02u%02u%02u%03u", year, day, hour, minute, second, ms);
    return text;
}

/// Random digits, half of them a proper time.
std::string random_time(std::mt19937& random)
{
    const bool proper = random() % 2;
    const auto below = [&](unsigned usual, unsigned most) {
        return static_cast<unsigned>(random() % (proper ? usual : most));
    };
    char text[64];
    snprintf(text, sizeof text, "%04u%03u%02u%02u%02u%03u",
             proper ? 1980 + below(120, 1) : below(1, random() % 2 ? 10000 : 110), below(366, 999) + 1,
             below(24, 100), below(60, 100), below(60, 100), below(1000, 1000));
    return text;
}

TEST(add_str_tim, takes_any_count_of_16_bits)
{
    EXPECT_EQ(moved("2004001000000000", 1000.0f, 1165), "2004001000001165");
    EXPECT_EQ(moved("2004001000000000", 1000.0f, 65535), "2004001000105535");
}

TEST(add_str_tim, agrees_with_carrying_step_by_step)
{
    std::mt19937 random(13);
    const float rates[] = {0.0f,   1.0f,   20.0f,  33.3f,  40.0f,  50.0f,
                           100.0f, 125.0f, 200.0f, 250.0f, 500.0f, 1000.0f};
    for (int i = 0; i < 50000; ++i) {
        const std::string time = random_time(random);
        const float rate =
            random() % 2 ? rates[random() % 12] : static_cast<float>(random() % 1000000) / 977.0f;
        const unsigned count = static_cast<unsigned>(random() % 10000);
        ASSERT_EQ(moved(time, rate, count), moved_step_by_step(time, rate, count))
            << time << ' ' << rate << ' ' << count;
    }
}

TEST(add_str_tim, agrees_with_carrying_step_by_step_at_any_rate)
{
    std::mt19937 random(14);
    for (int i = 0; i < 400; ++i) { // up to four million steps each
        const std::string time = random_time(random);
        const float rate = std::bit_cast<float>(static_cast<uint32_t>(random()));
        const unsigned count = static_cast<unsigned>(random() % 10000);
        ASSERT_EQ(moved(time, rate, count), moved_step_by_step(time, rate, count))
            << time << ' ' << rate << ' ' << count;
    }
}

} // namespace
