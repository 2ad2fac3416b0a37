// SPDX-License-Identifier: Apache-2.0
#include "platform/cache/CacheContents.h"
#include "platform/cache/MemoryPressure.h"

#include <VorlanFoundation/Testing/ManualQueue.h>
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace vorlan {
namespace {

using namespace std::chrono_literals;
using detail::CacheContents;

// Caches come, fill, empty themselves and go while the kernel is short of memory all the time.
TEST(MemoryPressureStress, CachesOfFourThreadsGiveBackWhileTheyAreUsed) {
    const testing::TemporaryHome home;
    const auto file = home.path() / "memory.pressure";
    std::ofstream(file) << "some avg10=99.00 avg60=0.00 avg300=0.00 total=0\n";
    testing::ManualQueue queue;
    const auto pressure = std::make_shared<MemoryPressure>(file, queue);
    std::atomic<int> evictions = 0;
    std::atomic<int> atWork = 4;
    std::latch together(5);
    const auto use = [&](unsigned seed) {
        std::mt19937 random(seed);
        together.arrive_and_wait();
        for (int round = 0; round < 40; ++round) {
            const auto cache = std::make_shared<CacheContents>(pressure.get());
            cache->setEvictionHandler([&](const std::string&, const auto&) { ++evictions; });
            for (int step = 0; step < 100; ++step) {
                const auto key = std::to_string(random() % 20);
                cache->object(key);
                cache->setObject(key, std::make_shared<int>(step), 0);
                if (random() % 30 == 0) cache->removeAllObjects();
            }
        }
        --atWork;
    };
    std::vector<std::jthread> threads;
    for (unsigned thread = 0; thread < 4; ++thread) threads.emplace_back(use, thread);
    together.arrive_and_wait();
    while (atWork > 0) queue.advance(5s);
    threads.clear();

    // And once more for sure.
    const auto last = std::make_shared<CacheContents>(pressure.get());
    last->setEvictionHandler([&](const std::string&, const auto&) { ++evictions; });
    const int before = evictions;
    for (const char* key : {"a", "b", "c"}) last->setObject(key, std::make_shared<int>(0), 0);
    queue.advance(5s);
    EXPECT_EQ(evictions - before, 2);
    EXPECT_EQ(pressure->cacheCount(), 1U);
}

} // namespace
} // namespace vorlan
