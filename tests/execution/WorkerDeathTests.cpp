// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/Worker.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace vorlan;

TEST(WorkerDeathTest, RunBlockWithoutABlockStopsTheProcess) {
    EXPECT_DEATH(std::make_shared<Worker>()->runBlock(),
                 "VorlanFoundation/Worker: Fatal error: there is no block to run");
}

TEST(WorkerDeathTest, RunloopWithoutAThreadStopsTheProcess) {
    EXPECT_DEATH(std::make_shared<Worker>()->runloop(),
                 "VorlanFoundation/Worker: Fatal error: the run loop was asked for without a thread");
}

TEST(WorkerDeathTest, ExceptionOfTheBlockStopsTheProcessWithItsText) {
    const auto fail = [] {
        std::make_shared<Worker>()->start([] { throw std::runtime_error("no connection"); });
        support::waitForEver();
    };
    EXPECT_DEATH(fail(), "an exception left work performed on a run loop: no connection");
}
