// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/SpanFormat.h"

#include "platform/text/CompiledNumbers.h"
#include "platform/text/DigitLocale.h"
#include "platform/text/FormatCache.h"
#include "platform/text/UTF16.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cmath>
#include <unicode/dcfmtsym.h>
#include <unicode/measunit.h>
#include <utility>

namespace vorlan {

namespace {

using UnitsStyle = DateComponentsFormatter::UnitsStyle;

struct Widths {
    UNumberUnitWidth ofUnits;
    UListFormatterWidth ofList;
};

Widths widths(UnitsStyle style) {
    switch (style) {
    case UnitsStyle::full: return {UNUM_UNIT_WIDTH_FULL_NAME, ULISTFMT_WIDTH_WIDE};
    case UnitsStyle::short_: return {UNUM_UNIT_WIDTH_SHORT, ULISTFMT_WIDTH_SHORT};
    default: return {UNUM_UNIT_WIDTH_NARROW, ULISTFMT_WIDTH_NARROW};
    }
}

icu::MeasureUnit unitOfICU(CalendarComponent unit) {
    switch (unit) {
    case CalendarComponent::year: return icu::MeasureUnit::getYear();
    case CalendarComponent::month: return icu::MeasureUnit::getMonth();
    case CalendarComponent::weekOfMonth: return icu::MeasureUnit::getWeek();
    case CalendarComponent::day: return icu::MeasureUnit::getDay();
    case CalendarComponent::hour: return icu::MeasureUnit::getHour();
    case CalendarComponent::minute: return icu::MeasureUnit::getMinute();
    default: return icu::MeasureUnit::getSecond();
    }
}

void require(UErrorCode status) {
    if (U_SUCCESS(status)) return;
    fatalError(std::string("ICU cannot write spans of time: ") + u_errorName(status),
               "VorlanFoundation/DateComponentsFormatter");
}

std::unique_ptr<const icu::ListFormatter> listFormat(const icu::Locale& locale, UnitsStyle style) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<const icu::ListFormatter> format(
        icu::ListFormatter::createInstance(locale, ULISTFMT_TYPE_UNITS, widths(style).ofList, status));
    require(status);
    return format;
}

icu::UnicodeString minusSign(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(locale, status);
    require(status);
    return symbols.getConstSymbol(icu::DecimalFormatSymbols::kMinusSignSymbol);
}

icu::UnicodeString text(const icu::number::LocalizedNumberFormatter& format, double number) {
    UErrorCode status = U_ZERO_ERROR;
    auto text = format.formatDouble(number, status).toString(status);
    require(status);
    return text;
}

std::array<icu::UnicodeString, 10> digits(const icu::number::LocalizedNumberFormatter& format) {
    std::array<icu::UnicodeString, 10> digits;
    for (std::size_t digit = 0; digit < digits.size(); ++digit)
        digits[digit] = text(format, static_cast<double>(digit));
    return digits;
}

bool isOfClock(CalendarComponent unit) {
    return unit == CalendarComponent::hour || unit == CalendarComponent::minute ||
           unit == CalendarComponent::second;
}

} // namespace

std::shared_ptr<const SpanFormat> SpanFormat::of(const Locale& locale, UnitsStyle style) {
    static auto& cache = *new FormatCache<SpanFormat>; // threads may write spans while the process ends
    const auto key = locale.identifier() + '|' + std::to_string(static_cast<int>(style));
    return cache.value(key, [&] { return std::make_shared<const SpanFormat>(locale, style); });
}

SpanFormat::SpanFormat(const Locale& locale, UnitsStyle style) : SpanFormat(digitLocale(locale), style) {}

SpanFormat::SpanFormat(const icu::Locale& locale, UnitsStyle style)
    : style_(style),
      numbers_(icu::number::NumberFormatter::withLocale(locale)),
      digits_(digits(numbers_)),
      clock_(locale, digits_[0]),
      list_(listFormat(locale, style)),
      minus_(minusSign(locale)) {
    std::ranges::transform(spanUnits, named_.begin(), [&](CalendarComponent unit) {
        return numbers_.unit(unitOfICU(unit)).unitWidth(widths(style).ofUnits);
    });
    compile(numbers_);
    for (const auto& formatter : named_) compile(formatter);
}

std::string SpanFormat::string(const UnitCounts& counts, CalendarComponents allowed) const {
    const auto all = parts(counts);
    const bool isPositional = style_ == UnitsStyle::positional;
    return utf8FromUTF16(isPositional ? positional(all, allowed) : joined(allNamed(all)));
}

std::vector<SpanFormat::Part> SpanFormat::parts(const UnitCounts& counts) {
    std::vector<Part> parts;
    for (const auto& [unit, count] : counts) parts.push_back({unit, static_cast<double>(count)});
    const auto isBelow = [](const Part& part) { return part.count < 0; };
    const auto isAbove = [](const Part& part) { return part.count > 0; };
    if (std::ranges::none_of(parts, isBelow) || std::ranges::any_of(parts, isAbove)) return parts;
    for (auto& part : parts) part.count = std::fabs(part.count);
    parts.front().count = -parts.front().count;
    return parts;
}

SpanFormat::Text SpanFormat::positional(Parts parts, CalendarComponents allowed) const {
    if (parts.size() == 1) return alone(parts.front(), allowed);
    const auto first = std::ranges::find_if(parts, isOfClock, &Part::unit) - parts.begin();
    const auto [front, rest] = std::pair(parts.first(static_cast<std::size_t>(first)),
                                         parts.subspan(static_cast<std::size_t>(first)));
    if (!isClock(rest, allowed)) return joined(allNamed(parts));
    auto texts = allNamed(front);
    texts.push_back(clock(rest));
    return joined(texts);
}

// Two units or three that are read by their places; seconds after hours only where the minutes between them were
// dropped for being none.
bool SpanFormat::isClock(Parts parts, CalendarComponents allowed) {
    if (parts.size() < 2) return false;
    const bool hasMinutes = std::ranges::find(parts, CalendarComponent::minute, &Part::unit) != parts.end();
    const auto hasSign = [](const Part& part) { return std::signbit(part.count); };
    return (hasMinutes || allowed.contains(CalendarComponent::minute)) &&
           std::none_of(parts.begin() + 1, parts.end(), hasSign);
}

// Larger units are bare only where there is nothing else that the number could count.
SpanFormat::Text SpanFormat::alone(Part part, CalendarComponents allowed) const {
    if (!isOfClock(part.unit) && allowed != CalendarComponents(part.unit)) return named(part);
    return text(numbers_, part.count);
}

SpanFormat::Text SpanFormat::clock(Parts parts) const {
    const bool hasHours = parts.front().unit == CalendarComponent::hour;
    const bool hasSeconds = parts.back().unit == CalendarComponent::second;
    const auto& pattern = !hasSeconds ? clock_.hourMinute
                          : hasHours  ? clock_.hourMinuteSecond
                                      : clock_.minuteSecond;
    std::vector<double> counts;
    for (const auto& part : parts) counts.push_back(std::fabs(part.count));
    if (hasHours && hasSeconds && counts.size() == 2) counts.insert(counts.begin() + 1, 0.0);
    Text text;
    if (std::signbit(parts.front().count)) text = minus_;
    for (std::size_t at = 0; at < counts.size(); ++at) {
        const auto& [before, digits] = pattern.fields[at];
        text.append(before).append(number(counts[at], digits));
    }
    return text.append(pattern.behind);
}

SpanFormat::Text SpanFormat::number(double number, int atLeast) const {
    if (number >= 1000) return text(numbers_, number); // which may be grouped
    const auto value = static_cast<unsigned>(number);
    Text digits;
    if (value >= 100) digits.append(digits_[value / 100]);
    if (value >= 10 || atLeast > 1) digits.append(digits_[value / 10 % 10]);
    return digits.append(digits_[value % 10]);
}

SpanFormat::Text SpanFormat::named(Part part) const {
    const auto at = std::ranges::find(spanUnits, part.unit) - spanUnits.begin();
    const auto& format = named_[static_cast<std::size_t>(at)];
    auto written = text(format, part.count);
    // One and two of a unit have words in some languages that leave no place for a sign.
    const bool hasLostItsSign = std::signbit(part.count) && written == text(format, -part.count);
    return hasLostItsSign ? minus_ + written : written;
}

std::vector<SpanFormat::Text> SpanFormat::allNamed(Parts parts) const {
    std::vector<Text> texts;
    for (const auto& part : parts) texts.push_back(named(part));
    return texts;
}

SpanFormat::Text SpanFormat::joined(const std::vector<Text>& texts) const {
    if (texts.size() == 1) return texts.front();
    UErrorCode status = U_ZERO_ERROR;
    Text text;
    list_->format(texts.data(), static_cast<std::int32_t>(texts.size()), text, status);
    require(status);
    return text;
}

} // namespace vorlan
