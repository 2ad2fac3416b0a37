// SPDX-License-Identifier: Apache-2.0
// What calendars tell of a date.

#include "tests/platform/dates/CalendarTesting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

using Unit = CalendarComponent;
using Identifier = Calendar::Identifier;

const CalendarComponents dayNames{Unit::era, Unit::year, Unit::month, Unit::day};
const CalendarComponents times{Unit::hour, Unit::minute, Unit::second, Unit::nanosecond};

std::string named(const Calendar& calendar, Date date, CalendarComponents components) {
    return textOf(calendar.dateComponents(components, {.from = date}));
}

double hours(const Calendar& calendar, Unit unit, Date date) {
    return calendar.dateInterval({.of = unit, .for_ = date}).value().duration / 3600;
}

} // namespace

TEST(Calendar, TellsWhatItWasMadeOf) {
    auto calendar = calendarIn("Europe/Berlin", "de_DE");
    EXPECT_EQ(calendar.identifier(), Identifier::gregorian);
    EXPECT_EQ(calendar.locale(), Locale("de_DE"));
    EXPECT_EQ(calendar.timeZone().identifier(), "Europe/Berlin");
    const auto copy = calendar;
    EXPECT_EQ(calendar, copy);
    calendar.setTimeZone(TimeZone::gmt());
    EXPECT_NE(calendar, copy);
    EXPECT_EQ(copy.timeZone().identifier(), "Europe/Berlin");
    EXPECT_EQ(calendar.component(Unit::hour, utc(2024, 1, 1, 5)), 5);
}

TEST(Calendar, BeginsWeeksAsIsTheCustomThere) {
    auto calendar = calendarIn("UTC", "de_DE");
    EXPECT_EQ(calendar.firstWeekday(), 2);
    EXPECT_EQ(calendar.minimumDaysInFirstWeek(), 4);
    calendar.setLocale(Locale("en_US"));
    EXPECT_EQ(calendar.firstWeekday(), 1);
    EXPECT_EQ(calendar.minimumDaysInFirstWeek(), 1);
    EXPECT_EQ(calendarIn("UTC", "ar_EG").firstWeekday(), 7);
    const auto iso = calendarIn("UTC", "en_US", Identifier::iso8601);
    EXPECT_EQ(iso.firstWeekday(), 2);
    EXPECT_EQ(iso.minimumDaysInFirstWeek(), 4);
    calendar.setFirstWeekday(3);
    calendar.setMinimumDaysInFirstWeek(7);
    EXPECT_EQ(calendar.firstWeekday(), 3);
    EXPECT_EQ(calendar.component(Unit::weekOfYear, utc(2024, 1, 1)), 52); // that of Tuesday 26 December
}

TEST(Calendar, TellsAllComponentsOfADate) {
    const auto calendar = calendarIn("Asia/Kathmandu");
    EXPECT_EQ(named(calendar, utc(2024, 2, 29, 12, 7, 9), allComponents()),
              "era 1, year 2024, week's year 2024, quarter 1, month 2, week 9, week of month 5, day 29, "
              "day of year 60, weekday 5, ordinal 5, hour 17, minute 52, second 9, nanosecond 0");
    EXPECT_FALSE(calendar.dateComponents(allComponents(), {.from = Date(0)}).isLeapMonth.has_value());
    EXPECT_EQ(named(calendar, Date(0), {}), "");
    EXPECT_EQ(calendar.component(Unit::quarter, utc(2024, 12, 31)), 4);
}

TEST(Calendar, FollowsTheJulianCalendarUntilOctober1582) {
    const auto calendar = calendarIn("UTC");
    const auto iso = calendarIn("UTC", "en_US", Identifier::iso8601);
    const CalendarComponents names{Unit::year, Unit::month, Unit::day, Unit::dayOfYear};
    EXPECT_EQ(named(calendar, utc(1582, 10, 14), names), "year 1582, month 10, day 4, day of year 277");
    EXPECT_EQ(named(calendar, utc(1582, 10, 15), names), "year 1582, month 10, day 15, day of year 278");
    EXPECT_EQ(named(calendar, utc(1582, 12, 31), names), "year 1582, month 12, day 31, day of year 355");
    EXPECT_EQ(named(iso, utc(1582, 10, 14), names), "year 1582, month 10, day 14, day of year 287");
    EXPECT_EQ(hours(calendar, Unit::month, utc(1582, 10, 20)), 21 * 24);
    EXPECT_EQ(hours(calendar, Unit::year, utc(1582, 1, 20)), 355 * 24);
    EXPECT_EQ(hours(calendar, Unit::year, utc(1500, 3, 20)), 366 * 24);
    EXPECT_EQ(hours(iso, Unit::year, utc(1500, 3, 20)), 365 * 24);
    EXPECT_EQ(calendar.component(Unit::weekdayOrdinal, utc(1582, 10, 15)), 1); // the month's first Friday
}

TEST(Calendar, CountsYearsBeforeYear1Backwards) {
    const auto calendar = calendarIn("UTC");
    EXPECT_EQ(named(calendar, Date::distantPast(), dayNames), "era 1, year 1, month 1, day 1");
    EXPECT_EQ(named(calendar, Date(Date::distantPast().timeIntervalSinceReferenceDate() - 1), dayNames),
              "era 0, year 1, month 12, day 31");
    const auto iso = calendarIn("UTC", "en_US", Identifier::iso8601);
    EXPECT_EQ(named(iso, utc(-4, 2, 29), dayNames), "era 0, year 5, month 2, day 29");
    EXPECT_EQ(iso.component(Unit::yearForWeekOfYear, utc(-4, 2, 29)), -4);
}

TEST(Calendar, FractionsBelongToTheSecondBefore) {
    const auto calendar = calendarIn("UTC");
    EXPECT_EQ(named(calendar, Date(0.25), times), "hour 0, minute 0, second 0, nanosecond 250000000");
    EXPECT_EQ(named(calendar, Date(-0.25), times), "hour 23, minute 59, second 59, nanosecond 750000000");
    EXPECT_EQ(named(calendar, Date(-1e-20), times), "hour 23, minute 59, second 59, nanosecond 999999999");
    EXPECT_EQ(named(calendar, Date(-0.0), times), "hour 0, minute 0, second 0, nanosecond 0");
    const Date last(std::nextafter(86'400.0 * 365, 0));
    EXPECT_EQ(calendar.component(Unit::day, last), 31);
    EXPECT_EQ(textOf(calendar.startOfDay(last)), "2001-12-31 00:00:00");
}

TEST(Calendar, DatesThatAreTooFarAwayAreInNoCalendar) {
    const auto calendar = calendarIn("Europe/Berlin");
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double far : {std::nan(""), infinity, -infinity, 1e15, -1e15, 1e300}) {
        SCOPED_TRACE(far);
        const Date date(far);
        EXPECT_EQ(named(calendar, date, allComponents()), "");
        EXPECT_EQ(textOf(calendar.dateComponents(Unit::day, {.from = Date(0), .to = date})), "");
        EXPECT_EQ(calendar.component(Unit::hour, date), std::nullopt);
        EXPECT_EQ(calendar.startOfDay(date), std::nullopt);
        EXPECT_EQ(calendar.dateInterval({.of = Unit::day, .for_ = date}), std::nullopt);
        EXPECT_EQ(calendar.ordinality({.of = Unit::day, .in = Unit::year, .for_ = date}), std::nullopt);
        EXPECT_EQ(calendar.date({.byAdding = Unit::day, .value = 0, .to = date}), std::nullopt);
        EXPECT_EQ(calendar.date({.byAdding = Unit::hour, .value = 0, .to = date}), std::nullopt);
    }
    EXPECT_EQ(calendar.component(Unit::year, Date(1.577e14)), 4'999'315);
}

TEST(Calendar, CountsWeeksByTheFirstOfAYearThatHasEnoughOfItsDays) {
    struct Fact {
        Date date;
        const char* iso;
        const char* american;
    };
    const Fact facts[]{
        {utc(2020, 1, 1), "week's year 2020, week 1", "week's year 2020, week 1"},
        {utc(2020, 12, 26), "week's year 2020, week 52", "week's year 2020, week 52"},
        {utc(2020, 12, 27), "week's year 2020, week 52", "week's year 2021, week 1"},
        {utc(2020, 12, 31), "week's year 2020, week 53", "week's year 2021, week 1"},
        {utc(2021, 1, 3), "week's year 2020, week 53", "week's year 2021, week 2"},
        {utc(2021, 1, 4), "week's year 2021, week 1", "week's year 2021, week 2"},
        {utc(2022, 1, 1), "week's year 2021, week 52", "week's year 2022, week 1"},
        {utc(2022, 12, 31), "week's year 2022, week 52", "week's year 2022, week 53"},
        {utc(2023, 1, 1), "week's year 2022, week 52", "week's year 2023, week 1"},
        {utc(2024, 1, 1), "week's year 2024, week 1", "week's year 2024, week 1"},
        {utc(2024, 12, 28), "week's year 2024, week 52", "week's year 2024, week 52"},
        {utc(2024, 12, 30), "week's year 2025, week 1", "week's year 2025, week 1"},
        {utc(2025, 12, 28), "week's year 2025, week 52", "week's year 2026, week 1"},
        {utc(2025, 12, 29), "week's year 2026, week 1", "week's year 2026, week 1"},
        {utc(2026, 12, 31), "week's year 2026, week 53", "week's year 2027, week 1"},
        {utc(2027, 1, 3), "week's year 2026, week 53", "week's year 2027, week 2"},
    };
    const CalendarComponents weeks{Unit::yearForWeekOfYear, Unit::weekOfYear};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.date.description());
        EXPECT_EQ(named(calendarIn("UTC", "en_US"), fact.date, weeks), fact.american);
        EXPECT_EQ(named(calendarIn("UTC", "de_DE"), fact.date, weeks), fact.iso);
        EXPECT_EQ(named(calendarIn("UTC", "en_US", Identifier::iso8601), fact.date, weeks), fact.iso);
    }
    EXPECT_EQ(calendarIn("UTC", "de_DE").component(Unit::weekOfMonth, utc(2021, 1, 1)), 0);
    EXPECT_EQ(calendarIn("UTC", "en_US").component(Unit::weekOfMonth, utc(2021, 1, 1)), 1);
    EXPECT_EQ(calendarIn("UTC", "de_DE").component(Unit::weekOfMonth, utc(2021, 1, 31)), 4);
}

TEST(Calendar, DaysBeginWithTheirFirstInstant) {
    struct Fact {
        const char* zone;
        Date date;
        const char* start;
    };
    const Fact facts[]{
        {"Europe/Berlin", utc(2024, 7, 1, 21, 59, 59), "2024-06-30 22:00:00"},
        {"Europe/Berlin", utc(2024, 7, 1, 22), "2024-07-01 22:00:00"},
        {"Europe/Berlin", utc(2024, 10, 27, 20), "2024-10-26 22:00:00"},
        {"America/Sao_Paulo", utc(2018, 11, 4, 20), "2018-11-04 03:00:00"}, // clocks went from 00:00 to 01:00
        {"America/Sao_Paulo", utc(2018, 11, 4, 2, 59), "2018-11-03 03:00:00"},
        {"America/Havana", utc(2023, 11, 5, 20), "2023-11-05 04:00:00"}, // 00:00 came twice
        {"America/Havana", utc(2023, 11, 5, 5, 30), "2023-11-05 04:00:00"},
        {"Pacific/Apia", utc(2011, 12, 30, 9, 59), "2011-12-29 10:00:00"},
        {"Pacific/Apia", utc(2011, 12, 30, 10), "2011-12-30 10:00:00"}, // 31 December, after the 29th
        {"Asia/Kathmandu", utc(1986, 1, 1, 5), "1985-12-31 18:30:00"},  // clocks went from 00:00 to 00:15
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::string(fact.zone) + " " + fact.date.description());
        EXPECT_EQ(textOf(calendarIn(fact.zone).startOfDay(fact.date)), fact.start);
    }
}

TEST(Calendar, DaysAreAsLongAsTheirClockChangesMakeThem) {
    const auto berlin = calendarIn("Europe/Berlin");
    EXPECT_EQ(hours(berlin, Unit::day, utc(2024, 3, 31, 12)), 23);
    EXPECT_EQ(hours(berlin, Unit::day, utc(2024, 10, 27, 12)), 25);
    EXPECT_EQ(hours(berlin, Unit::weekOfYear, utc(2024, 10, 27, 12)), 7 * 24 + 1);
    EXPECT_EQ(hours(berlin, Unit::weekOfMonth, utc(2024, 10, 26, 12)), 7 * 24);
    EXPECT_EQ(hours(berlin, Unit::month, utc(2024, 10, 27, 12)), 31 * 24 + 1);
    EXPECT_EQ(hours(berlin, Unit::quarter, utc(2024, 2, 27, 12)), 91 * 24 - 1);
    EXPECT_EQ(hours(berlin, Unit::year, utc(2024, 2, 27, 12)), 366 * 24);
    EXPECT_EQ(hours(calendarIn("Pacific/Apia"), Unit::month, utc(2011, 12, 15)), 30 * 24);
    EXPECT_EQ(hours(calendarIn("UTC", "de_DE"), Unit::yearForWeekOfYear, utc(2020, 7, 1)), 53 * 7 * 24);
}

TEST(Calendar, HoursAreAsLongAsTheirClockChangesMakeThem) {
    const auto lordHowe = calendarIn("Australia/Lord_Howe"); // half an hour forth and back, at 02:00
    const auto longHour = lordHowe.dateInterval({.of = Unit::hour, .for_ = utc(2024, 4, 6, 15, 10)});
    EXPECT_EQ(longHour, (DateInterval{utc(2024, 4, 6, 14), 5400}));
    EXPECT_EQ(lordHowe.dateInterval({.of = Unit::hour, .for_ = utc(2024, 4, 6, 14, 10)}), longHour);
    EXPECT_EQ(lordHowe.dateInterval({.of = Unit::hour, .for_ = utc(2024, 10, 5, 15, 40)}),
              (DateInterval{utc(2024, 10, 5, 15, 30), 1800}));
    EXPECT_EQ(
        calendarIn("Asia/Kathmandu").dateInterval({.of = Unit::hour, .for_ = utc(1985, 12, 31, 18, 40)}),
        (DateInterval{utc(1985, 12, 31, 18, 30), 2700}));
    const auto berlin = calendarIn("Europe/Berlin"); // of two hours with one name, each is one
    EXPECT_EQ(berlin.dateInterval({.of = Unit::hour, .for_ = utc(2024, 10, 27, 1, 10)}),
              (DateInterval{utc(2024, 10, 27, 1), 3600}));
    EXPECT_EQ(berlin.dateInterval({.of = Unit::hour, .for_ = utc(2024, 10, 27, 0, 50)}),
              (DateInterval{utc(2024, 10, 27, 0), 3600}));
}

TEST(Calendar, IntervalsHoldTheirDateAndEndWhereTheNextBegins) {
    const auto calendar = calendarIn("America/New_York");
    const Date date(utc(2024, 3, 10, 12, 34, 56).timeIntervalSinceReferenceDate() + 0.5);
    EXPECT_EQ(calendar.dateInterval({.of = Unit::minute, .for_ = date}),
              (DateInterval{utc(2024, 3, 10, 12, 34), 60}));
    EXPECT_EQ(calendar.dateInterval({.of = Unit::second, .for_ = date}),
              (DateInterval{utc(2024, 3, 10, 12, 34, 56), 1}));
    EXPECT_EQ(textOf(calendar.dateInterval({.of = Unit::month, .for_ = date})->end()), "2024-04-01 04:00:00");
    for (const auto unit :
         {Unit::era, Unit::weekday, Unit::weekdayOrdinal, Unit::dayOfYear, Unit::nanosecond})
        EXPECT_EQ(calendar.dateInterval({.of = unit, .for_ = date}), std::nullopt);
}
