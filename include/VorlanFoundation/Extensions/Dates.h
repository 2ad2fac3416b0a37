// SPDX-License-Identifier: Apache-2.0
#pragma once

// Everyday questions about dates, and formatters that every application needs.
//
//     date::normalizedDate(Date());                                    // today's first instant
//     date::millisecondsSince1970(Date());
//     calendar::isDay(a, {.sameAs = b});
//     calendar::daysElapsedSinceDate(Calendar::current(), born);
//     dateFormatter::sqlSuitable().string(Date());                     // "2026-11-22"
//     dateComponentsFormatter::countdownFormatter().string(65s);       // "0:01:05"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/DateComponentsFormatter.h>
#include <VorlanFoundation/Platform/DateFormatter.h>
#include <VorlanFoundation/Platform/Export.h>

#include <cstdint>

/// Spans in seconds.
namespace vorlan::timeInterval {

inline constexpr double minute = 60;
inline constexpr double hour = 3600;
inline constexpr double day = 86'400;
inline constexpr double week = 604'800;

} // namespace vorlan::timeInterval

/// What dates can tell. Whole numbers are the nearest, halves away from zero; one that does not fit into 64 bits, or a
/// date that is no number, stops the process. Safe from any thread.
namespace vorlan::date {

/// The date that a span to now begins with.
struct Since {
    Date from; ///< its first instant
};

/// The first instant of the date's day in the current calendar. Stops the process where the date is in no calendar.
VORLAN_EXPORT Date normalizedDate(Date date);

/// Milliseconds since 1970-01-01T00:00:00Z.
VORLAN_EXPORT std::int64_t millisecondsSince1970(Date date);

/// Seconds since 1970-01-01T00:00:00Z.
VORLAN_EXPORT std::int64_t secondsSince1970(Date date);

/// The date so many milliseconds after 1970-01-01T00:00:00Z.
VORLAN_EXPORT Date fromMilliseconds(std::int64_t milliseconds);

/// The seconds from a date until now; negative when it is still to come.
VORLAN_EXPORT std::int64_t second(Since date);

/// The milliseconds from a date until now; negative when it is still to come.
VORLAN_EXPORT std::int64_t millisecond(Since date);

} // namespace vorlan::date

/// What calendars can tell. Safe from any thread.
namespace vorlan::calendar {

/// The other of two dates.
struct Other {
    Date sameAs; ///< what the first is compared with
};

/// A day, and the period that it is counted in.
struct DayInPeriod {
    Date ofDay;                ///< any instant of the day
    std::int64_t inPeriod = 0; ///< how many days the period has; has to be said
};

/// How many midnights lie between a date and now, as the calendar counts days: 1 for any time of yesterday; negative
/// when the date is still to come. Where clocks skip a midnight it counts as if they did not; a day that never was does
/// not count. Both dates are taken back to the first instant of their day in the current calendar, so it is that whose
/// days are counted when both have the same time zone. Stops the process where the date is in no calendar.
VORLAN_EXPORT std::int64_t daysElapsedSinceDate(const Calendar& calendar, Date date);

/// How many whole units of one component have passed since a time, in seconds since 1970; negative when it is still to
/// come, and 0 for components that are no length.
VORLAN_EXPORT std::int64_t timeElapsedSinceTimestamp(const Calendar& calendar, std::int64_t timestamp,
                                                     CalendarComponent component);

/// Whether both dates are on one day of the current calendar.
VORLAN_EXPORT bool isDay(Date date, Other other);

/// Whether the date is on the present day of the current calendar.
VORLAN_EXPORT bool isToday(Date date);

/// The place of a day in periods that begin anew with each year of the current calendar: the day of the year (from 1)
/// modulo the period, so that the last day of each period has 0; of the sign that the day has. 0 where the date is in
/// no calendar. A period of 0 stops the process.
VORLAN_EXPORT std::int64_t index(DayInPeriod day);

} // namespace vorlan::calendar

/// Formatters that are made at their first use and then kept, for all.
///
/// They follow the user's locale, calendar and time zone, but where it says otherwise. Each can be replaced; who has
/// the former one keeps it. To change one for everybody, change its settings; to change one for yourself, take its
/// `copy()`. Safe from any thread.
namespace vorlan::dateFormatter {

/// "Thu, 01 Jan 1970 00:00:00 +0000": English names and UTC, as mail and the web write dates; not, in spite of the
/// name, the form of ISO 8601, whose calendar it goes by. A new formatter at every call.
VORLAN_EXPORT DateFormatter iso8601Full();

/// Date and time in short, days near the present by their names: "today, 3:30 PM". After the first use of
/// `relativeShortTimeFormatter`, the time only.
VORLAN_EXPORT DateFormatter relativeShortFormatter();
VORLAN_EXPORT void setRelativeShortFormatter(DateFormatter formatter);

/// Date and time in short: "11/22/26, 3:30 PM".
VORLAN_EXPORT DateFormatter short_();
VORLAN_EXPORT void setShort(DateFormatter formatter);

/// The date in short: "11/22/26".
VORLAN_EXPORT DateFormatter shortDate();
VORLAN_EXPORT void setShortDate(DateFormatter formatter);

/// The time in short: "3:30 PM". It is the very formatter that `relativeShortFormatter` holds when this one is used
/// for the first time, with its date style set to none: from then on both are one and show no date.
VORLAN_EXPORT DateFormatter relativeShortTimeFormatter();
VORLAN_EXPORT void setRelativeShortTimeFormatter(DateFormatter formatter);

/// "2026-11-22", in the digits and the calendar of the locale that was the user's when it was used first.
VORLAN_EXPORT DateFormatter sqlSuitable();
VORLAN_EXPORT void setSqlSuitable(DateFormatter formatter);

/// "2026-11-22 15:30:32", in the digits and the calendar of the user's locale.
VORLAN_EXPORT DateFormatter timeFull();
VORLAN_EXPORT void setTimeFull(DateFormatter formatter);

} // namespace vorlan::dateFormatter

/// Formatters of spans, made at their first use and then kept, for all. They follow the user's locale. Each can be
/// replaced; who has the former one keeps it. Safe from any thread.
namespace vorlan::dateComponentsFormatter {

/// "26 hours".
VORLAN_EXPORT DateComponentsFormatter fullHoursFormatter();
VORLAN_EXPORT void setFullHoursFormatter(DateComponentsFormatter formatter);

/// "26h".
VORLAN_EXPORT DateComponentsFormatter abbreviatedHoursFormatter();
VORLAN_EXPORT void setAbbreviatedHoursFormatter(DateComponentsFormatter formatter);

/// "1d 2h 5m".
VORLAN_EXPORT DateComponentsFormatter abbreviatedTimeFormatter();
VORLAN_EXPORT void setAbbreviatedTimeFormatter(DateComponentsFormatter formatter);

/// "26h 5m".
VORLAN_EXPORT DateComponentsFormatter abbreviatedHoursMinutesFormatter();
VORLAN_EXPORT void setAbbreviatedHoursMinutesFormatter(DateComponentsFormatter formatter);

/// "0:01:05".
VORLAN_EXPORT DateComponentsFormatter countdownFormatter();
VORLAN_EXPORT void setCountdownFormatter(DateComponentsFormatter formatter);

/// "1:05".
VORLAN_EXPORT DateComponentsFormatter minutesCountdownFormatter();
VORLAN_EXPORT void setMinutesCountdownFormatter(DateComponentsFormatter formatter);

} // namespace vorlan::dateComponentsFormatter
