// SPDX-License-Identifier: Apache-2.0
#pragma once

// Waiting for a condition or a value, for as long as an interval says.

#include <VorlanFoundation/Platform/DispatchTime.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>

namespace vorlan {

/// Waits until `condition` is true; false when `limit` went by before. The standard library counts to the end of
/// the wait in fewer bits than an interval has, and would not wait at all where that does not fit.
template <class Condition>
bool waitUntil(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
               DispatchTimeInterval limit, Condition condition) {
    const auto deadline = (DispatchTime::now() + limit).uptimeNanoseconds();
    if (deadline > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        changed.wait(lock, condition);
        return true;
    }
    // Both clocks are CLOCK_MONOTONIC.
    const std::chrono::steady_clock::time_point end(
        std::chrono::nanoseconds(static_cast<std::int64_t>(deadline)));
    return changed.wait_until(lock, end, condition);
}

/// A value that a thread waits for while another one finds it.
///
/// Threads: safe from any thread.
template <class Value>
class Awaited {
public:
    /// Sets the value, for good.
    void set(Value value) {
        const std::lock_guard lock(
            mutex_); // kept while waking: the waiter may destroy this as soon as it can
        value_ = std::move(value);
        changed_.notify_all();
    }

    /// The value, once it is set; absent when `limit` went by before.
    std::optional<Value> wait(DispatchTimeInterval limit) {
        std::unique_lock lock(mutex_);
        waitUntil(changed_, lock, limit, [this] { return value_.has_value(); });
        return value_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Value> value_;
};

} // namespace vorlan
