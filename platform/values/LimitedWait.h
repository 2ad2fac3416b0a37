// SPDX-License-Identifier: Apache-2.0
#pragma once

// Waiting for a condition, for as long as an interval says.

#include <VorlanFoundation/Platform/DispatchTime.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>

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

} // namespace vorlan
