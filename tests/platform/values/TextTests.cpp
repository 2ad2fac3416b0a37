// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Text.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace vorlan;
using namespace std::string_literals;

TEST(Text, EmptyTextIsBlank) {
    EXPECT_TRUE(isBlankText(""));
    EXPECT_TRUE(isBlankText({}));
}

TEST(Text, BlanksTabsAndLineEndsOfAllScriptsAreBlank) {
    for (const std::string_view text : {" ", "\t", "\n", "\v", "\f", "\r", "\r\n \t"})
        EXPECT_TRUE(isBlankText(text));
    // Each with its code point in a comment, as nobody can see them.
    const std::string_view others[] = {
        "\xC2\x85",     // U+0085, next line
        "\xC2\xA0",     // U+00A0, no-break space
        "\xE1\x9A\x80", // U+1680, Ogham space mark
        "\xE2\x80\x80", // U+2000, en quad
        "\xE2\x80\x89", // U+2009, thin space
        "\xE2\x80\x8A", // U+200A, hair space
        "\xE2\x80\xA8", // U+2028, line separator
        "\xE2\x80\xA9", // U+2029, paragraph separator
        "\xE2\x80\xAF", // U+202F, narrow no-break space
        "\xE2\x81\x9F", // U+205F, medium mathematical space
        "\xE3\x80\x80", // U+3000, ideographic space
    };
    std::string all;
    for (const auto text : others) {
        EXPECT_TRUE(isBlankText(text)) << ::testing::PrintToString(text);
        all += text;
    }
    EXPECT_TRUE(isBlankText(all));
    EXPECT_FALSE(isBlankText(all + "."));
    EXPECT_FALSE(isBlankText("." + all));
}

TEST(Text, NeighboursOfBlanksAreNotBlank) {
    const std::string texts[] = {
        "\x08",         "\x0E", "\x1C", "\x1F", "!", "\0"s,
        "\xC2\x84",     // U+0084
        "\xC2\x86",     // U+0086
        "\xC2\xA1",     // U+00A1
        "\xE1\xA0\x8E", // U+180E, a space until Unicode 6.3
        "\xE2\x80\x8B", // U+200B, zero width space: it is none
        "\xE2\x80\xAA", // U+202A
        "\xE2\x81\xA0", // U+2060, word joiner
        "\xE3\x80\x81", // U+3001
        "\xEF\xBB\xBF", // U+FEFF
    };
    for (const auto& text : texts) EXPECT_FALSE(isBlankText(text)) << ::testing::PrintToString(text);
}

TEST(Text, IllFormedBytesAreNotBlank) {
    for (const std::string_view text :
         {"\x85", "\xA0", "\xC2", "\xE2\x80", "\xC0\xA0", "\xE0\x80\xA0", " \xFF "})
        EXPECT_FALSE(isBlankText(text)) << ::testing::PrintToString(text);
}
