// SPDX-License-Identifier: Apache-2.0
#include "platform/values/LimitedWait.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vorlan {
namespace {

using namespace std::chrono_literals;

TEST(Awaited, ValueThatIsThereIsNotWaitedFor) {
    Awaited<int> number;
    number.set(7);
    EXPECT_EQ(number.wait(0s), 7);
    EXPECT_EQ(number.wait(-1s), 7);
    EXPECT_EQ(number.wait(DispatchTimeInterval::never()), 7);
}

TEST(Awaited, ValueIsThereForAll) {
    Awaited<std::string> text;
    text.set("found");
    EXPECT_EQ(text.wait(0s), "found");
    EXPECT_EQ(text.wait(0s), "found");
}

TEST(Awaited, WaitingEndsWithTheTime) {
    Awaited<int> number;
    EXPECT_EQ(number.wait(0s), std::nullopt);
    EXPECT_EQ(number.wait(-10s), std::nullopt);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(number.wait(5ms), std::nullopt);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 5ms);
    number.set(7);
    EXPECT_EQ(number.wait(0s), 7); // who came too early may ask again
}

TEST(Awaited, WaitingEndsWithTheValue) {
    Awaited<int> number;
    auto found = std::async(std::launch::async, [&] { return number.wait(10s); });
    number.set(7);
    EXPECT_EQ(found.get(), 7);
}

TEST(Awaited, WaitingWithoutALimitEndsWithTheValue) {
    // Longer than the standard library counts.
    for (const auto& limit : {DispatchTimeInterval::never(), DispatchTimeInterval(9'000'000'000s)}) {
        Awaited<int> number;
        auto found = std::async(std::launch::async, [&] { return number.wait(limit); });
        number.set(7);
        EXPECT_EQ(found.get(), 7);
    }
}

TEST(Awaited, EveryoneWhoWaitsGetsTheValue) {
    Awaited<int> number;
    std::vector<std::future<std::optional<int>>> found;
    for (int i = 0; i < 4; ++i)
        found.push_back(std::async(std::launch::async, [&] { return number.wait(10s); }));
    number.set(7);
    for (auto& one : found) EXPECT_EQ(one.get(), 7);
}

TEST(Awaited, MayBeDestroyedAsSoonAsTheValueIsThere) {
    for (int round = 0; round < 200; ++round) {
        auto number = std::make_unique<Awaited<int>>();
        std::thread setter([&number = *number, round] { number.set(round); });
        EXPECT_EQ(number->wait(10s), round);
        number.reset();
        setter.join();
    }
}

} // namespace
} // namespace vorlan
