// Moments: microseconds since 1970 in UTC, by the true calendar.
#pragma once

#include "packet/packet.h"

#include <cstdint>
#include <string>

namespace check {

using Moment = int64_t;
inline constexpr Moment No_moment = INT64_MIN; ///< unknown, or told by digits that are no time
inline constexpr int64_t Second = 1000000;
inline constexpr int64_t Day = 86400 * Second;

/// The moment of a time string, with `micro` microseconds behind its milliseconds.
Moment moment_of(const TIMESTR& time, int micro = 0);

/// The microseconds that a data packet tells behind its milliseconds; 0 without an extension.
int micros_of(const PACKET& pkt);

/// The moment of a packet.
Moment moment_of(const PACKET& pkt);

/// "2023-01-10T06:00:00.130000Z", and of a day "2023-01-10". Days count from 1970.
std::string iso(Moment moment);
std::string iso_day(int64_t day);
int64_t day_of(Moment moment);

/// The later and the earlier of two moments of which either may be unknown.
Moment later(Moment a, Moment b);
Moment earlier(Moment a, Moment b);

} // namespace check
