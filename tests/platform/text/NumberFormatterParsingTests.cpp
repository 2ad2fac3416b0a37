// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>

using namespace vorlan;
using Style = NumberFormatter::Style;

namespace {

constexpr const char* locales[] = {"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",      "ar_EG",
                                   "hi_IN", "he_IL", "fa_IR", "th_TH", "en_US_POSIX"};

#ifdef NDEBUG
constexpr int rounds = 2'000;
#else
constexpr int rounds = 100;
#endif

NumberFormatter formatterOf(Style style, const char* locale = "en_US") {
    NumberFormatter formatter;
    formatter.setNumberStyle(style);
    formatter.setLocale(Locale(locale));
    return formatter;
}

std::optional<double> number(std::string_view text, Style style = Style::decimal,
                             const char* locale = "en_US") {
    return formatterOf(style, locale).number(text);
}

} // namespace

TEST(NumberFormatterParsingTest, ReadsWhatTheStyleWrites) {
    EXPECT_EQ(number("1235", Style::none), 1'235);
    EXPECT_EQ(number("1,234.5"), 1234.5);
    EXPECT_EQ(number("$1,234.50", Style::currency), 1234.5);
    EXPECT_EQ(number("50%", Style::percent), 0.5);
    EXPECT_EQ(number("1.2345E3", Style::scientific), 1234.5);
    EXPECT_EQ(number("one thousand two hundred thirty-four point five", Style::spellOut), 1234.5);
    EXPECT_EQ(number("1,234th", Style::ordinal), 1'234);
}

TEST(NumberFormatterParsingTest, ReadsTheLocalesForm) {
    EXPECT_EQ(number("1.234,5", Style::decimal, "de_DE"), 1234.5);
    EXPECT_EQ(number("1\u202F234,5", Style::decimal, "fr_FR"), 1234.5);
    EXPECT_EQ(number("1 234,5", Style::decimal, "fr_FR"), 1234.5); // as it is typed
    EXPECT_EQ(number("١٬٢٣٤٫٥", Style::decimal, "ar_EG"), 1234.5);
    EXPECT_EQ(number("1234", Style::decimal, "ar_EG"), 1'234);
    EXPECT_EQ(number("12,34,567", Style::decimal, "hi_IN"), 1'234'567);
    EXPECT_EQ(number("vingt-et-un", Style::spellOut, "fr_FR"), 21);
}

TEST(NumberFormatterParsingTest, ReadsTheWholeTextOrNothing) {
    for (const auto* text : {"", "x", "12x", "x12", "1.2.3", "1,234.5 apples", "--5", "1,2,3", "0x10", "."})
        EXPECT_EQ(number(text), std::nullopt) << text;
    EXPECT_EQ(number("1,234.5", Style::decimal, "de_DE"), std::nullopt);
    EXPECT_EQ(number("50", Style::percent), std::nullopt);
    EXPECT_EQ(number("€5", Style::currency), std::nullopt);
    EXPECT_EQ(number("one zebra", Style::spellOut), std::nullopt);
}

TEST(NumberFormatterParsingTest, SpaceAroundANumberDoesNotMatter) {
    EXPECT_EQ(number(" 12"), 12);
    EXPECT_EQ(number("12\t\n"), 12);
    EXPECT_EQ(number("   "), std::nullopt);
}

TEST(NumberFormatterParsingTest, ReadsSignsAndFractions) {
    EXPECT_EQ(number("-5"), -5);
    EXPECT_EQ(number("\u22125"), -5); // the typographic sign
    EXPECT_EQ(number(".5"), 0.5);
    const auto zero = number("-0");
    ASSERT_TRUE(zero);
    EXPECT_TRUE(std::signbit(*zero));
}

TEST(NumberFormatterParsingTest, ReadsInfinitiesAndWhatIsNoNumber) {
    EXPECT_EQ(number("-∞"), -std::numeric_limits<double>::infinity());
    const auto nothing = number("NaN");
    ASSERT_TRUE(nothing);
    EXPECT_TRUE(std::isnan(*nothing));
}

TEST(NumberFormatterParsingTest, ReadsTheNearestNumber) {
    EXPECT_EQ(number("9007199254740993"), 9'007'199'254'740'992); // halfway, to the even one
    EXPECT_EQ(number("0.1"), 0.1);
    EXPECT_EQ(number("99999999999999999999999"), 1e23 - 8'388'608);
    EXPECT_EQ(number("1E400"), std::numeric_limits<double>::infinity());
}

// ICU itself reads this as 2001.
TEST(NumberFormatterParsingTest, WordsAreReadAsTheyAreWritten) {
    EXPECT_EQ(number("twenty-one", Style::spellOut), 21);
    EXPECT_EQ(number("twenty one", Style::spellOut), std::nullopt);
    EXPECT_EQ(number("3rd", Style::ordinal), 3);
    EXPECT_EQ(number("3th", Style::ordinal), std::nullopt);
    EXPECT_EQ(number("1.234.", Style::ordinal, "de_DE"), 1'234);
}

TEST(NumberFormatterParsingTest, IllFormedTextIsNoNumber) {
    for (const auto style : {Style::decimal, Style::spellOut}) {
        EXPECT_EQ(number("12\xFF", style), std::nullopt);
        EXPECT_EQ(number("\xC3", style), std::nullopt);
        EXPECT_EQ(number(std::string_view("1\0", 2), style), std::nullopt);
    }
}

TEST(NumberFormatterParsingTest, TextsThatAreFarTooLongAreNoNumbers) {
    EXPECT_EQ(number(std::string(9'000, '0') + "7"), 7);
    EXPECT_EQ(number(std::string(50'000'000, '1')), std::nullopt);
}

TEST(NumberFormatterParsingTest, WhatWasWrittenIsReadAgain) {
    for (const auto* locale : locales) {
        for (const auto style : {Style::none, Style::decimal, Style::currency, Style::percent,
                                 Style::scientific, Style::spellOut, Style::ordinal}) {
            SCOPED_TRACE(std::string(locale) + ", style " + std::to_string(static_cast<int>(style)));
            const auto formatter = formatterOf(style, locale);
            for (const double value : {0.0, 1.0, -2.0, 42.0, -1'234.0, 1'234'567.0}) {
                const auto text = formatter.string(value);
                EXPECT_EQ(formatter.number(text), value) << text;
            }
        }
    }
}

TEST(NumberFormatterParsingTest, DoublesComeBackToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (const auto* locale : locales) {
        SCOPED_TRACE(locale);
        auto plain = formatterOf(Style::decimal, locale);
        plain.setMaximumFractionDigits(340);
        const auto scientific = formatterOf(Style::scientific, locale);
        for (int i = 0; i < rounds; ++i) {
            const auto value = std::bit_cast<double>(random());
            if (!std::isfinite(value)) continue;
            ASSERT_EQ(plain.number(plain.string(value)), value);
            if (std::string_view(locale) != "en_US_POSIX") { // which shows six digits
                ASSERT_EQ(scientific.number(scientific.string(value)), value);
            }
        }
    }
}
