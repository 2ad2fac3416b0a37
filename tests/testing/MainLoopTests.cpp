// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/MainLoop.h>

#include <VorlanFoundation/Platform/Queue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::MainLoop;

TEST(MainLoop, ServesTheMainQueueUntilTheConditionIsTrue) {
    int count = 0;
    for (int i = 0; i < 3; ++i) Queue::main().asyncAfter(10ms * i, [&] { ++count; });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return count == 3; }, 10s));
}

TEST(MainLoop, ReturnsFalseWhenTheLimitWentByBefore) {
    const auto start = DispatchTime::now();
    EXPECT_FALSE(MainLoop::pumpUntil([] { return false; }, 30ms));
    EXPECT_GE(DispatchTime::now(), start + 30ms);
}

TEST(MainLoop, SeesAConditionThatAnotherThreadMadeTrueWithoutWakingTheLoop) {
    std::atomic<bool> isTrue = false;
    const std::jthread other([&] { isTrue = true; });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return isTrue.load(); }, 10s));
}

TEST(MainLoop, LooksAtTheConditionFirst) {
    EXPECT_TRUE(MainLoop::pumpUntil([] { return true; }, 0s));
}
