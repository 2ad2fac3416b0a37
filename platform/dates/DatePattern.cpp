// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/DatePattern.h"

#include <algorithm>
#include <unicode/datefmt.h>
#include <unicode/localpointer.h>
#include <unicode/udat.h>

namespace vorlan {

namespace {

using icu::UnicodeString;
using Style = DateFormatter::Style;

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

UDateFormatStyle relativeStyle(Style style) {
    return static_cast<UDateFormatStyle>(icuStyle(style) | UDAT_RELATIVE);
}

// Of ICU's own relative formatter, whose names of days go by the real clock; its pattern does not.
UnicodeString relativePattern(Style dateStyle, Style timeStyle, const icu::Locale& locale,
                              UErrorCode& status) {
    const icu::LocalUDateFormatPointer format(udat_open(icuStyle(timeStyle), relativeStyle(dateStyle),
                                                        locale.getName(), nullptr, -1, nullptr, -1, &status));
    UErrorCode tooShort = U_ZERO_ERROR;
    if (U_FAILURE(status)) return {};
    const auto length = udat_toPattern(format.getAlias(), false, nullptr, 0, &tooShort);
    UnicodeString pattern;
    auto* const letters = pattern.getBuffer(length + 1);
    const auto written = udat_toPattern(format.getAlias(), false, letters, length + 1, &status);
    pattern.releaseBuffer(U_SUCCESS(status) ? written : 0);
    return pattern;
}

UnicodeString quoted(const UnicodeString& text) {
    UnicodeString inside = text;
    inside.findAndReplace(UnicodeString(u'\''), UnicodeString(u"''"));
    return UnicodeString(u'\'') + inside + UnicodeString(u'\'');
}

// The pattern of date and time with a name in place of the date's part.
UnicodeString withName(const UnicodeString& pattern, const UnicodeString& datePart,
                       const UnicodeString& name) {
    const auto start = pattern.indexOf(datePart);
    if (start < 0) return pattern;
    UnicodeString result = pattern;
    return result.replace(start, datePart.length(), quoted(name));
}

} // namespace

bool isDatePattern(std::string_view pattern) {
    return std::ranges::count(pattern, '\'') % 2 == 0;
}

std::unique_ptr<icu::SimpleDateFormat> formatOfStyles(Style dateStyle, Style timeStyle,
                                                      const icu::Locale& locale) {
    // ICU's two enumerations of the styles are the same numbers.
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
        static_cast<icu::DateFormat::EStyle>(icuStyle(dateStyle)),
        static_cast<icu::DateFormat::EStyle>(icuStyle(timeStyle)), locale));
    auto* const simple = dynamic_cast<icu::SimpleDateFormat*>(format.get());
    if (simple == nullptr) return nullptr;
    static_cast<void>(format.release());
    return std::unique_ptr<icu::SimpleDateFormat>(simple);
}

std::unique_ptr<icu::SimpleDateFormat> relativeFormat(Style dateStyle, Style timeStyle,
                                                      const icu::Locale& locale,
                                                      const UnicodeString& dayName) {
    UErrorCode status = U_ZERO_ERROR;
    auto pattern = relativePattern(dateStyle, timeStyle, locale, status);
    const auto datePart = relativePattern(dateStyle, Style::none, locale, status);
    auto format = formatOfStyles(dateStyle, Style::none, locale);
    if (U_FAILURE(status) || !format) return nullptr;
    format->applyPattern(dayName.isEmpty() ? pattern : withName(pattern, datePart, dayName));
    return format;
}

} // namespace vorlan
