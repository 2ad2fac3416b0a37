// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Execution/BatchItemsTrottler.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vorlan::testing::ManualQueue;

namespace {

// Collects the arrays that were delivered. Calls and collecting are on one queue, turned by hand.
struct BatchItemsTrottlerByHand : ::testing::Test {
    BatchItemsTrottler<int> make(DispatchTimeInterval delay) {
        return {delay, queue, [this](std::vector<int> items) { deliveries.push_back(std::move(items)); },
                queue};
    }

    ManualQueue queue;
    std::vector<std::vector<int>> deliveries;
};

} // namespace

TEST_F(BatchItemsTrottlerByHand, ItemsWithinADelayArriveTogetherAndALaterOneAlone) {
    auto batcher = make(100ms);
    for (const int item : {1, 2, 3}) {
        batcher.batch(item);
        queue.advance(10ms);
    }
    queue.advance(69ms);
    EXPECT_THAT(deliveries, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1, 2, 3)));
    batcher.batch(4);
    queue.advance(99ms);
    EXPECT_EQ(deliveries.size(), 1U);
    queue.advance(1ms);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1, 2, 3), ElementsAre(4)));
}

TEST_F(BatchItemsTrottlerByHand, IsCalledLikeAFunction) {
    auto batcher = make(100ms);
    batcher(1);
    batcher.callAsFunction(2);
    batcher.batch(3);
    queue.advance(100ms);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1, 2, 3)));
}

TEST_F(BatchItemsTrottlerByHand, WithoutItemsNothingIsDelivered) {
    auto batcher = make(100ms);
    queue.advance(10s);
    EXPECT_THAT(deliveries, IsEmpty());
    batcher(1);
    queue.advance(10s);
    EXPECT_EQ(deliveries.size(), 1U);
}

TEST_F(BatchItemsTrottlerByHand, PendingDeliveryIsMadeAlsoWhenTheBatcherIsDropped) {
    std::optional<BatchItemsTrottler<int>> batcher(make(100ms));
    (*batcher)(1);
    queue.runPending();
    batcher.reset();
    queue.advance(100ms);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1)));
}

TEST_F(BatchItemsTrottlerByHand, DroppedBeforeItsFirstItemWasTakenInDropsThatItem) {
    std::optional<BatchItemsTrottler<int>> batcher(make(100ms));
    (*batcher)(1);
    batcher.reset();
    queue.advance(10s);
    EXPECT_THAT(deliveries, IsEmpty());
}

TEST_F(BatchItemsTrottlerByHand, ItemAfterTheDropOfAPendingDeliveryIsStillTakenIn) {
    std::optional<BatchItemsTrottler<int>> batcher(make(100ms));
    (*batcher)(1);
    queue.runPending();
    (*batcher)(2); // The delivery that is pending holds what is needed.
    batcher.reset();
    queue.advance(100ms);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1, 2)));
}

TEST_F(BatchItemsTrottlerByHand, ActionMayBatchItems) {
    std::optional<BatchItemsTrottler<int>> batcher;
    batcher.emplace(
        100ms, queue,
        [&](std::vector<int> items) {
            deliveries.push_back(items);
            if (deliveries.size() == 1) (*batcher)(items.front() + 1);
        },
        queue);
    (*batcher)(1);
    queue.advance(1s);
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1), ElementsAre(2)));
}

TEST_F(BatchItemsTrottlerByHand, TellsItsDelay) {
    EXPECT_EQ(make(100ms).delay(), 100ms);
}

TEST_F(BatchItemsTrottlerByHand, WithADelayThatNeverEndsNothingIsDelivered) {
    auto batcher = make(DispatchTimeInterval::never());
    batcher(1);
    queue.advance(std::chrono::seconds(1'000'000));
    EXPECT_THAT(deliveries, IsEmpty());
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST(BatchItemsTrottler, TakesItemsThatCanOnlyBeMoved) {
    ManualQueue queue;
    std::size_t count = 0;
    BatchItemsTrottler<std::unique_ptr<int>> batcher(
        1s, queue, [&](const std::vector<std::unique_ptr<int>>& items) { count = items.size(); }, queue);
    batcher(std::make_unique<int>(1));
    batcher(std::make_unique<int>(2));
    queue.advance(1s);
    EXPECT_EQ(count, 2U);
}

TEST(BatchItemsTrottler, ActionRunsOnTheCallQueue) {
    ManualQueue calls;
    ManualQueue collecting;
    std::size_t count = 0;
    BatchItemsTrottler<int> batcher(
        1s, calls, [&](const std::vector<int>& items) { count = items.size(); }, collecting);
    batcher(1);
    collecting.advance(1s);
    EXPECT_EQ(count, 0U);
    calls.runPending();
    EXPECT_EQ(count, 1U);
}

TEST(BatchItemsTrottler, ItemAfterTheDeliveryStartsTheNextDelayWhileTheActionStillWaits) {
    ManualQueue calls;
    ManualQueue collecting;
    std::vector<std::vector<int>> deliveries;
    BatchItemsTrottler<int> batcher(
        1s, calls, [&](std::vector<int> items) { deliveries.push_back(std::move(items)); }, collecting);
    batcher(1);
    collecting.advance(1s);
    batcher(2);
    collecting.advance(1s);
    EXPECT_THAT(deliveries, IsEmpty());
    calls.runPending();
    EXPECT_THAT(deliveries, ElementsAre(ElementsAre(1), ElementsAre(2)));
}

TEST(BatchItemsTrottler, DeliveryOnItsWayToTheCallQueueIsMadeAlsoWhenTheBatcherIsDropped) {
    ManualQueue calls;
    ManualQueue collecting;
    std::size_t count = 0;
    std::optional<BatchItemsTrottler<int>> batcher(
        std::in_place, 1s, calls, [&](const std::vector<int>& items) { count = items.size(); }, collecting);
    (*batcher)(1);
    collecting.advance(1s);
    batcher.reset();
    calls.runPending();
    EXPECT_EQ(count, 1U);
}

TEST(BatchItemsTrottler, DroppedOneLetsGoOfItsActionOnceItsLastDeliveryIsMade) {
    ManualQueue queue;
    const auto value = std::make_shared<int>(1);
    auto batcher =
        std::make_unique<BatchItemsTrottler<int>>(1s, queue, [value](const std::vector<int>&) {}, queue);
    (*batcher)(1);
    queue.runPending();
    batcher.reset();
    EXPECT_EQ(value.use_count(), 2);
    queue.advance(1s);
    EXPECT_EQ(value.use_count(), 1);
}

TEST(BatchItemsTrottler, ItemsAreLetGoAfterTheAction) {
    ManualQueue queue;
    const auto item = std::make_shared<int>(1);
    BatchItemsTrottler<std::shared_ptr<int>> batcher(
        1s, queue, [](const std::vector<std::shared_ptr<int>>&) {}, queue);
    batcher(item);
    EXPECT_EQ(item.use_count(), 2);
    queue.advance(1s);
    EXPECT_EQ(item.use_count(), 1);
}

TEST(BatchItemsTrottlerSmoke, ItemsOfManyThreadsArriveOnceAndInTheOrderOfEach) {
    constexpr int each = 5'000;
    struct Item {
        std::size_t thread;
        int number;
    };
    std::array<int, 8> next{};
    int wrong = 0;
    int total = 0;
    Inbox<int> done;
    BatchItemsTrottler<Item> batcher(1ms, Queue("calls"), [&](const std::vector<Item>& items) {
        for (const auto& item : items) {
            wrong += next[item.thread]++ == item.number ? 0 : 1;
            if (++total == 8 * each) done.put(wrong);
        }
    });
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < next.size(); ++t)
            threads.emplace_back([&, t] {
                for (int i = 0; i < each; ++i) batcher({t, i});
            });
    }
    EXPECT_EQ(done.take(), 0);
}
