// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/dates/CalendarTesting.h"

#include <array>
#include <chrono>
#include <string_view>
#include <utility>

namespace vorlan::tests {

namespace {

using Unit = CalendarComponent;

constexpr std::array<std::pair<Unit, std::string_view>, 15> names{{{Unit::era, "era"},
                                                                   {Unit::year, "year"},
                                                                   {Unit::yearForWeekOfYear, "week's year"},
                                                                   {Unit::quarter, "quarter"},
                                                                   {Unit::month, "month"},
                                                                   {Unit::weekOfYear, "week"},
                                                                   {Unit::weekOfMonth, "week of month"},
                                                                   {Unit::day, "day"},
                                                                   {Unit::dayOfYear, "day of year"},
                                                                   {Unit::weekday, "weekday"},
                                                                   {Unit::weekdayOrdinal, "ordinal"},
                                                                   {Unit::hour, "hour"},
                                                                   {Unit::minute, "minute"},
                                                                   {Unit::second, "second"},
                                                                   {Unit::nanosecond, "nanosecond"}}};

} // namespace

Calendar calendarIn(const char* zone, const char* locale, Calendar::Identifier identifier) {
    return Calendar(identifier, Locale(locale), TimeZone::fromIdentifier(zone).value());
}

Date utc(int year, unsigned month, unsigned day, int hour, int minute, int second) {
    using namespace std::chrono;
    const sys_days date(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
    const auto days = static_cast<double>(date.time_since_epoch().count());
    return Date::fromTimeIntervalSince1970(days * 86'400 + hour * 3600 + minute * 60 + second);
}

std::string textOf(std::optional<Date> date) {
    if (!date) return "none";
    const auto text = date->description();
    return text.substr(0, text.rfind(" +0000"));
}

std::string textOf(const DateComponents& components) {
    std::string text;
    for (const auto& [unit, name] : names) {
        const auto value = components.value(unit);
        if (!value) continue;
        if (!text.empty()) text += ", ";
        text.append(name).append(" ").append(std::to_string(*value));
    }
    return components.isLeapMonth.value_or(false) ? text + ", leap month" : text;
}

CalendarComponents allComponents() {
    return {Unit::era,        Unit::year,       Unit::quarter,           Unit::month,  Unit::weekOfMonth,
            Unit::weekOfYear, Unit::day,        Unit::yearForWeekOfYear, Unit::hour,   Unit::dayOfYear,
            Unit::weekday,    Unit::nanosecond, Unit::weekdayOrdinal,    Unit::minute, Unit::second};
}

} // namespace vorlan::tests
