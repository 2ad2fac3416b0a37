// SPDX-License-Identifier: Apache-2.0
// Which of two dates comes first, and the how many-th a date is.

#include "tests/platform/dates/CalendarTesting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <compare>
#include <cstdint>
#include <limits>
#include <utility>

using namespace vorlan;
using namespace vorlan::tests;

namespace {

using Unit = CalendarComponent;
using Identifier = Calendar::Identifier;

constexpr double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(Calendar, ComparesByAComponentAndThoseLargerThanIt) {
    struct Fact {
        Date date;
        Date other;
        Unit granularity;
        std::partial_ordering order;
    };
    constexpr auto same = std::partial_ordering::equivalent;
    constexpr auto less = std::partial_ordering::less;
    const Fact facts[]{
        {utc(2024, 6, 30, 22), utc(2024, 7, 1, 21, 59, 59), Unit::day, same}, // 1 July in Berlin
        {utc(2024, 6, 30, 21, 59, 59), utc(2024, 6, 30, 22), Unit::day, less},
        {utc(2024, 6, 30, 22), utc(2024, 7, 31, 21), Unit::month, same},
        {utc(2023, 7, 1), utc(2024, 7, 1), Unit::month, less},
        {utc(2024, 7, 1), utc(2024, 9, 30), Unit::quarter, same},
        {utc(2024, 6, 29), utc(2024, 9, 30), Unit::quarter, less},
        {utc(2024, 12, 30), utc(2025, 1, 5), Unit::weekOfYear, same},
        {utc(2024, 12, 30), utc(2025, 1, 5), Unit::weekOfMonth, same},
        {utc(2024, 12, 30), utc(2025, 6, 1), Unit::yearForWeekOfYear, same},
        {utc(2024, 12, 30), utc(2025, 1, 5), Unit::year, less},
        {utc(2024, 12, 30), utc(2025, 1, 5), Unit::era, same},
        {Date(Date::distantPast().timeIntervalSinceReferenceDate() - 1e6), utc(2025, 1, 5), Unit::era, less},
        {utc(2024, 12, 30), utc(2024, 12, 30, 22, 59), Unit::dayOfYear, same},
        {utc(2024, 12, 30), utc(2024, 12, 30, 23), Unit::weekday, less},
        {utc(2024, 12, 1), utc(2024, 12, 7), Unit::weekdayOrdinal, same},
        {utc(2024, 12, 7), utc(2024, 12, 8), Unit::weekdayOrdinal, less},
        {utc(2024, 10, 27, 0, 30), utc(2024, 10, 27, 1, 30), Unit::hour, less}, // both 02:30
        {utc(2024, 10, 27, 0, 30), utc(2024, 10, 27, 0, 59, 59), Unit::hour, same},
        {utc(2024, 10, 27, 0, 30, 1), utc(2024, 10, 27, 0, 30, 59), Unit::minute, same},
        {Date(-0.25), Date(0), Unit::second, less},
        {Date(0), Date(0.75), Unit::second, same},
        {Date(0), Date(0.75), Unit::nanosecond, less},
        {Date(0), Date(1e-12), Unit::nanosecond, same},
        {Date(1e300), Date(infinity), Unit::year, less},
        {Date(0), Date(infinity), Unit::era, less},
    };
    const auto calendar = calendarIn("Europe/Berlin", "de_DE");
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.date.description() + " and " + fact.other.description());
        const auto backwards = fact.order == less ? std::partial_ordering::greater : fact.order;
        EXPECT_EQ(calendar.compare(fact.date, {.to = fact.other, .toGranularity = fact.granularity}),
                  fact.order);
        EXPECT_EQ(calendar.compare(fact.other, {.to = fact.date, .toGranularity = fact.granularity}),
                  backwards);
    }
    EXPECT_EQ(calendar.compare(Date(std::nan("")), {.to = Date(), .toGranularity = Unit::day}),
              std::partial_ordering::unordered);
}

TEST(Calendar, CountsTheSmallerUnitsWithinTheLarger) {
    struct Fact {
        Unit smaller;
        Unit larger;
        std::int64_t ordinal;
    };
    const Date date = utc(2024, 8, 20, 12, 7, 9); // 14:07:09 on a Tuesday in Berlin
    const Fact facts[]{
        {Unit::day, Unit::year, 233},        {Unit::dayOfYear, Unit::year, 233},
        {Unit::day, Unit::month, 20},        {Unit::day, Unit::quarter, 51},
        {Unit::day, Unit::weekOfYear, 2},    {Unit::weekday, Unit::weekOfMonth, 2},
        {Unit::weekday, Unit::month, 3},     {Unit::weekdayOrdinal, Unit::month, 3},
        {Unit::month, Unit::year, 8},        {Unit::month, Unit::quarter, 2},
        {Unit::quarter, Unit::year, 3},      {Unit::weekOfYear, Unit::year, 34},
        {Unit::weekOfMonth, Unit::month, 4}, {Unit::weekOfYear, Unit::yearForWeekOfYear, 34},
        {Unit::hour, Unit::day, 15},         {Unit::minute, Unit::hour, 8},
        {Unit::minute, Unit::day, 848},      {Unit::second, Unit::minute, 10},
        {Unit::second, Unit::day, 50'830},   {Unit::hour, Unit::weekOfYear, 39},
        {Unit::nanosecond, Unit::second, 1}, {Unit::nanosecond, Unit::minute, 9'000'000'001},
        {Unit::year, Unit::era, 2024},       {Unit::month, Unit::era, 2023 * 12 + 8},
        {Unit::quarter, Unit::era, 8095},    {Unit::day, Unit::era, 739'118},
    };
    const auto calendar = calendarIn("Europe/Berlin", "de_DE", Identifier::iso8601);
    for (const auto& [smaller, larger, ordinal] : facts)
        EXPECT_EQ(calendar.ordinality({.of = smaller, .in = larger, .for_ = date}), ordinal)
            << static_cast<int>(smaller) << " in " << static_cast<int>(larger);
}

TEST(Calendar, OrdinalityIsAbsentWhereTheLargerDoesNotConsistOfTheSmaller) {
    const auto calendar = calendarIn("Europe/Berlin");
    const std::pair<Unit, Unit> pairs[]{{Unit::year, Unit::month},
                                        {Unit::day, Unit::day},
                                        {Unit::hour, Unit::minute},
                                        {Unit::day, Unit::hour},
                                        {Unit::month, Unit::day},
                                        {Unit::weekOfYear, Unit::weekOfMonth},
                                        {Unit::quarter, Unit::month},
                                        {Unit::era, Unit::year},
                                        {Unit::month, Unit::yearForWeekOfYear},
                                        {Unit::year, Unit::year},
                                        {Unit::second, Unit::second},
                                        {Unit::day, Unit::weekday},
                                        {Unit::nanosecond, Unit::era},
                                        {Unit::day, Unit::nanosecond},
                                        {Unit::weekOfYear, Unit::day},
                                        {Unit::dayOfYear, Unit::month},
                                        {Unit::weekdayOrdinal, Unit::year},
                                        {Unit::weekday, Unit::day}};
    for (const auto& [smaller, larger] : pairs)
        EXPECT_EQ(calendar.ordinality({.of = smaller, .in = larger, .for_ = Date(0)}), std::nullopt)
            << static_cast<int>(smaller) << " in " << static_cast<int>(larger);
    const Date beforeChrist(Date::distantPast().timeIntervalSinceReferenceDate() - 1e6);
    EXPECT_EQ(calendar.ordinality({.of = Unit::day, .in = Unit::era, .for_ = beforeChrist}), std::nullopt);
    EXPECT_EQ(calendar.ordinality({.of = Unit::year, .in = Unit::era, .for_ = beforeChrist}), 1);
}
