// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Calendar.h>

#include "platform/dates/CalendarMath.h"
#include "platform/dates/CalendarSpan.h"
#include "platform/dates/WeekCustoms.h"
#include "platform/text/CurrentRegion.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <array>
#include <utility>

namespace vorlan {

namespace {

using Unit = CalendarComponent;

int requireWeekNumber(int number, const char* message) {
    if (number < 1 || number > 7) fatalError(message, "VorlanFoundation/Calendar");
    return number;
}

std::optional<Date> dateOfSecond(std::int64_t second) {
    return Instant{second, 0}.date();
}

// What can be told of a date, found out as far as it is asked for.
class DateTeller {
public:
    DateTeller(const CalendarMath& math, Instant instant)
        : math_(math), instant_(instant), wall_(math.wallTime(instant.second)) {}

    std::int64_t tell(Unit unit) {
        switch (unit) {
        case Unit::weekday: return CalendarMath::weekday(wall_.day);
        case Unit::hour: return wall_.secondOfDay / 3600;
        case Unit::minute: return wall_.secondOfDay / 60 % 60;
        case Unit::second: return wall_.secondOfDay % 60;
        case Unit::nanosecond: return instant_.nanosecond();
        default: return tellOfDay(unit);
        }
    }

    bool isInLeapMonth() { return day().isLeapMonth; }

private:
    const CalendarDay& day() {
        if (!day_) day_ = math_.system().day(wall_.day);
        return *day_;
    }

    std::int64_t tellOfDay(Unit unit) {
        switch (unit) {
        case Unit::era: return day().era;
        case Unit::year: return day().year;
        case Unit::quarter: return CalendarMath::quarter(day());
        case Unit::month: return day().month;
        case Unit::day: return day().day;
        case Unit::dayOfYear: return wall_.day - day().firstOfYear + 1;
        case Unit::weekdayOrdinal: return (wall_.day - day().firstOfMonth) / 7 + 1;
        case Unit::weekOfMonth: return math_.week(wall_.day, day().firstOfMonth);
        case Unit::weekOfYear: return (wall_.day - math_.weekYear(day()).first) / 7 + 1;
        default: return math_.weekYear(day()).extendedYear;
        }
    }

    const CalendarMath& math_;
    Instant instant_;
    WallTime wall_;
    std::optional<CalendarDay> day_;
};

constexpr std::array allUnits{Unit::era,         Unit::year,       Unit::quarter,           Unit::month,
                              Unit::weekOfMonth, Unit::weekOfYear, Unit::yearForWeekOfYear, Unit::day,
                              Unit::dayOfYear,   Unit::weekday,    Unit::weekdayOrdinal,    Unit::hour,
                              Unit::minute,      Unit::second,     Unit::nanosecond};

} // namespace

Calendar Calendar::current() {
    return currentRegion().calendar;
}

Calendar::Calendar(Identifier identifier)
    : Calendar(identifier, currentRegion().locale, currentRegion().timeZone) {}

Calendar::Calendar(Identifier identifier, Locale locale, TimeZone timeZone)
    : identifier_(identifier), timeZone_(timeZone), locale_("") {
    setLocale(std::move(locale));
}

void Calendar::setLocale(Locale locale) {
    const auto customs = identifier_ == Identifier::iso8601 ? WeekCustoms{2, 4} : weekCustoms(locale);
    firstWeekday_ = customs.firstWeekday;
    minimumDaysInFirstWeek_ = customs.minimumDaysInFirstWeek;
    locale_ = std::move(locale);
}

void Calendar::setFirstWeekday(int weekday) {
    firstWeekday_ = requireWeekNumber(weekday, "Weekdays are numbered from 1 to 7");
}

void Calendar::setMinimumDaysInFirstWeek(int days) {
    minimumDaysInFirstWeek_ = requireWeekNumber(days, "Weeks have 1 to 7 days");
}

std::optional<std::int64_t> Calendar::component(CalendarComponent component, Date date) const {
    const auto instant = Instant::of(date);
    if (!instant) return std::nullopt;
    return DateTeller(CalendarMath(*this), *instant).tell(component);
}

DateComponents Calendar::dateComponents(CalendarComponents components, Span span) const {
    const auto from = Instant::of(span.from);
    const auto to = Instant::of(span.to.value_or(span.from));
    if (!from || !to) return {};
    const CalendarMath math(*this);
    if (span.to)
        return spanComponents(math, components, {from->second, from->nanosecond()},
                              {to->second, to->nanosecond()});
    DateTeller teller(math, *from);
    DateComponents result;
    for (const auto unit : allUnits)
        if (components.contains(unit)) result.setValue(teller.tell(unit), unit);
    if (components.contains(Unit::month) && math.system().hasLeapMonths())
        result.isLeapMonth = teller.isInLeapMonth();
    return result;
}

std::optional<Date> Calendar::startOfDay(Date date) const {
    const auto instant = Instant::of(date);
    if (!instant) return std::nullopt;
    const CalendarMath math(*this);
    return dateOfSecond(math.startOfDay(math.wallTime(instant->second).day));
}

std::optional<DateInterval> Calendar::dateInterval(Around what) const {
    const auto instant = Instant::of(what.for_);
    if (!instant) return std::nullopt;
    const CalendarMath math(*this);
    std::optional<std::int64_t> start, end;
    if (const auto seconds = CalendarMath::clockLength(what.of)) {
        start = math.startOfClockUnit(*seconds, instant->second);
        end = math.endOfClockUnit(*seconds, instant->second);
    } else {
        const auto day = math.wallTime(instant->second).day;
        const auto first = math.firstDay(what.of, day), next = math.nextFirstDay(what.of, day);
        if (!first || !next) return std::nullopt;
        start = math.startOfDay(*first);
        end = math.startOfDay(*next);
    }
    const auto date = dateOfSecond(*start);
    if (!date) return std::nullopt;
    return DateInterval{*date, static_cast<double>(*end - *start)};
}

} // namespace vorlan
