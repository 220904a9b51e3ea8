// The bridge to libmseed, an independent encoder and decoder of the same frames: a miniSEED record of 1024
// bytes whose data start at byte 64 has the very frames of a data packet.
#pragma once

#include "kit/packets.h"
#include "packet/block.h"

#include <gtest/gtest.h>
#include <libmseed.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace mseed_frames {

using Samples = std::vector<int32_t>;

inline constexpr int Frames_at = 64;

struct Coding {
    int number;
    int8_t encoding; ///< libmseed's
    unsigned format; ///< of the packet
    Decoder decoders[2];
};
inline const Coding Coding1{1, DE_STEIM1, 0xC0, {Buf_c0, Buf_c0_by_word}};
inline const Coding Coding2{2, DE_STEIM2, 0xC2, {Buf_c2, Buf_c2_by_word}};

/// All records that libmseed makes of a series.
inline std::vector<std::string> records_of(const Coding& coding, const Samples& series)
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

inline unsigned half_word(const std::string& record, size_t at)
{
    return static_cast<unsigned char>(record[at]) * 256U + static_cast<unsigned char>(record[at + 1]);
}
inline unsigned samples_in(const std::string& record)
{
    return half_word(record, 30);
}

/// The data packet with the frames of a record.
inline std::string packet_of(const Coding& coding, const std::string& record)
{
    EXPECT_EQ(half_word(record, 44), static_cast<unsigned>(Frames_at));
    return kit::Dt().format(coding.format).count(samples_in(record)).raw(Frames_at, record.substr(Frames_at));
}

/// A series whose differences keep to a width for a while, then to another one.
inline Samples random_series(std::mt19937& random, unsigned widest, size_t length)
{
    Samples series;
    int64_t x = static_cast<int32_t>(random()) >> random() % 32;
    if (x > 1000000000 || x < -1000000000) x /= 4;
    unsigned width = 1;
    for (size_t i = 0; i < length; ++i) {
        if (random() % 20 == 0) width = 1 + static_cast<unsigned>(random() % widest);
        const int64_t half = int64_t{1} << (width - 1);
        int64_t d = static_cast<int64_t>(random() % static_cast<uint64_t>(2 * half)) - half;
        if (random() % 16 == 0) d = random() % 2 ? half - 1 : -half; // the limits themselves
        if (x + d > 1000000000 || x + d < -1000000000) d = x > 0 ? -half : half - 1;
        if (i > 0) x += d;
        series.push_back(static_cast<int32_t>(x));
    }
    return series;
}

/// What libmseed makes of our frames, put into a record of its own.
inline Samples decoded_by_it(const Coding& coding, const std::string& packet, unsigned count)
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
inline std::string random_frames(std::mt19937& random, const Coding& coding)
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

} // namespace mseed_frames
