// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Throttler.h>

#include "tests/execution/CalendarProvider.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <memory>
#include <utility>

using namespace vorlan;

TEST(ThrottlerDeathTest, TimeSinceTheLastRunThatNoIntegerHoldsStopsTheProcess) {
    constexpr std::numeric_limits<double> number;
    for (const double seconds :
         {number.infinity(), -number.infinity(), number.quiet_NaN(), 1e300, -1e300, 9.3e15, -9.3e15}) {
        Throttler throttler(500, Queue(std::make_shared<CalendarProvider>(Date(seconds))));
        EXPECT_EXIT(throttler.throttle([] {}), ::testing::KilledBySignal(SIGILL), "^$") << seconds;
    }
}

TEST(ThrottlerDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    Throttler throttler(500);
    const Throttler other(std::move(throttler));
    EXPECT_DEATH(throttler.throttle([] {}), // NOLINT(bugprone-use-after-move): that is what is tested
                 "VorlanFoundation/Handle: Fatal error: used after it was moved from");
}
