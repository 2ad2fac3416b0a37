// SPDX-License-Identifier: Apache-2.0
// Days near the present, beside what ICU itself says of them.

#include "tests/platform/dates/DateSamples.h"

#include <VorlanFoundation/Testing/WallClock.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <unicode/ucal.h>
#include <vector>

using namespace vorlan;
using tests::ICUDateFormat;
using tests::sampleLocales;
using tests::sampleStyles;
using tests::sampleZones;
using Style = DateFormatter::Style;

namespace {

constexpr double millisecondsOfDay = 86'400'000;

Date dateOf(double milliseconds) {
    return Date::fromTimeIntervalSince1970(milliseconds / 1000);
}

DateFormatter relativeFormatter(const char* locale, const char* zone, Style dateStyle, Style timeStyle) {
    auto formatter = tests::formatterOf(locale, zone);
    formatter.setDateStyle(dateStyle);
    formatter.setTimeStyle(timeStyle);
    formatter.setDoesRelativeDateFormatting(true);
    return formatter;
}

struct Texts {
    std::vector<std::string> ours;
    std::vector<std::string> icus;
};

// Of the days from three before a time to three after it.
Texts textsAround(double now, const char* locale, const char* zone, Style dateStyle, Style timeStyle) {
    const auto formatter = relativeFormatter(locale, zone, dateStyle, timeStyle);
    const bool isRelative = dateStyle != Style::none;
    const auto style =
        static_cast<UDateFormatStyle>(tests::icuStyle(dateStyle) | (isRelative ? UDAT_RELATIVE : 0));
    const auto icu = ICUDateFormat::ofStyles(style, tests::icuStyle(timeStyle), locale, zone);
    Texts texts;
    for (int day = -3; day <= 3; ++day) {
        const double time = now + day * millisecondsOfDay;
        texts.ours.push_back(formatter.string(dateOf(time)));
        texts.icus.push_back(icu.string(time));
    }
    return texts;
}

// The day of the real clock, which ICU goes by.
double today(const char* zone) {
    const auto seconds = Date().timeIntervalSince1970();
    return std::floor((seconds + TimeZone::fromIdentifier(zone)->secondsFromGMT()) / 86'400);
}

void expectTextsOfICU(const char* locale, const char* zone, Style dateStyle, Style timeStyle) {
    Texts texts;
    double before;
    do {
        before = today(zone);
        texts = textsAround(std::floor(Date().timeIntervalSince1970()) * 1000, locale, zone, dateStyle,
                            timeStyle);
    } while (today(zone) != before);
    EXPECT_EQ(texts.ours, texts.icus);
}

} // namespace

TEST(RelativeDate, SaysWhatICUSaysByTheRealClock) {
    for (const char* locale : sampleLocales)
        for (const auto dateStyle : sampleStyles)
            for (const auto timeStyle : sampleStyles) {
                if (dateStyle == Style::none && timeStyle == Style::none) continue;
                SCOPED_TRACE(std::string(locale) + " " + std::to_string(static_cast<int>(dateStyle)) + " " +
                             std::to_string(static_cast<int>(timeStyle)));
                expectTextsOfICU(locale, "Europe/Berlin", dateStyle, timeStyle);
            }
}

TEST(RelativeDate, SaysWhatICUSaysInEachZone) {
    for (const char* zone : sampleZones) {
        SCOPED_TRACE(zone);
        expectTextsOfICU("en_US", zone, Style::long_, Style::short_);
        expectTextsOfICU("ar_EG", zone, Style::full, Style::full);
    }
}

TEST(RelativeDate, SaysWhatICUSaysInOtherCalendars) {
    for (const char* locale : {"he_IL@calendar=hebrew", "ja_JP@calendar=japanese", "zh_CN@calendar=chinese",
                               "ar_SA@calendar=islamic-umalqura"})
        for (const auto style : sampleStyles) {
            SCOPED_TRACE(std::string(locale) + " " + std::to_string(static_cast<int>(style)));
            expectTextsOfICU(locale, "Asia/Kathmandu", style, Style::short_);
        }
}

TEST(RelativeDate, DayChangesAtMidnightOfTheZone) {
    // 2024-03-31 in Berlin has 23 hours, and 2024-10-27 has 25.
    for (const double midnight : {1'711'839'600.0, 1'711'922'400.0, 1'729'980'000.0, 1'730'070'000.0}) {
        const auto formatter = relativeFormatter("en_US", "Europe/Berlin", Style::short_, Style::none);
        const vorlan::testing::WallClock clock(dateOf(midnight * 1000));
        EXPECT_EQ(formatter.string(dateOf(midnight * 1000)), "today");
        EXPECT_EQ(formatter.string(dateOf(midnight * 1000 - 1)), "yesterday");
        EXPECT_EQ(formatter.string(dateOf((midnight + 22 * 3600) * 1000)), "today");
        EXPECT_EQ(formatter.string(dateOf((midnight + 26 * 3600) * 1000)), "tomorrow");
    }
}

TEST(RelativeDate, ApiaHadNoThirtiethOfDecember) {
    // In 2011: the 29th is followed by the 31st, two days later by the calendar.
    const auto formatter = relativeFormatter("de_DE", "Pacific/Apia", Style::short_, Style::none);
    const double lastMinute = 1'325'239'199.0;
    const vorlan::testing::WallClock clock(dateOf(lastMinute * 1000));
    EXPECT_EQ(formatter.string(dateOf((lastMinute + 1) * 1000)), "übermorgen");
}
