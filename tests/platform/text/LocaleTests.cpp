// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Locale.h>

#include "tests/platform/files/Environment.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace vorlan;
using tests::Environment;
using tests::Languages;

namespace {

std::vector<std::string> preferred() {
    std::vector<std::string> identifiers;
    for (const auto& locale : Locale::preferredLanguages()) identifiers.push_back(locale.identifier());
    return identifiers;
}

using Identifiers = std::vector<std::string>;

// The variables that say what a user speaks; those without a value are not set.
struct Variables {
    std::optional<std::string> all, messages, time, lang, language;
};

Environment::Variables variables(const Variables& values) {
    return {{"LC_ALL", values.all},
            {"LC_MESSAGES", values.messages},
            {"LC_TIME", values.time},
            {"LANG", values.lang},
            {"LANGUAGE", values.language}};
}

std::string currentWith(const Variables& values) {
    const Languages user(variables(values));
    return Locale::current().identifier();
}

} // namespace

TEST(LocaleTest, IdentifierIsKeptAsItIs) {
    EXPECT_EQ(Locale("de_CH.UTF-8@euro").identifier(), "de_CH.UTF-8@euro");
    EXPECT_EQ(Locale("").identifier(), "");
}

TEST(LocaleTest, LanguageIsTheFirstPartOfTheIdentifier) {
    const std::vector<std::pair<std::string, std::string>> table = {
        {"de", "de"},
        {"de_CH", "de"},
        {"de-CH", "de"},
        {"de_CH.UTF-8", "de"},
        {"de.UTF-8", "de"},
        {"de@euro", "de"},
        {"de_CH.UTF-8@euro", "de"},
        {"DE_ch", "de"},
        {"zh_Hant_TW", "zh"},
        {"zh-Hant-TW", "zh"},
        {"sr_RS@latin", "sr"},
        {"sr@latin", "sr"},
        {"fil_PH", "fil"},
        {"es_419", "es"},
        {"ca_ES.UTF-8@valencia", "ca"},
    };
    for (const auto& [identifier, code] : table)
        EXPECT_EQ(Locale(identifier).languageCode(), code) << identifier;
}

TEST(LocaleTest, IdentifierWithoutALanguageHasNone) {
    for (const auto* identifier : {"", "C", "POSIX", "C.UTF-8", "POSIX.UTF-8", "c", "posix", "_CH", ".UTF-8",
                                   "@euro", "d", "d3", "de5", "d e", "dé", "abcdefghi"})
        EXPECT_EQ(Locale(identifier).languageCode(), std::nullopt) << identifier;
}

TEST(LocaleTest, RegionIsTheSecondOrThirdPartOfTheIdentifier) {
    const std::vector<std::pair<std::string, std::string>> table = {
        {"de_CH", "CH"},
        {"de-CH", "CH"},
        {"de_CH.UTF-8", "CH"},
        {"de_CH.UTF-8@euro", "CH"},
        {"de_CH@euro", "CH"},
        {"zh_Hant_TW", "TW"},
        {"zh-Hant-TW", "TW"},
        {"es_419", "419"},
        {"sr_RS@latin", "RS"},
        {"sr_Latn_RS.UTF-8", "RS"},
        {"en_US_POSIX", "US"},
        {"fil_PH", "PH"},
        {"de_ch", "CH"},
        {"ca_ES.UTF-8@valencia", "ES"},
        {"th_TH@calendar=gregorian", "TH"},
    };
    for (const auto& [identifier, code] : table)
        EXPECT_EQ(Locale(identifier).regionCode(), code) << identifier;
}

TEST(LocaleTest, IdentifierWithoutARegionHasNone) {
    for (const auto* identifier : {"", "C", "POSIX", "C.UTF-8", "de", "de.UTF-8", "de@euro", "sr_Latn",
                                   "zh-Hant", "de_", "de_.UTF-8", "de@collation=phonebook", "de__"})
        EXPECT_EQ(Locale(identifier).regionCode(), std::nullopt) << identifier;
}

TEST(LocaleTest, EqualityIsThatOfTheIdentifiers) {
    EXPECT_EQ(Locale("de_DE"), Locale("de_DE"));
    EXPECT_NE(Locale("de_DE"), Locale("de-DE"));
}

TEST(LocaleTest, CurrentIsTheFirstVariableThatIsNotEmpty) {
    EXPECT_EQ(currentWith({.all = "de_DE", .messages = "fr_FR", .time = "it_IT", .lang = "en_GB"}), "de_DE");
    EXPECT_EQ(currentWith({.all = "", .messages = "fr_FR", .time = "fr_FR", .lang = "en_GB"}), "fr_FR");
    EXPECT_EQ(currentWith({.all = "", .messages = "", .time = "", .lang = "en_GB.UTF-8"}), "en_GB.UTF-8");
    EXPECT_EQ(currentWith({.lang = "en_GB.UTF-8"}), "en_GB.UTF-8");
}

TEST(LocaleTest, CurrentHasTheLanguageOfMessagesAndTheRegionOfDates) {
    EXPECT_EQ(currentWith({.time = "de_DE.UTF-8", .lang = "en_US.UTF-8"}), "en_DE");
    EXPECT_EQ(currentWith({.messages = "fr_CA", .lang = "de_CH"}), "fr_CH");
    EXPECT_EQ(currentWith({.messages = "en_US.UTF-8", .time = "es_419", .lang = "ja_JP"}), "en_419");
    EXPECT_EQ(currentWith({.messages = "en", .time = "de_DE"}), "en_DE");
}

TEST(LocaleTest, CurrentKeepsTheScriptOfItsLanguage) {
    const Languages user(variables({.time = "de_DE.UTF-8", .lang = "zh_Hant_TW.UTF-8"}));
    EXPECT_EQ(Locale::current().languageCode(), "zh");
    EXPECT_EQ(Locale::current().regionCode(), "DE");
    EXPECT_NE(Locale::current().identifier().find("Hant"), std::string::npos);
}

TEST(LocaleTest, DatesWithoutARegionTakeThatOfTheMessages) {
    for (const auto* time : {"C", "POSIX", "C.UTF-8"}) {
        const Languages user(variables({.time = time, .lang = "en_GB.UTF-8"}));
        EXPECT_EQ(Locale::current().languageCode(), "en") << time;
        EXPECT_EQ(Locale::current().regionCode(), "GB") << time;
    }
}

TEST(LocaleTest, MessagesWithoutALanguageTakeThatOfDates) {
    EXPECT_EQ(currentWith({.time = "de_DE", .lang = "C"}), "de_DE");
    EXPECT_EQ(currentWith({.messages = "POSIX", .lang = "fr_FR"}), "fr_FR");
    EXPECT_EQ(currentWith({.messages = "C", .time = "C", .lang = "fr_FR"}), "C");
    EXPECT_EQ(currentWith({.all = "C", .messages = "de_DE", .time = "de_DE", .lang = "de_DE"}), "C");
}

TEST(LocaleTest, CurrentHasNoLanguageWhereNothingIsSet) {
    const Languages none(variables({.messages = "", .language = "de"}));
    EXPECT_EQ(Locale::current().identifier(), "C");
    EXPECT_EQ(Locale::current().languageCode(), std::nullopt);
    EXPECT_EQ(preferred(), Identifiers());
}

TEST(LocaleTest, CurrentStaysUntilTheNextReset) {
    const Languages user("de_DE", "fr");
    EXPECT_EQ(Locale::current(), Locale("de_DE"));
    const Environment changed({{"LANG", "ja_JP"}, {"LANGUAGE", "it"}});
    EXPECT_EQ(Locale::current(), Locale("de_DE"));
    EXPECT_EQ(preferred(), (Identifiers{"fr", "de_DE"}));
    Locale::resetCurrent();
    EXPECT_EQ(Locale::current(), Locale("ja_JP"));
    EXPECT_EQ(preferred(), (Identifiers{"it", "ja_JP"}));
}

TEST(LocaleTest, PreferredLanguagesBeginWithThoseOfTheList) {
    const Languages user("en_GB.UTF-8", "fr:de_CH");
    EXPECT_EQ(preferred(), (Identifiers{"fr", "de_CH", "en_GB.UTF-8"}));
}

TEST(LocaleTest, WithoutAListTheCurrentLanguageIsPreferred) {
    const Languages user("en_GB.UTF-8");
    EXPECT_EQ(preferred(), Identifiers{"en_GB.UTF-8"});
    const Languages unset(variables({.lang = "en_GB.UTF-8"}));
    EXPECT_EQ(preferred(), Identifiers{"en_GB.UTF-8"});
}

TEST(LocaleTest, EmptyPlacesOfTheListArePassedOver) {
    const Languages user("en_GB", ":fr::de:");
    EXPECT_EQ(preferred(), (Identifiers{"fr", "de", "en_GB"}));
    const Languages onlyColons("en_GB", ":::");
    EXPECT_EQ(preferred(), Identifiers{"en_GB"});
}

TEST(LocaleTest, ListDoesNotCountInLocalesWithoutALanguage) {
    for (const auto* locale : {"C", "POSIX", "C.UTF-8", ""}) {
        const Languages user(locale, "fr:de");
        EXPECT_EQ(preferred(), Identifiers()) << locale;
    }
}

TEST(LocaleTest, PreferredLanguagesEndWithThatOfTheMessages) {
    const Languages user(variables({.time = "de_DE.UTF-8", .lang = "en_US.UTF-8", .language = "fr"}));
    EXPECT_EQ(preferred(), (Identifiers{"fr", "en_US.UTF-8"}));
}

TEST(LocaleTest, DatesAreNoLanguageThatTheUserReads) {
    const Languages user(variables({.messages = "C", .lang = "de_DE", .language = "fr"}));
    EXPECT_EQ(Locale::current(), Locale("de_DE"));
    EXPECT_EQ(preferred(), Identifiers());
}
