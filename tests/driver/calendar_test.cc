// Leap years by two rules, and the day of the year taken apart into month and day.
#include "driver/base/calendar.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

struct Date {
    uint16_t month = 0, day = 0;
    bool operator==(const Date&) const = default;
};

void PrintTo(const Date& d, std::ostream* os)
{
    *os << d.month << '/' << d.day;
}

/// Month and day; the day returned must be the day stored.
Date date_of(uint16_t day_of_year, uint8_t leap)
{
    Date d;
    EXPECT_EQ(Doy2MD(day_of_year, leap, &d.month, &d.day), d.day);
    return d;
}

TEST(isleap, mode_1_is_the_gregorian_rule)
{
    EXPECT_EQ(isleap(1900, 1), 0);
    EXPECT_EQ(isleap(2000, 1), 1);
    EXPECT_EQ(isleap(2003, 1), 0);
    EXPECT_EQ(isleap(2004, 1), 1);
    EXPECT_EQ(isleap(2100, 1), 0);
    for (int year = 0; year <= 9999; ++year)
        EXPECT_EQ(isleap(static_cast<uint16_t>(year), 1), std::chrono::year(year).is_leap()) << year;
}

TEST(isleap, any_other_mode_takes_every_fourth_year)
{
    EXPECT_EQ(isleap(1900, 0), 1);
    EXPECT_EQ(isleap(1900, 2), 1);
    EXPECT_EQ(isleap(1900, 255), 1);
    EXPECT_EQ(isleap(2003, 0), 0);
    EXPECT_EQ(isleap(2100, 0), 1);
}

TEST(Doy2MD, names_every_day_of_a_common_and_of_a_leap_year)
{
    using namespace std::chrono;
    for (const int y : {2003, 2004}) {
        const sys_days new_year = year(y) / 1 / 1;
        const int length = year(y).is_leap() ? 366 : 365;
        for (int doy = 1; doy <= length; ++doy) {
            const year_month_day expected(new_year + days(doy - 1));
            const Date d = date_of(static_cast<uint16_t>(doy), year(y).is_leap());
            EXPECT_EQ(d.month, static_cast<unsigned>(expected.month())) << y << " day " << doy;
            EXPECT_EQ(d.day, static_cast<unsigned>(expected.day())) << y << " day " << doy;
        }
    }
    EXPECT_EQ(date_of(60, 1), (Date{2, 29}));
    EXPECT_EQ(date_of(60, 0), (Date{3, 1}));
}

TEST(Doy2MD, days_past_december_fall_into_months_13_and_14)
{
    EXPECT_EQ(date_of(366, 0), (Date{13, 1}));
    EXPECT_EQ(date_of(396, 0), (Date{13, 31}));
    EXPECT_EQ(date_of(397, 0), (Date{14, 1}));
    EXPECT_EQ(date_of(424, 0), (Date{14, 28}));
    EXPECT_EQ(date_of(367, 1), (Date{13, 1}));
    EXPECT_EQ(date_of(398, 1), (Date{14, 1}));
    EXPECT_EQ(date_of(425, 1), (Date{14, 28}));
}

TEST(Doy2MD, days_past_the_last_month_stay_in_month_14)
{
    EXPECT_EQ(date_of(425, 0), (Date{14, 29}));
    EXPECT_EQ(date_of(999, 0), (Date{14, 603}));
    EXPECT_EQ(date_of(426, 1), (Date{14, 29}));
    EXPECT_EQ(date_of(65535, 1), (Date{14, 65138}));
}

TEST(Doy2MD, day_0_is_day_0_of_month_1)
{
    EXPECT_EQ(date_of(0, 0), (Date{1, 0}));
    EXPECT_EQ(date_of(0, 1), (Date{1, 0}));
}

} // namespace
