// SPDX-License-Identifier: Apache-2.0

// Dates as whole numbers, and back to the beginning of their day.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include "tests/extensions/Places.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

using namespace vorlan;
using namespace std::chrono_literals;
using tests::local;
using tests::utc;

namespace {

Date since1970(double seconds) {
    return Date::fromTimeIntervalSince1970(seconds);
}

Date later(Date date, double seconds) {
    return Date(date.timeIntervalSinceReferenceDate() + seconds);
}

// Which day it is and when, in the user's zone: "2024-03-05 14:07:09".
std::string text(Date date) {
    return later(date, TimeZone::current().secondsFromGMT(date)).description().substr(0, 19);
}

} // namespace

TEST(DatesTest, SpansAreInSeconds) {
    EXPECT_EQ(timeInterval::minute, 60);
    EXPECT_EQ(timeInterval::hour, 3600);
    EXPECT_EQ(timeInterval::day, 86'400);
    EXPECT_EQ(timeInterval::week, 604'800);
    static_assert(std::is_same_v<decltype(timeInterval::week), const double>);
}

TEST(DatesTest, MillisecondsAreTheNearest) {
    EXPECT_EQ(date::millisecondsSince1970(since1970(0)), 0);
    EXPECT_EQ(date::millisecondsSince1970(since1970(0.0005)), 1) << "halves away from zero";
    EXPECT_EQ(date::millisecondsSince1970(since1970(-0.0005)), -1) << "halves away from zero";
    EXPECT_EQ(date::millisecondsSince1970(since1970(0.0004)), 0);
    EXPECT_EQ(date::millisecondsSince1970(since1970(1.0004)), 1000);
    EXPECT_EQ(date::millisecondsSince1970(since1970(1.0005)), 1001);
    EXPECT_EQ(date::millisecondsSince1970(since1970(1.5)), 1500);
    EXPECT_EQ(date::millisecondsSince1970(since1970(-1.5)), -1500);
    EXPECT_EQ(date::millisecondsSince1970(Date(0)), 978'307'200'000);
}

TEST(DatesTest, SecondsAreTheNearest) {
    EXPECT_EQ(date::secondsSince1970(since1970(0)), 0);
    EXPECT_EQ(date::secondsSince1970(since1970(0.5)), 1) << "halves away from zero";
    EXPECT_EQ(date::secondsSince1970(since1970(-0.5)), -1) << "halves away from zero";
    EXPECT_EQ(date::secondsSince1970(since1970(2.5)), 3);
    EXPECT_EQ(date::secondsSince1970(since1970(-2.5)), -3);
    EXPECT_EQ(date::secondsSince1970(since1970(0.49)), 0);
    EXPECT_EQ(date::secondsSince1970(Date(0)), 978'307'200);
    EXPECT_EQ(date::secondsSince1970(Date::distantPast()), -62'135'769'600);
    EXPECT_EQ(date::secondsSince1970(Date::distantFuture()), 64'092'211'200);
}

TEST(DatesTest, DateOfMillisecondsKeepsFractionsOfASecond) {
    EXPECT_EQ(date::fromMilliseconds(1500), since1970(1.5));
    EXPECT_EQ(date::secondsSince1970(date::fromMilliseconds(1500)), 2);
    EXPECT_EQ(date::millisecondsSince1970(date::fromMilliseconds(1500)), 1500);
    EXPECT_EQ(date::fromMilliseconds(-1), since1970(-0.001));
    EXPECT_NEAR(date::fromMilliseconds(978'307'200'001).timeIntervalSinceReferenceDate(), 0.001, 1e-6);
}

TEST(DatesTest, MillisecondsComeBackAsTheyWere) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> milliseconds(-100'000'000'000'000, 100'000'000'000'000);
    for (int i = 0; i < 10'000; ++i) {
        const auto some = milliseconds(random);
        ASSERT_EQ(date::millisecondsSince1970(date::fromMilliseconds(some)), some);
    }
}

TEST(DatesTest, LargestNumbersHaveDates) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_NEAR(date::fromMilliseconds(most).timeIntervalSince1970(), 9.223372036854775e15, 10);
    EXPECT_NEAR(date::fromMilliseconds(least).timeIntervalSince1970(), -9.223372036854775e15, 10);
    EXPECT_EQ(date::secondsSince1970(since1970(-0x1p63)), least);
    EXPECT_EQ(date::secondsSince1970(since1970(0x1p62)), std::int64_t{1} << 62);
}

TEST(DatesTest, SpanToNowIsPositiveForThePast) {
    const vorlan::testing::WallClock clock(utc({.year = 2024, .month = 3, .day = 5}));
    const auto before = [](double seconds) { return later(Date(), -seconds); };
    EXPECT_EQ(date::second({.from = Date()}), 0);
    EXPECT_EQ(date::second({.from = before(90)}), 90);
    EXPECT_EQ(date::second({.from = before(-90)}), -90);
    EXPECT_EQ(date::second({.from = before(0.5)}), 1) << "halves away from zero";
    EXPECT_EQ(date::second({.from = before(-0.5)}), -1) << "halves away from zero";
    EXPECT_EQ(date::second({.from = before(0.25)}), 0);
    EXPECT_EQ(date::millisecond({.from = before(90)}), 90'000);
    EXPECT_EQ(date::millisecond({.from = before(-0.25)}), -250);
    // 62.5 milliseconds are a sixteenth of a second, which dates keep exactly.
    EXPECT_EQ(date::millisecond({.from = before(0.0625)}), 63) << "halves away from zero";
    EXPECT_EQ(date::millisecond({.from = before(-0.0625)}), -63) << "halves away from zero";
}

TEST(DatesTest, SpanToNowGrowsWithTheClock) {
    vorlan::testing::WallClock clock(utc({.year = 2024, .month = 3, .day = 5}));
    const Date start;
    clock.advance(36h);
    EXPECT_EQ(date::second({.from = start}), 129'600);
    EXPECT_EQ(date::millisecond({.from = start}), 129'600'000);
    clock.advance(-72h);
    EXPECT_EQ(date::second({.from = start}), -129'600);
}

TEST(DatesTest, SpanToNowIsByTheRealClockElsewhere) {
    const Date before;
    const auto passed = date::millisecond({.from = before});
    const auto most = Date().timeIntervalSince(before) * 1000 + 1;
    EXPECT_GE(passed, 0);
    EXPECT_LE(static_cast<double>(passed), most);
}

TEST(DatesTest, AllTimesOfADayHaveOneBeginning) {
    tests::forEachPlace([] {
        const auto midnight = local({.year = 2024, .month = 3, .day = 5});
        EXPECT_EQ(text(midnight), "2024-03-05 00:00:00");
        EXPECT_EQ(date::normalizedDate(midnight), midnight);
        EXPECT_EQ(date::normalizedDate(later(midnight, 12 * timeInterval::hour)), midnight);
        EXPECT_EQ(date::normalizedDate(local({.year = 2024, .month = 3, .day = 5, .hour = 23, .minute = 59})),
                  midnight);
        EXPECT_EQ(date::normalizedDate(later(midnight, timeInterval::day - 1e-6)), midnight);
        EXPECT_EQ(text(date::normalizedDate(later(midnight, -1e-6))), "2024-03-04 00:00:00");
        EXPECT_EQ(text(date::normalizedDate(later(midnight, timeInterval::day))), "2024-03-06 00:00:00");
    });
}

TEST(DatesTest, BeginningIsTheSameWhateverTheCalendar) {
    for (int i = 0; i <= static_cast<int>(Calendar::Identifier::republicOfChina); ++i) {
        SCOPED_TRACE(i);
        const vorlan::testing::UserRegion user({.locale = "en_US",
                                                .timeZone = "Asia/Kathmandu",
                                                .calendar = static_cast<Calendar::Identifier>(i)});
        const auto noon = local({.year = 2024, .month = 3, .day = 5, .hour = 12});
        EXPECT_EQ(text(date::normalizedDate(noon)), "2024-03-05 00:00:00");
        const auto earlier = local({.year = 1925, .month = 12, .day = 31, .hour = 12});
        EXPECT_EQ(text(date::normalizedDate(earlier)), "1925-12-31 00:00:00") << "in a former era of some";
    }
}

TEST(DatesTest, DayWhoseMidnightClocksSkipBeginsLater) {
    const vorlan::testing::UserRegion user({.locale = "en_US", .timeZone = "America/Sao_Paulo"});
    const auto noon = local({.year = 2018, .month = 11, .day = 4, .hour = 12});
    EXPECT_EQ(text(date::normalizedDate(noon)), "2018-11-04 01:00:00");
    EXPECT_EQ(date::normalizedDate(noon), utc({.year = 2018, .month = 11, .day = 4, .hour = 3}));
    EXPECT_EQ(date::normalizedDate(date::normalizedDate(noon)), date::normalizedDate(noon));
}

TEST(DatesTest, DayWhoseMidnightComesTwiceBeginsWithTheFirst) {
    const vorlan::testing::UserRegion user({.locale = "en_US", .timeZone = "America/Havana"});
    const auto first = utc({.year = 2023, .month = 11, .day = 5, .hour = 4});
    for (const double hours : {0.0, 0.5, 1.0, 1.5, 12.0, 24.9})
        EXPECT_EQ(date::normalizedDate(later(first, hours * timeInterval::hour)), first) << hours;
    EXPECT_EQ(date::normalizedDate(later(first, 25 * timeInterval::hour)),
              later(first, 25 * timeInterval::hour));
}

TEST(DatesTest, DayAfterAMissingOneBeginsAtMidnight) {
    const vorlan::testing::UserRegion user({.locale = "en_US", .timeZone = "Pacific/Apia"});
    const auto midnight = utc({.year = 2011, .month = 12, .day = 30, .hour = 10});
    EXPECT_EQ(text(midnight), "2011-12-31 00:00:00");
    EXPECT_EQ(date::normalizedDate(later(midnight, 1)), midnight);
    EXPECT_EQ(text(date::normalizedDate(later(midnight, -1))), "2011-12-29 00:00:00");
}

TEST(DatesTest, BeginningFollowsTheUser) {
    const auto noon = utc({.year = 2024, .month = 3, .day = 5, .hour = 12});
    const auto startIn = [&](const char* timeZone) {
        const vorlan::testing::UserRegion user({.timeZone = timeZone});
        return date::normalizedDate(noon);
    };
    EXPECT_EQ(startIn("UTC"), utc({.year = 2024, .month = 3, .day = 5}));
    EXPECT_EQ(startIn("Europe/Berlin"), utc({.year = 2024, .month = 3, .day = 4, .hour = 23}));
    EXPECT_EQ(startIn("Asia/Kathmandu"), utc({.year = 2024, .month = 3, .day = 4, .hour = 18, .minute = 15}));
}
