// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/WallClock.h>

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/DispatchTime.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;

namespace {

// The same as the system's to an hour, which no test takes.
bool isPresent(Date date) {
    const Date system(std::chrono::system_clock::now());
    return date.timeIntervalSince(system) > -3600 && date.timeIntervalSince(system) < 3600;
}

constexpr Date noon(100'000.25);

} // namespace

TEST(WallClockTest, PresentIsWhatItSays) {
    const WallClock clock(noon);
    EXPECT_EQ(Date(), noon);
    EXPECT_EQ(Date(), noon);
    EXPECT_FALSE(isPresent(Date()));
}

TEST(WallClockTest, PresentIsTheSystemsAgainWhenItIsGone) {
    EXPECT_TRUE(isPresent(Date()));
    std::optional<WallClock> clock(noon);
    EXPECT_FALSE(isPresent(Date()));
    clock.reset();
    EXPECT_TRUE(isPresent(Date()));
}

TEST(WallClockTest, CanBeSetAndPutForwardAndBack) {
    WallClock clock(noon);
    clock.set(Date(5));
    EXPECT_EQ(Date(), Date(5));
    clock.advance(24h);
    EXPECT_EQ(Date(), Date(86'405));
    clock.advance(-24h);
    clock.advance(250ms);
    EXPECT_EQ(Date(), Date(5.25));
}

TEST(WallClockTest, InnerOneGivesBackWhatTheOuterOneShows) {
    WallClock outer(noon);
    {
        WallClock inner(Date(7));
        EXPECT_EQ(Date(), Date(7));
        inner.advance(1s);
        EXPECT_EQ(Date(), Date(8));
    }
    EXPECT_EQ(Date(), noon);
    outer.advance(1s);
    EXPECT_EQ(Date(), Date(noon.timeIntervalSinceReferenceDate() + 1));
}

TEST(WallClockTest, InnerOneGivesBackWhatTheOuterOneWasSetTo) {
    WallClock outer(noon);
    outer.set(Date(9));
    { const WallClock inner(Date(7)); }
    EXPECT_EQ(Date(), Date(9));
}

TEST(WallClockTest, DatesThatAreMadeOfNumbersAreNotTouched) {
    const WallClock clock(noon);
    EXPECT_EQ(Date(3).timeIntervalSinceReferenceDate(), 3);
    EXPECT_TRUE(isPresent(Date(std::chrono::system_clock::now())));
}

TEST(WallClockTest, ClocksThatMeasureSpansAreNotTouched) {
    const auto before = DispatchTime::now();
    const auto steady = std::chrono::steady_clock::now();
    const WallClock clock(Date(1e10));
    const auto after = DispatchTime::now();
    EXPECT_GE(after, before);
    EXPECT_LT(after, before + 3600s);
    EXPECT_LT(std::chrono::steady_clock::now() - steady, 1h);
}

TEST(WallClockTest, DayIsThatOfTheClock) {
    const UserRegion user({.locale = "en_US", .timeZone = "UTC"});
    const Date now(86'400 * 3650.0 + 43'200);
    WallClock clock(now);
    EXPECT_TRUE(calendar::isToday(now));
    clock.advance(12h - 1s);
    EXPECT_TRUE(calendar::isToday(now));
    clock.advance(1s);
    EXPECT_FALSE(calendar::isToday(now));
    EXPECT_EQ(calendar::daysElapsedSinceDate(Calendar::current(), now), 1);
    EXPECT_EQ(date::second({.from = now}), 43'200);
    EXPECT_EQ(date::millisecond({.from = now}), 43'200'000);
}

TEST(WallClockStressTest, EveryThreadSeesWhatWasSetOrTheSystems) {
    std::atomic<bool> isDone = false;
    std::atomic<int> oddities = 0;
    std::vector<std::jthread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            do {
                const Date date;
                if (date != Date(1) && date != Date(2) && date != Date(3) && !isPresent(date)) ++oddities;
            } while (!isDone);
        });
    for (int i = 0; i < 5000; ++i) {
        WallClock clock(Date(1));
        clock.set(Date(2));
        clock.advance(1s);
    }
    isDone = true;
    readers.clear();
    EXPECT_EQ(oddities, 0);
    EXPECT_TRUE(isPresent(Date()));
}
