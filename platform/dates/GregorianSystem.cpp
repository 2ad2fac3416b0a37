// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/GregorianSystem.h"

#include "platform/values/CivilDay.h"
#include "platform/values/Epoch.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vorlan {

namespace {

constexpr std::int64_t firstGregorianDay = dayOfCivil(1582, 10, 15);

// Beyond the farthest day, but far from where anything overflows.
constexpr std::int64_t farthestYear = 10'000'000;
constexpr std::int64_t farthestMonth = 2 * 12 * farthestYear; // from one end of time to the other

} // namespace

bool GregorianSystem::isJulian(std::int64_t number) const noexcept {
    return number < firstGregorianDay && years_.followsJulian;
}

bool GregorianSystem::isLeapYear(std::int64_t year) const noexcept {
    if (year % 4 != 0) return false;
    return year % 100 != 0 || year % 400 == 0 || (years_.followsJulian && year < 1582);
}

int GregorianSystem::lastOfMonth(std::int64_t year, int month) const noexcept {
    constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

// Of the ten dates that October 1582 lacks, the days that the Julian calendar has for them.
std::int64_t GregorianSystem::existing(std::int64_t year, int month, int day) const noexcept {
    const auto number = dayOfCivil(year, month, day);
    return isJulian(number) ? dayOfJulian(year, month, day) : number;
}

std::int64_t GregorianSystem::carried(std::int64_t year, int month, std::int64_t day) const noexcept {
    const auto nearest = std::clamp<std::int64_t>(day, 1, lastOfMonth(year, month));
    return existing(year, month, static_cast<int>(nearest)) + (day - nearest);
}

std::size_t GregorianSystem::eraOf(std::int64_t number) const noexcept {
    const auto next = std::ranges::upper_bound(years_.eras, number, {}, &Era::firstDay);
    return next == years_.eras.begin() ? 0 : static_cast<std::size_t>(next - years_.eras.begin() - 1);
}

void GregorianSystem::setYear(CalendarDay& day) const noexcept {
    const std::int64_t year = day.extendedYear - years_.before;
    if (!years_.eras.empty()) {
        const auto era = eraOf(day.number);
        day.era = static_cast<int>(era);
        day.year = day.extendedYear - years_.eras[era].firstYear + 1;
    } else if (!years_.hasEraBefore) {
        day.era = 0;
        day.year = year;
    } else {
        day.era = year > 0 ? 1 : 0;
        day.year = year > 0 ? year : 1 - year;
    }
}

std::optional<std::int64_t> GregorianSystem::extendedYear(std::size_t era, std::int64_t year) const noexcept {
    if (!isNear(year, farthestYear)) return std::nullopt;
    if (!years_.eras.empty()) {
        if (era >= years_.eras.size()) return std::nullopt;
        return years_.eras[era].firstYear + year - 1;
    }
    if (era > (years_.hasEraBefore ? 1U : 0U)) return std::nullopt;
    return (years_.hasEraBefore && era == 0 ? 1 - year : year) + years_.before;
}

std::size_t GregorianSystem::presentEra() const {
    if (years_.eras.empty()) return years_.hasEraBefore ? 1 : 0;
    const double days = std::floor(Date().timeIntervalSinceReferenceDate() / 86'400);
    if (!(std::abs(days) < static_cast<double>(farthestDay))) return years_.eras.size() - 1;
    return eraOf(static_cast<std::int64_t>(days) + referenceDate.time_since_epoch().count());
}

CalendarDay GregorianSystem::day(std::int64_t number) const {
    const auto [year, month, ofMonth] = isJulian(number) ? julianDay(number) : civilDay(number);
    CalendarDay day{number, 0, 0, year, month, false, ofMonth, number - ofMonth + 1, existing(year, 1, 1)};
    if (year == 1582) day.firstOfMonth = existing(year, month, 1);
    setYear(day);
    return day;
}

std::optional<std::int64_t> GregorianSystem::number(const CalendarDayName& name) const {
    const auto named = name.era.value_or(static_cast<std::int64_t>(presentEra()));
    if (named < 0 || name.isLeapMonth) return std::nullopt;
    const auto era = static_cast<std::size_t>(named);
    const auto year = extendedYear(era, name.year.value_or(1));
    if (!year || !isNear(name.month.value_or(1), farthestMonth) ||
        !isNear(name.day.value_or(1), 2 * farthestDay))
        return std::nullopt;
    const std::int64_t month = *year * 12 + name.month.value_or(1) - 1;
    const auto first = carried(flooredQuotient(month, 12), static_cast<int>(flooredRemainder(month, 12)) + 1,
                               name.day.value_or(1));
    // The least day of an era's first year is its first, where that is in the same month or no month was given.
    if (!name.day && !years_.eras.empty() && name.year.value_or(1) == 1) {
        const auto beginning = years_.eras[era].firstDay;
        if (!name.month || day(beginning).firstOfMonth == first) return beginning;
    }
    return ifNear(first);
}

std::optional<std::int64_t> GregorianSystem::firstOfYear(std::int64_t extendedYear) const {
    if (!isNear(extendedYear, farthestYear)) return std::nullopt;
    return ifNear(existing(extendedYear, 1, 1));
}

// Months counted from the first of year 0.
std::optional<std::int64_t> GregorianSystem::clipped(std::int64_t month, int day) const {
    if (!isNear(month, farthestMonth)) return std::nullopt;
    const auto year = flooredQuotient(month, 12);
    const auto ofYear = static_cast<int>(flooredRemainder(month, 12)) + 1;
    return ifNear(existing(year, ofYear, std::min(day, lastOfMonth(year, ofYear))));
}

std::optional<std::int64_t> GregorianSystem::addingMonths(std::int64_t months, std::int64_t number) const {
    if (!isNear(months, farthestMonth)) return std::nullopt;
    const auto [year, month, ofMonth] = isJulian(number) ? julianDay(number) : civilDay(number);
    return clipped(year * 12 + month - 1 + months, ofMonth);
}

std::optional<std::int64_t> GregorianSystem::addingYears(std::int64_t years, std::int64_t number) const {
    if (!isNear(years, farthestYear)) return std::nullopt;
    return addingMonths(years * 12, number);
}

} // namespace vorlan
