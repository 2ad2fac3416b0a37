// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimerSource.h>

#include "tests/support/Inbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

// Stops a timer that repeats: an event that is under way is over before what it tells goes.
void stop(TimerSource& timer, const Queue& queue) {
    timer.cancel();
    queue.sync([] {});
}

} // namespace

TEST(TimerSource, FiresFirstAtTheDeadlineAndThenAtTheIntervalNeverEarly) {
    const Queue queue("timers");
    Inbox<DispatchTime> events;
    TimerSource timer(queue);
    timer.setEventHandler([&] { events.put(queue.now()); });
    const auto start = queue.now();
    timer.schedule({.deadline = start + 30ms, .repeating = 20ms});
    timer.resume();
    for (int i = 0; i < 4; ++i) {
        const auto event = events.take();
        ASSERT_TRUE(event);
        EXPECT_GE(*event, start + 30ms + std::chrono::milliseconds(20 * i));
    }
    stop(timer, queue);
}

TEST(TimerSource, IsMadeSuspended) {
    const Queue queue("timers");
    Inbox<int> events;
    TimerSource timer(queue);
    timer.setEventHandler([&] { events.put(1); });
    timer.schedule({.deadline = queue.now()});
    TimerSource other(queue);
    other.setEventHandler([&] { events.put(2); });
    other.schedule({.deadline = queue.now() + 20ms});
    other.resume();
    EXPECT_EQ(events.take(), 2);
    timer.resume();
    EXPECT_EQ(events.take(), 1);
}

TEST(TimerSource, FiresOnceWithoutAnInterval) {
    const Queue queue("timers");
    Inbox<int> events;
    TimerSource once(queue);
    once.setEventHandler([&] { events.put(1); });
    once.schedule({.deadline = queue.now()});
    once.resume();
    TimerSource later(queue);
    later.setEventHandler([&] { events.put(2); });
    later.schedule({.deadline = queue.now() + 50ms});
    later.resume();
    EXPECT_EQ(events.take(), 1);
    EXPECT_EQ(events.take(), 2);
}

TEST(TimerSource, EventsAreJoinedWhileSuspended) {
    const Queue queue("timers");
    Inbox<DispatchTime> events;
    TimerSource timer(queue);
    timer.setEventHandler([&] { events.put(queue.now()); });
    timer.schedule({.deadline = queue.now(), .repeating = 1ms});
    timer.resume();
    ASSERT_TRUE(events.take());
    timer.suspend();
    timer.suspend();
    queue.sync([] {});
    const auto countWhenSuspended = events.count();
    Inbox<int> passed;
    queue.asyncAfter(30ms, [&] { passed.put(1); });
    ASSERT_TRUE(passed.take());
    EXPECT_EQ(events.count(), countWhenSuspended);
    timer.resume();
    queue.asyncAfter(10ms, [&] { passed.put(2); });
    ASSERT_TRUE(passed.take());
    EXPECT_EQ(events.count(), countWhenSuspended);
    for (std::size_t i = 0; i < countWhenSuspended; ++i) ASSERT_TRUE(events.take());
    // One event for the thirty that were missed; the second and third keep to the grid again.
    const auto resumed = queue.now();
    timer.resume();
    ASSERT_TRUE(events.take());
    ASSERT_TRUE(events.take());
    const auto third = events.take();
    ASSERT_TRUE(third);
    EXPECT_GE(*third, resumed + 1ms);
    stop(timer, queue);
}

TEST(TimerSource, NoEventBeginsAfterCancellingOnTheTimersSerialQueue) {
    const Queue queue("timers");
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> isCancelled = false;
        std::atomic<int> late = 0;
        Inbox<int> events;
        TimerSource timer(queue);
        timer.setEventHandler([&] {
            late += isCancelled ? 1 : 0;
            events.put(1);
        });
        timer.schedule({.deadline = queue.now(), .repeating = 1us});
        timer.resume();
        ASSERT_TRUE(events.take());
        queue.sync([&] {
            timer.cancel();
            isCancelled = true;
        });
        EXPECT_TRUE(timer.isCancelled());
        queue.sync([] {});
        EXPECT_EQ(late, 0);
    }
}

TEST(TimerSource, CallsAfterCancelDoNothing) {
    const Queue queue("timers");
    TimerSource timer(queue);
    timer.cancel();
    timer.cancel();
    timer.setEventHandler([] {});
    timer.schedule({.deadline = queue.now()});
    timer.resume();
    timer.resume();
    timer.suspend();
    EXPECT_TRUE(timer.isCancelled());
}

TEST(TimerSource, HandlerMayReplaceItselfAndDestroyTheTimer) {
    const Queue queue("timers");
    Inbox<int> events;
    std::latch isResumed(1);
    auto timer = std::make_shared<std::optional<TimerSource>>(std::in_place, queue);
    (*timer)->setEventHandler([&events, &isResumed, timer] {
        isResumed.wait(); // what is still being called is not to be destroyed
        events.put(1);
        (*timer)->setEventHandler([&events, timer] {
            events.put(2);
            timer->reset();
        });
    });
    (*timer)->schedule({.deadline = queue.now(), .repeating = 1ms});
    (*timer)->resume();
    isResumed.count_down();
    EXPECT_EQ(events.take(), 1);
    EXPECT_EQ(events.take(), 2);
    const std::weak_ptr<std::optional<TimerSource>> watched = timer;
    timer.reset();
    while (!watched.expired()) queue.sync([] {});
    EXPECT_EQ(events.count(), 0U);
}

TEST(TimerSource, HandlerIsDroppedWithTheTimerInWhateverStateItIs) {
    const Queue queue("timers");
    auto captured = std::make_shared<int>();
    for (int i = 0; i < 2000; ++i) {
        TimerSource timer(queue);
        timer.setEventHandler([captured] {});
        if (i % 2 == 0) timer.schedule({.deadline = queue.now() + 1ms, .repeating = 1ms});
        if (i % 3 == 0) timer.resume();
        if (i % 6 == 0) timer.suspend();
        if (i % 5 == 0) timer.cancel();
    }
    const auto deadline = queue.now() + 10s;
    while (captured.use_count() > 1 && queue.now() < deadline) queue.sync([] {});
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(TimerSource, KeepsItsQueueAlive) {
    Inbox<int> events;
    auto timer = [&] {
        const Queue queue("fleeting");
        TimerSource made(queue);
        made.setEventHandler([&] { events.put(1); });
        made.schedule({.deadline = queue.now()});
        return made;
    }();
    timer.resume();
    EXPECT_EQ(events.take(), 1);
}

TEST(TimerSource, TimersMayBeMadeAndDroppedFromManyThreads) {
    // Shared: an event that had begun may end after its timer is gone.
    const auto events = std::make_shared<std::atomic<int>>(0);
    const Queue queue("timers", Queue::concurrent);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                TimerSource timer(i % 2 == 0 ? queue : Queue::global());
                timer.setEventHandler([events] { ++*events; });
                timer.schedule({.deadline = queue.now(), .repeating = 10us});
                timer.resume();
                if (i % 4 == 0) timer.suspend();
            }
        });
    threads.clear();
    const auto deadline = queue.now() + 10s;
    while (events.use_count() > 1 && queue.now() < deadline) queue.sync([] {});
    EXPECT_EQ(events.use_count(), 1);
}

TEST(TimerSource, CancellingLetsGoOfTheHandlerWhichMayOwnTheTimer) {
    struct Owner {
        explicit Owner(const Queue& queue) : timer(queue) {}
        TimerSource timer;
    };
    auto owner = std::make_shared<Owner>(Queue("timers"));
    const std::weak_ptr<Owner> weak = owner;
    owner->timer.setEventHandler([owner] {});
    auto& timer = owner->timer;
    owner.reset();
    EXPECT_FALSE(weak.expired());
    timer.cancel();
    EXPECT_TRUE(weak.expired());
}

TEST(TimerSource, HandlerThatReplacesItselfIsLetGoAfterItsEvent) {
    const Queue queue("timers");
    TimerSource timer(queue);
    const auto value = std::make_shared<int>(1);
    Inbox<int> events;
    timer.setEventHandler([&, value] {
        timer.setEventHandler([&] { events.put(2); });
        events.put(*value);
    });
    timer.schedule({.deadline = queue.now(), .repeating = 1ms});
    timer.resume();
    EXPECT_EQ(events.take(), 1);
    EXPECT_EQ(events.take(), 2);
    EXPECT_EQ(value.use_count(), 1);
    stop(timer, queue);
}
