// SPDX-License-Identifier: Apache-2.0
// The texts of styles and patterns, beside ICU's own.

#include "tests/platform/dates/DateSamples.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

using namespace vorlan;
using tests::ICUDateFormat;
using tests::sampleLocales;
using tests::sampleStyles;
using tests::sampleZones;
using Style = DateFormatter::Style;

namespace {

#ifdef NDEBUG
constexpr int instants = 100'000;
#else
constexpr int instants = 2'000;
#endif

// Every field alone and some that are used together.
constexpr std::array samplePatterns{"yyyy-MM-dd HH:mm:ss",
                                    "eee, dd MMM yyyy HH:mm:ss Z",
                                    "EEEE, d. MMMM y",
                                    "yy/M/d h:mm:ss.SSS a",
                                    "G y",
                                    "GGGG yyyyy",
                                    "GGGGG",
                                    "u uuuu",
                                    "Y w W",
                                    "YYYY-'W'ww-e",
                                    "L LL LLL LLLL LLLLL",
                                    "M MM MMM MMMM MMMMM",
                                    "D DDD",
                                    "F",
                                    "g",
                                    "E EEEE EEEEE EEEEEE",
                                    "e ee eee eeee eeeee eeeeee",
                                    "c cc ccc cccc ccccc cccccc",
                                    "a aaaa aaaaa",
                                    "b bbbb bbbbb",
                                    "B BBBB BBBBB",
                                    "h hh",
                                    "H HH",
                                    "K KK",
                                    "k kk",
                                    "m mm",
                                    "s ss",
                                    "S SS SSS SSSS SSSSSSS",
                                    "A",
                                    "Q QQ QQQ QQQQ",
                                    "q qq qqq qqqq",
                                    "z",
                                    "zzzz",
                                    "Z ZZZZ ZZZZZ",
                                    "O OOOO",
                                    "v vvvv",
                                    "VV VVV VVVV",
                                    "X XX XXXd XXXX XXXXX",
                                    "x xx xxx xxxx xxxxx",
                                    "'quoted' ''HH''",
                                    "y年M月d日",
                                    "r U",
                                    "yyyyyyyyyyyy",
                                    "d",
                                    "ddd"};

double randomMilliseconds(std::mt19937_64& random) {
    // From 1850 to 2150.
    return static_cast<double>(
        std::uniform_int_distribution<std::int64_t>(-3'786'912'000'000, 5'680'281'600'000)(random));
}

Date dateOf(double milliseconds) {
    return Date::fromTimeIntervalSince1970(milliseconds / 1000);
}

} // namespace

TEST(DateFormatterPattern, EveryStyleIsICUs) {
    const double time = 1'709'647'629'000;
    for (const char* locale : sampleLocales)
        for (const auto dateStyle : sampleStyles)
            for (const auto timeStyle : sampleStyles) {
                if (dateStyle == Style::none && timeStyle == Style::none) continue;
                SCOPED_TRACE(std::string(locale) + " " + std::to_string(static_cast<int>(dateStyle)) + " " +
                             std::to_string(static_cast<int>(timeStyle)));
                auto formatter = tests::formatterOf(locale, "Europe/Berlin");
                formatter.setDateStyle(dateStyle);
                formatter.setTimeStyle(timeStyle);
                const auto icu = ICUDateFormat::ofStyles(tests::icuStyle(dateStyle),
                                                         tests::icuStyle(timeStyle), locale, "Europe/Berlin");
                EXPECT_EQ(formatter.string(dateOf(time)), icu.string(time));
                EXPECT_EQ(formatter.dateFormat(), icu.pattern());
            }
}

TEST(DateFormatterPattern, EveryFieldIsICUs) {
    for (const char* locale : sampleLocales)
        for (const char* zone : {"Europe/Berlin", "Asia/Kathmandu"})
            for (const char* pattern : samplePatterns) {
                SCOPED_TRACE(std::string(locale) + " " + zone + " " + pattern);
                auto formatter = tests::formatterOf(locale, zone);
                formatter.setDateFormat(pattern);
                const auto icu = ICUDateFormat::ofPattern(pattern, locale, zone);
                for (const double time :
                     {0.0, 1'709'647'629'250.0, 1'720'000'000'000.0, -1.0, -12'219'292'801'000.0})
                    EXPECT_EQ(formatter.string(dateOf(time)), icu.string(time)) << time;
            }
}

TEST(DateFormatterPattern, AnyInstantIsWrittenAsICUDoes) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto anyOf = [&](const auto& list) { return list[random() % list.size()]; };
    constexpr int instantsOfOne = 50;
    for (int i = 0; i < instants / instantsOfOne; ++i) {
        const auto* const locale = anyOf(sampleLocales);
        const auto* const zone = anyOf(sampleZones);
        const auto* const pattern = anyOf(samplePatterns);
        SCOPED_TRACE(std::string(locale) + " " + zone + " " + pattern);
        auto formatter = tests::formatterOf(locale, zone);
        formatter.setDateFormat(pattern);
        const auto icu = ICUDateFormat::ofPattern(pattern, locale, zone);
        for (int j = 0; j < instantsOfOne; ++j) {
            const double time = randomMilliseconds(random);
            ASSERT_EQ(formatter.string(dateOf(time)), icu.string(time)) << time;
        }
    }
}
