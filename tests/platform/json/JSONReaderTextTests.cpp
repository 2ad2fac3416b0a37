// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONReaderSupport.h"

#include <VorlanFoundation/Platform/JSONReader.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace jsontests;

namespace {

std::string textOf(JSONReader& reader) {
    return std::string(reader.readText());
}

std::string inQuotes(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// A text is read, skipped, a key, and within a value: in all of these places, the same holds.
void expectMalformed(std::string_view text, std::string_view message, std::size_t offset) {
    SCOPED_TRACE(std::string(text));
    for (const auto& error : {errorOf(text, textOf), errorOf(text, skipIt), errorOf(text, readAnything)})
        expectError(error, JSONError::Kind::malformed, message, "$", offset);
    const std::string member = "{" + std::string(text) + ":1}";
    const auto readKey = [](JSONReader& reader) {
        reader.enterObject();
        while (reader.nextKey()) {}
    };
    for (const auto& error :
         {errorOf(member, readKey), errorOf(member, skipIt), errorOf(member, readAnything)}) {
        EXPECT_EQ(error.kind(), JSONError::Kind::malformed) << error.what();
        EXPECT_EQ(error.path(), "$");
    }
}

} // namespace

TEST(JSONReader, ReadsTextsAsTheyStand) {
    EXPECT_EQ(readWhole("\"\"", textOf), "");
    EXPECT_EQ(readWhole("\"a\"", textOf), "a");
    EXPECT_EQ(readWhole("\"/\x7F\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEE\x80\x80\xF4\x8F\xBF\xBF\"", textOf),
              "/\x7F\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEE\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(JSONReader, ReadsTextsOfEveryLength) {
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(readWhole(inQuotes(text), textOf), text);
        EXPECT_EQ(readWhole(inQuotes(text + "\\n"), textOf), text + "\n");
        EXPECT_EQ(readWhole(inQuotes("\\\"" + text), textOf), "\"" + text);
        EXPECT_EQ(errorOf(inQuotes(text + "\x1F"), textOf).byteOffset(), length + 1);
        EXPECT_EQ(errorOf("\"" + text, textOf).byteOffset(), length + 1);
    }
}

TEST(JSONReader, ReadsEveryEscape) {
    EXPECT_EQ(readWhole(R"("\"\\\/\b\f\n\r\t")", textOf), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(readWhole(R"("\u0041\u00e9\u20AC\uffff")", textOf), "A\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBF");
    EXPECT_EQ(readWhole(R"("\ud83d\uDE00\uD800\udc00\uDBFF\uDFFF")", textOf),
              "\xF0\x9F\x98\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(readWhole(R"("\u0000")", textOf), std::string(1, '\0'));
    EXPECT_EQ(readWhole(R"("a\\u0041")", textOf), "a\\u0041");
}

TEST(JSONReader, RefusesWhatIsNoEscape) {
    expectMalformed(R"("\a")", "there is no such escape", 2);
    expectMalformed(R"("x\'")", "there is no such escape", 3);
    expectMalformed(R"("\U0041")", "there is no such escape", 2);
    expectMalformed(R"("\u12G4")", "expected four hexadecimal digits", 5);
    expectMalformed(R"("\u123")", "expected four hexadecimal digits", 6);
    expectMalformed(R"("\u")", "expected four hexadecimal digits", 3);
    expectMalformed("\"\\", "the text ends too early", 2);
    expectMalformed("\"\\u00", "the text ends too early", 5);
}

TEST(JSONReader, RefusesHalvesOfSurrogatePairs) {
    const auto message = "half of a surrogate pair is no character";
    expectMalformed(R"("\ud800")", message, 1);
    expectMalformed(R"("ab\uDBFFcd")", message, 3);
    expectMalformed(R"("\udc00")", message, 1);
    expectMalformed(R"("\uDFFF\uD800")", message, 1);
    expectMalformed(R"("\uD800\uD800\uDC00")", message, 1);
    expectMalformed(R"("\uD800\n")", message, 1);
    expectMalformed(R"("\uD800\u0041")", message, 1);
    expectMalformed(R"("\uD800\u00")", "expected four hexadecimal digits", 11);
}

TEST(JSONReader, RefusesControlCharactersWithinTexts) {
    for (char character = 0; character < 0x20; ++character)
        expectMalformed(inQuotes(std::string("ab") + character),
                        "a control character within a string has to be escaped", 3);
}

TEST(JSONReader, RefusesTextsWithoutAnEnd) {
    expectMalformed("\"", "the text ends too early", 1);
    expectMalformed("\"abc", "the text ends too early", 4);
    expectMalformed("\"abc\\\"", "the text ends too early", 6);
}

TEST(JSONReader, RefusesIllFormedTextWhereverItIs) {
    const std::vector<std::pair<std::string, std::size_t>> texts{{"\"a\xFF\"", 2},
                                                                 {"\"\xC3\"", 1},
                                                                 {"\"\xC0\x80\"", 1},
                                                                 {"\"\xED\xA0\x80\"", 1},
                                                                 {"\"\xF4\x90\x80\x80\"", 1},
                                                                 {"{\"\xE2\x82\": 1}", 2},
                                                                 {"\xFE\xFF", 0},
                                                                 {"1 \x80", 2}};
    for (const auto& [text, offset] : texts) {
        SCOPED_TRACE(text);
        for (const auto& error : {errorOf(text, skipIt), errorOf(text, readAnything)})
            expectError(error, JSONError::Kind::malformed, "the text is not well-formed UTF-8", "$", offset);
    }
}

TEST(JSONReader, RefusesAByteOrderMark) {
    for (const char* text : {"\xEF\xBB\xBF", "\xEF\xBB\xBF{}", "\xEF\xBB\xBF 1"})
        expectError(errorOf(text, skipIt), JSONError::Kind::malformed,
                    "a JSON text begins without a byte-order mark", "$", 0);
    EXPECT_EQ(readWhole("\"\xEF\xBB\xBF\"", textOf), "\xEF\xBB\xBF");
}

TEST(JSONReader, ReadsKeysWithEscapes) {
    JSONReader reader(R"({"\u0061\n": 1, "b": 2, "": 3})");
    reader.enterObject();
    EXPECT_EQ(reader.nextKey(), "a\n");
    EXPECT_EQ(reader.nextKey(), "b");
    EXPECT_EQ(reader.nextKey(), "");
    EXPECT_EQ(reader.nextKey(), std::nullopt);
    reader.finish();
}
