// carried: calendar. Leap years, day of year to month and day.
#pragma once

#include <cstdint>

/// 1 for a leap year, else 0. Mode 1: the Gregorian rule; any other mode: every fourth year.
uint8_t isleap(uint16_t year, uint8_t mode);

/// Month (1 to 14) and day of a day of the year; `leap` 1 or 0 picks the year's shape. Returns the day.
/// Days past the last table entry (424 or 425) belong to month 14.
uint16_t Doy2MD(uint16_t day_of_year, uint8_t leap, uint16_t* month, uint16_t* day);
