// The compressed decoders against libmseed, an independent encoder and decoder of the same frames: a
// miniSEED record of 1024 bytes whose data start at byte 64 has the very frames of a data packet.
// Left out where that library is missing.
#ifdef VX_LIBMSEED

#include "driver/settings.h"
#include "kit/packets.h"
#include "packet/block.h"
#include "packet/steim_by_the_book.h"

#include <gtest/gtest.h>
#include <libmseed.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Samples = std::vector<int32_t>;

constexpr int Frames_at = 64;

struct Coding {
    int number;
    int8_t encoding; ///< libmseed's
    unsigned format; ///< of the packet
    Decoder decoders[2];
};
const Coding Coding1{1, DE_STEIM1, 0xC0, {Buf_c0, Buf_c0_by_word}};
const Coding Coding2{2, DE_STEIM2, 0xC2, {Buf_c2, Buf_c2_by_word}};

/// All records that libmseed makes of a series.
std::vector<std::string> records_of(const Coding& coding, const Samples& series)
{
    MSRecord* msr = msr_init(nullptr);
    snprintf(msr->network, sizeof msr->network, "XX");
    snprintf(msr->station, sizeof msr->station, "STA01");
    snprintf(msr->channel, sizeof msr->channel, "HHZ");
    msr->dataquality = 'D';
    msr->reclen = Packet_size;
    msr->byteorder = 1;
    msr->encoding = coding.encoding;
    msr->starttime = ms_seedtimestr2hptime(const_cast<char*>("2004,123,10:15:30.2500"));
    msr->samprate = 100.0;
    msr->sampletype = 'i';
    msr->numsamples = static_cast<int64_t>(series.size());
    msr->datasamples = malloc(series.size() * sizeof(int32_t)); // libmseed frees it
    memcpy(msr->datasamples, series.data(), series.size() * sizeof(int32_t));

    std::vector<std::string> records;
    const auto keep = [](char* record, int length, void* to) {
        static_cast<std::vector<std::string>*>(to)->emplace_back(record, static_cast<size_t>(length));
    };
    int64_t packed = 0;
    const int made = msr_pack(msr, keep, &records, &packed, 1, 0);
    EXPECT_EQ(made, static_cast<int>(records.size()));
    EXPECT_EQ(packed, msr->numsamples);
    msr_free(&msr);
    return records;
}

unsigned half_word(const std::string& record, size_t at)
{
    return static_cast<unsigned char>(record[at]) * 256U + static_cast<unsigned char>(record[at + 1]);
}
unsigned samples_in(const std::string& record)
{
    return half_word(record, 30);
}

/// The data packet with the frames of a record.
std::string packet_of(const Coding& coding, const std::string& record)
{
    EXPECT_EQ(half_word(record, 44), static_cast<unsigned>(Frames_at));
    return kit::Dt().format(coding.format).count(samples_in(record)).raw(Frames_at, record.substr(Frames_at));
}

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

/// A series whose differences keep to a width for a while, then to another one.
Samples random_series(std::mt19937& random, unsigned widest)
{
    Samples series;
    const size_t length = 1 + random() % (random() % 4 ? 700 : 4000);
    int64_t x = static_cast<int32_t>(random()) >> random() % 32;
    unsigned width = 1;
    for (size_t i = 0; i < length; ++i) {
        if (random() % 20 == 0) width = 1 + static_cast<unsigned>(random() % widest);
        const int64_t half = int64_t{1} << (width - 1);
        int64_t d = static_cast<int64_t>(random() % static_cast<uint64_t>(2 * half)) - half;
        if (random() % 16 == 0) d = random() % 2 ? half - 1 : -half; // the limits themselves
        if (x + d > 1000000000 || x + d < -1000000000) d = x > 0 ? -half : half - 1;
        if (i > 0) x += d;
        if (x > 1000000000 || x < -1000000000) x /= 2; // only where the series begins
        series.push_back(static_cast<int32_t>(x));
    }
    return series;
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
    Log_on = 1;
    std::mt19937 random(41);
    Widths widths;
    for (int i = 0; i < 2000; ++i) {
        SCOPED_TRACE(i);
        expect_series(Coding1, random_series(random, i % 4 ? 16 : 30), widths);
        if (HasFatalFailure()) return;
    }
    for (const int code : {1, 2, 3}) EXPECT_GT((widths[{code, 0}]), 1000) << code;
}

TEST(Libmseed, series_packed_by_it_as_steim_2_come_back)
{
    Log_on = 1;
    std::mt19937 random(42);
    Widths widths;
    for (int i = 0; i < 2000; ++i) {
        SCOPED_TRACE(i);
        expect_series(Coding2, random_series(random, i % 4 ? 12 : 29), widths);
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

/// What libmseed makes of our frames, put into a record of its own.
Samples decoded_by_it(const Coding& coding, const std::string& packet, unsigned count)
{
    std::string record = records_of(coding, {1, 2, 3})[0];
    record[30] = static_cast<char>(count >> 8);
    record[31] = static_cast<char>(count);
    record.replace(Frames_at, std::string::npos, packet, Frames_at);
    MSRecord* msr = nullptr;
    EXPECT_EQ(msr_unpack(record.data(), Packet_size, &msr, 1, 0), MS_NOERROR);
    const int32_t* samples = static_cast<const int32_t*>(msr->datasamples);
    Samples made(samples, samples + msr->numsamples);
    msr_free(&msr);
    return made;
}

/// Frames of random words, many of them empty, the first one with data in it.
std::string random_frames(std::mt19937& random, const Coding& coding)
{
    kit::Dt dt;
    dt.format(coding.format);
    const unsigned emptiness = static_cast<unsigned>(random() % 4);
    for (int frame = 1; frame <= 15; ++frame) {
        for (int w = frame == 1 ? 3 : 1; w < 16; ++w) {
            const bool first = frame == 1 && w == 3;
            unsigned code = static_cast<unsigned>(random() % 4);
            if (emptiness && random() % emptiness) code = 0;
            if (first && code == 0) code = 1;
            uint32_t bits = static_cast<uint32_t>(random());
            if (coding.number == 2 && code == 2 && bits >> 30 == 0) bits |= 1U << (30 + random() % 2);
            if (coding.number == 2 && code == 3 && bits >> 30 == 3) bits &= ~(1U << (30 + random() % 2));
            if (coding.number == 2 && code == 2 && bits >> 30 == 1)
                bits &= ~0x1FFF0000U; // sums within 32 bits
            if (coding.number == 1 && code == 3)
                bits = static_cast<uint32_t>(static_cast<int32_t>(bits) >> 12);
            dt.word(frame, w, {code, bits});
        }
    }
    dt.word(1, 1, {0, static_cast<uint32_t>(static_cast<int32_t>(random()) >> 8)});
    return dt;
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
    Log_on = 1;
    expect_frames(Coding1, 43);
}

TEST(Libmseed, frames_of_random_words_are_read_alike_as_steim_2)
{
    Log_on = 1;
    expect_frames(Coding2, 44);
}

} // namespace

#endif
