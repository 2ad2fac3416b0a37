// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSCache.h>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

/// Counts those that live.
struct Counted {
    explicit Counted(std::atomic<int>& counter) : living(counter) { ++living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --living; }

    const std::string content = "whole";
    std::atomic<int>& living;
};

} // namespace

TEST(NSCacheStress, EightThreadsReadChangeAndLimitACache) {
    std::atomic<int> living = 0;
    std::atomic<int> broken = 0;
    {
        NSCache<Counted> cache;
        std::latch together(8);
        std::vector<std::jthread> threads;
        for (unsigned thread = 0; thread < 8; ++thread)
            threads.emplace_back([&, thread] {
                std::mt19937 random(thread);
                together.arrive_and_wait();
                for (int step = 0; step < 5'000; ++step) {
                    const std::string key = std::to_string(random() % 64);
                    const auto what = random() % 100;
                    if (what < 80) {
                        const auto object = cache.object(key);
                        if (object && object->content != "whole") ++broken;
                    } else if (what < 95) {
                        cache.setObject(key, std::make_shared<Counted>(living), random() % 10);
                    } else if (what < 97) {
                        cache.removeObject(key);
                    } else if (what < 99) {
                        cache.setCountLimit(random() % 40);
                        cache.setTotalCostLimit(random() % 200);
                    } else {
                        cache.removeAllObjects();
                    }
                }
            });
        threads.clear();
        EXPECT_EQ(broken, 0);
        EXPECT_EQ(static_cast<std::size_t>(living), cache.count());
    }
    EXPECT_EQ(living, 0);
}
