// SPDX-License-Identifier: Apache-2.0
#pragma once

// Locales whose numbers have digits.

#include <VorlanFoundation/Platform/Locale.h>

#include <unicode/locid.h>

namespace vorlan {

/// ICU's name of a locale, with Western digits where it asks for Roman numerals or others that have no digits, in which
/// ICU writes neither fractions nor clocks, or for some that there are not.
icu::Locale digitLocale(const Locale& locale);

} // namespace vorlan
