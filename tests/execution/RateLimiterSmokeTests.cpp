// SPDX-License-Identifier: Apache-2.0

// The rate limiters on the real clock: never early, and dropped at any moment of their work.

#include "tests/execution/Dawdle.h"
#include "tests/support/Inbox.h"

#include <VorlanFoundation/Execution.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <latch>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;

namespace {

// Waits until nothing but the test holds the value; false when that took more than ten seconds. The end of
// each copy sees to it that what the last holder did is seen here.
bool isLetGo(const std::shared_ptr<std::atomic<int>>& value) {
    const auto isHeld = [&] { return std::shared_ptr(value).use_count() > 2; };
    const auto deadline = DispatchTime::now() + 10s;
    while (isHeld() && DispatchTime::now() < deadline) std::this_thread::yield();
    return !isHeld();
}

} // namespace

TEST(ThrottlerSmoke, DroppedAtAnyMomentRunsItsBlockAtMostOnceAndLetsGoOfIt) {
    for (int round = 0; round < 2'000; ++round) {
        const auto runs = std::make_shared<std::atomic<int>>(0);
        {
            Throttler throttler(round % 2);
            throttler.throttle([runs] { ++*runs; });
            dawdle(round);
        }
        ASSERT_TRUE(isLetGo(runs)) << round;
        ASSERT_LE(*runs, 1);
    }
}

TEST(ThrottlerSmoke, BlockMayDropTheThrottlerInTheBackground) {
    for (int round = 0; round < 100; ++round) {
        std::latch hasCalled(1);
        Inbox<int> dropped;
        std::optional<Throttler> throttler(std::in_place, 500);
        throttler->throttle([&] {
            hasCalled.wait();
            throttler.reset();
            dropped.put(round);
        });
        hasCalled.count_down();
        ASSERT_EQ(dropped.take(), round);
    }
}

TEST(SamplerSmoke, BlockAtTheEndOfADelayIsNotEarly) {
    const Queue queue("sampler");
    Inbox<DispatchTime> runs;
    Sampler sampler(40ms, queue);
    const auto firstCall = DispatchTime::now();
    sampler.sample([] {});
    sampler.sample([&] { runs.put(DispatchTime::now()); });
    const auto run = runs.take();
    ASSERT_TRUE(run);
    EXPECT_GE(*run, firstCall + 40ms);
}

TEST(SamplerSmoke, DroppedAtAnyMomentRunsWhatWasSubmittedAndLetsGoOfTheRest) {
    const Queue queue("sampler");
    for (int round = 0; round < 2'000; ++round) {
        const auto first = std::make_shared<std::atomic<int>>(0);
        const auto stored = std::make_shared<std::atomic<int>>(0);
        {
            Sampler sampler(std::chrono::microseconds(round % 40), queue);
            sampler.sample([first] { ++*first; });
            sampler.sample([stored] { ++*stored; });
            dawdle(round);
        }
        ASSERT_TRUE(isLetGo(first) && isLetGo(stored)) << round;
        ASSERT_EQ(*first, 1);
        ASSERT_LE(*stored, 1);
    }
}

TEST(DebounceSmoke, EachOfManyFunctionsThatAreGoneActsOnce) {
    const Queue queue("debounce");
    Inbox<std::size_t> actions;
    for (std::size_t i = 0; i < 500; ++i) {
        const auto act = debounce<std::size_t>(1, queue, [&](std::size_t number) { actions.put(number); });
        act(i);
    }
    std::array<int, 500> times{};
    for (std::size_t i = 0; i < times.size(); ++i) {
        const auto number = actions.take();
        ASSERT_TRUE(number);
        ++times.at(*number);
    }
    for (const int count : times) EXPECT_EQ(count, 1);
}

TEST(DebounceSmoke, WithoutADelayEveryCallOfManyThreadsActs) {
    constexpr int each = 2'000;
    const Queue queue("debounce");
    Inbox<int> done;
    int actions = 0;
    {
        const auto act = debounce(0, queue, [&] {
            if (++actions == 4 * each) done.put(actions);
        });
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < each; ++i) act();
            });
    }
    EXPECT_EQ(done.take(), 4 * each);
    EXPECT_EQ(queue.sync([&] { return actions; }), 4 * each);
}

TEST(BatchItemsTrottlerSmoke, DeliveryIsNotEarly) {
    Inbox<DispatchTime> deliveries;
    BatchItemsTrottler<int> batcher(40ms, Queue("calls"),
                                    [&](const std::vector<int>&) { deliveries.put(DispatchTime::now()); });
    const auto firstCall = DispatchTime::now();
    batcher(1);
    const auto delivery = deliveries.take();
    ASSERT_TRUE(delivery);
    EXPECT_GE(*delivery, firstCall + 40ms);
}

TEST(BatchItemsTrottlerSmoke, ActionRunsOnTheCallQueueOnly) {
    const Queue calls("calls");
    Inbox<bool> deliveries;
    BatchItemsTrottler<int> batcher(1ms, calls,
                                    [&](const std::vector<int>&) { deliveries.put(calls.isCurrent()); });
    batcher(1);
    EXPECT_EQ(deliveries.take(), true);
}

TEST(BatchItemsTrottlerSmoke, DroppedAtAnyMomentDeliversWhatItHadTakenInAndLetsGoOfTheRest) {
    using Item = std::shared_ptr<std::atomic<int>>;
    const Queue calls("calls");
    for (int round = 0; round < 2'000; ++round) {
        const auto first = std::make_shared<std::atomic<int>>(0);
        const auto second = std::make_shared<std::atomic<int>>(0);
        {
            BatchItemsTrottler<Item> batcher(std::chrono::microseconds(round % 40), calls,
                                             [](const std::vector<Item>& items) {
                                                 for (const auto& item : items) ++*item;
                                             });
            batcher(first);
            dawdle(round);
            batcher(second);
        }
        ASSERT_TRUE(isLetGo(first) && isLetGo(second)) << round;
        ASSERT_LE(*first, 1);
        ASSERT_LE(*second, *first) << "a later item was delivered, and an earlier one lost";
    }
}
