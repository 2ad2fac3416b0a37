// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/dates/CalendarTesting.h"

#include <gtest/gtest.h>

using namespace vorlan::tests;

TEST(CalendarDeathTest, WeekdayThatThereIsNotStopsTheProcess) {
    for (const int weekday : {0, 8}) {
        auto calendar = calendarIn("UTC");
        EXPECT_DEATH(calendar.setFirstWeekday(weekday),
                     "VorlanFoundation/Calendar: Fatal error: Weekdays are numbered from 1 to 7");
    }
}

TEST(CalendarDeathTest, WeekOfNoDaysStopsTheProcess) {
    for (const int days : {0, 8}) {
        auto calendar = calendarIn("UTC");
        EXPECT_DEATH(calendar.setMinimumDaysInFirstWeek(days),
                     "VorlanFoundation/Calendar: Fatal error: Weeks have 1 to 7 days");
    }
}
