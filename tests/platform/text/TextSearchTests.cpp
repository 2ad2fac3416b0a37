// SPDX-License-Identifier: Apache-2.0

// What is found by each option, and where.

#include <VorlanFoundation/Platform/TextSearch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace vorlan;
using enum CompareOptions;

namespace {

using Found = std::optional<TextRange>;
constexpr auto absent = std::nullopt;

Found at(std::size_t offset, std::size_t length) {
    return TextRange{offset, length};
}

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

} // namespace

namespace vorlan {

// How failures show it.
static void PrintTo(const TextRange& range, std::ostream* out) {
    *out << range.length << " bytes at " << range.offset;
}

} // namespace vorlan

TEST(TextSearchTest, FirstPartIsFound) {
    EXPECT_EQ(rangeOfText("a/b/c", "/"), at(1, 1));
    EXPECT_EQ(rangeOfText("a/b/c", "b/c"), at(2, 3));
    EXPECT_EQ(rangeOfText("a/b/c", "a/b/c"), at(0, 5));
    EXPECT_EQ(rangeOfText("a/b/c", "a/b/c/"), absent);
    EXPECT_EQ(rangeOfText("a/b/c", "x"), absent);
    EXPECT_EQ(rangeOfText("straße", "ß"), at(4, 2));
    EXPECT_EQ(rangeOfText("aab", "ab"), at(1, 2));
    EXPECT_EQ(rangeOfText("äääb", "ääb"), at(2, 5));
}

TEST(TextSearchTest, EmptyTextIsNeitherFoundNorHasAnything) {
    for (const auto options : {none, literal, caseInsensitive, backwards, anchored, anchored | backwards,
                               numeric, diacriticInsensitive, regularExpression}) {
        EXPECT_EQ(rangeOfText("text", "", options), absent);
        EXPECT_EQ(rangeOfText("", "", options), absent);
        EXPECT_EQ(rangeOfText("", "a", options), absent);
        EXPECT_EQ(rangeOfText("", "é", options), absent);
        EXPECT_EQ(rangeOfText(std::string_view(), "a", options), absent);
    }
}

TEST(TextSearchTest, NULIsACharacterAsOthers) {
    const std::string_view text("a\0b\0é", 6);
    EXPECT_EQ(rangeOfText(text, std::string_view("\0b", 2)), at(1, 2));
    EXPECT_EQ(rangeOfText(text, std::string_view("\0", 1), backwards), at(3, 1));
    EXPECT_EQ(rangeOfText(text, std::string_view("\0e", 2), diacriticInsensitive), at(3, 3));
}

TEST(TextSearchTest, CanonicallyEquivalentTextsAreTheSame) {
    EXPECT_EQ(rangeOfText("Cafe\u0301!", "é"), at(3, 3));
    EXPECT_EQ(rangeOfText("Café!", "e\u0301"), at(3, 2));
    EXPECT_EQ(rangeOfText("\u212B", "Å"), at(0, 3)) << "Ångström's sign";
    EXPECT_EQ(rangeOfText("5 \u212A", "K"), at(2, 3)) << "Kelvin's sign";
    EXPECT_EQ(rangeOfText("각", "\u1100\u1161\u11A8"), at(0, 3));
    EXPECT_EQ(rangeOfText("\u1100\u1161\u11A8", "각"), at(0, 9));
    EXPECT_EQ(rangeOfText("ﬁ", "fi"), absent) << "compatible, but not equivalent";
}

TEST(TextSearchTest, OrderOfMarksThatDoNotTouchIsOfNoMatter) {
    EXPECT_EQ(rangeOfText("q\u0323\u0307", "q\u0307\u0323"), at(0, 5));
    EXPECT_EQ(rangeOfText("q\u0307\u0323", "q\u0323\u0307"), at(0, 5));
    EXPECT_EQ(rangeOfText("\u1E0B\u0323", "\u1E0D\u0307"), at(0, 5)) << "d with a dot above and one below";
    EXPECT_EQ(rangeOfText("a\u0301\u0300", "a\u0300\u0301"), absent) << "these touch";
}

TEST(TextSearchTest, CharacterIsFoundOnlyWithItsMarks) {
    EXPECT_EQ(rangeOfText("é", "e"), absent);
    EXPECT_EQ(rangeOfText("e\u0301", "e"), absent);
    EXPECT_EQ(rangeOfText("e\u0301", "\u0301"), absent);
    EXPECT_EQ(rangeOfText("e\u0323\u0301", "e\u0323"), absent);
    EXPECT_EQ(rangeOfText("e\u0323\u0301", "é"), absent) << "nor with some of them";
    EXPECT_EQ(rangeOfText("e\u0301e", "e"), at(3, 1));
    EXPECT_EQ(rangeOfText("कि", "क"), absent) << "vowel signs are marks";
    EXPECT_EQ(rangeOfText("각", "가"), absent) << "nor a syllable in a longer one";
    EXPECT_EQ(rangeOfText("가\u1161", "가"), absent) << "nor one that goes on in a loose vowel";
    EXPECT_EQ(rangeOfText("가나 가\u1161", "가", backwards), at(0, 3));
    EXPECT_EQ(rangeOfText("\u1100\u1161\u11A8", "\u1100\u1161"), absent);
    EXPECT_EQ(rangeOfText("👍🏽", "👍"), absent) << "a tone of the skin is a mark";
}

TEST(TextSearchTest, PartsOfSequencesAreJudgedByTheirMarksOnly) {
    EXPECT_EQ(rangeOfText("a\r\nb", "\n"), at(2, 1));
    EXPECT_EQ(rangeOfText("ä\r\nb", "\n"), at(3, 1));
    EXPECT_EQ(rangeOfText("🇩🇪", "🇪"), at(4, 4));
    EXPECT_EQ(rangeOfText("👩\u200D👧", "👧"), at(7, 4)) << "behind a joiner";
    EXPECT_EQ(rangeOfText("👩\u200D👧", "👩"), absent) << "before a joiner";
}

TEST(TextSearchTest, MarksThatStandOnNothingAreFoundByThemselves) {
    EXPECT_EQ(rangeOfText("\u0301a", "\u0301"), at(0, 2));
    EXPECT_EQ(rangeOfText("\u0301a", "a"), at(2, 1));
    EXPECT_EQ(rangeOfText("\n\u0301é", "\n"), at(0, 1)) << "a line's end bears no accent";
    EXPECT_EQ(rangeOfText("\xFF\u0301", "\u0301"), at(1, 2));
    EXPECT_EQ(rangeOfText("\u0344", "\u0308\u0301"), at(0, 2));
    EXPECT_EQ(rangeOfText("\u0301\u093E", "\u0301\u093E", diacriticInsensitive), at(0, 5));
}

TEST(TextSearchTest, LiteralSearchGoesByCharacters) {
    EXPECT_EQ(rangeOfText("e\u0301", "e", literal), at(0, 1));
    EXPECT_EQ(rangeOfText("e\u0301", "\u0301", literal), at(1, 2));
    EXPECT_EQ(rangeOfText("e\u0301", "é", literal), absent);
    EXPECT_EQ(rangeOfText("각", "가", literal), absent);
    EXPECT_EQ(rangeOfText("E\u0301", "e", literal | caseInsensitive), at(0, 1));
    EXPECT_EQ(rangeOfText("e\u0301", "É", literal | caseInsensitive), absent);
    EXPECT_EQ(rangeOfText("é", "É", literal | caseInsensitive), at(0, 2));
    EXPECT_EQ(rangeOfText("Straße", "STRASSE", literal | caseInsensitive), at(0, 7));
    EXPECT_EQ(rangeOfText("xäxäx", "äx", literal | backwards), at(4, 3));
}

TEST(TextSearchTest, NothingBeginsOrEndsInsideACharacter) {
    EXPECT_EQ(rangeOfText("é", "\xA9", literal), absent);
    EXPECT_EQ(rangeOfText("é", "\xC3", literal), absent);
    EXPECT_EQ(rangeOfText("é", "\xC3"), absent);
    EXPECT_EQ(rangeOfText("é\xC3", "\xC3", literal), at(2, 1));
    EXPECT_EQ(rangeOfText("\xC3é", "\xC3", literal | backwards), at(0, 1));
    EXPECT_EQ(rangeOfText("é", "\xC3", literal | anchored), absent);
    EXPECT_EQ(rangeOfText("é", "\xA9", literal | anchored | backwards), absent);
    EXPECT_EQ(rangeOfText("ß", "s", caseInsensitive), absent) << "nor of one that is folded to two";
    EXPECT_EQ(rangeOfText("ßs", "ss", caseInsensitive), at(0, 2));
    EXPECT_EQ(rangeOfText("ßs", "ss", caseInsensitive | backwards), at(0, 2));
    EXPECT_EQ(rangeOfText("ﬃ", "fi", caseInsensitive), absent);
    EXPECT_EQ(rangeOfText("ﬃ", "FFI", caseInsensitive), at(0, 3));
}

TEST(TextSearchTest, IllFormedBytesAreTheSameAsEqualBytesOnly) {
    for (const auto options : {none, literal, caseInsensitive, diacriticInsensitive, widthInsensitive,
                               numeric, literal | caseInsensitive, backwards}) {
        EXPECT_EQ(rangeOfText("a\xFFz", "\xFF", options), at(1, 1));
        EXPECT_EQ(rangeOfText("a\xFFz", "a\xFFz", options), at(0, 3));
        EXPECT_EQ(rangeOfText("a\xFFz", "\xFE", options), absent);
        EXPECT_EQ(rangeOfText("a\xFFz", "\uFFFD", options), absent);
        EXPECT_EQ(rangeOfText("\uFFFD", "\xFF", options), absent);
        EXPECT_EQ(rangeOfText("é\xE2\x82z", "\xE2\x82", options), at(2, 2)) << "the start of a character";
        EXPECT_EQ(rangeOfText("é\xE2\x82", "\xE2\x82\xAC", options), absent);
        EXPECT_EQ(rangeOfText("\xED\xA0\x80", "\xED\xA0\x80", options), at(0, 3)) << "a surrogate";
    }
}

TEST(TextSearchTest, CaseIsFoldedAsUnicodeDoes) {
    EXPECT_EQ(rangeOfText("GRÜSSE", "grüße", caseInsensitive), at(0, 7));
    EXPECT_EQ(rangeOfText("Σίσυφος", "ΣΊΣΥΦΟΣ", caseInsensitive), at(0, 14)) << "the final sigma too";
    EXPECT_EQ(rangeOfText("İ", "i\u0307", caseInsensitive), at(0, 2));
    EXPECT_EQ(rangeOfText("İ", "i", caseInsensitive), absent) << "its dot is a mark";
    EXPECT_EQ(rangeOfText("ı", "I", caseInsensitive), absent) << "no language counts";
    EXPECT_EQ(rangeOfText("ᾳ", "ΑΙ", caseInsensitive), at(0, 3));
    EXPECT_EQ(rangeOfText("α\u0345\u0301", "ΆΙ", caseInsensitive), at(0, 6)) << "in the order of their kinds";
    EXPECT_EQ(rangeOfText("A", "a"), absent);
    EXPECT_EQ(rangeOfText("E\u0301", "é", caseInsensitive), at(0, 3));
}

TEST(TextSearchTest, DiacriticsAreLeftOut) {
    EXPECT_EQ(rangeOfText("Crème brûlée", "brulee", diacriticInsensitive), at(7, 8));
    EXPECT_EQ(rangeOfText("brulee", "brûlée", diacriticInsensitive), at(0, 6));
    EXPECT_EQ(rangeOfText("CAFÉ", "cafe", caseInsensitive | diacriticInsensitive), at(0, 5));
    EXPECT_EQ(rangeOfText("e\u0301\u0323x", "e", diacriticInsensitive), at(0, 5))
        << "the marks are taken along";
    EXPECT_EQ(rangeOfText("xe\u0301", "e", diacriticInsensitive | backwards | anchored), at(1, 3));
    EXPECT_EQ(rangeOfText("e\u0301", "\u0301", diacriticInsensitive), absent)
        << "nothing is left of the needle";
    EXPECT_EQ(rangeOfText("שָׁלוֹם", "שלום", diacriticInsensitive), at(0, 14)) << "points";
    EXPECT_EQ(rangeOfText("कि", "क", diacriticInsensitive), absent) << "vowel signs are no diacritics";
    EXPECT_EQ(rangeOfText("ø", "o", diacriticInsensitive), absent) << "nor is a stroke a mark";
    EXPECT_EQ(rangeOfText("e\u0301", "é", literal | diacriticInsensitive), at(0, 3));
}

TEST(TextSearchTest, WidthIsLeftOut) {
    EXPECT_EQ(rangeOfText("ＡＢＣ", "BC", widthInsensitive), at(3, 6));
    EXPECT_EQ(rangeOfText("ABC", "ＢＣ", widthInsensitive), at(1, 2));
    EXPECT_EQ(rangeOfText("ｶﾞ", "ガ", widthInsensitive), at(0, 6)) << "two of half width are one";
    EXPECT_EQ(rangeOfText("ｶﾞ", "カ", widthInsensitive), absent) << "the second is a mark";
    EXPECT_EQ(rangeOfText("ｶﾞ", "カ", widthInsensitive | diacriticInsensitive), at(0, 6));
    EXPECT_EQ(rangeOfText("Ａ", "a", widthInsensitive), absent);
    EXPECT_EQ(rangeOfText("Ａ", "a", widthInsensitive | caseInsensitive), at(0, 3));
    EXPECT_EQ(rangeOfText("Ａ", "A"), absent);
    EXPECT_EQ(rangeOfText("①", "1", widthInsensitive), absent) << "a circle is no width";
    EXPECT_EQ(rangeOfText("\u3000", " ", widthInsensitive), at(0, 3));
}

TEST(TextSearchTest, NumbersCountByTheirValue) {
    EXPECT_EQ(rangeOfText("agent 007!", "7", numeric), at(6, 3));
    EXPECT_EQ(rangeOfText("17", "7", numeric), absent);
    EXPECT_EQ(rangeOfText("71", "7", numeric), absent);
    EXPECT_EQ(rangeOfText("17 x7y", "x007y", numeric), at(3, 3));
    EXPECT_EQ(rangeOfText("a000b", "0", numeric), at(1, 3));
    EXPECT_EQ(rangeOfText("a10b", "0", numeric), absent);
    EXPECT_EQ(rangeOfText("٧", "7", numeric), at(0, 2)) << "digits of other scripts";
    EXPECT_EQ(rangeOfText("1٢", "12", numeric | literal), at(0, 3)) << "also of several";
    EXPECT_EQ(rangeOfText("0001" + repeated("0", 100), "1" + repeated("0", 100), numeric), at(0, 104));
    EXPECT_EQ(rangeOfText("1.50", "50", numeric), at(2, 2)) << "in digits, not in fractions";
    EXPECT_EQ(rangeOfText("７", "07", numeric | widthInsensitive), at(0, 3));
    EXPECT_EQ(rangeOfText("17 7", "7", numeric | backwards | anchored), at(3, 1));
    EXPECT_EQ(rangeOfText("17", "7", numeric | backwards | anchored), absent);
    EXPECT_EQ(rangeOfText("7\u0307", "7", numeric), absent) << "a mark on a digit is one";
}

TEST(TextSearchTest, BackwardsTheLastIsFound) {
    EXPECT_EQ(rangeOfText("a/b/c", "/", backwards), at(3, 1));
    EXPECT_EQ(rangeOfText("aaaa", "aa", backwards), at(2, 2));
    EXPECT_EQ(rangeOfText("éxe\u0301x", "é", backwards), at(3, 3));
    EXPECT_EQ(rangeOfText("éé", "x", backwards), absent);
    const auto long_ = "é" + repeated("xy", 5000);
    EXPECT_EQ(rangeOfText(long_, "é", backwards), at(0, 2)) << "also far from the end";
    EXPECT_EQ(rangeOfText(long_, "X", backwards | caseInsensitive), at(10'000, 1));
}

TEST(TextSearchTest, AnchoredOnlyTheVeryBeginningOrEndCounts) {
    EXPECT_EQ(rangeOfText("abab", "ab", anchored), at(0, 2));
    EXPECT_EQ(rangeOfText("abab", "ba", anchored), absent);
    EXPECT_EQ(rangeOfText("abab", "ab", anchored | backwards), at(2, 2));
    EXPECT_EQ(rangeOfText("abab", "ba", anchored | backwards), absent);
    EXPECT_EQ(rangeOfText("e\u0301a", "é", anchored), at(0, 3));
    EXPECT_EQ(rangeOfText("e\u0301a", "e", anchored), absent);
    EXPECT_EQ(rangeOfText("ae\u0301", "É", anchored | backwards | caseInsensitive), at(1, 3));
    EXPECT_EQ(rangeOfText("ae\u0301", "\u0301", anchored | backwards), absent);
    EXPECT_EQ(rangeOfText("é", "éa", anchored), absent);
    EXPECT_EQ(rangeOfText("\u0301a", "a", anchored | diacriticInsensitive), absent) << "a mark is before it";
    EXPECT_EQ(rangeOfText("é", "aé", anchored | backwards), absent);
}

TEST(TextSearchTest, LongTextsAreSearchedToTheEnd) {
    // So that what is found, or a number or marks without end, lies across the parts that are folded at once.
    for (int length = 200; length < 330; ++length) {
        const auto text = repeated("ä", length) + "e\u0323\u0307nde" + repeated("ö", 2 * length);
        const auto offset = static_cast<std::size_t>(2 * length);
        EXPECT_EQ(rangeOfText(text, "Ẹ\u0307NDE", caseInsensitive), at(offset, 8));
        EXPECT_EQ(rangeOfText(text, "Ẹ\u0307NDE", caseInsensitive | backwards), at(offset, 8));
    }
    const auto digits = "é" + repeated("1", 40'000);
    EXPECT_EQ(rangeOfText(digits, "1", numeric), absent);
    EXPECT_EQ(rangeOfText(digits, digits.substr(2), numeric | backwards), at(2, 40'000));
    const auto marked = "e" + repeated("\u0301\u0323", 20'000);
    EXPECT_EQ(rangeOfText(marked, "e"), absent);
    EXPECT_EQ(rangeOfText(marked, "e" + repeated("\u0323", 20'000) + repeated("\u0301", 20'000)),
              at(0, marked.size()));
    EXPECT_EQ(rangeOfText(marked, "e", diacriticInsensitive | backwards), at(0, marked.size()));
}

TEST(TextSearchTest, LongTextsAreNeverCutWhereThatWouldMatter) {
    for (int length = 0; length < 300; ++length) {
        const auto rest = repeated("x", length);
        EXPECT_EQ(rangeOfText(rest + "कि" + rest, "क"), absent);
        EXPECT_EQ(rangeOfText(rest + "कि" + rest, "क", backwards), absent);
        EXPECT_EQ(rangeOfText(rest + "\u1100\u1161" + rest, "\u1100", backwards), absent);
        for (const auto* digit : {"1", "7"}) {
            EXPECT_EQ(rangeOfText(rest + "17" + rest, digit, numeric), absent);
            EXPECT_EQ(rangeOfText(rest + "17" + rest, digit, numeric | backwards), absent);
        }
    }
}

TEST(TextSearchTest, LongTextsBeginAndEndWithTheirParts) {
    const auto text = "é" + repeated("x", 600) + "é";
    for (std::size_t length = 2; length < 602; ++length) {
        EXPECT_EQ(rangeOfText(text, text.substr(0, length), anchored), at(0, length));
        EXPECT_EQ(rangeOfText(text, text.substr(text.size() - length), anchored | backwards),
                  at(text.size() - length, length));
    }
}

TEST(TextSearchTest, TextsMadeToBeSlowAreNot) {
    const auto text = repeated("a", 300'000) + "é";
    const auto run = repeated("a", 100'000);
    for (const auto options : {none, caseInsensitive, literal, backwards, literal | backwards}) {
        EXPECT_EQ(rangeOfText(text, run + "b", options), absent);
        EXPECT_EQ(rangeOfText(text, "b" + run, options), absent);
    }
    const auto letters = repeated("é", 100'000);
    EXPECT_EQ(rangeOfText(letters, letters.substr(100'001), literal), absent) << "from within a character on";
}

TEST(TextSearchTest, PatternsAreFound) {
    EXPECT_EQ(rangeOfText("año 2026!", "[0-9]+", regularExpression), at(5, 4));
    EXPECT_EQ(rangeOfText("año 2026!", "\\bA\\w+", regularExpression), absent);
    EXPECT_EQ(rangeOfText("año 2026!", "\\bA\\w+", regularExpression | caseInsensitive), at(0, 4));
    EXPECT_EQ(rangeOfText("a1b22", "[0-9]+", regularExpression | anchored), absent);
    EXPECT_EQ(rangeOfText("1b22", "[0-9]+", regularExpression | anchored), at(0, 1));
    EXPECT_EQ(rangeOfText("1b22", "[0-9]+", regularExpression | backwards), at(0, 1)) << "the first even so";
    EXPECT_EQ(rangeOfText("bbb", "a*", regularExpression), at(0, 0)) << "an empty part";
    EXPECT_EQ(rangeOfText("", "a*", regularExpression), at(0, 0)) << "an empty part";
    EXPECT_EQ(rangeOfText("e\u0301", "é", regularExpression), absent) << "patterns know no equivalence";
    EXPECT_EQ(rangeOfText("a\xFF\xFFz", "\\x{FFFD}", regularExpression), at(1, 1));
    EXPECT_EQ(rangeOfText("a\xE2\x82z", "a.z", regularExpression), at(0, 4));
}

TEST(TextSearchTest, PatternsThatAreNoneAreNotFound) {
    for (const auto* pattern : {"(", "[", "a{2", "*", "\\", "(?<n>a)\\k<m>", "a{999999999999}"})
        EXPECT_EQ(rangeOfText("(aa*\\[", pattern, regularExpression), absent) << pattern;
}

TEST(TextSearchTest, PatternsThatTakeTooLongAreNotFound) {
    const auto text = repeated("a", 60) + "!";
    EXPECT_EQ(rangeOfText(text, "(a|aa)+$", regularExpression), absent);
    EXPECT_EQ(rangeOfText(text, "(.*)*(.*)*x", regularExpression), absent);
    EXPECT_EQ(rangeOfText(repeated("ab", 2'000'000), "(a|b)*c", regularExpression), absent);
    EXPECT_EQ(rangeOfText(text, "a!", regularExpression), at(59, 2)) << "others are, before and after";
}

// With a little more than a million steps, which are quick.
TEST(TextSearchTest, PatternsAreFoundFarIntoLongTexts) {
    const auto text = repeated("abcdefghi ", 11'000) + "az";
    EXPECT_EQ(rangeOfText(text, "[a-z]+z", regularExpression), at(110'000, 2));
}

// Of many threads on few processors each waits longer than a search may take.
TEST(TextSearchTest, PatternsAreFoundHoweverBusyTheMachineIs) {
    constexpr int threadCount = 64;
    const auto text = repeated("abcdefghi ", 50'000) + "zz";
    std::latch start(threadCount);
    std::atomic<int> found = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            if (rangeOfText(text, "zz+", regularExpression)) ++found;
        });
    threads.clear();
    EXPECT_EQ(found, threadCount);
}

// Each would take minutes, and this case more time than it has.
TEST(TextSearchTest, PatternsThatTryEachPlaceInVainAreGivenUp) {
    const auto text = repeated("a", 1'000'000);
    const auto pattern = repeated("a", 100'000) + "b";
    EXPECT_EQ(rangeOfText(text, pattern, regularExpression), absent);
    EXPECT_EQ(rangeOfText(text, pattern, regularExpression | caseInsensitive), absent);
}
