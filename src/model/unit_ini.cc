// Applies the station keys of the INI file to a unit.
#include "driver/base/number.h"
#include "model/ini.h"
#include "model/record/records.h"
#include "model/unit.h"

#include <cstdint>
#include <string_view>

namespace {

uint16_t to_uint16(std::string_view value)
{
    return static_cast<uint16_t>(to_int32(value));
}

struct UnitKey {
    std::string_view name;
    void (*apply)(UNIT_T& unit,
                  std::string_view value); ///< null: the key is known, and its value is not kept
};

// Positions and counts keep their first value that is not 0; texts and the station type take the last one.
constexpr UnitKey IniKeyUnit[] = {
    {"DASType", nullptr},
    {"Altitude", [](UNIT_T& u, std::string_view v) { set_once(u.position.alt, to_double(v)); }},
    {"Latitude", [](UNIT_T& u, std::string_view v) { set_once(u.position.lat, to_double(v)); }},
    {"Longitude", [](UNIT_T& u, std::string_view v) { set_once(u.position.lon, to_double(v)); }},
    {"Network", nullptr},
    {"NetSEED", nullptr},
    {"Station", [](UNIT_T& u, std::string_view v) { u.stn_name.put_right(v); }},
    {"Orientation", [](UNIT_T& u, std::string_view v) { set_once(u.orient, to_uint16(v)); }},
    {"StatDASCnt", [](UNIT_T& u, std::string_view v) { set_once(u.das_cnt, to_uint16(v)); }},
    {"StatChnCnt", [](UNIT_T& u, std::string_view v) { set_once(u.chn_cnt, to_uint16(v)); }},
    {"CosGeology", [](UNIT_T& u, std::string_view v) { u.geol.put(v); }},
    {"CosNet", nullptr},
    {"CosStn", [](UNIT_T& u, std::string_view v) { u.type = to_uint16(v); }},
};

} // namespace

void Unit_ini(UNIT_T& unit)
{
    const IniSection* section = ini_section(unit.unit_id, unit.ini_first);
    if (!section) return;
    unit.ini_first = section->first;
    for (const std::string_view line : section->lines) {
        const UnitKey* key = ini_row(line, IniKeyUnit);
        const auto value = ini_value(line);
        if (key && key->apply && value) key->apply(unit, *value);
    }
    unit.ini_last = section->last;
}
