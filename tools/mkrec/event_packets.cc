#include "mkrec/event_packets.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace mkrec {

namespace {

/// Electrical data of a digitiser input, as codes of the event header.
struct InputFile {
    const char *nominal, *exact; // bit weight
    char gain, resolution, full_scale, sensor_full_scale;
    const char* volts_per_unit;
    char units;
};

InputFile input_of(const Survey& survey, int unit, int stream)
{
    if (format_of(survey, unit, stream) == SampleFormat::int16)
        return {"76.29 uV", "76.31 uV", '2', '2', '2', '2', "1.25  ", 'G'};
    if (stream % 2) return {"1.589 uV", "1.591 uV", '3', '3', '4', '4', "1500.0", 'V'};
    return {"1.907 uV", "1.905 uV", '1', '3', '4', '4', "2.50  ", 'G'};
}

void put_event(TextPage& page, const Survey& survey, const LinePlace& event)
{
    put_bcd(page, EVT::Number, static_cast<unsigned>(event_number(survey, event.stream, event.event)));
    put_bcd(page, EVT::Stream, static_cast<unsigned>(event.stream));
    put_bcd(page, EVT::Channel, 0);
    put_bcd(page, EVT::Samples, 0);
    put_binary(page, EVT::Flags, 0);
    put_binary(page, EVT::Format, static_cast<uint32_t>(format_of(survey, event.unit, event.stream)));
}

void put_moment(TextPage& page, Span time, Span us, int64_t ms, int micros)
{
    if (ms < 0) return;
    char digits[Time_len + 1];
    time_digits(clock_at(ms), digits);
    put_text(page, time, digits);
    char fraction[16];
    snprintf(fraction, sizeof fraction, "%03d", micros);
    put_text(page, us, fraction);
}

void put_moments(TextPage& page, const MadeTimes& times, int micros)
{
    put_moment(page, EH::T_trg, EH::Us_trg, times.trigger, micros);
    put_moment(page, EH::T_first, EH::Us_first, times.first, micros);
    put_moment(page, EH::T_detrg, EH::Us_detrg, times.detrigger, micros);
    put_moment(page, EH::T_last, EH::Us_last, times.last, micros);
}

void put_stream(TextPage& page, const Survey& survey, int stream)
{
    put_text(page, EH::Strm_name, stream_name(stream));
    put_text(page, EH::Rate, std::to_string(rate_of(survey, stream)));
    put_text(page, EH::Trg_type, survey.options.motion == Motion::quake ? "EVT" : "CON");
}

void put_station(TextPage& page, const Survey& survey, int unit)
{
    const std::string name = station_name(unit);
    put_text(page, EH::Time_src, "2"); // GPS
    put_text(page, EH::Pll_days, "0");
    put_text(page, EH::Stn_name, name);
    put_text(page, EH::Stn_name_5th, name.substr(4));
    char text[48];
    snprintf(text, sizeof text, "%2d", inputs(survey));
    put_text(page, EH::Chn_cnt, text);
    put_text(page, EH::Comment, "made-up ground motion, free field");
    put_text(page, EH::Filters, "FIR 1 2 3");
    // Stations lie along a line to the north-east of the first.
    snprintf(text, sizeof text, "N 46%02d.%03dE012%02d.%03d%+06d", unit % 60, (250 + unit * 37) % 1000,
             unit / 2 % 60, (500 + unit * 53) % 1000, 820 + unit % 50 * 13);
    put_text(page, EH::Position, text);
}

void put_channel(TextPage& page, const Survey& survey, const LinePlace& event, int channel)
{
    const InputFile in = input_of(survey, event.unit, event.stream);
    const int number = channel_number(survey, event.stream, channel);
    const int slot = number % Bank_len;
    put_text(page, EH::Bit_wght[slot], in.nominal);
    put_text(page, EH::True_wght[slot], in.exact);
    put_text(page, EH::Gain[slot], {&in.gain, 1});
    put_text(page, EH::Res[slot], {&in.resolution, 1});
    put_text(page, EH::Fsv[slot], {&in.full_scale, 1});
    put_text(page, EH::Seed[slot], seed_code(survey, event.stream, channel));
    put_text(page, EH::Sns_fsv[slot], {&in.sensor_full_scale, 1});
    put_text(page, EH::Sns_vpu[slot], in.volts_per_unit);
    put_text(page, EH::Units[slot], {&in.units, 1});
    char name[16];
    snprintf(name, sizeof name, "%2d", number + 1);
    put_text(page, EH::Chn_name[slot], name);
}

} // namespace

const char* bit_weight(const Survey& survey, int unit, int stream)
{
    return input_of(survey, unit, stream).nominal;
}

int64_t sample_ms(const Survey& survey, const LinePlace& event, int64_t sample)
{
    return first_sample_ms(survey, event) + sample * (1000 / rate_of(survey, event.stream));
}

void write_event_page(TextPage& page, const Survey& survey, const LinePlace& event, const MadeTimes& times,
                      bool trailer, int bank, int sequence)
{
    const int64_t now = trailer ? times.last : times.first;
    start_page(page, {trailer ? "ET" : "EH", unit_id(event.unit), clock_at(now), sequence}, ' ');
    put_event(page, survey, event);
    put_binary(page, EVT::Flags, bank ? FLAG::Second_bank : 0);
    put_station(page, survey, event.unit);
    put_stream(page, survey, event.stream);
    put_moments(page, times, micros_of(event.unit));
    for (int c = 0; c < survey.options.channels; ++c)
        if (channel_number(survey, event.stream, c) / Bank_len == bank) put_channel(page, survey, event, c);
}

void write_network_page(TextPage& page, const Survey& survey, const LinePlace& event, const MadeTimes& times,
                        const char* type, int sequence)
{
    const int64_t now = times.last < 0 ? times.first : times.last;
    start_page(page, {type, unit_id(event.unit), clock_at(now), sequence}, ' ');
    put_event(page, survey, event);
    put_stream(page, survey, event.stream);
    put_moments(page, times, micros_of(event.unit));
}

void write_data_page(TextPage& page, const Survey& survey, const LinePlace& place, const SampleBlock& block,
                     int sequence)
{
    const RecorderClock time = clock_at(sample_ms(survey, place, block.first));
    start_page(page, {"DT", unit_id(place.unit), time, sequence, DT::Frames + block.used}, 0);
    put_event(page, survey, place);
    put_bcd(page, EVT::Channel, static_cast<unsigned>(channel_number(survey, place.stream, place.channel)));
    put_bcd(page, EVT::Samples, static_cast<unsigned>(block.samples));
    put_binary(page, EVT::Flags, FLAG::Extension);
    put_bcd(page, DT::Micros, static_cast<unsigned>(micros_of(place.unit)) * 10000);
    put_binary(page, DT::Extension_flags, FLAG::Extension);
    memcpy(page.bytes + DT::Frames, block.payload, sizeof block.payload);
}

} // namespace mkrec
