#include "mkrec/survey.h"

#include "mkrec/steim_encode.h"

#include <algorithm>
#include <cstdio>

namespace mkrec {

namespace {

constexpr int Payload_len = Packet_size - DT::Frames;
constexpr int Event_numbers = 9999;
constexpr int64_t Minute_ms = 60000;

int64_t parts_in_all(const Options& o)
{
    return o.events * o.units * o.streams * o.channels;
}

/// Packets of `most` entries each that `entries` entries take.
int packets_for(int entries, int most)
{
    return (entries + most - 1) / most;
}

/// Number of packets other than data packets.
int64_t frame_packets(const Survey& survey)
{
    const Options& o = survey.options;
    const int64_t per_event = banks(survey) * (o.trailers ? 2 : 1);
    return o.events * o.units * o.streams * per_event +
           int64_t{o.units} * (opening_packets(survey) + closing_packets(survey));
}

bool deal_out_size(Survey& survey, std::string& complaint)
{
    const int64_t parts = parts_in_all(survey.options);
    const int64_t frame = frame_packets(survey);
    const int64_t data = survey.options.size / Packet_size - frame;
    if (data < parts) {
        char text[96];
        snprintf(text, sizeof text, "the size is too small: at least %lld packets are needed",
                 static_cast<long long>(frame + parts));
        complaint = text;
        return false;
    }
    survey.blocks_each = data / parts;
    survey.one_more_until = data % parts;
    return true;
}

/// The longest that any event can get, a pause, and that in whole minutes.
int64_t slot_length_ms(const Survey& survey)
{
    const Options& o = survey.options;
    int64_t longest = o.seconds * 1000;
    if (o.size)
        for (int s = 0; s < o.streams; ++s)
            for (int u = 0; u < o.units; ++u) {
                const int64_t samples = (survey.blocks_each + 1) * most_samples(format_of(survey, u, s));
                longest = std::max(longest, samples * 1000 / rate_of(survey, s));
            }
    return (longest / Minute_ms + 2) * Minute_ms;
}

/// Place of a channel's part in the whole recording, for dealing out packets.
int64_t part_number(const Options& o, const LinePlace& p)
{
    return ((p.event * o.units + p.unit) * o.streams + p.stream) * o.channels + p.channel;
}

} // namespace

bool make_survey(const Options& options, Survey& survey, std::string& complaint)
{
    survey = Survey{.options = options};
    if (options.size && !deal_out_size(survey, complaint)) return false;
    survey.slot_ms = slot_length_ms(survey);
    return true;
}

int opening_packets(const Survey& survey)
{
    if (!survey.options.parameters) return 0;
    return sc_packets(survey) + ds_packets(survey) + 6; // SH OM AD CD FD NH
}

int sc_packets(const Survey& survey)
{
    return packets_for(inputs(survey), SC::Channels.count);
}

int ds_packets(const Survey& survey)
{
    return packets_for(survey.options.streams, DS::Whole_streams);
}

int closing_packets(const Survey& survey)
{
    return survey.options.parameters ? 3 : 0; // NT SH DR
}

int banks(const Survey& survey)
{
    return survey.options.channels > Bank_len ? 2 : 1;
}

uint16_t unit_id(int unit)
{
    return static_cast<uint16_t>(0x9A01 + unit);
}

std::string station_name(int unit)
{
    static constexpr const char* Names[] = {"ALDER", "BIRCH", "CEDAR", "ELDER",
                                            "HAZEL", "LARCH", "MAPLE", "ROWAN"};
    if (unit < 8) return Names[unit];
    char name[8];
    snprintf(name, sizeof name, "%c%04d", 'S' + unit / 10000, unit % 10000);
    return name;
}

std::string stream_name(int stream)
{
    if (stream == 0) return "strong motion";
    if (stream == 1) return "broad band";
    return "stream " + std::to_string(stream + 1);
}

SampleFormat format_of(const Survey& survey, int unit, int stream)
{
    const auto& formats = survey.options.formats;
    return formats[static_cast<size_t>(unit * survey.options.streams + stream) % formats.size()];
}

int rate_of(const Survey& survey, int stream)
{
    const auto& rates = survey.options.rates;
    return rates[static_cast<size_t>(stream) % rates.size()];
}

int inputs(const Survey& survey)
{
    const int channels = survey.options.channels;
    if (channels > Bank_len) return channels;
    return std::min(channels * survey.options.streams, Bank_len / channels * channels);
}

int channel_number(const Survey& survey, int stream, int channel)
{
    return stream * survey.options.channels % inputs(survey) + channel;
}

std::string seed_code(const Survey& survey, int stream, int channel)
{
    static constexpr char Instruments[] = "NHLGPMUIXYC"; // three axes each: enough for 32 channels
    const int rate = rate_of(survey, stream);
    const char band = rate >= 80 ? 'H' : rate >= 10 ? 'B' : 'L';
    return {band, Instruments[(stream + channel / 3) % 11], "ZNE"[channel % 3]};
}

int event_number(const Survey& survey, int stream, int64_t event)
{
    return static_cast<int>((event * survey.options.streams + stream) % Event_numbers) + 1;
}

int64_t survey_start_ms(const Survey& survey)
{
    return survey.options.start_ms;
}

int64_t first_sample_ms(const Survey& survey, const LinePlace& event)
{
    const int late = (event.unit * 130 + event.stream * 40) % 1000;
    return survey_start_ms(survey) + event.event * survey.slot_ms + late;
}

int micros_of(int unit)
{
    return unit % 10 * 100;
}

int64_t trigger_sample(const Survey& survey, const LinePlace& event)
{
    if (survey.options.motion != Motion::quake) return 0;
    const int64_t quake = p_arrival(signal_plan(survey, event));
    const int64_t sure =
        blocks_of(survey, event) * least_samples(format_of(survey, event.unit, event.stream));
    return sure ? std::min(quake, sure - 1) : quake;
}

SignalPlan signal_plan(const Survey& survey, const LinePlace& place)
{
    const Options& o = survey.options;
    const SampleFormat format = format_of(survey, place.unit, place.stream);
    const int rate = rate_of(survey, place.stream);
    uint64_t seed = stirred(o.seed, static_cast<uint64_t>(place.unit));
    seed = stirred(seed, static_cast<uint64_t>(place.stream));
    seed = stirred(seed, static_cast<uint64_t>(place.event));
    return {.motion = o.motion,
            .word_bits = format == SampleFormat::int16 ? 16 : 32,
            .full_bits = format == SampleFormat::int16    ? 16
                         : format == SampleFormat::steim2 ? 29
                                                          : 32,
            .rate = rate,
            .period = o.seconds * rate,
            .distance = place.unit,
            .axis = place.channel % 3,
            .seed = stirred(seed, static_cast<uint64_t>(place.channel))};
}

int64_t samples_of(const Survey& survey, const LinePlace& place)
{
    return survey.options.size ? 0 : survey.options.seconds * rate_of(survey, place.stream);
}

int64_t blocks_of(const Survey& survey, const LinePlace& place)
{
    if (!survey.options.size) return 0;
    return survey.blocks_each + (part_number(survey.options, place) < survey.one_more_until ? 1 : 0);
}

int most_samples(SampleFormat format)
{
    switch (format) {
    case SampleFormat::int16: return Payload_len / 2;
    case SampleFormat::int32: return Payload_len / 4;
    case SampleFormat::steim1: return Steim1_most;
    case SampleFormat::steim2: break;
    }
    return Steim2_most;
}

int least_samples(SampleFormat format)
{
    return format == SampleFormat::steim1 || format == SampleFormat::steim2 ? Steim_words
                                                                            : most_samples(format);
}

} // namespace mkrec
