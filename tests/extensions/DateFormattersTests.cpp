// SPDX-License-Identifier: Apache-2.0

// The date formatters that are shared by all.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>
#include <VorlanFoundation/Testing/WallClock.h>

#include "tests/extensions/Places.h"
#include "tests/extensions/SharedFormatters.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace vorlan;
using tests::forEachLocale;
using tests::forEachPlace;
using tests::sharedDateFormatters;
using tests::utc;
using vorlan::testing::UserRegion;
using vorlan::testing::WallClock;

namespace {

using Style = DateFormatter::Style;

constexpr Date afternoon = utc({.year = 2024, .month = 3, .day = 5, .hour = 14, .minute = 7, .second = 9});

// One in winter, one in summer, one before 1970, and those that relative formatters have words for.
std::array<Date, 6> dates() {
    return {Date(0),
            utc({.year = 2024, .month = 7, .day = 31, .hour = 23, .minute = 59, .second = 59}),
            utc({.year = 1955, .month = 11, .day = 12, .hour = 6}),
            afternoon,
            Date(afternoon.timeIntervalSinceReferenceDate() - timeInterval::day),
            Date(afternoon.timeIntervalSinceReferenceDate() + timeInterval::day)};
}

void expectSameTexts(const DateFormatter& formatter, const DateFormatter& wanted) {
    for (const auto date : dates()) {
        EXPECT_EQ(formatter.string(date), wanted.string(date)) << date.description();
        EXPECT_FALSE(wanted.string(date).empty()) << date.description();
    }
}

} // namespace

TEST(DateFormattersTest, SharedOnesPrintWhatTheirSettingsSay) {
    const WallClock clock(afternoon);
    forEachPlace([] {
        for (const auto& place : sharedDateFormatters) {
            if (place.get == dateFormatter::sqlSuitable) continue; // follows its first user
            SCOPED_TRACE(place.name);
            expectSameTexts(place.get(), place.make());
        }
    });
}

TEST(DateFormattersTest, SharedOnesHaveTheirSettings) {
    const auto settingsAre = [](const DateFormatter& formatter, Style date, Style time, bool isRelative) {
        EXPECT_EQ(formatter.dateStyle(), date);
        EXPECT_EQ(formatter.timeStyle(), time);
        EXPECT_EQ(formatter.doesRelativeDateFormatting(), isRelative);
    };
    settingsAre(dateFormatter::relativeShortFormatter(), Style::short_, Style::short_, true);
    settingsAre(dateFormatter::short_(), Style::short_, Style::short_, false);
    settingsAre(dateFormatter::shortDate(), Style::short_, Style::none, false);
    EXPECT_EQ(dateFormatter::sqlSuitable().dateFormat(), "yyyy-MM-dd");
    EXPECT_EQ(dateFormatter::timeFull().dateFormat(), "yyyy-MM-dd HH:mm:ss");
    EXPECT_FALSE(dateFormatter::timeFull().doesRelativeDateFormatting());
}

TEST(DateFormattersTest, SharedOnesFollowTheUser) {
    forEachPlace([] {
        for (const auto& place : sharedDateFormatters) {
            SCOPED_TRACE(place.name);
            EXPECT_EQ(place.get().timeZone(), TimeZone::current());
            if (place.get == dateFormatter::sqlSuitable) continue; // its locale is that of its first user
            EXPECT_EQ(place.get().locale(), Locale::current());
            EXPECT_EQ(place.get().calendar().identifier(), Calendar::current().identifier());
        }
    });
}

TEST(DateFormattersTest, EachReadGivesTheSameObject) {
    for (const auto& place : sharedDateFormatters) {
        EXPECT_EQ(place.get(), place.get()) << place.name;
        for (const auto& other : sharedDateFormatters)
            EXPECT_EQ(place.get() == other.get(), &place == &other) << place.name << ", " << other.name;
    }
}

TEST(DateFormattersTest, ReplacedOneIsGivenFromThenOn) {
    for (const auto& place : sharedDateFormatters) {
        SCOPED_TRACE(place.name);
        const auto former = place.get();
        const auto text = former.string(afternoon);
        DateFormatter other;
        other.setDateFormat("'another'");
        place.set(other);
        EXPECT_EQ(place.get(), other);
        EXPECT_EQ(place.get().string(afternoon), "another");
        EXPECT_EQ(former.string(afternoon), text) << "who has the former one keeps it";
        place.set(former);
        EXPECT_EQ(place.get(), former);
    }
}

TEST(DateFormattersTest, SettingsAreForEverybodyAndCopiesAreNot) {
    const auto before = dateFormatter::shortDate().string(afternoon);
    auto mine = dateFormatter::shortDate().copy();
    mine.setDateStyle(Style::full);
    EXPECT_EQ(dateFormatter::shortDate().string(afternoon), before);
    dateFormatter::shortDate().setDateStyle(Style::full);
    EXPECT_EQ(dateFormatter::shortDate().string(afternoon), mine.string(afternoon));
    EXPECT_NE(mine.string(afternoon), before);
    dateFormatter::shortDate().setDateStyle(Style::short_);
    EXPECT_EQ(dateFormatter::shortDate().string(afternoon), before);
}

TEST(DateFormattersTest, ReadAsTheHeaderSays) {
    const UserRegion user({.locale = "en_US", .timeZone = "UTC"});
    const auto date = utc({.year = 2026, .month = 11, .day = 22, .hour = 15, .minute = 30, .second = 32});
    const WallClock clock(date);
    EXPECT_EQ(dateFormatter::timeFull().string(date), "2026-11-22 15:30:32");
    EXPECT_EQ(dateFormatter::shortDate().string(date), "11/22/26");
    EXPECT_TRUE(dateFormatter::short_().string(date).starts_with("11/22/26, 3:30"));
    EXPECT_TRUE(dateFormatter::relativeShortFormatter().string(date).starts_with("today, 3:30"))
        << dateFormatter::relativeShortFormatter().string(date);
}

TEST(DateFormattersTest, TextsComeBackAsDates) {
    forEachPlace([] {
        for (const auto date : dates()) {
            const auto second = dateFormatter::timeFull();
            EXPECT_EQ(second.date(second.string(date)), date) << second.string(date);
            const auto header = dateFormatter::iso8601Full();
            EXPECT_EQ(header.date(header.string(date)), date) << header.string(date);
            const auto day = dateFormatter::shortDate();
            const auto again = day.date(day.string(date));
            ASSERT_TRUE(again.has_value()) << day.string(date);
            EXPECT_EQ(day.string(*again), day.string(date));
        }
    });
}

TEST(DateFormattersTest, HeaderDateIsInEnglishAndGreenwichForAll) {
    forEachPlace([] {
        const auto text = [](Date date) { return dateFormatter::iso8601Full().string(date); };
        EXPECT_EQ(text(Date::fromTimeIntervalSince1970(0)), "Thu, 01 Jan 1970 00:00:00 +0000");
        EXPECT_EQ(text(afternoon), "Tue, 05 Mar 2024 14:07:09 +0000");
        EXPECT_EQ(text(utc({.year = 2024, .month = 12, .day = 30, .hour = 23})),
                  "Mon, 30 Dec 2024 23:00:00 +0000")
            << "the year is not that of the week";
    });
}

TEST(DateFormattersTest, HeaderDateIsGregorianAtAllTimes) {
    const auto beforeTheChange = utc({.year = 1582, .month = 10, .day = 4});
    EXPECT_EQ(dateFormatter::iso8601Full().string(beforeTheChange), "Mon, 04 Oct 1582 00:00:00 +0000");
}

TEST(DateFormattersTest, HeaderFormatterIsANewOneEachTime) {
    forEachLocale([] {
        auto one = dateFormatter::iso8601Full();
        const auto other = dateFormatter::iso8601Full();
        EXPECT_NE(one, other);
        one.setDateFormat("yyyy");
        EXPECT_EQ(other.string(Date(0)), "Mon, 01 Jan 2001 00:00:00 +0000");
        EXPECT_EQ(dateFormatter::iso8601Full().dateFormat(), "eee, dd MMM yyyy HH:mm:ss Z");
    });
}

TEST(DateFormattersTest, HeaderFormatterHasItsSettings) {
    const auto formatter = dateFormatter::iso8601Full();
    EXPECT_EQ(formatter.locale(), Locale("en_US_POSIX"));
    EXPECT_EQ(formatter.timeZone(), TimeZone::fromSecondsFromGMT(0));
    EXPECT_EQ(formatter.calendar().identifier(), Calendar::Identifier::iso8601);
    EXPECT_FALSE(formatter.doesRelativeDateFormatting());
}

TEST(DateFormattersTest, DateInNoCalendarHasNoText) {
    for (const auto& place : sharedDateFormatters)
        EXPECT_EQ(place.get().string(Date(1e18)), "") << place.name;
    EXPECT_EQ(dateFormatter::iso8601Full().string(Date(1e18)), "");
}
