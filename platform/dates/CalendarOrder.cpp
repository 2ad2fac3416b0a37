// SPDX-License-Identifier: Apache-2.0
// Dates beside one another: which comes first, and the how many-th they are.

#include "platform/dates/CalendarMath.h"
#include "platform/dates/CalendarSpan.h"

namespace vorlan {

namespace {

using Unit = CalendarComponent;
using Number = std::optional<std::int64_t>;

// The unit in which a date is, in an order in which units follow one another.
std::optional<FineSecond> unitOf(const CalendarMath& math, Unit unit, Instant instant) {
    const auto day = math.wallTime(instant.second).day;
    switch (unit) {
    case Unit::era: return FineSecond{math.system().day(day).era, 0};
    case Unit::dayOfYear:
    case Unit::weekday: return FineSecond{day, 0};
    case Unit::weekdayOrdinal: {
        const auto first = math.system().day(day).firstOfMonth;
        return FineSecond{first, (day - first) / 7};
    }
    case Unit::nanosecond: return FineSecond{instant.second, instant.nanosecond()};
    default: break;
    }
    if (const auto seconds = CalendarMath::clockLength(unit))
        return FineSecond{math.startOfClockUnit(*seconds, instant.second), 0};
    const auto first = math.firstDay(unit, day);
    return first ? std::optional(FineSecond{*first, 0}) : std::nullopt;
}

// Tells the how many-th of its units a date is in.
class OrdinalTeller {
public:
    OrdinalTeller(const CalendarMath& math, Instant instant)
        : math_(math), wall_(math.wallTime(instant.second)), nanosecond_(instant.nanosecond()) {}

    Number tell(Unit smaller, Unit larger) const {
        if (const auto seconds = CalendarMath::clockLength(larger))
            return ofSeconds(smaller, wall_.secondOfDay % *seconds, *seconds);
        const auto first = larger == Unit::era ? firstOfEra() : math_.firstDay(larger, wall_.day);
        if (!first && !(larger == Unit::era && smaller == Unit::year)) return std::nullopt;
        if (smaller == Unit::nanosecond || CalendarMath::clockLength(smaller))
            return ofSeconds(smaller, (wall_.day - *first) * secondsOfDay + wall_.secondOfDay,
                             farthestLength);
        return ofDays(smaller, larger, first.value_or(0));
    }

private:
    static constexpr std::int64_t farthestLength = 2 * farthestDay * secondsOfDay;

    // Where the larger unit has so many seconds.
    Number ofSeconds(Unit smaller, std::int64_t second, std::int64_t length) const {
        std::int64_t ordinal = 0;
        if (smaller == Unit::nanosecond)
            return __builtin_mul_overflow(second, nanosecondsOfSecond, &ordinal) ||
                           __builtin_add_overflow(ordinal, nanosecond_ + 1, &ordinal)
                       ? std::nullopt
                       : Number(ordinal);
        const auto smallerLength = CalendarMath::clockLength(smaller);
        if (!smallerLength || *smallerLength >= length) return std::nullopt;
        return second / *smallerLength + 1;
    }

    static bool isWeek(Unit unit) { return unit == Unit::weekOfMonth || unit == Unit::weekOfYear; }
    static bool isYear(Unit unit) { return unit == Unit::year || unit == Unit::yearForWeekOfYear; }

    Number ofDays(Unit smaller, Unit larger, std::int64_t first) const {
        const auto days = wall_.day - first;
        const bool isLonger = larger != Unit::day && !isWeek(larger); // than a week
        switch (smaller) {
        case Unit::day: return larger == Unit::day ? std::nullopt : Number(days + 1);
        case Unit::dayOfYear: return larger == Unit::year ? Number(days + 1) : std::nullopt;
        case Unit::weekday:
            if (larger == Unit::day) return std::nullopt;
            return isLonger ? days / 7 + 1 : days + 1;
        case Unit::weekdayOrdinal: return larger == Unit::month ? Number(days / 7 + 1) : std::nullopt;
        case Unit::weekOfMonth:
        case Unit::weekOfYear: return isLonger ? Number(math_.week(wall_.day, first)) : std::nullopt;
        default: return ofMonths(smaller, larger, first);
        }
    }

    Number ofMonths(Unit smaller, Unit larger, std::int64_t first) const {
        const bool isInYear = larger == Unit::year || larger == Unit::era;
        const auto day = math_.system().day(wall_.day);
        switch (smaller) {
        case Unit::month: return isInYear || larger == Unit::quarter ? Number(months(first)) : std::nullopt;
        case Unit::quarter:
            if (!isInYear) return std::nullopt;
            return (day.extendedYear - math_.system().day(first).extendedYear) * 4 +
                   CalendarMath::quarter(day);
        case Unit::year: return larger == Unit::era ? Number(day.year) : std::nullopt;
        default: return std::nullopt;
        }
    }

    // Counted, as not every year has months of all numbers.
    std::int64_t months(std::int64_t first) const {
        const FineSecond from{math_.startOfDay(first), 0}, to{math_.startOfDay(wall_.day), 0};
        return wholeUnits(math_, Unit::month, from, to) + 1;
    }

    // Absent for an era that counts backwards, which has none.
    Number firstOfEra() const {
        const auto era = math_.system().day(wall_.day).era;
        const auto first = math_.system().number({.era = era, .year = 1});
        if (!first || *first > wall_.day) return std::nullopt;
        const auto before = math_.system().day(*first - 1);
        return before.era != era || before.year < 1 ? first : std::nullopt;
    }

    const CalendarMath& math_;
    WallTime wall_;
    std::int64_t nanosecond_;
};

} // namespace

std::partial_ordering Calendar::compare(Date date, Comparison other) const {
    const auto a = Instant::of(date), b = Instant::of(other.to);
    if (!a || !b) return date <=> other.to;
    const CalendarMath math(*this);
    const auto unitOfA = unitOf(math, other.toGranularity, *a),
               unitOfB = unitOf(math, other.toGranularity, *b);
    if (!unitOfA || !unitOfB) return date <=> other.to;
    return *unitOfA <=> *unitOfB;
}

std::optional<std::int64_t> Calendar::ordinality(Ordinality what) const {
    const auto instant = Instant::of(what.for_);
    if (!instant) return std::nullopt;
    const CalendarMath math(*this);
    return OrdinalTeller(math, *instant).tell(what.of, what.in);
}

} // namespace vorlan
