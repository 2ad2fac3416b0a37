// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/CalendarSpan.h"

#include <algorithm>
#include <cstdlib>

namespace vorlan {

namespace {

using Unit = CalendarComponent;

// A number of units, and steps towards the one that is right.
class Count {
public:
    Count(const CalendarMath& math, Unit unit, FineSecond from, FineSecond to)
        : math_(math),
          unit_(unit),
          from_(from),
          to_(to),
          step_(to < from ? -1 : 1),
          length_(math.typicalLength(unit).value_or(1)) {}

    // By the length that is typical, so that only few steps are left however long the span is.
    std::int64_t find() {
        std::int64_t count = unitsUntilEnd(from_.second);
        for (int round = 0; round < 8; ++round) {
            const auto reached = math_.adding(unit_, count, from_.second);
            const auto missing = reached ? unitsUntilEnd(*reached) : -(count / 1000 + step_);
            if (missing == 0) break;
            count += missing;
        }
        while (passesEnd(count)) count -= step_;
        while (!passesEnd(count + step_)) count += step_;
        return count;
    }

private:
    std::int64_t unitsUntilEnd(std::int64_t second) const {
        return static_cast<std::int64_t>(static_cast<double>(to_.second - second) / length_);
    }

    bool passesEnd(std::int64_t count) const {
        const auto reached = math_.adding(unit_, count, from_.second);
        if (!reached) return true;
        const FineSecond end{*reached, from_.nanosecond};
        return step_ > 0 ? end > to_ : end < to_;
    }

    const CalendarMath& math_;
    Unit unit_;
    FineSecond from_;
    FineSecond to_;
    int step_;
    double length_;
};

// Seconds and nanoseconds of one sign.
FineSecond difference(FineSecond from, FineSecond to) {
    FineSecond left{to.second - from.second, to.nanosecond - from.nanosecond};
    if (left.second > 0 && left.nanosecond < 0)
        return {left.second - 1, left.nanosecond + nanosecondsOfSecond};
    if (left.second < 0 && left.nanosecond > 0)
        return {left.second + 1, left.nanosecond - nanosecondsOfSecond};
    return left;
}

void setClockUnits(DateComponents& result, CalendarComponents units, FineSecond left) {
    for (const auto unit : {Unit::hour, Unit::minute, Unit::second}) {
        if (!units.contains(unit)) continue;
        const std::int64_t length = *CalendarMath::clockLength(unit);
        result.setValue(left.second / length, unit);
        left.second %= length;
    }
    if (!units.contains(Unit::nanosecond)) return;
    std::int64_t nanoseconds = 0; // of more than 292 years there is no such number
    if (!__builtin_mul_overflow(left.second, nanosecondsOfSecond, &nanoseconds) &&
        !__builtin_add_overflow(nanoseconds, left.nanosecond, &nanoseconds))
        result.nanosecond = nanoseconds;
}

} // namespace

std::int64_t wholeUnits(const CalendarMath& math, CalendarComponent unit, FineSecond from, FineSecond to) {
    return Count(math, unit, from, to).find();
}

DateComponents spanComponents(const CalendarMath& math, CalendarComponents units, FineSecond from,
                              FineSecond to) {
    DateComponents result;
    for (const auto unit : {Unit::year, Unit::yearForWeekOfYear, Unit::quarter, Unit::month, Unit::weekOfYear,
                            Unit::weekOfMonth, Unit::day}) {
        if (!units.contains(unit)) continue;
        const auto count = wholeUnits(math, unit, from, to);
        result.setValue(count, unit);
        from.second = math.adding(unit, count, from.second).value_or(from.second);
    }
    setClockUnits(result, units, difference(from, to));
    return result;
}

} // namespace vorlan
