// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/CalendarMath.h"

#include "platform/values/Epoch.h"

#include <algorithm>

namespace vorlan {

namespace {

using Unit = CalendarComponent;

constexpr auto secondsTo2001 = static_cast<std::int64_t>(secondsFrom1970To2001);

} // namespace

std::optional<Instant> Instant::of(Date date) noexcept {
    const double interval = date.timeIntervalSinceReferenceDate();
    if (!(std::abs(interval) <= farthestSecond)) return std::nullopt;
    // Rounded to zero, and corrected before 2001: the function that rounds down is a call on older processors.
    auto second = static_cast<std::int64_t>(interval);
    if (static_cast<double>(second) > interval) --second;
    return Instant{second + secondsTo2001, interval - static_cast<double>(second)};
}

std::optional<Date> Instant::date() const noexcept {
    const double interval = static_cast<double>(second - secondsTo2001) + fraction;
    if (!(std::abs(interval) <= farthestSecond)) return std::nullopt;
    return Date(interval);
}

CalendarMath::CalendarMath(const Calendar& calendar)
    : system_(CalendarSystem::named(calendar.identifier())),
      zone_(detail::ZoneRules::of(calendar.timeZone())),
      firstWeekday_(calendar.firstWeekday()),
      minimumDaysInFirstWeek_(calendar.minimumDaysInFirstWeek()) {}

std::int64_t CalendarMath::startOfWeek(std::int64_t day) const noexcept {
    return day - (weekday(day) - firstWeekday_ + 7) % 7;
}

std::int64_t CalendarMath::startOfFirstWeek(std::int64_t first) const noexcept {
    const auto start = startOfWeek(first);
    return start + 7 - first >= minimumDaysInFirstWeek_ ? start : start + 7;
}

std::int64_t CalendarMath::week(std::int64_t day, std::int64_t first) const noexcept {
    return flooredQuotient(day - startOfFirstWeek(first), 7) + 1;
}

std::optional<std::int64_t> CalendarMath::startOfWeekYear(std::int64_t extendedYear) const {
    const auto first = system_.firstOfYear(extendedYear);
    if (!first) return std::nullopt;
    return startOfFirstWeek(*first);
}

CalendarMath::WeekYear CalendarMath::weekYear(const CalendarDay& day) const {
    const auto first = startOfFirstWeek(day.firstOfYear);
    if (day.number < first)
        return {day.extendedYear - 1, startOfWeekYear(day.extendedYear - 1).value_or(first)};
    if (day.number >=
        day.firstOfYear + 346) { // no year ends earlier and is long enough to have a week in the next
        const auto next = startOfWeekYear(day.extendedYear + 1);
        if (next && day.number >= *next) return {day.extendedYear + 1, *next};
    }
    return {day.extendedYear, first};
}

std::optional<std::int64_t> CalendarMath::firstOfQuarter(const CalendarDay& day) const {
    const int month = quarter(day) * 3 - 2;
    return month == 1 ? day.firstOfYear
                      : system_.number({.era = day.era, .year = day.year, .month = month, .day = 1});
}

std::optional<std::int64_t> CalendarMath::nextFirstOfQuarter(const CalendarDay& day) const {
    if (quarter(day) == 4) return system_.firstOfYear(day.extendedYear + 1);
    return system_.number({.era = day.era, .year = day.year, .month = quarter(day) * 3 + 1, .day = 1});
}

std::optional<std::int64_t> CalendarMath::firstDay(Unit unit, std::int64_t day) const {
    switch (unit) {
    case Unit::year: return system_.day(day).firstOfYear;
    case Unit::yearForWeekOfYear: return weekYear(system_.day(day)).first;
    case Unit::quarter: return firstOfQuarter(system_.day(day));
    case Unit::month: return system_.day(day).firstOfMonth;
    case Unit::weekOfYear:
    case Unit::weekOfMonth: return startOfWeek(day);
    case Unit::day: return day;
    default: return std::nullopt;
    }
}

std::optional<std::int64_t> CalendarMath::nextFirstDay(Unit unit, std::int64_t day) const {
    switch (unit) {
    case Unit::year: return system_.firstOfYear(system_.day(day).extendedYear + 1);
    case Unit::yearForWeekOfYear: return startOfWeekYear(weekYear(system_.day(day)).extendedYear + 1);
    case Unit::quarter: return nextFirstOfQuarter(system_.day(day));
    case Unit::month: return system_.addingMonths(1, system_.day(day).firstOfMonth);
    case Unit::weekOfYear:
    case Unit::weekOfMonth: return startOfWeek(day) + 7;
    case Unit::day: return day + 1;
    default: return std::nullopt;
    }
}

// Clocks go on in the same hour where they are set by half an hour: the hour then begins before that.
std::int64_t CalendarMath::startOfClockUnit(int seconds, std::int64_t second) const {
    for (;;) {
        const int offset = zone_.offsetAt(second);
        const auto start = second - flooredRemainder(second + offset, seconds);
        if (zone_.offsetAt(start) == offset) return start;
        auto change = start;
        for (auto next = zone_.nextTransition(start); next && *next <= second;
             next = zone_.nextTransition(change))
            change = *next;
        const auto before = change - 1 + zone_.offsetAt(change - 1);
        const auto after = change + zone_.offsetAt(change);
        if (flooredRemainder(after, seconds) == 0 ||
            flooredQuotient(before, seconds) != flooredQuotient(after, seconds))
            return change;
        second = change - 1;
    }
}

std::int64_t CalendarMath::endOfClockUnit(int seconds, std::int64_t second) const {
    for (;;) {
        const auto local = second + zone_.offsetAt(second);
        const auto end = second + seconds - flooredRemainder(local, seconds);
        const auto change = zone_.nextTransition(second);
        if (!change || *change > end) return end;
        const auto after = *change + zone_.offsetAt(*change);
        if (flooredRemainder(after, seconds) == 0 ||
            flooredQuotient(after, seconds) != flooredQuotient(local, seconds))
            return *change;
        second = *change;
    }
}

// Where a zone has gone over the date line, a day that nobody there has seen is not counted.
std::optional<std::int64_t> CalendarMath::addingDays(std::int64_t days, std::int64_t second) const {
    if (days < -2 * farthestDay || days > 2 * farthestDay) return std::nullopt;
    const int offset = zone_.offsetAt(second);
    const auto plain = second + days * secondsOfDay;
    const int change = zone_.offsetAt(plain) - offset;
    if (change == 0 && zone_.offsetAt(plain - secondsOfDay / 4) == offset) return plain;
    constexpr int dateLine = 23 * 3600; // the hour is that of a summer time which one of both dates has
    const bool isSkipped = days > 0 ? change >= dateLine : change <= -dateLine;
    const auto skipped = !isSkipped ? 0 : days > 0 ? secondsOfDay : -secondsOfDay;
    return zone_.timeFromLocal(plain + offset + skipped);
}

// The same weekday of the week of the same number; of the last where the year has none of that number.
std::optional<std::int64_t> CalendarMath::addingWeekYears(std::int64_t years, std::int64_t day) const {
    if (years < -farthestDay || years > farthestDay) return std::nullopt;
    const auto from = weekYear(system_.day(day));
    const auto first = startOfWeekYear(from.extendedYear + years);
    const auto next = startOfWeekYear(from.extendedYear + years + 1);
    if (!first || !next) return std::nullopt;
    const auto days = day - from.first;
    const auto lastWeek = (*next - *first) / 7 - 1;
    return *first + std::min(days / 7, lastWeek) * 7 + days % 7;
}

std::optional<std::int64_t> CalendarMath::addingToDay(Unit unit, std::int64_t value, std::int64_t day) const {
    switch (unit) {
    case Unit::year: return system_.addingYears(value, day);
    case Unit::yearForWeekOfYear: return addingWeekYears(value, day);
    case Unit::quarter:
        if (value < -farthestDay || value > farthestDay) return std::nullopt;
        return system_.addingMonths(value * 3, day);
    case Unit::month: return system_.addingMonths(value, day);
    default: return std::nullopt;
    }
}

std::optional<std::int64_t> CalendarMath::adding(Unit unit, std::int64_t value, std::int64_t second) const {
    if (value == 0) return typicalLength(unit) ? std::optional(second) : std::nullopt;
    if (unit == Unit::day) return addingDays(value, second);
    if (unit == Unit::weekOfYear || unit == Unit::weekOfMonth) {
        if (value < -farthestDay || value > farthestDay) return std::nullopt;
        return addingDays(value * 7, second);
    }
    const auto [day, secondOfDay] = wallTime(second);
    const auto later = addingToDay(unit, value, day);
    if (!later) return std::nullopt;
    return zone_.timeFromLocal(*later * secondsOfDay + secondOfDay);
}

std::optional<double> CalendarMath::typicalLength(Unit unit) const noexcept {
    constexpr auto seconds = static_cast<double>(secondsOfDay);
    switch (unit) {
    case Unit::year: return system_.daysOfYear() * seconds;
    case Unit::yearForWeekOfYear: return system_.daysOfYear() * seconds;
    case Unit::quarter: return system_.daysOfMonth() * 3 * seconds;
    case Unit::month: return system_.daysOfMonth() * seconds;
    case Unit::weekOfYear:
    case Unit::weekOfMonth: return 7 * seconds;
    case Unit::day: return seconds;
    default: return std::nullopt;
    }
}

std::optional<int> CalendarMath::clockLength(Unit unit) noexcept {
    switch (unit) {
    case Unit::hour: return 3600;
    case Unit::minute: return 60;
    case Unit::second: return 1;
    default: return std::nullopt;
    }
}

} // namespace vorlan
