// SPDX-License-Identifier: Apache-2.0

// Numbers with two fraction digits as text and read back, and spans of time as text.

#include "benchmarks/DatesBenchmark.h"
#include "benchmarks/support/ICUPeers.h"
#include "benchmarks/support/SampleDates.h"

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>
#include <unicode/numberformatter.h>
#include <unicode/numfmt.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace vorlan::benchmarks {

namespace {

constexpr auto writing = "number with two fraction digits, German";
constexpr auto readingBack = "read a number, German";
constexpr auto countdown = "span of time as a countdown";
constexpr auto inWords = "span of time in words, German";

/// A number of the size of a price: of a date, as these come in no order.
double number(const SampleDate& date) {
    return date.milliseconds / 1.7e6;
}

/// Seconds up to a day and a quarter.
std::int64_t span(const SampleDate& date) {
    return date.seconds % 108'000;
}

icu::number::LocalizedNumberFormatter icuNumbers() {
    return icu::number::NumberFormatter::withLocale(icu::Locale(sampleGerman))
        .precision(icu::number::Precision::fixedFraction(2));
}

std::string icuText(const icu::number::LocalizedNumberFormatter& formatter, double number) {
    UErrorCode status = U_ZERO_ERROR;
    return utf8(formatter.formatDouble(number, status).toString(status));
}

auto writeByICU() {
    return [formatter = icuNumbers()](const SampleDate& date) { return icuText(formatter, number(date)); };
}

NumberFormatter numberFormatter() {
    NumberFormatter formatter;
    formatter.setLocale(Locale(sampleGerman));
    formatter.setNumberStyle(NumberFormatter::Style::decimal);
    formatter.setMinimumFractionDigits(2);
    formatter.setMaximumFractionDigits(2);
    return formatter;
}

void addWriting() {
    const auto add = [](const char* name, const auto& make) { addDatesRow(writing, name, writeByICU, make); };
    add("floor: LocalizedNumberFormatter, reused", writeByICU);
    add("ours: NumberFormatter", [] {
        return [formatter = numberFormatter()](const SampleDate& date) {
            return formatter.string(number(date));
        };
    });
    add("ours: NumberFormatter, made for each",
        [] { return [](const SampleDate& date) { return numberFormatter().string(number(date)); }; });
    add("peer: LocalizedNumberFormatter, made for each",
        [] { return [](const SampleDate& date) { return icuText(icuNumbers(), number(date)); }; });
    add("peer: QLocale::toString", [] {
        return [locale = QLocale(sampleGerman)](const SampleDate& date) {
            return locale.toString(number(date), 'f', 2).toStdString();
        };
    });
    // Not grouped, with a point, and rounded otherwise.
    addRow(writing, "note: std::to_chars", [](benchmark::State& state) {
        measureDates(state, [](const SampleDate& date) {
            std::array<char, 64> text{};
            auto* const end = std::to_chars(text.data(), text.data() + text.size(), number(date),
                                            std::chars_format::fixed, 2)
                                  .ptr;
            return std::string(text.data(), end);
        });
    });
}

/// The number that is read: a text of its own for each would have most of the time be the look-up of the text.
constexpr auto numberText = "1.234.567,25";

auto readByICU() {
    UErrorCode status = U_ZERO_ERROR;
    const std::shared_ptr<const icu::NumberFormat> format(
        icu::NumberFormat::createInstance(icu::Locale(sampleGerman), status));
    checkICU(status);
    return [format](const SampleDate&) {
        UErrorCode failure = U_ZERO_ERROR;
        icu::Formattable read;
        format->parse(icu::UnicodeString::fromUTF8(numberText), read, failure);
        return read.getDouble(failure);
    };
}

void addReadingBack() {
    addDatesRow(readingBack, "floor: NumberFormat, reused", readByICU, readByICU);
    addDatesRow(readingBack, "ours: NumberFormatter", readByICU, [] {
        return [formatter = numberFormatter()](const SampleDate&) {
            return formatter.number(numberText).value_or(0);
        };
    });
    addDatesRow(readingBack, "peer: QLocale::toDouble", readByICU, [] {
        return [locale = QLocale(sampleGerman)](const SampleDate&) {
            return locale.toDouble(QString::fromUtf8(numberText));
        };
    });
}

icu::Measure measure(std::int64_t amount, icu::MeasureUnit* unit) {
    UErrorCode status = U_ZERO_ERROR;
    return {icu::Formattable(static_cast<double>(amount)), unit, status};
}

std::string icuText(const icu::MeasureFormat& format, std::int64_t seconds) {
    UErrorCode status = U_ZERO_ERROR;
    const std::array measures{measure(seconds / 3600, icu::MeasureUnit::createHour(status)),
                              measure(seconds / 60 % 60, icu::MeasureUnit::createMinute(status)),
                              measure(seconds % 60, icu::MeasureUnit::createSecond(status))};
    icu::UnicodeString text;
    icu::FieldPosition position;
    format.formatMeasures(measures.data(), static_cast<std::int32_t>(measures.size()), text, position,
                          status);
    return utf8(text);
}

auto spanByICU(UMeasureFormatWidth width) {
    UErrorCode status = U_ZERO_ERROR;
    const auto format = std::make_shared<const icu::MeasureFormat>(icu::Locale(sampleGerman), width, status);
    checkICU(status);
    return [format](const SampleDate& date) { return icuText(*format, span(date)); };
}

DateComponentsFormatter wordsFormatter() {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(
        {CalendarComponent::hour, CalendarComponent::minute, CalendarComponent::second});
    formatter.setUnitsStyle(DateComponentsFormatter::UnitsStyle::full);
    formatter.setZeroFormattingBehavior(DateComponentsFormatter::ZeroFormattingBehavior::pad);
    formatter.setCalendar(Calendar(Calendar::Identifier::gregorian, Locale(sampleGerman), TimeZone::gmt()));
    return formatter;
}

auto spanBy(const DateComponentsFormatter& formatter) {
    return [formatter](const SampleDate& date) {
        return formatter.string(static_cast<double>(span(date))).value_or("");
    };
}

void addSpans() {
    const auto numeric = [] { return spanByICU(UMEASFMT_WIDTH_NUMERIC); };
    addDatesRow(countdown, "floor: MeasureFormat, reused", numeric, numeric);
    addDatesRow(countdown, "ours: DateComponentsFormatter", numeric,
                [] { return spanBy(dateComponentsFormatter::countdownFormatter()); });
    addDatesRow(countdown, "ours: dateComponentsFormatter::countdownFormatter", numeric, [] {
        return [](const SampleDate& date) {
            return dateComponentsFormatter::countdownFormatter()
                .string(static_cast<double>(span(date)))
                .value_or("");
        };
    });
    const auto wide = [] { return spanByICU(UMEASFMT_WIDTH_WIDE); };
    addDatesRow(inWords, "floor: MeasureFormat, reused", wide, wide);
    addDatesRow(inWords, "ours: DateComponentsFormatter", wide, [] { return spanBy(wordsFormatter()); });
    addDatesRow(inWords, "peer: MeasureFormat, made for each", wide,
                [] { return [](const SampleDate& date) { return spanByICU(UMEASFMT_WIDTH_WIDE)(date); }; });
}

} // namespace

void addNumberFormattingRows() {
    addWriting();
    addReadingBack();
    addSpans();
}

} // namespace vorlan::benchmarks
