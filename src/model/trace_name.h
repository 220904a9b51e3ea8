// Builds the path of a trace below the output path. Pure functions: they look at no file and no setting.
#pragma once

#include "driver/base/text.h"
#include "packet/timestr.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// The parts of a trace's name.
struct TraceName {
    TIMESTR first;   ///< time of the channel's first packet
    Text<5> station; ///< station name; five blanks: none
    uint16_t unit_id;
    uint16_t stream;  ///< counted from 0
    uint16_t channel; ///< counted from 0
};

/// The directories of a trace, ending in "/"; empty for 0 levels. `levels` is as Path_option.
std::string trace_directory(const TIMESTR& first, uint16_t levels);

/// The file name without its extension. `naming` is as Name_option.
std::string trace_base(const TraceName& name, uint16_t naming);

/// The 25th character of the base name (the "_" after a stream number below 10). When a name is taken, a
/// letter replaces this character.
inline constexpr size_t Trace_letter_place = 24;
