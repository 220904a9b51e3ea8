// The channel keys of the INI file, and the constants of known sensors, taken into the channel's record.
#include "driver/number.h"
#include "model/catalogue.h"
#include "model/channel.h"
#include "model/ini.h"
#include "model/records.h"

#include <cctype>
#include <tuple>
#include <unordered_map>
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

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/// The channel a line is about.
struct LINE_HEAD {
    uint16_t number;      ///< counted from 1; may be anything
    std::string_view key; ///< what follows the number
};

/// Takes the head "Ch1", "Ch01" or "ChA" off a line. Number 0, which no channel has, when there is none.
static LINE_HEAD line_head(std::string_view line)
{
    const auto upper = [&](size_t at) { return toupper(static_cast<unsigned char>(line[at])); };
    if (line.size() < 3 || upper(0) != 'C' || upper(1) != 'H') return {0, {}};
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

static void set_type(CHN_T* chn, char letter)
{
    chn->type = static_cast<char>(toupper(static_cast<unsigned char>(letter)));
    chn->type_code = chn->type == 'G' || chn->type == 'N' ? 1 : 3;
}

/// Looks a newly told model up, unless the channel has a row of its own already.
static void take_sensor(CHN_T* chn)
{
    if (chn->sns_ndx != 0 && chn->sns_ndx != Sensor_unknown) return;
    chn->sns_ndx = Sensor_find(chn);
    const SENSOR& sensor = Sensor[chn->sns_ndx];
    set_once(chn->freq, sensor.freq);
    set_once(chn->damp, sensor.damp);
    set_once(chn->vpu, sensor.vpu);
    set_once(chn->sns_fsa, sensor.fsa);
}

static void apply(CHN_T* chn, int key, std::string_view value)
{
    const auto integer = [&] { return to_int32(value); };
    switch (key) {
    case FULL_SCALE: chn->fsa = to_double(value); break;
    case RES: chn->bits = static_cast<uint8_t>(integer()); break;
    case BAND: chn->band = value.front(); break;
    case TYPE: set_type(chn, value.front()); break;
    case AXIS: chn->axis = value.front(); break;
    case SNS_MAKE:
        if (chn->make.empty()) chn->make.put(value);
        break;
    case SNS_MODEL:
        chn->model.put(value);
        take_sensor(chn);
        break;
    case SNS_SN: chn->sn = static_cast<uint32_t>(integer()); break;
    case SNS_FSA: set_once(chn->sns_fsa, to_double(value)); break;
    case SNS_VPU: set_once(chn->vpu, to_double(value)); break;
    case SNS_FREQ: set_once(chn->freq, to_double(value)); break;
    case SNS_DAMP: set_once(chn->damp, to_double(value)); break;
    case AZM: chn->azimuth = static_cast<uint16_t>(integer()); break;
    case DEPTH: chn->depth = to_double(value); break;
    case DIP: chn->dip = static_cast<int16_t>(integer()); break;
    case SEIS_COMP: chn->SeisComp.put(value); break;
    case STN_CHN: set_once(chn->stn_chn, static_cast<uint16_t>(integer())); break;
    default: break; // known, and nothing is kept of it
    }
}

static void take_lines(CHN_T* chn, const INI_SECTION& section)
{
    for (const std::string_view line : section.lines) {
        const LINE_HEAD head = line_head(line);
        if (head.number != chn->channel + 1) continue;
        const int key = ini_key(head.key, IniKeyChn, 3);
        const auto value = ini_value(line);
        if (key >= 0 && value && !value->empty()) apply(chn, key, *value);
    }
}

/// Everything that lines can change.
static auto told_fields(CHN_T& c)
{
    return std::tie(c.fsa, c.bits, c.band, c.type, c.type_code, c.axis, c.make, c.model, c.sns_ndx, c.sn,
                    c.sns_fsa, c.vpu, c.freq, c.damp, c.azimuth, c.depth, c.dip, c.SeisComp, c.stn_chn);
}

template <class... Field>
static std::tuple<Field...> values_of(const std::tuple<Field&...>& fields)
{
    return fields;
}
using TOLD = decltype(values_of(told_fields(std::declval<CHN_T&>())));

/// What a section once made of a channel.
struct OUTCOME {
    TOLD before, after;
};

/// A section so long is not walked for each new channel of the same number, but once.
static constexpr size_t Long_section = 64;

static std::unordered_map<uint64_t, OUTCOME> Known_outcomes; ///< by section and channel number

static void take_long_section(CHN_T* chn, const INI_SECTION& section)
{
    const TOLD before = told_fields(*chn);
    const uint64_t key = uint64_t{section.serial} << 16 | chn->channel;
    if (const auto at = Known_outcomes.find(key); at != Known_outcomes.end() && at->second.before == before) {
        told_fields(*chn) = at->second.after;
        return;
    }
    take_lines(chn, section);
    Known_outcomes[key] = {before, told_fields(*chn)};
}

void Chn_ini(CHN_T* chn)
{
    const INI_SECTION* section = ini_section(chn->unit);
    if (!section) return;
    if (section->lines.size() < Long_section)
        take_lines(chn, *section);
    else
        take_long_section(chn, *section);
}
