// The channel keys of the INI file, and the constants of known sensors, taken into the channel's record.
#include "driver/base/ascii.h"
#include "driver/base/number.h"
#include "model/channel.h"
#include "model/ini.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"

#include <map>
#include <utility>

static const INI_KEY IniKeyChn[] = {
    "ChnFSA",   "ChnRes",      "ChnBand",   "ChnType",    "ChnAxis",    "ChnSnsMake", "ChnSnsModel",
    "ChnSnsSN", "ChnSnsFSA",   "ChnSnsVPU", "ChnSnsFreq", "ChnSnsDamp", "ChnLat",     "ChnLon",
    "ChnAlt",   "ChnAzm",      "ChnDepth",  "ChnDip",     "ChnNZNP",    "ChnZero",    "ChnPole",
    "ChnNorm",  "ChnSeisComp", "ChnStnChn", "",
};
enum CHN_KEY {
    FULL_SCALE,
    RES,
    BAND,
    TYPE,
    AXIS,
    SNS_MAKE,
    SNS_MODEL,
    SNS_SN,
    SNS_FSA,
    SNS_VPU,
    SNS_FREQ,
    SNS_DAMP,
    LAT,
    LON,
    ALT,
    AZM,
    DEPTH,
    DIP,
    NZNP,
    ZERO,
    POLE,
    NORM,
    SEIS_COMP,
    STN_CHN,
};
static_assert(sizeof IniKeyChn / sizeof IniKeyChn[0] == STN_CHN + 2);

/// The channel a line is about.
struct LINE_HEAD {
    uint16_t number;      ///< counted from 1; may be anything
    std::string_view key; ///< what follows the number
};

/// Takes the head "Ch1", "Ch01" or "ChA" off a line. Number 0, which no channel has, when there is none.
static LINE_HEAD line_head(std::string_view line)
{
    if (line.size() < 3 || to_upper(line[0]) != 'C' || to_upper(line[1]) != 'H') return {0, {}};
    const auto letter = static_cast<unsigned char>(line[2]);
    if (letter > 0x7F) return {0, {}};

    // kept: channel-letter. Any character counts by its distance from "0" or from "7", so ":" is 3 and "a"
    // is 42.
    auto number = static_cast<uint16_t>(letter - '0');
    if (number > 9) return {static_cast<uint16_t>(number - 7), line.substr(3)};
    if (line.size() < 4 || !is_digit(line[3])) return {number, line.substr(3)};
    return {static_cast<uint16_t>(number * 10 + (line[3] - '0')), line.substr(4)};
}

/// The first value that is not 0 stays, be it told by a line or by the catalogue.
template <class Number>
static void set_once(Number& field, Number value)
{
    if (field == 0) field = value;
}

/// Looks a newly told model up, unless the channel has a row of its own already.
static void take_sensor(Settings& set)
{
    if (set.sns_ndx != 0 && set.sns_ndx != Sensor_unknown) return;
    set.sns_ndx = Sensor_find(set.make.s, set.model.s);
    const SENSOR& sensor = Sensor[set.sns_ndx];
    set_once(set.freq, sensor.freq);
    set_once(set.damp, sensor.damp);
    set_once(set.vpu, sensor.vpu);
    set_once(set.sns_fsa, sensor.fsa);
}

static void apply(Settings& set, int key, std::string_view value)
{
    const auto integer = [&] { return to_int32(value); };
    switch (key) {
    case FULL_SCALE: set.fsa = to_double(value); break;
    case RES: set.bits = static_cast<uint8_t>(integer()); break;
    case BAND: set.band = value.front(); break;
    case TYPE: set.set_type(to_upper(value.front())); break;
    case AXIS: set.axis = value.front(); break;
    case SNS_MAKE:
        if (set.make.empty()) set.make.put(value);
        break;
    case SNS_MODEL:
        set.model.put(value);
        take_sensor(set);
        break;
    case SNS_SN: set.sn = static_cast<uint32_t>(integer()); break;
    case SNS_FSA: set_once(set.sns_fsa, to_double(value)); break;
    case SNS_VPU: set_once(set.vpu, to_double(value)); break;
    case SNS_FREQ: set_once(set.freq, to_double(value)); break;
    case SNS_DAMP: set_once(set.damp, to_double(value)); break;
    case AZM: set.azimuth = static_cast<uint16_t>(integer()); break;
    case DEPTH: set.depth = to_double(value); break;
    case DIP: set.dip = static_cast<int16_t>(integer()); break;
    case SEIS_COMP: set.SeisComp.put(value); break;
    case STN_CHN: set_once(set.stn_chn, static_cast<uint16_t>(integer())); break;
    default: break; // known, and nothing is kept of it
    }
}

/// What the lines of a section make of a channel.
static Settings settings_by(const INI_SECTION& section, uint16_t channel, Settings set)
{
    for (const std::string_view line : section.lines) {
        const LINE_HEAD head = line_head(line);
        if (head.number != channel + 1) continue;
        const int key = ini_key(head.key, IniKeyChn, 3);
        const auto value = ini_value(line);
        if (key >= 0 && value && !value->empty()) apply(set, key, *value);
    }
    return set;
}

/// By section and channel: a section is walked once for a channel, however many events it has.
static std::map<std::pair<uint32_t, uint16_t>, Settings> Known_settings;

void Chn_ini(CHN_T& chn)
{
    const INI_SECTION* section = ini_section(chn.unit->unit_id, chn.unit->ini_first);
    if (!section) return;
    const auto [known, is_new] = Known_settings.try_emplace({section->serial, chn.id.channel});
    if (is_new) known->second = settings_by(*section, chn.id.channel, chn.set);
    chn.set = known->second;
}
