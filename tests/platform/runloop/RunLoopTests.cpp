// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/RunLoop.h>

#include <VorlanFoundation/Platform/Queue.h>
#include <VorlanFoundation/Platform/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(RunLoop, ServesTheMainQueueUntilItIsStoppedAndReturnsTheExitStatus) {
    bool wasOnMainThread = false;
    const std::jthread other([&] {
        Queue::main().async([&] { wasOnMainThread = Thread::isMainThread(); });
        Queue::main().async([] { RunLoop::main().stop(7); });
    });
    EXPECT_EQ(RunLoop::main().run(), 7);
    EXPECT_TRUE(wasOnMainThread);
}

TEST(RunLoop, StopFromAnotherThreadEndsAnIdleLoop) {
    const std::jthread other([] { RunLoop::main().stop(3); });
    EXPECT_EQ(RunLoop::main().run(), 3);
}

TEST(RunLoop, StopThatCameBeforeIsTakenAsTheAnswer) {
    RunLoop::main().stop(5);
    EXPECT_EQ(RunLoop::main().run(), 5);
}

TEST(RunLoop, StopEndsTheInnermostRun) {
    int inner = 0;
    // A block that turns the loop again, as a modal dialog does.
    Queue::main().async([&] {
        const std::jthread other([] { RunLoop::main().stop(1); });
        inner = RunLoop::main().run();
        RunLoop::main().stop(2);
    });
    EXPECT_EQ(RunLoop::main().run(), 2);
    EXPECT_EQ(inner, 1);
}

TEST(RunLoop, RunOnceReturnsFalseWhenNothingHappenedUntilTheDeadline) {
    while (RunLoop::main().runOnce(DispatchTime::now())) {}
    const auto deadline = DispatchTime::now() + 30ms;
    EXPECT_FALSE(RunLoop::main().runOnce(deadline));
    EXPECT_GE(DispatchTime::now(), deadline);
}

TEST(RunLoop, RunOnceReturnsTrueWhenSomethingWasHandled) {
    bool hasRun = false;
    Queue::main().async([&] { hasRun = true; });
    EXPECT_TRUE(RunLoop::main().runOnce(DispatchTime::now() + 10s));
    EXPECT_TRUE(hasRun);
}

TEST(RunLoop, WakeUpEndsAWaitingRunOnce) {
    while (RunLoop::main().runOnce(DispatchTime::now())) {}
    const std::jthread other([] { RunLoop::main().wakeUp(); });
    RunLoop::main().runOnce(DispatchTime::distantFuture());
}

TEST(RunLoop, BlocksOfTheMainQueueAreNotRunFromWithinABlockOfTheMainQueue) {
    std::atomic<bool> isOutside = false;
    bool secondRanOutside = false;
    bool isDone = false;
    Queue::main().async([&] {
        Queue::main().async([&] {
            secondRanOutside = isOutside;
            isDone = true;
        });
        RunLoop::main().runOnce(DispatchTime::now() + 20ms);
        isOutside = true;
    });
    const auto deadline = DispatchTime::now() + 10s;
    while (!isDone && DispatchTime::now() < deadline) RunLoop::main().runOnce(deadline);
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(secondRanOutside);
}

TEST(RunLoopDeathTest, TurningItFromAnotherThreadStopsTheProcess) {
    const auto elsewhere = [](void (*call)()) { std::jthread(call).join(); };
    EXPECT_DEATH(elsewhere([] { RunLoop::main().run(); }),
                 "VorlanFoundation/RunLoop: Fatal error: RunLoop::run is for the main thread only");
    EXPECT_DEATH(elsewhere([] { RunLoop::main().runOnce(DispatchTime::now()); }),
                 "VorlanFoundation/RunLoop: Fatal error: RunLoop::runOnce is for the main thread only");
    EXPECT_DEATH(
        elsewhere([] { RunLoop::drainMainQueue(); }),
        "VorlanFoundation/RunLoop: Fatal error: RunLoop::drainMainQueue is for the main thread only");
}
