// The station keys of the INI file, taken into the unit's record.
#include "driver/base/number.h"
#include "model/ini.h"
#include "model/record/records.h"
#include "model/unit.h"

static const INI_KEY IniKeyUnit[] = {
    "DASType",     "Altitude",   "Latitude",   "Longitude",  "Network", "NetSEED", "Station",
    "Orientation", "StatDASCnt", "StatChnCnt", "CosGeology", "CosNet",  "CosStn",  "",
};
enum UNIT_KEY {
    DAS_TYPE,
    ALTITUDE,
    LATITUDE,
    LONGITUDE,
    NETWORK,
    NET_SEED,
    STATION,
    ORIENTATION,
    STAT_DAS_CNT,
    STAT_CHN_CNT,
    COS_GEOLOGY,
    COS_NET,
    COS_STN,
};
static_assert(sizeof IniKeyUnit / sizeof IniKeyUnit[0] == COS_STN + 2);

/// kept: first-number-wins. Positions and counts keep their first value that is not 0; texts and the station
/// type take the last one told.
template <class Number>
static void set_once(Number& field, Number value)
{
    if (field == 0) field = value;
}

static uint16_t to_uint16(std::string_view value)
{
    return static_cast<uint16_t>(to_int32(value));
}

static void apply(UNIT_T& unit, int key, std::string_view value)
{
    switch (key) {
    case ALTITUDE: set_once(unit.position.alt, to_double(value)); break;
    case LATITUDE: set_once(unit.position.lat, to_double(value)); break;
    case LONGITUDE: set_once(unit.position.lon, to_double(value)); break;
    case STATION: unit.stn_name.put_right(value); break;
    case ORIENTATION: set_once(unit.orient, to_uint16(value)); break;
    case STAT_DAS_CNT: set_once(unit.das_cnt, to_uint16(value)); break;
    case STAT_CHN_CNT: set_once(unit.chn_cnt, to_uint16(value)); break;
    case COS_GEOLOGY: unit.geol.put(value); break;
    case COS_STN: unit.type = to_uint16(value); break;
    default: break; // known, and nothing is kept of it
    }
}

void Unit_ini(UNIT_T& unit)
{
    const INI_SECTION* section = ini_section(unit.unit_id, unit.ini_first);
    if (!section) return;
    unit.ini_first = section->first;
    for (const std::string_view line : section->lines) {
        const int key = ini_key(line, IniKeyUnit, 0);
        const auto value = ini_value(line);
        if (key >= 0 && value) apply(unit, key, *value);
    }
    unit.ini_last = section->last;
}
