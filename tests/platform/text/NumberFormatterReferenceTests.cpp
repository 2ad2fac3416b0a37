// SPDX-License-Identifier: Apache-2.0
// Numbers as ICU's own formatters write them.

#include "platform/text/UTF16.h"

#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unicode/unum.h>
#include <utility>
#include <vector>

using namespace vorlan;
using Style = NumberFormatter::Style;

namespace {

constexpr std::array locales{"en_US", "en_GB", "de_DE", "de_CH", "fr_FR", "es_ES",      "ja_JP",
                             "ar_EG", "hi_IN", "he_IL", "fa_IR", "th_TH", "en_US_POSIX"};
constexpr std::array styles{
    std::pair(Style::decimal, UNUM_DECIMAL), std::pair(Style::currency, UNUM_CURRENCY),
    std::pair(Style::percent, UNUM_PERCENT), std::pair(Style::scientific, UNUM_SCIENTIFIC)};

// ICU's formatter, set up by its C interface.
class Reference {
public:
    Reference(UNumberFormatStyle style, const char* locale) {
        UErrorCode status = U_ZERO_ERROR;
        format_.reset(unum_open(style, nullptr, 0, locale, nullptr, &status));
        EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    }

    void set(UNumberFormatAttribute attribute, int value) {
        unum_setAttribute(format_.get(), attribute, value);
    }

    std::string string(double number) const {
        return text([&](UChar* to, std::int32_t size, UErrorCode* status) {
            return unum_formatDouble(format_.get(), number, to, size, nullptr, status);
        });
    }
    std::string string(std::int64_t number) const {
        return text([&](UChar* to, std::int32_t size, UErrorCode* status) {
            return unum_formatInt64(format_.get(), number, to, size, nullptr, status);
        });
    }

private:
    template <class Format>
    static std::string text(Format&& format) {
        std::array<UChar, 1'000> buffer;
        UErrorCode status = U_ZERO_ERROR;
        const auto length = format(buffer.data(), static_cast<std::int32_t>(buffer.size()), &status);
        EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
        return utf8FromUTF16(icu::UnicodeString(buffer.data(), length));
    }

    struct Close {
        void operator()(UNumberFormat* format) const { unum_close(format); }
    };
    std::unique_ptr<UNumberFormat, Close> format_;
};

NumberFormatter formatterOf(Style style, const char* locale) {
    NumberFormatter formatter;
    formatter.setNumberStyle(style);
    formatter.setLocale(Locale(locale));
    return formatter;
}

// Of all sizes, many of them with few decimal digits, where rounding has its halves.
std::vector<double> numbersFrom(std::mt19937_64& random) {
    std::vector<double> numbers{0, -0.0, 0.005, 1.005, 1.015, 2.675, 0.5, 1.5, 2.5, 999.9995, 1e21, 5e-324};
    for (int i = 0; i < 20; ++i) numbers.push_back(static_cast<double>(random() % 2'000'000) / 1'000 - 1'000);
    for (int i = 0; i < 5; ++i) numbers.push_back(std::bit_cast<double>(random() & 0xBFFF'FFFF'FFFF'FFFF));
    return numbers;
}

} // namespace

TEST(NumberFormatterReferenceTest, StylesWriteAsByICU) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (const auto* locale : locales) {
        for (const auto& [style, icuStyle] : styles) {
            SCOPED_TRACE(std::string(locale) + ", style " + std::to_string(static_cast<int>(style)));
            const auto formatter = formatterOf(style, locale);
            const Reference reference(icuStyle, locale);
            for (const double number : numbersFrom(random))
                ASSERT_EQ(formatter.string(number), reference.string(number));
            const auto integer = static_cast<std::int64_t>(random());
            ASSERT_EQ(formatter.string(integer), reference.string(integer));
        }
    }
}

TEST(NumberFormatterReferenceTest, DigitsAndRoundingAreAsByICU) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (const auto* locale : locales) {
        auto formatter = formatterOf(Style::decimal, locale);
        Reference reference(UNUM_DECIMAL, locale);
        for (int mode = 0; mode < 7; ++mode) {
            SCOPED_TRACE(std::string(locale) + ", mode " + std::to_string(mode));
            const int least = static_cast<int>(random() % 4), most = least + static_cast<int>(random() % 3);
            formatter.setMaximumFractionDigits(most);
            formatter.setMinimumFractionDigits(least);
            formatter.setRoundingMode(static_cast<NumberFormatter::RoundingMode>(mode));
            reference.set(UNUM_MAX_FRACTION_DIGITS, most);
            reference.set(UNUM_MIN_FRACTION_DIGITS, least);
            reference.set(UNUM_ROUNDING_MODE, mode);
            for (const double number : numbersFrom(random))
                ASSERT_EQ(formatter.string(number), reference.string(number));
        }
    }
}

TEST(NumberFormatterReferenceTest, WordsAreAsByICU) {
    for (const auto* locale : locales) {
        SCOPED_TRACE(locale);
        const auto words = formatterOf(Style::spellOut, locale);
        const auto ordinal = formatterOf(Style::ordinal, locale);
        const Reference icuWords(UNUM_SPELLOUT, locale), icuOrdinal(UNUM_ORDINAL, locale);
        for (const double number : {0.0, 1.5, -0.25, 1234.56})
            EXPECT_EQ(words.string(number), icuWords.string(number));
        for (const std::int64_t number : {0, 1, 2, 3, 4, 11, 21, 112, 1'003, -1, 1'000'000}) {
            EXPECT_EQ(words.string(number), icuWords.string(number));
            EXPECT_EQ(ordinal.string(number), icuOrdinal.string(number));
        }
    }
}
