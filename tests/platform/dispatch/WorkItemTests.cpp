// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/WorkItem.h>

#include <VorlanFoundation/Platform/Queue.h>

#include <gtest/gtest.h>

#include <chrono>
#include <latch>
#include <memory>

using namespace vorlan;
using namespace std::chrono_literals;

TEST(WorkItem, RunsWhenSubmittedAndOnceForEachSubmission) {
    const Queue queue("queue");
    int runs = 0;
    const WorkItem item([&] { ++runs; });
    queue.async(item);
    queue.async(item);
    queue.asyncAfter(-1s, item);
    queue.sync([] {});
    EXPECT_GE(queue.sync([&] { return runs; }), 2);
}

TEST(WorkItem, CancellingBeforeItStartsKeepsItFromRunning) {
    const Queue queue("queue");
    bool hasRun = false;
    const WorkItem item([&] { hasRun = true; });
    std::latch go(1);
    queue.async([&] { go.wait(); });
    queue.async(item);
    EXPECT_FALSE(item.isCancelled());
    item.cancel();
    EXPECT_TRUE(item.isCancelled());
    go.count_down();
    EXPECT_FALSE(queue.sync([&] { return hasRun; }));
}

TEST(WorkItem, CancellingAfterItStartedDoesNotInterruptIt) {
    const Queue queue("queue");
    std::latch started(1);
    std::latch go(1);
    bool hasFinished = false;
    const WorkItem item([&] {
        started.count_down();
        go.wait();
        hasFinished = true;
    });
    queue.async(item);
    started.wait();
    item.cancel();
    item.cancel();
    go.count_down();
    EXPECT_TRUE(queue.sync([&] { return hasFinished; }));
}

TEST(WorkItem, CopiesAreHandlesOfTheSameUnit) {
    int runs = 0;
    const WorkItem item([&] { ++runs; });
    const WorkItem copy = item;
    copy();
    copy.cancel();
    EXPECT_TRUE(item.isCancelled());
    item();
    EXPECT_EQ(runs, 1);
}

TEST(WorkItem, KeepsItsCallableUntilTheLastHandleIsGone) {
    auto captured = std::make_shared<int>();
    const std::weak_ptr<int> watched = captured;
    {
        const Queue queue("queue");
        const WorkItem item([captured = std::move(captured)] {});
        queue.async(item);
        queue.sync([] {});
        item.cancel();
        EXPECT_FALSE(watched.expired());
    }
    EXPECT_TRUE(watched.expired());
}
