// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/ClockPatterns.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>
#include <vector>

namespace vorlan {

namespace {

using Units = std::vector<icu::MeasureUnit>;

// "0:00:00".
icu::UnicodeString zeros(const icu::Locale& locale, const Units& units) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::MeasureFormat format(locale, UMEASFMT_WIDTH_NUMERIC, status);
    std::vector<icu::Measure> measures;
    for (const auto& unit : units) measures.emplace_back(icu::Formattable(0.0), unit.clone(), status);
    icu::UnicodeString text;
    icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
    format.formatMeasures(measures.data(), static_cast<std::int32_t>(measures.size()), text, position,
                          status);
    if (U_FAILURE(status))
        fatalError(std::string("ICU cannot write spans of time: ") + u_errorName(status),
                   "VorlanFoundation/DateComponentsFormatter");
    return text;
}

ClockPattern pattern(const icu::Locale& locale, const icu::UnicodeString& zero, const Units& units) {
    const auto text = zeros(locale, units);
    ClockPattern pattern;
    std::int32_t at = 0;
    for (std::size_t field = 0; field < units.size(); ++field) {
        const auto begin = std::max(text.indexOf(zero, at), at);
        auto& [before, digits] = pattern.fields[field];
        before = icu::UnicodeString(text, at, begin - at);
        for (at = begin; text.compare(at, zero.length(), zero) == 0; at += zero.length()) ++digits;
    }
    pattern.behind = icu::UnicodeString(text, at);
    return pattern;
}

} // namespace

ClockPatterns::ClockPatterns(const icu::Locale& locale, const icu::UnicodeString& zero)
    : hourMinute(pattern(locale, zero, {icu::MeasureUnit::getHour(), icu::MeasureUnit::getMinute()})),
      minuteSecond(pattern(locale, zero, {icu::MeasureUnit::getMinute(), icu::MeasureUnit::getSecond()})),
      hourMinuteSecond(pattern(
          locale, zero,
          {icu::MeasureUnit::getHour(), icu::MeasureUnit::getMinute(), icu::MeasureUnit::getSecond()})) {}

} // namespace vorlan
