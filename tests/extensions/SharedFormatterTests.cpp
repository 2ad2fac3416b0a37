// SPDX-License-Identifier: Apache-2.0

// The place that a shared formatter has, with things in it that tell when they are released.

#include "extensions/SharedFormatter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;

namespace {

using Thing = std::shared_ptr<int>;

int made = 0;

Thing make() {
    return std::make_shared<int>(++made);
}

} // namespace

TEST(SharedFormatterTest, IsMadeAtTheFirstUse) {
    made = 0;
    SharedFormatter<Thing> shared(make);
    EXPECT_EQ(made, 0);
    const auto thing = shared.get();
    EXPECT_EQ(made, 1);
    EXPECT_EQ(shared.get(), thing);
    EXPECT_EQ(made, 1);
}

TEST(SharedFormatterTest, IsMadeBeforeItIsReplacedForTheFirstTime) {
    made = 0;
    SharedFormatter<Thing> shared(make);
    const auto mine = std::make_shared<int>(7);
    shared.set(mine);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(shared.get(), mine);
    shared.set(std::make_shared<int>(8));
    EXPECT_EQ(made, 1);
}

TEST(SharedFormatterTest, ReplacedOneIsReleased) {
    SharedFormatter<Thing> shared(make);
    const std::weak_ptr first = shared.get();
    EXPECT_FALSE(first.expired());
    auto mine = std::make_shared<int>(7);
    const std::weak_ptr second = mine;
    shared.set(std::move(mine));
    EXPECT_TRUE(first.expired());
    EXPECT_FALSE(second.expired());
    shared.set(std::make_shared<int>(8));
    EXPECT_TRUE(second.expired());
}

TEST(SharedFormatterTest, ReplacedOneMayUseThePlaceWhenItIsReleased) {
    SharedFormatter<Thing> shared(make);
    std::optional<int> seen;
    shared.set(Thing(new int(7), [&](const int* number) {
        delete number;
        seen = *shared.get();
    }));
    shared.set(std::make_shared<int>(8));
    EXPECT_EQ(seen, 8);
}

TEST(SharedFormatterTest, IsMadeOnceForAllThreads) {
    static std::atomic<int> count;
    count = 0;
    SharedFormatter<Thing> shared([] { return std::make_shared<int>(++count); });
    std::latch start(16);
    std::atomic<int> sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            sum += *shared.get();
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(sum, 16);
}
