// SPDX-License-Identifier: Apache-2.0

// Everyday questions about texts, but for their digests.

#include <VorlanFoundation/Extensions/Text.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace vorlan;

namespace {

constexpr std::string_view illFormed[] = {"\xFF",       "a\xC3",        "\xC3(",
                                          "a@b.de\x80", "\xED\xA0\x80", "\\b\xE2\x82"};

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

} // namespace

TEST(TextTest, PartBehindIsThatAfterTheFirstUnlessSearchedBackwards) {
    EXPECT_EQ(text::string("a/b/c", {.afterLast = "/"}), "b/c");
    EXPECT_EQ(text::string("a/b/c", {.afterLast = "/", .options = CompareOptions::none}), "b/c");
    EXPECT_EQ(text::string("a/b/c", {.afterLast = "/", .options = CompareOptions::backwards}), "c");
    EXPECT_EQ(text::string("abc", {.afterLast = "/"}), std::nullopt);
    EXPECT_EQ(text::string("abc", {.afterLast = ""}), std::nullopt);
    EXPECT_EQ(text::string("", {.afterLast = "/"}), std::nullopt);
    EXPECT_EQ(text::string("a/", {.afterLast = "/"}), "") << "found, with nothing behind it";
}

TEST(TextTest, PartBehindIsLookedForWithTheGivenOptionsAndNoOthers) {
    using enum CompareOptions;
    EXPECT_EQ(text::string("aXbxc", {.afterLast = "x"}), "c");
    EXPECT_EQ(text::string("aXbxc", {.afterLast = "x", .options = caseInsensitive}), "bxc");
    EXPECT_EQ(text::string("aXbxc", {.afterLast = "x", .options = anchored}), std::nullopt);
    EXPECT_EQ(text::string("le Cafe\u0301!", {.afterLast = "é"}), "!");
    EXPECT_EQ(text::string("le Cafe\u0301!", {.afterLast = "é", .options = literal}), std::nullopt);
    EXPECT_EQ(text::string("size: 12 px", {.afterLast = "[0-9]+ ", .options = regularExpression}), "px");
    EXPECT_EQ(text::string("a\xFF/b\xFF", {.afterLast = "/"}), "b\xFF")
        << "ill-formed bytes stay what they are";
}

TEST(TextTest, TextIsContainedWhereASearchWithoutOptionsFindsIt) {
    EXPECT_TRUE(text::contains("a/b/c", "b/"));
    EXPECT_TRUE(text::contains("abc", "abc"));
    EXPECT_TRUE(text::contains("Café", "e\u0301")) << "the same character, written otherwise";
    EXPECT_FALSE(text::contains("Café", "e")) << "a letter with its accent is another";
    EXPECT_FALSE(text::contains("abc", "B"));
    EXPECT_FALSE(text::contains("abc", "abcd"));
    EXPECT_FALSE(text::contains("abc", ""));
    EXPECT_FALSE(text::contains("", ""));
    EXPECT_FALSE(text::contains("", "a"));
    EXPECT_TRUE(text::contains("a\xFF", "\xFF"));
    EXPECT_FALSE(text::contains("\uFFFD", "\xFF"));
}

TEST(TextTest, AddressesOfTheUsualFormAreEMail) {
    for (const std::string_view address :
         {"a@b.de", "anna.smith@example.org", "a+b_c%d-e.f@sub.example-host.museum", "A9@Z9.CO", ".@-.aa",
          "a@b..de", "a@..com", "1@1.aa", "a@b.c.de"})
        EXPECT_TRUE(text::isEmail(address)) << address;
    EXPECT_TRUE(text::isEmail("a@b." + std::string(64, 'x')));
}

TEST(TextTest, OtherTextsAreNoEMail) {
    for (const std::string_view address : {"",
                                           "@",
                                           "a@b.c",
                                           "a@b",
                                           "a@localhost",
                                           "@b.de",
                                           "a@.de",
                                           "a b@c.de",
                                           "a@b c.de",
                                           "a@b@c.de",
                                           " a@b.de",
                                           "a@b.de ",
                                           "a@b.de\n",
                                           "a@b.d3",
                                           "a@b.de.",
                                           "a@b_c.de",
                                           "bücher@b.de",
                                           "a@bücher.de",
                                           "a@b.бг",
                                           "<a@b.de>",
                                           "a,b@c.de",
                                           "a@b.de,c@d.de",
                                           "a@b.d",
                                           "\"a\"@b.de",
                                           "a!@b.de",
                                           "a@[10.0.0.1]",
                                           "x a@b.de y"})
        EXPECT_FALSE(text::isEmail(address)) << address;
    EXPECT_FALSE(text::isEmail(std::string_view("a@b.de\0", 7)));
    EXPECT_FALSE(text::isEmail("a@b." + std::string(65, 'x')));
    for (const auto address : illFormed)
        EXPECT_FALSE(text::isEmail(address)) << ::testing::PrintToString(address);
}

TEST(TextTest, TextsMadeToBeSlowAreToldFromEMailInTime) {
    constexpr int million = 1'000'000;
    EXPECT_FALSE(text::isEmail(repeated("a", million)));
    EXPECT_FALSE(text::isEmail(repeated("@", million)));
    EXPECT_FALSE(text::isEmail(repeated("a@", million / 2)));
    EXPECT_FALSE(text::isEmail("a@" + repeated("a", million)));
    EXPECT_FALSE(text::isEmail("a@" + repeated("a.", million / 2)));
    EXPECT_FALSE(text::isEmail("a@" + repeated("aa.", million / 3)));
    EXPECT_FALSE(text::isEmail(repeated("a", million) + "@" + repeated("a", million)));
    EXPECT_TRUE(text::isEmail("a@b.de")) << "and this still is one";
}

TEST(TextTest, BackspaceIsToldByTheFirstByteThatDiffers) {
    EXPECT_TRUE(text::containsBackspace("")) << "0 - '\\'";
    EXPECT_TRUE(text::containsBackspace(std::string_view())) << "0 - '\\'";
    EXPECT_TRUE(text::containsBackspace(std::string_view("\0a", 2))) << "what is behind a NUL does not count";
    EXPECT_TRUE(text::containsBackspace("\\\x06")) << "6 - 'b'";
    EXPECT_TRUE(text::containsBackspace("\\\x06xyz"));
    EXPECT_FALSE(text::containsBackspace("a"));
    EXPECT_FALSE(text::containsBackspace("\b")) << "not the backspace character";
    EXPECT_FALSE(text::containsBackspace("\\")) << "0 - 'b' is -98";
    EXPECT_FALSE(text::containsBackspace("\\b")) << "equal";
    EXPECT_FALSE(text::containsBackspace("\\b\\")) << "'\\' - 0 is 92";
    EXPECT_FALSE(text::containsBackspace(std::string_view("\\b\0", 3)));
    EXPECT_FALSE(text::containsBackspace("é"));
    for (const auto ill : illFormed)
        EXPECT_FALSE(text::containsBackspace(ill)) << ::testing::PrintToString(ill);
    EXPECT_FALSE(text::containsBackspace(std::string_view("\0\xFF", 2))) << "no part of it may be ill-formed";
}

TEST(TextTest, EveryFirstByteButNULIsNoBackspace) {
    for (char byte = 1; byte > 0; ++byte) {
        for (char second = 0; second >= 0; ++second) {
            const char bytes[] = {byte, second};
            const bool isWanted = byte == '\\' && second == 'b' - '\\';
            ASSERT_EQ(text::containsBackspace(std::string_view(bytes, 2)), isWanted)
                << int{byte} << " " << int{second};
            if (second == 127) break;
        }
        if (byte == 127) break;
    }
}
