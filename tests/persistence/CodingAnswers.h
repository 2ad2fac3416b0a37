// SPDX-License-Identifier: Apache-2.0
#pragma once

// What coding gave, as tests look at it.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Result.h>

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace vorlan::tests {

inline std::optional<std::string> asText(const std::optional<Data>& data) {
    return data ? std::optional(textFromData(*data)) : std::nullopt;
}

/// What a handler was called with, how often and where.
template <class T>
struct Answer {
    // As a handler that takes its argument by value.
    std::function<void(Result<T>)> handler() {
        return [this](Result<T> result) {
            ++calls;
            thread = std::this_thread::get_id();
            content = std::move(result);
        };
    }

    bool cameOnceOnThisThread() const { return calls == 1 && thread == std::this_thread::get_id(); }

    int calls = 0;
    std::thread::id thread;
    std::optional<Result<T>> content;
};

} // namespace vorlan::tests
