// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/StringTable.h>

#include "tests/platform/localization/TableBytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::literals;
using tests::errorOf;
using tests::readTable;
using tests::xmlDictionary;
using tests::xmlList;
using tests::xmlText;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsOf(const StringTable& table) {
    Pairs pairs;
    for (const auto& key : table.keys()) pairs.emplace_back(key, table.find(key)->text);
    return pairs;
}

Pairs read(std::string_view bytes) {
    return pairsOf(readTable(bytes));
}

std::string errorIn(std::string_view bytes) {
    return errorOf([bytes] { readTable(bytes); });
}

// A text of ASCII in UTF-16.
std::string inUTF16(std::string_view text, bool isBigEndian) {
    std::string bytes;
    for (const char c : text) bytes += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return bytes;
}

} // namespace

TEST(StringTableTest, EmptyFilesAreEmptyTables) {
    for (const auto file : {""sv, " \t\r\n\v\f"sv, "// nothing"sv, "/* nothing */"sv, "{}"sv,
                            " { // nothing\n } "sv, "\xEF\xBB\xBF"sv, "\xFF\xFE"sv, "\xFE\xFF"sv})
        EXPECT_EQ(readTable(file).size(), 0U) << file;
    EXPECT_EQ(StringTable().size(), 0U);
    EXPECT_EQ(StringTable().find(""), nullptr);
}

TEST(StringTableTest, PairsAreReadFromTheTextForm) {
    EXPECT_EQ(read(R"("Open" = "Öffnen"; "Close"="Schließen";)"),
              (Pairs{{"Close", "Schließen"}, {"Open", "Öffnen"}}));
    EXPECT_EQ(read(R"("" = "of nothing"; "nothing" = "";)"), (Pairs{{"", "of nothing"}, {"nothing", ""}}));
    EXPECT_EQ(readTable(R"("a" = "b";)").find("b"), nullptr);
}

TEST(StringTableTest, WordsNeedNoQuotes) {
    EXPECT_EQ(read("a = b; menu.file_open-2 = $HOME/notes; url = http://example.com:80;"),
              (Pairs{{"a", "b"}, {"menu.file_open-2", "$HOME/notes"}, {"url", "http://example.com:80"}}));
    EXPECT_EQ(read("\"a b\" = c; d = \"e f\";"), (Pairs{{"a b", "c"}, {"d", "e f"}}));
    EXPECT_EQ(read("a//b = c; d //e\n= f;"), (Pairs{{"a//b", "c"}, {"d", "f"}})) << "a blank ends a word";
}

TEST(StringTableTest, KeyAloneStandsForItself) {
    EXPECT_EQ(read("\"OK\"; Cancel ; \"line\\n\";"),
              (Pairs{{"Cancel", "Cancel"}, {"OK", "OK"}, {"line\n", "line\n"}}));
}

TEST(StringTableTest, CommentsMayBeAnywhereBetweenTexts) {
    EXPECT_EQ(read("// first\n/* \"no\" = \"entry\"; */\"a\"/**/=/* = */\"b\" // c\r;/* *//* * / **/ \"d\" "
                   "// e\r\n = f;//"),
              (Pairs{{"a", "b"}, {"d", "f"}}));
    EXPECT_EQ(read("\"/* a */\" = \"// b\";"), (Pairs{{"/* a */", "// b"}}));
}

TEST(StringTableTest, BracesMayBeAroundAll) {
    EXPECT_EQ(read("// a\n{ \"a\" = \"b\"; c = d; } // e"), (Pairs{{"a", "b"}, {"c", "d"}}));
}

TEST(StringTableTest, EscapesStandForCharacters) {
    const auto textOf = [](const std::string& written) {
        return readTable("k = \"" + written + "\";").find("k")->text;
    };
    EXPECT_EQ(textOf(R"(\a\b\f\n\r\t\v)"), "\a\b\f\n\r\t\v");
    EXPECT_EQ(textOf(R"(\"\\\'\/\?\% )"), "\"\\'/?% ");
    EXPECT_EQ(textOf(R"(\101\60\0\18\377\0012)"), "A0\0\0018ÿ\0012"s);
    EXPECT_EQ(textOf(R"(\U00e4\u20AC\uD83D\ude00\U0000.)"), "ä€😀\0."s);
    EXPECT_EQ(textOf("a\\\nb\\ä"), "a\nbä");
}

TEST(StringTableTest, LineEndsWithinQuotesAreKept) {
    EXPECT_EQ(read("\"a\nb\" = \"c\r\nd\re\";"), (Pairs{{"a\nb", "c\r\nd\re"}}));
}

TEST(StringTableTest, EntriesKnowWhereTheirKeyBegins) {
    const auto table = readTable("// a\r\n\"ä😀\" = x; \"b\" = \"1\n2\";  c = d;\r\r  e;");
    EXPECT_EQ(table.find("ä😀")->position, (TextPosition{2, 1}));
    EXPECT_EQ(table.find("b")->position, (TextPosition{2, 11}));
    EXPECT_EQ(table.find("c")->position, (TextPosition{3, 6}));
    EXPECT_EQ(table.find("e")->position, (TextPosition{5, 3}));
}

TEST(StringTableTest, LaterEntryOfAKeyCountsAndIsARepetition) {
    const auto table = readTable("a = 1; b = 1;\na = 2; a\n= 3;");
    EXPECT_EQ(pairsOf(table), (Pairs{{"a", "3"}, {"b", "1"}}));
    EXPECT_EQ(table.find("a")->position, (TextPosition{2, 8}));
    ASSERT_EQ(table.repetitions().size(), 2U);
    EXPECT_EQ(table.repetitions()[0].key, "a");
    EXPECT_EQ(table.repetitions()[0].position, (TextPosition{2, 1}));
    EXPECT_EQ(table.repetitions()[1].position, (TextPosition{2, 8}));
    EXPECT_TRUE(readTable("a = 1; A = 1;").repetitions().empty());
}

TEST(StringTableTest, ErrorsSayWhatWasExpectedAndFoundAndWhere) {
    const std::vector<std::pair<std::string_view, std::string>> table = {
        {"\"a\" = \"b\"", "1:10: expected ';', found the end of the file"},
        {"\"a\" = \"b\"\n\"c\" = \"d\";", "2:1: expected ';', found '\"'"},
        {"{ a = b }", "1:9: expected ';', found '}'"},
        {"a", "1:2: expected '=' or ';', found the end of the file"},
        {"größe = 1;", "1:3: expected '=' or ';', found 'ö'"},
        {"\"ä\" : \"b\";", "1:5: expected '=' or ';', found ':'"},
        {"a = ;", "1:5: expected a text, found ';'"},
        {"a =", "1:4: expected a text, found the end of the file"},
        {"a = { b = c; };", "1:5: expected a text, found '{'"},
        {"\n = b;", "2:2: expected a key, found '='"},
        {"a = b;;", "1:7: expected a key, found ';'"},
        {"a = b; }", "1:8: expected a key, found '}'"},
        {"\x7F", "1:1: expected a key, found U+007F"},
        {"a = b; \x01", "1:8: expected a key, found U+0001"},
        {"{ a = b;", "1:9: expected a key or '}', found the end of the file"},
        {"{ a = b; } c", "1:12: expected the end of the file, found 'c'"},
        {"a = b;\r\n /* c = d;", "2:2: expected '*/' to end this comment"},
        {"/*/", "1:1: expected '*/' to end this comment"},
        {"a = \"b;\nc = d;", "1:5: expected '\"' to end this text"},
        {"a = \"b\\\"", "1:5: expected '\"' to end this text"},
        {"a = \"b\\", "1:5: expected '\"' to end this text"},
    };
    for (const auto& [file, error] : table) EXPECT_EQ(errorIn(file), error) << file;
}

TEST(StringTableTest, EscapesThatStandForNothingAreErrors) {
    const std::vector<std::pair<std::string, std::string>> table = {
        {R"(\q)", "unknown escape \\q"},
        {R"(\x41)", "unknown escape \\x"},
        {R"(\8)", "unknown escape \\8"},
        {R"(\400)", "expected an octal escape up to \\377"},
        {R"(\U12)", "expected four hexadecimal digits in this escape"},
        {R"(\u12G4)", "expected four hexadecimal digits in this escape"},
        {R"(\uD83D)", "half a surrogate pair"},
        {R"(\uD83Dx)", "half a surrogate pair"},
        {R"(\uDE00\uD83D)", "half a surrogate pair"},
        {R"(\uD83D\n)", "half a surrogate pair"},
        {R"(\uD83D\u0041)", "half a surrogate pair"},
    };
    for (const auto& [escape, error] : table)
        EXPECT_EQ(errorIn("a = b;\n\"ä" + escape + "\";"), "2:3: " + error) << escape;
    EXPECT_EQ(errorIn(R"("\uD83D\u00";)"), "1:8: expected four hexadecimal digits in this escape");
}

TEST(StringTableTest, EncodingIsKnownByItsMarkOrByZeros) {
    const Pairs expected = {{"a", "b c"}};
    const auto text = "a = \"b c\";"sv;
    EXPECT_EQ(read("\xEF\xBB\xBF" + std::string(text)), expected);
    EXPECT_EQ(read("\xFF\xFE" + inUTF16(text, false)), expected);
    EXPECT_EQ(read("\xFE\xFF" + inUTF16(text, true)), expected);
    EXPECT_EQ(read(inUTF16(text, false)), expected);
    EXPECT_EQ(read(inUTF16(text, true)), expected);
    EXPECT_EQ(read(inUTF16("{}", false)), Pairs());
}

TEST(StringTableTest, CharactersBeyondASCIIAreReadFromUTF16) {
    const auto written =
        "\"\xFC\xDC\" = \"\x20\xAC\xD8\x3D\xDE\x00\";"sv; // the parts between quotes are UTF-16 already
    EXPECT_EQ(read("\xFE\xFF\0\"\x00\xDC\0\"\0=\0\"\x20\xAC\xD8\x3D\xDE\x00\0\"\0;"sv),
              (Pairs{{"Ü", "€😀"}}));
    EXPECT_EQ(read("\xFF\xFE\"\0\xDC\x00\"\0=\0\"\0\xAC\x20\x3D\xD8\x00\xDE\"\0;\0"sv),
              (Pairs{{"Ü", "€😀"}}));
    EXPECT_NE(errorIn(written), "no error") << "UTF-16 within ASCII";
}

TEST(StringTableTest, IllFormedEncodingIsAnErrorWithItsPosition) {
    EXPECT_EQ(errorIn("a = \"ä\";\n\"\xFF\";"), "2:2: ill-formed UTF-8");
    EXPECT_EQ(errorIn("\xEF\xBB\xBFä\xC3"), "1:2: ill-formed UTF-8");
    EXPECT_EQ(errorIn("// \xED\xA0\x80"), "1:4: ill-formed UTF-8");
    EXPECT_EQ(errorIn("\xFF\xFE" + inUTF16("a;\n", false) + "b"),
              "2:1: ill-formed UTF-16: half a unit at the end");
    EXPECT_EQ(errorIn("\xFE\xFF" + inUTF16("\n\n", true) + "\xD8\x3D"),
              "3:1: ill-formed UTF-16: half a surrogate pair");
    EXPECT_EQ(errorIn("\xFE\xFF\xDE\x00\xD8\x3D"sv), "1:1: ill-formed UTF-16: half a surrogate pair");
}

TEST(StringTableTest, PropertyListsInXMLAreRead) {
    const auto list = xmlList(xmlDictionary({{"Open", xmlText("Öffnen &amp; so")}, {"", xmlText("")}}));
    const Pairs expected = {{"", ""}, {"Open", "Öffnen & so"}};
    EXPECT_EQ(read(list), expected);
    EXPECT_EQ(read("\xEF\xBB\xBF\n " + list), expected);
    EXPECT_EQ(readTable(list).find("Open")->position, TextPosition());
    EXPECT_EQ(read("\xFF\xFE" + inUTF16(xmlList(xmlDictionary({{"a", xmlText("b")}})), false)),
              (Pairs{{"a", "b"}}));
}

TEST(StringTableTest, PropertyListsOfOtherThanTextsAreErrors) {
    EXPECT_EQ(errorIn(xmlList("<array/>")), "0:0: it is no dictionary");
    EXPECT_EQ(errorIn(xmlList(xmlDictionary({{"a", xmlText("b")}, {"width", "<integer>5</integer>"}}))),
              "0:0: the value of key \"width\" is no text");
    EXPECT_EQ(errorIn("<plist"), "0:0: it is no property list in XML");
    EXPECT_TRUE(errorIn("bplist00").starts_with("0:0: "));
}

TEST(StringTableTest, InsertedEntryReplacesThatOfTheKey) {
    auto table = readTable("a = 1; b = 2;");
    table.insert("a", {.text = "3"});
    table.insert("c", {.text = "4"});
    EXPECT_EQ(pairsOf(table), (Pairs{{"a", "3"}, {"b", "2"}, {"c", "4"}}));
}

TEST(StringTableTest, FileThatIsTooLargeIsRefused) {
    const std::string blanks((64U << 20U) + 1, ' ');
    EXPECT_EQ(errorIn(blanks), "0:0: it is larger than any table");
}

TEST(StringTableTest, WhatIsWrittenWithEscapesIsReadAsItWas) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<std::string> pieces = {"a",  "\"", "\\", "\n", "\r", "\t", "ä",
                                             "😀", "/*", "//", ";",  "=",  "%@"};
    for (int round = 0; round < 200; ++round) {
        std::string file;
        Pairs expected;
        for (int i = 0; i < 10; ++i) {
            std::string text;
            std::string written;
            for (auto count = random() % 8; count > 0; --count) {
                const auto& piece = pieces[random() % pieces.size()];
                text += piece;
                written += piece == "\"" || piece == "\\" ? "\\" + piece : piece;
            }
            expected.emplace_back("key" + std::to_string(i), text);
            file += "key" + std::to_string(i) + " = \"" + written + "\";\n";
        }
        EXPECT_EQ(read(file), expected) << file;
    }
}
