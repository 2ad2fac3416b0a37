// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Logging/Stopwatch.h>

#include "tests/logging/HandStopwatch.h"
#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <limits>
#include <memory>

using namespace vorlan;
using tests::HandStopwatch;

TEST(StopwatchDeathTest, ClockBelowItsStartStopsTheProcess) {
    support::useWorkerThreads();
    const auto clock = std::make_shared<std::uint64_t>(100);
    const HandStopwatch watch(clock);
    *clock = 99;
    EXPECT_EXIT(watch.nanoseconds(), ::testing::KilledBySignal(SIGILL), "^$");
    EXPECT_EXIT(watch.milliseconds(), ::testing::KilledBySignal(SIGILL), "^$");
    EXPECT_EXIT(watch.seconds(), ::testing::KilledBySignal(SIGILL), "^$");
}

TEST(StopwatchDeathTest, TimeThatDoesNotFitBeforeTheDivisionStopsTheProcess) {
    support::useWorkerThreads();
    const auto clock = std::make_shared<std::uint64_t>(0);
    const HandStopwatch watch(clock, {.numer = 4, .denom = 4});
    *clock = std::numeric_limits<std::uint64_t>::max() / 4;
    EXPECT_EQ(watch.nanoseconds(), std::numeric_limits<std::uint64_t>::max() / 4);
    *clock += 1;
    EXPECT_EXIT(watch.nanoseconds(), ::testing::KilledBySignal(SIGILL), "^$");
}

TEST(StopwatchDeathTest, DenominatorOfZeroStopsTheProcess) {
    support::useWorkerThreads();
    const auto clock = std::make_shared<std::uint64_t>(0);
    const HandStopwatch watch(clock, {.numer = 1, .denom = 0});
    EXPECT_EXIT(watch.nanoseconds(), ::testing::KilledBySignal(SIGILL), "^$");
    *clock = 5;
    EXPECT_EXIT(watch.nanoseconds(), ::testing::KilledBySignal(SIGILL), "^$");
}
