// SPDX-License-Identifier: Apache-2.0
#pragma once

// Days and the dates of the Gregorian and the Julian calendar, for years that std::chrono does not reach.

#include <cstdint>

namespace vorlan {

/// A date of either calendar. The year before 1 is 0.
struct CivilDay {
    std::int64_t year;
    int month;
    int day;
};

/// The whole number that is not above the quotient; the divisor is positive.
constexpr std::int64_t flooredQuotient(std::int64_t number, std::int64_t divisor) {
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

/// What is left by it: 0 or more.
constexpr std::int64_t flooredRemainder(std::int64_t number, std::int64_t divisor) {
    const std::int64_t rest = number % divisor;
    return rest < 0 ? rest + divisor : rest;
}

namespace civil {

// Years are counted from a 1 March here, so that the leap day is a year's last; months since March have 31 and 30 days
// in turns of 153.
constexpr CivilDay fromMarch(std::int64_t year, int dayOfYear) {
    const int month = (5 * dayOfYear + 2) / 153;
    const int day = dayOfYear - (153 * month + 2) / 5 + 1;
    return {year + (month >= 10 ? 1 : 0), month < 10 ? month + 3 : month - 9, day};
}

constexpr int dayOfYearFromMarch(int month, int day) {
    return (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
}

inline constexpr std::int64_t gregorianMarch = -719'468; // 0000-03-01, counted from 1970-01-01
inline constexpr std::int64_t julianMarch = -719'470;    // the same date of the Julian calendar

} // namespace civil

/// The Gregorian date of a day counted from 1970-01-01. Counts in eras of 400 years, of which all have the same days.
constexpr CivilDay civilDay(std::int64_t daysSince1970) {
    constexpr std::int64_t daysOfEra = 146'097;
    const std::int64_t days = daysSince1970 - civil::gregorianMarch;
    const std::int64_t era = flooredQuotient(days, daysOfEra);
    const auto dayOfEra = static_cast<int>(days - era * daysOfEra);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    return civil::fromMarch(era * 400 + yearOfEra, dayOfYear);
}

/// The day of a Gregorian date, counted from 1970-01-01. The month is from 1 to 12; the day may be any.
constexpr std::int64_t dayOfCivil(std::int64_t year, int month, int day) {
    const std::int64_t fromMarch = month > 2 ? year : year - 1;
    const std::int64_t era = flooredQuotient(fromMarch, 400);
    const std::int64_t yearOfEra = fromMarch - era * 400;
    return era * 146'097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 +
           civil::dayOfYearFromMarch(month, day) + civil::gregorianMarch;
}

/// The Julian date of a day counted from 1970-01-01. Counts in turns of 4 years.
constexpr CivilDay julianDay(std::int64_t daysSince1970) {
    constexpr std::int64_t daysOfTurn = 1461;
    const std::int64_t days = daysSince1970 - civil::julianMarch;
    const std::int64_t turn = flooredQuotient(days, daysOfTurn);
    const auto dayOfTurn = static_cast<int>(days - turn * daysOfTurn);
    const int yearOfTurn = (dayOfTurn - dayOfTurn / 1460) / 365;
    return civil::fromMarch(turn * 4 + yearOfTurn, dayOfTurn - 365 * yearOfTurn);
}

/// The day of a Julian date, counted from 1970-01-01. The month is from 1 to 12; the day may be any.
constexpr std::int64_t dayOfJulian(std::int64_t year, int month, int day) {
    const std::int64_t fromMarch = month > 2 ? year : year - 1;
    return fromMarch * 365 + flooredQuotient(fromMarch, 4) + civil::dayOfYearFromMarch(month, day) +
           civil::julianMarch;
}

static_assert(dayOfCivil(1970, 1, 1) == 0 && dayOfCivil(1582, 10, 15) == dayOfJulian(1582, 10, 5));

} // namespace vorlan
