// SPDX-License-Identifier: Apache-2.0

// Numbers of pages that do not fit into 64 bits stop the process.

#include <VorlanFoundation/Extensions/Pager.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <limits>

using namespace vorlan;

namespace {

class PagerDeathTest : public ::testing::Test {
protected:
    PagerDeathTest() { support::useWorkerThreads(); }

    Pager<int> pager_{1, 2, 3};
    const ::testing::KilledBySignal trapped_{SIGILL};
};

} // namespace

TEST_F(PagerDeathTest, NoPageFollowsTheGreatestNumber) {
    pager_.setCurrentPage(std::numeric_limits<std::int64_t>::max());
    EXPECT_EXIT(pager_.makeNext(), trapped_, "^$");
    EXPECT_EXIT(pager_.donePercentage(), trapped_, "^$");
}

TEST_F(PagerDeathTest, NoPageIsBeforeTheLeastNumber) {
    pager_.setCurrentPage(std::numeric_limits<std::int64_t>::min());
    EXPECT_EXIT(pager_.makePrevious(), trapped_, "^$");
}
