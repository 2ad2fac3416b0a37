// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/ManualQueue.h>

#include "tests/support/WorkerThreads.h"

#include <VorlanFoundation/Platform/TimerSource.h>
#include <VorlanFoundation/Platform/WorkItem.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using vorlan::testing::ManualQueue;

TEST(ManualQueue, RunsItsWorkOnlyWhenItIsToldToOnTheThreadThatTellsIt) {
    ManualQueue queue;
    std::thread::id thread;
    std::jthread([&] { queue.async([&] { thread = std::this_thread::get_id(); }); }).join();
    EXPECT_EQ(queue.pendingCount(), 1U);
    EXPECT_EQ(thread, std::thread::id());
    queue.runPending();
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(ManualQueue, RunsWorkInTheOrderOfDeadlinesThenOfSubmission) {
    ManualQueue queue;
    std::string order;
    queue.asyncAfter(200ms, [&] { order += 'd'; });
    queue.asyncAfter(100ms, [&] { order += 'b'; });
    queue.asyncAfter(100ms, [&] { order += 'c'; });
    queue.async([&] { order += 'a'; });
    queue.advance(99ms);
    EXPECT_EQ(order, "a");
    queue.advance(1ms);
    EXPECT_EQ(order, "abc");
    queue.advance(3600s);
    EXPECT_EQ(order, "abcd");
}

TEST(ManualQueue, ClockStandsAtTheBlocksDeadlineWhileItRuns) {
    ManualQueue queue;
    const auto start = queue.now();
    DispatchTime seen(0);
    queue.asyncAfter(30ms, [&] { seen = queue.now(); });
    queue.advance(100ms);
    EXPECT_EQ(seen, start + 30ms);
    EXPECT_EQ(queue.now(), start + 100ms);
    queue.asyncAfter(-1s, [&] { seen = queue.now(); });
    queue.runPending();
    EXPECT_EQ(seen, start + 100ms);
}

TEST(ManualQueue, CalendarMovesWithTheClock) {
    ManualQueue queue;
    EXPECT_EQ(queue.date(), Date(0));
    queue.advance(1500ms);
    EXPECT_EQ(queue.date(), Date(1.5));
}

TEST(ManualQueue, WhatFallsDueWithinTheSpanBeingAdvancedRunsToo) {
    ManualQueue queue;
    std::vector<int> order;
    queue.asyncAfter(10ms, [&] {
        order.push_back(1);
        queue.asyncAfter(10ms, [&] { order.push_back(2); });
        queue.asyncAfter(100ms, [&] { order.push_back(3); });
    });
    queue.advance(50ms);
    EXPECT_EQ(order, (std::vector{1, 2}));
    queue.advance(60ms);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(ManualQueue, SyncRunsWhatIsDueAndThenTheBlock) {
    ManualQueue queue;
    std::string order;
    queue.async([&] { order += 'a'; });
    EXPECT_EQ(queue.sync([&] { return order += 'b'; }), "ab");
    EXPECT_TRUE(queue.sync([&] { return queue.isCurrent(); }));
    EXPECT_FALSE(queue.isCurrent());
}

TEST(ManualQueue, CancelledItemsAndWorkThatIsNeverDueDoNotRun) {
    ManualQueue queue;
    bool hasRun = false;
    const WorkItem item([&] { hasRun = true; });
    queue.asyncAfter(1s, item);
    queue.asyncAfter(DispatchTimeInterval::never(), [&] { hasRun = true; });
    EXPECT_EQ(queue.pendingCount(), 1U);
    item.cancel();
    queue.advance(2s);
    EXPECT_FALSE(hasRun);
}

TEST(ManualQueue, ExceptionOfABlockLeavesAdvanceAndTheWorkBehindItStays) {
    ManualQueue queue;
    bool hasRun = false;
    queue.async([] { throw std::runtime_error("no"); });
    queue.async([&] { hasRun = true; });
    EXPECT_THROW(queue.runPending(), std::runtime_error);
    EXPECT_FALSE(hasRun);
    queue.runPending();
    EXPECT_TRUE(hasRun);
}

TEST(ManualQueue, WorkThatHasNotRunGoesWithTheQueue) {
    auto captured = std::make_shared<int>();
    {
        ManualQueue queue;
        queue.async([captured] {});
        TimerSource timer(queue);
        timer.setEventHandler([captured] {});
    }
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(ManualQueue, WorkThatHoldsTheQueueGoesWithTheLastCopyToo) {
    const auto value = std::make_shared<int>(1);
    std::optional<ManualQueue> queue(std::in_place);
    std::optional<ManualQueue> copy(queue);
    const Queue handle = *queue;
    handle.asyncAfter(1s, [value, handle] {});
    queue.reset();
    EXPECT_EQ(value.use_count(), 2);
    copy.reset();
    EXPECT_EQ(value.use_count(), 1);
    handle.async([value] {});
    EXPECT_EQ(value.use_count(), 1);
}

TEST(ManualQueue, TimersKeepToTheGridOfTheirFirstDeadline) {
    ManualQueue queue;
    const auto start = queue.now();
    std::vector<DispatchTime> events;
    TimerSource timer(queue);
    timer.setEventHandler([&] { events.push_back(queue.now()); });
    timer.schedule({.deadline = start + 10ms, .repeating = 20ms});
    queue.advance(100ms);
    EXPECT_TRUE(events.empty());
    timer.resume(); // five events were missed, and are one
    queue.runPending();
    queue.advance(30ms);
    EXPECT_EQ(events, (std::vector{start + 100ms, start + 110ms, start + 130ms}));
    timer.suspend();
    queue.advance(50ms);
    EXPECT_EQ(events.size(), 3U);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST(ManualQueue, TimerWithoutAnIntervalFiresOnceAndCanBeScheduledAgain) {
    ManualQueue queue;
    int events = 0;
    TimerSource timer(queue);
    timer.setEventHandler([&] { ++events; });
    timer.resume();
    timer.schedule({.deadline = queue.now() + 5ms});
    timer.schedule({.deadline = queue.now() + 10ms});
    queue.advance(1s);
    EXPECT_EQ(events, 1);
    timer.schedule({.deadline = queue.now()});
    queue.runPending();
    EXPECT_EQ(events, 2);
}

TEST(ManualQueue, HandlerMayCancelOrDestroyItsTimer) {
    ManualQueue queue;
    int events = 0;
    std::optional<TimerSource> timer(std::in_place, queue);
    timer->setEventHandler([&] {
        ++events;
        timer.reset();
    });
    timer->schedule({.deadline = queue.now(), .repeating = 1ms});
    timer->resume();
    queue.advance(10ms);
    EXPECT_EQ(events, 1);
}

TEST(ManualQueueDeathTest, TurningItFromItsOwnBlockStopsTheProcess) {
    support::useWorkerThreads();
    ManualQueue queue;
    const auto message = "VorlanFoundation/ManualQueue: Fatal error: turned from one of its own blocks";
    EXPECT_DEATH(queue.sync([&] { queue.advance(1ms); }), message);
    EXPECT_DEATH(queue.sync([&] { queue.sync([] {}); }), message);
    EXPECT_DEATH(queue.advance(-1ms),
                 "VorlanFoundation/ManualQueue: Fatal error: advanced by less than nothing");
}
