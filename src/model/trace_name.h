// How the path of a trace is made up, below the output path. Pure: no file is looked at, no setting is read.
#pragma once

#include "driver/base/text.h"
#include "packet/timestr.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// What the name of a trace says.
struct TraceName {
    TIMESTR first;   ///< time of the channel's first packet
    Text<5> station; ///< station name; five blanks are none
    uint16_t unit_id;
    uint16_t stream;  ///< counted from 0
    uint16_t channel; ///< counted from 0
};

/// The directories of a trace, ending in "/"; empty for 0. `levels` is as Path_option.
std::string trace_directory(const TIMESTR& first, uint16_t levels);

/// The file name without its extension. `naming` is as Name_option.
std::string trace_base(const TraceName& name, uint16_t naming);

/// Where the base name has a digit of the stream. When a name is taken, a letter replaces it.
inline constexpr size_t Trace_letter_place = 24;
