// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/BatchItemsTrottler.h>
#include <VorlanFoundation/Execution/Debounce.h>
#include <VorlanFoundation/Execution/Sampler.h>

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <chrono>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::ManualQueue;

namespace {
constexpr auto message = "VorlanFoundation/Handle: Fatal error: used after it was moved from";
}

// NOLINTBEGIN(bugprone-use-after-move): that is what is tested
TEST(SamplerDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    Sampler sampler(100ms, ManualQueue());
    const Sampler other(std::move(sampler));
    EXPECT_DEATH(sampler.sample([] {}), message);
    EXPECT_DEATH(static_cast<void>(sampler.delay()), message);
}

TEST(DebounceDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    auto function = debounce<int>(100, ManualQueue(), [](int) {});
    auto action = debounce(100, ManualQueue(), [] {});
    const auto otherFunction = std::move(function);
    const auto otherAction = std::move(action);
    EXPECT_DEATH(function(1), message);
    EXPECT_DEATH(action(), message);
}

TEST(BatchItemsTrottlerDeathTest, UseAfterMoveStopsTheProcessWithAMessage) {
    BatchItemsTrottler<int> batcher(100ms, ManualQueue(), [](const std::vector<int>&) {});
    const auto other = std::move(batcher);
    EXPECT_DEATH(batcher.batch(1), message);
    EXPECT_DEATH(batcher(1), message);
    EXPECT_DEATH(static_cast<void>(batcher.delay()), message);
}
// NOLINTEND(bugprone-use-after-move)
