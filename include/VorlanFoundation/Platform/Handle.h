// SPDX-License-Identifier: Apache-2.0
#pragma once

// The reference from a small movable tool to the state that it shares with the work it scheduled.

#include <VorlanFoundation/Platform/FatalError.h>

#include <memory>
#include <utility>

namespace vorlan::detail {

/// A strong reference that says so when it is used after it was moved from, where a bare pointer would crash.
template <class State>
class Handle {
public:
    explicit Handle(std::shared_ptr<State> state) noexcept : state_(std::move(state)) {}

    /// Whether there is a state: true until the handle was moved from.
    explicit operator bool() const noexcept { return state_ != nullptr; }

    State* operator->() const {
        if (!state_) fatalError("used after it was moved from", "VorlanFoundation/Handle");
        return state_.get();
    }

private:
    std::shared_ptr<State> state_;
};

} // namespace vorlan::detail
