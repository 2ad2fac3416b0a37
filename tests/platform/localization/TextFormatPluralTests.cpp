// SPDX-License-Identifier: Apache-2.0
// Texts whose numbers choose their forms.

#include <VorlanFoundation/Platform/TextFormat.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include "tests/platform/localization/Gaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using tests::FormatProblems;

namespace {

using enum PluralCategory;
using Forms = std::initializer_list<std::pair<PluralCategory, const char*>>;

PluralVariable variable(Forms forms, const char* valueType = "d") {
    PluralVariable result{.valueType = valueType};
    for (const auto& [category, form] : forms) result.forms.at(static_cast<std::size_t>(category)) = form;
    return result;
}

StringTableEntry filesOf(Forms forms, const char* valueType = "d") {
    return {.text = "%#@files@", .variables = {{"files", variable(forms, valueType)}}};
}

std::string by(const char* rules, const StringTableEntry& entry,
               std::initializer_list<FormatArgument> arguments) {
    return formatText(entry, std::span(arguments.begin(), arguments.size()), {.pluralRules = Locale(rules)});
}

const StringTableEntry english = filesOf({{one, "%d file"}, {other, "%d files"}});

} // namespace

TEST(TextFormatPluralTest, NumbersChooseForms) {
    EXPECT_EQ(by("en", english, {0}), "0 files");
    EXPECT_EQ(by("en", english, {1}), "1 file");
    EXPECT_EQ(by("en", english, {2}), "2 files");
    EXPECT_EQ(by("ja", english, {1}), "1 files") << "Japanese has one form only";
    EXPECT_EQ(by("fr", english, {0}), "0 file");
    EXPECT_EQ(by("xx", english, {1}), "1 files");
}

TEST(TextFormatPluralTest, LanguagesHaveFewerOrMoreForms) {
    const auto russian =
        filesOf({{one, "%d файл"}, {few, "%d файла"}, {many, "%d файлов"}, {other, "%d файла"}});
    EXPECT_EQ(by("ru", russian, {21}), "21 файл");
    EXPECT_EQ(by("ru", russian, {3}), "3 файла");
    EXPECT_EQ(by("ru", russian, {11}), "11 файлов");
    EXPECT_EQ(by("ru", russian, {1.5}), "1.5 файла");
    const auto polish =
        filesOf({{one, "%d plik"}, {few, "%d pliki"}, {many, "%d plików"}, {other, "%d pliku"}});
    EXPECT_EQ(by("pl", polish, {1}), "1 plik");
    EXPECT_EQ(by("pl", polish, {22}), "22 pliki");
    EXPECT_EQ(by("pl", polish, {21}), "21 plików");
    EXPECT_EQ(by("pl", polish, {0.5}), "0.5 pliku");
    const auto arabic = filesOf({{zero, "z"}, {one, "1"}, {two, "2"}, {few, "f"}, {many, "m"}, {other, "o"}});
    std::string all;
    for (const int number : {0, 1, 2, 3, 11, 100}) all += by("ar", arabic, {number});
    EXPECT_EQ(all, "z12fmo");
}

TEST(TextFormatPluralTest, ZeroIsChosenByNothingInAllLanguages) {
    const auto none = filesOf({{zero, "no files"}, {one, "%d file"}, {other, "%d files"}});
    for (const char* rules : {"en", "ja", "fr", "xx"}) {
        EXPECT_EQ(by(rules, none, {0}), "no files") << rules;
        EXPECT_EQ(by(rules, none, {-0.0}), "no files") << rules;
        EXPECT_EQ(by(rules, none, {"0"}), "no files") << rules;
    }
    EXPECT_EQ(by("en", none, {1}), "1 file");
    EXPECT_EQ(by("en", none, {0.25}), "0.25 files");
}

TEST(TextFormatPluralTest, MissingFormIsOther) {
    EXPECT_EQ(by("ru", english, {3}), "3 files");
    EXPECT_EQ(by("en", filesOf({{other, "%d"}}), {1}), "1");
}

TEST(TextFormatPluralTest, VariablesTakeArgumentsInTheirOrder) {
    const StringTableEntry entry{
        .text = "%@: %#@files@ in %#@folders@ by %@",
        .variables = {{"files", variable({{one, "one file"}, {other, "%d files"}})},
                      {"folders", variable({{one, "a folder"}, {other, "%d folders"}})}}};
    EXPECT_EQ(by("en", entry, {"Copied", 1, 5, "Ann"}), "Copied: one file in 5 folders by Ann");
    EXPECT_EQ(by("en", entry, {"Copied", 7, 1, "Ann"}), "Copied: 7 files in a folder by Ann");
}

TEST(TextFormatPluralTest, VariablesTakeArgumentsByNumber) {
    const StringTableEntry entry{
        .text = "%2$#@folders@ with %1$#@files@ (%1$d, %2$d)",
        .variables = {{"files", variable({{one, "one file"}, {other, "%d files of %2$d"}})},
                      {"folders", variable({{one, "a folder"}, {other, "%d folders"}})}}};
    EXPECT_EQ(by("en", entry, {3, 1}), "a folder with 3 files of 1 (3, 1)");
    EXPECT_EQ(by("en", entry, {1, 3}), "3 folders with one file (1, 3)");
}

TEST(TextFormatPluralTest, FormsNameFurtherVariables) {
    const auto folders = variable({{one, "one folder"}, {other, "%d folders"}});
    const StringTableEntry inOrder{.text = "%#@files@.",
                                   .variables = {{"files", variable({{one, "One file in %#@folders@"},
                                                                     {other, "%d files in %#@folders@"}})},
                                                 {"folders", folders}}};
    EXPECT_EQ(by("en", inOrder, {1, 1}), "One file in one folder.");
    EXPECT_EQ(by("en", inOrder, {2, 3}), "2 files in 3 folders.");
    const StringTableEntry byNumber{
        .text = "%1$#@files@.",
        .variables = {{"files", variable({{other, "%2$#@folders@ with %d and %2$d, of %1$#@folders@"}})},
                      {"folders", folders}}};
    EXPECT_EQ(by("en", byNumber, {1, 3}), "3 folders with 1 and 3, of one folder.");
}

TEST(TextFormatPluralTest, FurtherGapsOfAFormTakeTheNextArguments) {
    const auto entry = filesOf({{one, "%d file of %@"}, {other, "%d files of %@"}});
    EXPECT_EQ(by("en", entry, {1, "Ann"}), "1 file of Ann");
    EXPECT_EQ(by("en", filesOf({{other, "%*d|%%"}}), {7, 3}), "  7|%");
}

TEST(TextFormatPluralTest, DigitsThatAreShownDecide) {
    const auto fixed = filesOf({{one, "%.1f file"}, {other, "%.1f files"}}, ".1f");
    EXPECT_EQ(by("en", fixed, {1.0}), "1.0 files");
    EXPECT_EQ(by("en", fixed, {1}), "1.0 files");
    EXPECT_EQ(by("fr", fixed, {1.5}), "1.5 file");
    EXPECT_EQ(by("en", filesOf({{one, "%.0f file"}, {other, "%.0f files"}}, "f"), {1.0}), "1 file");
    EXPECT_EQ(by("en", filesOf({{one, "%g file"}, {other, "%g files"}}, "g"), {1.0}), "1 file");
    EXPECT_EQ(by("en", filesOf({{one, "a file"}, {other, "files"}}, ".0f"), {1.0}), "a file");
    EXPECT_EQ(by("en", filesOf({{one, "a file"}, {other, "files"}}, "f"), {1.0}), "files");
    EXPECT_EQ(by("en", filesOf({{one, "a file"}, {other, "files"}}, "@"), {1.0}), "files") << "1.0 in full";
    EXPECT_EQ(by("en", filesOf({{one, "a file"}, {other, "files"}}, ""), {1}), "a file");
    EXPECT_EQ(by("en", english, {1.0}), "1.0 files");
}

TEST(TextFormatPluralTest, NumbersOfAllLengthsChoose) {
    const auto russian = filesOf({{one, "one"}, {few, "few"}, {many, "many"}, {other, "other"}}, "llu");
    EXPECT_EQ(by("ru", russian, {std::numeric_limits<std::uint64_t>::max()}), "many") << "ends in 15";
    EXPECT_EQ(by("ru", russian, {18'446'744'073'709'551'601ULL}), "one");
    EXPECT_EQ(by("ru", russian, {-1}), "one");
    EXPECT_EQ(by("ru", russian, {1e22}), "many");
}

TEST(TextFormatPluralTest, TextsOfNumbersAreNumbers) {
    FormatProblems problems;
    EXPECT_EQ(by("en", english, {"1"}), "1 file");
    EXPECT_EQ(by("en", english, {"18446744073709551615"}), "18446744073709551615 files");
    EXPECT_THAT(problems.take(), IsEmpty());
    for (const std::string text : {"", "one", "1 ", "0x1", "inf", "nan", "1e999"}) {
        auto entry = filesOf({{one, "a file"}, {other, "files"}});
        entry.text += " of \"" + text + "\""; // is told of, as no other format is the same
        EXPECT_EQ(by("en", entry, {text}), "files of \"" + text + "\"");
        EXPECT_THAT(problems.take(), SizeIs(1)) << text;
    }
}

TEST(TextFormatPluralTest, RulesAreThoseOfTheLocaleOrTheUser) {
    const auto entry = filesOf({{one, "%d singular"}, {other, "%d plural"}});
    const auto zeroIn = [&](const FormatCustom& custom) {
        return formatText(entry, std::vector<FormatArgument>{0}, custom);
    };
    const vorlan::testing::UserRegion user({.locale = "fr_FR"});
    EXPECT_EQ(zeroIn({}), "0 singular");
    EXPECT_EQ(zeroIn({.locale = Locale("en")}), "0 plural");
    EXPECT_EQ(zeroIn({.locale = Locale("ar_EG"), .pluralRules = Locale("fr")}), "٠ singular");
    EXPECT_EQ(formatText(entry, std::vector<FormatArgument>{1234}, {.locale = Locale("en")}), "1,234 plural");
}

TEST(TextFormatPluralTest, VariablesThatAreNotThereStandAsTheyAre) {
    FormatProblems problems;
    EXPECT_EQ(by("en", {.text = "%#@files@, none: %d", .variables = {}}, {1, 2}), "%#@files@, none: 2");
    EXPECT_THAT(problems.take(), ElementsAre(HasSubstr("\"%#@files@\" names no variable")));
    EXPECT_EQ(by("en", filesOf({}), {1}), "%#@files@");
    EXPECT_EQ(by("en", english, {}), "%#@files@") << "without an argument";
    EXPECT_EQ(by("en", filesOf({{other, "%#@folders@"}}), {1, 2}), "%#@folders@");
}

TEST(TextFormatPluralTest, CirclesEnd) {
    const FormatProblems problems;
    EXPECT_EQ(by("en", filesOf({{other, "<%1$#@files@>"}}), {1}), "<%1$#@files@>");
    const StringTableEntry two{
        .text = "%1$#@a@",
        .variables = {{"a", variable({{other, "a%1$#@b@"}})}, {"b", variable({{other, "b%1$#@a@"}})}}};
    EXPECT_EQ(by("en", two, {1}), "ab%1$#@a@");
}

TEST(TextFormatPluralTest, TextsDoNotGrowWithoutEnd) {
    FormatProblems problems;
    StringTableEntry entry{.text = "%1$#@v0@"};
    for (int i = 0; i < 40; ++i) { // each twice as long as the next, and the first 2^40 times the last
        const auto next = "%1$#@v" + std::to_string(i + 1) + "@";
        entry.variables["v" + std::to_string(i)] = variable({{other, (next + next).c_str()}});
    }
    entry.variables["v40"] = variable({{other, "x"}});
    EXPECT_LT(by("en", entry, {1}).size(), 10'000);
    EXPECT_THAT(problems.take(), ElementsAre(HasSubstr("is one variable too many")));
}

TEST(TextFormatPluralTest, FormsMayBeIllFormed) {
    const FormatProblems problems;
    EXPECT_EQ(by("en", filesOf({{one, "\xFF%d"}, {other, "%"}}, "\xFF"), {1}), "\uFFFD1");
    EXPECT_EQ(by("en", filesOf({{one, "\xFF%d"}, {other, "%"}}, "9999999d"), {2}), "%");
    EXPECT_EQ(by("en", {.text = "%#@\xFF@", .variables = {{"\xFF", variable({{other, "named"}})}}}, {1}),
              "named");
}
