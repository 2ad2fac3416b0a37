// SPDX-License-Identifier: Apache-2.0
// Dates from components, and from other dates.

#include "platform/dates/CalendarMath.h"

#include <initializer_list>

namespace vorlan {

namespace {

using Number = std::optional<std::int64_t>;

// So many units of such a length, where that is no further than any calendar reaches.
Number product(std::int64_t count, std::int64_t length) {
    constexpr std::int64_t most = 1'000'000'000'000'000;
    if (count < -(most / length) || count > most / length) return std::nullopt;
    return count * length;
}

Number sum(std::initializer_list<Number> numbers) {
    std::int64_t total = 0;
    for (const auto number : numbers) {
        if (!number) return std::nullopt;
        total += *number;
    }
    return total;
}

Number ifNear(Number day) {
    if (!day || *day < -farthestDay || *day > farthestDay) return std::nullopt;
    return day;
}

// Finds the day that components name.
class DayFinder {
public:
    DayFinder(const CalendarMath& math, const DateComponents& components)
        : math_(math), components_(components) {
        if (components.quarter && !components.month)
            if (const auto months = product(*components.quarter, 3)) components_.month = *months - 2;
    }

    Number find() const {
        const auto& it = components_;
        if (it.day) return number(it.day);
        if (!it.month && it.dayOfYear) return sum({number(1), -1, product(*it.dayOfYear, 1)});
        if (!it.month && (it.weekOfYear || it.yearForWeekOfYear)) return ofWeekOfYear();
        if (it.weekOfMonth || (it.weekday && it.weekdayOrdinal)) return ofWeekOfMonth();
        return number(std::nullopt);
    }

private:
    Number number(Number day) const {
        if (components_.quarter && !components_.month) return std::nullopt; // was too large
        return math_.system().number({.era = components_.era,
                                      .year = components_.year,
                                      .month = components_.month,
                                      .isLeapMonth = components_.isLeapMonth.value_or(false),
                                      .day = day});
    }

    // From the first day of a week: weeks forward, and to the weekday; those after the seventh are in later weeks.
    Number inWeek(std::int64_t start, std::int64_t week) const {
        const auto weekday = components_.weekday.value_or(math_.firstWeekday());
        if (!product(weekday, 1)) return std::nullopt;
        const auto days = flooredRemainder(weekday - CalendarMath::weekday(start), 7);
        const auto laterWeeks = flooredQuotient(weekday - 1, 7);
        return sum({start + days, product(week, 7), -7, laterWeeks * 7});
    }

    Number ofWeekOfYear() const {
        auto year = components_.yearForWeekOfYear;
        if (!year) {
            const auto named = ifNear(number(std::nullopt));
            if (!named) return std::nullopt;
            year = math_.system().day(*named).extendedYear;
        }
        const auto start = math_.startOfWeekYear(*year);
        if (!start) return std::nullopt;
        return inWeek(*start, components_.weekOfYear.value_or(1));
    }

    Number ofWeekOfMonth() const {
        const auto named = ifNear(number(std::nullopt));
        if (!named) return std::nullopt;
        const auto first = math_.system().day(*named).firstOfMonth;
        if (components_.weekOfMonth) return inWeek(math_.startOfFirstWeek(first), *components_.weekOfMonth);
        return inWeek(first, *components_.weekdayOrdinal);
    }

    const CalendarMath& math_;
    DateComponents components_;
};

// Where no time is given at all, the day's first instant, which is not always at 00:00.
std::optional<Instant> instantOfDay(const CalendarMath& math, std::int64_t day,
                                    const DateComponents& components) {
    const auto hour = components.hour, minute = components.minute, second = components.second,
               nanosecond = components.nanosecond;
    if (!hour && !minute && !second && !nanosecond) return Instant{math.startOfDay(day), 0};
    const auto fine = nanosecond.value_or(0);
    const auto local =
        sum({day * secondsOfDay, product(hour.value_or(0), 3600), product(minute.value_or(0), 60),
             product(second.value_or(0), 1), flooredQuotient(fine, nanosecondsOfSecond)});
    if (!local) return std::nullopt;
    return Instant{math.zone().timeFromLocal(*local),
                   static_cast<double>(flooredRemainder(fine, nanosecondsOfSecond)) / 1e9};
}

} // namespace

std::optional<Date> Calendar::date(const DateComponents& components) const {
    const CalendarMath math(*this);
    const auto day = ifNear(DayFinder(math, components).find());
    if (!day) return std::nullopt;
    const auto instant = instantOfDay(math, *day, components);
    return instant ? instant->date() : std::nullopt;
}

std::optional<Date> Calendar::date(Addition addition) const {
    const auto instant = Instant::of(addition.to);
    if (!instant) return std::nullopt;
    const double interval = addition.to.timeIntervalSinceReferenceDate();
    const auto value = static_cast<double>(addition.value);
    Date later = addition.to;
    if (addition.byAdding == CalendarComponent::nanosecond) {
        later = Date(interval + value / 1e9);
    } else if (const auto length = CalendarMath::clockLength(addition.byAdding)) {
        later = Date(interval + value * *length);
    } else {
        const auto second = CalendarMath(*this).adding(addition.byAdding, addition.value, instant->second);
        return second ? Instant{*second, instant->fraction}.date() : std::nullopt;
    }
    if (!Instant::of(later)) return std::nullopt;
    return later;
}

} // namespace vorlan
