// SPDX-License-Identifier: Apache-2.0

// Positions whose sum does not fit into 64 bits stop the process.

#include <VorlanFoundation/Extensions/Collections.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <functional>
#include <limits>
#include <ranges>

using namespace vorlan;

TEST(CollectionsDeathTest, SumOfPositionsThatDoesNotFitStopsTheProcess) {
    support::useWorkerThreads();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    const auto numbers = std::views::iota(std::int64_t{0}, most); // takes no memory
    EXPECT_EXIT(collection::indexForInserting(numbers, most, std::less<>()), testing::KilledBySignal(SIGILL),
                "^$");
    EXPECT_EQ(collection::indexForInserting(numbers, 3, std::less<>()), 3) << "no sum of these is too large";
}
