// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/json/JSONCorpus.h"

#include <array>
#include <string>
#include <string_view>

namespace vorlan::tests {

using namespace std::string_view_literals;

std::vector<JSONText> textTexts() {
    return {
        accepted("EmptyText", R"("")", ""),
        accepted("Letter", R"("a")", "a"),
        accepted("BlankText", R"(" ")", " "),
        accepted("Sentence", R"("The quick brown fox.")", "The quick brown fox."),
        accepted("LongText", '"' + repeated("abcdefg ", 4096) + '"', repeated("abcdefg ", 4096)),
        accepted("Apostrophe", R"("it's")", "it's"),
        accepted("SlashAsItStands", R"("a/b")", "a/b"),
        accepted("DeleteCharacter", "\"\x7F\"", "\x7F"),
        accepted("TwoBytes", "\"\xC3\xA9\"", "é"),
        accepted("ThreeBytes", "\"\xE2\x82\xAC\"", "€"),
        accepted("FourBytes", "\"\xF0\x9F\x98\x80\"", "😀"),
        accepted("LineSeparators", "\"\xE2\x80\xA8\xE2\x80\xA9\"", "\xE2\x80\xA8\xE2\x80\xA9"),
        accepted("ControlCharactersOfTheSecondBlock", "\"\xC2\x80\xC2\x85\xC2\x9F\"",
                 "\xC2\x80\xC2\x85\xC2\x9F"),
        accepted("LastBeforeSurrogates", "\"\xED\x9F\xBF\"", "\xED\x9F\xBF"),
        accepted("FirstAfterSurrogates", "\"\xEE\x80\x80\"", "\xEE\x80\x80"),
        accepted("NonCharacter", "\"\xEF\xBF\xBF\"", "\xEF\xBF\xBF"),
        accepted("NonCharacterOfAnotherPlane", "\"\xF0\x9F\xBF\xBE\"", "\xF0\x9F\xBF\xBE"),
        accepted("LastOfAll", "\"\xF4\x8F\xBF\xBF\"", "\xF4\x8F\xBF\xBF"),
        accepted("ByteOrderMarkInAText", "\"\xEF\xBB\xBF\"", "\xEF\xBB\xBF"),
        accepted("ReplacementCharacter", "\"\xEF\xBF\xBD\"", "\xEF\xBF\xBD"),
        accepted("CombiningCharacter", "\"e\xCC\x81\"", "e\xCC\x81"),
        accepted("BracketsInAText", R"("[{\"a\":1}],")", R"([{"a":1}],)"),
        accepted("EscapedQuote", R"("\"")", "\""),
        accepted("EscapedBackslash", R"("\\")", "\\"),
        accepted("EscapedSlash", R"("\/")", "/"),
        accepted("EscapedBackspace", R"("\b")", "\b"),
        accepted("EscapedFormFeed", R"("\f")", "\f"),
        accepted("EscapedLineFeed", R"("\n")", "\n"),
        accepted("EscapedCarriageReturn", R"("\r")", "\r"),
        accepted("EscapedTab", R"("\t")", "\t"),
        accepted("AllShortEscapes", R"("a\"\\\/\b\f\n\r\tz")", "a\"\\/\b\f\n\r\tz"),
        accepted("EscapedBackslashBeforeN", R"("\\n")", "\\n"),
        accepted("EscapedBackslashBeforeU", R"("\\u0041")", "\\u0041"),
        accepted("ManyEscapedBackslashes", '"' + repeated(R"(\\)", 64) + '"', repeated("\\", 64)),
        accepted("NumberedEscape", R"("\u0041")", "A"),
        accepted("NumberedEscapeSmallDigits", R"("\u00e9")", "é"),
        accepted("NumberedEscapeCapitalDigits", R"("\u00E9")", "é"),
        accepted("NumberedEscapeMixedDigits", R"("\uFfFd")", "\xEF\xBF\xBD"),
        accepted("NumberedEscapeOfThreeBytes", R"("\u20AC")", "€"),
        accepted("NumberedEscapeOfAQuote", R"("\u0022")", "\""),
        accepted("NumberedEscapeOfABackslash", R"("\u005C")", "\\"),
        accepted("NumberedEscapeOfAControlCharacter", R"("\u001f")", "\x1F"),
        accepted("NumberedEscapeOfNull", R"("\u0000")", "\0"sv),
        accepted("NumberedEscapeThenDigits", R"("\u00411")", "A1"),
        accepted("NumberedEscapeOfANonCharacter", R"("\uFFFF")", "\xEF\xBF\xBF"),
        accepted("NumberedEscapeBeforeSurrogates", R"("\uD7FF")", "\xED\x9F\xBF"),
        accepted("NumberedEscapeAfterSurrogates", R"("\uE000")", "\xEE\x80\x80"),
        accepted("NumberedEscapeOfAByteOrderMark", R"("\uFEFF")", "\xEF\xBB\xBF"),
        accepted("SurrogatePair", R"("\uD83D\uDE00")", "😀"),
        accepted("SurrogatePairSmallDigits", R"("\ud83d\ude00")", "😀"),
        accepted("FirstSurrogatePair", R"("\uD800\uDC00")", "\xF0\x90\x80\x80"),
        accepted("LastSurrogatePair", R"("\uDBFF\uDFFF")", "\xF4\x8F\xBF\xBF"),
        accepted("SurrogatePairsTogether", R"("\uD83D\uDE00\uD83D\uDE01")", "😀😁"),
        leftOpen("FirstSurrogateAlone", R"("\uD800")", Outcome::malformed),
        leftOpen("FirstSurrogateThenLetter", R"("\uD800a")", Outcome::malformed),
        leftOpen("FirstSurrogateThenEscape", R"("\uD800\n")", Outcome::malformed),
        leftOpen("FirstSurrogateThenNumberedEscape", R"("\uD800\u0041")", Outcome::malformed),
        leftOpen("TwoFirstSurrogates", R"("\uD800\uD800")", Outcome::malformed),
        leftOpen("FirstSurrogateThenPair", R"("\uD800\uD83D\uDE00")", Outcome::malformed),
        leftOpen("SecondSurrogateAlone", R"("\uDC00")", Outcome::malformed),
        leftOpen("SecondSurrogateAtTheEnd", R"("abc\uDFFF")", Outcome::malformed),
        leftOpen("SurrogatesInTheWrongOrder", R"("\uDE00\uD83D")", Outcome::malformed),
        leftOpen("PairThenSecondSurrogate", R"("\uD83D\uDE00\uDE00")", Outcome::malformed),
        leftOpen("FirstSurrogateThenEscapedBackslash", R"("\uD800\\uDC00")", Outcome::malformed),
        rejected("FirstSurrogateThenHalfAnEscape", R"("\uD800\u")"),
        rejected("FirstSurrogateThenThreeDigits", R"("\uD800\uDC0")"),
        rejected("QuoteAlone", R"(")"),
        rejected("TextWithoutAnEnd", R"("abc)"),
        rejected("TextWithoutABeginning", R"(abc")"),
        rejected("TextWithEscapedEnd", R"("abc\")"),
        rejected("TextThenQuote", R"("abc"")"),
        rejected("TextInText", R"("a"b"c")"),
        rejected("TwoTexts", R"("a" "b")"),
        rejected("TwoTextsTogether", R"("a""b")"),
        rejected("SingleQuotes", "'a'"),
        rejected("TypographicQuotes", "\xE2\x80\x9C"
                                      "a\xE2\x80\x9D"),
        rejected("Backquotes", "`a`"),
        rejected("WithoutQuotes", "a"),
        rejected("EscapeA", R"("\a")"),
        rejected("EscapeV", R"("\v")"),
        rejected("EscapeE", R"("\e")"),
        rejected("EscapeZero", R"("\0")"),
        rejected("EscapeOctal", R"("\101")"),
        rejected("EscapeX", R"("\x41")"),
        rejected("EscapeApostrophe", R"("\'")"),
        rejected("EscapeBlank", R"("\ ")"),
        rejected("EscapeCapitalN", R"("\N")"),
        rejected("EscapeCapitalU", R"("\U0041")"),
        rejected("EscapeCapitalULong", R"("\U0001F600")"),
        rejected("EscapeBraces", R"("\u{41}")"),
        rejected("EscapedLetterOfTwoBytes", "\"\\\xC3\xA9\""),
        rejected("EscapedEmoji", "\"\\\xF0\x9F\x98\x80\""),
        rejected("EscapedLineEnd", "\"\\\n\""),
        rejected("EscapedNullByte", "\"\\\0\""sv),
        rejected("EscapedTabByte", "\"\\\t\""),
        rejected("OddBackslashes", R"("\\\")"),
        rejected("NumberedEscapeWithoutDigits", R"("\u")"),
        rejected("NumberedEscapeOneDigit", R"("\u1")"),
        rejected("NumberedEscapeTwoDigits", R"("\u12")"),
        rejected("NumberedEscapeThreeDigits", R"("\u123")"),
        rejected("NumberedEscapeNoDigit", R"("\uG000")"),
        rejected("NumberedEscapeNoLastDigit", R"("\u000G")"),
        rejected("NumberedEscapeBlank", R"("\u 041")"),
        rejected("NumberedEscapePlus", R"("\u+041")"),
        rejected("NumberedEscapeMinus", R"("\u-041")"),
        rejected("NumberedEscapeHexadecimalMark", R"("\u0x41")"),
        rejected("NumberedEscapeFullWidthDigit", "\"\\u004\xEF\xBC\x91\""),
        rejected("NumberedEscapeCutOff", R"("\u004)"),
        rejected("EscapeCutOff", R"("\)"),
        rejected("EscapeOutsideOfAText", R"(\n)"),
        rejected("NumberedEscapeOutsideOfAText", R"(\u0041)"),
        rejected("EscapedQuotesOutside", R"(\"a\")"),
        rejected("TripleQuotes", R"("""a""")"),
        rejected("PrefixedText", R"(u"a")"),
        rejected("ConcatenatedTexts", R"("a"+"b")"),
    };
}

// Each of the 32 control characters as it stands (which only an escape may), and as an escape.
std::vector<JSONText> controlCharacterTexts() {
    std::vector<JSONText> texts;
    for (int code = 0; code < 32; ++code) {
        const std::string character(1, static_cast<char>(code));
        texts.push_back(rejected("ControlCharacter" + std::to_string(code), "\"a" + character + "b\""));
        const std::string digits = {"01"[code / 16], "0123456789abcdef"[code % 16]};
        texts.push_back(accepted("EscapedControlCharacter" + std::to_string(code),
                                 "\"a\\u00" + digits + "b\"", "a" + character + "b"));
    }
    return texts;
}

} // namespace vorlan::tests
