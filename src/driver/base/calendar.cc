#include "driver/base/calendar.h"

namespace {

/// Days before each month, in a common and in a leap year. Days after 31 December are in months 13 and 14.
const uint16_t Months_doy[2][15] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365, 396, 424},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366, 397, 425},
};

} // namespace

uint8_t isleap(uint16_t year, uint8_t mode)
{
    if (year % 4 != 0) return 0;
    return mode != 1 || year % 100 != 0 || year % 400 == 0;
}

uint16_t Doy2MD(uint16_t day_of_year, uint8_t leap, uint16_t* month, uint16_t* day)
{
    const uint16_t* row = Months_doy[leap ? 1 : 0];
    uint16_t m = 1;
    while (m < 14 && day_of_year > row[m]) ++m;
    *month = m;
    *day = static_cast<uint16_t>(day_of_year - row[m - 1]);
    return *day;
}
