// SPDX-License-Identifier: Apache-2.0
#pragma once

// How a calendar divides days into months and years. Weeks, times of day and time zones are the same in all.

#include <VorlanFoundation/Platform/Calendar.h>

#include <cstdint>
#include <optional>

namespace vorlan {

/// The farthest that calendars reach, in seconds from 2001 either way: five million years.
inline constexpr double farthestSecond = 157'784'760'000'000.0;
/// More days than that, from 1970 either way: within them nothing overflows.
inline constexpr std::int64_t farthestDay = 1'826'300'000;

/// A day, as a calendar names it. Days are counted from 1970-01-01.
struct CalendarDay {
    std::int64_t number;
    int era;
    std::int64_t year;         // of the era
    std::int64_t extendedYear; // counted on through all eras
    int month;                 // from 1
    bool isLeapMonth;
    int day;                   // of the month, from 1
    std::int64_t firstOfMonth; // the number of the month's first day
    std::int64_t firstOfYear;
};

/// What names a day; what is absent is the least, an absent era the present one.
struct CalendarDayName {
    std::optional<std::int64_t> era;
    std::optional<std::int64_t> year;
    std::optional<std::int64_t> month;
    bool isLeapMonth = false;
    std::optional<std::int64_t> day;
};

/// Threads: safe from any thread.
class CalendarSystem {
public:
    /// The one and only of its kind, which lives until the process ends.
    static const CalendarSystem& named(Calendar::Identifier identifier);

    /// The name of a day up to `farthestDay` away.
    virtual CalendarDay day(std::int64_t number) const = 0;

    /// The day of that name, where parts that are too large or too small carry over; absent when it is too far away.
    virtual std::optional<std::int64_t> number(const CalendarDayName& name) const = 0;

    /// The first day of a year.
    virtual std::optional<std::int64_t> firstOfYear(std::int64_t extendedYear) const = 0;

    /// The day of the same number so many months or years later; the month's last where it has none of that number.
    virtual std::optional<std::int64_t> addingMonths(std::int64_t months, std::int64_t number) const = 0;
    virtual std::optional<std::int64_t> addingYears(std::int64_t years, std::int64_t number) const = 0;

    /// About how many days they have.
    virtual double daysOfMonth() const noexcept { return 30.436875; }
    virtual double daysOfYear() const noexcept { return 365.2425; }

    /// Whether there are leap months, which share the number of another.
    virtual bool hasLeapMonths() const noexcept { return false; }

    CalendarSystem(const CalendarSystem&) = delete;
    CalendarSystem& operator=(const CalendarSystem&) = delete;

protected:
    CalendarSystem() = default;
    ~CalendarSystem() = default;

    static bool isNear(std::int64_t value, std::int64_t farthest) noexcept {
        return value >= -farthest && value <= farthest;
    }
    static std::optional<std::int64_t> ifNear(std::int64_t number) noexcept {
        if (!isNear(number, farthestDay)) return std::nullopt;
        return number;
    }
};

} // namespace vorlan
