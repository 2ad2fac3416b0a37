// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateFormatter.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <limits>
#include <string>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using Style = DateFormatter::Style;
using UserRegion = vorlan::testing::UserRegion;
using WallClock = vorlan::testing::WallClock;

namespace {

// 2024-03-05 14:07:09 in UTC, a Tuesday.
constexpr auto tuesday = Date::fromTimeIntervalSince1970(1'709'647'629);

DateFormatter english() {
    DateFormatter formatter;
    formatter.setLocale(Locale("en_US"));
    formatter.setTimeZone(TimeZone::gmt());
    formatter.setCalendar(Calendar(Calendar::Identifier::gregorian, Locale("en_US"), TimeZone::gmt()));
    return formatter;
}

DateFormatter withPattern(std::string pattern, const char* locale = "en_US", const char* zone = "GMT") {
    DateFormatter formatter;
    formatter.setLocale(Locale(locale));
    formatter.setTimeZone(TimeZone::fromIdentifier(zone));
    formatter.setDateFormat(std::move(pattern));
    return formatter;
}

} // namespace

TEST(DateFormatter, WithNothingSetGivesNoText) {
    const DateFormatter formatter;
    EXPECT_EQ(formatter.string(tuesday), "");
    EXPECT_EQ(formatter.dateFormat(), "");
    EXPECT_EQ(formatter.date(""), std::nullopt);
    EXPECT_EQ(formatter.date("2024"), std::nullopt);
    EXPECT_EQ(formatter.dateStyle(), Style::none);
    EXPECT_EQ(formatter.timeStyle(), Style::none);
    EXPECT_FALSE(formatter.isLenient());
    EXPECT_FALSE(formatter.doesRelativeDateFormatting());
}

TEST(DateFormatter, WritesByPattern) {
    EXPECT_EQ(withPattern("yyyy-MM-dd HH:mm:ss").string(tuesday), "2024-03-05 14:07:09");
    EXPECT_EQ(withPattern("EEEE, d MMMM y G 'at' h 'o''clock' a").string(tuesday),
              "Tuesday, 5 March 2024 AD at 2 o'clock PM");
    EXPECT_EQ(withPattern("''yy''").string(tuesday), "'24'");
    EXPECT_EQ(
        withPattern("eee, dd MMM yyyy HH:mm:ss Z", "en_US_POSIX").string(Date::fromTimeIntervalSince1970(0)),
        "Thu, 01 Jan 1970 00:00:00 +0000");
}

TEST(DateFormatter, WritesByStyle) {
    auto formatter = english();
    formatter.setDateStyle(Style::long_);
    EXPECT_EQ(formatter.string(tuesday), "March 5, 2024");
    EXPECT_EQ(formatter.dateFormat(), "MMMM d, y");
    formatter.setDateStyle(Style::full);
    EXPECT_EQ(formatter.string(tuesday), "Tuesday, March 5, 2024");
    formatter.setDateStyle(Style::short_);
    EXPECT_EQ(formatter.string(tuesday), "3/5/24");
    formatter.setDateStyle(Style::medium);
    EXPECT_EQ(formatter.string(tuesday), "Mar 5, 2024");
}

TEST(DateFormatter, WritesDateAndTimeInTheLocalesOrder) {
    auto formatter = english();
    formatter.setLocale(Locale("de_DE.UTF-8"));
    formatter.setTimeZone(TimeZone::fromIdentifier("Europe/Berlin"));
    formatter.setDateStyle(Style::short_);
    formatter.setTimeStyle(Style::short_);
    EXPECT_EQ(formatter.string(tuesday), "05.03.24, 15:07");
    formatter.setDateStyle(Style::none);
    EXPECT_EQ(formatter.string(tuesday), "15:07");
}

TEST(DateFormatter, WhatIsSetLastCounts) {
    auto formatter = english();
    formatter.setDateFormat("yyyy");
    formatter.setDateStyle(Style::short_);
    EXPECT_EQ(formatter.string(tuesday), "3/5/24");
    formatter.setDateFormat("yyyy");
    EXPECT_EQ(formatter.string(tuesday), "2024");
    EXPECT_EQ(formatter.dateFormat(), "yyyy");
    EXPECT_EQ(formatter.dateStyle(), Style::short_);
    formatter.setTimeStyle(Style::none);
    EXPECT_EQ(formatter.string(tuesday), "3/5/24");
}

TEST(DateFormatter, CopiesAreTheSameFormatter) {
    auto formatter = english();
    auto same = formatter;
    same.setDateFormat("yyyy");
    EXPECT_EQ(formatter, same);
    EXPECT_EQ(formatter.string(tuesday), "2024");
}

TEST(DateFormatter, CopyIsAFormatterOfItsOwn) {
    auto formatter = english();
    formatter.setDateFormat("yyyy");
    formatter.setLenient(true);
    auto other = formatter.copy();
    EXPECT_NE(formatter, other);
    EXPECT_TRUE(other.isLenient());
    EXPECT_EQ(other.string(tuesday), "2024");
    other.setDateFormat("MM");
    EXPECT_EQ(formatter.string(tuesday), "2024");
    EXPECT_EQ(other.string(tuesday), "03");
}

TEST(DateFormatter, FollowsTheUserWhereNothingIsSet) {
    DateFormatter formatter;
    formatter.setDateStyle(Style::long_);
    formatter.setTimeStyle(Style::short_);
    {
        const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin", .calendar = std::nullopt});
        EXPECT_EQ(formatter.string(tuesday), "5. März 2024 um 15:07");
        EXPECT_EQ(formatter.locale(), Locale("de_DE"));
        EXPECT_EQ(formatter.timeZone(), TimeZone::fromIdentifier("Europe/Berlin"));
    }
    const UserRegion user({.locale = "fr_FR", .timeZone = "UTC", .calendar = std::nullopt});
    EXPECT_EQ(formatter.string(tuesday), "5 mars 2024 à 14:07");
    EXPECT_EQ(formatter.calendar().identifier(), Calendar::Identifier::gregorian);
}

TEST(DateFormatter, KeepsWhatIsSetWhateverTheUserHas) {
    auto formatter = english();
    formatter.setDateStyle(Style::long_);
    const UserRegion user({.locale = "th_TH", .timeZone = "Pacific/Apia", .calendar = std::nullopt});
    EXPECT_EQ(formatter.string(tuesday), "March 5, 2024");
    formatter.setLocale(std::nullopt);
    formatter.setTimeZone(std::nullopt);
    formatter.setCalendar(std::nullopt);
    EXPECT_EQ(formatter.string(tuesday), "6 มีนาคม 2567");
}

TEST(DateFormatter, TakesTheCalendarInUseWhereItsLocaleIs) {
    auto formatter = withPattern("y", "th_TH");
    EXPECT_EQ(formatter.calendar().identifier(), Calendar::Identifier::buddhist);
    EXPECT_EQ(formatter.string(tuesday), "2567");
    formatter.setLocale(Locale("en_US"));
    EXPECT_EQ(formatter.calendar().identifier(), Calendar::Identifier::gregorian);
    EXPECT_EQ(formatter.string(tuesday), "2024");
}

TEST(DateFormatter, CountsWeeksAsItsCalendarDoes) {
    // 1 January 2023 was a Sunday.
    const auto sunday = Date::fromTimeIntervalSince1970(1'672'531'200);
    auto formatter = withPattern("YYYY-'W'ww-e");
    EXPECT_EQ(formatter.string(sunday), "2023-W01-1");
    formatter.setCalendar(Calendar(Calendar::Identifier::iso8601, Locale("en_US"), TimeZone::gmt()));
    EXPECT_EQ(formatter.string(sunday), "2022-W52-7");
    Calendar calendar(Calendar::Identifier::gregorian, Locale("en_US"), TimeZone::gmt());
    calendar.setFirstWeekday(7);
    calendar.setMinimumDaysInFirstWeek(1);
    formatter.setCalendar(calendar);
    EXPECT_EQ(formatter.string(sunday), "2023-W01-2");
}

TEST(DateFormatter, CountsInTheJulianCalendarBeforeTheReform) {
    const auto dayBefore = Date::fromTimeIntervalSince1970(-12'219'292'800 - 86'400);
    auto formatter = withPattern("yyyy-MM-dd");
    EXPECT_EQ(formatter.string(dayBefore), "1582-10-04");
    formatter.setCalendar(Calendar(Calendar::Identifier::iso8601, Locale("en_US"), TimeZone::gmt()));
    EXPECT_EQ(formatter.string(dayBefore), "1582-10-14");
}

TEST(DateFormatter, WritesInTheLocalesDigits) {
    EXPECT_EQ(withPattern("yyyy-MM-dd", "ar_EG").string(tuesday), "٢٠٢٤-٠٣-٠٥");
    EXPECT_EQ(withPattern("yyyy-MM-dd", "fa_IR").string(tuesday), "۱۴۰۲-۱۲-۱۵");
    EXPECT_EQ(withPattern("dd", "hi_IN").string(tuesday), "05");
    EXPECT_EQ(withPattern("dd", "hi_IN@numbers=deva").string(tuesday), "०५");
}

TEST(DateFormatter, WritesMillisecondsThatADoubleCannotHold) {
    auto formatter = withPattern("ss.SSS");
    for (int i = 0; i < 1000; ++i) {
        const std::string text = std::to_string(1000 + i).substr(1);
        EXPECT_EQ(formatter.string(Date::fromTimeIntervalSince1970(1'709'647'629 + i / 1000.0)),
                  "09." + text);
    }
    EXPECT_EQ(formatter.string(Date::fromTimeIntervalSince1970(-0.25)), "59.750");
    EXPECT_EQ(formatter.string(Date::fromTimeIntervalSince1970(0.9996)), "00.999");
}

TEST(DateFormatter, WritesLocalTimesAroundChanges) {
    auto formatter = withPattern("HH:mm Z", "en_US", "Europe/Berlin");
    const auto change = Date::fromTimeIntervalSince1970(1'711'846'800); // 2024-03-31, 02:00 became 03:00
    EXPECT_EQ(formatter.string(Date(change.timeIntervalSinceReferenceDate() - 1)), "01:59 +0100");
    EXPECT_EQ(formatter.string(change), "03:00 +0200");
    EXPECT_EQ(withPattern("yyyy-MM-dd HH:mm", "en_US", "Asia/Kathmandu").string(tuesday), "2024-03-05 19:52");
    EXPECT_EQ(withPattern("yyyy-MM-dd HH:mm", "en_US", "Pacific/Apia").string(tuesday), "2024-03-06 03:07");
}

TEST(DateFormatter, GivesNoTextForADateInNoCalendar) {
    auto formatter = english();
    for (const auto style : {Style::short_, Style::full}) {
        formatter.setDateStyle(style);
        formatter.setDoesRelativeDateFormatting(style == Style::full);
        for (const double seconds : {std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300, 2e14, -2e14,
                                     std::numeric_limits<double>::infinity()})
            EXPECT_EQ(formatter.string(Date(seconds)), "") << seconds;
        EXPECT_NE(formatter.string(Date::distantPast()), "");
        EXPECT_NE(formatter.string(Date::distantFuture()), "");
        EXPECT_NE(formatter.string(Date(1.5e14)), "");
    }
}

TEST(DateFormatter, GivesNoTextForAPatternThatIsNone) {
    for (const char* pattern : {"yyyy 'of", "'", "yyyy'''", "j", "yyyy-MM-dd'T'HH:mm:ss'"}) {
        auto formatter = withPattern(pattern);
        EXPECT_EQ(formatter.string(tuesday), "") << pattern;
        EXPECT_EQ(formatter.date("2024"), std::nullopt) << pattern;
        EXPECT_EQ(formatter.dateFormat(), pattern);
        formatter.setDateFormat("yyyy");
        EXPECT_EQ(formatter.string(tuesday), "2024");
    }
}

TEST(DateFormatter, ReplacesIllFormedBytesOfThePattern) {
    EXPECT_EQ(withPattern("yyyy\xFF/MM").string(tuesday), "2024\xEF\xBF\xBD/03");
    EXPECT_EQ(withPattern(std::string("yyyy\0MM", 7)).string(tuesday), std::string("2024\00003", 7));
    EXPECT_EQ(withPattern("yyyy年MM月").string(tuesday), "2024年03月");
}

TEST(DateFormatter, NamesDaysByTheClockThatTestsStop) {
    WallClock clock(tuesday);
    auto formatter = english();
    formatter.setDateStyle(Style::short_);
    formatter.setTimeStyle(Style::short_);
    formatter.setDoesRelativeDateFormatting(true);
    const std::string time = withPattern("h:mm\u202Fa").string(tuesday);
    EXPECT_EQ(formatter.string(tuesday), "today, " + time);
    clock.advance(24h);
    EXPECT_EQ(formatter.string(tuesday), "yesterday, " + time);
    clock.advance(-48h);
    EXPECT_EQ(formatter.string(tuesday), "tomorrow, " + time);
    clock.advance(-24h * 30);
    EXPECT_EQ(formatter.string(tuesday), "3/5/24, " + time);
}

TEST(DateFormatter, NamesDaysByTheCalendarDayInItsZone) {
    auto formatter = english();
    formatter.setDateStyle(Style::medium);
    formatter.setDoesRelativeDateFormatting(true);
    const WallClock clock(
        Date::fromTimeIntervalSince1970(1'709'683'200)); // midnight after the Tuesday, in UTC
    EXPECT_EQ(formatter.string(tuesday), "yesterday");
    formatter.setTimeZone(TimeZone::fromIdentifier("America/New_York"));
    EXPECT_EQ(formatter.string(tuesday), "today");
}

TEST(DateFormatter, NamesNoDaysWithoutADateStyle) {
    const WallClock clock(tuesday);
    auto formatter = english();
    formatter.setTimeStyle(Style::medium);
    formatter.setDoesRelativeDateFormatting(true);
    EXPECT_EQ(formatter.string(tuesday), withPattern("h:mm:ss\u202Fa").string(tuesday));
    formatter.setDateStyle(Style::short_);
    EXPECT_EQ(formatter.string(tuesday).substr(0, 5), "today");
    EXPECT_EQ(formatter.dateFormat().substr(0, 6), "M/d/yy");
    formatter.setDateFormat("yyyy");
    EXPECT_EQ(formatter.string(tuesday), "2024");
}

TEST(DateFormatter, SettingsAreReadBack) {
    auto formatter = english();
    formatter.setTimeStyle(Style::full);
    formatter.setDoesRelativeDateFormatting(true);
    EXPECT_EQ(formatter.timeStyle(), Style::full);
    EXPECT_TRUE(formatter.doesRelativeDateFormatting());
    EXPECT_EQ(formatter.locale(), Locale("en_US"));
    EXPECT_EQ(formatter.timeZone(), TimeZone::gmt());
    EXPECT_EQ(formatter.calendar(),
              Calendar(Calendar::Identifier::gregorian, Locale("en_US"), TimeZone::gmt()));
    formatter.setTimeZone(TimeZone::fromIdentifier("Asia/Kathmandu"));
    EXPECT_EQ(formatter.calendar().timeZone(), TimeZone::gmt());
}
