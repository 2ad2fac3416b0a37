// SPDX-License-Identifier: Apache-2.0
#pragma once

// The Gregorian calendar, and those that differ from it only in how they count years.

#include "platform/dates/CalendarSystem.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace vorlan {

/// Threads: safe from any thread: it never changes.
class GregorianSystem final : public CalendarSystem {
public:
    /// An era that counts years forward, from the one in which it begins.
    struct Era {
        std::int64_t firstDay;
        std::int64_t firstYear;
    };
    /// How years are counted.
    struct Years {
        std::int64_t before = 0;   ///< the last year before year 1
        bool hasEraBefore = true;  ///< whether those before that are counted backwards, in an era 0
        bool followsJulian = true; ///< until October 1582
        std::vector<Era> eras;     ///< in place of the former, ascending; what is earlier is in the first
    };

    explicit GregorianSystem(Years years) : years_(std::move(years)) {}

    CalendarDay day(std::int64_t number) const override;
    std::optional<std::int64_t> number(const CalendarDayName& name) const override;
    std::optional<std::int64_t> firstOfYear(std::int64_t extendedYear) const override;
    std::optional<std::int64_t> addingMonths(std::int64_t months, std::int64_t number) const override;
    std::optional<std::int64_t> addingYears(std::int64_t years, std::int64_t number) const override;

private:
    bool isJulian(std::int64_t number) const noexcept;
    bool isLeapYear(std::int64_t year) const noexcept;
    int lastOfMonth(std::int64_t year, int month) const noexcept;
    std::int64_t existing(std::int64_t year, int month, int day) const noexcept;
    std::int64_t carried(std::int64_t year, int month, std::int64_t day) const noexcept;
    std::optional<std::int64_t> clipped(std::int64_t month, int day) const;
    std::size_t eraOf(std::int64_t number) const noexcept;
    void setYear(CalendarDay& day) const noexcept;
    std::optional<std::int64_t> extendedYear(std::size_t era, std::int64_t year) const noexcept;
    std::size_t presentEra() const;

    Years years_;
};

} // namespace vorlan
