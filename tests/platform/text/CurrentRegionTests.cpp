// SPDX-License-Identifier: Apache-2.0
#include "platform/text/CurrentRegion.h"

#include "platform/text/ICULocale.h"
#include "tests/platform/files/Environment.h"

#include <VorlanFoundation/Platform/Region.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::Environment;
using tests::Languages;

namespace {

// What a test gives in place of the system's, as long as it lives.
class Override {
public:
    explicit Override(detail::RegionOverride region) : former_(detail::regionOverride()) {
        detail::setRegionOverride(std::move(region));
    }
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;
    ~Override() { detail::setRegionOverride(former_); }

private:
    detail::RegionOverride former_;
};

} // namespace

TEST(CurrentRegionTest, StaysTheSameObjectWhileNothingChanges) {
    const auto* region = &currentRegion();
    EXPECT_EQ(&currentRegion(), region);
    Locale::current();
    TimeZone::current();
    Calendar::current();
    EXPECT_EQ(&currentRegion(), region);
}

TEST(CurrentRegionTest, IsAnotherObjectAfterEachChange) {
    std::vector<const CurrentRegion*> seen = {&currentRegion()};
    const auto expectAnother = [&] {
        for (const auto* former : seen) EXPECT_NE(&currentRegion(), former);
        seen.push_back(&currentRegion());
    };
    Locale::resetCurrent();
    expectAnother();
    TimeZone::resetSystemTimeZone();
    expectAnother();
    {
        const Override region({.locale = Locale("ja_JP")});
        expectAnother();
    }
    expectAnother();
}

TEST(CurrentRegionTest, FormerOneStaysAsItWas) {
    const Override outer({.locale = Locale("ja_JP")});
    const auto& former = currentRegion();
    for (const auto* locale : {"de_DE", "fr_FR", "th_TH"}) {
        const Override inner({.locale = Locale(locale)});
        EXPECT_EQ(currentRegion().locale, Locale(locale));
    }
    EXPECT_EQ(former.locale, Locale("ja_JP"));
    EXPECT_EQ(former.calendar.locale(), Locale("ja_JP"));
}

TEST(CurrentRegionTest, FollowsTheEnvironmentAfterAReset) {
    const Languages user("fr_FR.UTF-8", "it");
    EXPECT_EQ(currentRegion().locale, Locale("fr_FR.UTF-8"));
    EXPECT_EQ(currentRegion().preferredLanguages, (std::vector{Locale("it"), Locale("fr_FR.UTF-8")}));
    const Environment environment("TZ", "Asia/Kathmandu");
    TimeZone::resetSystemTimeZone();
    EXPECT_EQ(currentRegion().timeZone, TimeZone::fromIdentifier("Asia/Kathmandu"));
    EXPECT_EQ(currentRegion().calendar.timeZone(), currentRegion().timeZone);
}

TEST(CurrentRegionTest, LanguageFoldersAreThoseOfAllLanguagesEachButOnce) {
    const Languages user("de_CH.UTF-8", "pt-BR:de_CH.UTF-8:de:.UTF-8");
    EXPECT_EQ(currentRegion().languageFolders,
              (std::vector<std::string>{"pt-BR", "pt", "de_CH", "de-CH", "de"}));
    const Override region({.locale = Locale("C")});
    EXPECT_EQ(currentRegion().languageFolders, std::vector<std::string>());
}

TEST(CurrentRegionTest, EverythingInItBelongsTogether) {
    for (const auto* locale : {"en_US", "th_TH", "fa_IR", "de_DE", "C"}) {
        const Override region(
            {.locale = Locale(locale), .timeZone = TimeZone::fromIdentifier("Pacific/Apia")});
        EXPECT_EQ(currentRegion().locale, Locale(locale));
        EXPECT_EQ(currentRegion().languageCode, Locale(locale).languageCode());
        EXPECT_EQ(currentRegion().calendar,
                  Calendar(usualCalendar(Locale(locale)), Locale(locale), currentRegion().timeZone));
        EXPECT_EQ(Calendar::current(), currentRegion().calendar);
        EXPECT_EQ(Locale::current(), currentRegion().locale);
        EXPECT_EQ(TimeZone::current(), currentRegion().timeZone);
        EXPECT_EQ(Locale::preferredLanguages(), currentRegion().preferredLanguages);
    }
}

TEST(CurrentRegionTest, UsualCalendarIsThatOfTheRegionUnlessTheLocaleSaysOtherwise) {
    using Identifier = Calendar::Identifier;
    const std::vector<std::pair<const char*, Identifier>> table = {
        {"en_US", Identifier::gregorian},
        {"de_DE.UTF-8", Identifier::gregorian},
        {"ja_JP", Identifier::gregorian},
        {"he_IL", Identifier::gregorian},
        {"ar_EG", Identifier::gregorian},
        {"hi_IN", Identifier::gregorian},
        {"th_TH", Identifier::buddhist},
        {"th_TH.UTF-8", Identifier::buddhist},
        {"en_TH", Identifier::buddhist},
        {"fa_IR", Identifier::persian},
        {"ps_AF", Identifier::persian},
        {"C", Identifier::gregorian},
        {"", Identifier::gregorian},
        {"th_TH@calendar=gregorian", Identifier::gregorian},
        {"ja_JP@calendar=japanese", Identifier::japanese},
        {"he_IL@calendar=hebrew", Identifier::hebrew},
        {"de_DE@calendar=iso8601", Identifier::iso8601},
    };
    for (const auto& [locale, calendar] : table) EXPECT_EQ(usualCalendar(Locale(locale)), calendar) << locale;
}

TEST(CurrentRegionTest, WhatIsGivenReplacesAllThatWasGivenBefore) {
    const Override none({});
    EXPECT_FALSE(detail::regionOverride().locale);
    detail::setRegionOverride({.locale = Locale("fr_FR")});
    EXPECT_EQ(detail::regionOverride().locale, Locale("fr_FR"));
    detail::setRegionOverride({.calendar = Calendar::Identifier::hebrew});
    EXPECT_FALSE(detail::regionOverride().locale);
    EXPECT_FALSE(detail::regionOverride().timeZone);
    EXPECT_EQ(currentRegion().calendar.identifier(), Calendar::Identifier::hebrew);
}
