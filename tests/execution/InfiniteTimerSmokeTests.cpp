// SPDX-License-Identifier: Apache-2.0

// The repeating timer on the real clock and between threads. Bounds are lower ones only: a busy machine may
// be late.

#include <VorlanFoundation/Execution/InfiniteTimer.h>

#include "tests/execution/Dawdle.h"
#include "tests/support/Inbox.h"

#include <VorlanFoundation/Platform/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <latch>
#include <memory>
#include <optional>
#include <random>
#include <semaphore>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

// A timer whose one tick lasts until it is told to end, and whether something returned before that.
struct InfiniteTimerWithALongTick : ::testing::Test {
    InfiniteTimerWithALongTick() {
        timer->start([this] {
            isTicking.count_down();
            isAboutToDrop.wait();
            returnedDuringTheTick = hasReturned.try_acquire_for(100ms);
            hasEnded = true;
        });
        isTicking.wait();
    }

    void expectToWait(const std::function<void()>& drop) {
        std::jthread dropper([&] {
            isAboutToDrop.count_down();
            drop();
            EXPECT_TRUE(hasEnded);
            hasReturned.release();
        });
        dropper.join();
        EXPECT_FALSE(returnedDuringTheTick);
    }

    std::latch isTicking{1};
    std::latch isAboutToDrop{1};
    std::binary_semaphore hasReturned{0};
    std::atomic<bool> returnedDuringTheTick = false;
    std::atomic<bool> hasEnded = false;
    std::optional<InfiniteTimer> timer{std::in_place, InfiniteTimer::Schedule{0, 0.0}};
};

} // namespace

TEST(InfiniteTimerSmoke, TicksInTheBackgroundOneAtATimeAndNeverEarly) {
    Inbox<std::pair<bool, DispatchTime>> ticks;
    std::atomic<int> running = 0;
    const auto start = DispatchTime::now();
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.02});
    timer.start([&] {
        EXPECT_EQ(++running, 1);
        ticks.put({Thread::isMainThread(), DispatchTime::now()});
        --running;
    });
    for (int i = 0; i < 5; ++i) {
        const auto tick = ticks.take();
        ASSERT_TRUE(tick);
        EXPECT_FALSE(tick->first);
        EXPECT_GE(tick->second, start + std::chrono::milliseconds(20 * i));
    }
}

TEST(InfiniteTimerSmoke, DeadlineOfASecondIsNotEarly) {
    Inbox<DispatchTime> ticks;
    const auto start = DispatchTime::now();
    InfiniteTimer timer({.deadline = 1, .pollInterval = 0});
    timer.start([&] { ticks.put(DispatchTime::now()); });
    const auto tick = ticks.take();
    ASSERT_TRUE(tick);
    EXPECT_GE(*tick, start + 1s);
}

TEST(InfiniteTimerSmoke, TicksOnTheQueueThatItWasGiven) {
    const Queue queue("timer");
    Inbox<bool> ticks;
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.001}, queue);
    timer.start([&] { ticks.put(queue.isCurrent()); });
    for (int i = 0; i < 3; ++i) EXPECT_EQ(ticks.take(), true);
}

// The joined tick comes once the long one has ended; each later one has a point of the schedule of its own,
// so that the second after it is a whole interval behind the end of the long one, also on a busy machine.
TEST(InfiniteTimerSmoke, TicksMissedDuringALongOneAreJoinedIntoOne) {
    constexpr auto interval = 20ms;
    const Queue other("long tick");
    std::latch isLongEnough(1);
    Inbox<DispatchTime> ticks;
    bool isFirst = true;
    InfiniteTimer timer({.deadline = 0, .pollInterval = 0.02});
    timer.start([&] {
        if (std::exchange(isFirst, false)) {
            other.asyncAfter(20 * interval, [&] { isLongEnough.count_down(); });
            isLongEnough.wait();
        }
        ticks.put(DispatchTime::now());
    });
    const auto end = ticks.take();
    ASSERT_TRUE(end);
    for (int after = 0; after < 5; ++after) {
        const auto tick = ticks.take();
        ASSERT_TRUE(tick);
        EXPECT_GE(*tick, *end + std::max(0, after - 1) * interval) << "the tick joined, and then " << after;
    }
}

TEST_F(InfiniteTimerWithALongTick, DroppingWaitsForTheTickOfAnotherThread) {
    expectToWait([this] { timer.reset(); });
}

TEST_F(InfiniteTimerWithALongTick, DroppingAStoppedTimerWaitsForTheTickThatStillRuns) {
    timer->stop();
    expectToWait([this] { timer.reset(); });
}

TEST_F(InfiniteTimerWithALongTick, DroppingWaitsAlsoForATickThatWasReplaced) {
    timer->start([] {});
    expectToWait([this] { timer.reset(); });
}

TEST_F(InfiniteTimerWithALongTick, AssigningWaitsForTheTickOfTheTimerThatWasThere) {
    expectToWait([this] { *timer = InfiniteTimer({.deadline = 0, .pollInterval = 0}); });
}

TEST(InfiniteTimerSmoke, TickMayDropItsTimerInTheBackground) {
    for (int round = 0; round < 100; ++round) {
        Inbox<int> dropped;
        std::latch isMade(1);
        std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 0.00005});
        timer->start([&, value = std::make_shared<int>(round)] {
            isMade.wait();
            timer.reset();
            dropped.put(*value);
        });
        isMade.count_down();
        ASSERT_EQ(dropped.take(), round);
    }
}

TEST(InfiniteTimerSmoke, DroppingHasLetGoOfTheTickThatWasRunning) {
    for (int round = 0; round < 2'000; ++round) {
        std::latch isTicking(1);
        std::latch mayEnd(1);
        const auto value = std::make_shared<int>(round);
        std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 0.0});
        timer->start([&, value] {
            isTicking.count_down();
            mayEnd.wait();
        });
        isTicking.wait();
        mayEnd.count_down();
        timer.reset();
        ASSERT_EQ(value.use_count(), 1) << round;
    }
}

TEST(InfiniteTimerSmoke, WhatATickRefersToMayBeFreedOnTheLineAfterTheDrop) {
    std::atomic<int> dropped = -1;
    std::atomic<int> late = 0;
    for (int round = 0; round < 10'000; ++round) {
        auto value = std::make_unique<std::atomic<int>>(0);
        std::optional<InfiniteTimer> timer(std::in_place, InfiniteTimer::Schedule{0, 0.00002});
        timer->start([&, round, &counter = *value] {
            if (dropped >= round) ++late;
            ++counter;
        });
        const auto deadline = DispatchTime::now() + 10s;
        while (round % 4 == 0 && *value == 0 && DispatchTime::now() < deadline) std::this_thread::yield();
        ASSERT_TRUE(round % 4 != 0 || *value > 0) << "no tick in ten seconds";
        dawdle(round);
        if (round % 3 == 0) timer->stop();
        timer.reset();
        dropped = round;
        value.reset();
    }
    EXPECT_EQ(late, 0);
}

TEST(InfiniteTimerSmoke, StartsAndStopsFromManyThreadsInAnyOrderDoNotTrap) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Inbox<bool> ticked;
    std::atomic<int> ticks = 0;
    {
        InfiniteTimer timer({.deadline = 0, .pollInterval = 0.00005});
        std::vector<std::jthread> threads;
        for (unsigned t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                std::minstd_rand random(seed + t);
                for (int i = 0; i < 2'000; ++i) {
                    if (random() % 2 == 0) {
                        timer.start([&, held = std::make_shared<int>(i)] { ticks += *held; });
                    } else {
                        timer.stop();
                    }
                }
            });
        threads.clear();
        timer.start([&] {
            if (ticked.count() == 0) ticked.put(true);
            ++ticks;
        });
        ASSERT_TRUE(ticked.take());
    }
    const int atDrop = ticks;
    Inbox<int> later;
    Queue::global(QualityOfService::userInitiated).asyncAfter(5ms, [&] { later.put(ticks); });
    EXPECT_EQ(later.take(), atDrop);
}
