// SPDX-License-Identifier: Apache-2.0
#pragma once

// A point on the monotonic dispatch clock, which does not advance while the machine sleeps.

#include <VorlanFoundation/Platform/DispatchTimeInterval.h>
#include <VorlanFoundation/Platform/Export.h>

#include <compare>
#include <cstdint>
#include <limits>

namespace vorlan {

/// A point in time to which work can be put off: so many nanoseconds of the machine's uptime.
///
/// Adding an interval stops at the ends of the clock: the result is never before `DispatchTime(0)` and never
/// after `distantFuture()`; adding `DispatchTimeInterval::never()` gives `distantFuture()`.
///
/// Threads: safe from any thread (a plain value).
/// Time:    CLOCK_MONOTONIC, in nanoseconds. A queue may keep another clock (a test's, turned by hand):
///          deadlines for a queue are computed from `Queue::now()`.
class DispatchTime {
public:
    /// The point at which the clock had counted that many nanoseconds.
    explicit constexpr DispatchTime(std::uint64_t uptimeNanoseconds) noexcept : uptime_(uptimeNanoseconds) {}

    /// The present, by the machine's own clock.
    VORLAN_EXPORT static DispatchTime now() noexcept;

    /// The point that is never reached: work put off until then never runs.
    static constexpr DispatchTime distantFuture() noexcept {
        return DispatchTime(std::numeric_limits<std::uint64_t>::max());
    }

    /// Nanoseconds since the clock began.
    constexpr std::uint64_t uptimeNanoseconds() const noexcept { return uptime_; }

    friend constexpr auto operator<=>(const DispatchTime&, const DispatchTime&) = default;

    /// The point `interval` after (or, when it is negative, before) this one.
    friend constexpr DispatchTime operator+(DispatchTime time, DispatchTimeInterval interval) noexcept {
        if (interval.isNever() || time == distantFuture()) return distantFuture();
        const auto step = static_cast<std::uint64_t>(interval.nanoseconds());
        if (interval.nanoseconds() < 0) return DispatchTime(-step > time.uptime_ ? 0 : time.uptime_ + step);
        return DispatchTime(saturating::add(time.uptime_, step));
    }

    /// The span from `from` to `to`, cut to the longest or shortest interval.
    friend constexpr DispatchTimeInterval operator-(DispatchTime to, DispatchTime from) noexcept {
        if (to == distantFuture()) return DispatchTimeInterval::never();
        const bool forward = to >= from;
        const std::uint64_t span = forward ? to.uptime_ - from.uptime_ : from.uptime_ - to.uptime_;
        const auto longest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        const auto count = static_cast<std::int64_t>(span < longest ? span : longest);
        return std::chrono::nanoseconds(forward ? count : -count);
    }

private:
    std::uint64_t uptime_;
};

} // namespace vorlan
