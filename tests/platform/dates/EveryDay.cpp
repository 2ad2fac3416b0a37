// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/dates/EveryDay.h"

#include <algorithm>
#include <compare>
#include <cstdio>
#include <random>
#include <stdexcept>

namespace vorlan::tests {

namespace {

Moment momentAt(DayNumber day, std::int64_t second) {
    return {day, second, 0, dateAt(second)};
}

} // namespace

std::size_t slowness() {
#if defined VORLAN_SANITIZED
    return 50;
#elif defined NDEBUG
    return 1;
#else
    return 10;
#endif
}

Date dateAt(std::int64_t second) {
    return Date::fromTimeIntervalSince1970(static_cast<double>(second));
}

std::array<Moment, 3> momentsOf(const ReferenceZone& zone, DayNumber day, const ReferenceZone::Day& bounds) {
    const auto noon = zone.timeAt(day, 12 * 3600).value_or(bounds.first);
    const Date afterwards = dateAt(bounds.last + 1);
    const Moment last = {day, bounds.last, 999'999'000,
                         Date(afterwards.timeIntervalSinceReferenceDate() - 1e-6)};
    return {momentAt(day, bounds.first), momentAt(day, noon), last};
}

DayNumber dayNumber(const std::string& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%u", &year, &month, &day) != 3) throw std::invalid_argument(text);
    return dayNumber(year, month, day);
}

std::vector<DayNumber> chosenDays(const ReferenceZone& zone, DayNumber first, DayNumber last, unsigned seed) {
    const auto stride = static_cast<DayNumber>(slowness());
    std::mt19937 random(seed);
    std::vector<DayNumber> days;
    for (auto day = first + static_cast<DayNumber>(random()) % stride; day <= last; day += stride)
        days.push_back(day);
    if (stride == 1) return days;
    for (const auto& span : zone.spans())
        for (DayNumber away = -3; away <= 3; ++away) days.push_back(zone.dateAt(span.from) + away);
    std::erase_if(days, [&](DayNumber day) { return day < first || day > last; });
    std::ranges::sort(days);
    days.erase(std::unique(days.begin(), days.end()), days.end());
    return days;
}

void Differences::add(const std::string& what, const std::string& is, const std::string& shouldBe) {
    constexpr std::size_t fewest = 8;
    if (++differences_ <= fewest)
        text_ += dayText(moment_->day) + " at " + std::to_string(moment_->second) + ": " + what + " is " +
                 is + ", not " + shouldBe + "\n";
    if (differences_ == fewest) text_ += "and perhaps more\n";
}

std::string Differences::text(const std::optional<Date>& date) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", date ? date->timeIntervalSince1970() : 0);
    return date ? text : "absent";
}

std::string Differences::text(std::partial_ordering order) {
    if (order == std::partial_ordering::unordered) return "unordered";
    return order < 0 ? "less" : order > 0 ? "greater" : "equivalent";
}

} // namespace vorlan::tests
