// SPDX-License-Identifier: Apache-2.0
#pragma once

// Days, months and years, as people count them.
//
//     const auto calendar = Calendar::current();
//     calendar.dateComponents({CalendarComponent::year, CalendarComponent::month}, {.from = Date()});
//     calendar.dateComponents(CalendarComponent::day, {.from = a, .to = b}).day;
//     calendar.date({.year = 2024, .month = 2, .day = 29});

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/DateComponents.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TimeZone.h>

#include <compare>
#include <cstdint>
#include <optional>

namespace vorlan {

/// A stretch of time.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateInterval {
    Date start;          ///< its first instant
    double duration = 0; ///< in seconds

    /// The first instant after it.
    Date end() const { return Date(start.timeIntervalSinceReferenceDate() + duration); }
    friend bool operator==(const DateInterval&, const DateInterval&) = default;
};

/// A calendar of some region, in a time zone.
///
/// Times that clocks skip are counted on from before the gap (02:30, where clocks go from 02:00 to 03:00, is the
/// instant that they call 03:30); of times that come twice the first is meant. A day begins with its first instant,
/// which is not always 00:00. The Gregorian calendar follows on the Julian in October 1582; ISO 8601's is Gregorian at
/// all times.
///
/// Months are numbered from 1. In the Hebrew calendar Adar I, which ordinary years do not have, is 6 and Adar 7 in every
/// year; a leap month of the Chinese calendar has the number of the one before it, and `isLeapMonth`. Eras are numbered
/// as ICU numbers them: of the Japanese ones, 235 is Heisei and 236 Reiwa. Calendars that go by the moon and the sun as
/// they are seen are good for the millennia around the present.
///
/// Threads: safe from any thread as long as none changes it: copies are independent, and cheap.
/// Owns:    its locale and its time zone.
/// Time:    dates that are no number, or further away than some five million years, are in no calendar: they have no
///          components and no day.
/// Example: see the top of the file.
class VORLAN_EXPORT Calendar {
public:
    /// The calendars that there are.
    enum class Identifier : std::uint8_t {
        gregorian,
        iso8601, ///< Gregorian; weeks begin on Monday, and the first of a year has four of its days or more
        buddhist,
        chinese,
        coptic,
        ethiopicAmeteAlem,
        ethiopicAmeteMihret,
        hebrew,
        indian,
        islamic,
        islamicCivil,
        islamicTabular,
        islamicUmmAlQura,
        japanese,
        persian,
        republicOfChina,
    };

    /// A date, or the span between two.
    struct Span {
        Date from;                   ///< the date, or the span's first instant
        std::optional<Date> to = {}; ///< the span's end; before `from`, all components are negative or zero
    };
    /// What a date is compared with.
    struct Comparison {
        Date to;                         ///< the other date
        CalendarComponent toGranularity; ///< the smallest component in which they may differ
    };
    /// Which component is counted, within which larger one.
    struct Ordinality {
        CalendarComponent of; ///< what is counted
        CalendarComponent in; ///< within what
        Date for_;            ///< at which date
    };
    /// The component, and the date that it holds.
    struct Around {
        CalendarComponent of; ///< its length
        Date for_;            ///< a date in it
    };
    /// What is added to a date.
    struct Addition {
        CalendarComponent byAdding; ///< the unit
        std::int64_t value;         ///< how many; may be negative
        Date to;                    ///< the date
    };

    /// The user's: the one that is in use where `Locale::current()` is, in `TimeZone::current()`. Stays as it is when
    /// those change.
    static Calendar current();

    /// A calendar of the user's locale and time zone.
    explicit Calendar(Identifier identifier);

    /// A calendar of that locale and time zone.
    Calendar(Identifier identifier, Locale locale, TimeZone timeZone);

    Identifier identifier() const noexcept { return identifier_; }

    const Locale& locale() const noexcept { return locale_; }
    /// Also sets the days on which weeks begin, as is the custom there.
    void setLocale(Locale locale);

    TimeZone timeZone() const noexcept { return timeZone_; }
    void setTimeZone(TimeZone timeZone) noexcept { timeZone_ = timeZone; }

    /// The weekday on which weeks begin: 1 is Sunday, 7 Saturday.
    int firstWeekday() const noexcept { return firstWeekday_; }
    /// Stops the process when it is not from 1 to 7.
    void setFirstWeekday(int weekday);

    /// How many days of a year (or a month) its first week has at least: 1 to 7.
    int minimumDaysInFirstWeek() const noexcept { return minimumDaysInFirstWeek_; }
    /// Stops the process when it is not from 1 to 7.
    void setMinimumDaysInFirstWeek(int days);

    /// The components of a date, `{.from = date}`; none for a date that is in no calendar.
    ///
    /// Of a span, `{.from = a, .to = b}`, how many whole units of each component there are from one date to the other:
    /// as many of the largest as fit, then of the next. Days, weeks, months and years are counted by the calendar, so a
    /// day may have 23 or 25 hours; one that a zone left out, when it went over the date line, does not count. Era,
    /// weekday and other components that are no length are left absent, and so are all where a date is in no calendar,
    /// and nanoseconds that do not fit into 64 bits.
    DateComponents dateComponents(CalendarComponents components, Span span) const;

    /// One component of a date; absent for a date that is in no calendar.
    std::optional<std::int64_t> component(CalendarComponent component, Date date) const;

    /// The date of components: what is absent counts as the least (the first month, the first day, the day's first
    /// instant), an absent year as year 1, an absent era as the present one. What is too large or too small carries
    /// over: 32 January is 1 February. Where month and day are absent, a year and a `dayOfYear` name a day, too, as does
    /// a week's year and its number; where the day is absent, so does a week of the month, or a weekday and its ordinal;
    /// weeks without a weekday are named for their first day. An absent month is the first of the quarter, if there is
    /// one. Absent where the result is in no calendar, or no such era or leap month can be.
    std::optional<Date> date(const DateComponents& components) const;

    /// Orders two dates by the component and those larger than it: less, greater, or equivalent when both are in the
    /// same. A date that is in no calendar is compared by its seconds alone; one that is no number is unordered.
    std::partial_ordering compare(Date date, Comparison other) const;

    /// Which of the smaller units it is that the date is in, counted from 1 within the larger one: the day of the
    /// year, the hour of the day (1 to 24), the week of the month (by the first that counts: 0 before that). Absent
    /// where the larger does not consist of the smaller, and for a date that is in no calendar.
    std::optional<std::int64_t> ordinality(Ordinality what) const;

    /// The unit (year, week's year, quarter, month, week, day, hour, minute, second) that a date is in. Absent for other
    /// components, and for a date that is in no calendar. The hours that come twice where clocks go back are two; where
    /// they go back by less, the hour is longer.
    std::optional<DateInterval> dateInterval(Around what) const;

    /// The first instant of the date's day; absent for a date that is in no calendar.
    std::optional<Date> startOfDay(Date date) const;

    /// The date so many units later (earlier, when negative), at the same time of day where the unit is a day or
    /// longer. A day that the month does not have becomes its last: a month after 31 January is 28 or 29 February.
    /// Absent for components that are no length, and where a date is in no calendar.
    std::optional<Date> date(Addition addition) const;

    /// Whether all that was set is the same.
    friend bool operator==(const Calendar&, const Calendar&) = default;

private:
    Identifier identifier_;
    int firstWeekday_ = 1;
    int minimumDaysInFirstWeek_ = 1;
    TimeZone timeZone_;
    Locale locale_;
};

} // namespace vorlan
