#include "model/trace_name.h"

#include "driver/base/settings.h"

/// The levels come from the digits of a time: YYYY_DDD, then HH, HH_MM or HH_MM_SS.
std::string trace_directory(const TIMESTR& first, uint16_t levels)
{
    const char* const t = first.s;
    const char *const day = t + AT::Day, *const hour = t + AT::Hour, *const minute = t + AT::Minute;
    Text<31> dir;
    switch (levels) {
    case 1: dir.print("%4.4s_%3.3s%s", t, day, Dir_sep); break;
    case 2: dir.print("%4.4s_%3.3s%s%2.2s%s", t, day, Dir_sep, hour, Dir_sep); break;
    case 3: dir.print("%4.4s_%3.3s%s%2.2s_%2.2s%s", t, day, Dir_sep, hour, minute, Dir_sep); break;
    case 4:
        dir.print("%4.4s_%3.3s%s%2.2s_%2.2s_%2.2s%s", t, day, Dir_sep, hour, minute, t + AT::Second, Dir_sep);
        break;
    default: break;
    }
    return dir.s;
}

/// The five characters that name the station or the unit. Blanks become underscores.
static Text<5> station_part(const TraceName& name, uint16_t naming)
{
    const bool by_station = naming == 2 || (naming == 0 && name.station.view() != "     ");
    Text<5> part;
    if (!by_station) {
        part.print("%05hX", name.unit_id);
        return part;
    }
    part.put_right(name.station.view());
    for (char& c : part.s)
        if (c == ' ') c = '_';
    return part;
}

std::string trace_base(const TraceName& name, uint16_t naming)
{
    const char* const t = name.first.s;
    const Text<5> station = station_part(name, naming);
    Text<16> time;
    time.print("%4.4s%3.3s%2.2s%2.2s%2.2s%3.3s", t, t + AT::Day, t + AT::Hour, t + AT::Minute, t + AT::Second,
               t + AT::Milli);
    Text<63> base;
    base.print("%s_%s_%01u_%01X", time.s, station.s, name.stream + 1U, name.channel + 1U);
    return base.s;
}
