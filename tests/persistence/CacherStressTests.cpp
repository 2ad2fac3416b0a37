// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Persistence/Cacher.h>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

using Text = std::shared_ptr<const std::string>;

/// Has eight threads do everything at once; now and then also `replaceQueue`, with a random number.
template <class ReplaceQueue>
void expectWholeObjects(Cacher<const std::string>& cacher, ReplaceQueue replaceQueue) {
    std::atomic<int> broken = 0;
    std::latch together(8);
    std::vector<std::jthread> threads;
    for (unsigned thread = 0; thread < 8; ++thread)
        threads.emplace_back([&, thread] {
            std::mt19937 random(thread);
            together.arrive_and_wait();
            for (int step = 0; step < 2'000; ++step) {
                const std::string key = std::to_string(random() % 32);
                const auto what = random() % 100;
                if (what < 70) {
                    const Text object = cacher[key];
                    if (object && *object != key) ++broken;
                } else if (what < 90) {
                    cacher[key] = std::make_shared<const std::string>(key);
                } else if (what < 94) {
                    cacher.remove(key);
                } else if (what < 96) {
                    cacher.clear();
                } else if (what < 98) {
                    cacher.setCache(std::make_shared<NSCache<const std::string>>());
                } else {
                    replaceQueue(static_cast<unsigned>(random()));
                }
            }
        });
    threads.clear();
    EXPECT_EQ(broken, 0);
}

} // namespace

TEST(CacherStress, EightThreadsReadWriteClearAndReplaceCacheAndQueue) {
    Cacher<const std::string> cacher;
    const std::vector<Queue> queues{Queue("first", Queue::concurrent), Queue("second", Queue::concurrent),
                                    Queue("third"), Queue::global()};
    expectWholeObjects(
        cacher, [&](unsigned random) { cacher.setSynchronizationQueue(queues[random % queues.size()]); });
    for (const Queue& queue : queues) queue.barrierSync([] {});
}

// Here reads go without the queue when they can.
TEST(CacherStress, EightThreadsReadWriteClearAndReplaceTheCache) {
    Cacher<const std::string> cacher;
    expectWholeObjects(cacher, [](unsigned) {});
    cacher.synchronizationQueue().barrierSync([] {});
}

TEST(CacherStress, QueueIsMadeOnceHoweverManyAskForItFirst) {
    for (int round = 0; round < 100; ++round) {
        const Cacher<int> cacher;
        std::latch together(4);
        std::vector<Queue> queues(4, Queue::main());
        {
            std::vector<std::jthread> threads;
            for (std::size_t thread = 0; thread < 4; ++thread)
                threads.emplace_back([&, thread] {
                    together.arrive_and_wait();
                    queues[thread] = cacher.synchronizationQueue();
                });
        }
        for (const Queue& queue : queues) ASSERT_EQ(queue, cacher.synchronizationQueue());
    }
}

TEST(CacherStress, OneProducerRunsForSixtyFourThreadsThatMissAKey) {
    Cacher<int> cacher;
    std::atomic<int> made = 0;
    std::latch together(64);
    std::vector<std::shared_ptr<int>> results(64);
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < 64; ++thread)
            threads.emplace_back([&, thread] {
                together.arrive_and_wait();
                results[thread] = cacher.object("a", [&] { return std::make_shared<int>(++made); });
            });
    }
    EXPECT_EQ(made, 1);
    for (const auto& result : results) EXPECT_EQ(result, results.front());
}

TEST(CacherStress, FailureOfTheOneProducerReachesAllWhoWaited) {
    Cacher<int> cacher;
    std::latch producing(1);
    std::latch asking(16);
    std::atomic<int> made = 0;
    std::atomic<int> failed = 0;
    const auto fail = [&]() -> std::shared_ptr<int> {
        ++made;
        producing.wait();
        throw std::runtime_error("no file");
    };
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 16; ++thread)
            threads.emplace_back([&] {
                asking.count_down();
                try {
                    cacher.object("a", fail);
                } catch (const std::runtime_error&) {
                    ++failed;
                }
            });
        asking.wait();
        producing.count_down();
    }
    EXPECT_EQ(failed, 16);
    EXPECT_GE(made, 1); // who comes when it has failed tries for itself
}
