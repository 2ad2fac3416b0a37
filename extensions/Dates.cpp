// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Dates.h>

#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/FatalError.h>

#include "platform/text/CurrentRegion.h"

#include <cmath>
#include <compare>

namespace vorlan {

namespace {

constexpr double millisecondsPerSecond = 1000;

// The calendar in force itself: a copy would bring its locale's name along, where lists ask this once for each row.
const Calendar& currentCalendar() {
    return currentRegion().calendar;
}

std::int64_t rounded(double value) {
    return checked::truncate<std::int64_t>(std::round(value));
}

std::int64_t remainder(std::int64_t number, std::int64_t divisor) {
    return number - checked::divide(number, divisor) * divisor; // between 0 and the number, so it fits
}

// From a day without a midnight to a later one with it there is an hour less than whole days have, so that the calendar
// counts one too few: that one, or 0.
std::int64_t fallenShort(const Calendar& calendar, Date start, Date today, std::int64_t days) {
    if (start == today) return 0;
    const std::int64_t one = start < today ? 1 : -1;
    const auto next = calendar.date({.byAdding = CalendarComponent::day, .value = days + one, .to = start});
    return next && calendar.startOfDay(*next) == today ? one : 0;
}

} // namespace

Date date::normalizedDate(Date date) {
    const auto start = currentCalendar().startOfDay(date);
    if (!start) fatalError("the date is in no calendar, so it has no day", "VorlanFoundation/Date");
    return *start;
}

std::int64_t date::millisecondsSince1970(Date date) {
    return rounded(date.timeIntervalSince1970() * millisecondsPerSecond);
}

std::int64_t date::secondsSince1970(Date date) {
    return rounded(date.timeIntervalSince1970());
}

Date date::fromMilliseconds(std::int64_t milliseconds) {
    return Date::fromTimeIntervalSince1970(static_cast<double>(milliseconds) / millisecondsPerSecond);
}

std::int64_t date::second(Since date) {
    return rounded(Date().timeIntervalSince(date.from));
}

std::int64_t date::millisecond(Since date) {
    return rounded(Date().timeIntervalSince(date.from) * millisecondsPerSecond);
}

std::int64_t calendar::daysElapsedSinceDate(const Calendar& calendar, Date date) {
    const auto start = date::normalizedDate(date);
    const auto today = date::normalizedDate(Date());
    const auto days = calendar.dateComponents(CalendarComponent::day, {.from = start, .to = today}).day;
    if (!days) fatalError("the calendar counts no days between two dates", "VorlanFoundation/Calendar");
    return *days + fallenShort(calendar, start, today, *days);
}

std::int64_t calendar::timeElapsedSinceTimestamp(const Calendar& calendar, std::int64_t timestamp,
                                                 CalendarComponent component) {
    const auto start = Date::fromTimeIntervalSince1970(static_cast<double>(timestamp));
    return calendar.dateComponents(component, {.from = start, .to = Date()}).value(component).value_or(0);
}

bool calendar::isDay(Date date, Other other) {
    return std::is_eq(
        currentCalendar().compare(date, {.to = other.sameAs, .toGranularity = CalendarComponent::day}));
}

bool calendar::isToday(Date date) {
    return isDay(date, {.sameAs = Date()});
}

std::int64_t calendar::index(DayInPeriod day) {
    const auto dayOfYear = currentCalendar().ordinality(
        {.of = CalendarComponent::day, .in = CalendarComponent::year, .for_ = day.ofDay});
    return remainder(dayOfYear.value_or(0), day.inPeriod);
}

} // namespace vorlan
