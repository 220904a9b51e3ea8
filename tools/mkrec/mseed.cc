#include "mkrec/mseed.h"

#include "mkrec/event_packets.h"

#include <cstdio>
#include <cstring>

namespace mkrec {

namespace {

constexpr int Blockette_at = 48, Data_at = 64;
static_assert(Data_at + Steim_len == Record_len);

uint32_t encoding_of(SampleFormat format)
{
    switch (format) {
    case SampleFormat::int16: return 1;
    case SampleFormat::int32: return 3;
    case SampleFormat::steim1: return 10;
    case SampleFormat::steim2: break;
    }
    return 11;
}

struct PieceWriter {
    uint8_t* at;
    void text(const char* s) { at = static_cast<uint8_t*>(memcpy(at, s, strlen(s))) + strlen(s); }
    void number(uint32_t v, int bytes)
    {
        for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) *at++ = static_cast<uint8_t>(v >> shift);
    }
};

void put_start(PieceWriter& w, int64_t ms, int micros)
{
    const RecorderClock clock = clock_at(ms);
    w.number(static_cast<uint32_t>(clock.year), 2);
    w.number(static_cast<uint32_t>(clock.day), 2);
    w.number(static_cast<uint32_t>(clock.hour), 1);
    w.number(static_cast<uint32_t>(clock.minute), 1);
    w.number(static_cast<uint32_t>(clock.second), 1);
    w.number(0, 1);
    w.number(static_cast<uint32_t>(clock.ms * 10 + micros / 100), 2); // ten-thousandths of a second
}

void put_blockette_1000(PieceWriter& w, SampleFormat format)
{
    w.number(1000, 2);
    w.number(0, 2); // no other blockette
    w.number(encoding_of(format), 1);
    w.number(1, 1);  // big-endian
    w.number(10, 1); // 2^10 bytes
    w.number(0, 1);
}

} // namespace

void write_record(uint8_t* record, const Survey& survey, const LinePlace& place, const SampleBlock& block,
                  int64_t number)
{
    char head[24];
    snprintf(head, sizeof head, "%06dD %-5.5s%02d%s", static_cast<int>((number - 1) % 999999) + 1,
             station_name(place.unit).c_str(), (place.stream + 1) % 100,
             seed_code(survey, place.stream, place.channel).c_str());
    memset(record, 0, Data_at);
    PieceWriter w{record};
    w.text(head);
    w.text("VX");
    put_start(w, sample_ms(survey, place, block.first), micros_of(place.unit));
    w.number(static_cast<uint32_t>(block.samples), 2);
    w.number(static_cast<uint32_t>(rate_of(survey, place.stream)), 2);
    w.number(1, 2); // the rate factor is the rate
    w.number(0, 3); // no activity, clock or quality flags
    w.number(1, 1); // blockettes
    w.number(0, 4); // time correction
    w.number(Data_at, 2);
    w.number(Blockette_at, 2);
    put_blockette_1000(w, format_of(survey, place.unit, place.stream));
    memcpy(record + Data_at, block.payload, sizeof block.payload);
}

static bool write_part(const Survey& survey, const LinePlace& place, int64_t& number, RecordingFile& out)
{
    ChannelRun run(survey, place);
    SampleBlock block;
    uint8_t record[Record_len];
    while (!out.failed() && run.next(block)) {
        write_record(record, survey, place, block, ++number);
        out.write(record, sizeof record);
    }
    return !run.not_encodable();
}

bool write_mseed(const Survey& survey, RecordingFile& out)
{
    const Options& o = survey.options;
    int64_t number = 0;
    for (int u = 0; u < o.units; ++u)
        for (int s = 0; s < o.streams; ++s)
            for (int c = 0; c < o.channels; ++c)
                for (int64_t e = 0; e < o.events && !out.failed(); ++e)
                    if (!write_part(survey, {u, s, e, c}, number, out)) return false;
    return true;
}

} // namespace mkrec
