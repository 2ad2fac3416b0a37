// SPDX-License-Identifier: Apache-2.0
// Texts of spans as users read them, and as ICU's own formatter writes them.

#include "platform/text/UTF16.h"

#include <VorlanFoundation/Platform/DateComponentsFormatter.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>
#include <utility>
#include <vector>

using namespace vorlan;
using Component = CalendarComponent;
using Style = DateComponentsFormatter::UnitsStyle;
using Zeros = DateComponentsFormatter::ZeroFormattingBehavior;

namespace {

constexpr std::array<double, 13> spans{0,     1,     59,     60,     65,     3'599,  3'600,
                                       3'661, 5'400, 86'399, 86'400, 90'061, 176'400};
using Texts = std::array<const char*, spans.size()>;

struct Formatter {
    CalendarComponents units;
    Style style;
    Zeros zeros = Zeros::default_;
};

// Those that applications share.
constexpr Formatter fullHours{Component::hour, Style::full};
constexpr Formatter abbreviatedHours{Component::hour, Style::abbreviated};
constexpr Formatter abbreviatedTime{{Component::day, Component::hour, Component::minute}, Style::abbreviated};
constexpr Formatter abbreviatedHoursMinutes{{Component::hour, Component::minute}, Style::abbreviated};
constexpr Formatter countdown{
    {Component::hour, Component::minute, Component::second}, Style::positional, Zeros::pad};
constexpr Formatter minutesCountdown{{Component::minute, Component::second}, Style::positional, Zeros::pad};

DateComponentsFormatter formatterOf(const Formatter& formatter, const char* locale) {
    DateComponentsFormatter result;
    result.setAllowedUnits(formatter.units);
    result.setUnitsStyle(formatter.style);
    result.setZeroFormattingBehavior(formatter.zeros);
    result.setCalendar(Calendar(Calendar::Identifier::gregorian, Locale(locale), TimeZone::gmt()));
    return result;
}

void expectTexts(const char* locale, const Formatter& formatter, const Texts& texts) {
    const auto subject = formatterOf(formatter, locale);
    for (std::size_t at = 0; at < spans.size(); ++at) {
        SCOPED_TRACE(std::string(locale) + ", " + std::to_string(spans[at]) + " s");
        EXPECT_EQ(subject.string(spans[at]), texts[at]);
    }
}

constexpr Texts westernClock{"0:00:00", "0:00:01", "0:00:59",  "0:01:00",  "0:01:05",  "0:59:59", "1:00:00",
                             "1:01:01", "1:30:00", "23:59:59", "24:00:00", "25:01:01", "49:00:00"};

// What follows is the reference: ICU's formatter of measures, asked in the plainest way.

constexpr std::array locales{"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP", "ar_EG",
                             "hi_IN", "he_IL", "fa_IR", "th_TH", "da_DK", "en_US_POSIX"};
constexpr std::array units{Component::year, Component::month,  Component::weekOfMonth, Component::day,
                           Component::hour, Component::minute, Component::second};

icu::MeasureUnit* newUnit(Component unit, UErrorCode& status) {
    switch (unit) {
    case Component::year: return icu::MeasureUnit::createYear(status);
    case Component::month: return icu::MeasureUnit::createMonth(status);
    case Component::weekOfMonth: return icu::MeasureUnit::createWeek(status);
    case Component::day: return icu::MeasureUnit::createDay(status);
    case Component::hour: return icu::MeasureUnit::createHour(status);
    case Component::minute: return icu::MeasureUnit::createMinute(status);
    default: return icu::MeasureUnit::createSecond(status);
    }
}

UMeasureFormatWidth widthOf(Style style) {
    switch (style) {
    case Style::full: return UMEASFMT_WIDTH_WIDE;
    case Style::short_: return UMEASFMT_WIDTH_SHORT;
    case Style::abbreviated: return UMEASFMT_WIDTH_NARROW;
    default: return UMEASFMT_WIDTH_NUMERIC;
    }
}

std::string byICU(const icu::MeasureFormat& format, const DateComponents& components) {
    UErrorCode status = U_ZERO_ERROR;
    std::vector<icu::Measure> measures;
    for (const auto unit : units)
        if (const auto count = components.value(unit))
            measures.emplace_back(icu::Formattable(static_cast<double>(*count)), newUnit(unit, status),
                                  status);
    icu::UnicodeString text;
    icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
    format.formatMeasures(measures.data(), static_cast<std::int32_t>(measures.size()), text, position,
                          status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return utf8FromUTF16(text);
}

// As many units as it happens, none of them 0.
DateComponents someComponents(std::mt19937& random) {
    DateComponents components;
    while (components == DateComponents())
        for (const auto unit : units)
            if (random() % 2 == 0)
                components.setValue(1 + random() % (random() % 2 == 0 ? 12 : 20'000), unit);
    return components;
}

icu::MeasureFormat icuFormat(const char* locale, Style style) {
    UErrorCode status = U_ZERO_ERROR;
    return {icu::Locale(locale), widthOf(style), status};
}

constexpr CalendarComponents allUnits{Component::year,  Component::month, Component::weekOfMonth,
                                      Component::day,   Component::hour,  Component::minute,
                                      Component::second};
constexpr std::array namingStyles{Style::abbreviated, Style::short_, Style::full};

} // namespace

TEST(DateComponentsFormatterTableTest, English) {
    expectTexts("en_US", fullHours,
                {"0 hours", "0 hours", "0 hours", "0 hours", "0 hours", "0 hours", "1 hour", "1 hour",
                 "1 hour", "23 hours", "24 hours", "25 hours", "49 hours"});
    expectTexts("en_US", abbreviatedHours,
                {"0h", "0h", "0h", "0h", "0h", "0h", "1h", "1h", "1h", "23h", "24h", "25h", "49h"});
    expectTexts(
        "en_US", abbreviatedTime,
        {"0m", "0m", "0m", "1m", "1m", "59m", "1h", "1h 1m", "1h 30m", "23h 59m", "1d", "1d 1h 1m", "2d 1h"});
    expectTexts(
        "en_US", abbreviatedHoursMinutes,
        {"0m", "0m", "0m", "1m", "1m", "59m", "1h", "1h 1m", "1h 30m", "23h 59m", "24h", "25h 1m", "49h"});
    expectTexts("en_US", countdown, westernClock);
    expectTexts("en_US", minutesCountdown,
                {"0:00", "0:01", "0:59", "1:00", "1:05", "59:59", "60:00", "61:01", "90:00", "1,439:59",
                 "1,440:00", "1,501:01", "2,940:00"});
}

TEST(DateComponentsFormatterTableTest, German) {
    expectTexts("de_DE", fullHours,
                {"0 Stunden", "0 Stunden", "0 Stunden", "0 Stunden", "0 Stunden", "0 Stunden", "1 Stunde",
                 "1 Stunde", "1 Stunde", "23 Stunden", "24 Stunden", "25 Stunden", "49 Stunden"});
    expectTexts("de_DE", abbreviatedHours,
                {"0 Std.", "0 Std.", "0 Std.", "0 Std.", "0 Std.", "0 Std.", "1 Std.", "1 Std.", "1 Std.",
                 "23 Std.", "24 Std.", "25 Std.", "49 Std."});
    expectTexts("de_DE", abbreviatedTime,
                {"0 Min.", "0 Min.", "0 Min.", "1 Min.", "1 Min.", "59 Min.", "1 Std.", "1 Std., 1 Min.",
                 "1 Std., 30 Min.", "23 Std., 59 Min.", "1 T", "1 T, 1 Std. und 1 Min.", "2 T, 1 Std."});
    expectTexts("de_DE", abbreviatedHoursMinutes,
                {"0 Min.", "0 Min.", "0 Min.", "1 Min.", "1 Min.", "59 Min.", "1 Std.", "1 Std., 1 Min.",
                 "1 Std., 30 Min.", "23 Std., 59 Min.", "24 Std.", "25 Std., 1 Min.", "49 Std."});
    expectTexts("de_DE", countdown, westernClock);
    expectTexts("de_DE", minutesCountdown,
                {"0:00", "0:01", "0:59", "1:00", "1:05", "59:59", "60:00", "61:01", "90:00", "1.439:59",
                 "1.440:00", "1.501:01", "2.940:00"});
}

// Words stand behind a space that does not break, and groups of digits behind a narrow one.
TEST(DateComponentsFormatterTableTest, French) {
    expectTexts("fr_FR", fullHours,
                {"0\u00A0heure", "0\u00A0heure", "0\u00A0heure", "0\u00A0heure", "0\u00A0heure",
                 "0\u00A0heure", "1\u00A0heure", "1\u00A0heure", "1\u00A0heure", "23\u00A0heures",
                 "24\u00A0heures", "25\u00A0heures", "49\u00A0heures"});
    expectTexts("fr_FR", abbreviatedHours,
                {"0h", "0h", "0h", "0h", "0h", "0h", "1h", "1h", "1h", "23h", "24h", "25h", "49h"});
    expectTexts("fr_FR", abbreviatedTime,
                {"0min", "0min", "0min", "1min", "1min", "59min", "1h", "1h 1min", "1h 30min", "23h 59min",
                 "1j", "1j 1h 1min", "2j 1h"});
    expectTexts("fr_FR", abbreviatedHoursMinutes,
                {"0min", "0min", "0min", "1min", "1min", "59min", "1h", "1h 1min", "1h 30min", "23h 59min",
                 "24h", "25h 1min", "49h"});
    expectTexts("fr_FR", countdown, westernClock);
    expectTexts("fr_FR", minutesCountdown,
                {"0:00", "0:01", "0:59", "1:00", "1:05", "59:59", "60:00", "61:01", "90:00", "1\u202F439:59",
                 "1\u202F440:00", "1\u202F501:01", "2\u202F940:00"});
}

TEST(DateComponentsFormatterTableTest, Japanese) {
    expectTexts("ja_JP", fullHours,
                {"0 時間", "0 時間", "0 時間", "0 時間", "0 時間", "0 時間", "1 時間", "1 時間", "1 時間",
                 "23 時間", "24 時間", "25 時間", "49 時間"});
    expectTexts("ja_JP", abbreviatedHours,
                {"0h", "0h", "0h", "0h", "0h", "0h", "1h", "1h", "1h", "23h", "24h", "25h", "49h"});
    expectTexts(
        "ja_JP", abbreviatedTime,
        {"0m", "0m", "0m", "1m", "1m", "59m", "1h", "1h1m", "1h30m", "23h59m", "1d", "1d1h1m", "2d1h"});
    expectTexts(
        "ja_JP", abbreviatedHoursMinutes,
        {"0m", "0m", "0m", "1m", "1m", "59m", "1h", "1h1m", "1h30m", "23h59m", "24h", "25h1m", "49h"});
    expectTexts("ja_JP", countdown, westernClock);
    expectTexts("ja_JP", minutesCountdown,
                {"0:00", "0:01", "0:59", "1:00", "1:05", "59:59", "60:00", "61:01", "90:00", "1,439:59",
                 "1,440:00", "1,501:01", "2,940:00"});
}

// One hour is a word without a digit.
TEST(DateComponentsFormatterTableTest, Arabic) {
    expectTexts("ar_EG", fullHours,
                {"٠ ساعة", "٠ ساعة", "٠ ساعة", "٠ ساعة", "٠ ساعة", "٠ ساعة", "ساعة", "ساعة", "ساعة",
                 "٢٣ ساعة", "٢٤ ساعة", "٢٥ ساعة", "٤٩ ساعة"});
    expectTexts(
        "ar_EG", abbreviatedHours,
        {"٠ س", "٠ س", "٠ س", "٠ س", "٠ س", "٠ س", "١ س", "١ س", "١ س", "٢٣ س", "٢٤ س", "٢٥ س", "٤٩ س"});
    expectTexts("ar_EG", abbreviatedTime,
                {"٠ د", "٠ د", "٠ د", "١ د", "١ د", "٥٩ د", "١ س", "١ س و١ د", "١ س و٣٠ د", "٢٣ س و٥٩ د",
                 "١ ي", "١ ي و١ س و١ د", "٢ ي و١ س"});
    expectTexts("ar_EG", abbreviatedHoursMinutes,
                {"٠ د", "٠ د", "٠ د", "١ د", "١ د", "٥٩ د", "١ س", "١ س و١ د", "١ س و٣٠ د", "٢٣ س و٥٩ د",
                 "٢٤ س", "٢٥ س و١ د", "٤٩ س"});
    expectTexts("ar_EG", countdown,
                {"٠:٠٠:٠٠", "٠:٠٠:٠١", "٠:٠٠:٥٩", "٠:٠١:٠٠", "٠:٠١:٠٥", "٠:٥٩:٥٩", "١:٠٠:٠٠", "١:٠١:٠١",
                 "١:٣٠:٠٠", "٢٣:٥٩:٥٩", "٢٤:٠٠:٠٠", "٢٥:٠١:٠١", "٤٩:٠٠:٠٠"});
    expectTexts("ar_EG", minutesCountdown,
                {"٠:٠٠", "٠:٠١", "٠:٥٩", "١:٠٠", "١:٠٥", "٥٩:٥٩", "٦٠:٠٠", "٦١:٠١", "٩٠:٠٠", "١٬٤٣٩:٥٩",
                 "١٬٤٤٠:٠٠", "١٬٥٠١:٠١", "٢٬٩٤٠:٠٠"});
}

TEST(DateComponentsFormatterTableTest, NamedUnitsReadAsByICU) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (const auto* locale : locales) {
        for (const auto style : namingStyles) {
            SCOPED_TRACE(locale);
            const auto reference = icuFormat(locale, style);
            const auto subject = formatterOf({allUnits, style}, locale);
            for (int i = 0; i < 6; ++i) {
                const auto components = someComponents(random);
                ASSERT_EQ(subject.string(components), byICU(reference, components));
            }
        }
    }
}

TEST(DateComponentsFormatterTableTest, ZerosAndNegativeNumbersReadAsByICU) {
    const DateComponents zeros{
        .year = 0, .month = 0, .weekOfMonth = 0, .day = 0, .hour = 0, .minute = 0, .second = 0};
    const DateComponents negative{.hour = -3};
    for (const auto* locale : locales) {
        for (const auto style : namingStyles) {
            SCOPED_TRACE(locale);
            const auto reference = icuFormat(locale, style);
            EXPECT_EQ(formatterOf({allUnits, style, Zeros::pad}, locale).string(zeros),
                      byICU(reference, zeros));
            EXPECT_EQ(formatterOf({allUnits, style}, locale).string(negative), byICU(reference, negative));
        }
    }
}

TEST(DateComponentsFormatterTableTest, ClocksReadAsByICU) {
    const std::array<DateComponents, 8> samples{{{.hour = 0, .minute = 0, .second = 0},
                                                 {.hour = 1, .minute = 5, .second = 9},
                                                 {.hour = 23, .minute = 59, .second = 59},
                                                 {.hour = 123'456, .minute = 10, .second = 30},
                                                 {.hour = 7, .minute = 123, .second = 1'234},
                                                 {.hour = 999, .minute = 1'000, .second = 99},
                                                 {.hour = 100, .minute = 100, .second = 100},
                                                 {.hour = 1'000, .minute = 9, .second = 0}}};
    for (const auto* locale : locales) {
        SCOPED_TRACE(locale);
        const auto reference = icuFormat(locale, Style::positional);
        for (auto sample : samples) {
            EXPECT_EQ(formatterOf(countdown, locale).string(sample), byICU(reference, sample));
            const auto hours = std::exchange(sample.hour, std::nullopt);
            EXPECT_EQ(formatterOf(minutesCountdown, locale).string(sample), byICU(reference, sample));
            const DateComponents noSeconds{.hour = hours, .minute = sample.minute};
            const Formatter clock{{Component::hour, Component::minute}, Style::positional, Zeros::pad};
            EXPECT_EQ(formatterOf(clock, locale).string(noSeconds), byICU(reference, noSeconds));
        }
    }
}
