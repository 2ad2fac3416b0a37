// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/InfiniteTimer.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <utility>

using namespace vorlan;

TEST(InfiniteTimerDeathTest, IntervalThatIsNotFiniteOrTooLongStopsTheProcess) {
    support::useWorkerThreads();
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
    for (const double seconds : {infinity, nan, 9.3e9, 1e300})
        EXPECT_EXIT(InfiniteTimer({.deadline = 0, .pollInterval = seconds}),
                    ::testing::KilledBySignal(SIGILL), "^$")
            << seconds;
}

TEST(InfiniteTimerDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1});
    const InfiniteTimer other(std::move(timer));
    EXPECT_DEATH(timer.start([] {}), // NOLINT(bugprone-use-after-move): that is what is tested
                 "VorlanFoundation/Handle: Fatal error: used after it was moved from");
}
