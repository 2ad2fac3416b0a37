// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/OperationQueue.h>

#include <VorlanFoundation/Execution/AsynchronousOperation.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

std::size_t threadCount() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                                                  std::filesystem::directory_iterator()));
}

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
    EXPECT_EQ(threadCount(), before + width);
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
    std::atomic<int> completed = 0;
    OperationQueue queue({.maxConcurrentOperationCount = 2});
    std::vector<std::shared_ptr<Operation>> all(4 * 500);
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                std::minstd_rand random(static_cast<unsigned>(seed + t));
                for (std::size_t i = 0; i < 500; ++i) {
                    all[t * 500 + i] = queue.addOperation([&] { ++completed; });
                    if (random() % 50 == 0) queue.setSuspended(random() % 2 == 0);
                    if (random() % 50 == 0)
                        queue.setMaxConcurrentOperationCount(static_cast<int>(1 + random() % 4));
                    if (random() % 100 == 0) queue.cancelAllOperations();
                }
            });
    }
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    int cancelled = 0;
    for (const auto& one : all) {
        ASSERT_TRUE(one->isFinished());
        cancelled += one->isCancelled() ? 1 : 0;
    }
    EXPECT_GE(completed + cancelled, 2'000);
}
