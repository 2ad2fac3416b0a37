// SPDX-License-Identifier: Apache-2.0
#pragma once

// The calendars that ICU computes.

#include "platform/dates/CalendarSystem.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <unicode/calendar.h>

namespace vorlan {

/// Threads: safe from any thread; as many as there are slots work without an allocation.
/// Owns:    calendars of ICU's, none of which two threads use at once.
class ICUCalendarSystem final : public CalendarSystem {
public:
    /// What is typical of a calendar.
    struct Lengths {
        double month;
        double year;
        bool hasLeapMonths = false;
    };

    ICUCalendarSystem(Calendar::Identifier identifier, Lengths lengths);
    ~ICUCalendarSystem();

    CalendarDay day(std::int64_t number) const override;
    std::optional<std::int64_t> number(const CalendarDayName& name) const override;
    std::optional<std::int64_t> firstOfYear(std::int64_t extendedYear) const override;
    std::optional<std::int64_t> addingMonths(std::int64_t months, std::int64_t number) const override;
    std::optional<std::int64_t> addingYears(std::int64_t years, std::int64_t number) const override;
    double daysOfMonth() const noexcept override { return lengths_.month; }
    double daysOfYear() const noexcept override { return lengths_.year; }
    bool hasLeapMonths() const noexcept override { return lengths_.hasLeapMonths; }

private:
    class Borrowed;

    std::optional<std::int64_t> adding(UCalendarDateFields unit, std::int64_t value,
                                       std::int64_t number) const;
    std::int64_t presentEra() const;

    Lengths lengths_;
    std::unique_ptr<const icu::Calendar> model_; // only ever cloned
    mutable std::array<std::atomic<icu::Calendar*>, 4> idle_{};
};

/// A calendar of ICU's in UTC that is set to no date.
std::unique_ptr<icu::Calendar> icuCalendar(Calendar::Identifier identifier);

} // namespace vorlan
