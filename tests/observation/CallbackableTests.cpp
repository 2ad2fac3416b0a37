// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/Callbackable.h>

#include "tests/observation/CallbackablePlayer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::Player;
using tests::PlayerEvent;
using tests::waitForWrites;

namespace {

// With no queue, with a serial one, and with a concurrent one.
template <class Body>
void forEachQueue(Body body) {
    const std::optional<Queue> queues[] = {// NOLINT(*-avoid-c-arrays)
                                           std::nullopt, Queue("serial"),
                                           Queue("concurrent", Queue::concurrent)};
    for (const auto& queue : queues) {
        SCOPED_TRACE(queue ? queue->label() : "no queue");
        body(queue);
    }
}

// Keeps a queue from running anything until it is let go.
class Hold {
public:
    explicit Hold(const Queue& queue) {
        queue.barrierAsync([released = released_] { released->wait(); });
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() { release(); }

    void release() {
        if (!std::exchange(isReleased_, true)) released_->count_down();
    }

private:
    std::shared_ptr<std::latch> released_ = std::make_shared<std::latch>(1);
    bool isReleased_ = false;
};

// Does something when the last copy of it is gone.
template <class Body>
std::shared_ptr<void> endOf(Body body) {
    return {nullptr, [body](void*) { body(); }};
}

std::size_t count(const Player& player, PlayerEvent key) {
    return player.callbacks[key].value().size();
}

struct Counting : Callbackable<Counting, PlayerEvent> {
    Callbacks callbacks;
    std::optional<Queue> callbackQueue;
    std::string log;

    void callback(PlayerEvent key) override {
        log += "callback ";
        Callbackable::callback(key);
    }
    void clear(PlayerEvent key) override {
        log += "clear ";
        Callbackable::clear(key);
    }
};

} // namespace

TEST(CallbackableTest, CallbacksRunInTheOrderInWhichTheyWereAdded) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::string log;
        player.on(PlayerEvent::ended, [&] { log += "first "; });
        player.on(PlayerEvent::began, [&] { log += "other "; });
        player.on(PlayerEvent::ended, [&] { log += "second "; });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "first second ");
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "first second first second ");
        player.callback(PlayerEvent::began);
        EXPECT_EQ(log, "first second first second other ");
    });
}

TEST(CallbackableTest, KeyThatNeverHadACallbackRunsNone) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        player.callback(PlayerEvent::ended);
        player.callbackOnce(PlayerEvent::ended);
        player.clear(PlayerEvent::ended);
        waitForWrites(player);
        EXPECT_FALSE(player.callbacks.contains(PlayerEvent::ended))
            << "nothing makes a list but adding to it";
        EXPECT_TRUE(player.callbacks.empty());
    });
}

TEST(CallbackableTest, ClearedKeyKeepsAnEmptyList) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        int calls = 0;
        player.on(PlayerEvent::ended, [&] { ++calls; });
        player.on(PlayerEvent::began, [&] { ++calls; });
        player.clear(PlayerEvent::ended);
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 0);
        EXPECT_EQ(count(player, PlayerEvent::ended), 0U);
        player.callback(PlayerEvent::began);
        EXPECT_EQ(calls, 1);
        player.on(PlayerEvent::ended, [&] { ++calls; });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 2);
    });
}

TEST(CallbackableTest, CallbackOnceForgetsWhatItRan) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::string log;
        player.on(PlayerEvent::ended, [&] { log += "first "; });
        player.on(PlayerEvent::ended, [&] { log += "second "; });
        player.callbackOnce(PlayerEvent::ended);
        EXPECT_EQ(log, "first second ");
        player.callbackOnce(PlayerEvent::ended);
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "first second ");
        EXPECT_EQ(count(player, PlayerEvent::ended), 0U);
    });
}

TEST(CallbackableTest, CallbackAddedBetweenReadingAndClearingIsForgottenUnrun) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        int late = 0;
        player.on(PlayerEvent::ended, [&] { player.on(PlayerEvent::ended, [&] { ++late; }); });
        player.callbackOnce(PlayerEvent::ended);
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(late, 0);
        EXPECT_EQ(count(player, PlayerEvent::ended), 0U);
    });
}

TEST(CallbackableTest, CallbackAddedAfterClearingWasQueuedStays) {
    const Queue queue("held", Queue::concurrent);
    Player player(queue);
    int calls = 0;
    std::optional<Hold> hold;
    player.on(PlayerEvent::ended, [&] { hold.emplace(queue); });
    player.callbackOnce(PlayerEvent::ended);
    player.on(PlayerEvent::ended, [&] { ++calls; }); // behind the clearing, which has not happened
    EXPECT_EQ(count(player, PlayerEvent::ended), 1U);
    hold->release();
    player.callback(PlayerEvent::ended);
    EXPECT_EQ(calls, 1);
}

TEST(CallbackableTest, RunKeepsToTheListThatItBeganWith) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::string log;
        player.on(PlayerEvent::ended, [&] {
            log += "first ";
            player.clear(PlayerEvent::ended);
            player.on(PlayerEvent::ended, [&] { log += "late "; });
            waitForWrites(player);
        });
        player.on(PlayerEvent::ended, [&] { log += "second "; });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "first second ");
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "first second late ");
    });
}

TEST(CallbackableTest, CallbacksMayRunCallbacks) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::string log;
        player.on(PlayerEvent::began, [&] { log += "began "; });
        player.on(PlayerEvent::ended, [&] {
            player.callback(PlayerEvent::began);
            log += "ended ";
        });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(log, "began ended ");
    });
}

TEST(CallbackableTest, CallbacksRunOnTheCallersThreadAndNotOnTheQueue) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::thread::id thread;
        player.on(PlayerEvent::ended, [&] {
            thread = std::this_thread::get_id();
            EXPECT_FALSE(queue && queue->isCurrent());
        });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(thread, std::this_thread::get_id());
        std::jthread([&] { player.callbackOnce(PlayerEvent::ended); }).join();
        EXPECT_NE(thread, std::this_thread::get_id());
    });
}

TEST(CallbackableTest, ChangesOfAGuardedTableHappenLaterInTheirOrder) {
    for (const auto attribute : {Queue::serial, Queue::concurrent}) {
        const Queue queue("held", attribute);
        Player player(queue);
        int calls = 0;
        Hold hold(queue);
        player.on(PlayerEvent::ended, [&] { calls += 100; });
        player.clear(PlayerEvent::ended);
        player.on(PlayerEvent::ended, [&] { ++calls; });
        EXPECT_TRUE(player.callbacks.empty()) << "the calls returned at once";
        hold.release();
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 1) << "reading waited for what was submitted before";
    }
}

TEST(CallbackableTest, ChangeThatIsStillQueuedOutlivesTheObject) {
    const Queue queue("held", Queue::concurrent);
    std::latch ended(1);
    Hold hold(queue);
    {
        Player player(queue);
        player.on(PlayerEvent::ended, [end = endOf([&] { ended.count_down(); })] {});
        player.clear(PlayerEvent::began);
    }
    EXPECT_FALSE(ended.try_wait()) << "the callback is on its way";
    hold.release();
    ended.wait();
}

TEST(CallbackableTest, CallbackMayDestroyTheObject) {
    forEachQueue([](const std::optional<Queue>& queue) {
        for (const bool once : {true, false}) {
            auto player = std::make_unique<Player>(queue);
            std::string log;
            player->on(PlayerEvent::ended, [&] {
                log += "first ";
                player.reset();
            });
            player->on(PlayerEvent::ended, [&] { log += "second "; });
            once ? player->callbackOnce(PlayerEvent::ended) : player->callback(PlayerEvent::ended);
            EXPECT_EQ(log, "first second ");
            EXPECT_EQ(player, nullptr);
        }
    });
}

TEST(CallbackableTest, EndOfACallbackMayUseTheTable) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::latch ended(1);
        player.on(PlayerEvent::ended, [end = endOf([&] {
                                           player.callbacks[PlayerEvent::began] = CallbackList();
                                           ended.count_down();
                                       })] {});
        player.clear(PlayerEvent::ended);
        ended.wait();
        EXPECT_TRUE(player.callbacks.contains(PlayerEvent::began));
        waitForWrites(player);
    });
}

TEST(CallbackableTest, ObjectMayGoWithTheCallbacksThatAreCleared) {
    auto player = std::make_unique<Player>();
    player->on(PlayerEvent::ended, [end = endOf([&] { player.reset(); })] {});
    player->clear(PlayerEvent::ended);
    EXPECT_EQ(player, nullptr);
}

TEST(CallbackableTest, ReplacedOperationsTakePartInCallbackOnce) {
    Counting counting;
    counting.on(PlayerEvent::ended, [&] { counting.log += "run "; });
    counting.callbackOnce(PlayerEvent::ended);
    EXPECT_EQ(counting.log, "callback run clear ");
}

TEST(CallbackableTest, ExceptionReachesTheCallerAndNothingIsForgotten) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        std::string log;
        player.on(PlayerEvent::ended, [&] { log += "first "; });
        player.on(PlayerEvent::ended, [] { throw std::runtime_error("no"); });
        player.on(PlayerEvent::ended, [&] { log += "third "; });
        EXPECT_THROW(player.callback(PlayerEvent::ended), std::runtime_error);
        EXPECT_THROW(player.callbackOnce(PlayerEvent::ended), std::runtime_error);
        EXPECT_EQ(log, "first first ");
        waitForWrites(player);
        EXPECT_EQ(count(player, PlayerEvent::ended), 3U);
    });
}

TEST(CallbackableTest, CallbackKeepsItsStateThroughChangesOfTheList) {
    Player player;
    int seen = 0;
    player.on(PlayerEvent::ended, [&, calls = 0]() mutable {
        player.on(PlayerEvent::ended, [] {});
        seen = ++calls;
    });
    for (int round = 1; round <= 3; ++round) {
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(seen, round);
    }
}

TEST(CallbackableTest, CopyHasATableOfItsOwn) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        int calls = 0;
        player.on(PlayerEvent::ended, [&] { ++calls; });
        waitForWrites(player);
        Player copy = player;
        player.clear(PlayerEvent::ended);
        copy.on(PlayerEvent::ended, [&] { ++calls; });
        player.callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 0);
        copy.callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 2);
        EXPECT_EQ(copy.callbackQueue, player.callbackQueue);
        player = copy;
        player.callbackOnce(PlayerEvent::ended);
        EXPECT_EQ(calls, 4);
        EXPECT_EQ(count(copy, PlayerEvent::ended), 2U);
    });
}

TEST(CallbackableTest, WhatIsQueuedGoesAlongWithAMovedObject) {
    for (const auto attribute : {Queue::serial, Queue::concurrent}) {
        const Queue queue("held", attribute);
        Player player(queue);
        int calls = 0;
        Hold hold(queue);
        player.on(PlayerEvent::ended, [&] { ++calls; });
        std::vector<Player> players;
        players.push_back(std::move(player));
        players.emplace_back(queue); // the first one is moved once more
        players.back().on(PlayerEvent::ended, [&] { calls += 100; });
        players.back() = std::move(players.front());
        hold.release();
        players.back().callback(PlayerEvent::ended);
        EXPECT_EQ(calls, 1);
    }
    static_assert(std::is_nothrow_move_constructible_v<Player> && std::is_nothrow_move_assignable_v<Player>);
}

TEST(CallbackableTest, MovedObjectLeavesOneThatCanBeUsed) {
    forEachQueue([](const std::optional<Queue>& queue) {
        Player player(queue);
        int calls = 0;
        player.on(PlayerEvent::ended, [&] { ++calls; });
        Player taker = std::move(player);
        player.callbackQueue = queue; // NOLINT(*-use-after-move): is what this is about
        player.callbackOnce(PlayerEvent::ended);
        EXPECT_EQ(calls, 0);
        player.on(PlayerEvent::ended, [&] { calls += 10; });
        player.callbackOnce(PlayerEvent::ended);
        EXPECT_EQ(calls, 10);
        taker.callbackOnce(PlayerEvent::ended);
        EXPECT_EQ(calls, 11);
    });
}

TEST(CallbackableTest, WhatIsQueuedGoesToTheOriginalOfACopyOnly) {
    const Queue queue("held", Queue::concurrent);
    Player player(queue);
    int calls = 0;
    player.on(PlayerEvent::ended, [&] { ++calls; });
    waitForWrites(player);
    Hold hold(queue);
    player.on(PlayerEvent::ended, [&] { calls += 10; });
    Player copy = player;
    hold.release();
    copy.callback(PlayerEvent::ended);
    EXPECT_EQ(calls, 1);
    player.callback(PlayerEvent::ended);
    EXPECT_EQ(calls, 12);
}
