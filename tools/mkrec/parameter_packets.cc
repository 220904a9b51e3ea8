#include "mkrec/parameter_packets.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace mkrec {

namespace {

constexpr Span whole(int from)
{
    return {from, Packet_size - from};
}

/// Year to second, the form of times in parameter packets.
std::string settings_time(int64_t ms, int len)
{
    char digits[Time_len + 1];
    time_digits(clock_at(ms), digits);
    return std::string(digits, static_cast<size_t>(len));
}

/// Seven bits of years since 1984 and 25 bits of seconds in that year.
uint32_t packed_time(const RecorderClock& c)
{
    const uint32_t seconds =
        static_cast<uint32_t>((((c.day - 1) * 24 + c.hour) * 60 + c.minute) * 60 + c.second);
    return static_cast<uint32_t>(c.year - 1984) << 25 | seconds;
}

/// The channels of a stream, each as a character at its own place.
std::string channel_list(const Survey& survey, int stream)
{
    std::string list(Bank_len, ' ');
    for (int c = 0; c < survey.options.channels; ++c) {
        const int number = channel_number(survey, stream, c);
        if (number < Bank_len) list[static_cast<size_t>(number)] = "123456789ABCDEFG"[number];
    }
    return list;
}

const char* format_text(SampleFormat format)
{
    switch (format) {
    case SampleFormat::int16: return "16";
    case SampleFormat::int32: return "32";
    case SampleFormat::steim1: return "CO";
    case SampleFormat::steim2: break;
    }
    return "C2";
}

} // namespace

void ParameterPages::start(TextPage& page, const char* type, int64_t ms, int byte_cnt, char fill)
{
    start_page(page, {type, unit_id(unit_), clock_at(ms), sequence_, byte_cnt}, fill);
    sequence_ = (sequence_ + 1) % 10000;
}

void ParameterPages::health(TextPage& page, std::string_view text, int64_t ms)
{
    start(page, "SH", ms, SH::Text + static_cast<int>(text.size()), 0);
    put_text(page, whole(SH::Text), text);
}

void ParameterPages::stations(TextPage& page, int number)
{
    const int first = number * SC::Channels.count;
    const int count = std::min(inputs(survey_) - first, SC::Channels.count);
    start(page, "SC", survey_start_ms(survey_), SC::Channels[count].at, ' ');
    put_text(page, SC::Exp_number, "07");
    put_text(page, SC::Exp_name, "Valley site response");
    put_text(page, SC::Exp_comment, "synthetic ground motion over noise");
    put_text(page, SC::Stn_number, std::to_string(unit_ % 9999 + 1));
    put_text(page, SC::Stn_name, station_name(unit_));
    put_text(page, SC::Stn_comment, "concrete pier, free field");
    put_text(page, SC::Das_model, "VX 900");
    char text[16];
    snprintf(text, sizeof text, "%04X", unsigned{unit_id(unit_)});
    put_text(page, SC::Das_serial, text);
    put_text(page, SC::Exp_start, settings_time(survey_start_ms(survey_), 13));
    put_text(page, SC::Clock_type, "GPS");
    put_text(page, SC::Clock_serial, std::to_string(36600 + unit_));
    for (int i = 0; i < count; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, in_entry(SC::Channels[i].at, field), value);
        };
        static constexpr const char *Names[] = {"vertical", "north", "east"}, *Azimuths[] = {"0", "0", "90"};
        const int stream = (first + i) / survey_.options.channels;
        const int axis = (first + i) % survey_.options.channels % 3;
        put(SC::CHN::Number, std::to_string(first + i + 1));
        put(SC::CHN::Name, Names[axis]);
        put(SC::CHN::Azimuth, Azimuths[axis]);
        put(SC::CHN::Inclination, axis ? "0" : "-90");
        put(SC::CHN::X, "0.0");
        put(SC::CHN::Y, "0.0");
        put(SC::CHN::Z, "-1.5");
        put(SC::CHN::Unit_xy, "M");
        put(SC::CHN::Unit_z, "M");
        put(SC::CHN::Preamp, "1");
        put(SC::CHN::Sensor, stream % 2 ? "BX-10/3" : "AX-21/3");
        put(SC::CHN::Sensor_serial, std::to_string(4700 + unit_));
        put(SC::CHN::Comment, "levelled and oriented");
        put(SC::CHN::Bit_volts, bit_weight(survey_, unit_, stream));
    }
}

void ParameterPages::streams(TextPage& page, int number)
{
    const int first = number * DS::Whole_streams;
    const int count = std::min(survey_.options.streams - first, DS::Whole_streams);
    start(page, "DS", survey_start_ms(survey_), DS::Streams[count].at, ' ');
    for (int i = 0; i < count; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, in_entry(DS::Streams[i].at, field), value);
        };
        const auto put_trg = [&](Span field, std::string_view value) {
            put(in_entry(DS::STRM::Trigger.at, field), value);
        };
        const int stream = first + i;
        put(DS::STRM::Number,
            std::to_string(stream + 1)); // left-justified: an entry that begins with a blank is not shown
        put(DS::STRM::Name, stream_name(stream));
        put(DS::STRM::Channels, channel_list(survey_, stream));
        put(DS::STRM::Rate, std::to_string(rate_of(survey_, stream)));
        put(DS::STRM::Format, format_text(format_of(survey_, unit_, stream)));
        if (survey_.options.motion != Motion::quake) {
            put(DS::STRM::Trg_type, "CON");
            put_trg(DS::CON::Length, "3600");
            continue;
        }
        put(DS::STRM::Trg_type, "EVT");
        put_trg(DS::EVT::Channels, channel_list(survey_, stream));
        put_trg(DS::EVT::Least_chns, " 2");
        put_trg(DS::EVT::Window, "2.0");
        put_trg(DS::EVT::Pretrigger, "10.0");
        put_trg(DS::EVT::Posttrigger, "30.0");
        put_trg(DS::EVT::Length, std::to_string(survey_.options.seconds));
        put_trg(DS::EVT::Sta, "0.5");
        put_trg(DS::EVT::Lta, "30.0");
        put_trg(DS::EVT::Mean_removal, "20.0");
        put_trg(DS::EVT::Ratio, "4.0");
        put_trg(DS::EVT::Detrigger_ratio, "1.5");
        put_trg(DS::EVT::Lta_hold, "ON");
    }
}

void ParameterPages::operation(TextPage& page)
{
    const int wakes = 2;
    start(page, "OM", survey_start_ms(survey_), OM::Wakes[wakes].at, ' ');
    put_text(page, OM::Power, "AC");
    put_text(page, OM::Mode, "SC");
    put_text(page, OM::Disk_1, "1");
    put_text(page, OM::Disk_2, "2");
    put_text(page, OM::Dump_device, "D");
    put_text(page, OM::Dump_on_et, "Y");
    put_text(page, OM::Dump_serial, "N");
    put_text(page, OM::Dump_threshold, "66");
    put_text(page, OM::Powerdown, "60");
    put_text(page, OM::Disk_wrap, "N");
    put_text(page, OM::Disk_directory, "Y");
    put_text(page, OM::Device_power, "O");
    put_text(page, OM::Terminator_power, "T");
    for (int i = 0; i < wakes; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, in_entry(OM::Wakes[i].at, field), value);
        };
        put(OM::WAKE::Number, i ? "2" : "1");
        put(OM::WAKE::Start, settings_time(survey_start_ms(survey_) + i * 43200000, 11));
        put(OM::WAKE::Duration, "000100");
        put(OM::WAKE::Interval, "010000");
        put(OM::WAKE::Count, "24");
    }
}

void ParameterPages::auxiliary(TextPage& page)
{
    start(page, "AD", survey_start_ms(survey_), AD::Length.end(), ' ');
    put_text(page, AD::Channels, "123");
    put_text(page, AD::Interval, "60");
    put_text(page, AD::Format, "16");
    put_text(page, AD::Length, "3600");
}

void ParameterPages::calibration(TextPage& page)
{
    start(page, "CD", survey_start_ms(survey_), CD::Step_output.end(), ' ');
    put_text(page, CD::Start, settings_time(survey_start_ms(survey_), 13));
    put_text(page, CD::Interval, "86400");
    put_text(page, CD::Count, "1");
    put_text(page, CD::Length, "60");
    put_text(page, CD::Step, "ON");
    put_text(page, CD::Step_period, "10.0");
    put_text(page, CD::Step_size, "2.0");
    put_text(page, CD::Step_amplitude, "0.5");
    put_text(page, CD::Step_output, "1");
}

void ParameterPages::filter(TextPage& page)
{
    static constexpr std::string_view Text = "FIR 1: 29 taps, linear phase, decimates by 5";
    start(page, "FD", survey_start_ms(survey_), SH::Text + static_cast<int>(Text.size()), ' ');
    put_text(page, whole(SH::Text), Text);
}

void ParameterPages::network(TextPage& page, const char* type, const LinePlace& event, const MadeTimes& times)
{
    write_network_page(page, survey_, event, times, type, sequence_);
    sequence_ = (sequence_ + 1) % 10000;
}

void ParameterPages::directory(TextPage& page, const std::vector<DirectoryEntry>& entries, uint32_t next_free,
                               int64_t ms)
{
    const int count = static_cast<int>(entries.size());
    start(page, "DR", ms, DR::Entries[count].at, 0);
    put_binary(page, DR::Next_dir, next_free);
    put_binary(page, DR::Entry_cnt, static_cast<uint32_t>(count));
    put_binary(page, DR::Last_entry, static_cast<uint32_t>(count));
    for (int i = 0; i < count; ++i) {
        const DirectoryEntry& entry = entries[static_cast<size_t>(i)];
        const auto at = [i](Span field) { return in_entry(DR::Entries[i].at, field); };
        const bool closed = survey_.options.trailers;
        put_binary(page, at(DR::ENTRY::Number), static_cast<uint32_t>(i + 1));
        put_binary(page, at(DR::ENTRY::Status), 1);
        put_binary(page, at(DR::ENTRY::Format), 1);
        put_binary(page, at(DR::ENTRY::Length), static_cast<uint32_t>(DR::Entries.len));
        put_binary(page, at(DR::ENTRY::Unit_id), unit_id(unit_));
        put_binary(page, at(DR::ENTRY::Event),
                   static_cast<uint32_t>(event_number(survey_, entry.event.stream, entry.event.event)));
        put_binary(page, at(DR::ENTRY::Header_flag), 1);
        put_binary(page, at(DR::ENTRY::Trailer_flag), closed);
        put_binary(page, at(DR::ENTRY::Stream), static_cast<uint32_t>(entry.event.stream));
        put_text(page, at(DR::ENTRY::Strm_name), "        ");
        put_text(page, at(DR::ENTRY::Strm_name), stream_name(entry.event.stream));
        put_text(page, at(DR::ENTRY::Trg_type), survey_.options.motion == Motion::quake ? "EVT " : "CON ");
        const MadeTimes& t = entry.times;
        const int64_t moments[] = {t.trigger, t.first, t.detrigger, t.last, t.last};
        for (int k = 0; k < DR::ENTRY::Times.count; ++k) {
            const RecorderClock clock = clock_at(moments[k]);
            put_binary(page, at(DR::ENTRY::Times[k]), packed_time(clock));
            put_binary(page, at(DR::ENTRY::Millis[k]), static_cast<uint32_t>(clock.ms));
        }
        put_binary(page, at(DR::ENTRY::Data_format),
                   static_cast<uint32_t>(format_of(survey_, unit_, entry.event.stream)));
        put_binary(page, at(DR::ENTRY::Location), entry.start);
        put_binary(page, at(DR::ENTRY::Blocks), entry.blocks);
    }
}

} // namespace mkrec
