// SPDX-License-Identifier: Apache-2.0

// The beginning of a date's day, its year, month and day, whether it is today, and how many days ago it was.

#include "benchmarks/DatesBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/SampleDates.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/Calendar.h>

#include <QtCore/QDateTime>
#include <QtCore/QTimeZone>

#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>

namespace vorlan::benchmarks {

namespace {

constexpr auto startingDay = "first instant of a date's day";
constexpr auto splitting = "year, month and day of a date";
constexpr auto asking = "is a date today?";
constexpr auto counting = "days since a date";
constexpr double millisecondsOfDay = 86'400'000;

TimeZone zone() {
    return TimeZone::fromIdentifier(sampleZone).value_or(TimeZone::gmt());
}

Calendar calendar() {
    return {Calendar::Identifier::gregorian, Locale(sampleGerman), zone()};
}

std::tm local(std::time_t time) {
    std::tm result{};
    localtime_r(&time, &result);
    return result;
}

// What calendars come down to: the offset of a date, its day, and the offset of that day's midnight.
auto startByOffsets() {
    const std::shared_ptr<icu::TimeZone> owner = icuSampleZone();
    return [owner, zone = &dynamic_cast<const icu::BasicTimeZone&>(*owner)](const SampleDate& date) {
        std::int32_t raw = 0;
        std::int32_t summer = 0;
        UErrorCode status = U_ZERO_ERROR;
        zone->getOffset(date.milliseconds, 0, raw, summer, status);
        const double day = std::floor((date.milliseconds + raw + summer) / millisecondsOfDay);
        const double midnight = day * millisecondsOfDay;
        zone->getOffsetFromLocal(midnight, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, raw, summer, status);
        return static_cast<std::int64_t>(midnight - raw - summer);
    };
}

std::int64_t startByCalendar(icu::Calendar& calendar, const SampleDate& date) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime(date.milliseconds, status);
    for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
        calendar.set(field, 0);
    return static_cast<std::int64_t>(calendar.getTime(status));
}

void addStarts() {
    addDatesRow(startingDay, "floor: ICU's zone offsets", startByOffsets, startByOffsets);
    addDatesRow(startingDay, "ours: Calendar::startOfDay", startByOffsets, [] {
        return [calendar = calendar()](const SampleDate& date) { return calendar.startOfDay(date.date); };
    });
    addDatesRow(startingDay, "ours: date::normalizedDate", startByOffsets,
                [] { return [](const SampleDate& date) { return date::normalizedDate(date.date); }; });
    addDatesRow(startingDay, "peer: QDate::startOfDay", startByOffsets, [] {
        return [zone = QTimeZone(sampleZone)](const SampleDate& date) -> std::int64_t {
            const auto time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.milliseconds), zone);
            return time.date().startOfDay(zone).toMSecsSinceEpoch();
        };
    });
    addDatesRow(startingDay, "peer: localtime_r, mktime", startByOffsets, [] {
        return [](const SampleDate& date) {
            auto time = local(date.seconds);
            time.tm_hour = time.tm_min = time.tm_sec = 0;
            time.tm_isdst = -1;
            return static_cast<std::int64_t>(std::mktime(&time)) * 1000;
        };
    });
    addDatesRow(startingDay, "peer: icu::Calendar, reused", startByOffsets, [] {
        return [calendar = std::shared_ptr(icuCalendar())](const SampleDate& date) {
            return startByCalendar(*calendar, date);
        };
    });
    addDatesRow(startingDay, "peer: icu::Calendar, made for each", startByOffsets,
                [] { return [](const SampleDate& date) { return startByCalendar(*icuCalendar(), date); }; });
}

/// A day as one number.
constexpr std::int64_t dayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
    return (year * 100 + month) * 100 + day;
}

auto splitByC() {
    return [](const SampleDate& date) {
        const auto time = local(date.seconds);
        return dayNumber(time.tm_year + 1900, time.tm_mon + 1, time.tm_mday);
    };
}

void addSplitting() {
    addDatesRow(splitting, "floor: localtime_r", splitByC, splitByC);
    addDatesRow(splitting, "ours: Calendar::dateComponents", splitByC, [] {
        return [calendar = calendar()](const SampleDate& date) {
            const auto parts = calendar.dateComponents(
                {CalendarComponent::year, CalendarComponent::month, CalendarComponent::day},
                {.from = date.date, .to = {}});
            return dayNumber(parts.year.value_or(0), parts.month.value_or(0), parts.day.value_or(0));
        };
    });
    addDatesRow(splitting, "ours: Calendar::component, three times", splitByC, [] {
        return [calendar = calendar()](const SampleDate& date) {
            const auto part = [&](CalendarComponent which) {
                return calendar.component(which, date.date).value_or(0);
            };
            return dayNumber(part(CalendarComponent::year), part(CalendarComponent::month),
                             part(CalendarComponent::day));
        };
    });
    addDatesRow(splitting, "peer: QDateTime::date", splitByC, [] {
        return [zone = QTimeZone(sampleZone)](const SampleDate& date) {
            const auto time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.milliseconds), zone);
            int year = 0;
            int month = 0;
            int day = 0;
            time.date().getDate(&year, &month, &day);
            return dayNumber(year, month, day);
        };
    });
    addDatesRow(splitting, "peer: icu::Calendar, reused", splitByC, [] {
        return [calendar = std::shared_ptr(icuCalendar())](const SampleDate& date) {
            UErrorCode status = U_ZERO_ERROR;
            calendar->setTime(date.milliseconds, status);
            const auto year = calendar->get(UCAL_YEAR, status);
            const auto month = calendar->get(UCAL_MONTH, status) + 1;
            return dayNumber(year, month, calendar->get(UCAL_DATE, status));
        };
    });
}

auto askC() {
    return [](const SampleDate& date) {
        const auto time = local(date.seconds);
        const auto now = local(std::time(nullptr));
        return time.tm_year == now.tm_year && time.tm_yday == now.tm_yday;
    };
}

void addAsking() {
    addDatesRow(asking, "floor: localtime_r, of both", askC, askC, recentDates);
    addDatesRow(
        asking, "ours: calendar::isToday", askC,
        [] { return [](const SampleDate& date) { return calendar::isToday(date.date); }; }, recentDates);
    addDatesRow(
        asking, "peer: QDateTime::date, QDate::currentDate", askC,
        [] {
            return [zone = QTimeZone(sampleZone)](const SampleDate& date) {
                const auto time =
                    QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.milliseconds), zone);
                return time.date() == QDateTime::currentDateTimeUtc().toTimeZone(zone).date();
            };
        },
        recentDates);
}

auto countByQt() {
    return [zone = QTimeZone(sampleZone)](const SampleDate& date) -> std::int64_t {
        const auto time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.milliseconds), zone);
        return time.date().daysTo(QDateTime::currentDateTimeUtc().toTimeZone(zone).date());
    };
}

void addCounting() {
    addDatesRow(counting, "peer: QDate::daysTo", countByQt, countByQt, recentDates);
    addDatesRow(
        counting, "ours: calendar::daysElapsedSinceDate", countByQt,
        [] {
            return [calendar = Calendar::current()](const SampleDate& date) {
                return calendar::daysElapsedSinceDate(calendar, date.date);
            };
        },
        recentDates);
    addDatesRow(
        counting, "peer: icu::Calendar::fieldDifference, reused", countByQt,
        [] {
            return [calendar = std::shared_ptr(icuCalendar())](const SampleDate& date) {
                UErrorCode status = U_ZERO_ERROR;
                const auto today = startByCalendar(*calendar, {Date(), icu::Calendar::getNow(), 0});
                startByCalendar(*calendar, date);
                return std::int64_t{calendar->fieldDifference(static_cast<UDate>(today), UCAL_DATE, status)};
            };
        },
        recentDates);
}

} // namespace

void addCalendarRows() {
    addStarts();
    addSplitting();
    addAsking();
    addCounting();
}

} // namespace vorlan::benchmarks
