// Reading SAC headers: byte order, texts, rates, start times, every bit back where it was.
#include "tools/sac_words.h"
#include "trace/header.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace ls_test;
using trace::Order;

namespace {

SACHDR_T header_at(int32_t year, int32_t day, int32_t hour = 0, int32_t min = 0, int32_t sec = 0,
                   int32_t ms = 0)
{
    SACHDR_T h{};
    h.NZYEAR = year;
    h.NZJDAY = day;
    h.NZHOUR = hour;
    h.NZMIN = min;
    h.NZSEC = sec;
    h.NZMSEC = ms;
    return h;
}

std::string start_text(const SACHDR_T& h)
{
    const auto start = trace::start_of(h);
    return start ? trace::iso_time(*start) : "none";
}

double rate(float delta)
{
    SACHDR_T h{};
    h.DELTA = delta;
    return trace::rate_of(h).value_or(-1);
}

} // namespace

TEST(Trace_header, the_version_tells_the_byte_order)
{
    EXPECT_EQ(trace::order_of(finished().data()), Order::big);
    EXPECT_EQ(trace::order_of(little_endian(finished()).data()), Order::little);
    EXPECT_EQ(trace::order_of(with_word(finished(), NVHDR, 7).data()), Order::none);
    EXPECT_EQ(trace::order_of(with_word(finished(), NVHDR, 0x00060000).data()), Order::none);
    EXPECT_EQ(trace::order_of(std::string(632, '\0').data()), Order::none);
}

TEST(Trace_header, both_byte_orders_give_the_same_values)
{
    const std::string big = finished(), little = little_endian(big);
    for (const SACHDR_T& h :
         {trace::decode(big.data(), Order::big), trace::decode(little.data(), Order::little)}) {
        EXPECT_EQ(h.DELTA, 0.01F);
        EXPECT_EQ(h.DEPMEN, 2.0F);
        EXPECT_EQ(h.NZJDAY, 123);
        EXPECT_EQ(h.NPTS, 3);
        EXPECT_EQ(h.LEVEN, 1);
        EXPECT_EQ(std::string(h.KCMPNM, 8), "9A2F-1-1");
    }
}

TEST(Trace_header, every_bit_comes_back_in_both_byte_orders)
{
    std::string bytes(632, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 37 + 11);
    bytes = with_word(bytes, DEPMIN, 0x7F800001); // a signalling NaN
    for (const Order order : {Order::big, Order::little}) {
        std::string again(632, '\0');
        trace::encode(trace::decode(bytes.data(), order), order, again.data());
        EXPECT_TRUE(kit::same_bytes(again, bytes));
    }
}

TEST(Trace_header, words_are_written_in_either_order)
{
    char bytes[4];
    trace::put_word(bytes, Order::big, 0x01020384);
    EXPECT_EQ(std::string(bytes, 4), "\x01\x02\x03\x84");
    EXPECT_EQ(trace::word_at(bytes, Order::big), 0x01020384U);
    trace::put_word(bytes, Order::little, 0x01020384);
    EXPECT_EQ(std::string(bytes, 4), "\x84\x03\x02\x01");
    EXPECT_EQ(trace::word_at(bytes, Order::little), 0x01020384U);
}

TEST(Trace_header, texts_end_at_a_NUL_or_before_their_last_blanks)
{
    EXPECT_EQ(trace::text_of("STA01   "), "STA01");
    EXPECT_EQ(trace::text_of(std::string_view("9A2F\0005  ", 8)), "9A2F"); // the unit over the fill
    EXPECT_EQ(trace::text_of("A B     "), "A B");
    EXPECT_EQ(trace::text_of("9A2F-1-1"), "9A2F-1-1");
    EXPECT_EQ(trace::text_of("        "), "");
    EXPECT_EQ(trace::text_of("-12345  "), std::nullopt);
    EXPECT_EQ(trace::text_of(std::string_view("-12345\0\0", 8)), std::nullopt);
}

TEST(Trace_header, counts_above_31_bits_keep_their_bits)
{
    SACHDR_T h{};
    h.NPTS = -294967296;
    EXPECT_EQ(trace::samples_said(h), 4000000000U);
    h.NPTS = -12345;
    EXPECT_EQ(trace::samples_said(h), std::nullopt);
    h.NPTS = 0;
    EXPECT_EQ(trace::samples_said(h), 0U);
}

TEST(Trace_header, the_rate_is_the_shortest_number_that_gives_the_interval)
{
    EXPECT_EQ(rate(0.01F), 100.0);
    EXPECT_EQ(rate(0.005F), 200.0);
    EXPECT_EQ(rate(1.0F / 30.0F), 30.0);
    EXPECT_EQ(rate(1.0F / 128.0F), 128.0);
    EXPECT_EQ(rate(0.016F), 62.5);
    EXPECT_EQ(rate(1.0F), 1.0);
    EXPECT_EQ(rate(10.0F), 0.1);
    EXPECT_EQ(rate(1.0F / 199.8743F), 199.8743);
    EXPECT_EQ(rate(0.0001F), 10000.0);
    EXPECT_EQ(rate(1e-20F), 1e20);
    EXPECT_EQ(rate(4e20F), 2.5e-21);
}

TEST(Trace_header, an_interval_that_is_no_positive_number_gives_no_rate)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    for (const float delta : {0.0F, -0.0F, -0.01F, -12345.0F, inf, -inf, std::nanf(""), 1e-45F})
        EXPECT_EQ(rate(delta), -1) << delta;
}

TEST(Trace_header, start_times_are_dates_to_the_millisecond)
{
    EXPECT_EQ(trace::start_of(header_at(1970, 1)), 0);
    EXPECT_EQ(trace::start_of(header_at(2001, 252, 1, 46, 40, 7)), 1000000000007);
    EXPECT_EQ(start_text(header_at(2004, 123, 10, 15, 30, 250)), "2004-05-02T10:15:30.250Z");
    EXPECT_EQ(start_text(header_at(2024, 366, 23, 59, 59, 999)), "2024-12-31T23:59:59.999Z");
    EXPECT_EQ(start_text(header_at(1900, 60)), "1900-03-01T00:00:00.000Z");
    EXPECT_EQ(start_text(header_at(2000, 60)), "2000-02-29T00:00:00.000Z");
    EXPECT_EQ(start_text(header_at(1969, 365, 23, 59, 59, 999)), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(start_text(header_at(1, 1)), "0001-01-01T00:00:00.000Z");
    EXPECT_EQ(start_text(header_at(2016, 366, 23, 59, 60, 500)), "2017-01-01T00:00:00.500Z");
}

TEST(Trace_header, what_is_no_date_gives_no_start)
{
    constexpr int32_t least = std::numeric_limits<int32_t>::min(), most = std::numeric_limits<int32_t>::max();
    EXPECT_EQ(start_text(header_at(2023, 366)), "none");
    EXPECT_EQ(start_text(header_at(2023, 0)), "none");
    EXPECT_EQ(start_text(header_at(0, 1)), "none");
    EXPECT_EQ(start_text(header_at(10000, 1)), "none");
    EXPECT_EQ(start_text(header_at(67540, 1)), "none"); // 2004 in 16 bits
    EXPECT_EQ(start_text(header_at(9999, 365, 23, 59, 60)), "none");
    EXPECT_EQ(start_text(header_at(2023, 1, 24)), "none");
    EXPECT_EQ(start_text(header_at(2023, 1, 0, 60)), "none");
    EXPECT_EQ(start_text(header_at(2023, 1, 0, 0, 61)), "none");
    EXPECT_EQ(start_text(header_at(2023, 1, 0, 0, 0, 1000)), "none");
    EXPECT_EQ(start_text(header_at(2023, 1, 0, 0, 0, -12345)), "none");
    EXPECT_EQ(start_text(header_at(-12345, -12345, -12345, -12345, -12345, -12345)), "none");
    EXPECT_EQ(start_text(header_at(most, least, most, least, most, least)), "none");
}
