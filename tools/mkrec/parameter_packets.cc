#include "mkrec/parameter_packets.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace mkrec {

namespace {

// Places of what is written here, by packet. Repeated entries: within the entry.
namespace SC {
constexpr Span Experiment_number{16, 2}, Experiment_name{18, 24}, Experiment_comment{42, 40};
constexpr Span Station_number{82, 4}, Station_name{86, 24}, Station_comment{110, 40};
constexpr Span Model{150, 12}, Serial{162, 12}, Start{174, 14}, Clock_type{188, 4}, Clock_serial{192, 10};
constexpr int Entries = 202, Entry_len = 146, Entry_cnt = 5;
constexpr Span Number{0, 2}, Name{2, 10}, Azimuth{12, 10}, Inclination{22, 10}, X{32, 10}, Y{42, 10},
    Z{52, 10};
constexpr Span Unit_xy{62, 4}, Unit_z{66, 4}, Preamp{70, 4}, Sensor{74, 12}, Sensor_serial{86, 12};
constexpr Span Comment{98, 40}, Bit_volts{138, 8};
} // namespace SC

namespace DS {
constexpr int Entries = 16, Entry_len = 230, Entry_cnt = 4;
constexpr Span Number{0, 2}, Name{2, 24}, Channels{26, 16}, Rate{42, 4}, Format{46, 2}, Trigger{64, 4};
constexpr Span Con_length{68, 8};
constexpr Span Evt_channels{68, 16}, Evt_least{84, 2}, Evt_window{86, 8}, Evt_pre{94, 8}, Evt_post{102, 8};
constexpr Span Evt_length{110, 8}, Evt_sta{126, 8}, Evt_lta{134, 8}, Evt_mean{142, 8}, Evt_ratio{150, 8};
constexpr Span Evt_detrigger{158, 8}, Evt_hold{166, 4};
} // namespace DS

namespace OM {
constexpr Span Power{16, 2}, Mode{18, 2}, Devices{20, 4}, Dump{24, 2}, Threshold{26, 2}, Powerdown{28, 4};
constexpr Span Switches{32, 4};
constexpr int Entries = 48, Entry_len = 64;
constexpr Span Number{0, 2}, Start{2, 12}, Duration{14, 6}, Interval{20, 6}, Count{26, 2};
} // namespace OM

namespace AD {
constexpr Span Channels{18, 16}, Interval{34, 8}, Format{42, 2}, Length{44, 8};
} // namespace AD

namespace CD {
constexpr Span Start{16, 14}, Interval{30, 8}, Count{38, 4}, Length{42, 8}, Step{50, 4};
constexpr Span Step_period{54, 8}, Step_size{62, 8}, Amplitude{70, 8}, Output{78, 4};
} // namespace CD

namespace DR {
constexpr Span Next{20, 4}, Entry_total{26, 2}, Last_number{28, 4};
constexpr int Entries = 32, Entry_len = 72;
constexpr Span Number{0, 4}, Status{4, 1}, Format{5, 1}, Length{6, 2}, Unit{8, 2}, Event{10, 2};
constexpr Span Header_flag{12, 1}, Trailer_flag{13, 1}, Stream{14, 2}, Name{16, 8}, Trigger{24, 4};
constexpr Row Times{28, 4, 5}; // trigger, first sample, detrigger, last sample, entry
constexpr Row Millis{48, 2, 5};
constexpr Span Data_format{58, 2}, Location{60, 4}, Blocks{64, 4};
static_assert(Entries + static_cast<int>(Directory_most) * Entry_len <= Packet_size);
} // namespace DR

constexpr Span whole(int from)
{
    return {from, Packet_size - from};
}

/// A field of a repeated entry.
constexpr Span within(Span field, int entries, int len, int i)
{
    return {entries + i * len + field.at, field.len};
}

/// Year to second, as the settings give times.
std::string settings_time(int64_t ms, int len)
{
    char digits[Time_len + 1];
    time_digits(clock_at(ms), digits);
    return std::string(digits, static_cast<size_t>(len));
}

/// Seven bits of years since 1984 and 25 bits of seconds in that year.
uint32_t packed_time(const CLOCK& c)
{
    const uint32_t seconds =
        static_cast<uint32_t>((((c.day - 1) * 24 + c.hour) * 60 + c.minute) * 60 + c.second);
    return static_cast<uint32_t>(c.year - 1984) << 25 | seconds;
}

/// The channels of a stream, each as a character at its own place.
std::string channel_list(const SURVEY& survey, int stream)
{
    std::string list(Bank_len, ' ');
    for (int c = 0; c < survey.options.channels; ++c) {
        const int number = channel_number(survey, stream, c);
        if (number < Bank_len) list[static_cast<size_t>(number)] = "123456789ABCDEFG"[number];
    }
    return list;
}

const char* format_text(FORMAT format)
{
    switch (format) {
    case FORMAT::int16: return "16";
    case FORMAT::int32: return "32";
    case FORMAT::steim1: return "CO";
    case FORMAT::steim2: break;
    }
    return "C2";
}

} // namespace

void PARAMETER_PAGES::start(PAGE& page, const char* type, int64_t ms, int byte_cnt, char fill)
{
    start_page(page, {type, unit_id(unit_), clock_at(ms), sequence_, byte_cnt}, fill);
    sequence_ = (sequence_ + 1) % 10000;
}

void PARAMETER_PAGES::health(PAGE& page, std::string_view text, int64_t ms)
{
    start(page, "SH", ms, SH::Text + static_cast<int>(text.size()), 0);
    put_text(page, whole(SH::Text), text);
}

void PARAMETER_PAGES::stations(PAGE& page, int number)
{
    const int first = number * SC::Entry_cnt;
    const int count = std::min(inputs(survey_) - first, SC::Entry_cnt);
    start(page, "SC", survey_start_ms(), SC::Entries + count * SC::Entry_len, ' ');
    put_text(page, SC::Experiment_number, "07");
    put_text(page, SC::Experiment_name, "Valley site response");
    put_text(page, SC::Experiment_comment, "synthetic ground motion over noise");
    put_text(page, SC::Station_number, std::to_string(unit_ % 9999 + 1));
    put_text(page, SC::Station_name, station_name(unit_));
    put_text(page, SC::Station_comment, "concrete pier, free field");
    put_text(page, SC::Model, "VX 900");
    char text[16];
    snprintf(text, sizeof text, "%04X", unsigned{unit_id(unit_)});
    put_text(page, SC::Serial, text);
    put_text(page, SC::Start, settings_time(survey_start_ms(), 13));
    put_text(page, SC::Clock_type, "GPS");
    put_text(page, SC::Clock_serial, std::to_string(36600 + unit_));
    for (int i = 0; i < count; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, within(field, SC::Entries, SC::Entry_len, i), value);
        };
        static constexpr const char *Names[] = {"vertical", "north", "east"}, *Azimuths[] = {"0", "0", "90"};
        const int stream = (first + i) / survey_.options.channels;
        const int axis = (first + i) % survey_.options.channels % 3;
        put(SC::Number, std::to_string(first + i + 1));
        put(SC::Name, Names[axis]);
        put(SC::Azimuth, Azimuths[axis]);
        put(SC::Inclination, axis ? "0" : "-90");
        put(SC::X, "0.0");
        put(SC::Y, "0.0");
        put(SC::Z, "-1.5");
        put(SC::Unit_xy, "M");
        put(SC::Unit_z, "M");
        put(SC::Preamp, "1");
        put(SC::Sensor, stream % 2 ? "BX-10/3" : "AX-21/3");
        put(SC::Sensor_serial, std::to_string(4700 + unit_));
        put(SC::Comment, "levelled and oriented");
        put(SC::Bit_volts, bit_weight(survey_, unit_, stream));
    }
}

void PARAMETER_PAGES::streams(PAGE& page, int number)
{
    const int first = number * DS::Entry_cnt;
    const int count = std::min(survey_.options.streams - first, DS::Entry_cnt);
    start(page, "DS", survey_start_ms(), DS::Entries + count * DS::Entry_len, ' ');
    for (int i = 0; i < count; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, within(field, DS::Entries, DS::Entry_len, i), value);
        };
        const int stream = first + i;
        put(DS::Number, std::to_string(stream + 1)); // on the left: a blank in front means no entry
        put(DS::Name, stream_name(stream));
        put(DS::Channels, channel_list(survey_, stream));
        put(DS::Rate, std::to_string(rate_of(survey_, stream)));
        put(DS::Format, format_text(format_of(survey_, unit_, stream)));
        if (survey_.options.motion != MOTION::quake) {
            put(DS::Trigger, "CON");
            put(DS::Con_length, "3600");
            continue;
        }
        put(DS::Trigger, "EVT");
        put(DS::Evt_channels, channel_list(survey_, stream));
        put(DS::Evt_least, " 2");
        put(DS::Evt_window, "2.0");
        put(DS::Evt_pre, "10.0");
        put(DS::Evt_post, "30.0");
        put(DS::Evt_length, std::to_string(survey_.options.seconds));
        put(DS::Evt_sta, "0.5");
        put(DS::Evt_lta, "30.0");
        put(DS::Evt_mean, "20.0");
        put(DS::Evt_ratio, "4.0");
        put(DS::Evt_detrigger, "1.5");
        put(DS::Evt_hold, "ON");
    }
}

void PARAMETER_PAGES::operation(PAGE& page)
{
    const int wakes = 2;
    start(page, "OM", survey_start_ms(), OM::Entries + wakes * OM::Entry_len, ' ');
    put_text(page, OM::Power, "AC");
    put_text(page, OM::Mode, "SC");
    put_text(page, OM::Devices, "12 D");
    put_text(page, OM::Dump, "YN");
    put_text(page, OM::Threshold, "66");
    put_text(page, OM::Powerdown, "60");
    put_text(page, OM::Switches, "NYOT");
    for (int i = 0; i < wakes; ++i) {
        const auto put = [&](Span field, std::string_view value) {
            put_text(page, within(field, OM::Entries, OM::Entry_len, i), value);
        };
        put(OM::Number, i ? "2" : "1");
        put(OM::Start, settings_time(survey_start_ms() + i * 43200000, 11));
        put(OM::Duration, "000100");
        put(OM::Interval, "010000");
        put(OM::Count, "24");
    }
}

void PARAMETER_PAGES::auxiliary(PAGE& page)
{
    start(page, "AD", survey_start_ms(), AD::Length.at + AD::Length.len, ' ');
    put_text(page, AD::Channels, "123");
    put_text(page, AD::Interval, "60");
    put_text(page, AD::Format, "16");
    put_text(page, AD::Length, "3600");
}

void PARAMETER_PAGES::calibration(PAGE& page)
{
    start(page, "CD", survey_start_ms(), CD::Output.at + CD::Output.len, ' ');
    put_text(page, CD::Start, settings_time(survey_start_ms(), 13));
    put_text(page, CD::Interval, "86400");
    put_text(page, CD::Count, "1");
    put_text(page, CD::Length, "60");
    put_text(page, CD::Step, "ON");
    put_text(page, CD::Step_period, "10.0");
    put_text(page, CD::Step_size, "2.0");
    put_text(page, CD::Amplitude, "0.5");
    put_text(page, CD::Output, "1");
}

void PARAMETER_PAGES::filter(PAGE& page)
{
    static constexpr std::string_view Text = "FIR 1: 29 taps, linear phase, decimates by 5";
    start(page, "FD", survey_start_ms(), SH::Text + static_cast<int>(Text.size()), ' ');
    put_text(page, whole(SH::Text), Text);
}

void PARAMETER_PAGES::network(PAGE& page, const char* type, const PLACE& event, const EVENT_TIMES& times)
{
    write_network_page(page, survey_, event, times, type, sequence_);
    sequence_ = (sequence_ + 1) % 10000;
}

void PARAMETER_PAGES::directory(PAGE& page, const std::vector<DIRECTORY_ENTRY>& entries, uint32_t next_free,
                                int64_t ms)
{
    const int count = static_cast<int>(entries.size());
    start(page, "DR", ms, DR::Entries + count * DR::Entry_len, 0);
    put_binary(page, DR::Next, next_free);
    put_binary(page, DR::Entry_total, static_cast<uint32_t>(count));
    put_binary(page, DR::Last_number, static_cast<uint32_t>(count));
    for (int i = 0; i < count; ++i) {
        const DIRECTORY_ENTRY& entry = entries[static_cast<size_t>(i)];
        const auto at = [i](Span field) { return within(field, DR::Entries, DR::Entry_len, i); };
        const bool closed = survey_.options.trailers;
        put_binary(page, at(DR::Number), static_cast<uint32_t>(i + 1));
        put_binary(page, at(DR::Status), 1);
        put_binary(page, at(DR::Format), 1);
        put_binary(page, at(DR::Length), DR::Entry_len);
        put_binary(page, at(DR::Unit), unit_id(unit_));
        put_binary(page, at(DR::Event),
                   static_cast<uint32_t>(event_number(survey_, entry.event.stream, entry.event.event)));
        put_binary(page, at(DR::Header_flag), 1);
        put_binary(page, at(DR::Trailer_flag), closed);
        put_binary(page, at(DR::Stream), static_cast<uint32_t>(entry.event.stream));
        put_text(page, at(DR::Name), "        ");
        put_text(page, at(DR::Name), stream_name(entry.event.stream));
        put_text(page, at(DR::Trigger), survey_.options.motion == MOTION::quake ? "EVT " : "CON ");
        const EVENT_TIMES& t = entry.times;
        const int64_t moments[] = {t.trigger, t.first, t.detrigger, t.last, t.last};
        for (int k = 0; k < DR::Times.count; ++k) {
            const CLOCK clock = clock_at(moments[k]);
            put_binary(page, at(DR::Times[k]), packed_time(clock));
            put_binary(page, at(DR::Millis[k]), static_cast<uint32_t>(clock.ms));
        }
        put_binary(page, at(DR::Data_format),
                   static_cast<uint32_t>(format_of(survey_, unit_, entry.event.stream)));
        put_binary(page, at(DR::Location), entry.start);
        put_binary(page, at(DR::Blocks), entry.blocks);
    }
}

} // namespace mkrec
