// SPDX-License-Identifier: Apache-2.0
#pragma once

// A span of time as queues understand it: a whole count of seconds, milliseconds, microseconds or
// nanoseconds, or "never".
//
//     delayOnMainThread(250ms, [] { blink(); });
//     timer.schedule({.deadline = queue.now() + 1s, .repeating = DispatchTimeInterval::never()});

#include <VorlanFoundation/Platform/CheckedArithmetic.h>

#include <chrono>
#include <concepts>
#include <cstdint>
#include <limits>
#include <ratio>
#include <utility>

namespace vorlan {

namespace detail {
template <class Period>
inline constexpr bool isDispatchUnit =
    std::same_as<Period, std::ratio<1>> || std::same_as<Period, std::milli> ||
    std::same_as<Period, std::micro> || std::same_as<Period, std::nano>;
} // namespace detail

/// A whole count of one of the four units of time, or `never()`.
///
/// Spans of more than about 292 years are cut to the longest or shortest one; `never()` is longer than all.
///
/// Threads: safe from any thread (a plain value).
/// Time:    whole nanoseconds; which clock they are measured on is up to the interface that takes the
///          interval.
class DispatchTimeInterval {
public:
    /// The span of a std::chrono duration that counts one of the four units in whole numbers.
    template <std::integral Count, class Period>
        requires detail::isDispatchUnit<Period>
    constexpr DispatchTimeInterval(
        std::chrono::duration<Count, Period> span) noexcept // NOLINT: implicit by design
        : nanoseconds_(saturating::multiply<std::int64_t>(clamp(span.count()),
                                                          Period::num * (std::nano::den / Period::den))) {}

    /// The interval after which nothing ever happens.
    static constexpr DispatchTimeInterval never() noexcept {
        DispatchTimeInterval interval(std::chrono::nanoseconds::max());
        interval.never_ = true;
        return interval;
    }

    /// Whether this is `never()`.
    constexpr bool isNever() const noexcept { return never_; }

    /// The span in nanoseconds; the largest value for `never()`.
    constexpr std::int64_t nanoseconds() const noexcept { return nanoseconds_; }

    /// Equal spans are equal in whatever unit they were given; `never()` equals itself alone.
    friend constexpr bool operator==(const DispatchTimeInterval&, const DispatchTimeInterval&) = default;

private:
    template <std::integral Count>
    static constexpr std::int64_t clamp(Count count) noexcept {
        if (std::in_range<std::int64_t>(count)) return static_cast<std::int64_t>(count);
        return count < 0 ? std::numeric_limits<std::int64_t>::min()
                         : std::numeric_limits<std::int64_t>::max();
    }

    std::int64_t nanoseconds_;
    bool never_ = false;
};

} // namespace vorlan
