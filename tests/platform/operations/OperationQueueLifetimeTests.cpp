// SPDX-License-Identifier: Apache-2.0

// Operations that end, and queues that go, at another time than usual.

#include <VorlanFoundation/Platform/OperationQueue.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Execution/AsynchronousOperation.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pthread.h>

#include <array>
#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using support::Inbox;
using ::testing::IsEmpty;
using vorlan::testing::ManualQueue;

namespace {

// Counts how often its work was begun.
class Download : public AsynchronousOperation {
public:
    std::atomic<int> begun = 0;

private:
    void main() override {
        ++begun;
        AsynchronousOperation::main();
    }
};

} // namespace

TEST(OperationQueue, FinishedOnItsWayToTheUnderlyingQueueIsNotStartedAndCountsNoMore) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    const auto first = std::make_shared<Download>();
    const auto second = std::make_shared<Download>();
    queue.addOperation(first);
    queue.addOperation(second);
    ASSERT_EQ(hand.pendingCount(), 1U) << "the first is on its way";
    std::jthread([&] { first->finish(); }).join();
    EXPECT_EQ(queue.operationCount(), 1U);
    hand.runPending();
    EXPECT_EQ(first->begun, 0);
    EXPECT_EQ(first->state(), AsynchronousOperation::State::finished);
    EXPECT_EQ(second->begun, 1);
    second->finish();
    EXPECT_THAT(queue.operations(), IsEmpty());
}

TEST(OperationQueue, CancelledOnItsWayToTheUnderlyingQueueIsFinishedWithoutItsWork) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    const auto download = std::make_shared<Download>();
    queue.addOperation(download);
    download->cancel();
    EXPECT_FALSE(download->isFinished());
    hand.runPending();
    EXPECT_EQ(download->begun, 0);
    EXPECT_TRUE(download->isFinished());
    EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(OperationQueue, OperationThatItsHostStartsLeavesTheQueueWhenItIsFinished) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    queue.setSuspended(true);
    int runs = 0;
    const auto operation = queue.addOperation([&] { ++runs; });
    operation->start();
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.setSuspended(false);
    hand.runPending();
    EXPECT_EQ(runs, 1);
}

TEST(OperationQueue, DroppedWhileAnOperationIsUnderWayRunsThoseBehindItWhenThatIsFinished) {
    ManualQueue hand;
    const auto first = std::make_shared<Download>();
    const auto second = std::make_shared<Download>();
    const auto dependent = std::make_shared<Download>();
    dependent->addDependency(second);
    {
        OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
        queue.addOperation(dependent);
        queue.addOperation(first);
        queue.addOperation(second);
        hand.runPending();
    }
    for (const auto& download : {first, second, dependent}) {
        EXPECT_EQ(download->begun, 1);
        download->finish();
        hand.runPending();
    }
}

TEST(OperationQueue, LetsGoOfAllWhenItWasDroppedAndTheLastIsFinished) {
    auto download = std::make_shared<Download>();
    const std::weak_ptr<Download> weak = download;
    {
        ManualQueue hand;
        {
            OperationQueue queue({.underlyingQueue = hand});
            queue.addOperation(download);
            hand.runPending();
        }
        download->finish();
    }
    EXPECT_EQ(download.use_count(), 1);
    download.reset();
    EXPECT_TRUE(weak.expired());
}

TEST(OperationQueue, MayBeDroppedByOneOfItsOperations) {
    Inbox<std::string> ran;
    std::latch mayDrop(1);
    auto queue = std::make_unique<OperationQueue>(
        OperationQueueConfiguration{.maxConcurrentOperationCount = 1, .name = "downloads"});
    queue->addOperation([&] {
        mayDrop.wait();
        queue.reset();
        ran.put("dropped");
    });
    queue->addOperation([&] { ran.put("ran"); });
    mayDrop.count_down();
    EXPECT_EQ(ran.take(), "dropped");
    EXPECT_EQ(ran.take(), "ran");
}

TEST(OperationQueue, DependenciesOnOperationsOfAQueueThatWasDroppedAreMet) {
    std::latch mayEnd(1);
    std::atomic<bool> isMixed = false;
    std::atomic<bool> wasMixed = false;
    OperationQueue second;
    second.setSuspended(true);
    const auto bake = second.addOperation([&] { wasMixed = isMixed.load(); });
    {
        OperationQueue first;
        bake->addDependency(first.addOperation([&] {
            mayEnd.wait();
            isMixed = true;
        }));
    }
    second.setSuspended(false);
    mayEnd.count_down();
    second.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(wasMixed);
}

TEST(OperationQueue, MovedFromHandleMayBeAssignedTo) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    OperationQueue other(std::move(queue));
    queue = OperationQueue({.maxConcurrentOperationCount = 3});
    EXPECT_EQ(queue.maxConcurrentOperationCount(), 3);
    EXPECT_EQ(other.maxConcurrentOperationCount(), 1);
}

TEST(OperationQueue, ManyThreadsMayWaitUntilAllAreFinished) {
    Inbox<bool> ended;
    std::latch mayEnd(1);
    OperationQueue queue;
    const auto operation = queue.addOperation([&] { mayEnd.wait(); });
    std::vector<std::jthread> waiting;
    for (int i = 0; i < 4; ++i)
        waiting.emplace_back([&] {
            queue.waitUntilAllOperationsAreFinished();
            ended.put(operation->isFinished());
        });
    mayEnd.count_down();
    for (int i = 0; i < 4; ++i) EXPECT_EQ(ended.take(), true);
}

TEST(OperationQueue, WaitingIncludesWhatOperationsAdd) {
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    std::atomic<int> runs = 0;
    std::function<void(int)> add = [&](int left) {
        queue.addOperation([&, left] {
            ++runs;
            if (left > 0) add(left - 1);
        });
    };
    add(1'000);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 1'001);
}

TEST(OperationQueue, ItsThreadsCarryItsName) {
    std::array<char, 16> name{};
    OperationQueue queue({.maxConcurrentOperationCount = 1, .name = "downloads"});
    queue.addOperation([&] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_STREQ(name.data(), "downloads");
}
