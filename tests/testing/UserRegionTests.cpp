// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/UserRegion.h>

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/DateFormatter.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using vorlan::testing::UserRegion;
using Identifier = Calendar::Identifier;

namespace {

TimeZone zone(const std::string& name) {
    return TimeZone::fromIdentifier(name).value();
}

constexpr Date noonInWinter2022(663'163'200); // 2022-01-06 12:00 UTC

} // namespace

TEST(UserRegionTest, LocaleTimeZoneAndCalendarAreWhatItSays) {
    const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin", .calendar = Identifier::hebrew});
    EXPECT_EQ(Locale::current(), Locale("de_DE"));
    EXPECT_EQ(TimeZone::current(), zone("Europe/Berlin"));
    EXPECT_EQ(Calendar::current(), Calendar(Identifier::hebrew, Locale("de_DE"), zone("Europe/Berlin")));
    EXPECT_EQ(Calendar(Identifier::gregorian),
              Calendar(Identifier::gregorian, Locale("de_DE"), zone("Europe/Berlin")));
}

TEST(UserRegionTest, CalendarIsAtFirstTheOneInUseWhereTheLocaleIs) {
    const auto calendarIn = [](const std::string& locale) {
        const UserRegion user({.locale = locale});
        return Calendar::current().identifier();
    };
    EXPECT_EQ(calendarIn("en_US"), Identifier::gregorian);
    EXPECT_EQ(calendarIn("ja_JP"), Identifier::gregorian);
    EXPECT_EQ(calendarIn("th_TH"), Identifier::buddhist);
    EXPECT_EQ(calendarIn("fa_IR"), Identifier::persian);
    EXPECT_EQ(calendarIn("th_TH@calendar=gregorian"), Identifier::gregorian);
}

TEST(UserRegionTest, WeeksBeginAsIsTheCustomThere) {
    const auto weekIn = [](const std::string& locale) {
        const UserRegion user({.locale = locale});
        return std::array{Calendar::current().firstWeekday(), Calendar::current().minimumDaysInFirstWeek()};
    };
    EXPECT_EQ(weekIn("en_US"), (std::array{1, 1}));
    EXPECT_EQ(weekIn("de_DE"), (std::array{2, 4}));
    EXPECT_EQ(weekIn("ar_EG"), (std::array{7, 1}));
}

TEST(UserRegionTest, EverythingIsAsBeforeWhenItIsGone) {
    const auto locale = Locale::current();
    const auto timeZone = TimeZone::current();
    const auto calendar = Calendar::current();
    const auto languages = Locale::preferredLanguages();
    {
        const UserRegion user({.locale = "th_TH", .timeZone = "Pacific/Apia"});
        EXPECT_NE(Calendar::current(), calendar);
    }
    EXPECT_EQ(Locale::current(), locale);
    EXPECT_EQ(TimeZone::current(), timeZone);
    EXPECT_EQ(Calendar::current(), calendar);
    EXPECT_EQ(Locale::preferredLanguages(), languages);
}

TEST(UserRegionTest, InnerOneChangesWhatItSaysAndLeavesTheRest) {
    const UserRegion outer({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    {
        const UserRegion inner({.timeZone = "Asia/Kathmandu"});
        EXPECT_EQ(Locale::current(), Locale("de_DE"));
        EXPECT_EQ(TimeZone::current(), zone("Asia/Kathmandu"));
        const UserRegion innermost({.locale = "fr_FR", .calendar = Identifier::coptic});
        EXPECT_EQ(Calendar::current(), Calendar(Identifier::coptic, Locale("fr_FR"), zone("Asia/Kathmandu")));
    }
    EXPECT_EQ(Calendar::current(), Calendar(Identifier::gregorian, Locale("de_DE"), zone("Europe/Berlin")));
}

TEST(UserRegionTest, CalendarOfAnOuterOneIsKeptByAnInnerOne) {
    const UserRegion outer({.calendar = Identifier::japanese});
    const UserRegion inner({.locale = "th_TH"});
    EXPECT_EQ(Calendar::current().identifier(), Identifier::japanese);
}

TEST(UserRegionTest, LanguageOfTheLocaleIsTheOneThatTheUserReads) {
    const UserRegion user({.locale = "pt_BR"});
    EXPECT_EQ(Locale::preferredLanguages().front(), Locale("pt_BR"));
    const UserRegion nobody({.locale = "C"});
    EXPECT_TRUE(Locale::preferredLanguages().empty());
}

TEST(UserRegionTest, CalendarsThatWereMadeBeforeStayAsTheyAre) {
    const UserRegion outer({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    const auto calendar = Calendar::current();
    const UserRegion inner({.locale = "th_TH", .timeZone = "Pacific/Apia"});
    EXPECT_EQ(calendar, Calendar(Identifier::gregorian, Locale("de_DE"), zone("Europe/Berlin")));
}

TEST(UserRegionTest, ResettingTheSystemsDoesNotTouchIt) {
    const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    Locale::resetCurrent();
    TimeZone::resetSystemTimeZone();
    EXPECT_EQ(Locale::current(), Locale("de_DE"));
    EXPECT_EQ(TimeZone::current(), zone("Europe/Berlin"));
}

TEST(UserRegionTest, EnvironmentStaysAsItIs) {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    };
    const std::vector<const char*> names = {"TZ", "LANG", "LC_ALL", "LC_TIME", "LC_MESSAGES", "LANGUAGE"};
    std::vector<std::optional<std::string>> before;
    for (const auto* name : names) before.push_back(variable(name));
    const UserRegion user({.locale = "de_DE", .timeZone = "Europe/Berlin", .calendar = Identifier::indian});
    for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(variable(names[i]), before[i]) << names[i];
}

TEST(UserRegionTest, DaysAreThoseOfTheZone) {
    const auto startIn = [](const std::string& name) {
        const UserRegion user({.timeZone = name});
        return date::normalizedDate(noonInWinter2022).description();
    };
    EXPECT_EQ(startIn("UTC"), "2022-01-06 00:00:00 +0000");
    EXPECT_EQ(startIn("Europe/Berlin"), "2022-01-05 23:00:00 +0000");
    EXPECT_EQ(startIn("America/New_York"), "2022-01-06 05:00:00 +0000");
    EXPECT_EQ(startIn("Pacific/Apia"), "2022-01-06 11:00:00 +0000");
}

TEST(UserRegionTest, SharedFormattersFollow) {
    const auto shortDateIn = [](const std::string& locale) {
        const UserRegion user({.locale = locale, .timeZone = "UTC"});
        return dateFormatter::shortDate().string(noonInWinter2022);
    };
    EXPECT_EQ(shortDateIn("en_US"), "1/6/22");
    EXPECT_EQ(shortDateIn("de_DE"), "06.01.22");
    EXPECT_EQ(shortDateIn("en_US"), "1/6/22");
}

TEST(UserRegionStressTest, ReadersSeeOnePlaceOrTheOther) {
    const UserRegion berlin({.locale = "de_DE", .timeZone = "Europe/Berlin"});
    const auto inBerlin = Calendar::current();
    const Calendar inTokyo(Identifier::japanese, Locale("ja_JP"), zone("Asia/Tokyo"));
    std::atomic<bool> isDone = false;
    std::atomic<int> oddities = 0;
    std::vector<std::jthread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            do {
                const auto calendar = Calendar::current();
                if (calendar != inBerlin && calendar != inTokyo) ++oddities;
                const auto locale = Locale::current();
                if (locale != inBerlin.locale() && locale != inTokyo.locale()) ++oddities;
                const auto start = date::normalizedDate(noonInWinter2022);
                if (start != inBerlin.startOfDay(noonInWinter2022) &&
                    start != inTokyo.startOfDay(noonInWinter2022))
                    ++oddities;
            } while (!isDone);
        });
    for (int i = 0; i < 500; ++i) {
        const UserRegion tokyo(
            {.locale = "ja_JP", .timeZone = "Asia/Tokyo", .calendar = Identifier::japanese});
        EXPECT_EQ(Calendar::current(), inTokyo);
    }
    isDone = true;
    readers.clear();
    EXPECT_EQ(oddities, 0);
    EXPECT_EQ(Calendar::current(), inBerlin);
}
