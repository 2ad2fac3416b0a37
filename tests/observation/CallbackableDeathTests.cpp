// SPDX-License-Identifier: Apache-2.0

// Callbacks that would wait for the block that asks for them.

#include "tests/observation/CallbackablePlayer.h"
#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace vorlan;
using tests::Player;
using tests::PlayerEvent;

TEST(CallbackableDeathTest, CallbacksFromTheirOwnSerialQueueStopTheProcess) {
    support::useWorkerThreads();
    const Queue queue("player");
    Player player(queue);
    EXPECT_EXIT(queue.sync([&] { player.callback(PlayerEvent::ended); }), testing::KilledBySignal(SIGABRT),
                "waiting for queue 'player' from a block that it waits for would last for ever");
    EXPECT_EXIT(queue.sync([&] { player.callbackOnce(PlayerEvent::ended); }),
                testing::KilledBySignal(SIGABRT), "would last for ever");
}

TEST(CallbackableDeathTest, CallbacksFromABarrierOfTheirOwnQueueStopTheProcess) {
    support::useWorkerThreads();
    const Queue queue("player", Queue::concurrent);
    Player player(queue);
    EXPECT_EXIT(queue.barrierSync([&] { player.callback(PlayerEvent::ended); }),
                testing::KilledBySignal(SIGABRT), "would last for ever");
}
