#include "tools/maker.h"

#include <algorithm>
#include <map>

#ifdef VX_LIBMSEED
#include <libmseed.h>
#endif

using namespace mkrec;
using std::string_literals::operator""s;

namespace {

std::string mseed_of(const std::vector<std::string>& args)
{
    return written(survey_of(args), write_mseed);
}

} // namespace

TEST(Mseed, a_record_begins_with_header_and_blockette_1000)
{
    const Survey survey = survey_of({"--units", "3", "--rate", "100", "--format", "c0"});
    SampleBlock block{};
    block.payload[0] = 0xAB;
    block.samples = 515;
    block.first = 240;
    uint8_t record[Record_len];
    write_record(record, survey, {2, 1, 0, 2}, block, 1000001);
    const std::string head(reinterpret_cast<const char*>(record), 65);
    EXPECT_EQ(head.substr(0, 20), "000002D CEDAR02HHEVX"); // numbers start again after 999999
    // 2023, day 10, 06:00:02.7002; 515 samples; 100 per second
    EXPECT_EQ(head.substr(20, 16), "\x07\xE7\x00\x0A\x06\x00\x02\x00\x1B\x5A\x02\x03\x00\x64\x00\x01"s);
    EXPECT_EQ(head.substr(36, 12), "\x00\x00\x00\x01\x00\x00\x00\x00\x00\x40\x00\x30"s);
    EXPECT_EQ(head.substr(48, 8), "\x03\xE8\x00\x00\x0A\x01\x0A\x00"s);
    EXPECT_EQ(head.substr(56), "\0\0\0\0\0\0\0\0\xAB"s);
}

TEST(Mseed, holds_the_very_data_of_the_packets_channel_by_channel)
{
    for (const std::string format : {"c2", "c0", "32", "16"}) {
        const std::vector<std::string> args{"--format", format, "--seconds", "20", "--interleave"};
        const std::string all = recording(args), records = mseed_of(args);
        // Unit, stream, channel and event in this order are the order of the records.
        std::map<std::tuple<unsigned, int, int, int>, std::string> data;
        for (const Seen& p : packets_of(all))
            if (p.type() == "DT")
                data[{p.binary(HDR::Unit_id), p.bcd(EVT::Stream), p.bcd(EVT::Channel), p.bcd(EVT::Number)}] +=
                    p.bytes.substr(64);
        std::string expected, got;
        for (const auto& [key, bytes] : data) expected += bytes;
        for (size_t at = 0; at < records.size(); at += 1024) got += records.substr(at + 64, 960);
        EXPECT_EQ(got, expected) << format;
    }
}

TEST(Mseed, numbers_its_records_from_1)
{
    const std::string records = mseed_of({"--seconds", "20"});
    ASSERT_GT(records.size(), 20u * 1024);
    EXPECT_EQ(records.substr(0, 7), "000001D");
    EXPECT_EQ(records.substr(17 * 1024, 7), "000018D");
}

#ifdef VX_LIBMSEED

namespace {

struct TraceHeader {
    std::vector<int32_t> samples;
    hptime_t start = 0, next = 0; ///< microseconds since 1970
};

/// Decodes the file with the public library: a trace for each run of records without a gap.
std::map<std::string, std::vector<TraceHeader>> decoded(std::string records)
{
    std::map<std::string, std::vector<TraceHeader>> traces;
    MSRecord* msr = nullptr;
    for (size_t at = 0; at < records.size(); at += 1024) {
        EXPECT_EQ(ms_detect(records.data() + at, 1024), 1024);
        EXPECT_EQ(msr_unpack(records.data() + at, 1024, &msr, 1, 0), MS_NOERROR) << "record " << at / 1024;
        EXPECT_EQ(msr->numsamples, msr->samplecnt);
        EXPECT_EQ(msr->sampletype, 'i');
        char name[64];
        std::vector<TraceHeader>& runs = traces[msr_srcname(msr, name, 0)];
        if (runs.empty() || runs.back().next != msr->starttime) runs.push_back({{}, msr->starttime, 0});
        const int32_t* x = static_cast<const int32_t*>(msr->datasamples);
        runs.back().samples.insert(runs.back().samples.end(), x, x + msr->numsamples);
        runs.back().next = msr->starttime +
                           static_cast<hptime_t>(static_cast<double>(msr->numsamples) * 1e6 / msr->samprate);
    }
    msr_free(&msr);
    return traces;
}

void collect(char* record, int len, void* into)
{
    static_cast<std::string*>(into)->append(record, static_cast<size_t>(len));
}

/// The library's own encoding of samples into records of 1024 bytes.
std::string packed_by_library(std::vector<int32_t> x, char encoding)
{
    std::string records;
    MSRecord* msr = msr_init(nullptr);
    strcpy(msr->network, "VX");
    strcpy(msr->station, "ALDER");
    strcpy(msr->channel, "HNZ");
    msr->reclen = 1024;
    msr->record = nullptr;
    msr->encoding = encoding;
    msr->byteorder = 1;
    msr->dataquality = 'D';
    msr->samprate = 100;
    msr->sampletype = 'i';
    msr->datasamples = x.data();
    msr->numsamples = static_cast<int64_t>(x.size());
    int64_t packed = 0;
    EXPECT_GT(msr_pack(msr, collect, &records, &packed, 1, 0), 0);
    EXPECT_EQ(packed, static_cast<int64_t>(x.size()));
    msr->datasamples = nullptr;
    msr_free(&msr);
    return records;
}

} // namespace

TEST(Mseed, an_independent_decoder_finds_every_sample_in_its_place)
{
    for (const std::string format : {"c2", "c0", "32", "16"})
        for (const std::string signal : {"quake", "quiet", "loud", "offset", "full", "mixed"}) {
            const std::vector<std::string> args{"--format", format, "--signal", signal, "--seconds", "25"};
            const Survey survey = survey_of(args);
            const auto traces = decoded(mseed_of(args));
            ASSERT_EQ(traces.size(), 2u * 2 * 3) << format << " " << signal;
            for (int s = 0; s < 2; ++s)
                for (int c = 0; c < 3; ++c) {
                    const std::string name = "VX_ALDER_0"s + (s ? "2_BH" : "1_HN") + "ZNE"[c];
                    const std::vector<TraceHeader>& runs = traces.at(name);
                    ASSERT_EQ(runs.size(), 2u) << name; // an event each
                    for (int e = 0; e < 2; ++e) {
                        const TraceHeader& run = runs[static_cast<size_t>(e)];
                        EXPECT_EQ(run.samples, signal_of(survey, {0, s, e, c}, s ? 50 * 25 : 200 * 25));
                        // 2023-01-10 06:00:00, two minutes from event to event, 40 ms from stream to stream
                        EXPECT_EQ(run.start, (int64_t{1673330400} + 120 * e) * 1000000 + 40000 * s);
                    }
                }
        }
}

TEST(Mseed, an_independent_encoder_packs_the_same_frames)
{
    for (const SteimLevel level : {SteimLevel::level1, SteimLevel::level2})
        for (uint64_t seed = 1; seed <= 20; ++seed) {
            SignalMaker signal({.motion = seed % 2 ? Motion::mixed : Motion::quiet,
                                .word_bits = 32,
                                .full_bits = 32,
                                .rate = 100,
                                .period = 6000,
                                .distance = 0,
                                .axis = 0,
                                .seed = seed});
            std::vector<int32_t> x(4000);
            signal.fill(x.data(), 4000);
            const std::string theirs =
                packed_by_library(x, level == SteimLevel::level1 ? DE_STEIM1 : DE_STEIM2);
            std::string ours;
            for (int at = 0; at < 4000;) {
                uint8_t frames[Steim_len];
                const int32_t previous = x[static_cast<size_t>(at ? at - 1 : 0)];
                const SteimFill fill = steim_encode(level, x.data() + at, 4000 - at, previous, frames);
                ours.append(reinterpret_cast<const char*>(frames), sizeof frames);
                at += fill.samples;
            }
            ASSERT_EQ(theirs.size() / 1024 * 960, ours.size());
            for (size_t i = 0; i * 960 < ours.size(); ++i)
                ASSERT_EQ(theirs.substr(i * 1024 + 64, 960), ours.substr(i * 960, 960))
                    << "seed " << seed << " packet " << i;
        }
}

#endif
