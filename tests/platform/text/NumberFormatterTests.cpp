// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NumberFormatter.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;
using Style = NumberFormatter::Style;
using Mode = NumberFormatter::RoundingMode;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

NumberFormatter formatterOf(Style style, const char* locale = "en_US") {
    NumberFormatter formatter;
    formatter.setNumberStyle(style);
    formatter.setLocale(Locale(locale));
    return formatter;
}

NumberFormatter withDigits(int least, int most, Mode mode = Mode::halfEven) {
    auto formatter = formatterOf(Style::decimal);
    formatter.setMinimumFractionDigits(least);
    formatter.setMaximumFractionDigits(most);
    formatter.setRoundingMode(mode);
    return formatter;
}

std::string text(Style style, double number, const char* locale = "en_US") {
    return formatterOf(style, locale).string(number);
}

} // namespace

TEST(NumberFormatterTest, StylesWriteNumbersTheirWay) {
    EXPECT_EQ(text(Style::none, 1234.6), "1235");
    EXPECT_EQ(text(Style::decimal, 1234.5), "1,234.5");
    EXPECT_EQ(text(Style::currency, 1234.5), "$1,234.50");
    EXPECT_EQ(text(Style::percent, 0.5), "50%");
    EXPECT_EQ(text(Style::scientific, 1234.5), "1.2345E3");
    EXPECT_EQ(text(Style::spellOut, 1234.5), "one thousand two hundred thirty-four point five");
    EXPECT_EQ(text(Style::ordinal, 3), "3rd");
}

TEST(NumberFormatterTest, BeginsAsAWholeNumber) {
    const NumberFormatter formatter;
    EXPECT_EQ(formatter.numberStyle(), Style::none);
    EXPECT_EQ(formatter.minimumFractionDigits(), 0);
    EXPECT_EQ(formatter.maximumFractionDigits(), 0);
    EXPECT_EQ(formatter.roundingMode(), Mode::halfEven);
    EXPECT_FALSE(formatter.usesGroupingSeparator());
}

TEST(NumberFormatterTest, DigitsAreAtFirstTheStyles) {
    struct Expected {
        Style style;
        int least, most;
        bool grouping;
    };
    for (const auto& [style, least, most, grouping] :
         {Expected{Style::none, 0, 0, false}, Expected{Style::decimal, 0, 3, true},
          Expected{Style::currency, 2, 2, true}, Expected{Style::percent, 0, 0, true},
          Expected{Style::scientific, 0, 340, false}, Expected{Style::spellOut, 0, 340, false},
          Expected{Style::ordinal, 0, 0, true}}) {
        SCOPED_TRACE(static_cast<int>(style));
        const auto formatter = formatterOf(style);
        EXPECT_EQ(formatter.minimumFractionDigits(), least);
        EXPECT_EQ(formatter.maximumFractionDigits(), most);
        EXPECT_EQ(formatter.usesGroupingSeparator(), grouping);
    }
    EXPECT_EQ(formatterOf(Style::currency, "ja_JP").maximumFractionDigits(), 0); // there are no smaller coins
}

TEST(NumberFormatterTest, WritesAsTheLocaleDoes) {
    EXPECT_EQ(text(Style::decimal, 1234.5, "en_GB"), "1,234.5");
    EXPECT_EQ(text(Style::decimal, 1234.5, "de_DE"), "1.234,5");
    EXPECT_EQ(text(Style::decimal, 1234.5, "fr_FR"), "1\u202F234,5");
    EXPECT_EQ(text(Style::decimal, 1234.5, "ar_EG"), "١٬٢٣٤٫٥");
    EXPECT_EQ(text(Style::decimal, 1234.5, "fa_IR"), "۱٬۲۳۴٫۵");
    EXPECT_EQ(text(Style::decimal, 1'234'567, "hi_IN"), "12,34,567");
    EXPECT_EQ(text(Style::decimal, -1234.5, "he_IL"), "\u200E-1,234.5");
    EXPECT_EQ(text(Style::decimal, 1234.5, "th_TH"), "1,234.5");
    EXPECT_EQ(text(Style::currency, 1234.5, "de_DE"), "1.234,50\u00A0€");
    EXPECT_EQ(text(Style::currency, 1234.5, "ja_JP"), "￥1,234");
    EXPECT_EQ(text(Style::percent, 0.5, "de_DE"), "50\u00A0%");
    EXPECT_EQ(text(Style::decimal, 12.5, "th_TH@numbers=roman"), "12.5"); // which have no fractions
}

TEST(NumberFormatterTest, UnknownLocalesHaveTextsToo) {
    EXPECT_NE(text(Style::none, 1234, "xx"), ""); // as the process was started
    for (const auto* locale : {"", "en@numbers=xxxx", "\xFF\xFE"}) {
        EXPECT_EQ(text(Style::none, 1234, locale), "1234") << locale;
        EXPECT_EQ(text(Style::percent, 0.5, locale), "50%") << locale;
        EXPECT_EQ(text(Style::spellOut, 3, locale), "three") << locale;
        EXPECT_EQ(text(Style::ordinal, 3, locale), "3rd") << locale;
    }
}

TEST(NumberFormatterTest, LocalesWithoutLanguageWriteAsPrograms) {
    auto formatter = formatterOf(Style::decimal, "en_US_POSIX");
    formatter.setMinimumFractionDigits(2);
    formatter.setMaximumFractionDigits(2);
    EXPECT_EQ(formatter.string(1234.5), "1234.50");
    EXPECT_EQ(text(Style::decimal, 1234.5, "C"), "1234.5");
}

TEST(NumberFormatterTest, WritesOtherLanguagesInWords) {
    EXPECT_EQ(text(Style::spellOut, 21, "fr_FR"), "vingt-et-un");
    EXPECT_EQ(text(Style::spellOut, 1.5, "ja_JP"), "一・五");
    EXPECT_EQ(text(Style::ordinal, 3, "de_DE"), "3.");
    EXPECT_EQ(text(Style::ordinal, 1, "fr_FR"), "1er");
}

TEST(NumberFormatterTest, RoundsByTheShortestDigits) {
    const auto halfEven = withDigits(2, 2);
    EXPECT_EQ(halfEven.string(1.015), "1.02");
    EXPECT_EQ(halfEven.string(1.005), "1.00");
    EXPECT_EQ(halfEven.string(0.005), "0.00");
    EXPECT_EQ(halfEven.string(2.675), "2.68");
    EXPECT_EQ(withDigits(2, 2, Mode::halfUp).string(1.005), "1.01");
}

TEST(NumberFormatterTest, RoundsAsItIsTold) {
    constexpr std::array numbers{1.25, 1.21, -1.25, -1.21, 1.35};
    struct Expected {
        Mode mode;
        std::array<const char*, 5> texts;
    };
    for (const auto& [mode, texts] : {Expected{Mode::ceiling, {"1.3", "1.3", "-1.2", "-1.2", "1.4"}},
                                      Expected{Mode::floor, {"1.2", "1.2", "-1.3", "-1.3", "1.3"}},
                                      Expected{Mode::down, {"1.2", "1.2", "-1.2", "-1.2", "1.3"}},
                                      Expected{Mode::up, {"1.3", "1.3", "-1.3", "-1.3", "1.4"}},
                                      Expected{Mode::halfEven, {"1.2", "1.2", "-1.2", "-1.2", "1.4"}},
                                      Expected{Mode::halfDown, {"1.2", "1.2", "-1.2", "-1.2", "1.3"}},
                                      Expected{Mode::halfUp, {"1.3", "1.2", "-1.3", "-1.2", "1.4"}}}) {
        SCOPED_TRACE(static_cast<int>(mode));
        const auto formatter = withDigits(1, 1, mode);
        EXPECT_EQ(formatter.roundingMode(), mode);
        for (std::size_t at = 0; at < numbers.size(); ++at)
            EXPECT_EQ(formatter.string(numbers[at]), texts[at]);
    }
}

TEST(NumberFormatterTest, ModesHaveThePlatformsNumbers) {
    EXPECT_EQ(static_cast<int>(Mode::ceiling), 0);
    EXPECT_EQ(static_cast<int>(Mode::halfEven), 4);
    EXPECT_EQ(static_cast<int>(Mode::halfUp), 6);
}

TEST(NumberFormatterTest, ShowsTheDigitsThatAreAskedFor) {
    EXPECT_EQ(withDigits(2, 4).string(1.5), "1.50");
    EXPECT_EQ(withDigits(2, 4).string(1.23456), "1.2346");
    EXPECT_EQ(withDigits(0, 0).string(1.5), "2");
    EXPECT_EQ(withDigits(0, 20).string(0.1), "0.1");
    EXPECT_EQ(withDigits(20, 20).string(0.1), "0.10000000000000000000");
}

TEST(NumberFormatterTest, SettingOneBoundBeyondTheOtherSetsBoth) {
    auto formatter = withDigits(1, 2);
    formatter.setMinimumFractionDigits(4);
    EXPECT_EQ(formatter.maximumFractionDigits(), 4);
    EXPECT_EQ(formatter.string(1.5), "1.5000");
    formatter.setMaximumFractionDigits(0);
    EXPECT_EQ(formatter.minimumFractionDigits(), 0);
    EXPECT_EQ(formatter.string(1.4), "1");
}

TEST(NumberFormatterTest, TheStyleGivesWayToOneBoundAlone) {
    auto formatter = formatterOf(Style::decimal);
    formatter.setMinimumFractionDigits(5);
    EXPECT_EQ(formatter.maximumFractionDigits(), 5);
    EXPECT_EQ(formatter.string(0.5), "0.50000");
    auto money = formatterOf(Style::currency);
    money.setMaximumFractionDigits(0);
    EXPECT_EQ(money.minimumFractionDigits(), 0);
    EXPECT_EQ(money.string(1234.5), "$1,234");
}

TEST(NumberFormatterTest, CountsOfDigitsStayWithinWhatNumbersHave) {
    auto formatter = formatterOf(Style::decimal);
    formatter.setMaximumFractionDigits(-3);
    EXPECT_EQ(formatter.maximumFractionDigits(), 0);
    formatter.setMaximumFractionDigits(1'000'000);
    EXPECT_EQ(formatter.maximumFractionDigits(), 340);
    constexpr double smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(formatter.string(smallest), "0." + std::string(323, '0') + "5");
}

TEST(NumberFormatterTest, DigitsSetByHandStayWhenTheStyleChanges) {
    auto formatter = withDigits(1, 1);
    formatter.setNumberStyle(Style::percent);
    EXPECT_EQ(formatter.string(0.5), "50.0%");
    formatter.setNumberStyle(Style::scientific);
    EXPECT_EQ(formatter.string(12'345), "1.2E4");
    formatter.setNumberStyle(Style::none);
    EXPECT_EQ(formatter.string(1234.5), "1234.5");
}

TEST(NumberFormatterTest, ScientificDigitsAreThoseBehindThePoint) {
    auto formatter = formatterOf(Style::scientific);
    formatter.setMinimumFractionDigits(2);
    EXPECT_EQ(formatter.string(1'234'567), "1.234567E6");
    EXPECT_EQ(formatter.string(1'000), "1.00E3");
    EXPECT_EQ(formatter.string(0), "0.00E0");
    formatter.setMaximumFractionDigits(3);
    EXPECT_EQ(formatter.string(1'234'567), "1.235E6");
    EXPECT_EQ(text(Style::scientific, 0.1 + 0.2), "3.0000000000000004E-1"); // all that there are
}

TEST(NumberFormatterTest, GroupsWhenItIsTold) {
    auto decimal = formatterOf(Style::decimal);
    decimal.setUsesGroupingSeparator(false);
    EXPECT_EQ(decimal.string(1234.5), "1234.5");
    EXPECT_FALSE(decimal.usesGroupingSeparator());
    auto whole = formatterOf(Style::none);
    whole.setUsesGroupingSeparator(true);
    EXPECT_EQ(whole.string(1'234'567), "1,234,567");
    EXPECT_TRUE(whole.usesGroupingSeparator());
}

TEST(NumberFormatterTest, WritesIntegersExactly) {
    const auto decimal = formatterOf(Style::decimal);
    EXPECT_EQ(decimal.string(std::numeric_limits<std::int64_t>::max()), "9,223,372,036,854,775,807");
    EXPECT_EQ(decimal.string(std::numeric_limits<std::int64_t>::min()), "-9,223,372,036,854,775,808");
    EXPECT_EQ(decimal.string(42), "42");
    EXPECT_EQ(formatterOf(Style::none).string(std::numeric_limits<std::int64_t>::max()),
              "9223372036854775807");
    EXPECT_EQ(formatterOf(Style::ordinal).string(std::numeric_limits<std::int64_t>::max()),
              "9,223,372,036,854,775,807th");
}

TEST(NumberFormatterTest, WritesFloatsByTheirOwnDigits) {
    const auto all = withDigits(0, 20);
    EXPECT_EQ(all.string(0.1F), "0.1");
    EXPECT_EQ(all.string(static_cast<double>(0.1F)), "0.10000000149011612");
    EXPECT_EQ(all.string(16'777'216.0F), "16,777,216");
    EXPECT_EQ(withDigits(2, 2).string(1.005F), "1.00");
    EXPECT_EQ(formatterOf(Style::spellOut).string(0.1F), "zero point one");
    EXPECT_EQ(all.string(-std::numeric_limits<float>::infinity()), "-∞");
}

TEST(NumberFormatterTest, WritesWhatIsNoNumber) {
    EXPECT_EQ(text(Style::decimal, infinity), "∞");
    EXPECT_EQ(text(Style::decimal, -infinity), "-∞");
    EXPECT_EQ(text(Style::decimal, std::nan("")), "NaN");
    for (const auto style : {Style::spellOut, Style::ordinal}) {
        EXPECT_EQ(text(style, -infinity, "fr_FR"), "-∞");
        EXPECT_EQ(text(style, std::nan(""), "fr_FR"), "NaN");
    }
    EXPECT_EQ(text(Style::decimal, -0.0), "-0");
}

TEST(NumberFormatterTest, NumbersTooLargeForWordsAreWrittenInDigits) {
    EXPECT_EQ(text(Style::spellOut, 1e15), "one quadrillion");
    EXPECT_EQ(text(Style::spellOut, 1e17), "one hundred quadrillion");
    EXPECT_EQ(text(Style::spellOut, 1e20), "100,000,000,000,000,000,000");
    EXPECT_EQ(text(Style::ordinal, -1e20), "-100,000,000,000,000,000,000");
    EXPECT_EQ(text(Style::spellOut, -0x1p63), "-9,223,372,036,854,776,000"); // by the shortest digits
}

TEST(NumberFormatterTest, OrdinalsAreWholeNumbers) {
    EXPECT_EQ(text(Style::ordinal, 3.4), "3rd");
    EXPECT_EQ(text(Style::ordinal, 3.5), "4th");
    EXPECT_EQ(text(Style::ordinal, -0.5), "0th");
    EXPECT_EQ(text(Style::ordinal, -2), "\u22122nd");
}

TEST(NumberFormatterTest, LongOrdinalsGoByTheirLastDigits) {
    const auto ordinal = formatterOf(Style::ordinal);
    EXPECT_EQ(ordinal.string(std::int64_t{4'294'967'297}), "4,294,967,297th"); // 2^32 + 1
    EXPECT_EQ(ordinal.string(std::int64_t{4'294'967'301}), "4,294,967,301st");
    EXPECT_EQ(ordinal.string(std::int64_t{-3'000'000'022}), "\u22123,000,000,022nd");
    EXPECT_EQ(ordinal.string(std::numeric_limits<std::int64_t>::min()), "\u22129,223,372,036,854,775,808th");
    EXPECT_EQ(ordinal.string(1e15), "1,000,000,000,000,000th");
    EXPECT_EQ(formatterOf(Style::ordinal, "de_DE").string(std::int64_t{4'294'967'297}), "4.294.967.297.");
}

TEST(NumberFormatterTest, WordsAreRoundedToo) {
    auto formatter = formatterOf(Style::spellOut);
    formatter.setMaximumFractionDigits(1);
    EXPECT_EQ(formatter.string(1.25), "one point two");
    formatter.setRoundingMode(Mode::up);
    EXPECT_EQ(formatter.string(1.25), "one point three");
    EXPECT_EQ(formatter.string(1.95), "two");
}

TEST(NumberFormatterTest, CopiesAreTheSameFormatter) {
    NumberFormatter formatter = formatterOf(Style::decimal);
    const auto same = formatter;
    const auto moved = std::move(formatter);
    EXPECT_EQ(same, moved);
    formatter.setNumberStyle(Style::percent);
    EXPECT_EQ(same.string(0.5), "50%");
    EXPECT_EQ(moved.string(0.5), "50%");
}

TEST(NumberFormatterTest, CopyMakesAFormatterOfItsOwn) {
    NumberFormatter formatter = withDigits(2, 2);
    const auto other = formatter.copy();
    EXPECT_NE(other, formatter);
    formatter.setNumberStyle(Style::percent);
    formatter.setMaximumFractionDigits(0);
    EXPECT_EQ(other.string(0.5), "0.50");
    EXPECT_EQ(other.locale(), Locale("en_US"));
}

TEST(NumberFormatterTest, FollowsTheUserWhereNoLocaleIsSet) {
    NumberFormatter formatter;
    formatter.setNumberStyle(Style::currency);
    {
        const vorlan::testing::UserRegion german({.locale = "de_DE"});
        EXPECT_EQ(formatter.string(1.5), "1,50\u00A0€");
        EXPECT_EQ(formatter.locale(), Locale("de_DE"));
    }
    const vorlan::testing::UserRegion japanese({.locale = "ja_JP"});
    EXPECT_EQ(formatter.string(1.5), "￥2");
    EXPECT_EQ(formatter.maximumFractionDigits(), 0);
    formatter.setLocale(Locale("en_US"));
    EXPECT_EQ(formatter.string(1.5), "$1.50");
    formatter.setLocale(std::nullopt);
    EXPECT_EQ(formatter.string(1.5), "￥2");
}

TEST(NumberFormatterTest, ManySettingsInTurnAreEachInForce) {
    auto formatter = formatterOf(Style::decimal);
    for (int digits = 0; digits < 300; ++digits) { // more than are kept ready
        formatter.setMinimumFractionDigits(digits);
        formatter.setMaximumFractionDigits(digits);
        const auto zeros = std::string(static_cast<std::size_t>(digits), '0');
        ASSERT_EQ(formatter.string(7), digits == 0 ? "7" : "7." + zeros);
    }
}
