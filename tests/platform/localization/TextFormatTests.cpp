// SPDX-License-Identifier: Apache-2.0
// What formats make of their arguments, those that fit.

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include "tests/platform/localization/Gaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <latch>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;
using tests::in;

TEST(TextFormatTest, TextWithoutGapsIsItself) {
    EXPECT_EQ(formatText("", {}), "");
    EXPECT_EQ(formatText("plain", {}), "plain");
    EXPECT_EQ(formatText("öffnen", {1}), "öffnen");
    EXPECT_EQ(formatText(std::string_view("a\0b", 3), {}), std::string_view("a\0b", 3));
}

TEST(TextFormatTest, ArgumentsFillGapsInTheirOrder) {
    EXPECT_EQ(formatText("%d of %@", {3, "nine"}), "3 of nine");
    EXPECT_EQ(formatText("%s%s%s", {"a", "b", "c"}), "abc");
    EXPECT_EQ(formatText("%d%%", {50}), "50%");
    EXPECT_EQ(formatText("%@", {1, 2, 3}), "1") << "what no gap is for is not missed";
}

TEST(TextFormatTest, NumbersChooseArguments) {
    EXPECT_EQ(formatText("%2$@, %1$@", {"first", "second"}), "second, first");
    EXPECT_EQ(formatText("%1$@ %1$@", {"twice"}), "twice twice");
    EXPECT_EQ(formatText("%2$@ %@ %@", {"a", "b"}), "b a b") << "gaps without a number count by themselves";
    EXPECT_EQ(formatText("%2$*1$d|%3$.*1$f", {4, 7, 0.5}), "   7|0.5000");
}

TEST(TextFormatTest, ArgumentsOfAllKindsAreTheirDescription) {
    EXPECT_EQ(formatText("%@ %@ %@", {1.0, 0.1F, true}), "1.0 0.10000000149011612 true");
    EXPECT_EQ(formatText("%@ %@", {std::optional<int>(), std::optional<int>(5)}), "nil 5");
    EXPECT_EQ(formatText("%@|%s", {Date(0), Date(0)}), describe(Date(0)) + "|" + describe(Date(0)));
}

TEST(TextFormatTest, TextsMayBeOfAnyType) {
    const std::string string = "string";
    const std::string_view view = "view";
    const char* nothing = nullptr;
    EXPECT_EQ(formatText("%s %S %@ %s", {string, view, "literal", nothing}), "string view literal nil");
}

TEST(TextFormatTest, WidthsAndPrecisionsOfTextsCountCharacters) {
    EXPECT_EQ(formatText("[%5s][%-5s]", {"äöü", "äöü"}), "[  äöü][äöü  ]");
    EXPECT_EQ(formatText("[%.2s][%5.1s]", {"äöü", "😀😀"}), "[äö][    😀]");
    EXPECT_EQ(formatText("[%.0s][%.9s][%.s]", {"abc", "abc", "abc"}), "[][abc][]");
    EXPECT_EQ(formatText("[%05s]", {"abc"}), "[  abc]") << "texts are not filled up with zeros";
    EXPECT_EQ(formatText("[%*s][%-*s][%*s]", {4, "a", 4, "b", -4, "c"}), "[   a][b   ][c   ]");
    EXPECT_EQ(formatText("[%.*s][%.*s]", {2, "abc", -1, "abc"}), "[ab][abc]");
    EXPECT_EQ(formatText("[%.2@]", {12345}), "[12345]") << "numbers are not cut";
}

TEST(TextFormatTest, CharactersAreByTheirNumberOrTheFirstOfAText) {
    EXPECT_EQ(formatText("%c%c%C", {'a', 228, U'😀'}), "aä😀");
    EXPECT_EQ(formatText("[%3c][%-3C][%c]", {"äb", "ö", ""}), "[  ä][ö  ][]");
    EXPECT_EQ(formatText("%c", {0}), std::string(1, '\0'));
    for (const std::int64_t none : {std::int64_t{-1}, std::int64_t{0xD800}, std::int64_t{0xDFFF},
                                    std::int64_t{0x110000}, std::int64_t{1} << 32})
        EXPECT_EQ(formatText("%c", {none}), "\uFFFD") << none;
}

TEST(TextFormatTest, AddressesAreWrittenInFull) {
    const int object = 0;
    EXPECT_EQ(formatText("%p", {&object}), describeAddress(&object));
    EXPECT_EQ(formatText("%p|%20p", {0xABC, static_cast<const void*>(nullptr)}),
              "0x0000000000000abc|  0x0000000000000000");
}

TEST(TextFormatTest, ArgumentsKnowTheirOwnLength) {
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(formatText("%d %hhd %lld", {most, 300, least}),
              "18446744073709551615 300 -9223372036854775808");
    EXPECT_EQ(formatText("%u %i", {-1, -1}), "-1 -1");
    EXPECT_EQ(formatText("%x %hx %hhx %lx", {-1, -1, -1, -1}), "ffffffff ffff ff ffffffffffffffff");
    EXPECT_EQ(formatText("%x %hhX %o", {std::int64_t{-1} << 32, -129, -8}),
              "ffffffff00000000 FFFFFFFFFFFFFF7F 37777777770");
    EXPECT_EQ(formatText("%.1f %.2e %g", {3, 100, -5}), "3.0 1.00e+02 -5");
    EXPECT_EQ(formatText("%'d %'.1f %Lg", {1234567, 1234567.5, 0.5}), "1234567 1234567.5 0.5");
}

TEST(TextFormatTest, LongestNumbersAreWhole) {
    const auto most = std::numeric_limits<double>::max();
    EXPECT_EQ(formatText("%f", {most}).size(), 316);
    EXPECT_EQ(formatText("%.4096f", {most}).size(), 309 + 1 + 4096);
    EXPECT_EQ(formatText("%4096d", {1}).size(), 4096);
    EXPECT_EQ(formatText("%.4096d", {1}).size(), 4096);
}

TEST(TextFormatTest, NumbersAreWrittenAsInALocale) {
    EXPECT_EQ(formatText("%.2f", {1234.5}, {.locale = Locale("de")}), "1.234,50");
    EXPECT_EQ(in("de_DE", "%d|%i|%u|%f", {1234567, -1234, 1234, 0.5}), "1.234.567|-1.234|1.234|0,500000");
    EXPECT_EQ(in("en_US", "%@|%@|%@", {1234567, 1234.25, 1.0}), "1,234,567|1,234.25|1.0");
    EXPECT_EQ(in("de_CH", "%'d", {1234567}), "1’234’567");
    EXPECT_EQ(in("en_IN", "%d", {1234567}), "12,34,567");
    EXPECT_EQ(in("ar_EG", "%d %.1f %@", {1234, 0.5, 7}), "١٬٢٣٤ ٠٫٥ ٧");
    EXPECT_EQ(in("de", "%s and %@", {"1.5", "2.5"}), "1.5 and 2.5") << "texts stay as they are";
    EXPECT_EQ(in("de", "%x %o %#X %a", {1234567, 8, 255, 1.0}), "12d687 10 0XFF 0x1p+0");
    EXPECT_EQ(in("C", "%d %.1f", {1234, 1234.5}), "1234 1234.5");
}

TEST(TextFormatTest, LocalesKeepFlagsWidthsAndPrecisions) {
    EXPECT_EQ(in("de", "[%+d][% d][%+d]", {1234, 5, -5}), "[+1.234][ 5][-5]");
    EXPECT_EQ(in("de", "[%8d][%-8d][%08d][%08d]", {1234, 1234, 1234, -1234}),
              "[   1.234][1.234   ][0001.234][-001.234]");
    EXPECT_EQ(in("de", "[%.3d][%.0d][%6.3d]", {5, 0, -5}), "[005][][  -005]");
    EXPECT_EQ(in("ar_EG", "[%05d]", {12}), "[٠٠٠١٢]");
    EXPECT_EQ(in("de", "[%08.2f][%+.0f]", {-1.5, 2.0}), "[-0001,50][+2]");
    EXPECT_EQ(in("en", "[%05f]", {std::numeric_limits<double>::infinity()}), "[    ∞]");
    EXPECT_EQ(in("sv", "%d", {-5}), "\u22125") << "the sign of the locale";
}

TEST(TextFormatTest, LocalesHaveAllNumbersInFull) {
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(in("en", "%d|%d|%@|%022d", {most, least, most, 0}),
              "18,446,744,073,709,551,615|-9,223,372,036,854,775,808|18,446,744,073,709,551,615|"
              "0000000000000000000000");
    EXPECT_EQ(in("de", "%e|%.1E|%g|%g|%#g", {12345.678, 0.5, 1234.5, 1e-10, 1.0}),
              "1,234568E4|5,0E-1|1.234,5|1E-10|1,00000");
    EXPECT_EQ(in("de", "%@|%@|%@", {1e22, -1.5e-7, 123456.789}), "1E22|-1,5E-7|123.456,789");
    EXPECT_EQ(in("en", "%.400f", {0.5}).size(), 342);
    EXPECT_EQ(in("en", "%.0f|%.1f", {-0.0, std::nan("")}), "-0|NaN");
}

TEST(TextFormatTest, LocalesWriteAsNumberFormattersDo) {
    for (const auto* name : {"en_US", "de_DE", "de_CH", "fr_FR", "es_ES", "pl_PL", "hi_IN", "ar_EG", "fa_IR",
                             "he_IL", "sv_SE", "en_US_POSIX", "xx_YY"}) {
        SCOPED_TRACE(name);
        NumberFormatter whole, fixed;
        for (auto* each : {&whole, &fixed}) {
            each->setLocale(Locale(name));
            each->setNumberStyle(NumberFormatter::Style::decimal);
        }
        fixed.setMinimumFractionDigits(3);
        fixed.setMaximumFractionDigits(3);
        for (const std::int64_t number : {0, 7, -7, 999, 1000, -12345, 1234567890})
            EXPECT_EQ(in(name, "%lld", {number}), whole.string(number));
        for (const double number : {0.0, 0.0005, -1.5, 1234.5678, -1e15, 1e-9})
            EXPECT_EQ(in(name, "%.3f", {number}), fixed.string(number));
    }
}

TEST(TextFormatTest, ThreadsFillFormatsInSeveralLocales) {
    constexpr int threads = 16;
    constexpr std::array locales{"en", "de", "fr", "ar_EG", "ru", "ja"};
    const auto fill = [](int round, const char* locale) {
        const auto digits = "%." + std::to_string(round % 9) + "f %d %@ %08x";
        return in(locale, digits, {round * 1000.5, round * 1000, "text", round});
    };
    std::vector<std::string> expected;
    for (int round = 0; round < 36; ++round)
        expected.push_back(fill(round, locales.at(static_cast<std::size_t>(round) % locales.size())));
    std::latch start(threads);
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> all;
    for (int thread = 0; thread < threads; ++thread)
        all.emplace_back([&, thread] {
            start.arrive_and_wait();
            for (int i = 0; i < 144; ++i) {
                const auto round = static_cast<std::size_t>(i + thread) % expected.size();
                const auto* locale = locales.at(round % locales.size());
                if (fill(static_cast<int>(round), locale) != expected[round]) ++wrong;
            }
        });
    all.clear();
    EXPECT_EQ(wrong, 0);
}

TEST(TextFormatTest, FormatsAreFilledUntilAThreadEnds) {
    struct AtTheEnd {
        AtTheEnd() = default;
        AtTheEnd(const AtTheEnd&) = delete;
        AtTheEnd& operator=(const AtTheEnd&) = delete;
        ~AtTheEnd() { *text = in("de", "%d %.1f", {1234, 0.5}); }
        std::string* text = nullptr;
    };
    std::string text;
    std::jthread([&text] {
        thread_local AtTheEnd end; // is destroyed after all that comes now
        end.text = &text;
        EXPECT_EQ(in("de", "%d", {1}), "1");
    }).join();
    EXPECT_EQ(text, "1.234 0,5");
}
