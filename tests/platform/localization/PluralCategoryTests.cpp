// SPDX-License-Identifier: Apache-2.0
// Which form goes with a number.

#include <VorlanFoundation/Platform/PluralCategory.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <latch>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

using enum PluralCategory;

PluralCategory of(std::int64_t number, const char* locale) {
    return pluralCategory(number, Locale(locale));
}

} // namespace

TEST(PluralCategoryTest, EnglishHasOneAndOther) {
    EXPECT_EQ(of(0, "en"), other);
    EXPECT_EQ(of(1, "en"), one);
    EXPECT_EQ(of(-1, "en"), one);
    EXPECT_EQ(of(2, "en_GB.UTF-8"), other);
}

TEST(PluralCategoryTest, LanguagesDifferInTheirForms) {
    EXPECT_EQ(of(0, "fr"), one);
    EXPECT_EQ(of(2, "fr"), other);
    EXPECT_EQ(of(1'000'000, "fr"), many);
    EXPECT_EQ(of(21, "ru"), one);
    EXPECT_EQ(of(3, "ru"), few);
    EXPECT_EQ(of(11, "ru"), many);
    EXPECT_EQ(of(22, "pl"), few);
    EXPECT_EQ(of(21, "pl"), many);
    EXPECT_EQ(of(1, "ja"), other);
}

TEST(PluralCategoryTest, ArabicHasAllForms) {
    EXPECT_EQ(of(0, "ar"), zero);
    EXPECT_EQ(of(1, "ar"), one);
    EXPECT_EQ(of(2, "ar"), two);
    EXPECT_EQ(of(103, "ar"), few);
    EXPECT_EQ(of(99, "ar"), many);
    EXPECT_EQ(of(100, "ar"), other);
}

TEST(PluralCategoryTest, RegionsMayHaveRulesOfTheirOwn) {
    EXPECT_EQ(of(0, "pt"), one);
    EXPECT_EQ(of(0, "pt_BR"), one);
    EXPECT_EQ(of(0, "pt_PT"), other);
    EXPECT_EQ(of(0, "pt-PT"), other);
    EXPECT_EQ(of(0, "pt_PT.UTF-8@euro"), other);
}

TEST(PluralCategoryTest, FormerAndLongCodesAreTheSameLanguages) {
    EXPECT_EQ(of(1, "eng"), one);
    EXPECT_EQ(of(2, "iw"), of(2, "he"));
    EXPECT_EQ(of(3, "sr_RS.UTF-8@latin"), few);
    EXPECT_EQ(of(3, "zh_Hant_TW"), other);
    EXPECT_EQ(of(3, "ru_RU@calendar=gregorian;numbers=latn;currency=RUB;collation=standard"), few);
}

TEST(PluralCategoryTest, UnknownLanguagesHaveOtherOnly) {
    for (const char* name : {"", "C", "POSIX", "xx", "xx_YY", "klingon", "123", "_", "en1", "\xFF"})
        for (const std::int64_t number : {0, 1, 2, 5}) EXPECT_EQ(of(number, name), other) << name;
}

TEST(PluralCategoryTest, DigitsBehindTheDecimalPointCount) {
    const Locale english("en");
    EXPECT_EQ(pluralCategory(1.0, 0, english), one);
    EXPECT_EQ(pluralCategory(1.0, 1, english), other);
    EXPECT_EQ(pluralCategory(0.6, 0, english), one) << "written as 1";
    EXPECT_EQ(pluralCategory(1.0, -5, english), one);
    EXPECT_EQ(pluralCategory(1.0, 1'000'000, english), other);
    EXPECT_EQ(pluralCategory(1.5, 1, Locale("fr")), one);
    EXPECT_EQ(pluralCategory(1.0, 1, Locale("ru")), other);
    EXPECT_EQ(pluralCategory(1.2, 1, Locale("da")), one);
}

TEST(PluralCategoryTest, WhatIsNoFiniteNumberIsOther) {
    using Limits = std::numeric_limits<double>;
    for (const double number : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
        for (const char* name : {"en", "ru", "ar", "fr"})
            EXPECT_EQ(pluralCategory(number, 0, Locale(name)), other);
}

TEST(PluralCategoryTest, NamesAreThoseOfTables) {
    EXPECT_EQ(rawValue(few), "few");
    EXPECT_EQ(fromRawValue<PluralCategory>("zero"), zero);
    EXPECT_EQ(fromRawValue<PluralCategory>("several"), std::nullopt);
    const auto all = allCases<PluralCategory>();
    ASSERT_EQ(all.size(), static_cast<std::size_t>(pluralCategoryCount));
    for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(static_cast<std::size_t>(all[i]), i);
}

TEST(PluralCategoryTest, LargeNumbersGoByTheirLastDigits) {
    EXPECT_EQ(of(9'007'199'254'740'993, "ru"), few) << "which no double is";
    EXPECT_EQ(of(std::numeric_limits<std::int64_t>::max(), "ru"), many) << "ends in 07";
    EXPECT_EQ(of(9'223'372'036'854'775'801, "ru"), one);
    EXPECT_EQ(of(std::numeric_limits<std::int64_t>::min(), "ru"), many) << "ends in 08";
    EXPECT_EQ(pluralCategory(1e300, 0, Locale("en")), other);
    for (const auto* language : {"fr", "es", "it", "pt"})
        for (const double number : {1e6, 1e18, -1e18, 1e20})
            EXPECT_EQ(pluralCategory(number, 0, Locale(language)), many) << language << " " << number;
}

TEST(PluralCategoryTest, ThreadsAskForSeveralLanguages) {
    constexpr int threads = 16;
    constexpr std::array locales{"en", "ru", "ar", "xx", "pt_PT", "cy", "lt", "sl"};
    const auto ask = [&](int turn) {
        const Locale locale(locales.at(static_cast<std::size_t>(turn) % locales.size()));
        return std::array{pluralCategory(turn % 30, locale),
                          pluralCategory(turn % 7 * 0.5, turn % 12, locale)};
    };
    std::latch start(threads);
    std::vector<std::vector<std::array<PluralCategory, 2>>> answers(threads);
    std::vector<std::jthread> all;
    for (auto& own : answers)
        all.emplace_back([&] {
            start.arrive_and_wait();
            for (int turn = 0; turn < 240; ++turn) own.push_back(ask(turn));
        });
    all.clear();
    for (int turn = 0; turn < 240; ++turn)
        for (const auto& own : answers) ASSERT_EQ(own[static_cast<std::size_t>(turn)], ask(turn));
}
