// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/LocalizedText.h>

#include "tests/extensions/BundledHost.h"
#include "tests/extensions/Translations.h"
#include "tests/platform/defaults/ReportedProblems.h"
#include "tests/platform/localization/TableBytes.h"
#include "tests/platform/localization/TableTree.h"

#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace vorlan;
using tests::ReportedProblems;
using tests::translations;
using tests::xmlDictionary;
using tests::xmlList;
using tests::xmlPlural;
using tests::xmlVariable;
using text::localized;
using text::localizedFormat;
using text::localizedPlural;
using vorlan::testing::UserRegion;

namespace {

class LocalizedTextTest : public ::testing::Test {
protected:
    LocalizedTextTest() {
        tests::writeTranslations(tree_.resources());
        bundle_ = Bundle::atURL(FileURL(tree_.bundle()));
    }

    const Bundle* bundle() const { return bundle_.get(); }

    tests::TableTree tree_;
    std::shared_ptr<const Bundle> bundle_;
};

} // namespace

TEST_F(LocalizedTextTest, TextIsInTheUsersLanguage) {
    for (const auto& [language, open, form] : translations()) {
        const UserRegion user({.locale = language + "_XX.UTF-8"});
        EXPECT_EQ(localized("Open", {.in = bundle()}), open);
    }
}

TEST_F(LocalizedTextTest, TextIsInTheLanguageThatIsAskedFor) {
    const UserRegion user({.locale = "de_DE"});
    for (const auto& [language, open, form] : translations())
        EXPECT_EQ(localized("Open", {.forResource = language, .in = bundle()}), open);
}

TEST_F(LocalizedTextTest, UserWithoutALanguageReadsEnglish) {
    const UserRegion user({.locale = "C"});
    EXPECT_EQ(localized("Open", {.in = bundle()}), "Open it");
}

TEST_F(LocalizedTextTest, MissingLanguageIsThatOfBase) {
    for (const std::optional<std::string> language : {"sv", "DE", "", "../Resources/de", "Base"})
        EXPECT_EQ(localized("Open", {.forResource = language, .in = bundle()}), "Base open") << *language;
    EXPECT_EQ(localized("Open", {.forResource = std::nullopt, .in = bundle()}), "Base open");
    std::filesystem::remove_all(tree_.folder("Base"));
    EXPECT_EQ(localized("Open", {.forResource = "sw", .table = "Other", .in = bundle()}), "Open");
}

TEST_F(LocalizedTextTest, TextThatNoTableHasIsItself) {
    tree_.put("Base", "Menu.strings", "Open = \"Base menu\";");
    for (const std::string_view key : {"open", "Close", "", "%d", "a\nb"})
        EXPECT_EQ(localized(key, {.forResource = "de", .in = bundle()}), key);
    EXPECT_EQ(localized("Open", {.forResource = "de", .table = "Menu", .in = bundle()}), "Open")
        << "the table of Base is for languages without a folder";
    EXPECT_EQ(localized("Open", {.forResource = "sv", .table = "Menu", .in = bundle()}), "Base menu");
    const std::string odd("\xFF\0 \xC3", 4);
    EXPECT_EQ(localized(odd, {.forResource = "de", .in = bundle()}), odd);
    EXPECT_EQ(localized("Open", {.forResource = "de", .table = "../fr.lproj/Localizable", .in = bundle()}),
              "Open");
}

TEST_F(LocalizedTextTest, TablesAreFoundByName) {
    tree_.put("de", "Menu.strings", "Open = \"Datei öffnen\";");
    EXPECT_EQ(localized("Open", {.forResource = "de", .table = "Menu", .in = bundle()}), "Datei öffnen");
    for (const std::optional<std::string_view> usual :
         {std::optional<std::string_view>(), {"Localizable"}, {""}})
        EXPECT_EQ(localized("Open", {.forResource = "de", .table = usual, .in = bundle()}), "Öffnen");
}

TEST_F(LocalizedTextTest, BrokenTableIsReportedAndCountsAsEmpty) {
    ReportedProblems problems;
    tree_.put("de", "Broken.strings", "Open = \"Öffnen\"");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(localized("Open", {.forResource = "de", .table = "Broken", .in = bundle()}), "Open");
    ASSERT_EQ(problems.count(), 1U);
    EXPECT_TRUE(problems.take().ends_with(
        "de.lproj/Broken.strings: line 1, column 16: expected ';', found the end of the file"));
}

TEST_F(LocalizedTextTest, TextWithPluralFormsIsItsFormat) {
    EXPECT_EQ(localized("%d files", {.forResource = "de", .in = bundle()}), "%#@files@");
}

TEST_F(LocalizedTextTest, WithoutABundleTextsAreThemselves) {
    EXPECT_EQ(localized("Open"), "Open");
    EXPECT_EQ(localizedFormat("%d of %@", {2, "nine"}), "2 of nine");
    const UserRegion user({.locale = "de_DE"});
    EXPECT_EQ(localizedPlural("%d files", 3), "3 files");
    EXPECT_EQ(localizedPlural("%d files", -1234567), "-1.234.567 files");
}

TEST_F(LocalizedTextTest, FormatsAreTranslatedBeforeTheyAreFilled) {
    for (const auto& [language, open, form] : translations()) {
        const UserRegion user({.locale = language});
        EXPECT_EQ(localizedFormat("Page %d of %d", {2, 9}, {.in = bundle()}), language + " 9/2");
        EXPECT_EQ(localizedFormat("%@, %d of %d", {"Page", 2, 9}, {.in = bundle()}), "Page, 2 of 9");
    }
}

TEST_F(LocalizedTextTest, FormatsWriteNumbersAsInC) {
    const UserRegion user({.locale = "de_DE"});
    EXPECT_EQ(localizedFormat("%.2f and %d", {1234.5, 1234567}, {.in = bundle()}), "1234.50 and 1234567");
    EXPECT_EQ(localizedFormat("%d files", {1234567}, {.forResource = "ar", .in = bundle()}), "many 1234567");
}

TEST_F(LocalizedTextTest, FormatsChooseFormsByTheLanguageThatIsLookedFor) {
    const UserRegion user({.locale = "en_US"});
    const auto filled = [this](const std::optional<std::string>& language, int count) {
        return localizedFormat("%d files", {count}, {.forResource = language, .in = bundle()});
    };
    EXPECT_EQ(filled("ru", 3), "few 3");
    EXPECT_EQ(filled("ru", 21), "one 21");
    EXPECT_EQ(filled("fr", 0), "zero 0");
    EXPECT_EQ(filled("en", 21), "other 21");
    EXPECT_EQ(filled("ja", 1), "other 1");
    EXPECT_EQ(filled(std::nullopt, 1), "one 1") << "by the user's rules";
    EXPECT_EQ(filled("Base", 1), "one 1") << "which is no language";
    std::filesystem::remove_all(tree_.folder("ru"));
    EXPECT_EQ(filled("ru_RU", 3), "few 3") << "also where the texts are those of Base";
}

TEST_F(LocalizedTextTest, VariablesMayBeInOneAnother) {
    const auto files = xmlVariable({{"one", "%d file in %#@folders@"}, {"other", "%d files in %#@folders@"}});
    const auto folders = xmlVariable({{"one", "a folder"}, {"other", "%d folders"}});
    tree_.put(
        "en", "More.stringsdict",
        xmlList(xmlDictionary({{"k", xmlPlural("%#@files@.", {{"files", files}, {"folders", folders}})}})));
    const auto filled = [this](int fileCount, int folderCount) {
        return localizedFormat("k", {fileCount, folderCount},
                               {.forResource = "en", .table = "More", .in = bundle()});
    };
    EXPECT_EQ(filled(1, 1), "1 file in a folder.");
    EXPECT_EQ(filled(5, 2), "5 files in 2 folders.");
}

namespace {

// An application in twelve languages.
class LocalizedApplicationTest : public ::testing::Test {
protected:
    LocalizedApplicationTest() : host_(home_.path() / "apps", tests::Layout::application) {
        host_.write({{"CFBundleIdentifier", tests::textElement("com.example.notes")}});
        tests::writeTranslations(host_.contents() / "Resources");
    }

    static tests::Variables userOf(const std::string& language) {
        return {{"LC_ALL", language + "_XX.UTF-8"}, {"LANGUAGE", ""}};
    }

    vorlan::testing::TemporaryHome home_;
    tests::BundledHost host_;
};

} // namespace

TEST_F(LocalizedApplicationTest, TextsAreThoseOfItsOwnBundle) {
    for (const auto& [language, open, form] : translations())
        EXPECT_EQ(
            host_.run({"localized", "Open", "localized", "Close", "problems"}, userOf(language)).answers,
            (std::vector<std::string>{open, "Close", ""}));
    EXPECT_EQ(host_.run({"localized", "Open"}, userOf("sv")).only(), "Base open");
}

TEST_F(LocalizedApplicationTest, CountsChooseTheFormsOfTheUsersLanguage) {
    const std::map<std::string, std::vector<std::string>> expected = {
        {"en", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12,345"}},
        {"de", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12.345"}},
        {"fr", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12\u202F345"}},
        {"es", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12.345"}},
        {"it", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12.345"}},
        {"nl", {"zero 0", "one 1", "other 2", "other 5", "other 21", "other 12.345"}},
        {"pl", {"zero 0", "one 1", "few 2", "many 5", "many 21", "many 12\u00A0345"}},
        {"ru", {"zero 0", "one 1", "few 2", "many 5", "one 21", "many 12\u00A0345"}},
        {"ar", {"zero ٠", "one ١", "two ٢", "few ٥", "many ٢١", "many ١٢٬٣٤٥"}},
        {"he", {"zero 0", "one 1", "two 2", "other 5", "other 21", "other 12,345"}},
        {"ja", {"zero 0", "other 1", "other 2", "other 5", "other 21", "other 12,345"}},
        {"cs", {"zero 0", "one 1", "few 2", "other 5", "other 21", "other 12\u00A0345"}},
    };
    ASSERT_EQ(expected.size(), translations().size());
    std::vector<std::string> commands;
    for (const auto* count : {"0", "1", "2", "5", "21", "12345"})
        commands.insert(commands.end(), {"localizedPlural", "%d files", count});
    for (const auto& [language, texts] : expected)
        EXPECT_EQ(host_.run(commands, userOf(language)).answers, texts) << language;
}
