// SPDX-License-Identifier: Apache-2.0

// Numbers that do not fit into 64 bits, and dates that are in no calendar, stop the process.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>

using namespace vorlan;

namespace {

class DatesDeathTest : public ::testing::Test {
protected:
    DatesDeathTest() { support::useWorkerThreads(); }
};

using CalendarsDeathTest = DatesDeathTest;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

// How arithmetic without a result ends, and how a date without a day does.
const ::testing::KilledBySignal trapped(SIGILL);
const ::testing::KilledBySignal aborted(SIGABRT);
constexpr auto* silently = "^$";

Date since1970(double seconds) {
    return Date::fromTimeIntervalSince1970(seconds);
}

} // namespace

TEST_F(DatesDeathTest, MillisecondsThatDoNotFitStopTheProcess) {
    EXPECT_EXIT(date::millisecondsSince1970(since1970(0x1p63 / 1000 + 1)), trapped, silently);
    EXPECT_EXIT(date::millisecondsSince1970(since1970(-0x1p63 / 1000 - 5)), trapped, silently);
    EXPECT_EXIT(date::millisecondsSince1970(Date(1e308)), trapped, silently);
    EXPECT_EXIT(date::millisecondsSince1970(Date(infinity)), trapped, silently);
    EXPECT_EXIT(date::millisecondsSince1970(Date(-infinity)), trapped, silently);
    EXPECT_EXIT(date::millisecondsSince1970(Date(noNumber)), trapped, silently);
}

TEST_F(DatesDeathTest, SecondsThatDoNotFitStopTheProcess) {
    EXPECT_EXIT(date::secondsSince1970(since1970(0x1p63)), trapped, silently);
    EXPECT_EXIT(date::secondsSince1970(since1970(-0x1p63 * 1.01)), trapped, silently);
    EXPECT_EXIT(date::secondsSince1970(Date(infinity)), trapped, silently);
    EXPECT_EXIT(date::secondsSince1970(Date(-infinity)), trapped, silently);
    EXPECT_EXIT(date::secondsSince1970(Date(noNumber)), trapped, silently);
}

TEST_F(DatesDeathTest, SpanToNowThatDoesNotFitStopsTheProcess) {
    EXPECT_EXIT(date::second({.from = Date(-1e19)}), trapped, silently);
    EXPECT_EXIT(date::second({.from = Date(infinity)}), trapped, silently);
    EXPECT_EXIT(date::second({.from = Date(noNumber)}), trapped, silently);
    EXPECT_EXIT(date::millisecond({.from = Date(-1e16)}), trapped, silently);
    EXPECT_EXIT(date::millisecond({.from = Date(-infinity)}), trapped, silently);
    EXPECT_EXIT(date::millisecond({.from = Date(noNumber)}), trapped, silently);
}

TEST_F(DatesDeathTest, DateInNoCalendarHasNoDay) {
    constexpr auto* message =
        "VorlanFoundation/Date: Fatal error: the date is in no calendar, so it has no day";
    EXPECT_EXIT(date::normalizedDate(Date(infinity)), aborted, message);
    EXPECT_EXIT(date::normalizedDate(Date(-infinity)), aborted, message);
    EXPECT_EXIT(date::normalizedDate(Date(noNumber)), aborted, message);
    EXPECT_EXIT(date::normalizedDate(Date(1e18)), aborted, message);
}

TEST_F(CalendarsDeathTest, NoDaysElapseSinceADateInNoCalendar) {
    constexpr auto* message = "the date is in no calendar, so it has no day";
    const auto calendar = Calendar::current();
    EXPECT_EXIT(calendar::daysElapsedSinceDate(calendar, Date(noNumber)), aborted, message);
    EXPECT_EXIT(calendar::daysElapsedSinceDate(calendar, Date(infinity)), aborted, message);
    const vorlan::testing::WallClock clock{Date(infinity)};
    EXPECT_EXIT(calendar::daysElapsedSinceDate(calendar, Date(0)), aborted, message) << "nor until one";
}

TEST_F(CalendarsDeathTest, PeriodOfNoDaysStopsTheProcess) {
    EXPECT_EXIT(calendar::index({.ofDay = Date(0), .inPeriod = 0}), trapped, silently);
    EXPECT_EXIT(calendar::index({.ofDay = Date(noNumber), .inPeriod = 0}), trapped, silently);
}
