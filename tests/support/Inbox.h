// SPDX-License-Identifier: Apache-2.0
#pragma once

// Carries values from the thread where something happened to the test that waits for it.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace support {

/// A queue of values between threads; taking waits, with a deadline.
template <class Value>
class Inbox {
public:
    /// Wakes the taker while the lock is held: it may destroy the inbox as soon as it has the value.
    void put(Value value) {
        const std::lock_guard lock(mutex_);
        values_.push_back(std::move(value));
        arrived_.notify_all();
    }

    /// The oldest value; absent when none came within ten seconds.
    std::optional<Value> take() {
        std::unique_lock lock(mutex_);
        if (!arrived_.wait_for(lock, std::chrono::seconds(10), [&] { return !values_.empty(); }))
            return std::nullopt;
        auto value = std::move(values_.front());
        values_.pop_front();
        return value;
    }

    /// How many values came and were not taken.
    std::size_t count() const {
        const std::lock_guard lock(mutex_);
        return values_.size();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Value> values_;
};

} // namespace support
