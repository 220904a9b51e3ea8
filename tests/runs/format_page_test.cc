// What docs/format.md says by hand is what the program does: the Steim frames worked out there, the packet in
// hexadecimal, the data formats and the words of a trace's header.
#include "runs/format_page.h"
#include "runs/traces.h"

#ifdef VX_LIBMSEED
#include <libmseed.h>
#endif

#include <map>
#include <set>

using namespace kit;
using namespace runs;
using format_page::Table;

namespace {

constexpr const char *Steim1 = "### A Steim-1 frame by hand", *Steim2 = "### A Steim-2 frame by hand";

/// A frame as a table of the page tells it.
struct Frame {
    std::string bytes; ///< of the words told
    std::vector<int32_t> differences, samples;
};

Frame frame_of(const char* heading)
{
    Frame frame;
    for (const auto& row : format_page::table(heading, "word")) {
        EXPECT_EQ(frame.bytes.size(), 4 * std::stoul(row.at(0)));
        frame.bytes += format_page::bytes(row.at(1));
        for (const int32_t d : format_page::numbers(row.at(3))) frame.differences.push_back(d);
        for (const int32_t x : format_page::numbers(row.at(4))) frame.samples.push_back(x);
    }
    return frame;
}

Dt packet_of(const Frame& frame, unsigned format)
{
    return Dt()
        .event(12)
        .format(format)
        .raw(64, frame.bytes)
        .count(static_cast<unsigned>(frame.samples.size()));
}

/// The sample before the packet, by the page's first difference.
int32_t sample_before(const Frame& frame)
{
    return frame.samples.at(0) - frame.differences.at(0);
}

void expect_worked_out(const char* heading, unsigned format, const Dt& before)
{
    const Frame frame = frame_of(heading);
    ASSERT_EQ(frame.samples.size(), frame.differences.size());
    for (size_t i = 1; i < frame.samples.size(); ++i)
        EXPECT_EQ(frame.samples[i - 1] + frame.differences[i], frame.samples[i]) << "difference " << i;

    const Converted run = convert(in_event(before + packet_of(frame, format)));
    std::vector<int32_t> all{sample_before(frame)};
    all.insert(all.end(), frame.samples.begin(), frame.samples.end());
    EXPECT_TRUE(same_bytes(samples_in(only_trace(run)), sac_samples(all)));
    EXPECT_TRUE(same_bytes(unit_log(run), event_log("", 3))); // good: the log tells of no mismatch
}

/// Offset and width of the fields of a section, by name.
std::map<std::string, std::pair<int, int>> places(const char* heading)
{
    std::map<std::string, std::pair<int, int>> found;
    for (const auto& row : format_page::table(heading, "offset"))
        found[row.at(3)] = {std::stoi(row.at(0)), std::stoi(row.at(1))};
    return found;
}

/// A packet of one sample that reads differently in each encoding, in an event and a second of its own.
Recording event_in_format(unsigned format)
{
    Dt dt = Dt().event(format + 1).at(10, format / 60, format % 60, 0).format(format);
    dt.extension().count(1).raw(68, big_endian(100, 4)).raw(72, big_endian(100, 4));
    return Eh().event(format + 1).usual() + dt.word(1, 3, {3, 0x80000000U | 5}) +
           Et().event(format + 1).usual();
}

const std::map<std::string, std::vector<float>> Samples_by_encoding{
    {"16-bit integers", {0x0300}},
    {"32-bit integers", {0x03000000}},
    {"Steim-1", {100}},
    {"Steim-2", {100, 100, 100, 100, 100, 100, 105}},
};

} // namespace

TEST(Format_page, the_Steim_1_frame_worked_out_by_hand_gives_its_samples)
{
    const int32_t before = sample_before(frame_of(Steim1));
    expect_worked_out(Steim1, 0xC0, Dt().event(12).count(1).steim1(before, before, {one(before)}));
}

TEST(Format_page, the_Steim_2_frame_worked_out_by_hand_gives_its_samples)
{
    const int32_t before = sample_before(frame_of(Steim2));
    expect_worked_out(Steim2, 0xC2, Dt().event(12).count(1).steim2(before, before, {sub(2, 1, {before})}));
}

#ifdef VX_LIBMSEED
namespace {

/// A frame in a miniSEED record of 1024 bytes, whose data begin at byte 64 like those of a packet.
std::string mseed_record(const Frame& frame, int encoding)
{
    const std::string identity = "000001D STA01  HHZXX";
    const std::string time = big_endian(2004, 2) + big_endian(123, 2) + std::string(6, '\0');
    const std::string counts =
        big_endian(static_cast<uint32_t>(frame.samples.size()), 2) + big_endian(100, 2) + big_endian(1, 2);
    const std::string rest = std::string(3, '\0') + '\1' + big_endian(0, 4) + big_endian(64, 2) +
                             big_endian(48, 2); // one blockette; where data and blockette begin
    std::string blockette = big_endian(1000, 2) + big_endian(0, 2);
    blockette += {static_cast<char>(encoding), 1, 10, 0}; // big-endian, 2^10 bytes
    std::string record = identity + time + counts + rest + blockette;
    record.resize(64);
    record += frame.bytes;
    record.resize(1024);
    return record;
}

std::vector<int32_t> decoded_by_libmseed(const Frame& frame, int encoding)
{
    std::string record = mseed_record(frame, encoding);
    MSRecord* msr = nullptr;
    EXPECT_EQ(msr_unpack(record.data(), 1024, &msr, 1, 0), MS_NOERROR);
    if (!msr) return {};
    const int32_t* samples = static_cast<const int32_t*>(msr->datasamples);
    std::vector<int32_t> all(samples, samples + msr->numsamples);
    msr_free(&msr);
    return all;
}

} // namespace

TEST(Format_page, an_independent_decoder_reads_both_frames_alike)
{
    const Frame frame1 = frame_of(Steim1), frame2 = frame_of(Steim2);
    EXPECT_EQ(decoded_by_libmseed(frame1, DE_STEIM1), frame1.samples);
    EXPECT_EQ(decoded_by_libmseed(frame2, DE_STEIM2), frame2.samples);
}
#endif

TEST(Format_page, the_packet_in_hexadecimal_becomes_the_trace_it_names)
{
    const std::vector<std::string> lines = format_page::section("### A whole DT packet");
    const std::string packet = format_page::dumped(lines);
    ASSERT_EQ(packet.size(), 1024U);
    const Converted run = convert(packet);
    ASSERT_EQ(run.sac_names().size(), 1U);
    const std::string name = run.sac_names()[0];
    EXPECT_EQ(count(kit::read_file(VX_FORMAT_PAGE), "`" + name + "`"), 1U) << name;
    EXPECT_TRUE(same_bytes(samples_in(run.file(name)), sac_samples(frame_of(Steim2).samples)));
}

TEST(Format_page, the_bytes_named_stand_in_the_packet_where_the_fields_lie)
{
    const std::string packet = format_page::dumped(format_page::section("### A whole DT packet"));
    auto fields = places("## A packet");
    fields.merge(places("## Event fields"));
    fields.merge(places("## DT: data"));
    fields.erase("HDR::Digits"); // the header once more
    for (const auto& row : format_page::table("### A whole DT packet", "bytes")) {
        ASSERT_TRUE(fields.contains(row.at(1))) << row.at(1);
        const auto [at, width] = fields[row.at(1)];
        EXPECT_EQ(packet.substr(static_cast<size_t>(at), static_cast<size_t>(width)),
                  format_page::bytes(row.at(0)))
            << row.at(1);
        fields.erase(row.at(1));
    }
    EXPECT_TRUE(fields.empty()) << fields.begin()->first << " is not named";
}

TEST(Format_page, names_every_data_format_that_has_samples)
{
    std::map<unsigned, std::string> told;
    for (const auto& row : format_page::table("## DT: data", "format")) {
        std::istringstream codes(row.at(0));
        for (std::string code; codes >> code;)
            told[static_cast<unsigned>(std::stoul(code, nullptr, 16))] = row.at(1);
    }
    Recording all;
    for (unsigned format = 0; format < 256; ++format) all += event_in_format(format);
    const Converted run = convert(all);
    const std::vector<std::string> traces = run.sac_names(); // by time
    ASSERT_EQ(traces.size(), 256U);
    for (unsigned format = 0; format < 256; ++format) {
        const auto samples =
            told.contains(format) ? Samples_by_encoding.at(told[format]) : std::vector<float>{};
        EXPECT_EQ(samples_of(run.file(traces[format])), samples) << "format " << format;
    }
}

TEST(Format_page, names_every_word_and_text_of_a_trace_header_that_is_set)
{
    std::set<int> words, texts;
    for (const auto& row : format_page::table("## The header of a trace", "word")) {
        const int byte = std::stoi(row.at(1));
        if (row.at(0).empty()) {
            texts.insert(byte);
        } else {
            words.insert(std::stoi(row.at(0)));
            EXPECT_EQ(byte, 4 * std::stoi(row.at(0))) << row.at(2);
        }
    }
    const std::string header = only_trace(convert(in_event(data({5, -3, 4})))).substr(0, 632);
    for (int word = 0; word < 110; ++word) {
        const uint32_t fill = word < 70 ? Undefined : word < 105 ? static_cast<uint32_t>(-12345) : 0;
        EXPECT_EQ(header_bits(header, word) != fill, words.contains(word)) << "word " << word;
    }
    for (int at = 440; at < 632; at += 8) {
        const bool second_half = at == 456; // of KEVNM, 16 characters
        const std::string fill = second_half ? "        " : "-12345  ";
        EXPECT_EQ(header_text(header, at, 8) != fill, texts.contains(at)) << "text at " << at;
    }
}
