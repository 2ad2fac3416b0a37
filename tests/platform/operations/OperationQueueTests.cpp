// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/OperationQueue.h>

#include "tests/support/Inbox.h"

#include <VorlanFoundation/Execution/AsynchronousOperation.h>
#include <VorlanFoundation/Platform/Thread.h>
#include <VorlanFoundation/Testing/MainLoop.h>
#include <VorlanFoundation/Testing/ManualQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;
using support::Inbox;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vorlan::testing::MainLoop;
using vorlan::testing::ManualQueue;

namespace {

// What a host writes that knows the published keys and nothing else: its own state, and its changes published.
class OwnState : public Operation {
public:
    void start() override {
        ++starts;
        change("isExecuting", isExecuting_, true);
    }
    void end() {
        change("isExecuting", isExecuting_, false);
        change("isFinished", isFinished_, true);
    }
    void becomeReady() { change("isReady", isReady_, true); }
    bool isReady() const override { return isReady_; }
    bool isExecuting() const override { return isExecuting_; }
    bool isFinished() const override { return isFinished_; }

    std::atomic<int> starts = 0;

private:
    void change(const char* key, std::atomic<bool>& value, bool newValue) {
        willChangeValueForKey(key);
        value = newValue;
        didChangeValueForKey(key);
    }

    std::atomic<bool> isReady_ = false;
    std::atomic<bool> isExecuting_ = false;
    std::atomic<bool> isFinished_ = false;
};

} // namespace

TEST(OperationQueue, RunsAnOperationOnAThreadOfItsOwn) {
    OperationQueue queue;
    std::thread::id thread;
    const auto operation = queue.addOperation([&] { thread = std::this_thread::get_id(); });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_NE(thread, std::thread::id());
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(OperationQueue, OfWidthOneKeepsTheOrderOfAdding) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    std::vector<int> order;
    for (int i = 0; i < 1'000; ++i) queue.addOperation([&order, i] { order.push_back(i); });
    queue.waitUntilAllOperationsAreFinished();
    ASSERT_EQ(order.size(), 1'000U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(OperationQueue, StartsDependentOnesAfterWhatTheyWaitForAcrossQueues) {
    std::mutex mutex;
    std::string order;
    const auto note = [&](char name) {
        const std::lock_guard lock(mutex);
        order += name;
    };
    OperationQueue first;
    OperationQueue second;
    first.setSuspended(true);
    const auto mix = first.addOperation([&] { note('m'); });
    second.setSuspended(true);
    const auto bake = second.addOperation([&] { note('b'); });
    const auto eat = first.addOperation([&] { note('e'); });
    bake->addDependency(mix);
    eat->addDependency(bake);
    second.setSuspended(false);
    first.setSuspended(false);
    first.waitUntilAllOperationsAreFinished();
    second.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(order, "mbe");
}

TEST(OperationQueue, OneThatIsNotReadyHoldsNoOtherBack) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    const auto never = std::make_shared<Operation>();
    const auto waiting = std::make_shared<Operation>();
    waiting->addDependency(never);
    queue.addOperation(waiting);
    Inbox<bool> ran;
    queue.addOperation([&] { ran.put(true); });
    EXPECT_TRUE(ran.take());
    EXPECT_FALSE(waiting->isFinished());
    never->start();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(waiting->isFinished());
}

TEST(OperationQueue, OfThoseThatAreReadyStartsTheOneThatWasAddedFirst) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    std::string order;
    const auto running = std::make_shared<AsynchronousOperation>();
    const auto awaited = std::make_shared<Operation>();
    queue.addOperation(running);
    queue.setSuspended(true);
    const auto late = queue.addOperation([&] { order += '1'; });
    late->addDependency(awaited);
    queue.addOperation([&] { order += '2'; });
    queue.setSuspended(false);
    hand.runPending();
    awaited->start(); // Only now the one that was added before becomes ready.
    running->finish();
    hand.runPending();
    EXPECT_EQ(order, "12");
}

TEST(OperationQueue, AsynchronousOperationCountsUntilItIsFinished) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 2, .underlyingQueue = hand});
    std::vector<std::shared_ptr<AsynchronousOperation>> operations;
    for (int i = 0; i < 4; ++i) {
        operations.push_back(std::make_shared<AsynchronousOperation>());
        queue.addOperation(operations.back());
    }
    const auto executing = [&] {
        std::string states;
        for (const auto& one : operations) states += one->isExecuting() ? 'x' : one->isFinished() ? '.' : '-';
        return states;
    };
    EXPECT_EQ(executing(), "----") << "nothing starts before the queue is turned";
    hand.runPending();
    EXPECT_EQ(executing(), "xx--");
    operations[1]->finish();
    hand.runPending();
    EXPECT_EQ(executing(), "x.x-");
    operations[0]->finish();
    operations[2]->finish();
    hand.runPending();
    EXPECT_EQ(executing(), "...x");
    operations[3]->finish();
    EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(OperationQueue, GoesByThePublishedKeysOfAHostsOperation) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    const auto first = std::make_shared<OwnState>();
    const auto second = std::make_shared<OwnState>();
    queue.addOperation(first);
    queue.addOperation(second);
    hand.runPending();
    EXPECT_EQ(first->starts, 0);
    first->becomeReady();
    second->becomeReady();
    hand.runPending();
    EXPECT_EQ(first->starts, 1);
    EXPECT_EQ(second->starts, 0);
    first->end();
    hand.runPending();
    EXPECT_EQ(second->starts, 1);
    second->end();
    EXPECT_TRUE(second->waitUntilFinished(10s));
    queue.waitUntilAllOperationsAreFinished();
}

TEST(OperationQueue, CancelsWhatWaitsWhatRunsAndWhatDependsOnIt) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    std::latch isRunning(1);
    std::shared_ptr<Operation> running;
    std::atomic<int> runs = 0;
    queue.setSuspended(true);
    running = queue.addOperation([&] {
        isRunning.count_down();
        while (!running->isCancelled()) std::this_thread::yield();
    });
    const auto waiting = queue.addOperation([&] { ++runs; });
    const auto dependent = queue.addOperation([&] { ++runs; });
    dependent->addDependency(waiting);
    queue.setSuspended(false);
    isRunning.wait();
    queue.cancelAllOperations();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 0);
    for (const auto& one : {running, waiting, dependent})
        EXPECT_TRUE(one->isCancelled() && one->isFinished());
}

TEST(OperationQueue, SuspendedStartsNothing) {
    ManualQueue hand;
    OperationQueue queue({.underlyingQueue = hand});
    int runs = 0;
    queue.setSuspended(true);
    EXPECT_TRUE(queue.isSuspended());
    queue.addOperation([&] { ++runs; });
    hand.runPending();
    EXPECT_EQ(runs, 0);
    queue.setSuspended(false);
    EXPECT_FALSE(queue.isSuspended());
    hand.runPending();
    EXPECT_EQ(runs, 1);
}

TEST(OperationQueue, WidthCanBeChanged) {
    ManualQueue hand;
    OperationQueue queue({.maxConcurrentOperationCount = 1, .underlyingQueue = hand});
    std::vector<std::shared_ptr<AsynchronousOperation>> operations;
    for (int i = 0; i < 5; ++i) {
        operations.push_back(std::make_shared<AsynchronousOperation>());
        queue.addOperation(operations.back());
    }
    const auto countExecuting = [&] {
        hand.runPending();
        return std::ranges::count_if(operations, [](const auto& one) { return one->isExecuting(); });
    };
    EXPECT_EQ(countExecuting(), 1);
    queue.setMaxConcurrentOperationCount(3);
    EXPECT_EQ(queue.maxConcurrentOperationCount(), 3);
    EXPECT_EQ(countExecuting(), 3);
    queue.setMaxConcurrentOperationCount(1);
    operations[0]->finish();
    EXPECT_EQ(countExecuting(), 2);
    operations[1]->finish();
    operations[2]->finish();
    EXPECT_EQ(countExecuting(), 1);
    operations[3]->finish();
    EXPECT_EQ(countExecuting(), 1);
    operations[4]->finish();
}

TEST(OperationQueue, IsAsWideAsThereAreProcessorsUnlessToldOtherwise) {
    const auto processors = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    EXPECT_EQ(OperationQueue().maxConcurrentOperationCount(), processors);
}

TEST(OperationQueue, WidthBelowOneIsRefused) {
    EXPECT_THROW(OperationQueue({.maxConcurrentOperationCount = 0}), std::invalid_argument);
    EXPECT_THROW(OperationQueue({.maxConcurrentOperationCount = -1}), std::invalid_argument);
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    EXPECT_THROW(queue.setMaxConcurrentOperationCount(0), std::invalid_argument);
    EXPECT_EQ(queue.maxConcurrentOperationCount(), 2);
}

TEST(OperationQueue, NullRepeatedAndStartedOperationsAreRefused) {
    OperationQueue queue;
    OperationQueue other;
    queue.setSuspended(true);
    EXPECT_THROW(queue.addOperation(std::shared_ptr<Operation>()), std::invalid_argument);
    const auto operation = queue.addOperation([] {});
    EXPECT_THROW(queue.addOperation(operation), std::invalid_argument);
    EXPECT_THROW(other.addOperation(operation), std::invalid_argument);
    const auto finished = std::make_shared<Operation>();
    finished->start();
    EXPECT_THROW(queue.addOperation(finished), std::invalid_argument);
    const auto executing = std::make_shared<AsynchronousOperation>();
    executing->start();
    EXPECT_THROW(queue.addOperation(executing), std::invalid_argument);
    EXPECT_EQ(queue.operationCount(), 1U);
}

TEST(OperationQueue, TellsItsOperationsInTheOrderOfAddingUntilTheyAreFinished) {
    ManualQueue hand;
    OperationQueue queue({.underlyingQueue = hand});
    const auto first = queue.addOperation([] {});
    const auto second = queue.addOperation([] {});
    EXPECT_THAT(queue.operations(), ElementsAre(first, second));
    EXPECT_EQ(queue.operationCount(), 2U);
    hand.runPending();
    EXPECT_THAT(queue.operations(), IsEmpty());
}

TEST(OperationQueue, WaitingForAnEmptyQueueReturnsAtOnce) {
    OperationQueue().waitUntilAllOperationsAreFinished();
}

TEST(OperationQueue, OperationMayAddOperationsToItsOwnQueue) {
    OperationQueue queue({.maxConcurrentOperationCount = 1});
    std::string order;
    queue.addOperation([&] {
        queue.addOperation([&] { order += 'b'; });
        order += 'a';
    });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(order, "ab");
}

TEST(OperationQueue, RunsWhatWasAddedAlsoWhenTheHandleIsDropped) {
    Inbox<int> ran;
    {
        OperationQueue queue({.maxConcurrentOperationCount = 1});
        queue.setSuspended(true);
        for (int i = 0; i < 3; ++i) queue.addOperation([&ran, i] { ran.put(i); });
    }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(ran.take(), i);
}

TEST(OperationQueue, MovedQueueGoesOnAndAssigningLetsTheOneThatWasThereRunItsOperations) {
    Inbox<int> ran;
    OperationQueue first({.maxConcurrentOperationCount = 1});
    OperationQueue second;
    second.setSuspended(true);
    second.addOperation([&] { ran.put(2); });
    OperationQueue moved(std::move(first));
    moved.addOperation([&] { ran.put(1); });
    EXPECT_EQ(ran.take(), 1);
    second = std::move(moved);
    EXPECT_EQ(ran.take(), 2);
    EXPECT_EQ(second.maxConcurrentOperationCount(), 1);
}

TEST(OperationQueue, StartsOnTheMainQueueWhereThatIsAskedFor) {
    OperationQueue queue({.underlyingQueue = Queue::main()});
    bool wasMain = false;
    const auto operation = queue.addOperation([&] { wasMain = Thread::isMainThread(); });
    EXPECT_TRUE(MainLoop::pumpUntil([&] { return operation->isFinished(); }, 10s));
    EXPECT_TRUE(wasMain);
}

TEST(OperationQueue, LetsGoOfAnOperationWhenItIsFinished) {
    const auto value = std::make_shared<int>(1);
    OperationQueue queue;
    queue.addOperation([value] {})->waitUntilFinished();
    queue.waitUntilAllOperationsAreFinished();
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (value.use_count() > 1 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    EXPECT_EQ(value.use_count(), 1);
}
