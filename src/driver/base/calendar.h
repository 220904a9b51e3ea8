// carried: calendar. Leap years; month and day from the day of the year.
#pragma once

#include <cstdint>

/// 1 for a leap year, else 0. Mode 1: the Gregorian rule; any other mode: every fourth year.
uint8_t isleap(uint16_t year, uint8_t mode);

/// Converts a day of the year, counted from 1, into month and day of the month; returns the latter. `leap` is
/// not 0 in a leap year. Days after 31 December are in months 13 and 14; month 14 does not end.
uint16_t Doy2MD(uint16_t day_of_year, uint8_t leap, uint16_t* month, uint16_t* day);
