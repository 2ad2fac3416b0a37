// SPDX-License-Identifier: Apache-2.0
#pragma once

// A date in the terms of a calendar: so many years, days, minutes.

#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>
#include <initializer_list>
#include <optional>

namespace vorlan {

/// What calendars count.
enum class CalendarComponent : std::uint8_t {
    era,               ///< 0 before the year 1 and 1 from then on, in the Gregorian calendar
    year,              ///< of the era
    quarter,           ///< 1 to 4; a 13th month is in the fourth
    month,             ///< from 1
    weekOfMonth,       ///< from 1, or 0 before the first week that counts
    weekOfYear,        ///< from 1
    yearForWeekOfYear, ///< of the week, through all eras: 0 is the one before year 1
    day,               ///< of the month, from 1
    dayOfYear,         ///< from 1
    weekday,           ///< 1 is Sunday, 7 Saturday
    weekdayOrdinal,    ///< which of the month's such weekdays it is, from 1
    hour,              ///< 0 to 23
    minute,            ///< 0 to 59
    second,            ///< 0 to 59
    nanosecond,        ///< 0 to 999,999,999
};

/// A set of components.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
class CalendarComponents {
public:
    /// None.
    constexpr CalendarComponents() = default;
    /// One.
    constexpr CalendarComponents(CalendarComponent component)
        : bits_(bit(component)) {} // NOLINT: a set of one
    /// Several, as in `{CalendarComponent::year, CalendarComponent::month}`.
    constexpr CalendarComponents(std::initializer_list<CalendarComponent> components) {
        for (const auto component : components) bits_ |= bit(component);
    }

    /// Whether it has the component.
    constexpr bool contains(CalendarComponent component) const { return (bits_ & bit(component)) != 0; }
    /// Whether it has none.
    constexpr bool isEmpty() const { return bits_ == 0; }

    friend constexpr bool operator==(CalendarComponents, CalendarComponents) = default;

private:
    static constexpr std::uint32_t bit(CalendarComponent component) {
        return std::uint32_t{1} << static_cast<unsigned>(component);
    }

    std::uint32_t bits_ = 0;
};

/// A date, or a span between two, in the terms of a calendar. What is not said is absent.
///
///     DateComponents({.year = 2024, .month = 2, .day = 29})
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateComponents {
    std::optional<std::int64_t> era = {};
    std::optional<std::int64_t> year = {};
    std::optional<std::int64_t> quarter = {};
    std::optional<std::int64_t> month = {};
    /// Whether it is the leap month that follows the month of that number; absent but in the Chinese calendar.
    std::optional<bool> isLeapMonth = {};
    std::optional<std::int64_t> weekOfMonth = {};
    std::optional<std::int64_t> weekOfYear = {};
    std::optional<std::int64_t> yearForWeekOfYear = {};
    std::optional<std::int64_t> day = {};
    std::optional<std::int64_t> dayOfYear = {};
    std::optional<std::int64_t> weekday = {};
    std::optional<std::int64_t> weekdayOrdinal = {};
    std::optional<std::int64_t> hour = {};
    std::optional<std::int64_t> minute = {};
    std::optional<std::int64_t> second = {};
    std::optional<std::int64_t> nanosecond = {};

    /// The component's value, or absent.
    VORLAN_EXPORT std::optional<std::int64_t> value(CalendarComponent component) const;

    /// Sets a component, or makes it absent.
    VORLAN_EXPORT void setValue(std::optional<std::int64_t> value, CalendarComponent component);

    friend bool operator==(const DateComponents&, const DateComponents&) = default;
};

} // namespace vorlan
