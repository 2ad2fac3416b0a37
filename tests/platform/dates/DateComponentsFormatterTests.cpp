// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateComponentsFormatter.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;
using namespace std::chrono_literals;
using Component = CalendarComponent;
using Style = DateComponentsFormatter::UnitsStyle;
using Zeros = DateComponentsFormatter::ZeroFormattingBehavior;

namespace {

constexpr CalendarComponents clockUnits{Component::hour, Component::minute, Component::second};
constexpr CalendarComponents dayUnits{Component::day, Component::hour, Component::minute, Component::second};
constexpr CalendarComponents allUnits{Component::year,  Component::month, Component::weekOfMonth,
                                      Component::day,   Component::hour,  Component::minute,
                                      Component::second};

Calendar calendarOf(const char* locale, TimeZone zone = TimeZone::gmt()) {
    return Calendar(Calendar::Identifier::gregorian, Locale(locale), zone);
}

struct Settings {
    CalendarComponents units = clockUnits;
    Style style = Style::positional;
    Zeros zeros = Zeros::default_;
    int most = 0;
    const char* locale = "en_US";
};

DateComponentsFormatter formatterOf(const Settings& settings) {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(settings.units);
    formatter.setUnitsStyle(settings.style);
    formatter.setZeroFormattingBehavior(settings.zeros);
    formatter.setMaximumUnitCount(settings.most);
    formatter.setCalendar(calendarOf(settings.locale));
    return formatter;
}

std::string text(const Settings& settings, double seconds) {
    return formatterOf(settings).string(seconds).value_or("none");
}

std::string text(const Settings& settings, const DateComponents& components) {
    return formatterOf(settings).string(components).value_or("none");
}

Date dateOf(const Calendar& calendar, const DateComponents& components) {
    return calendar.date(components).value();
}

} // namespace

TEST(DateComponentsFormatterTest, BeginsPositionalWithAllUnits) {
    const DateComponentsFormatter formatter;
    EXPECT_EQ(formatter.unitsStyle(), Style::positional);
    EXPECT_EQ(formatter.allowedUnits(), allUnits);
    EXPECT_EQ(formatter.zeroFormattingBehavior(), Zeros::default_);
    EXPECT_EQ(formatter.maximumUnitCount(), 0);
}

TEST(DateComponentsFormatterTest, StylesNameUnits) {
    constexpr double span = 3'600 + 5 * 60 + 30;
    EXPECT_EQ(text({.style = Style::positional}, span), "1:05:30");
    EXPECT_EQ(text({.style = Style::abbreviated}, span), "1h 5m 30s");
    EXPECT_EQ(text({.style = Style::short_}, span), "1 hr, 5 min, 30 sec");
    EXPECT_EQ(text({.style = Style::full}, span), "1 hour, 5 minutes, 30 seconds");
}

TEST(DateComponentsFormatterTest, PositionalDropsLargestUnitsAlone) {
    EXPECT_EQ(text({}, 65), "1:05");
    EXPECT_EQ(text({}, 5), "5");
    EXPECT_EQ(text({}, 3'600), "1:00:00");
    EXPECT_EQ(text({}, 0), "0");
    EXPECT_EQ(text({.units = dayUnits}, 86'400), "1d 0:00:00");
}

TEST(DateComponentsFormatterTest, OtherStylesDropAllZeros) {
    EXPECT_EQ(text({.style = Style::abbreviated}, 3'605), "1h 5s");
    EXPECT_EQ(text({.style = Style::short_}, 60), "1 min");
    EXPECT_EQ(text({.units = dayUnits, .style = Style::full}, 86'400), "1 day");
}

TEST(DateComponentsFormatterTest, WhereNothingIsLeftTheSmallestUnitIsZero) {
    EXPECT_EQ(text({.units = Component::hour, .style = Style::full}, 59), "0 hours");
    EXPECT_EQ(text({.units = {Component::day, Component::hour}, .style = Style::abbreviated}, 0), "0h");
    EXPECT_EQ(text({.zeros = Zeros::dropTrailing}, 0), "0");
}

TEST(DateComponentsFormatterTest, PaddingShowsAllUnits) {
    EXPECT_EQ(text({.zeros = Zeros::pad}, 65), "0:01:05");
    EXPECT_EQ(text({.units = {Component::minute, Component::second}, .zeros = Zeros::pad}, 65), "1:05");
    EXPECT_EQ(text({.units = {Component::minute, Component::second}, .zeros = Zeros::pad}, 3'665), "61:05");
    EXPECT_EQ(text({.style = Style::abbreviated, .zeros = Zeros::pad}, 65), "0h 1m 5s");
    EXPECT_EQ(text({.units = dayUnits, .zeros = Zeros::pad}, 65), "0d 0:01:05");
    EXPECT_EQ(text({.style = Style::abbreviated, .zeros = Zeros::pad | Zeros::dropAll}, 60), "0h 1m 0s");
}

TEST(DateComponentsFormatterTest, DropsWhatItIsToldTo) {
    const auto shown = [](Zeros zeros, double seconds) {
        return text({.units = dayUnits, .style = Style::abbreviated, .zeros = zeros}, seconds);
    };
    constexpr double hours = 2 * 3'600, dayAndMinute = 86'460;
    EXPECT_EQ(shown(Zeros::dropLeading, hours), "2h 0m 0s");
    EXPECT_EQ(shown(Zeros::dropTrailing, hours), "0d 2h");
    EXPECT_EQ(shown(Zeros::dropMiddle, hours), "0d 2h 0m 0s");
    EXPECT_EQ(shown(Zeros::dropMiddle, dayAndMinute), "1d 1m 0s");
    EXPECT_EQ(shown(Zeros::dropTrailing, dayAndMinute), "1d 0h 1m");
    EXPECT_EQ(shown(Zeros::dropLeading | Zeros::dropTrailing, hours), "2h");
    EXPECT_EQ(shown(Zeros::dropMiddle, 0), "0d 0h 0m 0s");
    EXPECT_TRUE(Zeros::dropAll == (Zeros::dropLeading | Zeros::dropMiddle | Zeros::dropTrailing));
}

TEST(DateComponentsFormatterTest, LargerUnitsAreNamedBeforeTheClock) {
    EXPECT_EQ(text({.units = dayUnits}, 90'061), "1d 1:01:01");
    EXPECT_EQ(text({.units = allUnits}, 90'061), "1d 1:01:01");
    EXPECT_EQ(text({.units = dayUnits, .locale = "de_DE"}, 2 * 86'400 + 3'661), "2 T, 1:01:01");
    EXPECT_EQ(text({.units = {Component::weekOfMonth, Component::day, Component::minute, Component::second}},
                   8 * 86'400 + 61),
              "1w 1d 1:01");
}

TEST(DateComponentsFormatterTest, PositionalNamesUnitsWhosePlacesDoNotTellThem) {
    EXPECT_EQ(text({.units = {Component::day, Component::hour}}, 2 * 86'400 + 5 * 3'600), "2d 5h");
    EXPECT_EQ(text({.units = {Component::hour, Component::second}}, 3'665), "1h 65s");
    EXPECT_EQ(text({.units = {Component::day, Component::second}}, 86'401), "1d 1s");
    EXPECT_EQ(text({.units = dayUnits, .zeros = Zeros::dropAll}, 86'400), "1d");
}

TEST(DateComponentsFormatterTest, PositionalShowsDroppedMinutesBetweenHoursAndSeconds) {
    EXPECT_EQ(text({.zeros = Zeros::dropMiddle}, 3'605), "1:00:05");
    EXPECT_EQ(text({.zeros = Zeros::dropAll}, 3'605), "1:00:05");
}

TEST(DateComponentsFormatterTest, OneUnitAloneIsABareNumber) {
    EXPECT_EQ(text({.units = Component::second}, 65), "65");
    EXPECT_EQ(text({.units = Component::minute}, 3'600), "60");
    EXPECT_EQ(text({.units = Component::hour}, 7'200), "2");
    EXPECT_EQ(text({.units = Component::day}, 3 * 86'400), "3");
    EXPECT_EQ(text({.units = Component::second, .locale = "ar_EG"}, 65), "\u0666\u0665");
    EXPECT_EQ(text({.units = Component::second}, 12'345), "12,345");
}

TEST(DateComponentsFormatterTest, ShowsTheLargestUnitsOnly) {
    EXPECT_EQ(text({.units = dayUnits, .style = Style::abbreviated, .most = 2}, 90'061), "1d 1h");
    EXPECT_EQ(text({.units = dayUnits, .style = Style::abbreviated, .most = 2}, 86'461), "1d 1m");
    EXPECT_EQ(text({.units = dayUnits, .style = Style::full, .most = 1}, 86'399), "23 hours"); // cut
    EXPECT_EQ(text({.style = Style::abbreviated, .most = 9}, 65), "1m 5s");
    EXPECT_EQ(text({.zeros = Zeros::pad, .most = 2}, 65), "0:01");
    EXPECT_EQ(text({.style = Style::abbreviated, .most = -1}, 65), "1m 5s");
}

TEST(DateComponentsFormatterTest, NegativeSpansHaveOneSignInFront) {
    EXPECT_EQ(text({}, -65), "-1:05");
    EXPECT_EQ(text({.zeros = Zeros::pad}, -65), "-0:01:05");
    EXPECT_EQ(text({}, -5), "-5");
    EXPECT_EQ(text({.style = Style::abbreviated}, -3'661), "-1h 1m 1s");
    EXPECT_EQ(text({.style = Style::full, .zeros = Zeros::pad}, -61), "-0 hours, 1 minute, 1 second");
    EXPECT_EQ(text({.units = dayUnits}, -90'061), "-1d 1:01:01");
    EXPECT_EQ(text({.units = dayUnits, .zeros = Zeros::pad}, -61), "-0d 0:01:01");
}

TEST(DateComponentsFormatterTest, NothingHasNoSign) {
    EXPECT_EQ(text({}, -0.0), "0");
    EXPECT_EQ(text({}, -0.9), "0");
    EXPECT_EQ(text({.units = Component::hour, .style = Style::full}, -3'599), "0 hours");
    EXPECT_EQ(text({.style = Style::abbreviated, .zeros = Zeros::pad, .most = 2}, -5), "0h 0m");
}

TEST(DateComponentsFormatterTest, WordsForOneAndTwoKeepTheSign) {
    const Settings arabic{.units = Component::hour, .style = Style::full, .locale = "ar_EG"};
    EXPECT_EQ(text(arabic, 3'600), "ساعة");
    EXPECT_EQ(text(arabic, -3'600), "\u061C-ساعة");
    EXPECT_EQ(text(arabic, 7'200), "ساعتان");
    EXPECT_EQ(text(arabic, -7'200), "\u061C-ساعتان");
    EXPECT_EQ(text({.units = Component::hour, .style = Style::full, .locale = "he_IL"}, -3'600),
              "\u200E-שעה");
}

TEST(DateComponentsFormatterTest, DigitsAreTheLocales) {
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "ar_EG"}, 65), "٠:٠١:٠٥");
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "fa_IR"}, 65), "۰:۰۱:۰۵");
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "hi_IN"}, 65), "0:01:05");
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "hi_IN@numbers=deva"}, 65), "०:०१:०५");
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "ff_Adlm_GN"}, 65), "𞥐:𞥐𞥑:𞥐𞥕");
}

TEST(DateComponentsFormatterTest, NumeralsThatHaveNoDigitsAreNotUsed) {
    for (const auto* locale : {"th_TH@numbers=roman", "he_IL@numbers=hebr", "ja_JP@numbers=jpan"})
        EXPECT_EQ(text({.zeros = Zeros::pad, .locale = locale}, 65), "0:01:05");
}

TEST(DateComponentsFormatterTest, UnknownLocalesHaveATextToo) {
    EXPECT_NE(text({.zeros = Zeros::pad, .locale = "xx"}, 65), "none"); // as the process was started
    for (const auto* locale : {"", "en@numbers=xxxx", "\xFF\xFE"})
        EXPECT_EQ(text({.zeros = Zeros::pad, .locale = locale}, 65), "0:01:05") << locale;
}

TEST(DateComponentsFormatterTest, SeparatorsAreTheLocales) {
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "da_DK"}, 65), "0.01.05");
    EXPECT_EQ(text({.units = {Component::minute, Component::second}, .locale = "fi_FI"}, 65), "1.05");
}

TEST(DateComponentsFormatterTest, LocalesWithoutLanguageReadAsEnglish) {
    EXPECT_EQ(text({.zeros = Zeros::pad, .locale = "C"}, 65), "0:01:05");
    EXPECT_EQ(text({.style = Style::full, .locale = "POSIX"}, 3'660), "1 hour, 1 minute");
}

TEST(DateComponentsFormatterTest, CutsFractionsTowardsZero) {
    EXPECT_EQ(text({}, 65.999), "1:05");
    EXPECT_EQ(text({}, -65.999), "-1:05");
    EXPECT_EQ(text({.units = Component::hour, .style = Style::full}, 7'199), "1 hour");
}

TEST(DateComponentsFormatterTest, CountsWeeksAndDaysByTheirUsualLength) {
    const Settings weeks{.units = {Component::weekOfMonth, Component::day}, .style = Style::full};
    EXPECT_EQ(text(weeks, 10 * 86'400), "1 week, 3 days");
    EXPECT_EQ(text(weeks, 365 * 86'400), "52 weeks, 1 day");
}

TEST(DateComponentsFormatterTest, CountsYearsAndMonthsFromTheStartOf2001) {
    const Settings long_{.units = {Component::year, Component::month, Component::day}, .style = Style::full};
    EXPECT_EQ(text(long_, 31 * 86'400), "1 month");
    EXPECT_EQ(text(long_, (365 + 31 + 27) * 86'400.0), "1 year, 1 month, 27 days");
    EXPECT_EQ(text({.units = Component::month, .style = Style::full}, 59 * 86'400), "2 months");
    EXPECT_EQ(text(long_, -31 * 86'400), "-1 month"); // December has as many days
}

TEST(DateComponentsFormatterTest, SecondsDoNotDependOnTheTimeZone) {
    auto formatter = formatterOf({.units = allUnits, .style = Style::full});
    // Clocks there were put forward on the first of April 2001.
    formatter.setCalendar(calendarOf("en_US", TimeZone::fromIdentifier("America/New_York").value()));
    EXPECT_EQ(formatter.string((90 + 31) * 86'400), "4 months, 1 day");
}

TEST(DateComponentsFormatterTest, WhatIsNoSpanHasNoText) {
    for (const auto units : {clockUnits, allUnits}) {
        const auto formatter = formatterOf({.units = units});
        const double infinity = std::numeric_limits<double>::infinity();
        EXPECT_EQ(formatter.string(std::nan("")), std::nullopt);
        EXPECT_EQ(formatter.string(infinity), std::nullopt);
        EXPECT_EQ(formatter.string(-infinity), std::nullopt);
        EXPECT_EQ(formatter.string(std::nextafter(0x1p53, infinity)), std::nullopt);
        EXPECT_EQ(formatter.string({.from = Date(0), .to = Date(std::nan(""))}), std::nullopt);
        EXPECT_EQ(formatter.string({.from = Date(-infinity), .to = Date(0)}), std::nullopt);
    }
}

TEST(DateComponentsFormatterTest, CountsTheLongestSpansToTheSecond) {
    EXPECT_EQ(text({.units = Component::second, .style = Style::abbreviated}, 0x1p53),
              "9,007,199,254,740,992s");
    EXPECT_EQ(text({}, -0x1p53), "-2,501,999,792,983:36:32");
    EXPECT_EQ(text({.units = allUnits}, 0x1p53), "none"); // no calendar reaches there
}

TEST(DateComponentsFormatterTest, WritesDurationsOfAllUnits) {
    const auto formatter = formatterOf({});
    EXPECT_EQ(formatter.string(65s), "1:05");
    EXPECT_EQ(formatter.string(90min), "1:30:00");
    EXPECT_EQ(formatter.string(65'999ms), "1:05");
    EXPECT_EQ(formatter.string(std::chrono::duration<double>(-65.5)), "-1:05");
    EXPECT_EQ(formatter.string(std::chrono::hours::max()), std::nullopt);
}

TEST(DateComponentsFormatterTest, WritesSpansByTheCalendar) {
    const auto berlin = calendarOf("en_US", TimeZone::fromIdentifier("Europe/Berlin").value());
    auto formatter =
        formatterOf({.units = {Component::month, Component::day, Component::hour}, .style = Style::full});
    formatter.setCalendar(berlin);
    const auto noon = [&](int month, int day) {
        return dateOf(berlin, {.year = 2024, .month = month, .day = day, .hour = 12});
    };
    EXPECT_EQ(formatter.string({.from = noon(3, 30), .to = noon(3, 31)}), "1 day"); // of 23 hours
    EXPECT_EQ(formatter.string({.from = noon(1, 31), .to = noon(3, 1)}), "1 month, 1 day");
    EXPECT_EQ(formatter.string({.from = noon(3, 31), .to = noon(3, 30)}), "-1 day");
    EXPECT_EQ(formatter.string({.from = noon(3, 30), .to = noon(3, 30)}), "0 hours");
}

TEST(DateComponentsFormatterTest, WritesComponentsAsTheyAre) {
    EXPECT_EQ(text({}, {.minute = 90, .second = 75}), "90:75");
    EXPECT_EQ(text({.style = Style::full}, {.year = 3, .hour = 30, .minute = 1}), "30 hours, 1 minute");
    EXPECT_EQ(text({.zeros = Zeros::pad}, DateComponents()), "0:00:00");
    EXPECT_EQ(text({}, {.hour = -1, .minute = -5}), "-1:05:00");
}

TEST(DateComponentsFormatterTest, ComponentsOfBothSignsHaveEachTheirOwn) {
    EXPECT_EQ(text({}, {.hour = 1, .minute = -5}), "1h -5m 0s");
    EXPECT_EQ(text({.style = Style::full}, {.hour = -1, .minute = 5}), "-1 hour, 5 minutes");
}

TEST(DateComponentsFormatterTest, ComponentsThatCannotBeToldExactlyHaveNoText) {
    constexpr auto largest = std::int64_t{1} << 53;
    EXPECT_EQ(text({.style = Style::abbreviated}, {.second = largest}), "9,007,199,254,740,992s");
    EXPECT_EQ(text({.style = Style::abbreviated}, {.second = -largest}), "-9,007,199,254,740,992s");
    for (const auto count : {largest + 1, std::numeric_limits<std::int64_t>::max(), -largest - 1,
                             std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(text({.style = Style::abbreviated}, {.second = count}), "none");
    EXPECT_EQ(text({.style = Style::abbreviated}, {.day = largest + 1, .second = 1}),
              "1s"); // days do not count
}

TEST(DateComponentsFormatterTest, CopiesAreTheSameFormatter) {
    DateComponentsFormatter formatter = formatterOf({});
    const auto same = formatter;
    const auto moved = std::move(formatter);
    EXPECT_EQ(same, moved);
    formatter.setZeroFormattingBehavior(Zeros::pad);
    EXPECT_EQ(same.string(65), "0:01:05");
    EXPECT_EQ(moved.string(65), "0:01:05");
}

TEST(DateComponentsFormatterTest, CopyMakesAFormatterOfItsOwn) {
    DateComponentsFormatter formatter = formatterOf({.style = Style::full, .most = 1});
    const auto other = formatter.copy();
    EXPECT_NE(other, formatter);
    formatter.setUnitsStyle(Style::positional);
    formatter.setMaximumUnitCount(0);
    EXPECT_EQ(other.string(65), "1 minute");
    EXPECT_EQ(formatter.string(65), "1:05");
}

TEST(DateComponentsFormatterTest, GivesItsSettingsBack) {
    const auto formatter =
        formatterOf({.units = dayUnits, .style = Style::short_, .zeros = Zeros::pad, .most = 2});
    EXPECT_EQ(formatter.allowedUnits(), dayUnits);
    EXPECT_EQ(formatter.unitsStyle(), Style::short_);
    EXPECT_EQ(formatter.zeroFormattingBehavior(), Zeros::pad);
    EXPECT_EQ(formatter.maximumUnitCount(), 2);
    EXPECT_EQ(formatter.calendar(), calendarOf("en_US"));
}

TEST(DateComponentsFormatterTest, FollowsTheUserWhereNoCalendarIsSet) {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(Component::hour);
    formatter.setUnitsStyle(Style::full);
    {
        const vorlan::testing::UserRegion german({.locale = "de_DE"});
        EXPECT_EQ(formatter.string(7'200), "2 Stunden");
        EXPECT_EQ(formatter.calendar(), Calendar::current());
    }
    const vorlan::testing::UserRegion japanese({.locale = "ja_JP"});
    EXPECT_EQ(formatter.string(7'200), "2 時間");
    formatter.setCalendar(calendarOf("en_US"));
    EXPECT_EQ(formatter.string(7'200), "2 hours");
    formatter.setCalendar(std::nullopt);
    EXPECT_EQ(formatter.string(7'200), "2 時間");
}
