// SPDX-License-Identifier: Apache-2.0
#include "platform/values/UTF8.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

std::string textOf(char32_t character) {
    std::string text;
    utf8::append(text, character);
    return text;
}

} // namespace

TEST(UTF8, EveryCharacterIsReadAsItWasWritten) {
    for (char32_t character = 0; character < 0x110000; ++character) {
        if (character == 0xD800) character = 0xE000;
        const auto text = textOf(character);
        const auto first = utf8::firstCharacter(text + "z");
        const bool isRight = first.isWellFormed && first.character == character &&
                             first.length == text.size() && utf8::isWellFormed(text);
        ASSERT_TRUE(isRight) << "U+" << std::hex << static_cast<unsigned>(character);
    }
}

TEST(UTF8, LengthsChangeAtTheirBounds) {
    EXPECT_EQ(textOf(0x7F).size(), 1U);
    EXPECT_EQ(textOf(0x80).size(), 2U);
    EXPECT_EQ(textOf(0x7FF).size(), 2U);
    EXPECT_EQ(textOf(0x800).size(), 3U);
    EXPECT_EQ(textOf(0xFFFF).size(), 3U);
    EXPECT_EQ(textOf(0x10000).size(), 4U);
    EXPECT_EQ(textOf(0x10FFFF), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(textOf(0x20AC), "\xE2\x82\xAC");
}

TEST(UTF8, IllFormedBytesAreTakenAsFarAsTheyCouldHaveBecomeACharacter) {
    struct Case {
        std::string_view text;
        std::size_t length;
    };
    const Case cases[] = {
        {"\x80", 1},         {"\xBF", 1},         {"\xC0\x80", 1},         {"\xC1\xBF", 1},
        {"\xC2", 1},         {"\xC2z", 1},        {"\xE0\x9F\xBF", 1},     {"\xE0\xA0", 2},
        {"\xE2\x82z", 2},    {"\xED\xA0\x80", 1}, {"\xED\xBF\xBF", 1},     {"\xF0\x8F\xBF\xBF", 1},
        {"\xF0\x90\x80", 3}, {"\xF0\x90z", 2},    {"\xF4\x90\x80\x80", 1}, {"\xF5\x80\x80\x80", 1},
        {"\xFE", 1},         {"\xFF", 1},
    };
    for (const auto& [text, length] : cases) {
        SCOPED_TRACE(::testing::PrintToString(text));
        const auto first = utf8::firstCharacter(text);
        EXPECT_FALSE(first.isWellFormed);
        EXPECT_EQ(first.length, length);
        EXPECT_EQ(first.character, utf8::replacementCharacter);
        EXPECT_FALSE(utf8::isWellFormed(text));
        EXPECT_FALSE(utf8::isWellFormed("abc" + std::string(text) + "def"));
    }
}

TEST(UTF8, LengthOfACharacterIsWhatReadingItTakes) {
    for (char32_t character = 0; character < 0x110000; ++character) {
        if (character == 0xD800) character = 0xE000;
        const auto text = textOf(character);
        for (std::size_t left = 1; left <= 5; ++left)
            ASSERT_EQ(utf8::characterLength((text + "\x80").data(), left),
                      left < text.size() ? 0 : text.size())
                << "U+" << std::hex << static_cast<unsigned>(character);
    }
}

TEST(UTF8, LengthOfWhatIsIllFormedIsZero) {
    for (unsigned bytes = 0; bytes < 0x1'000'000; bytes += 1 + (bytes & 0xFF) % 3) {
        const char text[]{static_cast<char>(bytes >> 16), static_cast<char>(bytes >> 8),
                          static_cast<char>(bytes), 'z'};
        const auto first = utf8::firstCharacter({text, sizeof text});
        ASSERT_EQ(utf8::characterLength(text, sizeof text), first.isWellFormed ? first.length : 0)
            << std::hex << bytes;
    }
}

TEST(UTF8, WellFormedLengthEndsBeforeTheFirstIllFormedByteWhereverItIs) {
    for (std::size_t size = 0; size < 70; ++size) {
        for (const std::string_view letter : {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
            std::string text(size, 'x');
            text += letter;
            text += std::string(40, 'y');
            ASSERT_EQ(utf8::wellFormedLength(text), text.size());
            ASSERT_TRUE(utf8::isWellFormed(text));
            ASSERT_EQ(utf8::isASCII(text), letter.size() == 1);
            ASSERT_EQ(utf8::wellFormedLength(text.substr(0, size) + "\xFF" + text), size);
            ASSERT_EQ(utf8::wellFormedLength(text + "\xE2\x82"), text.size());
        }
    }
}

TEST(UTF8, WellFormedReplacementCharacterIsNoDamage) {
    EXPECT_TRUE(utf8::firstCharacter("\xEF\xBF\xBD").isWellFormed);
    EXPECT_TRUE(utf8::isWellFormed("\xEF\xBF\xBD"));
    EXPECT_TRUE(utf8::isWellFormed(""));
}
