// SPDX-License-Identifier: Apache-2.0
#pragma once

// A type with callbacks, as hosts write one.

#include <VorlanFoundation/Observation/Callbackable.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace tests {

enum class PlayerEvent { began, ended };

} // namespace tests

template <>
struct vorlan::RawValues<tests::PlayerEvent> {
    static constexpr std::array cases{std::pair(tests::PlayerEvent::began, std::string_view("began")),
                                      std::pair(tests::PlayerEvent::ended, std::string_view("ended"))};
};

namespace tests {

/// Threads: as `Callbackable`.
struct Player : vorlan::Callbackable<Player, PlayerEvent> {
    explicit Player(std::optional<vorlan::Queue> queue = {}) : callbackQueue(std::move(queue)) {}

    Callbacks callbacks;
    std::optional<vorlan::Queue> callbackQueue;
};

/// Returns once all that was submitted to the player's queue so far is done.
inline void waitForWrites(const Player& player) {
    if (player.callbackQueue) player.callbackQueue->barrierSync([] {});
}

} // namespace tests
