// SPDX-License-Identifier: Apache-2.0
#pragma once

// What clocks and calendars on the wall show, from ICU's offsets and the civil calendar of the standard library alone.

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unicode/ucal.h>
#include <vector>

namespace vorlan::tests {

/// The days of the civil calendar by their numbers: 0 is 1970-01-01.
using DayNumber = std::int64_t;

DayNumber dayNumber(int year, unsigned month, unsigned day);

/// "2011-12-30"
std::string dayText(DayNumber day);

/// ICU's calendar in a zone, by its interface for C.
///
/// Threads: one thread at a time.
class ReferenceCalendar {
public:
    /// Of the locale's custom for weeks.
    explicit ReferenceCalendar(const std::string& zone, const std::string& locale = "en_US");

    /// Goes to a time, in seconds since 1970.
    void go(double time);
    /// A field (UCAL_...) at that time.
    int field(int field) const;
    /// How many milliseconds local time is ahead at that time.
    int offset() const;
    /// How many seconds local time is ahead at a time.
    int offsetAt(std::int64_t time);
    /// The first time after that time at which local time is so far ahead as it was not before.
    std::optional<std::int64_t> nextChange(std::int64_t time);

private:
    std::shared_ptr<UCalendar> calendar_;
};

/// The offsets of a zone between two times, found by asking for them often enough.
///
/// Threads: safe from any thread: it never changes.
class ReferenceZone {
public:
    /// A span of one offset, in seconds since 1970.
    struct Span {
        std::int64_t from;
        std::int64_t until;
        std::int64_t offset;
    };
    /// The first and the last second of a local date: of one that never was, none.
    struct Day {
        std::int64_t first;
        std::int64_t last;
        bool isWhole; ///< whether it is 24 hours from its 00:00 without a change
    };

    /// Asks for the offset every six hours from the first day to the last, and every second where it changes.
    static ReferenceZone sampled(const std::string& zone, DayNumber first, DayNumber last);
    /// Goes from change to change, as ICU knows them.
    static ReferenceZone listed(const std::string& zone, DayNumber first, DayNumber last);

    const std::vector<Span>& spans() const { return spans_; }

    /// The first second at which clocks show that date, and the last.
    std::optional<Day> day(DayNumber day) const;
    /// The date, and the second of the day, that clocks show.
    DayNumber dateAt(std::int64_t time) const;
    std::int64_t secondOfDayAt(std::int64_t time) const;
    /// The first second at which clocks show that time of that date.
    std::optional<std::int64_t> timeAt(DayNumber day, std::int64_t secondOfDay) const;
    /// How often clocks come to 00:00 of that date.
    int midnights(DayNumber day) const;
    /// The dates that clocks never show.
    std::vector<DayNumber> missingDays() const;

private:
    explicit ReferenceZone(std::vector<Span> spans) : spans_(std::move(spans)) {}
    const Span& at(std::int64_t time) const;
    std::size_t around(DayNumber day) const;

    std::vector<Span> spans_;
};

} // namespace vorlan::tests
