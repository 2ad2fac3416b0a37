// SPDX-License-Identifier: Apache-2.0

// Where there is no object, nothing can be done with it.

#include <VorlanFoundation/Extensions/Then.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

using namespace vorlan;

TEST(ThenDeathTest, NullPointerStopsTheProcess) {
    support::useWorkerThreads();
    EXPECT_EXIT(then(std::shared_ptr<int>(), [](int&) {}), testing::KilledBySignal(SIGABRT),
                "VorlanFoundation/Then: Fatal error: there is no object to call the block with");
}
