// SPDX-License-Identifier: Apache-2.0
#pragma once

// Patterns of dates: those that are well formed, and those that a locale has for its styles.

#include <VorlanFoundation/Platform/DateFormatter.h>

#include <memory>
#include <string_view>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace vorlan {

/// Whether every quote in it is closed.
bool isDatePattern(std::string_view pattern);

/// A format of the locale's styles, at least one of which is not none; null where ICU has none. More than the pattern:
/// some calendars write their numbers in another way.
std::unique_ptr<icu::SimpleDateFormat> formatOfStyles(DateFormatter::Style dateStyle,
                                                      DateFormatter::Style timeStyle,
                                                      const icu::Locale& locale);

/// The same for dates near the present: date and time are joined as where the day has a name, which is not always as
/// where it has none. The name stands in the date's place where it is not empty. There is a date style.
std::unique_ptr<icu::SimpleDateFormat> relativeFormat(DateFormatter::Style dateStyle,
                                                      DateFormatter::Style timeStyle,
                                                      const icu::Locale& locale,
                                                      const icu::UnicodeString& dayName);

} // namespace vorlan
