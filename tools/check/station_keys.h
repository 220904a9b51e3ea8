// The keys of the station file and what their values are, for those who check a file. The converter's own
// tables are in model/unit_ini and model/chn_ini; a test holds these against them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace check {

enum class ValueKind : uint8_t { unused, whole, real, text };

struct StationKey {
    std::string_view name;
    ValueKind kind;
    size_t most = 0; ///< characters of a text that are kept
};

inline constexpr StationKey Unit_keys[] = {
    {"DASType", ValueKind::unused},   {"Altitude", ValueKind::real},       {"Latitude", ValueKind::real},
    {"Longitude", ValueKind::real},   {"Network", ValueKind::unused},      {"NetSEED", ValueKind::unused},
    {"Station", ValueKind::text, 5},  {"Orientation", ValueKind::whole},   {"StatDASCnt", ValueKind::whole},
    {"StatChnCnt", ValueKind::whole}, {"CosGeology", ValueKind::text, 40}, {"CosNet", ValueKind::unused},
    {"CosStn", ValueKind::whole},
};

/// As they follow "Ch" and the channel's number.
inline constexpr StationKey Channel_keys[] = {
    {"FSA", ValueKind::real},          {"Res", ValueKind::whole},        {"Band", ValueKind::text, 1},
    {"Type", ValueKind::text, 1},      {"Axis", ValueKind::text, 1},     {"SnsMake", ValueKind::text, 30},
    {"SnsModel", ValueKind::text, 14}, {"SnsSN", ValueKind::whole},      {"SnsFSA", ValueKind::real},
    {"SnsVPU", ValueKind::real},       {"SnsFreq", ValueKind::real},     {"SnsDamp", ValueKind::real},
    {"Lat", ValueKind::unused},        {"Lon", ValueKind::unused},       {"Alt", ValueKind::unused},
    {"Azm", ValueKind::whole},         {"Depth", ValueKind::real},       {"Dip", ValueKind::whole},
    {"NZNP", ValueKind::unused},       {"Zero", ValueKind::unused},      {"Pole", ValueKind::unused},
    {"Norm", ValueKind::unused},       {"SeisComp", ValueKind::text, 4}, {"StnChn", ValueKind::whole},
};

} // namespace check
