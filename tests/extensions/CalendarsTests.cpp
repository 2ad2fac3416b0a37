// SPDX-License-Identifier: Apache-2.0

// Everyday questions to calendars, as users of many places ask them.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include "tests/extensions/Places.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using tests::forEachPlace;
using tests::forEachTimeZone;
using tests::local;
using tests::utc;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;

namespace {

Date later(Date date, double seconds) {
    return Date(date.timeIntervalSinceReferenceDate() + seconds);
}

std::int64_t daysElapsedSince(Date date) {
    return calendar::daysElapsedSinceDate(Calendar::current(), date);
}

std::int64_t elapsedSince(Date date, CalendarComponent component) {
    return calendar::timeElapsedSinceTimestamp(Calendar::current(), date::secondsSince1970(date), component);
}

// A day like any other, and those of the zone's next two changes of the clocks.
std::vector<Date> beginningsOfDays() {
    std::vector<Date> days{local({.year = 2024, .month = 3, .day = 5})};
    std::optional<Date> change = local({.year = 2011, .month = 1, .day = 1});
    for (int i = 0; i < 2; ++i) {
        change = TimeZone::current().nextTransition(*change);
        if (!change) break;
        days.push_back(date::normalizedDate(*change));
    }
    return days;
}

Date endOfDay(Date beginning) {
    return date::normalizedDate(later(beginning, 36 * timeInterval::hour));
}

constexpr Date noon = utc({.year = 2024, .month = 3, .day = 5, .hour = 12});

} // namespace

TEST(CalendarsTest, LastMinuteOfYesterdayIsADayAgo) {
    forEachPlace([] {
        const auto midnight = local({.year = 2024, .month = 3, .day = 5});
        const auto yesterday = local({.year = 2024, .month = 3, .day = 4, .hour = 23, .minute = 59});
        WallClock clock(midnight);
        EXPECT_EQ(daysElapsedSince(yesterday), 1) << "a minute later";
        EXPECT_EQ(daysElapsedSince(later(midnight, -1e-6)), 1);
        clock.set(later(midnight, timeInterval::day - 0.001));
        EXPECT_EQ(daysElapsedSince(yesterday), 1) << "a day later";
        clock.advance(1ms);
        EXPECT_EQ(daysElapsedSince(yesterday), 2);
    });
}

TEST(CalendarsTest, NoMidnightIsNoDay) {
    forEachPlace([] {
        const auto midnight = local({.year = 2024, .month = 3, .day = 5});
        const WallClock clock(later(midnight, timeInterval::day - 0.001));
        EXPECT_EQ(daysElapsedSince(midnight), 0);
        EXPECT_EQ(daysElapsedSince(Date()), 0);
    });
}

TEST(CalendarsTest, DaysToComeAreNegative) {
    forEachPlace([] {
        const auto midnight = local({.year = 2024, .month = 3, .day = 5});
        const WallClock clock(later(midnight, -1));
        EXPECT_EQ(daysElapsedSince(midnight), -1);
        EXPECT_EQ(daysElapsedSince(later(midnight, 7 * timeInterval::day)), -8);
    });
}

TEST(CalendarsTest, DaysAreCountedWhateverTheirLength) {
    forEachTimeZone([] {
        for (const auto beginning : beginningsOfDays()) {
            SCOPED_TRACE(beginning.description());
            WallClock clock(endOfDay(beginning));
            EXPECT_EQ(daysElapsedSince(beginning), 1);
            EXPECT_EQ(daysElapsedSince(later(endOfDay(beginning), -0.001)), 1);
            clock.advance(-1ms);
            EXPECT_EQ(daysElapsedSince(beginning), 0);
            EXPECT_EQ(daysElapsedSince(later(beginning, -0.001)), 1);
        }
    });
}

TEST(CalendarsTest, YearsOfDaysAreCounted) {
    forEachPlace([] {
        const WallClock clock(local({.year = 2024, .month = 3, .day = 1, .hour = 12}));
        const int withoutMidnight = TimeZone::current().identifier() == "Pacific/Apia" ? 1 : 0; // in 2011
        EXPECT_EQ(daysElapsedSince(local({.year = 2023, .month = 3, .day = 1})), 366) << "a leap year";
        EXPECT_EQ(daysElapsedSince(local({.year = 2000, .month = 3, .day = 1})),
                  24 * 365 + 6 - withoutMidnight);
        EXPECT_EQ(daysElapsedSince(local({.year = 2025, .month = 3, .day = 1})), -365);
    });
}

TEST(CalendarsTest, DayThatNeverWasIsNotCounted) {
    const UserRegion user({.locale = "en_US", .timeZone = "Pacific/Apia"});
    const auto before = local({.year = 2011, .month = 12, .day = 29, .hour = 23, .minute = 59});
    WallClock clock(local({.year = 2011, .month = 12, .day = 31}));
    EXPECT_EQ(daysElapsedSince(before), 1);
    EXPECT_FALSE(calendar::isToday(before));
    clock.set(before);
    EXPECT_EQ(daysElapsedSince(local({.year = 2011, .month = 12, .day = 31})), -1);
}

TEST(CalendarsTest, DayWithoutAMidnightIsADay) {
    const UserRegion user({.locale = "en_US", .timeZone = "America/Sao_Paulo"});
    const auto first = local({.year = 2018, .month = 11, .day = 4, .hour = 1});
    const auto next = local({.year = 2018, .month = 11, .day = 5});
    WallClock clock(next);
    EXPECT_EQ(daysElapsedSince(first), 1) << "though it is 23 hours";
    EXPECT_EQ(daysElapsedSince(later(first, -1)), 2);
    EXPECT_EQ(elapsedSince(first, CalendarComponent::day), 0);
    clock.set(first);
    EXPECT_EQ(daysElapsedSince(next), -1);
    clock.set(local({.year = 2019, .month = 11, .day = 4}));
    EXPECT_EQ(daysElapsedSince(first), 365);
}

TEST(CalendarsTest, CalendarOfTheSameZoneCountsTheSameDays) {
    forEachTimeZone([] {
        const WallClock clock(local({.year = 2024, .month = 3, .day = 5, .hour = 1}));
        const auto date = local({.year = 2023, .month = 10, .day = 1, .hour = 22});
        for (int i = 0; i <= static_cast<int>(Calendar::Identifier::republicOfChina); ++i) {
            const Calendar calendar(static_cast<Calendar::Identifier>(i));
            EXPECT_EQ(calendar::daysElapsedSinceDate(calendar, date), 156) << i;
        }
    });
}

TEST(CalendarsTest, ThirtySixHoursAreADay) {
    forEachPlace([] {
        const WallClock clock(noon);
        EXPECT_EQ(elapsedSince(later(noon, -36 * timeInterval::hour), CalendarComponent::day), 1);
        EXPECT_EQ(elapsedSince(later(noon, 36 * timeInterval::hour), CalendarComponent::day), -1);
        EXPECT_EQ(elapsedSince(later(noon, -24 * timeInterval::hour), CalendarComponent::day), 1);
        EXPECT_EQ(elapsedSince(later(noon, -24 * timeInterval::hour + 1), CalendarComponent::day), 0);
    });
}

TEST(CalendarsTest, OnlyOneUnitIsCounted) {
    forEachPlace([] {
        const WallClock clock(noon);
        const auto start = later(noon, -36 * timeInterval::hour - 61);
        EXPECT_EQ(elapsedSince(start, CalendarComponent::hour), 36);
        EXPECT_EQ(elapsedSince(start, CalendarComponent::minute), 36 * 60 + 1);
        EXPECT_EQ(elapsedSince(start, CalendarComponent::second), 36 * 3600 + 61);
        EXPECT_EQ(elapsedSince(start, CalendarComponent::weekOfYear), 0);
        EXPECT_EQ(elapsedSince(later(noon, -800 * timeInterval::day), CalendarComponent::year), 2);
        EXPECT_EQ(elapsedSince(later(noon, -80 * timeInterval::day), CalendarComponent::weekOfYear), 11);
    });
}

TEST(CalendarsTest, TimestampIsInSecondsAndNowToTheFraction) {
    const UserRegion user({.locale = "en_US", .timeZone = "UTC"});
    const WallClock clock(Date::fromTimeIntervalSince1970(100.75));
    const auto seconds = [](std::int64_t timestamp) {
        return calendar::timeElapsedSinceTimestamp(Calendar::current(), timestamp, CalendarComponent::second);
    };
    EXPECT_EQ(seconds(0), 100);
    EXPECT_EQ(seconds(100), 0);
    EXPECT_EQ(seconds(101), 0);
    EXPECT_EQ(seconds(102), -1);
    EXPECT_EQ(calendar::timeElapsedSinceTimestamp(Calendar::current(), 100, CalendarComponent::nanosecond),
              750'000'000);
}

TEST(CalendarsTest, ComponentThatIsNoLengthIsZero) {
    forEachTimeZone([] {
        const WallClock clock(noon);
        for (const auto component :
             {CalendarComponent::era, CalendarComponent::weekday, CalendarComponent::weekdayOrdinal})
            EXPECT_EQ(elapsedSince(Date(0), component), 0) << static_cast<int>(component);
    });
}

TEST(CalendarsTest, TimestampInNoCalendarIsZero) {
    for (const auto timestamp :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()})
        for (const auto component : {CalendarComponent::day, CalendarComponent::year})
            EXPECT_EQ(calendar::timeElapsedSinceTimestamp(Calendar::current(), timestamp, component), 0);
}

TEST(CalendarsTest, CalendarThatIsAskedCounts) {
    const UserRegion user({.locale = "en_US", .timeZone = "UTC"});
    // 8 Muharram 1445 to 8 Muharram 1446 in Saudi Arabia: a year of 354 days.
    const auto start = utc({.year = 2023, .month = 7, .day = 26});
    const WallClock clock(utc({.year = 2024, .month = 7, .day = 14}));
    const auto years = [&](Calendar::Identifier identifier) {
        return calendar::timeElapsedSinceTimestamp(Calendar(identifier), date::secondsSince1970(start),
                                                   CalendarComponent::year);
    };
    EXPECT_EQ(years(Calendar::Identifier::gregorian), 0);
    EXPECT_EQ(years(Calendar::Identifier::islamicUmmAlQura), 1);
}

TEST(CalendarsTest, TimesOfOneDayAreTheSameDay) {
    forEachTimeZone([] {
        for (const auto beginning : beginningsOfDays()) {
            SCOPED_TRACE(beginning.description());
            const auto end = endOfDay(beginning);
            EXPECT_TRUE(calendar::isDay(beginning, {.sameAs = later(end, -0.001)}));
            EXPECT_TRUE(calendar::isDay(later(end, -0.001), {.sameAs = beginning}));
            EXPECT_TRUE(calendar::isDay(later(beginning, 12 * timeInterval::hour), {.sameAs = beginning}));
            EXPECT_FALSE(calendar::isDay(beginning, {.sameAs = end}));
            EXPECT_FALSE(calendar::isDay(beginning, {.sameAs = later(beginning, -0.001)}));
        }
    });
}

TEST(CalendarsTest, SameDayOfAnotherMonthOrYearIsAnotherDay) {
    forEachPlace([] {
        const auto day = local({.year = 2024, .month = 3, .day = 5});
        EXPECT_FALSE(calendar::isDay(day, {.sameAs = local({.year = 2024, .month = 4, .day = 5})}));
        EXPECT_FALSE(calendar::isDay(day, {.sameAs = local({.year = 2023, .month = 3, .day = 5})}));
    });
}

TEST(CalendarsTest, DateThatIsNoNumberIsOfNoDay) {
    const Date none(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(calendar::isDay(none, {.sameAs = none}));
    EXPECT_FALSE(calendar::isToday(none));
    EXPECT_FALSE(calendar::isToday(Date(std::numeric_limits<double>::infinity())));
}

TEST(CalendarsTest, NowIsToday) {
    forEachPlace([] {
        const auto midnight = local({.year = 2024, .month = 3, .day = 5});
        for (const double time : {0.0, 12 * timeInterval::hour, timeInterval::day - 0.001}) {
            const WallClock clock(later(midnight, time));
            EXPECT_TRUE(calendar::isToday(Date())) << time;
            EXPECT_FALSE(calendar::isToday(later(Date(), -timeInterval::day))) << time;
            EXPECT_FALSE(calendar::isToday(later(Date(), timeInterval::day))) << time;
        }
    });
}

TEST(CalendarsTest, NowIsTodayWhenClocksChange) {
    forEachTimeZone([] {
        for (const auto beginning : beginningsOfDays()) {
            SCOPED_TRACE(beginning.description());
            const auto last = later(endOfDay(beginning), -0.001);
            for (const auto now : {beginning, later(beginning, 12 * timeInterval::hour), last}) {
                const WallClock clock(now);
                EXPECT_TRUE(calendar::isToday(now));
                EXPECT_TRUE(calendar::isToday(beginning));
                EXPECT_TRUE(calendar::isToday(last));
                EXPECT_FALSE(calendar::isToday(later(beginning, -0.001)));
                EXPECT_FALSE(calendar::isToday(later(last, 0.001)));
            }
        }
    });
}

TEST(CalendarsTest, TwentyFourHoursAgoIsTodayAtTheEndOfALongDay) {
    const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    const WallClock clock(local({.year = 2024, .month = 10, .day = 27, .hour = 23, .minute = 30}));
    EXPECT_TRUE(calendar::isToday(later(Date(), -timeInterval::day)));
    EXPECT_FALSE(calendar::isToday(later(Date(), -timeInterval::day - 1800.001)));
}

TEST(CalendarsTest, TodayFollowsTheUser) {
    const WallClock clock(utc({.year = 2024, .month = 3, .day = 5, .hour = 11}));
    const auto date = utc({.year = 2024, .month = 3, .day = 5, .hour = 9});
    const auto isTodayIn = [&](const char* timeZone) {
        const UserRegion user({.timeZone = timeZone});
        return calendar::isToday(date);
    };
    EXPECT_TRUE(isTodayIn("Europe/Berlin"));
    EXPECT_FALSE(isTodayIn("Pacific/Honolulu")) << "midnight was at ten";
}

TEST(CalendarsTest, DaysOfAYearAreIndexedFromOne) {
    forEachTimeZone([] {
        const UserRegion user({.calendar = Calendar::Identifier::gregorian});
        const auto index = [](int month, int day, std::int64_t period) {
            const auto date = local({.year = 2024, .month = month, .day = day, .hour = 12});
            return calendar::index({.ofDay = date, .inPeriod = period});
        };
        EXPECT_EQ(index(1, 1, 7), 1);
        EXPECT_EQ(index(1, 6, 7), 6);
        EXPECT_EQ(index(1, 7, 7), 0);
        EXPECT_EQ(index(1, 8, 7), 1);
        EXPECT_EQ(index(12, 31, 1000), 366) << "a leap year";
        EXPECT_EQ(index(1, 1, 2), 1);
        EXPECT_EQ(index(1, 1, 1), 0);
    });
}

TEST(CalendarsTest, SignOfThePeriodDoesNotMatter) {
    const UserRegion user({.locale = "en_US", .timeZone = "UTC"});
    const auto day = utc({.year = 2024, .month = 1, .day = 10});
    EXPECT_EQ(calendar::index({.ofDay = day, .inPeriod = -7}), 3);
    EXPECT_EQ(calendar::index({.ofDay = day, .inPeriod = -1}), 0);
    EXPECT_EQ(calendar::index({.ofDay = day, .inPeriod = std::numeric_limits<std::int64_t>::min()}), 10);
    EXPECT_EQ(calendar::index({.ofDay = day, .inPeriod = std::numeric_limits<std::int64_t>::max()}), 10);
}

TEST(CalendarsTest, IndexIsByTheCalendarOfTheUser) {
    forEachPlace([] {
        const auto date = local({.year = 2024, .month = 7, .day = 20, .hour = 12});
        const auto year = Calendar::current().dateInterval({.of = CalendarComponent::year, .for_ = date});
        ASSERT_TRUE(year.has_value());
        const auto index = [](Date day) { return calendar::index({.ofDay = day, .inPeriod = 1000}); };
        EXPECT_EQ(index(year->start), 1);
        EXPECT_EQ(index(later(year->start, 12 * timeInterval::hour)), 1);
        const WallClock clock(date);
        EXPECT_EQ(index(date), 1 + daysElapsedSince(year->start));
    });
}

TEST(CalendarsTest, DateInNoCalendarHasIndexZero) {
    EXPECT_EQ(calendar::index({.ofDay = Date(std::numeric_limits<double>::infinity()), .inPeriod = 7}), 0);
    EXPECT_EQ(calendar::index({.ofDay = Date(std::numeric_limits<double>::quiet_NaN()), .inPeriod = 7}), 0);
    EXPECT_EQ(calendar::index({.ofDay = Date(1e18), .inPeriod = -7}), 0);
}
