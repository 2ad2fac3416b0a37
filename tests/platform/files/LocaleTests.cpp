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

TEST(LocaleTest, CurrentIsTheFirstVariableThatIsNotEmpty) {
    const auto current = [](const Environment::Variables& variables) {
        const Environment environment(variables);
        return Locale::current().identifier();
    };
    EXPECT_EQ(current({{"LC_ALL", "de_DE"}, {"LC_MESSAGES", "fr_FR"}, {"LANG", "en_GB"}}), "de_DE");
    EXPECT_EQ(current({{"LC_ALL", ""}, {"LC_MESSAGES", "fr_FR"}, {"LANG", "en_GB"}}), "fr_FR");
    EXPECT_EQ(current({{"LC_ALL", {}}, {"LC_MESSAGES", {}}, {"LANG", "en_GB.UTF-8"}}), "en_GB.UTF-8");
}

TEST(LocaleTest, CurrentHasNoLanguageWhereNothingIsSet) {
    const Environment none({{"LC_ALL", {}}, {"LC_MESSAGES", ""}, {"LANG", {}}, {"LANGUAGE", "de"}});
    EXPECT_EQ(Locale::current().languageCode(), std::nullopt);
    EXPECT_EQ(preferred(), Identifiers());
}

TEST(LocaleTest, PreferredLanguagesBeginWithThoseOfTheList) {
    const Languages user("en_GB.UTF-8", "fr:de_CH");
    EXPECT_EQ(preferred(), (Identifiers{"fr", "de_CH", "en_GB.UTF-8"}));
}

TEST(LocaleTest, WithoutAListTheCurrentLanguageIsPreferred) {
    const Languages user("en_GB.UTF-8");
    EXPECT_EQ(preferred(), Identifiers{"en_GB.UTF-8"});
    const Environment unset("LANGUAGE", std::nullopt);
    EXPECT_EQ(preferred(), Identifiers{"en_GB.UTF-8"});
}

TEST(LocaleTest, EmptyPlacesOfTheListArePassedOver) {
    const Languages user("en_GB", ":fr::de:");
    EXPECT_EQ(preferred(), (Identifiers{"fr", "de", "en_GB"}));
    const Environment onlyColons("LANGUAGE", ":::");
    EXPECT_EQ(preferred(), Identifiers{"en_GB"});
}

TEST(LocaleTest, ListDoesNotCountInLocalesWithoutALanguage) {
    for (const auto* locale : {"C", "POSIX", "C.UTF-8", ""}) {
        const Languages user(locale, "fr:de");
        EXPECT_EQ(preferred(), Identifiers()) << locale;
    }
}
