// The decoders of samples, on frames made by hand and on random ones.
#include "packet/samples.h"

#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/hex_lines.h"
#include "kit/packets.h"
#include "packet/block.h"
#include "packet/steim_by_the_book.h"
#include "packet/steim_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using kit::Dt;
using kit::four;
using kit::none;
using kit::one;
using kit::sub;
using kit::two;
using Samples = std::vector<int32_t>;

constexpr int32_t Least = std::numeric_limits<int32_t>::min();
constexpr int32_t Most = std::numeric_limits<int32_t>::max();

Samples decoded(PlainDecoder decoder, const std::string& packet)
{
    return Channel::decode(decoder, packet);
}

// ---- samples without compression

TEST(Buf_16, reads_signed_samples_most_significant_byte_first)
{
    const std::string packet =
        Dt().format(0x16).count(4).raw(24, std::string("\xFF\xFE\x12\x34\x80\x00\x7F\xFF", 8));
    EXPECT_EQ(decoded(Buf_16, packet), (Samples{-2, 0x1234, -32768, 32767}));
}

TEST(Buf_16, reads_as_many_as_the_header_counts)
{
    const Samples all = kit::counting(0, 499);
    for (const unsigned n : {0U, 1U, 11U, 12U, 499U, 500U})
        EXPECT_EQ(decoded(Buf_16, Dt().format(0x16).samples(all).count(n)),
                  Samples(all.begin(), all.begin() + n));
}

TEST(Buf_16, gives_500_samples_at_most)
{
    const Samples all(500, 0x0102);
    EXPECT_EQ(decoded(Buf_16, Dt().format(0x16).samples(all).count(600)), all);
    EXPECT_EQ(decoded(Buf_16, Dt().format(0x16).samples(all).count(9999)), all);
    EXPECT_EQ(decoded(Buf_16, Dt().format(0x16).samples(all).count(499)), Samples(499, 0x0102));
    const std::string odd_digits = Dt().format(0x16).samples(all); // 16665 by its digits
    EXPECT_EQ(decoded(Buf_16, std::string(odd_digits).replace(20, 2, "\xFF\xFF")), all);
}

TEST(Buf_16, starts_behind_the_extension_when_bit_3_of_byte_46_is_set)
{
    for (const unsigned flags : {0x00U, 0x08U, 0xFFU}) {
        std::string packet =
            Dt().format(0x16).flags(flags).raw(46, "\x08").raw(64, "\x01\x02\x03\x04").count(2);
        EXPECT_EQ(decoded(Buf_16, packet), (Samples{0x0102, 0x0304})) << flags;
        packet[46] = '\xFF';
        EXPECT_EQ(decoded(Buf_16, packet), (Samples{0x0102, 0x0304})) << flags;
    }
}

TEST(Buf_16, starts_behind_the_header_when_bit_3_of_byte_46_is_clear)
{
    for (const unsigned flags : {0x00U, 0x08U, 0xFFU}) {
        std::string packet = Dt().format(0x16).flags(flags).raw(24, "\x01\x02\x03\x04").count(2);
        EXPECT_EQ(decoded(Buf_16, packet), (Samples{0x0102, 0x0304})) << flags;
        packet[46] = '\xF7';
        EXPECT_EQ(decoded(Buf_16, packet), (Samples{0x0102, 0x0304})) << flags;
    }
}

TEST(Buf_16, a_sample_at_byte_46_can_be_taken_for_an_extension)
{
    Samples samples(100, 7);
    samples[11] = -5; // its first byte has bit 3 set
    const std::string packet = Dt().format(0x16).samples(samples);
    EXPECT_EQ(decoded(Buf_16, packet).size(), 100U);
    EXPECT_EQ(decoded(Buf_16, packet)[99], 0); // 20 samples further on there is nothing
    EXPECT_EQ(decoded(Buf_16, packet)[0], 7);
    EXPECT_EQ(decoded(Buf_16, packet)[79], 7);
    EXPECT_EQ(decoded(Buf_16, packet)[80], 0);
}

TEST(Buf_16, samples_past_the_packets_end_are_0)
{
    const std::string packet = Dt().format(0x16).count(500).fill(24, 1024, '\x7F').raw(46, "\x08");
    Samples expected(500, 0x7F7F);
    std::fill(expected.begin() + 480, expected.end(), 0);
    EXPECT_EQ(decoded(Buf_16, packet), expected);
}

TEST(Buf_32, reads_signed_samples_most_significant_byte_first)
{
    const std::string packet =
        Dt().format(0x32).count(3).raw(24, std::string("\x80\0\0\0\xFF\xFF\xFF\xFE\x12\x34\x56\x78", 12));
    EXPECT_EQ(decoded(Buf_32, packet), (Samples{Least, -2, 0x12345678}));
}

TEST(Buf_32, gives_250_samples_at_most)
{
    const Samples all(250, 0x01020304);
    EXPECT_EQ(decoded(Buf_32, Dt().format(0x32).samples(all)), all);
    EXPECT_EQ(decoded(Buf_32, Dt().format(0x32).samples(all).count(300)), all);
    EXPECT_EQ(decoded(Buf_32, Dt().format(0x32).samples(all).count(251)), all);
    EXPECT_EQ(decoded(Buf_32, Dt().format(0x32).samples(all).count(249)), Samples(249, 0x01020304));
    EXPECT_EQ(decoded(Buf_32, Dt().format(0x32).samples(all).count(0)), Samples());
}

TEST(Buf_32, starts_behind_the_extension_when_bit_3_of_byte_46_is_set)
{
    for (const unsigned flags : {0x00U, 0x08U}) {
        std::string packet =
            Dt().format(0x32).flags(flags).raw(24, "\x11\x22\x33\x44").raw(64, "\x55\x66\x77\x78").count(1);
        EXPECT_EQ(decoded(Buf_32, packet), Samples{0x11223344}) << flags;
        packet[46] = '\x08'; // the third byte of the sixth sample
        EXPECT_EQ(decoded(Buf_32, packet), Samples{0x55667778}) << flags;
    }
}

TEST(Buf_32, samples_past_the_packets_end_are_0)
{
    const std::string packet = Dt().format(0x32).count(250).fill(24, 1024, '\x7F').raw(46, "\x08");
    Samples expected(250, 0x7F7F7F7F);
    std::fill(expected.begin() + 240, expected.end(), 0);
    EXPECT_EQ(decoded(Buf_32, packet), expected);
}

TEST(Buf_16, and_Buf_32_agree_with_reading_value_by_value)
{
    std::mt19937 random(21);
    for (int i = 0; i < 2000; ++i) {
        std::string packet = Dt();
        for (size_t at = 24; at < 1024; ++at) packet[at] = static_cast<char>(random());
        const unsigned count = static_cast<unsigned>(random() % 600);
        packet.replace(20, 2, kit::bcd(count, 4));
        const size_t start = static_cast<unsigned char>(packet[46]) & 8 ? 64 : 24;
        const std::string padded = packet + std::string(64, '\0');
        Samples short_ones, long_ones;
        for (size_t n = 0; n < std::min(count, 500U); ++n) {
            const auto at = [&](size_t k) { return static_cast<unsigned char>(padded[start + 2 * n + k]); };
            const int value = at(0) * 256 + at(1);
            short_ones.push_back(value < 32768 ? value : value - 65536);
        }
        for (size_t n = 0; n < std::min(count, 250U); ++n) {
            uint32_t value = 0;
            for (size_t k = 0; k < 4; ++k)
                value = value * 256 + static_cast<unsigned char>(padded[start + 4 * n + k]);
            long_ones.push_back(static_cast<int32_t>(value));
        }
        ASSERT_EQ(decoded(Buf_16, packet), short_ones);
        ASSERT_EQ(decoded(Buf_32, packet), long_ones);
    }
}

// ---- control words and bit fields

TEST(C0_flag_cvt, unpacks_sixteen_codes_of_two_bits)
{
    const uint8_t control[] = {0x1B, 0xE4, 0x00, 0xFF}; // 00 01 10 11, 11 10 01 00, 0000, 3333
    uint8_t codes[18];
    memset(codes, 0xEE, sizeof codes);
    C0_flag_cvt(control, codes + 1);
    const uint8_t expected[] = {0xEE, 0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0, 3, 3, 3, 3, 0xEE};
    EXPECT_EQ(memcmp(codes, expected, sizeof codes), 0);
}

TEST(C0_flag_clr, sets_sixteen_codes_to_0)
{
    uint8_t codes[18];
    memset(codes, 0xEE, sizeof codes);
    C0_flag_clr(codes + 1);
    EXPECT_EQ(codes[0], 0xEE);
    EXPECT_EQ(std::count(codes + 1, codes + 17, 0), 16);
    EXPECT_EQ(codes[17], 0xEE);
}

TEST(Steim2_get_bits, takes_a_signed_field)
{
    EXPECT_EQ(Steim2_get_bits(0x0000000F, 0, 4), -1);
    EXPECT_EQ(Steim2_get_bits(0x00000007, 0, 4), 7);
    EXPECT_EQ(Steim2_get_bits(0x00000080, 4, 4), -8);
    EXPECT_EQ(Steim2_get_bits(0x20000000, 0, 30), -536870912);
    EXPECT_EQ(Steim2_get_bits(0xDFFFFFFF, 0, 30), 536870911); // bits 31 and 30 are not the field's
    EXPECT_EQ(Steim2_get_bits(0x7FFFFFFF, 0, 31), -1);
    EXPECT_EQ(Steim2_get_bits(0x00000001, 0, 1), -1);
}

TEST(Steim2_get_bits, is_0_for_fields_that_are_none)
{
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 0, 0), 0);
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 0, 33), 0);
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 33, 4), 0);
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 0, 4294967295U), 0);
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 4294967295U, 4), 0);
}

TEST(Steim2_get_bits, counts_of_32_act_as_0)
{
    EXPECT_EQ(Steim2_get_bits(0xFFFFFFFF, 0, 32), 0);
    EXPECT_EQ(Steim2_get_bits(0x12345678, 5, 32), 0);
    EXPECT_EQ(Steim2_get_bits(0x00000005, 32, 4), 5);
    EXPECT_EQ(Steim2_get_bits(0x0000000F, 32, 4), -1);
}

TEST(Steim2_get_bits, a_field_that_runs_over_the_top_has_the_sign_there)
{
    EXPECT_EQ(Steim2_get_bits(0x80000000, 31, 4), -1);
    EXPECT_EQ(Steim2_get_bits(0x70000000, 28, 8), 7);
}

TEST(Steim2_get_bits, agrees_with_division_for_all_shifts_and_widths)
{
    std::mt19937 random(22);
    for (int i = 0; i < 200; ++i) {
        const uint32_t word = static_cast<uint32_t>(random());
        for (int shift = 0; shift < 32; ++shift) {
            for (int width = 1; width < 32; ++width) {
                int64_t value = static_cast<int32_t>(word);
                for (int n = 0; n < shift; ++n) value = (value - (value & 1)) / 2;
                value &= (int64_t{1} << width) - 1;
                if (value >> (width - 1)) value -= int64_t{1} << width;
                ASSERT_EQ(Steim2_get_bits(word, static_cast<uint32_t>(shift), static_cast<uint32_t>(width)),
                          value)
                    << word << ' ' << shift << ' ' << width;
            }
        }
    }
}

// ---- compressed samples: every packet goes through the decoder and its word-by-word form

struct Level {
    int number;
    Decoder decoders[2];
};
const Level Steim1{1, {Buf_c0, Buf_c0_by_word}};
const Level Steim2{2, {Buf_c2, Buf_c2_by_word}};

/// The packet gives these samples, nothing complains, and the last one is carried on.
void expect_good(const Level& level, const std::string& packet, const Samples& samples, uint32_t last = 0)
{
    for (const Decoder decoder : level.decoders) {
        Channel channel(last);
        Samples got;
        EXPECT_EQ(kit::shown_by([&] { got = channel.decode(decoder, packet); }), "");
        EXPECT_EQ(got, samples);
        EXPECT_FALSE(channel.chn.discontinuous);
        if (!samples.empty()) {
            EXPECT_EQ(static_cast<int32_t>(channel.chn.last), samples.back());
        }
        EXPECT_EQ(channel.log(), "");
    }
}

/// The packet gives these samples, is logged so, and the stored last sample is carried on.
void expect_bad(const Level& level, const std::string& packet, const Samples& samples, uint32_t last,
                const std::string& read, const std::string& calc)
{
    for (const Decoder decoder : level.decoders) {
        Channel channel(last);
        EXPECT_EQ(channel.decode(decoder, packet), samples);
        EXPECT_TRUE(channel.chn.discontinuous);
        EXPECT_EQ(channel.chn.last, by_the_book::word_at(packet, 1, 2));
        EXPECT_EQ(channel.log(),
                  "     Read " + read + "\r\n     Calc " + calc + "\r\n" + kit::hex_lines(packet) + "\r\n");
    }
}

class Steim : public testing::Test {
protected:
    Steim() { Log_on = true; }
};

TEST_F(Steim, 1_in_plain_bytes)
{
    const std::string packet = Dt().format(0xC0)
                                   .count(4)
                                   .raw(64, std::string("\x01\x00\x00\x00", 4))  // word 3 has code 1
                                   .raw(68, std::string("\x00\x00\x00\x64", 4))  // first sample
                                   .raw(72, std::string("\x00\x00\x00\x66", 4))  // last sample
                                   .raw(76, std::string("\x00\x01\xFF\x02", 4)); // differences
    expect_good(Steim1, packet, {100, 101, 100, 102});
    expect_good(Steim2, packet, {100, 101, 100, 102});
}

TEST_F(Steim, 1_has_differences_of_8_16_and_32_bits)
{
    const std::string by_hand = Dt().steim1(1000, 2000000000,
                                            {four(5, 127, -128, 0), two(1, 32767), none(), one(-32768),
                                             one(-100000), one(2000099001), four(0, 0, 0, 0)})
                                    .count(13);
    Samples all = {1000, 1127, 999, 999, 1000, 33767, 999, -99001, 2000000000};
    all.insert(all.end(), 4, 2000000000);
    expect_good(Steim1, by_hand, all);
}

TEST_F(Steim, 1_first_difference_of_each_width_leads_to_the_first_sample)
{
    expect_good(Steim1, Dt().steim1(50, 53, {four(-7, 1, 1, 1)}).count(4), {50, 51, 52, 53}, 57);
    expect_good(Steim1, Dt().steim1(50, 51, {two(-1000, 1)}).count(2), {50, 51}, 1050);
    expect_good(Steim1, Dt().steim1(50, 50, {one(-100000)}).count(1), {50}, 100050);
}

TEST_F(Steim, 1_without_data_in_the_first_word_starts_one_difference_further)
{
    expect_good(Steim1, Dt().steim1(100, 105, {none(), one(5)}).count(1), {105});
    expect_good(Steim1, Dt().steim1(100, 105, {none(), one(5)}).count(1), {105}, 100); // follows on 100
    expect_bad(Steim1, Dt().steim1(100, 105, {none(), one(5)}).count(1), {105}, 95,
               "start 0x00000064  stop 0x00000069  samples 1",
               "start 0x0000005F  stop 0x00000069  samples 1");
}

TEST_F(Steim, 1_fills_all_fifteen_frames_with_892_samples)
{
    std::vector<kit::Word> words(13 + 14 * 15, four(1, 1, 1, 1));
    expect_good(Steim1, Dt().steim1(1, 892, words).count(892), kit::counting(1, 892));
    expect_good(Steim2, Dt().steim2(1, 892, words).count(892), kit::counting(1, 892));
}

TEST_F(Steim, 2_fills_all_fifteen_frames_with_1561_samples)
{
    std::vector<kit::Word> words(13 + 14 * 15, sub(3, 2, {1, 1, 1, 1, 1, 1, 1}));
    expect_good(Steim2, Dt().steim2(1, 1561, words).count(1561), kit::counting(1, 1561));
}

TEST_F(Steim, 2_has_seven_widths_each_with_its_limits)
{
    const auto sums = [](int32_t x0, std::vector<int32_t> differences) {
        Samples samples = {x0};
        for (size_t i = 1; i < differences.size(); ++i) samples.push_back(samples.back() + differences[i]);
        return samples;
    };
    const struct {
        unsigned code, dnib;
        std::vector<int32_t> differences;
    } words[] = {{2, 1, {-536870912}},
                 {2, 1, {536870911}},
                 {2, 2, {-16384, 16383}},
                 {2, 3, {511, -512, 511}},
                 {3, 0, {-32, 31, -32, 31, -1}},
                 {3, 1, {15, -16, 15, -16, 0, 1}},
                 {3, 2, {-8, 7, -8, 7, 1, -1, 7}}};
    for (const auto& w : words) {
        const Samples samples = sums(10, w.differences);
        expect_good(Steim2,
                    Dt().steim2(10, samples.back(), {sub(w.code, w.dnib, w.differences)})
                        .count(static_cast<unsigned>(samples.size())),
                    samples, static_cast<uint32_t>(10 - w.differences[0]));
    }
}

TEST_F(Steim, 2_seven_differences_stand_below_two_spare_bits)
{
    const Samples samples = {0, -1, -2, -3, -4, -5, -6};
    for (const uint32_t word : {0x8FFFFFFFU, 0xBFFFFFFFU, 0x9FFFFFFFU})
        expect_good(Steim2, Dt().steim2(0, -6, {{3, word}}).count(7), samples, 1);
}

TEST_F(Steim, 2_starts_at_the_first_word_that_holds_data)
{
    expect_good(Steim2, Dt().steim2(100, 101, {none(), none(), sub(2, 2, {3, 1})}).count(2), {100, 101}, 97);
    std::vector<kit::Word> last_of_frame(12, none());
    last_of_frame.push_back(four(3, 1, 1, 1));
    last_of_frame.push_back(sub(2, 1, {5}));
    expect_good(Steim2, Dt().steim2(100, 108, last_of_frame).count(5), {100, 101, 102, 103, 108}, 97);
}

TEST_F(Steim, 2_without_data_in_the_first_frame_starts_one_difference_further)
{
    std::vector<kit::Word> words(13, none());
    words.push_back(sub(2, 1, {5}));
    expect_good(Steim2, Dt().steim2(100, 105, words).count(1), {105});
    expect_good(Steim2, Dt().steim2(100, 105, words).count(1), {105}, 100);
}

TEST_F(Steim, frames_without_any_data_give_no_samples)
{
    for (const Level& level : {Steim1, Steim2}) {
        const std::string packet = Dt().steim1(100, 100, {}).count(0);
        for (const Decoder decoder : level.decoders) {
            Channel channel(0);
            EXPECT_EQ(channel.decode(decoder, packet), Samples());
            EXPECT_EQ(channel.chn.last, 100U);
            EXPECT_FALSE(channel.chn.discontinuous);
        }
    }
}

TEST_F(Steim, words_without_data_may_stand_anywhere)
{
    const std::vector<kit::Word> words = {one(0), none(), none(), four(1, 1, 1, 1), none(), two(1, 1)};
    expect_good(Steim1, Dt().steim1(5, 11, words).count(7), {5, 6, 7, 8, 9, 10, 11});
}

TEST_F(Steim, running_value_wraps_at_32_bits)
{
    expect_good(Steim1, Dt().steim1(Most, Least, {four(0, 1, 0, 0)}).count(4), {Most, Least, Least, Least});
    expect_good(Steim2, Dt().steim2(Most, Least, {sub(2, 2, {0, 1})}).count(2), {Most, Least});
    expect_good(Steim1, Dt().steim1(Least, Most, {one(Most), one(-1)}).count(2), {Least, Most}, 1);
}

TEST_F(Steim, all_frames_are_walked_whatever_the_header_counts)
{
    expect_bad(Steim1, Dt().steim1(100, 102, {four(0, 1, -1, 2)}).count(3), {100, 101, 100, 102}, 0,
               "start 0x00000064  stop 0x00000066  samples 3",
               "start 0x00000002  stop 0x00000066  samples 4");
    expect_bad(Steim1, Dt().bytes(64).steim1(100, 102, {four(0, 1, -1, 2)}).count(9999), {100, 101, 100, 102},
               0, "start 0x00000064  stop 0x00000066  samples 9999",
               "start 0x00000002  stop 0x00000066  samples 4");
    expect_bad(Steim2, Dt().steim2(100, 100, {sub(2, 1, {0})}).count(0), {100}, 0,
               "start 0x00000064  stop 0x00000064  samples 0",
               "start 0x00000000  stop 0x00000064  samples 1");
}

TEST_F(Steim, 1_logs_the_last_difference_of_8_or_16_bits)
{
    expect_bad(Steim1, Dt().steim1(100, 999, {one(0), two(5, 7), one(10)}).count(4), {100, 105, 112, 122}, 0,
               "start 0x00000064  stop 0x000003E7  samples 4",
               "start 0x00000007  stop 0x0000007A  samples 4");
}

TEST_F(Steim, 1_logs_the_first_difference_when_all_have_32_bits)
{
    expect_bad(Steim1, Dt().steim1(100, 999, {one(3), one(10)}).count(2), {100, 110}, 0,
               "start 0x00000064  stop 0x000003E7  samples 2",
               "start 0x00000003  stop 0x0000006E  samples 2");
}

TEST_F(Steim, 2_logs_the_last_difference_of_any_width)
{
    expect_bad(Steim2, Dt().steim2(100, 999, {sub(2, 1, {0}), sub(2, 2, {5, 7}), sub(2, 1, {10})}).count(4),
               {100, 105, 112, 122}, 0, "start 0x00000064  stop 0x000003E7  samples 4",
               "start 0x0000000A  stop 0x0000007A  samples 4");
}

TEST_F(Steim, a_mismatch_shows_32_bits)
{
    const int32_t x0 = static_cast<int32_t>(0x80000001);
    expect_bad(Steim1, Dt().steim1(x0, -1, {four(-1, 0, 0, 0)}).count(4), Samples(4, x0), 0,
               "start 0x80000001  stop 0xFFFFFFFF  samples 4",
               "start 0x00000000  stop 0x80000001  samples 4");
}

TEST_F(Steim, a_packet_that_does_not_follow_on_is_logged_with_what_was_carried)
{
    const std::string packet = Dt().steim1(100, 102, {four(4, 1, -1, 2)}).count(4);
    expect_good(Steim1, packet, {100, 101, 100, 102}, 96);
    expect_bad(Steim1, packet, {100, 101, 100, 102}, 95, "start 0x00000064  stop 0x00000066  samples 4",
               "start 0x00000061  stop 0x00000066  samples 4"); // 95 + 2
    expect_bad(Steim2, packet, {100, 101, 100, 102}, 0xFFFFFFFF,
               "start 0x00000064  stop 0x00000066  samples 4",
               "start 0x00000001  stop 0x00000066  samples 4");
}

TEST_F(Steim, nothing_carried_means_no_check_of_the_start)
{
    expect_good(Steim1, Dt().steim1(100, 100, {one(-12345)}).count(1), {100}, 0);
    expect_good(Steim2, Dt().steim2(100, 100, {sub(2, 1, {-12345})}).count(1), {100}, 0);
}

TEST_F(Steim, a_last_sample_of_0_switches_the_check_of_the_next_start_off)
{
    for (const Decoder decoder : Steim1.decoders) {
        Channel channel(0);
        channel.decode(decoder, Dt().steim1(0, 0, {one(0)}).count(1));
        channel.decode(decoder, Dt().steim1(5000, 5000, {one(77)}).count(1));
        EXPECT_FALSE(channel.chn.discontinuous);
        channel.decode(decoder, Dt().steim1(5000, 5000, {one(77)}).count(1));
        EXPECT_TRUE(channel.chn.discontinuous);
    }
}

TEST_F(Steim, behind_a_mismatch_the_recorders_own_last_sample_is_carried)
{
    for (const Decoder decoder : Steim2.decoders) {
        Channel channel(0);
        channel.decode(decoder, Dt().steim2(10, 999, {sub(2, 1, {0})}).count(1)); // ends with 10, says 999
        EXPECT_EQ(channel.chn.last, 999U);
        channel.chn.discontinuous = false;
        channel.decode(decoder, Dt().steim2(1000, 1000, {sub(2, 1, {1})}).count(1));
        EXPECT_FALSE(channel.chn.discontinuous);
        EXPECT_EQ(channel.chn.last, 1000U);
    }
}

TEST_F(Steim, the_mark_of_a_mismatch_stays)
{
    for (const Decoder decoder : Steim1.decoders) {
        Channel channel(0);
        channel.chn.discontinuous = true;
        channel.decode(decoder, Dt().steim1(10, 10, {one(0)}).count(1));
        EXPECT_TRUE(channel.chn.discontinuous);
        EXPECT_EQ(channel.log(), "");
    }
}

TEST_F(Steim, a_mismatch_is_not_logged_when_logs_are_off)
{
    Log_on = false;
    for (const Level& level : {Steim1, Steim2}) {
        for (const Decoder decoder : level.decoders) {
            Channel channel(7);
            EXPECT_EQ(channel.decode(decoder, Dt().steim1(10, 99, {four(0, 1, 1, 1)}).count(4)),
                      (Samples{10, 11, 12, 13}));
            EXPECT_TRUE(channel.chn.discontinuous);
            EXPECT_EQ(channel.chn.last, 99U);
            EXPECT_EQ(channel.log(), "");
        }
    }
}

/// What a packet shows on the console with Steim-2.
std::string shown_by_steim2(Decoder decoder, const std::string& packet, const Samples& samples)
{
    Channel channel(0);
    Samples got;
    const std::string shown = kit::shown_by([&] { got = channel.decode(decoder, packet); });
    EXPECT_EQ(got, samples);
    return shown;
}

TEST_F(Steim, 2_word_of_no_known_width_is_told_and_gives_nothing)
{
    const std::string packet =
        Dt().steim2(10, 12, {sub(2, 2, {0, 1}), {3, 0xC0000000}, {2, 0x00000005}, sub(2, 1, {1})}).count(3);
    for (const Decoder decoder : Steim2.decoders)
        EXPECT_EQ(shown_by_steim2(decoder, packet, {10, 11, 12}),
                  "Error in Steim2 W-type (3) for C=2\nError in Steim2 W-type (0) for C=2\n");
}

TEST_F(Steim, 2_first_word_of_no_known_width_counts_whole_as_first_difference)
{
    for (const Decoder decoder : Steim2.decoders) {
        // 50 less 5, and 1 further
        EXPECT_EQ(
            shown_by_steim2(decoder, Dt().steim2(50, 46, {{2, 0x00000005}, sub(2, 1, {1})}).count(1), {46}),
            "Error in Steim2 W-type (0) for C=2\n");
        EXPECT_EQ(shown_by_steim2(decoder, Dt().steim2(50, 51, {{3, 0xC0000000}, sub(2, 1, {1})}).count(1),
                                  {static_cast<int32_t>(50U - 0xC0000000U + 1U)}),
                  "Error in Steim2 W-type (3) for C=2\n");
        Channel channel(45);
        kit::shown_by([&] {
            channel.decode(decoder, Dt().steim2(50, 46, {{2, 0x00000005}, sub(2, 1, {1})}).count(1));
        });
        EXPECT_FALSE(channel.chn.discontinuous);
    }
}

/// What decode_samples makes of a packet: whatever its encoding.
struct Outcome {
    Decoded verdict;
    uint32_t last;
    Samples samples;
};

Outcome outcome_of(const std::string& bytes, Encoding encoding, uint32_t last = 0)
{
    const Block block(bytes);
    auto out = std::make_unique<DATA_BUF>();
    out->count = 0;
    const Decoded verdict = decode_samples(block.pkt(), encoding, last, *out);
    return {verdict, last, {out->sample, out->sample + out->count}};
}

TEST(decode_samples, of_uncompressed_packets_leaves_the_carried_sample_alone_and_finds_nothing_wrong)
{
    for (const auto& [format, encoding] : {std::pair(0x16U, Encoding::int16), {0x32U, Encoding::int32}}) {
        const Outcome outcome = outcome_of(Dt().format(format).samples({1, 2, 3}), encoding, 4711);
        EXPECT_EQ(outcome.samples, (Samples{1, 2, 3}));
        EXPECT_EQ(outcome.last, 4711U);
        EXPECT_TRUE(outcome.verdict.sound);
        EXPECT_EQ(outcome.verdict.read_first | outcome.verdict.read_last, 0U);
    }
}

TEST(decode_samples, of_a_steim_packet_that_is_not_sound_says_what_was_read_and_what_came_out)
{
    const std::string packet = Dt().steim1(100, 999, {one(3), one(10)}).count(2);
    const Outcome outcome = outcome_of(packet, Encoding::steim1, 5);
    EXPECT_FALSE(outcome.verdict.sound);
    EXPECT_EQ(outcome.verdict.read_first, 100U);
    EXPECT_EQ(outcome.verdict.read_last, 999U);
    EXPECT_EQ(outcome.verdict.calc_first, 8U); // the first difference, on 5
    EXPECT_EQ(outcome.verdict.calc_last, 110U);
    EXPECT_EQ(outcome.samples, (Samples{100, 110}));
    EXPECT_EQ(outcome.last, 999U);
}

TEST(decode_samples, goes_by_the_encoding)
{
    const auto samples_of = [](const std::string& bytes, Encoding encoding) {
        return outcome_of(bytes, encoding).samples;
    };
    EXPECT_EQ(samples_of(Dt().format(0x16).samples({1, -2}), Encoding::int16), (Samples{1, -2}));
    EXPECT_EQ(samples_of(Dt().format(0x32).samples({1, -2, 3}), Encoding::int32), (Samples{1, -2, 3}));
    EXPECT_EQ(samples_of(Dt().steim1(5, 6, {two(0, 1)}).count(2), Encoding::steim1), (Samples{5, 6}));
    EXPECT_EQ(samples_of(Dt().steim2(6, 7, {sub(2, 2, {0, 1})}).count(2), Encoding::steim2), (Samples{6, 7}));
    EXPECT_EQ(samples_of(Dt().format(0x77).samples({1, 2}), Encoding::none), Samples{});
    EXPECT_EQ(sizeof(DATA_BUF), 6328U);
}

// ---- random frames, against the description written down a second time

/// A packet of random frames: any codes, or codes in long runs; small or any words; sometimes consistent.
std::string random_packet(std::mt19937& random, int level, uint32_t& last, unsigned& count)
{
    std::string packet = Dt().format(level == 1 ? 0xC0 : 0xC2);
    for (size_t at = 64; at < 1024; ++at) packet[at] = static_cast<char>(random());
    const unsigned style = random() % 4;
    const uint32_t run = static_cast<uint32_t>(random() % 4) * 0x55555555U;
    for (size_t frame = 64; frame < 1024; frame += 64) {
        if (style == 0) continue;
        uint32_t control =
            style == 1 ? run : static_cast<uint32_t>(random()) & static_cast<uint32_t>(random());
        if (style == 3 && random() % 3) control = 0;
        if (frame == 64 && random() % 8 == 0) control = 0;
        packet.replace(frame, 4, kit::big_endian(control, 4));
    }
    const bool known_words = random() % 2;
    for (int frame = 1; frame <= 15 && level == 2 && known_words; ++frame) {
        for (int w = 1; w < 16; ++w) {
            const int code = by_the_book::code_of(packet, frame, w);
            const size_t at = static_cast<size_t>(64 * frame + 4 * w);
            const unsigned dnib = static_cast<unsigned char>(packet[at]) >> 6;
            if ((code == 2 && dnib == 0) || (code == 3 && dnib == 3))
                packet[at] = static_cast<char>(packet[at] ^ 0x40);
        }
    }
    last = random() % 2 ? 0 : static_cast<uint32_t>(random());
    count = static_cast<unsigned>(random() % 1600);
    if (random() % 4) { // make it consistent, or all but
        by_the_book::Decoded once = by_the_book::decode(level, packet, 0, 0);
        count = static_cast<unsigned>(once.samples.size());
        if (!once.samples.empty() && random() % 8)
            packet.replace(72, 4, kit::big_endian(static_cast<uint32_t>(once.samples.back()), 4));
        if (random() % 2 && !once.samples.empty())
            last = 2 * by_the_book::word_at(packet, 1, 1) - static_cast<uint32_t>(once.samples[0]);
        if (random() % 8 == 0) ++count;
    }
    packet.replace(20, 2, kit::bcd(count, 4));
    return packet;
}

/// Every decoder of the level, on many packets. Some of all kinds must have come by.
void expect_by_the_book(const Level& level, bool (*by_table)(const PACKET&, uint32_t, DATA_BUF&),
                        uint32_t seed)
{
    std::mt19937 random(seed);
    int good = 0, bad = 0, odd = 0, tabled = 0;
    for (int i = 0; i < 1500; ++i) {
        uint32_t last = 0;
        unsigned count = 0;
        const std::string packet = random_packet(random, level.number, last, count);
        const by_the_book::Decoded book = by_the_book::decode(level.number, packet, count, last);
        for (const Decoder decoder : level.decoders) {
            Channel channel(last);
            Samples got;
            ASSERT_EQ(kit::shown_by([&] { got = channel.decode(decoder, packet); }), book.shown) << i;
            ASSERT_EQ(got, book.samples) << i;
            ASSERT_EQ(channel.chn.last, book.last) << i;
            ASSERT_EQ(channel.chn.discontinuous, book.mismatch) << i;
            ASSERT_EQ(channel.log(), book.log) << i;
        }
        const Block block(packet);
        auto out = std::make_unique<DATA_BUF>();
        if (by_table(block.pkt(), last, *out)) {
            ++tabled;
            ASSERT_FALSE(book.mismatch) << i;
            ASSERT_EQ(book.shown, "") << i;
            ASSERT_EQ(Samples(out->sample, out->sample + out->count), book.samples) << i;
        }
        ++(book.mismatch ? bad : good);
        if (!book.shown.empty()) ++odd;
    }
    EXPECT_GT(good, 100);
    EXPECT_GT(bad, 100);
    EXPECT_GT(tabled, 50);
    if (level.number == 2) {
        EXPECT_GT(odd, 100);
    }
}

TEST_F(Steim, 1_agrees_with_decoding_step_by_step_on_random_frames)
{
    expect_by_the_book(Steim1, steim1_by_table, 31);
}

TEST_F(Steim, 2_agrees_with_decoding_step_by_step_on_random_frames)
{
    expect_by_the_book(Steim2, steim2_by_table, 32);
}

} // namespace
