// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Date.h>

#include <gtest/gtest.h>

#include <chrono>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(Date, CountsSecondsSinceTheStartOf2001) {
    const std::chrono::sys_days day{std::chrono::year(2001) / 1 / 1};
    EXPECT_EQ(Date(day).timeIntervalSinceReferenceDate(), 0.0);
    EXPECT_EQ(Date(day + 36h + 1500ms).timeIntervalSinceReferenceDate(), 36 * 3600 + 1.5);
    EXPECT_EQ(Date(std::chrono::system_clock::time_point()).timeIntervalSinceReferenceDate(), -978'307'200.0);
}

TEST(Date, WithoutArgumentsIsThePresent) {
    const Date before(std::chrono::system_clock::now());
    const Date present;
    const Date after(std::chrono::system_clock::now());
    EXPECT_LE(before, present);
    EXPECT_LE(present, after);
}

TEST(Date, IntervalIsNegativeWhenTheOtherDateIsLater) {
    EXPECT_EQ(Date(10).timeIntervalSince(Date(7.5)), 2.5);
    EXPECT_EQ(Date(7.5).timeIntervalSince(Date(10)), -2.5);
}

TEST(Date, DistantDatesLieOutsideOfAllOthers) {
    EXPECT_LT(Date::distantPast(), Date(std::chrono::sys_days{std::chrono::year(1800) / 1 / 1}));
    EXPECT_GT(Date::distantFuture(), Date());
    EXPECT_EQ(Date::distantFuture().timeIntervalSinceReferenceDate(), 2000 * 365.2425 * 86'400);
}
