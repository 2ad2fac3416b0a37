// SPDX-License-Identifier: Apache-2.0
#pragma once

// What ICU calls a locale.

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Locale.h>

#include <unicode/locid.h>

namespace vorlan {

/// ICU's name of a locale, by which it finds its data; "en_US_POSIX" for those without a language. Takes some
/// microseconds: keep the result.
icu::Locale icuLocale(const Locale& locale);

/// The same with that calendar in place of the region's.
icu::Locale icuLocale(const Locale& locale, Calendar::Identifier calendar);

/// That language, in its script, with the customs of another locale's region: "en_US" in "de_DE" is "en_DE", and
/// "zh_TW" there "zh_Hant_DE". The other locale itself where it has the same language in the same script.
Locale inRegionOf(const Locale& language, const Locale& other);

/// The calendar that is in use where the locale is.
Calendar::Identifier usualCalendar(const Locale& locale);

} // namespace vorlan
