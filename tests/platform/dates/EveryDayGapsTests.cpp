// SPDX-License-Identifier: Apache-2.0

// Days that have no midnight, or two, that come twice, or that never were.

#include "tests/platform/dates/EveryDay.h"
#include "tests/platform/dates/ReferenceZone.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace vorlan;
using tests::DayNumber;
using tests::Differences;
using tests::ReferenceZone;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;
using Component = CalendarComponent;

namespace {

struct UncommonDay {
    const char* zone;
    const char* day;
    const char* begins; // in UTC
    double hours;
};

// From the announcements, not from any table that a computer has.
const std::vector<UncommonDay> uncommonDays = {
    {"America/Sao_Paulo", "2018-11-04", "2018-11-04 03:00:00 +0000", 23}, // begins at 01:00
    {"America/Sao_Paulo", "2019-02-16", "2019-02-16 02:00:00 +0000", 25}, // 23:00 twice
    {"Asia/Beirut", "2022-03-27", "2022-03-26 22:00:00 +0000", 23},       // begins at 01:00
    {"Africa/Cairo", "2010-04-30", "2010-04-29 22:00:00 +0000", 23},      // begins at 01:00
    {"America/Havana", "2019-03-10", "2019-03-10 05:00:00 +0000", 23},    // begins at 01:00
    {"America/Havana", "2019-11-03", "2019-11-03 04:00:00 +0000", 25},    // 00:00 twice
    {"Asia/Kathmandu", "1986-01-01", "1985-12-31 18:30:00 +0000", 23.75}, // begins at 00:15
    {"America/St_Johns", "2010-11-07", "2010-11-07 02:30:00 +0000",
     25},                                                            // 00:00 twice, the day before in between
    {"Pacific/Apia", "2011-12-29", "2011-12-29 10:00:00 +0000", 24}, // the 31st follows
    {"Pacific/Apia", "2011-12-31", "2011-12-30 10:00:00 +0000", 24},
    {"Pacific/Kwajalein", "1993-08-20", "1993-08-20 12:00:00 +0000", 24}, // the 22nd follows
    {"Pacific/Kwajalein", "1993-08-22", "1993-08-21 12:00:00 +0000", 24},
    {"Antarctica/Troll", "2022-03-27", "2022-03-27 00:00:00 +0000", 22},
    {"Antarctica/Troll", "2022-10-30", "2022-10-29 22:00:00 +0000", 26},
    {"Australia/Lord_Howe", "2022-04-03", "2022-04-02 13:00:00 +0000", 24.5},
    {"Australia/Lord_Howe", "2022-10-02", "2022-10-01 13:30:00 +0000", 23.5},
    {"Europe/Berlin", "2022-03-27", "2022-03-26 23:00:00 +0000", 23},
    {"Europe/Berlin", "2022-10-30", "2022-10-29 22:00:00 +0000", 25},
};

Calendar calendarIn(const std::string& zone) {
    return Calendar(Calendar::Identifier::gregorian, Locale("en_US"), *TimeZone::fromIdentifier(zone));
}

DateComponents componentsOf(DayNumber day) {
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
    return {.year = static_cast<int>(date.year()),
            .month = static_cast<unsigned>(date.month()),
            .day = static_cast<unsigned>(date.day())};
}

// What is uncommon about a day.
struct Kinds {
    std::set<std::string> withoutMidnight, withTwoMidnights, interrupted, twice, missing;

    void note(const ReferenceZone& zone, const std::string& name, DayNumber day) {
        const auto bounds = zone.day(day);
        const auto text = name + " " + tests::dayText(day);
        if (!bounds) {
            missing.insert(text);
            return;
        }
        if (zone.midnights(day) == 0) withoutMidnight.insert(text);
        if (zone.midnights(day) > 1) withTwoMidnights.insert(text);
        if (bounds->last - bounds->first > 36 * 3600) twice.insert(text);
        for (const auto& span : zone.spans())
            if (span.from > bounds->first && span.from <= bounds->last && zone.dateAt(span.from) != day)
                interrupted.insert(text);
    }
};

// The days at which the zone's offset changes, and those beside them.
std::set<DayNumber> uncommonDaysOf(const ReferenceZone& zone, DayNumber first, DayNumber last) {
    std::set<DayNumber> days;
    for (const auto& span : zone.spans())
        for (DayNumber away = -2; away <= 2; ++away) days.insert(zone.dateAt(span.from) + away);
    std::erase_if(days, [&](DayNumber day) { return day < first || day > last; });
    return days;
}

void compareDay(Differences& differences, const Calendar& calendar, const ReferenceZone& zone,
                DayNumber day) {
    const auto bounds = zone.day(day);
    if (!bounds) return;
    const auto first = tests::dateAt(bounds->first);
    const auto components = componentsOf(day);
    for (const auto& moment : tests::momentsOf(zone, day, *bounds)) {
        differences.at(moment);
        differences.compare("the start", calendar.startOfDay(moment.date), first);
        const auto are = calendar.dateComponents({Component::year, Component::month, Component::day},
                                                 {.from = moment.date});
        differences.compare("being that date", are == components, true);
        differences.compare("the date's first instant", calendar.date(components), first);
    }
}

std::vector<std::string> zonesToTest(std::size_t start) {
    const auto stride = tests::slowness() / 2 + 1;
    const auto all = TimeZone::knownIdentifiers();
    std::vector<std::string> zones;
    for (std::size_t i = start % stride; i < all.size(); i += stride) zones.push_back(all[i]);
    for (const auto& day : uncommonDays) zones.emplace_back(day.zone);
    return zones;
}

} // namespace

TEST(EveryDayGapsTest, DayBeginsAtItsFirstInstantAndIsAsLongAsItIs) {
    for (const auto& uncommon : uncommonDays) {
        SCOPED_TRACE(std::string(uncommon.zone) + " " + uncommon.day);
        const auto calendar = calendarIn(uncommon.zone);
        const auto first = calendar.date(componentsOf(tests::dayNumber(uncommon.day)));
        ASSERT_TRUE(first);
        EXPECT_EQ(first->description(), uncommon.begins);
        for (const auto seconds : {0.0, 1.0, 12 * 3600.0, uncommon.hours * 3600 - 1e-6}) {
            const Date date(first->timeIntervalSinceReferenceDate() + seconds);
            EXPECT_EQ(calendar.startOfDay(date), first) << seconds;
            EXPECT_EQ(calendar.dateInterval({.of = Component::day, .for_ = date}),
                      (DateInterval{*first, uncommon.hours * 3600}))
                << seconds;
        }
    }
}

TEST(EveryDayGapsTest, EveryUncommonDayOfEveryZoneBeginsAtItsFirstInstant) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    const auto first = tests::dayNumber(1900, 1, 1);
    const auto last = tests::dayNumber(2060, 1, 1);
    Kinds kinds;
    for (const auto& name : zonesToTest(seed)) {
        const auto zone = ReferenceZone::listed(name, first, last);
        const auto calendar = calendarIn(name);
        Differences differences;
        for (const auto day : uncommonDaysOf(zone, first, last)) {
            kinds.note(zone, name, day);
            compareDay(differences, calendar, zone, day);
        }
        EXPECT_EQ(differences.text(), "") << name;
    }
    for (const auto* day : {"America/Sao_Paulo 2018-11-04", "Asia/Beirut 2022-03-27",
                            "Africa/Cairo 2010-04-30", "Asia/Kathmandu 1986-01-01"})
        EXPECT_TRUE(kinds.withoutMidnight.contains(day)) << day;
    for (const auto* day : {"America/Havana 2019-11-03", "America/St_Johns 2010-11-07"})
        EXPECT_TRUE(kinds.withTwoMidnights.contains(day)) << day;
    EXPECT_TRUE(kinds.interrupted.contains("America/St_Johns 2010-11-07"));
    EXPECT_TRUE(kinds.twice.contains("Pacific/Kwajalein 1969-09-30"));
    for (const auto* day : {"Pacific/Apia 2011-12-30", "Pacific/Kwajalein 1993-08-21"})
        EXPECT_TRUE(kinds.missing.contains(day)) << day;
}

TEST(EveryDayGapsTest, DayThatNeverWasBeginsTheNext) {
    for (const auto* const zone : {"Pacific/Apia", "Pacific/Kwajalein"}) {
        SCOPED_TRACE(zone);
        const auto missing =
            tests::dayNumber(zone == std::string("Pacific/Apia") ? "2011-12-30" : "1993-08-21");
        const auto calendar = calendarIn(zone);
        const auto next = calendar.date(componentsOf(missing + 1));
        ASSERT_TRUE(next);
        EXPECT_EQ(calendar.date(componentsOf(missing)), next);
        EXPECT_EQ(calendar.startOfDay(*calendar.date(componentsOf(missing))), next);
        const auto former = calendar.date(componentsOf(missing - 1));
        EXPECT_EQ(calendar.dateInterval({.of = Component::day, .for_ = *former}),
                  (DateInterval{*former, 86'400}));
    }
}

TEST(EveryDayGapsTest, YesterdayIsOneMidnightAwayWhereDaysBeginLate) {
    struct Case {
        const char* zone;
        const char* now;
    };
    for (const auto& [zone, now] :
         {Case{"America/Sao_Paulo", "2018-11-05"}, Case{"America/Sao_Paulo", "2018-11-04"},
          Case{"Asia/Beirut", "2022-03-28"}, Case{"America/Havana", "2019-11-03"},
          Case{"America/Havana", "2019-11-04"}, Case{"America/St_Johns", "2010-11-07"}}) {
        SCOPED_TRACE(std::string(zone) + " " + now);
        const UserRegion user({.timeZone = zone});
        const auto calendar = Calendar::current();
        const auto today = calendar.date(componentsOf(tests::dayNumber(now)));
        const auto yesterday = calendar.date(componentsOf(tests::dayNumber(now) - 1));
        const WallClock clock(*today);
        EXPECT_EQ(calendar::daysElapsedSinceDate(calendar, *yesterday), 1);
        const Date late(yesterday->timeIntervalSinceReferenceDate() + 22.5 * 3600);
        EXPECT_EQ(calendar::daysElapsedSinceDate(calendar, late), 1);
        EXPECT_FALSE(calendar::isToday(late));
    }
}

TEST(EveryDayGapsTest, DayThatNeverWasIsNotCountedInWhateverSeasonsTheSpanEnds) {
    const UserRegion user({.timeZone = "Pacific/Apia"});
    const auto calendar = Calendar::current();
    const auto first = tests::dayNumber("2005-01-01");
    const auto missing = tests::dayNumber("2011-12-30");
    for (auto from = first; from < missing; from += 29) {
        for (auto to = missing + 1; to < missing + 4000; to += 293) {
            const auto start = *calendar.date(componentsOf(from));
            const auto end = *calendar.date(componentsOf(to));
            const auto where = tests::dayText(from) + " to " + tests::dayText(to);
            EXPECT_EQ(calendar.dateComponents(Component::day, {.from = start, .to = end}).day, to - from - 1)
                << where;
            const WallClock clock(end);
            ASSERT_EQ(calendar::daysElapsedSinceDate(calendar, start), to - from - 1) << where;
        }
    }
}
