// Applies the channel keys of the INI file, and the constants of known sensors, to a channel's settings.
#include "driver/base/ascii.h"
#include "driver/base/number.h"
#include "model/channel.h"
#include "model/ini.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"

#include <cstdint>
#include <string_view>

namespace {

/// The channel to which a line applies.
struct LineHead {
    uint16_t number;      ///< counted from 1; any number is possible
    std::string_view key; ///< the text after the number
};

/// Reads the head of a line: "Ch1", "Ch01" or "ChA". Without one the number is 0, which no channel has.
LineHead line_head(std::string_view line)
{
    if (line.size() < 3 || to_upper(line[0]) != 'C' || to_upper(line[1]) != 'H') return {0, {}};
    const auto letter = static_cast<unsigned char>(line[2]);
    if (letter > 0x7F) return {0, {}};

    // kept: channel-letter. The character counts by its distance from "0" or "7": ":" is 3, "a" is 42.
    auto number = static_cast<uint16_t>(letter - '0');
    if (number > 9) return {static_cast<uint16_t>(number - 7), line.substr(3)};
    if (line.size() < 4 || !is_digit(line[3])) return {number, line.substr(3)};
    return {static_cast<uint16_t>(number * 10 + (line[3] - '0')), line.substr(4)};
}

/// Finds the sensor by make and model and takes over its constants, unless a known sensor was found before.
void take_sensor(ChannelSettings& set)
{
    if (set.sns_ndx != 0 && set.sns_ndx != Sensor_unknown) return;
    set.sns_ndx = Sensor_find(set.make.s, set.model.s);
    const SENSOR& sensor = Sensor[set.sns_ndx];
    set_once(set.freq, sensor.freq);
    set_once(set.damp, sensor.damp);
    set_once(set.vpu, sensor.vpu);
    set_once(set.sns_fsa, sensor.fsa);
}

void set_make(ChannelSettings& set, std::string_view value)
{
    if (set.make.empty()) set.make.put(value);
}

void set_model(ChannelSettings& set, std::string_view value)
{
    set.model.put(value);
    take_sensor(set);
}

template <class Number>
Number integer(std::string_view value)
{
    return static_cast<Number>(to_int32(value));
}

struct ChannelKey {
    std::string_view name; ///< as it follows the channel's number
    void (*apply)(ChannelSettings& set,
                  std::string_view value); ///< null: the key is known, and its value is not kept
};

constexpr ChannelKey IniKeyChn[] = {
    {"FSA", [](ChannelSettings& s, std::string_view v) { s.fsa = to_double(v); }},
    {"Res", [](ChannelSettings& s, std::string_view v) { s.bits = integer<uint8_t>(v); }},
    {"Band", [](ChannelSettings& s, std::string_view v) { s.band = v.front(); }},
    {"Type", [](ChannelSettings& s, std::string_view v) { s.set_type(to_upper(v.front())); }},
    {"Axis", [](ChannelSettings& s, std::string_view v) { s.axis = v.front(); }},
    {"SnsMake", set_make},
    {"SnsModel", set_model},
    {"SnsSN", [](ChannelSettings& s, std::string_view v) { s.sn = integer<uint32_t>(v); }},
    {"SnsFSA", [](ChannelSettings& s, std::string_view v) { set_once(s.sns_fsa, to_double(v)); }},
    {"SnsVPU", [](ChannelSettings& s, std::string_view v) { set_once(s.vpu, to_double(v)); }},
    {"SnsFreq", [](ChannelSettings& s, std::string_view v) { set_once(s.freq, to_double(v)); }},
    {"SnsDamp", [](ChannelSettings& s, std::string_view v) { set_once(s.damp, to_double(v)); }},
    {"Lat", nullptr},
    {"Lon", nullptr},
    {"Alt", nullptr},
    {"Azm", [](ChannelSettings& s, std::string_view v) { s.azimuth = integer<uint16_t>(v); }},
    {"Depth", [](ChannelSettings& s, std::string_view v) { s.depth = to_double(v); }},
    {"Dip", [](ChannelSettings& s, std::string_view v) { s.dip = integer<int16_t>(v); }},
    {"NZNP", nullptr},
    {"Zero", nullptr},
    {"Pole", nullptr},
    {"Norm", nullptr},
    {"SeisComp", [](ChannelSettings& s, std::string_view v) { s.SeisComp.put(v); }},
    {"StnChn", [](ChannelSettings& s, std::string_view v) { set_once(s.stn_chn, integer<uint16_t>(v)); }},
};

/// Returns `set` after applying the lines of a section that name the channel.
ChannelSettings settings_by(const IniSection& section, uint16_t channel, ChannelSettings set)
{
    for (const std::string_view line : section.lines) {
        const LineHead head = line_head(line);
        if (head.number != channel + 1) continue;
        const ChannelKey* key = ini_row(head.key, IniKeyChn);
        const auto value = ini_value(line);
        if (key && key->apply && value && !value->empty()) key->apply(set, *value);
    }
    return set;
}

} // namespace

void Chn_ini(CHN_T& chn)
{
    const IniSection* section = ini_section(chn.unit->unit_id, chn.unit->ini_first);
    if (!section) return;
    const auto [known, is_new] = chn.unit->ini_settings.try_emplace(chn.id.channel);
    if (is_new) known->second = settings_by(*section, chn.id.channel, chn.set);
    chn.set = known->second;
}
