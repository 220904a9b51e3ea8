// The compressed decoders against libmseed. Left out where that library is missing.
#ifdef VX_LIBMSEED

#include "driver/base/settings.h"
#include "packet/mseed_frames.h"
#include "packet/steim_by_the_book.h"

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace mseed_frames;

/// Which widths a recording used: code, and dnib where it matters.
using Widths = std::map<std::pair<int, int>, int>;

void note_widths(const Coding& coding, const std::string& packet, Widths& widths)
{
    for (int frame = 1; frame <= 15; ++frame) {
        for (int w = frame == 1 ? 3 : 1; w < 16; ++w) {
            const int code = by_the_book::code_of(packet, frame, w);
            const int dnib = static_cast<int>(by_the_book::word_at(packet, frame, w) >> 30);
            ++widths[{code, coding.number == 2 && code > 1 ? dnib : 0}];
        }
    }
}

/// One packet or a few.
size_t random_length(std::mt19937& random)
{
    return 1 + random() % (random() % 4 ? 700 : 4000);
}

/// Decodes all records of a series on one channel: every sample, and no complaint.
void expect_series(const Coding& coding, const Samples& series, Widths& widths)
{
    const std::vector<std::string> records = records_of(coding, series);
    for (const Decoder decoder : coding.decoders) {
        Channel channel(0);
        Samples got;
        for (const std::string& record : records) {
            const std::string packet = packet_of(coding, record);
            const Samples piece = channel.decode(decoder, packet);
            EXPECT_EQ(piece.size(), samples_in(record));
            got.insert(got.end(), piece.begin(), piece.end());
            EXPECT_EQ(static_cast<int32_t>(channel.chn.last), got.back());
            note_widths(coding, packet, widths);
        }
        ASSERT_EQ(got, series);
        ASSERT_EQ(channel.chn.discontinuous, 0);
        ASSERT_EQ(channel.log(), "");
    }
}

TEST(Libmseed, series_packed_by_it_as_steim_1_come_back)
{
    Log_on = true;
    std::mt19937 random(41);
    Widths widths;
    for (int i = 0; i < 2000; ++i) {
        SCOPED_TRACE(i);
        expect_series(Coding1, random_series(random, i % 4 ? 16 : 30, random_length(random)), widths);
        if (HasFatalFailure()) return;
    }
    for (const int code : {1, 2, 3}) EXPECT_GT((widths[{code, 0}]), 1000) << code;
}

TEST(Libmseed, series_packed_by_it_as_steim_2_come_back)
{
    Log_on = true;
    std::mt19937 random(42);
    Widths widths;
    for (int i = 0; i < 2000; ++i) {
        SCOPED_TRACE(i);
        expect_series(Coding2, random_series(random, i % 4 ? 12 : 29, random_length(random)), widths);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT((widths[{1, 0}]), 1000);
    for (const int dnib : {1, 2, 3}) EXPECT_GT((widths[{2, dnib}]), 1000) << dnib;
    for (const int dnib : {0, 1, 2}) EXPECT_GT((widths[{3, dnib}]), 1000) << dnib;
}

TEST(Libmseed, a_full_record_holds_as_many_samples_as_a_packet_can)
{
    Widths widths;
    Samples quiet(3000, 0);
    for (size_t i = 0; i < quiet.size(); ++i) quiet[i] = static_cast<int32_t>(i % 7);
    EXPECT_EQ(samples_in(records_of(Coding1, quiet)[0]), 892U);
    EXPECT_EQ(samples_in(records_of(Coding2, quiet)[0]), 1561U);
    expect_series(Coding1, quiet, widths);
    expect_series(Coding2, quiet, widths);
}

void expect_frames(const Coding& coding, uint32_t seed)
{
    std::mt19937 random(seed);
    for (int i = 0; i < 1500; ++i) {
        std::string packet = random_frames(random, coding);
        const by_the_book::Decoded once = by_the_book::decode(coding.number, packet, 0, 0);
        const unsigned count = static_cast<unsigned>(once.samples.size());
        packet.replace(20, 2, kit::bcd(count, 4));
        packet.replace(72, 4, kit::big_endian(static_cast<uint32_t>(once.samples.back()), 4));
        const Samples theirs = decoded_by_it(coding, packet, count);
        for (const Decoder decoder : coding.decoders) {
            Channel channel(0);
            ASSERT_EQ(channel.decode(decoder, packet), theirs) << i;
            ASSERT_EQ(channel.chn.discontinuous, 0) << i;
        }
    }
}

TEST(Libmseed, frames_of_random_words_are_read_alike_as_steim_1)
{
    Log_on = true;
    expect_frames(Coding1, 43);
}

TEST(Libmseed, frames_of_random_words_are_read_alike_as_steim_2)
{
    Log_on = true;
    expect_frames(Coding2, 44);
}

} // namespace

#endif
