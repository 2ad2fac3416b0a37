// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation/CallbackTable.h>

#include "tests/observation/CallbackablePlayer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;
using tests::Player;
using tests::PlayerEvent;

TEST(CallbackTest, DropsWhatItsCallableReturns) {
    const auto result = std::make_shared<int>();
    const Callback callback = [&] {
        ++*result;
        return result;
    };
    callback();
    callback();
    EXPECT_EQ(*result, 2);
    EXPECT_EQ(result.use_count(), 1);
}

TEST(CallbackTest, CallablesThatCanOnlyBeMovedWillDo) {
    Player player;
    int sum = 0;
    player.on(PlayerEvent::ended, [&, number = std::make_unique<int>(3)] { sum += *number; });
    player.callback(PlayerEvent::ended);
    player.callback(PlayerEvent::ended);
    EXPECT_EQ(sum, 6);
}

TEST(CallbackTest, EmptyFunctionThrowsWhenItIsCalled) {
    const Callback callback = std::function<void()>();
    EXPECT_THROW(callback(), std::bad_function_call);
}

TEST(CallbackTableTest, IsReadAndWrittenByKey) {
    Player player;
    std::string log;
    player.callbacks[PlayerEvent::ended] = CallbackList{[&] { log += "first "; }, [&] { log += "second "; }};
    player.on(PlayerEvent::ended, [&] { log += "third "; });
    const std::optional<CallbackList> list = player.callbacks[PlayerEvent::ended];
    ASSERT_TRUE(list);
    player.callbacks[PlayerEvent::ended] = std::nullopt;
    player.callback(PlayerEvent::ended);
    EXPECT_EQ(log, "");
    for (const auto& callback : *list) callback();
    EXPECT_EQ(log, "first second third ");
    EXPECT_EQ(std::as_const(player.callbacks)[PlayerEvent::ended], std::nullopt);
    EXPECT_EQ(player.callbacks.size(), 0U);
}

TEST(CallbackTableTest, AssignmentLeavesNothingOfTheFormerLists) {
    Player player;
    const auto captured = std::make_shared<int>();
    player.on(PlayerEvent::ended, [captured] {});
    player.on(PlayerEvent::began, [] {});
    EXPECT_EQ(player.callbacks.size(), 2U);
    player.callbacks = {};
    EXPECT_TRUE(player.callbacks.empty());
    EXPECT_EQ(captured.use_count(), 1);
    player.callbacks = std::as_const(player.callbacks);
    player.on(PlayerEvent::ended, [captured] { ++*captured; });
    player.callback(PlayerEvent::ended);
    EXPECT_EQ(*captured, 1);
}

TEST(CallbackTableTest, MoveTakesTheListsAndLeavesAnEmptyTable) {
    CallbackTable<PlayerEvent> table;
    const auto* const lists = table.lists().get();
    table[PlayerEvent::ended] = CallbackList{[] {}};
    CallbackTable<PlayerEvent> taker = std::move(table);
    EXPECT_EQ(taker.lists().get(), lists);
    EXPECT_TRUE(taker.contains(PlayerEvent::ended));
    EXPECT_TRUE(table.empty()); // NOLINT(*-use-after-move): is what this is about
    table = std::move(taker);
    EXPECT_EQ(table.lists().get(), lists);
    auto& same = table;
    table = std::move(same);
    EXPECT_EQ(table.lists().get(), lists) << "moved to itself";
}
