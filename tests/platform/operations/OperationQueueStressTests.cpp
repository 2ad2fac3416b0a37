// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/OperationQueue.h>

#include <VorlanFoundation/Execution/AsynchronousOperation.h>

#include "tests/support/ThreadCount.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <latch>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using support::threadCount;

namespace {

// How many are under way, and the most there ever were.
struct Gauge {
    void enter() {
        const int now = ++current;
        for (int known = most; known < now && !most.compare_exchange_weak(known, now);) {}
    }
    void leave() { --current; }

    std::atomic<int> current = 0;
    std::atomic<int> most = 0;
};

// Is finished on a thread of the process's pool.
class Fetch : public AsynchronousOperation {
public:
    explicit Fetch(Gauge& gauge) : gauge_(gauge) {}

    std::atomic<int> begun = 0;

private:
    void main() override {
        AsynchronousOperation::main();
        if (!isExecuting()) return;
        ++begun;
        gauge_.enter();
        Queue::global().async([self = shared(this)] {
            self->gauge_.leave();
            self->finish();
        });
    }

    Gauge& gauge_;
};

// Whether two operations of the queue are under way at a time.
bool twoMeet(OperationQueue& queue) {
    std::mutex mutex;
    std::condition_variable arrived;
    int begun = 0;
    bool haveMet = true;
    for (int i = 0; i < 2; ++i)
        queue.addOperation([&] {
            std::unique_lock lock(mutex);
            ++begun;
            arrived.notify_all();
            if (!arrived.wait_for(lock, std::chrono::seconds(10), [&] { return begun == 2; }))
                haveMet = false;
        });
    queue.waitUntilAllOperationsAreFinished();
    return haveMet;
}

} // namespace

TEST(OperationQueueStress, FiveHundredBlockingOperationsMakeNoMoreThreadsThanTheWidth) {
    constexpr int width = 8;
    const auto before = threadCount();
    std::latch mayEnd(1);
    std::latch isFull(width);
    std::atomic<int> running = 0;
    OperationQueue queue({.maxConcurrentOperationCount = width});
    for (int i = 0; i < 500; ++i)
        queue.addOperation([&] {
            if (++running <= width) isFull.count_down();
            mayEnd.wait();
        });
    isFull.wait();
    EXPECT_EQ(running, width);
    EXPECT_LE(threadCount(), before + width); // Those of earlier cases may have left meanwhile.
    mayEnd.count_down();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(running, 500);
    EXPECT_LE(threadCount(), before + width);
}

TEST(OperationQueueStress, AHundredThousandOperationsRunOnceEachAtAWidthOfTwo) {
    constexpr std::size_t count = 100'000;
    std::vector<std::atomic<int>> runs(count);
    Gauge gauge;
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    for (auto& run : runs)
        queue.addOperation([&] {
            gauge.enter();
            ++run;
            gauge.leave();
        });
    queue.waitUntilAllOperationsAreFinished();
    std::size_t wrong = 0;
    for (const auto& run : runs) wrong += run == 1 ? 0U : 1U;
    EXPECT_EQ(wrong, 0U);
    EXPECT_LE(gauge.most, 2);
    EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(OperationQueueStress, NoMoreAsynchronousOperationsThanTheWidthAreUnderWay) {
    Gauge gauge;
    OperationQueue queue({.maxConcurrentOperationCount = 3});
    std::vector<std::shared_ptr<Fetch>> fetches;
    for (int i = 0; i < 5'000; ++i) {
        fetches.push_back(std::make_shared<Fetch>(gauge));
        queue.addOperation(fetches.back());
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_LE(gauge.most, 3);
    for (const auto& fetch : fetches) ASSERT_EQ(fetch->begun, 1);
}

TEST(OperationQueueStress, NoMoreOperationsThanTheWidthAreUnderWayAndAsManyWhenTheyBlock) {
    constexpr int width = 4;
    Gauge gauge;
    std::latch isFull(width);
    std::atomic<int> begun = 0;
    OperationQueue queue({.maxConcurrentOperationCount = width});
    for (int i = 0; i < 5'000; ++i)
        queue.addOperation([&] {
            gauge.enter();
            if (++begun <= width) isFull.arrive_and_wait(); // The first ones meet.
            gauge.leave();
        });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(gauge.most, width);
    EXPECT_EQ(begun, 5'000);
}

TEST(OperationQueueStress, CancellingAtRandomPointsFinishesAllAndRunsNoneTwice) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    Gauge gauge;
    OperationQueue queue({.maxConcurrentOperationCount = 3});
    std::vector<std::shared_ptr<Fetch>> fetches;
    for (int i = 0; i < 2'000; ++i) {
        auto fetch = std::make_shared<Fetch>(gauge);
        if (!fetches.empty() && random() % 3 == 0) fetch->addDependency(fetches[random() % fetches.size()]);
        fetches.push_back(std::move(fetch));
    }
    {
        std::vector<std::jthread> cancellers;
        for (unsigned t = 0; t < 3; ++t)
            cancellers.emplace_back([&, t] {
                std::minstd_rand own(seed + t);
                for (int i = 0; i < 1'000; ++i) fetches[own() % fetches.size()]->cancel();
            });
        for (const auto& fetch : fetches) queue.addOperation(fetch);
    }
    queue.waitUntilAllOperationsAreFinished();
    for (const auto& fetch : fetches) {
        ASSERT_TRUE(fetch->isFinished());
        ASSERT_LE(fetch->begun, 1);
        ASSERT_TRUE(fetch->isCancelled() || fetch->begun == 1);
    }
}

TEST(OperationQueueStress, AddedSuspendedResizedAndCancelledByManyThreadsAllFinish) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    constexpr std::size_t each = 500;
    std::vector<std::atomic<int>> runs(4 * each);
    std::vector<std::shared_ptr<Operation>> all(4 * each);
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                std::minstd_rand random(static_cast<unsigned>(seed + t));
                for (std::size_t i = t * each; i < (t + 1) * each; ++i) {
                    all[i] = queue.addOperation([&runs, i] { ++runs[i]; });
                    if (random() % 50 == 0) queue.setSuspended(random() % 2 == 0);
                    if (random() % 50 == 0)
                        queue.setMaxConcurrentOperationCount(static_cast<int>(1 + random() % 4));
                    if (random() % 100 == 0) queue.cancelAllOperations();
                }
            });
    }
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_TRUE(all[i]->isFinished());
        ASSERT_LE(runs[i], 1);
        ASSERT_TRUE(all[i]->isCancelled() || runs[i] == 1);
    }
}

TEST(OperationQueueStress, WidthSetByTwoThreadsAtOnceIsOneThatItReallyHas) {
    constexpr int rounds = 5'000;
    OperationQueue queue;
    std::barrier both(2);
    std::jthread other([&] {
        for (int round = 0; round < rounds; ++round) {
            both.arrive_and_wait();
            queue.setMaxConcurrentOperationCount(1);
            both.arrive_and_wait();
        }
    });
    int rejected = 0;
    for (int round = 0; round < rounds; ++round) {
        both.arrive_and_wait();
        queue.setMaxConcurrentOperationCount(2);
        both.arrive_and_wait();
        if (rejected == 0 && queue.maxConcurrentOperationCount() == 2 && !twoMeet(queue)) ++rejected;
    }
    EXPECT_EQ(rejected, 0) << "a width of two was stated, but two operations were not under way at a time";
}
