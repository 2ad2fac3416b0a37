// SPDX-License-Identifier: Apache-2.0
#pragma once

// A point on the calendar's time line.

#include <VorlanFoundation/Platform/Export.h>

#include <chrono>
#include <compare>
#include <string>

namespace vorlan {

/// A calendar date: so many seconds since the start of 2001 in UTC, by the wall clock.
///
/// The wall clock can be set, so a later date is not always the larger one; spans that matter are measured on
/// a queue's clock (`DispatchTime`).
///
/// Threads: safe from any thread (a plain value).
/// Time:    CLOCK_REALTIME, seconds as a double: to about 0.1 microseconds in this century.
class Date {
public:
    /// The present.
    VORLAN_EXPORT Date() noexcept;

    /// So many seconds after (or, when negative, before) 2001-01-01T00:00:00Z.
    explicit constexpr Date(double timeIntervalSinceReferenceDate) noexcept
        : seconds_(timeIntervalSinceReferenceDate) {}

    /// The date of a point on the system's clock.
    VORLAN_EXPORT Date(std::chrono::system_clock::time_point time) noexcept; // NOLINT: the same thing

    /// A date before all that an application deals with: the start of year 1 in the calendar of its time, the
    /// Julian.
    static constexpr Date distantPast() noexcept { return Date(-63'114'076'800.0); }

    /// A date after all that an application deals with: the start of year 4001.
    static constexpr Date distantFuture() noexcept { return Date(63'113'904'000.0); }

    /// Seconds since 2001-01-01T00:00:00Z.
    constexpr double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }

    /// Seconds from `other` to this date; negative when this one is earlier.
    constexpr double timeIntervalSince(Date other) const noexcept { return seconds_ - other.seconds_; }

    /// The second that the date is in, in UTC and the Gregorian calendar: "2024-03-05 14:07:09 +0000". A date that
    /// is no number, or so far away that its seconds do not fit into 64 bits, is described by its seconds.
    VORLAN_EXPORT std::string description() const;

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    double seconds_;
};

} // namespace vorlan
