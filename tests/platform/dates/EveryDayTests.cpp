// SPDX-License-Identifier: Apache-2.0

// Every day of two centuries, against the civil calendar and the offsets of a zone.

#include "tests/platform/dates/EveryDay.h"
#include "tests/platform/dates/ReferenceZone.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <compare>
#include <optional>
#include <random>
#include <string>
#include <unicode/ucal.h>
#include <vector>

using namespace vorlan;
using tests::DayNumber;
using tests::Differences;
using tests::Moment;
using tests::ReferenceCalendar;
using tests::ReferenceZone;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;
using Component = CalendarComponent;
using Moments = std::array<Moment, 3>;

namespace {

// A day that was, and the one before it.
struct Neighbours {
    Moments day;
    Moments former;
};

std::int64_t dayOfYear(DayNumber day) {
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
    return day - tests::dayNumber(static_cast<int>(date.year()), 1, 1) + 1;
}

class EveryDayTest : public ::testing::TestWithParam<const char*> {
protected:
    std::string name() const { return GetParam(); }
    const ReferenceZone& zone() const { return zone_; }
    std::vector<DayNumber> days() const { return tests::chosenDays(zone_, first, last, seed_); }
    unsigned seed() const { return seed_; }

    // Noon of a day that is up to some twenty years earlier, always as many.
    Moment longBefore(DayNumber day) const {
        const auto base = std::max(first, day - static_cast<DayNumber>(seed_ % 7000));
        return (moments(base) ? moments(base) : moments(base - 1)).value()[1];
    }

    std::optional<Moments> moments(DayNumber day) const {
        const auto bounds = zone_.day(day);
        return bounds ? std::optional(tests::momentsOf(zone_, day, *bounds)) : std::nullopt;
    }

    std::optional<Neighbours> neighbours(DayNumber day) const {
        const auto those = moments(day);
        if (!those) return std::nullopt;
        auto former = moments(day - 1);
        if (!former) former = moments(day - 2);
        return Neighbours{*those, *former};
    }

    // How many days there were from one to another: one that never was is none.
    DayNumber elapsed(DayNumber from, DayNumber to) const {
        if (to < from) return -elapsed(to, from);
        return to - from -
               std::ranges::count_if(missing_, [&](DayNumber day) { return from < day && day <= to; });
    }
    std::optional<DayNumber> plainlyElapsed(DayNumber from, DayNumber to) const {
        const auto count = elapsed(from, to);
        return count == to - from ? std::optional(count) : std::nullopt;
    }

private:
    static inline const DayNumber first = tests::dayNumber(1900, 1, 1);
    static inline const DayNumber last = tests::dayNumber(2100, 12, 31);

    ReferenceZone zone_ = ReferenceZone::sampled(GetParam(), first, last);
    std::vector<DayNumber> missing_ = zone_.missingDays();
    unsigned seed_ = std::random_device()();
};

void compareStarts(Differences& differences, const Calendar& calendar, const Moments& day, const Date next) {
    const auto first = day.front().date;
    for (const auto& moment : day) {
        differences.at(moment);
        differences.compare("the start", calendar.startOfDay(moment.date), first);
        differences.compare("the normalized date", date::normalizedDate(moment.date), first);
    }
    const auto interval = calendar.dateInterval({.of = Component::day, .for_ = day[1].date});
    differences.at(day[1]);
    differences.compare("the interval's start", interval ? std::optional(interval->start) : std::nullopt,
                        first);
    differences.compare("the interval's end", interval ? std::optional(interval->end()) : std::nullopt, next);
}

void compareOrder(Differences& differences, const Calendar& calendar, const Neighbours& days) {
    for (std::size_t i = 0; i < days.day.size(); ++i) {
        const auto now = days.day[i].date;
        const auto later = days.day[(i + 1) % days.day.size()].date;
        const auto former = days.former[days.former.size() - 1 - i].date;
        const auto order = [&](Date a, Date b) {
            return calendar.compare(a, {.to = b, .toGranularity = Component::day});
        };
        differences.at(days.day[i]);
        differences.compare("the order in a day", order(now, later), std::partial_ordering::equivalent);
        differences.compare("the order of two", order(now, former), std::partial_ordering::greater);
        differences.compare("the order back", order(former, now), std::partial_ordering::less);
        differences.compare("being one day", calendar::isDay(now, {.sameAs = later}), true);
        differences.compare("being one day of two", calendar::isDay(former, {.sameAs = now}), false);
    }
}

// How many days lie between, as they should.
struct Elapsed {
    DayNumber sinceFormer;
    std::optional<DayNumber> sinceBase; // unless a day between them never was: then see EveryDayGapsTest
};

void compareElapsed(Differences& differences, const Neighbours& days, const Moment& base, Elapsed elapsed) {
    const auto calendar = Calendar::current();
    const auto daysSince = [&](Date date) { return calendar::daysElapsedSinceDate(calendar, date); };
    WallClock clock(base.date);
    for (std::size_t i = 0; i < days.day.size(); ++i) {
        const auto now = days.day[i].date;
        const auto former = days.former[days.former.size() - 1 - i].date;
        differences.at(days.day[i]);
        clock.set(former);
        differences.compare("elapsed, ahead", daysSince(now), -elapsed.sinceFormer);
        clock.set(now);
        differences.compare("elapsed", daysSince(former), elapsed.sinceFormer);
        if (elapsed.sinceBase)
            differences.compare("elapsed since long", daysSince(base.date), *elapsed.sinceBase);
        differences.compare("being today", calendar::isToday(days.day.front().date), true);
        differences.compare("being yesterday", calendar::isToday(former), false);
    }
}

void compareDayOfYear(Differences& differences, const Calendar& calendar, const Moments& day) {
    const auto shouldBe = dayOfYear(day.front().day);
    for (const auto& moment : day) {
        differences.at(moment);
        differences.compare("the day of the year", calendar.component(Component::dayOfYear, moment.date),
                            shouldBe);
        differences.compare(
            "the ordinality",
            calendar.ordinality({.of = Component::day, .in = Component::year, .for_ = moment.date}),
            shouldBe);
        differences.compare("the index", calendar::index({.ofDay = moment.date, .inPeriod = 7}),
                            shouldBe % 7);
    }
}

const CalendarComponents fields = {Component::era,
                                   Component::year,
                                   Component::quarter,
                                   Component::month,
                                   Component::weekOfMonth,
                                   Component::day,
                                   Component::dayOfYear,
                                   Component::weekOfYear,
                                   Component::hour,
                                   Component::yearForWeekOfYear,
                                   Component::weekday,
                                   Component::minute,
                                   Component::weekdayOrdinal,
                                   Component::second};

// What the zone and the civil calendar say; the weeks are ICU's.
DateComponents reference(const ReferenceZone& zone, ReferenceCalendar& weeks, const Moment& moment) {
    const std::chrono::sys_days day{std::chrono::days(static_cast<int>(moment.day))};
    const std::chrono::year_month_day date(day);
    const auto month = static_cast<unsigned>(date.month());
    const auto time = zone.secondOfDayAt(moment.second);
    weeks.go(static_cast<double>(moment.second));
    return {.era = 1,
            .year = static_cast<int>(date.year()),
            .quarter = (month + 2) / 3,
            .month = month,
            .weekOfMonth = weeks.field(UCAL_WEEK_OF_MONTH),
            .weekOfYear = weeks.field(UCAL_WEEK_OF_YEAR),
            .yearForWeekOfYear = weeks.field(UCAL_YEAR_WOY),
            .day = static_cast<unsigned>(date.day()),
            .dayOfYear = dayOfYear(moment.day),
            .weekday = std::chrono::weekday(day).c_encoding() + 1,
            .weekdayOrdinal = (static_cast<unsigned>(date.day()) + 6) / 7,
            .hour = time / 3600,
            .minute = time / 60 % 60,
            .second = time % 60};
}

void compareFields(Differences& differences, const DateComponents& are, const DateComponents& shouldBe) {
    if (are == shouldBe) return differences.compare("everything", true, true);
    for (auto i = static_cast<unsigned>(Component::era); i < static_cast<unsigned>(Component::nanosecond);
         ++i) {
        const auto component = static_cast<Component>(i);
        differences.compare(("component " + std::to_string(i)).c_str(), are.value(component),
                            shouldBe.value(component));
    }
    differences.compare("something", are == shouldBe, true);
}

} // namespace

TEST_P(EveryDayTest, BeginsEndsAndCountsAsTheCivilCalendarSays) {
    SCOPED_TRACE(seed());
    const UserRegion user({.locale = "en_US", .timeZone = name()});
    const auto calendar = Calendar::current();
    Differences differences;
    for (const auto day : days()) {
        const auto days = neighbours(day);
        if (!days) continue;
        const auto next = moments(day + 1);
        compareStarts(differences, calendar, days->day,
                      next ? next->front().date : moments(day + 2).value().front().date);
        compareOrder(differences, calendar, *days);
        const auto former = days->former.front().day;
        const auto base = longBefore(day);
        compareElapsed(differences, *days, base, {elapsed(former, day), plainlyElapsed(base.day, day)});
        compareDayOfYear(differences, calendar, days->day);
    }
    EXPECT_EQ(differences.text(), "");
    EXPECT_GT(differences.comparisons(), 1000U * 40U);
}

TEST_P(EveryDayTest, HasTheComponentsOfTheCivilCalendar) {
    SCOPED_TRACE(seed());
    Differences differences;
    for (const auto* locale : {"en_US", "de_DE"}) {
        const Calendar calendar(Calendar::Identifier::gregorian, Locale(locale),
                                *TimeZone::fromIdentifier(name()));
        ReferenceCalendar weeks(name(), locale);
        for (const auto day : days()) {
            const auto those = moments(day);
            for (std::size_t i = 0; those && i < those->size(); ++i) {
                differences.at((*those)[i]);
                compareFields(differences, calendar.dateComponents(fields, {.from = (*those)[i].date}),
                              reference(zone(), weeks, (*those)[i]));
            }
        }
    }
    EXPECT_EQ(differences.text(), "");
    EXPECT_GT(differences.comparisons(), 1000U * 6U);
}

INSTANTIATE_TEST_SUITE_P(In, EveryDayTest,
                         ::testing::Values("Europe/Berlin", "America/New_York", "America/Sao_Paulo",
                                           "Asia/Kathmandu", "Pacific/Apia", "Australia/Lord_Howe", "UTC",
                                           "America/Havana", "Asia/Beirut", "Africa/Cairo",
                                           "Antarctica/Troll", "America/St_Johns", "Pacific/Kwajalein"),
                         [](const auto& zone) {
                             std::string name = zone.param;
                             std::ranges::replace(name, '/', '_');
                             return name;
                         });
