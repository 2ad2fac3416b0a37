// SPDX-License-Identifier: Apache-2.0
#pragma once

// What all calendars have in common: weeks, times of day, and the clocks of a time zone.

#include "platform/dates/CalendarSystem.h"
#include "platform/dates/ZoneRules.h"
#include "platform/values/CivilDay.h"

#include <VorlanFoundation/Platform/Calendar.h>

#include <cmath>
#include <compare>
#include <cstdint>
#include <optional>

namespace vorlan {

inline constexpr std::int64_t secondsOfDay = 86'400;
inline constexpr std::int64_t nanosecondsOfSecond = 1'000'000'000;

/// A date by the second that it is in, counted from 1970, and what it is after that.
struct Instant {
    std::int64_t second;
    double fraction; // less than 1, but for dates that are less than what a double tells before a second

    /// Absent when it is in no calendar.
    static std::optional<Instant> of(Date date) noexcept;
    /// Absent when it is too far away.
    std::optional<Date> date() const noexcept;

    std::int64_t nanosecond() const noexcept {
        const auto nanosecond = static_cast<std::int64_t>(fraction * 1e9);
        return nanosecond < nanosecondsOfSecond ? nanosecond : nanosecondsOfSecond - 1;
    }
};

/// What clocks show: a day, counted from 1970-01-01, and a second of it.
struct WallTime {
    std::int64_t day;
    int secondOfDay;
};

/// A calendar's arithmetic, in days counted from 1970-01-01 and seconds since then. Refers to the calendar's zone.
///
/// Threads: safe from any thread: it never changes.
class CalendarMath {
public:
    explicit CalendarMath(const Calendar& calendar);

    const CalendarSystem& system() const noexcept { return system_; }
    const detail::ZoneRules& zone() const noexcept { return zone_; }

    WallTime wallTime(std::int64_t second) const {
        const std::int64_t local = second + zone_.offsetAt(second);
        const std::int64_t day = flooredQuotient(local, secondsOfDay);
        return {day, static_cast<int>(local - day * secondsOfDay)};
    }
    std::int64_t startOfDay(std::int64_t day) const { return zone_.firstTimeFromLocal(day * secondsOfDay); }

    /// 1 is Sunday.
    static int weekday(std::int64_t day) noexcept {
        return static_cast<int>(flooredRemainder(day + 4, 7)) + 1;
    }
    int firstWeekday() const noexcept { return firstWeekday_; }
    std::int64_t startOfWeek(std::int64_t day) const noexcept;
    /// The number of a day's week in the month or year that begins on `first`, where the first is that of which enough
    /// days are in it: 0 before that one.
    std::int64_t week(std::int64_t day, std::int64_t first) const noexcept;
    /// The first day of that week.
    std::int64_t startOfFirstWeek(std::int64_t first) const noexcept;

    /// The year that a day's week counts to, and on which day the weeks of that year begin.
    struct WeekYear {
        std::int64_t extendedYear;
        std::int64_t first;
    };
    WeekYear weekYear(const CalendarDay& day) const;
    /// The day on which the weeks of a year begin.
    std::optional<std::int64_t> startOfWeekYear(std::int64_t extendedYear) const;

    static int quarter(const CalendarDay& day) noexcept {
        return day.month > 12 ? 4 : (day.month - 1) / 3 + 1;
    }

    /// The first day of the unit that a day is in; of the next such unit. Absent for units that are shorter than a day
    /// or no length.
    std::optional<std::int64_t> firstDay(CalendarComponent unit, std::int64_t day) const;
    std::optional<std::int64_t> nextFirstDay(CalendarComponent unit, std::int64_t day) const;

    /// The first second of the hour or minute (of so many seconds) that a second is in, and the first after it. Where
    /// clocks are set within an hour, and go on in the same hour, it is shorter or longer than others.
    std::int64_t startOfClockUnit(int seconds, std::int64_t second) const;
    std::int64_t endOfClockUnit(int seconds, std::int64_t second) const;

    /// So many units of a day or longer after a second, at the same time of day.
    std::optional<std::int64_t> adding(CalendarComponent unit, std::int64_t value, std::int64_t second) const;

    /// About how many seconds a unit of a day or longer has; absent for others.
    std::optional<double> typicalLength(CalendarComponent unit) const noexcept;

    /// The seconds of an hour, a minute or a second; absent for other units.
    static std::optional<int> clockLength(CalendarComponent unit) noexcept;

private:
    std::optional<std::int64_t> firstOfQuarter(const CalendarDay& day) const;
    std::optional<std::int64_t> nextFirstOfQuarter(const CalendarDay& day) const;
    std::optional<std::int64_t> addingDays(std::int64_t days, std::int64_t second) const;
    std::optional<std::int64_t> addingWeekYears(std::int64_t years, std::int64_t day) const;
    std::optional<std::int64_t> addingToDay(CalendarComponent unit, std::int64_t value,
                                            std::int64_t day) const;

    const CalendarSystem& system_;
    const detail::ZoneRules& zone_;
    int firstWeekday_;
    int minimumDaysInFirstWeek_;
};

} // namespace vorlan
