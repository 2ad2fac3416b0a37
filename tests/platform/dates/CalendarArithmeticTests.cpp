// SPDX-License-Identifier: Apache-2.0
// Dates from components and from other dates, and the spans between them.

#include "tests/platform/dates/CalendarTesting.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

using Unit = CalendarComponent;
using Identifier = Calendar::Identifier;

constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();

std::string added(const Calendar& calendar, std::int64_t value, Unit unit, Date to) {
    return textOf(calendar.date({.byAdding = unit, .value = value, .to = to}));
}

} // namespace

TEST(Calendar, MakesDatesOfComponents) {
    const auto berlin = calendarIn("Europe/Berlin", "de_DE");
    struct Fact {
        DateComponents components;
        const char* date; // in UTC
    };
    const Fact facts[]{
        {{.year = 2024, .month = 2, .day = 29}, "2024-02-28 23:00:00"},
        {{.year = 2024, .month = 7, .day = 1, .hour = 14, .minute = 7, .second = 9}, "2024-07-01 12:07:09"},
        {{.year = 2024}, "2023-12-31 23:00:00"},
        {{}, "0000-12-29 23:06:32"}, // the local time of a sundial, and the Julian calendar
        {{.era = 0, .year = 5, .month = 3}, "-0004-02-27 23:06:32"},
        {{.year = 2024, .month = 1, .day = 32}, "2024-01-31 23:00:00"},
        {{.year = 2023, .month = 2, .day = 29}, "2023-02-28 23:00:00"},
        {{.year = 2024, .month = 13, .day = 1}, "2024-12-31 23:00:00"},
        {{.year = 2024, .month = 0, .day = 0}, "2023-11-29 23:00:00"},
        {{.year = 2024, .month = 1, .day = 1, .hour = 25, .minute = -1, .second = 61}, "2024-01-02 00:00:01"},
        {{.year = 2024, .hour = 2}, "2024-01-01 01:00:00"},
        {{.year = 2024, .quarter = 3}, "2024-06-30 22:00:00"},
        {{.year = 2024, .dayOfYear = 60}, "2024-02-28 23:00:00"},
        {{.year = 2024, .dayOfYear = 0}, "2023-12-30 23:00:00"},
        {{.weekOfYear = 53, .yearForWeekOfYear = 2026, .weekday = 1}, "2027-01-02 23:00:00"},
        {{.weekOfYear = 1, .yearForWeekOfYear = 2025}, "2024-12-29 23:00:00"},
        {{.year = 2025, .weekOfYear = 1, .weekday = 4}, "2024-12-31 23:00:00"},
        {{.yearForWeekOfYear = 2025, .weekday = 8}, "2025-01-11 23:00:00"},
        {{.year = 2024, .month = 11, .weekday = 5, .weekdayOrdinal = 4}, "2024-11-27 23:00:00"},
        {{.year = 2024, .month = 11, .weekOfMonth = 1, .weekday = 2}, "2024-11-03 23:00:00"},
        {{.year = 2024, .month = 11, .weekday = 5}, "2024-10-31 23:00:00"}, // a weekday alone names no day
        {{.year = 1582, .month = 10, .day = 4}, "1582-10-13 23:06:32"},
        {{.year = 1582, .month = 10, .day = 15}, "1582-10-14 23:06:32"},
        {{.year = 1582, .month = 10, .day = 10}, "1582-10-19 23:06:32"}, // by the Julian calendar
        {{.year = 1582, .month = 10, .day = 32}, "1582-10-31 23:06:32"},
        {{.year = 1500, .month = 2, .day = 29}, "1500-03-09 23:06:32"},
    };
    for (const auto& [components, date] : facts)
        EXPECT_EQ(textOf(berlin.date(components)), date) << textOf(components);
}

TEST(Calendar, NanosecondsOfComponentsCarryOver) {
    const auto calendar = calendarIn("UTC");
    EXPECT_EQ(calendar.date({.year = 2001, .nanosecond = 250'000'000}), Date(0.25));
    EXPECT_EQ(calendar.date({.year = 2001, .nanosecond = -250'000'000}), Date(-0.25));
    EXPECT_EQ(calendar.date({.year = 2001, .second = 1, .nanosecond = 2'500'000'000}), Date(3.5));
    EXPECT_EQ(calendar.date({.year = 2001, .nanosecond = largest}), Date(9'223'372'036.854775807));
}

TEST(Calendar, TimesThatClocksSkipAreCountedOnFromBeforeTheGap) {
    EXPECT_EQ(
        textOf(
            calendarIn("Europe/Berlin").date({.year = 2024, .month = 3, .day = 31, .hour = 2, .minute = 30})),
        "2024-03-31 01:30:00"); // 03:30
    EXPECT_EQ(textOf(calendarIn("America/Sao_Paulo").date({.year = 2018, .month = 11, .day = 4})),
              "2018-11-04 03:00:00"); // the day begins at 01:00
    EXPECT_EQ(
        textOf(calendarIn("America/Sao_Paulo").date({.year = 2018, .month = 11, .day = 4, .minute = 30})),
        "2018-11-04 03:30:00");
    EXPECT_EQ(textOf(calendarIn("Pacific/Apia").date({.year = 2011, .month = 12, .day = 30, .hour = 10})),
              "2011-12-30 20:00:00"); // 10:00 on the 31st
    EXPECT_EQ(textOf(calendarIn("Pacific/Apia").date({.year = 2011, .month = 12, .day = 30})),
              "2011-12-30 10:00:00"); // the 31st begins
}

TEST(Calendar, OfTimesThatComeTwiceTheFirstIsMeant) {
    EXPECT_EQ(textOf(calendarIn("Europe/Berlin").date({.year = 2024, .month = 10, .day = 27, .hour = 2})),
              "2024-10-27 00:00:00");
    EXPECT_EQ(textOf(calendarIn("America/Havana").date({.year = 2023, .month = 11, .day = 5})),
              "2023-11-05 04:00:00");
    EXPECT_EQ(textOf(calendarIn("America/Havana").date({.year = 2023, .month = 11, .day = 5, .hour = 0})),
              "2023-11-05 04:00:00");
    EXPECT_EQ(textOf(calendarIn("Australia/Lord_Howe")
                         .date({.year = 2024, .month = 4, .day = 7, .hour = 1, .minute = 45})),
              "2024-04-06 14:45:00");
    EXPECT_EQ(added(calendarIn("Europe/Berlin"), 1, Unit::day, utc(2024, 10, 26, 0, 30)),
              "2024-10-27 00:30:00");
}

TEST(Calendar, ComponentsBeyondAllCalendarsMakeNoDate) {
    for (const auto identifier : {Identifier::gregorian, Identifier::iso8601, Identifier::buddhist,
                                  Identifier::japanese, Identifier::hebrew, Identifier::chinese})
        for (const auto unit : {Unit::era, Unit::year, Unit::month, Unit::weekOfMonth, Unit::weekOfYear,
                                Unit::yearForWeekOfYear, Unit::day, Unit::dayOfYear, Unit::weekdayOrdinal,
                                Unit::hour, Unit::minute, Unit::second})
            for (const auto value : {largest, smallest, std::int64_t{1} << 53, -(std::int64_t{1} << 53)}) {
                DateComponents components{.year = 5};
                components.setValue(value, unit);
                if (unit == Unit::weekdayOrdinal) components.weekday = 1;
                const auto date = calendarIn("Europe/Berlin", "en_US", identifier).date(components);
                EXPECT_EQ(date, std::nullopt) << textOf(components);
            }
    const auto calendar = calendarIn("UTC");
    EXPECT_EQ(calendar.date({.year = 2024, .quarter = largest}), std::nullopt);
    EXPECT_EQ(calendar.date({.weekOfYear = 1, .yearForWeekOfYear = 2024, .weekday = smallest}), std::nullopt);
    EXPECT_EQ(calendar.date({.era = 2, .year = 2024}), std::nullopt);
    EXPECT_EQ(calendar.date({.year = 2024, .month = 1, .isLeapMonth = true}), std::nullopt);
    EXPECT_EQ(calendar.date({.year = 4'999'999, .month = 12}).has_value(), true);
    EXPECT_EQ(calendar.date({.year = 5'010'000}), std::nullopt);
}

TEST(Calendar, AddsUnitsAtTheSameTimeOfDay) {
    const auto berlin = calendarIn("Europe/Berlin", "de_DE");
    const Date noon = utc(2024, 1, 31, 11); // 12:00 there
    EXPECT_EQ(added(berlin, 1, Unit::month, noon), "2024-02-29 11:00:00");
    EXPECT_EQ(added(berlin, 13, Unit::month, noon), "2025-02-28 11:00:00");
    EXPECT_EQ(added(berlin, -2, Unit::month, noon), "2023-11-30 11:00:00");
    EXPECT_EQ(added(berlin, 6, Unit::month, noon), "2024-07-31 10:00:00");
    EXPECT_EQ(added(berlin, 1, Unit::quarter, noon), "2024-04-30 10:00:00");
    EXPECT_EQ(added(berlin, 1, Unit::year, utc(2024, 2, 29, 11)), "2025-02-28 11:00:00");
    EXPECT_EQ(added(berlin, -1, Unit::weekOfYear, noon), "2024-01-24 11:00:00");
    EXPECT_EQ(added(berlin, 20, Unit::weekOfMonth, noon), "2024-06-19 10:00:00");
    EXPECT_EQ(added(berlin, 1, Unit::yearForWeekOfYear, utc(2026, 12, 31, 11)), "2027-12-30 11:00:00");
    EXPECT_EQ(added(berlin, 1, Unit::day, utc(2024, 3, 30, 11)), "2024-03-31 10:00:00");
    EXPECT_EQ(added(berlin, 1, Unit::day, utc(2024, 3, 30, 1, 30)), "2024-03-31 01:30:00");
    EXPECT_EQ(added(berlin, 24, Unit::hour, utc(2024, 3, 30, 11)), "2024-03-31 11:00:00");
    EXPECT_EQ(added(berlin, -61, Unit::minute, noon), "2024-01-31 09:59:00");
    EXPECT_EQ(added(berlin, 86'400, Unit::second, noon), "2024-02-01 11:00:00");
    EXPECT_EQ(berlin.date({.byAdding = Unit::nanosecond, .value = -250'000'000, .to = Date(0)}), Date(-0.25));
    EXPECT_EQ(berlin.date({.byAdding = Unit::day, .value = -1, .to = Date(0.25)}), Date(-86'400 + 0.25));
    EXPECT_EQ(berlin.date({.byAdding = Unit::month, .value = 0, .to = Date(0.25)}), Date(0.25));
    for (const auto unit : {Unit::era, Unit::weekday, Unit::weekdayOrdinal, Unit::dayOfYear})
        EXPECT_EQ(added(berlin, 1, unit, noon), "none");
}

TEST(Calendar, DaysThatAZoneLeavesOutAreNotCounted) {
    const auto apia = calendarIn("Pacific/Apia");
    const Date before = utc(2011, 12, 29, 20),
               after = utc(2011, 12, 30, 20); // 10:00 on the 29th and on the 31st
    EXPECT_EQ(added(apia, 1, Unit::day, before), textOf(after));
    EXPECT_EQ(added(apia, 2, Unit::day, before), "2011-12-31 20:00:00");
    EXPECT_EQ(added(apia, -1, Unit::day, after), textOf(before));
    EXPECT_EQ(apia.dateComponents(Unit::day, {.from = before, .to = after}).day, 1);
    EXPECT_EQ(apia.dateComponents(Unit::day, {.from = after, .to = before}).day, -1);
}

TEST(Calendar, AddingPastTheEndOfAllCalendarsMakesNoDate) {
    for (const auto identifier : {Identifier::gregorian, Identifier::japanese, Identifier::persian}) {
        const auto calendar = calendarIn("America/New_York", "en_US", identifier);
        for (int unit = 0; unit <= static_cast<int>(Unit::second); ++unit)
            for (const auto value : {largest, smallest, std::int64_t{1} << 53, -(std::int64_t{1} << 53)})
                EXPECT_EQ(added(calendar, value, static_cast<Unit>(unit), Date(0)), "none")
                    << unit << " " << value;
        EXPECT_EQ(added(calendar, 200'000, Unit::day, Date(1.5778e14)), "none");
    }
}

TEST(Calendar, CountsTheUnitsBetweenDates) {
    struct Fact {
        const char* zone;
        Date from;
        Date to;
        CalendarComponents units;
        const char* span;
    };
    const CalendarComponents days{Unit::day, Unit::hour}, months{Unit::month, Unit::day};
    const Fact facts[]{
        {"Europe/Berlin", utc(2024, 3, 30, 11), utc(2024, 3, 31, 10), days, "day 1, hour 0"},
        {"Europe/Berlin", utc(2024, 3, 30, 11), utc(2024, 3, 31, 10), Unit::hour, "hour 23"},
        {"Europe/Berlin", utc(2024, 3, 31, 10), utc(2024, 3, 30, 11), days, "day -1, hour 0"},
        {"Europe/Berlin", utc(2024, 3, 30, 11), utc(2024, 3, 31, 9, 59), days, "day 0, hour 22"},
        {"Europe/Berlin", utc(2024, 10, 26, 10), utc(2024, 10, 27, 11), days, "day 1, hour 0"},
        {"Europe/Berlin", utc(2024, 10, 26, 10), utc(2024, 10, 27, 11), Unit::hour, "hour 25"},
        {"Europe/Berlin", utc(2024, 10, 27, 11), utc(2024, 10, 26, 10), Unit::day, "day -1"},
        {"America/Sao_Paulo", utc(2018, 11, 4, 3), utc(2018, 11, 5, 2), days, "day 0, hour 23"},
        {"UTC", utc(2023, 1, 31), utc(2023, 2, 28), months, "month 1, day 0"},
        {"UTC", utc(2023, 1, 31), utc(2023, 2, 27), months, "month 0, day 27"},
        {"UTC", utc(2023, 1, 31), utc(2023, 3, 1), months, "month 1, day 1"},
        {"UTC", utc(2023, 3, 31), utc(2023, 2, 28), months, "month -1, day 0"},
        {"UTC", utc(2023, 3, 1), utc(2023, 1, 31), months, "month -1, day -1"},
        {"UTC",
         utc(2020, 2, 29),
         utc(2021, 2, 28),
         {Unit::year, Unit::month, Unit::day},
         "year 1, month 0, day 0"},
        {"UTC",
         utc(2020, 2, 29),
         utc(2021, 3, 30),
         {Unit::year, Unit::month, Unit::day},
         "year 1, month 1, day 2"},
        {"UTC",
         utc(2024, 1, 1),
         utc(2024, 11, 22),
         {Unit::quarter, Unit::weekOfYear, Unit::day},
         "quarter 3, week 7, day 3"},
        {"UTC",
         utc(2024, 1, 1),
         utc(2024, 11, 22),
         {Unit::weekOfMonth, Unit::minute},
         "week of month 46, minute 5760"},
        {"UTC", utc(2020, 12, 31), utc(2024, 12, 31), Unit::yearForWeekOfYear, "week's year 3"},
        {"UTC", utc(1582, 10, 14), utc(1582, 10, 15), Unit::day, "day 1"},
        {"UTC", Date::distantPast(), Date::distantFuture(), {Unit::year, Unit::day}, "year 4000, day 0"},
        {"UTC",
         Date::distantFuture(),
         Date::distantPast(),
         {Unit::month, Unit::second},
         "month -48000, second 0"},
        {"UTC", Date(0.25), Date(0), {Unit::second, Unit::nanosecond}, "second 0, nanosecond -250000000"},
        {"UTC",
         Date(0.75),
         Date(2),
         {Unit::day, Unit::second, Unit::nanosecond},
         "day 0, second 1, nanosecond 250000000"},
        {"UTC", Date(0.75), Date(86'400.5), {Unit::day, Unit::second}, "day 0, second 86399"},
        {"UTC", Date(0), Date(4e10), Unit::nanosecond, ""},
        {"UTC", Date(0), Date(1e9), {Unit::era, Unit::weekday, Unit::dayOfYear, Unit::weekdayOrdinal}, ""},
    };
    for (const auto& fact : facts) {
        const auto span =
            calendarIn(fact.zone).dateComponents(fact.units, {.from = fact.from, .to = fact.to});
        EXPECT_EQ(textOf(span), fact.span)
            << fact.zone << " " << textOf(fact.from) << " to " << textOf(fact.to);
    }
}

TEST(Calendar, SpansOfAllTimeAreCountedAtOnce) {
    for (const auto identifier : {Identifier::gregorian, Identifier::iso8601, Identifier::coptic,
                                  Identifier::hebrew, Identifier::islamicCivil, Identifier::persian}) {
        const auto calendar = calendarIn("Europe/Berlin", "en_US", identifier);
        for (const auto unit : {Unit::year, Unit::quarter, Unit::month, Unit::weekOfYear, Unit::day}) {
            const Date from(-1.5777e14), to(1.5777e14);
            const auto count = calendar.dateComponents(unit, {.from = from, .to = to}).value(unit);
            ASSERT_TRUE(count.has_value());
            EXPECT_LE(calendar.date({.byAdding = unit, .value = *count, .to = from}), to);
            const auto later = calendar.date({.byAdding = unit, .value = *count + 1, .to = from});
            EXPECT_TRUE(!later || *later > to) << textOf(later);
        }
    }
}
