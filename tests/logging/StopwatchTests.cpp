// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Logging/Stopwatch.h>
#include <VorlanFoundation/Platform/Clocks.h>

#include "tests/logging/HandStopwatch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <random>
#include <utility>

using namespace vorlan;
using tests::HandStopwatch;

namespace {

std::shared_ptr<std::uint64_t> clockAt(std::uint64_t ticks) {
    return std::make_shared<std::uint64_t>(ticks);
}

// One whose time is what the test says.
class FixedStopwatch : public Stopwatch {
public:
    explicit FixedStopwatch(std::uint64_t time) : time_(time) {}
    void reset() override { time_ = 0; }
    std::uint64_t startTime() const override { return 0; }
    std::uint64_t nanoseconds() const override { return time_; }

private:
    std::uint64_t time_;
};

std::uint64_t readClock(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

template <class Watch>
void expectStartFromClock(clockid_t clock) {
    const auto before = readClock(clock);
    Watch watch;
    const auto after = readClock(clock);
    EXPECT_LE(before, watch.startTime());
    EXPECT_LE(watch.startTime(), after);
    watch.reset();
    EXPECT_GE(watch.startTime(), after);
}

template <class Watch>
class EveryStopwatchTest : public ::testing::Test {};

using All = ::testing::Types<AbsoluteStopwatch, ContinuousStopwatch, ApproximateStopwatch,
                             ContinuousApproximateStopwatch>;
TYPED_TEST_SUITE(EveryStopwatchTest, All);

} // namespace

TEST(StopwatchTest, TicksAreNanosecondsAtOneToOne) {
    const auto clock = clockAt(1000);
    const HandStopwatch watch(clock);
    EXPECT_EQ(watch.startTime(), 1000U);
    EXPECT_EQ(watch.nanoseconds(), 0U);
    *clock = 1024;
    EXPECT_EQ(watch.nanoseconds(), 24U);
    EXPECT_EQ(watch.startTime(), 1000U);
}

TEST(StopwatchTest, TicksAreMultipliedByTheRatio) {
    const auto clock = clockAt(500);
    const HandStopwatch watch(clock, {.numer = 125, .denom = 3});
    EXPECT_EQ(watch.startTime(), 500U) << "the start is in ticks";
    *clock += 24;
    EXPECT_EQ(watch.nanoseconds(), 1000U);
}

TEST(StopwatchTest, QuotientIsTruncatedAfterTheMultiplication) {
    const auto clock = clockAt(0);
    const HandStopwatch watch(clock, {.numer = 125, .denom = 3});
    *clock = 1;
    EXPECT_EQ(watch.nanoseconds(), 41U);
    *clock = 2;
    EXPECT_EQ(watch.nanoseconds(), 83U) << "dividing first would give 82";
    const HandStopwatch slow(clock, {.numer = 1, .denom = 3});
    *clock += 2;
    EXPECT_EQ(slow.nanoseconds(), 0U);
    *clock += 1;
    EXPECT_EQ(slow.nanoseconds(), 1U);
}

TEST(StopwatchTest, RatioMayBeAsLargeAsItsTypes) {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    const auto clock = clockAt(0);
    const HandStopwatch watch(clock, {.numer = most, .denom = 1});
    *clock = most;
    EXPECT_EQ(watch.nanoseconds(), std::uint64_t{most} * most);
    const HandStopwatch slow(clock, {.numer = most, .denom = most});
    *clock += 7;
    EXPECT_EQ(slow.nanoseconds(), 7U);
}

TEST(StopwatchTest, AllTicksCanBeCounted) {
    const auto clock = clockAt(0);
    const HandStopwatch watch(clock);
    *clock = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(watch.nanoseconds(), std::numeric_limits<std::uint64_t>::max());
}

TEST(StopwatchTest, ResetStartsAnew) {
    const auto clock = clockAt(10);
    HandStopwatch watch(clock);
    *clock = 50;
    EXPECT_EQ(watch.nanoseconds(), 40U);
    watch.reset();
    EXPECT_EQ(watch.startTime(), 50U);
    EXPECT_EQ(watch.nanoseconds(), 0U);
    *clock = 57;
    EXPECT_EQ(watch.nanoseconds(), 7U);
}

TEST(StopwatchTest, ResetMayGoBackWithTheClock) {
    const auto clock = clockAt(100);
    HandStopwatch watch(clock);
    *clock = 5;
    watch.reset();
    *clock = 6;
    EXPECT_EQ(watch.nanoseconds(), 1U);
}

TEST(StopwatchTest, ClockIsReadOnceForEachAnswer) {
    const auto clock = clockAt(0);
    struct Counting : DefaultStopwatch {
        explicit Counting(std::shared_ptr<std::uint64_t> readings)
            : DefaultStopwatch([readings] { return ++*readings; }) {}
    };
    Counting watch(clock);
    EXPECT_EQ(*clock, 1U) << "when it was made";
    EXPECT_EQ(watch.startTime(), 1U);
    EXPECT_EQ(*clock, 1U) << "the start is kept";
    EXPECT_EQ(watch.nanoseconds(), 1U);
    EXPECT_EQ(watch.milliseconds(), 2 / 1e6);
    EXPECT_EQ(watch.seconds(), 3 / 1e9);
    watch.reset();
    EXPECT_EQ(*clock, 5U);
}

TEST(StopwatchTest, MillisecondsAndSecondsAreTheExactQuotients) {
    const auto check = [](std::uint64_t time) {
        const FixedStopwatch watch(time);
        EXPECT_EQ(watch.milliseconds(), static_cast<double>(time) / 1000000.0) << time;
        EXPECT_EQ(watch.seconds(), static_cast<double>(time) / 1000000000.0) << time;
    };
    for (const std::uint64_t time : {0ULL, 1ULL, 999'999ULL, 1'500'000ULL, 1ULL << 53, (1ULL << 53) + 1,
                                     1ULL << 63, 18'446'744'073'709'551'615ULL})
        check(time);
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int i = 0; i < 1000; ++i) check(random() >> (random() % 64));
}

TEST(StopwatchTest, LargeTimesAreNotNegative) {
    const FixedStopwatch watch(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(watch.seconds(), 18446744073.709551616);
    EXPECT_EQ(watch.milliseconds(), 18446744073709.551616);
}

TEST(StopwatchTest, SystemClocksTickInNanoseconds) {
    EXPECT_EQ(Timebase::system().numer, 1U);
    EXPECT_EQ(Timebase::system().denom, 1U);
}

TEST(StopwatchTest, EachClassReadsItsClock) {
    expectStartFromClock<AbsoluteStopwatch>(CLOCK_MONOTONIC);
    expectStartFromClock<ContinuousStopwatch>(CLOCK_BOOTTIME);
    expectStartFromClock<ApproximateStopwatch>(CLOCK_MONOTONIC_COARSE);
    expectStartFromClock<ContinuousApproximateStopwatch>(CLOCK_BOOTTIME);
}

TEST(StopwatchTest, ContinuousOneCountsAtLeastAsMuchAsTheAbsoluteOne) {
    const ContinuousStopwatch continuous; // started before, and read after
    const AbsoluteStopwatch absolute;
    for (int i = 0; i < 1000; ++i) {
        const auto less = absolute.nanoseconds();
        EXPECT_LE(less, continuous.nanoseconds());
    }
}

TYPED_TEST(EveryStopwatchTest, NeverGoesBack) {
    const TypeParam watch;
    std::uint64_t last = 0;
    for (int i = 0; i < 10'000; ++i) {
        const auto now = watch.nanoseconds();
        ASSERT_GE(now, last);
        last = now;
    }
}

TYPED_TEST(EveryStopwatchTest, GoesOn) {
    const TypeParam watch;
    const auto deadline = clocks::monotonic() + 10'000'000'000;
    while (watch.nanoseconds() == 0 && clocks::monotonic() < deadline) {}
    EXPECT_GT(watch.nanoseconds(), 0U);
    EXPECT_GT(watch.seconds(), 0.0);
}

TYPED_TEST(EveryStopwatchTest, AnswersOfOneMomentAgree) {
    const TypeParam watch;
    const auto before = static_cast<double>(watch.nanoseconds());
    const auto milliseconds = watch.milliseconds();
    const auto seconds = watch.seconds();
    const auto after = static_cast<double>(watch.nanoseconds());
    EXPECT_LE(before / 1e6, milliseconds);
    EXPECT_LE(milliseconds, after / 1e6);
    EXPECT_LE(before / 1e9, seconds);
    EXPECT_LE(seconds, after / 1e9);
}
