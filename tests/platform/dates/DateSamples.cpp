// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/dates/DateSamples.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <unicode/unistr.h>
#include <utility>

namespace vorlan::tests {

namespace {

using Style = DateFormatter::Style;

// What a C function writes into a buffer of units.
template <class Write>
std::string textOf(Write&& write) {
    icu::UnicodeString text;
    UErrorCode status = U_ZERO_ERROR;
    constexpr std::int32_t capacity = 1000;
    const auto length = write(text.getBuffer(capacity), capacity, &status);
    text.releaseBuffer(U_SUCCESS(status) ? length : 0);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    std::string result;
    return text.toUTF8String(result);
}

UDateFormat* opened(UDateFormatStyle timeStyle, UDateFormatStyle dateStyle, const char* locale,
                    const char* zone, const icu::UnicodeString& pattern) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString name(zone);
    auto* const format = udat_open(timeStyle, dateStyle, locale, name.getBuffer(), name.length(),
                                   pattern.getBuffer(), pattern.length(), &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return format;
}

} // namespace

UDateFormatStyle icuStyle(Style style) {
    switch (style) {
    case Style::none: return UDAT_NONE;
    case Style::short_: return UDAT_SHORT;
    case Style::medium: return UDAT_MEDIUM;
    case Style::long_: return UDAT_LONG;
    case Style::full: return UDAT_FULL;
    }
    return UDAT_NONE;
}

DateFormatter formatterOf(const char* locale, const char* zone) {
    DateFormatter formatter;
    formatter.setLocale(Locale(locale));
    formatter.setTimeZone(TimeZone::fromIdentifier(zone));
    return formatter;
}

ICUDateFormat::ICUDateFormat(UDateFormat* format) : format_(format, udat_close) {}

ICUDateFormat ICUDateFormat::ofPattern(const std::string& pattern, const char* locale, const char* zone) {
    const auto units = icu::UnicodeString::fromUTF8(pattern);
    return ICUDateFormat(opened(UDAT_PATTERN, UDAT_PATTERN, locale, zone, units));
}

ICUDateFormat ICUDateFormat::ofStyles(UDateFormatStyle dateStyle, UDateFormatStyle timeStyle,
                                      const char* locale, const char* zone) {
    return ICUDateFormat(opened(timeStyle, dateStyle, locale, zone, {}));
}

std::string ICUDateFormat::string(double milliseconds) const {
    return textOf([&](UChar* units, std::int32_t capacity, UErrorCode* status) {
        return udat_format(format_.get(), milliseconds, units, capacity, nullptr, status);
    });
}

std::string ICUDateFormat::pattern() const {
    return textOf([&](UChar* units, std::int32_t capacity, UErrorCode* status) {
        return udat_toPattern(format_.get(), false, units, capacity, status);
    });
}

} // namespace vorlan::tests
