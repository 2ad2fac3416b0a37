// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DispatchTime.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <type_traits>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(DispatchTimeInterval, IsMadeFromTheFourUnits) {
    EXPECT_EQ(DispatchTimeInterval(2s).nanoseconds(), 2'000'000'000);
    EXPECT_EQ(DispatchTimeInterval(2ms).nanoseconds(), 2'000'000);
    EXPECT_EQ(DispatchTimeInterval(2us).nanoseconds(), 2'000);
    EXPECT_EQ(DispatchTimeInterval(2ns).nanoseconds(), 2);
    EXPECT_EQ(DispatchTimeInterval(-3ms).nanoseconds(), -3'000'000);
}

TEST(DispatchTimeInterval, IsNotMadeFromOtherUnitsFractionsOrNumbers) {
    static_assert(!std::is_constructible_v<DispatchTimeInterval, std::chrono::minutes>);
    static_assert(!std::is_constructible_v<DispatchTimeInterval, std::chrono::duration<double>>);
    static_assert(!std::is_constructible_v<DispatchTimeInterval, int>);
}

TEST(DispatchTimeInterval, EqualSpansAreEqualInWhateverUnit) {
    EXPECT_EQ(DispatchTimeInterval(1s), DispatchTimeInterval(1000ms));
    EXPECT_NE(DispatchTimeInterval(1s), DispatchTimeInterval(1001ms));
    EXPECT_EQ(DispatchTimeInterval::never(), DispatchTimeInterval::never());
    EXPECT_NE(DispatchTimeInterval::never(), DispatchTimeInterval(std::chrono::nanoseconds::max()));
}

TEST(DispatchTimeInterval, SpansThatAreTooLongAreCut) {
    EXPECT_EQ(DispatchTimeInterval(std::chrono::seconds::max()).nanoseconds(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(DispatchTimeInterval(std::chrono::seconds::min()).nanoseconds(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(DispatchTimeInterval(std::chrono::duration<std::uint64_t>(~0ULL)).nanoseconds(),
              std::numeric_limits<std::int64_t>::max());
}

TEST(DispatchTime, AddingStopsAtTheEndsOfTheClock) {
    const DispatchTime time(1'000);
    EXPECT_EQ((time + 1us).uptimeNanoseconds(), 2'000U);
    EXPECT_EQ((time + -400ns).uptimeNanoseconds(), 600U);
    EXPECT_EQ((time + -1s).uptimeNanoseconds(), 0U);
    EXPECT_EQ((time + std::chrono::seconds::min()).uptimeNanoseconds(), 0U);
    EXPECT_EQ(time + DispatchTimeInterval::never(), DispatchTime::distantFuture());
    EXPECT_EQ(DispatchTime::distantFuture() + -1s, DispatchTime::distantFuture());
    const auto late = time + std::chrono::seconds::max();
    EXPECT_EQ(late + std::chrono::seconds::max() + std::chrono::seconds::max(),
              DispatchTime::distantFuture());
}

TEST(DispatchTime, SubtractingGivesTheSpanBetween) {
    EXPECT_EQ(DispatchTime(3'000) - DispatchTime(1'000), DispatchTimeInterval(2us));
    EXPECT_EQ(DispatchTime(1'000) - DispatchTime(3'000), DispatchTimeInterval(-2us));
    EXPECT_TRUE((DispatchTime::distantFuture() - DispatchTime(1)).isNever());
}

TEST(DispatchTime, ThePresentMovesForward) {
    const auto before = DispatchTime::now();
    const auto after = DispatchTime::now();
    EXPECT_LE(before, after);
    EXPECT_LT(after, DispatchTime::distantFuture());
}
