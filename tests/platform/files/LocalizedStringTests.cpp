// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Bundle.h>

#include "tests/platform/files/Environment.h"
#include "tests/platform/localization/TableTree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

using namespace vorlan;
using tests::Languages;

namespace {

class LocalizedStringTest : public ::testing::Test {
protected:
    void put(const std::string& language, const std::string& text,
             const std::string& table = "Localizable") const {
        tree_.put(language, table + ".strings", "k = \"" + text + "\";");
    }

    std::string textIn(const std::string& lang, const std::string& language = "") const {
        const Languages user(lang, language);
        return bundle_->localizedString("k");
    }

    tests::TableTree tree_;
    std::shared_ptr<const Bundle> bundle_ = Bundle::atURL(FileURL(tree_.bundle()));
};

} // namespace

TEST_F(LocalizedStringTest, TextIsThatOfTheFirstOfTheUsersLanguagesWithATable) {
    for (const auto* language : {"de", "de_CH", "pt-BR", "fr", "", "Base"}) put(language, language);
    EXPECT_EQ(textIn("de_CH.UTF-8"), "de_CH");
    EXPECT_EQ(textIn("de_AT"), "de");
    EXPECT_EQ(textIn("pt_BR"), "pt-BR");
    EXPECT_EQ(textIn("it_IT", "pt:fr"), "fr");
    EXPECT_EQ(textIn("it_IT", ".UTF-8:fr"), "fr") << "a language without a name is none";
    EXPECT_EQ(textIn("it_IT"), "") << "the one for all";
    EXPECT_EQ(textIn("C", "fr"), "");
}

TEST_F(LocalizedStringTest, TextOfBaseIsTheLast) {
    put("de", "other table", "Menu");
    put("Base", "base");
    EXPECT_EQ(textIn("de_DE"), "base");
}

TEST_F(LocalizedStringTest, FirstTableCountsAlsoWhereItHasNoSuchText) {
    tree_.put("de", "Localizable.strings", "other = text;");
    put("", "for all");
    EXPECT_EQ(textIn("de_DE"), "k");
    tree_.put("fr", "Localizable.stringsdict", "");
    EXPECT_EQ(textIn("fr_FR"), "k");
}

TEST_F(LocalizedStringTest, WhatNoTableHasIsTheValueElseTheKey) {
    put("Base", "base");
    EXPECT_EQ(bundle_->localizedString("missing"), "missing");
    EXPECT_EQ(bundle_->localizedString("missing", "value"), "value");
    EXPECT_EQ(bundle_->localizedString("k", "value"), "base");
    EXPECT_EQ(bundle_->localizedString("k", "value", "Missing"), "value");
    EXPECT_EQ(bundle_->localizedString("k", "", "../Base.lproj/Localizable"), "k");
    EXPECT_EQ(Bundle::main().localizedString("k", "value"), "value");
}

TEST_F(LocalizedStringTest, TablesAreFoundByName) {
    put("Base", "usual");
    put("Base", "menu", "Menu");
    EXPECT_EQ(bundle_->localizedString("k", {}, "Menu"), "menu");
    EXPECT_EQ(bundle_->localizedString("k", {}, "Localizable"), "usual");
}
