// SPDX-License-Identifier: Apache-2.0

// Callbacks of one object in the hands of several threads.

#include "tests/observation/CallbackablePlayer.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <latch>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using tests::Player;
using tests::PlayerEvent;
using tests::waitForWrites;

namespace {

constexpr std::size_t threadCount = 8;
constexpr int rounds = 300;

template <class Body>
void onAllThreads(Body body) {
    std::latch start(threadCount);
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            body(i);
        });
}

// The latest callback of each adding thread that the run of the present thread has seen.
thread_local std::array<int, threadCount> latest;

PlayerEvent eventOf(std::size_t number) {
    return number % 2 == 0 ? PlayerEvent::began : PlayerEvent::ended;
}

// What several threads do with a player; how often a callback ran before one that was added earlier. Callbacks share
// the number, as where a queue has no barriers they may outlive this.
int disorder(Player& player, unsigned seed) {
    const auto disorder = std::make_shared<std::atomic<int>>(0);
    onAllThreads([&](std::size_t thread) {
        std::mt19937 random(seed + static_cast<unsigned>(thread));
        for (int round = 1; round <= rounds; ++round) {
            const auto key = eventOf(random());
            player.on(key, [disorder, thread, round] {
                if (latest[thread] >= round) ++*disorder;
                latest[thread] = round;
            });
            latest.fill(0);
            switch (random() % 8) {
            case 0: player.clear(key); break;
            case 1: player.callbackOnce(key); break;
            default: player.callback(key);
            }
        }
    });
    waitForWrites(player);
    return *disorder;
}

} // namespace

TEST(CallbackableStress, CallbacksOfEveryThreadRunInTheirOrder) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    for (const auto& queue : {std::optional<Queue>(), std::optional(Queue("serial")),
                              std::optional(Queue("concurrent", Queue::concurrent))}) {
        SCOPED_TRACE(queue ? queue->label() : "no queue");
        Player player(queue);
        EXPECT_EQ(disorder(player, seed), 0);
    }
}

// A global queue runs barriers like any block: there is no order, and nothing worse.
TEST(CallbackableStress, TableBearsAQueueWithoutBarriers) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Player player(Queue::global());
    disorder(player, seed);
    player.callbackQueue = std::nullopt;
    int calls = 0;
    // Each clearing that is still queued can come in between once.
    for (std::size_t round = 0; calls == 0 && round <= threadCount * rounds; ++round) {
        player.on(PlayerEvent::began, [&] { ++calls; });
        player.callback(PlayerEvent::began);
    }
    EXPECT_GE(calls, 1);
}

TEST(CallbackableStress, EveryCallbackThatIsAddedAloneRunsOnce) {
    for (const auto attribute : {Queue::serial, Queue::concurrent}) {
        std::atomic<int> calls = 0;
        const Queue queue("player", attribute);
        onAllThreads([&](std::size_t) {
            for (int round = 0; round < rounds; ++round) {
                Player player(queue); // gone while its clearing may still be queued
                player.on(PlayerEvent::ended, [&] { ++calls; });
                player.callbackOnce(PlayerEvent::ended);
                player.callbackOnce(PlayerEvent::ended);
            }
        });
        EXPECT_EQ(calls, static_cast<int>(threadCount) * rounds);
    }
}

TEST(CallbackableStress, ListsAreReadWrittenAndCopiedWhileCallbacksRun) {
    Player player(Queue("player", Queue::concurrent));
    std::atomic<std::size_t> seen = 0;
    onAllThreads([&](std::size_t thread) {
        for (int round = 0; round < rounds; ++round) {
            const auto key = eventOf(static_cast<std::size_t>(round));
            switch (thread % 4) {
            case 0: player.on(key, [&] { ++seen; }); break;
            case 1: player.callback(key); break;
            case 2: player.callbacks[key] = CallbackList{[&] { ++seen; }}; break;
            default: {
                Player copy(std::nullopt);
                copy.callbacks = player.callbacks;
                copy.callbackOnce(key);
            }
            }
        }
    });
    player.callback(PlayerEvent::began);
    EXPECT_GT(seen, 0U);
    EXPECT_EQ(player.callbacks.size(), 2U);
}
