// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/InfiniteTimer.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <latch>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using vorlan::testing::ManualQueue;

namespace {

// Counts the ticks of a timer on a clock that is turned by hand.
struct InfiniteTimerByHand : ::testing::Test {
    std::function<void()> count() {
        return [this] { ++ticks; };
    }

    ManualQueue queue;
    int ticks = 0;
};

} // namespace

TEST_F(InfiniteTimerByHand, WithDeadlineZeroTicksAtOnceAndThenAtEveryInterval) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.5}, queue);
    timer.start(count());
    EXPECT_EQ(ticks, 0);
    queue.runPending();
    EXPECT_EQ(ticks, 1);
    queue.advance(499ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 2);
    queue.advance(5s);
    EXPECT_EQ(ticks, 12);
}

TEST_F(InfiniteTimerByHand, DeadlineIsTheTimeOfTheFirstTickInWholeSecondsFromItsMaking) {
    InfiniteTimer timer({.deadline = 2, .pollInterval = 10}, queue);
    queue.advance(500ms);
    timer.start(count());
    queue.advance(1499ms);
    EXPECT_EQ(ticks, 0);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(10s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, IntervalOfZeroOrLessMakesOneTickAtTheDeadline) {
    for (const double interval : {0.0, -0.0, -1.0, -1e300}) {
        ticks = 0;
        InfiniteTimer timer({.deadline = 1, .pollInterval = interval}, queue);
        timer.start(count());
        queue.advance(999ms);
        EXPECT_EQ(ticks, 0);
        queue.advance(1ms);
        EXPECT_EQ(ticks, 1);
        queue.advance(3600s);
        EXPECT_EQ(ticks, 1) << interval;
    }
}

TEST_F(InfiniteTimerByHand, DeadlineInThePastMeansAtOnce) {
    InfiniteTimer timer({.deadline = -5, .pollInterval = 0}, queue);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, StartedAfterItsDeadlineTicksAtOnceAndKeepsToItsSchedule) {
    InfiniteTimer timer({.deadline = 1, .pollInterval = 1}, queue);
    queue.advance(3500ms);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
    queue.advance(499ms);
    EXPECT_EQ(ticks, 1);
    queue.advance(1ms);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, SecondStartReplacesTheTickAndDoesNotSpeedUp) {
    int later = 0;
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    queue.runPending();
    timer.start([&] { ++later; });
    queue.advance(10s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(later, 10);
}

TEST_F(InfiniteTimerByHand, ReplacedTickIsLetGoAtOnce) {
    const auto value = std::make_shared<int>(1);
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start([value] {});
    EXPECT_EQ(value.use_count(), 2);
    timer.start(count());
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, StoppedTimerDoesNotTickAndKeepsItsSchedule) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    queue.runPending();
    timer.stop();
    queue.advance(2500ms);
    EXPECT_EQ(ticks, 1);
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 2) << "what fell due meanwhile is joined into one tick";
    queue.advance(500ms);
    EXPECT_EQ(ticks, 3);
}

TEST_F(InfiniteTimerByHand, StopOfANeverStartedTimerDoesNothing) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.stop();
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, StopTwiceInARowSuspendsOnlyOnce) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start(count());
    timer.stop();
    timer.stop();
    timer.start(count());
    queue.runPending();
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, NoTickComesAfterTheTimerWasDropped) {
    {
        InfiniteTimer stopped({.deadline = 0, .pollInterval = 1}, queue);
        InfiniteTimer running({.deadline = 0, .pollInterval = 1}, queue);
        const InfiniteTimer never({.deadline = 0, .pollInterval = 1}, queue);
        stopped.start(count());
        stopped.stop();
        running.start(count());
    }
    queue.advance(10s);
    EXPECT_EQ(ticks, 0);
}

TEST_F(InfiniteTimerByHand, DroppingLetsGoOfTheTick) {
    const auto value = std::make_shared<int>(1);
    std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 1.0}, queue);
    timer->start([value] {});
    timer.reset();
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, TickMayDropItsTimer) {
    std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 1.0}, queue);
    const auto value = std::make_shared<int>(1);
    timer->start([&, value] {
        timer.reset();
        ticks += *value; // What the running tick holds is still there.
    });
    queue.advance(10s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(InfiniteTimerByHand, TickMayStopAndReplaceItself) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start([&] {
        timer.stop();
        timer.start(count());
    });
    queue.advance(3s);
    EXPECT_EQ(ticks, 3);
}

TEST_F(InfiniteTimerByHand, MovedTimerGoesOnAndAssigningDropsTheOneThatWasThere) {
    int dropped = 0;
    InfiniteTimer first({.deadline = 0, .pollInterval = 1}, queue);
    first.start(count());
    InfiniteTimer second(std::move(first));
    queue.advance(1s);
    EXPECT_EQ(ticks, 2);
    InfiniteTimer third({.deadline = 1, .pollInterval = 1}, queue);
    third.start([&] { ++dropped; });
    third = std::move(second);
    queue.advance(5s);
    EXPECT_EQ(ticks, 7);
    EXPECT_EQ(dropped, 0);
}

TEST_F(InfiniteTimerByHand, IsDrivenThroughTickTockableAlone) {
    const std::unique_ptr<TickTockable> timer =
        std::make_unique<InfiniteTimer>(InfiniteTimer::Schedule{.deadline = 0, .pollInterval = 1}, queue);
    timer->start(count());
    queue.advance(1s);
    timer->stop();
    queue.advance(10s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(InfiniteTimerByHand, EmptyTickIsNotCalled) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1}, queue);
    timer.start({});
    queue.advance(2s);
    timer.start(count());
    queue.advance(1s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(InfiniteTimerByHand, IntervalShorterThanTheClockCanTellDoesNotTrap) {
    InfiniteTimer timer({.deadline = 0, .pollInterval = 1e-12}, queue);
    timer.start(count());
    queue.advance(5ns);
    EXPECT_EQ(ticks, 6);
}

TEST(InfiniteTimerSmoke, TicksInTheBackgroundOneAtATimeAndNeverEarly) {
    Inbox<std::pair<bool, DispatchTime>> ticks;
    const auto start = DispatchTime::now();
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.02});
    timer.start([&] { ticks.put({Thread::isMainThread(), DispatchTime::now()}); });
    for (int i = 0; i < 5; ++i) {
        const auto tick = ticks.take();
        ASSERT_TRUE(tick);
        EXPECT_FALSE(tick->first);
        EXPECT_GE(tick->second, start + std::chrono::milliseconds(20 * i));
    }
}

TEST(InfiniteTimerSmoke, DroppingWaitsForARunningTickOfAnotherThread) {
    std::latch isTicking(1);
    std::latch mayEnd(1);
    std::atomic<bool> hasEnded = false;
    std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 0.0});
    timer->start([&] {
        isTicking.count_down();
        mayEnd.wait();
        hasEnded = true;
    });
    isTicking.wait();
    const std::jthread releaser([&] { mayEnd.count_down(); });
    timer.reset();
    EXPECT_TRUE(hasEnded);
}

TEST(InfiniteTimerSmoke, WhatATickRefersToMayBeFreedOnTheLineAfterTheDrop) {
    for (int round = 0; round < 2'000; ++round) {
        auto value = std::make_unique<std::atomic<int>>(0);
        std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 0.00002});
        timer->start([&counter = *value] { ++counter; });
        if (round % 4 == 0)
            while (*value == 0) std::this_thread::yield();
        if (round % 3 == 0) timer->stop();
        timer.reset();
        value.reset();
    }
}

TEST(InfiniteTimerSmoke, StartsAndStopsFromManyThreadsInAnyOrderDoNotTrap) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::atomic<int> ticks = 0;
    {
        InfiniteTimer timer({.deadline = 0, .pollInterval = 0.00005});
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                std::minstd_rand random(seed + t);
                for (int i = 0; i < 2'000; ++i) {
                    if (random() % 2 == 0) {
                        timer.start([&] { ++ticks; });
                    } else {
                        timer.stop();
                    }
                }
            });
        threads.clear();
        timer.start([&] { ++ticks; });
        const int before = ticks;
        while (ticks == before) std::this_thread::yield();
    }
    const int atDrop = ticks;
    Inbox<int> later;
    Queue::global(QualityOfService::userInitiated).asyncAfter(5ms, [&] { later.put(ticks); });
    EXPECT_EQ(later.take(), atDrop);
}
