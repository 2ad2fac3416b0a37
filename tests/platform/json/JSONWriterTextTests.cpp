// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

using namespace vorlan;

namespace {

std::string written(std::string_view text) {
    JSONWriter writer;
    writer.writeText(text);
    return std::move(writer).takeText();
}

std::string writtenAsName(std::string_view text) {
    JSONWriter writer;
    writer.beginObject();
    writer.key(text);
    writer.writeNull();
    writer.endObject();
    return std::move(writer).takeText();
}

std::optional<JSONError::Kind> failure(std::string_view text) {
    try {
        written(text);
        return std::nullopt;
    } catch (const JSONError& error) {
        return error.kind();
    }
}

std::string escaped(char character) {
    switch (character) {
    case '"': return "\\\"";
    case '\\': return "\\\\";
    case '\b': return "\\b";
    case '\f': return "\\f";
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
    }
    const auto code = static_cast<unsigned char>(character);
    if (code >= 0x20) return {character};
    const std::string_view digits = "0123456789abcdef";
    return std::string("\\u00") + digits[code >> 4] + digits[code & 15];
}

std::string escaped(std::string_view text) {
    std::string expected;
    for (const char character : text) expected += escaped(character);
    return expected;
}

std::string utf8(char32_t character) {
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) return {static_cast<char>(character)};
    if (character < 0x800) return {static_cast<char>(0xC0 | (character >> 6)), tail(0)};
    if (character < 0x10000) return {static_cast<char>(0xE0 | (character >> 12)), tail(6), tail(0)};
    return {static_cast<char>(0xF0 | (character >> 18)), tail(12), tail(6), tail(0)};
}

} // namespace

TEST(JSONWriterText, EscapesQuotesBackslashesAndControlCharactersOnly) {
    EXPECT_EQ(written("\"\\/\b\f\n\r\t"), R"("\"\\/\b\f\n\r\t")");
    EXPECT_EQ(written(std::string_view("\0\x01\x1F\x20\x7F", 5)), "\"\\u0000\\u0001\\u001f \x7F\"");
    EXPECT_EQ(written("€ \xE2\x80\xA8 </script> 😀"), "\"€ \xE2\x80\xA8 </script> 😀\"");
    EXPECT_EQ(writtenAsName("a\"\n€"), "{\"a\\\"\\n€\":null}");
}

// Words of eight bytes are looked at at once, and the last of them overlap.
TEST(JSONWriterText, EachASCIICharacterIsRightAtEachPlaceOfEachLength) {
    for (std::size_t length = 1; length <= 26; ++length)
        for (std::size_t at = 0; at < length; ++at)
            for (int character = 0; character < 0x80; ++character) {
                std::string text(length, 'a');
                text[at] = static_cast<char>(character);
                ASSERT_EQ(written(text), "\"" + escaped(text) + "\"")
                    << length << ", " << at << ", " << character;
            }
}

TEST(JSONWriterText, EachCharacterStandsAsItIs) {
    std::string text;
    for (char32_t character = 0x80; character < 0x110000; ++character) {
        if (character == 0xD800) character = 0xE000;
        text += utf8(character);
        if (character % 3 == 0) text += 'x';
        if (text.size() < 4000) continue;
        ASSERT_EQ(written(text), "\"" + text + "\"");
        text.clear();
    }
    EXPECT_EQ(written(text), "\"" + text + "\"");
}

TEST(JSONWriterText, RandomTextsAreEscapedByteByByte) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const char32_t bounds[] = {0x20, 0x80, 0x800, 0xD800, 0x10000, 0x110000};
    for (int round = 0; round < 5'000; ++round) {
        std::string text;
        for (auto count = random() % 40; count-- > 0;) {
            const auto bound = bounds[random() % 6];
            const auto character = static_cast<char32_t>(random() % bound);
            text += utf8(character >= 0xD800 && character < 0xE000 ? U'a' : character);
            if (random() % 3 == 0) text += "plain text in between";
        }
        ASSERT_EQ(written(text), "\"" + escaped(text) + "\"");
    }
}

TEST(JSONWriterText, IllFormedTextIsAnErrorWhereverItStands) {
    const std::string_view illFormed[] = {"\x80",
                                          "\xBF",
                                          "\xC0\x80",
                                          "\xC1\xBF",
                                          "\xC2",
                                          "\xE0\x9F\xBF",
                                          "\xE0\xA0",
                                          "\xED\xA0\x80",
                                          "\xED\xBF\xBF",
                                          "\xF0\x8F\xBF\xBF",
                                          "\xF0\x90\x80",
                                          "\xF0\x90",
                                          "\xF4\x90\x80\x80",
                                          "\xF5\x80\x80\x80",
                                          "\xFE",
                                          "\xFF",
                                          "\xE2\x28\xA1",
                                          "\xE2\x82\x28",
                                          "\xF0\x28\x8C\xBC",
                                          "\xF0\x90\x28\xBC",
                                          "\xF0\x90\x8C\x28"};
    for (const auto bad : illFormed)
        for (std::size_t before = 0; before < 18; ++before)
            for (const std::size_t after : {0, 1, 3, 8, 20}) {
                const auto text = std::string(before, 'a') + std::string(bad) + std::string(after, 'b');
                ASSERT_EQ(failure(text), JSONError::Kind::illFormedText) << ::testing::PrintToString(text);
                ASSERT_EQ(failure("é" + text), JSONError::Kind::illFormedText)
                    << ::testing::PrintToString(text);
            }
    EXPECT_FALSE(failure("well-formed: \xF4\x8F\xBF\xBF \xEF\xBF\xBF \xED\x9F\xBF \xEE\x80\x80"));
}
