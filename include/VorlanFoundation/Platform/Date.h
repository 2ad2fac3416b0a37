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
    /// The present, or what a test has the wall clock show (`testing::WallClock`).
    VORLAN_EXPORT Date() noexcept;

    /// So many seconds after (or, when negative, before) 2001-01-01T00:00:00Z.
    explicit constexpr Date(double timeIntervalSinceReferenceDate) noexcept
        : seconds_(timeIntervalSinceReferenceDate) {}

    /// The date of a point on the system's clock.
    VORLAN_EXPORT Date(std::chrono::system_clock::time_point time) noexcept; // NOLINT: the same thing

    /// So many seconds after (or, when negative, before) 1970-01-01T00:00:00Z.
    static constexpr Date fromTimeIntervalSince1970(double seconds) noexcept {
        return Date(seconds - secondsTo2001);
    }

    /// A date before all that an application deals with: the start of year 1 in the calendar of its time, the
    /// Julian.
    static constexpr Date distantPast() noexcept { return Date(-63'114'076'800.0); }

    /// A date after all that an application deals with: the start of year 4001.
    static constexpr Date distantFuture() noexcept { return Date(63'113'904'000.0); }

    /// Seconds since 2001-01-01T00:00:00Z.
    constexpr double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }

    /// Seconds since 1970-01-01T00:00:00Z. Where a whole number of microseconds since then makes this very date, it is
    /// that: `fromTimeIntervalSince1970(0.0005)` gives 0.0005 back, although the date itself is kept to 0.1
    /// microseconds only.
    VORLAN_EXPORT double timeIntervalSince1970() const noexcept;

    /// Seconds from `other` to this date; negative when this one is earlier.
    constexpr double timeIntervalSince(Date other) const noexcept { return seconds_ - other.seconds_; }

    /// The second that the date is in, in UTC and the Gregorian calendar: "2024-03-05 14:07:09 +0000". A date that
    /// is no number, or so far away that its seconds do not fit into 64 bits, is described by its seconds.
    VORLAN_EXPORT std::string description() const;

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    static constexpr double secondsTo2001 = 978'307'200;

    double seconds_;
};

} // namespace vorlan
