// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/StringTable.h>

#include "tests/platform/localization/TableBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using tests::errorOf;
using tests::readPlurals;
using tests::xmlDictionary;
using tests::xmlList;
using tests::xmlPlural;
using tests::xmlText;
using tests::xmlVariable;

namespace {

std::string errorIn(const std::string& entry) {
    return errorOf([&] { readPlurals(xmlList(xmlDictionary({{"k", entry}}))); });
}

const std::optional<std::string>& formOf(const PluralVariable& variable, PluralCategory category) {
    return variable.forms[static_cast<std::size_t>(category)];
}

} // namespace

TEST(StringTablePluralsTest, EmptyFilesAreEmptyTables) {
    EXPECT_EQ(readPlurals("").size(), 0U);
    EXPECT_EQ(readPlurals(" \n").size(), 0U);
    EXPECT_EQ(readPlurals(xmlList("<dict/>")).size(), 0U);
}

TEST(StringTablePluralsTest, EntriesHaveAFormatAndForms) {
    const auto table = readPlurals(xmlList(xmlDictionary(
        {{"%d files",
          xmlPlural("%#@files@!", {{"files", xmlVariable({{"one", "%d file"}, {"other", "%d files"}})}})},
         {"plain", xmlPlural("no variable", {})}})));
    EXPECT_EQ(table.keys(), (std::vector<std::string>{"%d files", "plain"}));
    const auto& entry = *table.find("%d files");
    EXPECT_EQ(entry.text, "%#@files@!");
    EXPECT_EQ(entry.position, TextPosition());
    ASSERT_EQ(entry.variables.size(), 1U);
    const auto& files = entry.variables.at("files");
    EXPECT_EQ(files.valueType, "d");
    EXPECT_EQ(formOf(files, PluralCategory::one), "%d file");
    EXPECT_EQ(formOf(files, PluralCategory::other), "%d files");
    EXPECT_EQ(formOf(files, PluralCategory::few), std::nullopt);
    EXPECT_TRUE(table.find("plain")->variables.empty());
}

TEST(StringTablePluralsTest, AllCategoriesAreRead) {
    const auto table = readPlurals(
        xmlList(xmlDictionary({{"k", xmlPlural("%#@n@", {{"n", xmlVariable({{"zero", "0"},
                                                                            {"one", "1"},
                                                                            {"two", "2"},
                                                                            {"few", "3"},
                                                                            {"many", "4"},
                                                                            {"other", "5"}})}})}})));
    const auto& forms = table.find("k")->variables.at("n").forms;
    for (std::size_t i = 0; i < forms.size(); ++i) EXPECT_EQ(forms[i], std::to_string(i));
}

TEST(StringTablePluralsTest, VariablesMayNameOneAnother) {
    const auto files =
        xmlVariable({{"one", "%d file in %#@folders@"}, {"other", "%d files in %2$#@folders@"}});
    const auto folders = xmlVariable({{"other", "%d folders"}}, "lu");
    const auto table = readPlurals(
        xmlList(xmlDictionary({{"k", xmlPlural("%#@files@", {{"files", files}, {"folders", folders}})}})));
    EXPECT_EQ(table.find("k")->variables.size(), 2U);
    EXPECT_EQ(table.find("k")->variables.at("folders").valueType, "lu");
}

TEST(StringTablePluralsTest, ErrorsNameKeyAndVariable) {
    const auto good = xmlVariable({{"other", "x"}});
    const auto variable = [](const std::string& element) { return xmlPlural("%#@n@", {{"n", element}}); };
    const auto rule = std::pair("NSStringFormatSpecTypeKey", xmlText("NSStringPluralRuleType"));
    const auto type = std::pair("NSStringFormatValueTypeKey", xmlText("d"));
    const auto other = std::pair("other", xmlText("x"));
    const std::vector<std::pair<std::string, std::string>> table = {
        {xmlText("text"), "it is no dictionary"},
        {xmlDictionary({{"n", good}}), "\"NSStringLocalizedFormatKey\" is missing"},
        {xmlDictionary({{"NSStringLocalizedFormatKey", "<true/>"}}),
         "\"NSStringLocalizedFormatKey\" is no text"},
        {variable(xmlText("text")), "variable \"n\": it is no dictionary"},
        {variable(xmlDictionary({type, other})), "variable \"n\": \"NSStringFormatSpecTypeKey\" is missing"},
        {variable(xmlDictionary({{rule.first, xmlText("Other")}, type, other})),
         "variable \"n\": \"NSStringFormatSpecTypeKey\" is not \"NSStringPluralRuleType\""},
        {variable(xmlDictionary({rule, other})), "variable \"n\": \"NSStringFormatValueTypeKey\" is missing"},
        {variable(xmlDictionary({rule, type})), "variable \"n\": \"other\" is missing"},
        {variable(xmlDictionary({rule, type, other, {"one", "<integer>1</integer>"}})),
         "variable \"n\": \"one\" is no text"},
        {xmlPlural("%#@m@", {{"n", good}}), "variable \"m\" is missing"},
        {variable(xmlVariable({{"other", "%#@m@"}})), "variable \"n\": variable \"m\" is missing"},
        {variable(xmlVariable({{"few", "%#@m@"}, {"other", "x"}})),
         "variable \"n\": variable \"m\" is missing"},
    };
    for (const auto& [entry, error] : table) EXPECT_EQ(errorIn(entry), "0:0: key \"k\": " + error);
}

TEST(StringTablePluralsTest, ValueTypeIsHowPrintfWritesANumber) {
    const auto errorFor = [](const std::string& type) {
        return errorIn(xmlPlural("%#@n@", {{"n", xmlVariable({{"other", "x"}}, type)}}));
    };
    for (const auto* type : {"d", "i", "u", "ld", "lld", "lu", "llu", "zd", "x", "f", ".2f", "lf", "@"})
        EXPECT_EQ(errorFor(type), "no error") << type;
    for (const auto* type : {"", "y", "d d", "d%d", "%", "*d", "#@n@", "s", "c", "C", "p", "1$d"})
        EXPECT_EQ(errorFor(type),
                  "0:0: key \"k\": variable \"n\": \"" + std::string(type) + "\" formats no number");
}

TEST(StringTablePluralsTest, VariablesThatNameEachOtherAreAnError) {
    const auto naming = [](const std::string& name) { return xmlVariable({{"other", "%#@" + name + "@"}}); };
    EXPECT_EQ(errorIn(xmlPlural("%#@a@", {{"a", naming("a")}})),
              "0:0: key \"k\": variable \"a\": it names itself, or one that names it");
    EXPECT_EQ(errorIn(xmlPlural("%#@a@", {{"a", naming("b")}, {"b", naming("c")}, {"c", naming("b")}})),
              "0:0: key \"k\": variable \"b\": it names itself, or one that names it");
    EXPECT_EQ(errorIn(xmlPlural("x", {{"a", naming("b")}, {"b", naming("a")}})),
              "0:0: key \"k\": variable \"a\": it names itself, or one that names it");
}

TEST(StringTablePluralsTest, VariablesMayBeSoDeepInOneAnother) {
    const auto chain = [](int length, bool isForward) {
        std::vector<std::pair<std::string, std::string>> variables;
        const auto name = [&](int i) { return "v" + std::to_string(isForward ? 1000 + i : 9000 - i); };
        for (int i = 0; i < length; ++i) {
            const auto form = i + 1 < length ? "%#@" + name(i + 1) + "@" : std::string("end");
            variables.emplace_back(name(i), xmlVariable({{"other", form}}));
        }
        return xmlPlural("%#@" + name(0) + "@", variables);
    };
    for (const bool isForward : {true, false}) {
        EXPECT_EQ(errorIn(chain(32, isForward)), "no error");
        for (const int length : {33, 1000})
            EXPECT_TRUE(errorIn(chain(length, isForward)).ends_with("too many variables are in one another"));
    }
}

TEST(StringTablePluralsTest, OtherFormsThanPropertyListsAreErrors) {
    EXPECT_EQ(errorOf([] { readPlurals("\"a\" = \"b\";"); }), "0:0: it is no property list");
    EXPECT_EQ(errorOf([] { readPlurals(xmlList("<array/>")); }), "0:0: it is no dictionary");
    EXPECT_EQ(errorOf([] { readPlurals("<plist"); }), "0:0: it is no property list in XML");
    EXPECT_EQ(errorOf([] { readPlurals("\n\xFF"); }), "2:1: ill-formed UTF-8");
    EXPECT_TRUE(errorOf([] { readPlurals("bplist00"); }).starts_with("0:0: "));
}
