// SPDX-License-Identifier: Apache-2.0
#pragma once

// Which form of a sentence goes with a number, by the rules of a language.
//
//     pluralCategory(1, Locale("en"));        // PluralCategory::one: "1 file"
//     pluralCategory(3, Locale("ru"));        // PluralCategory::few: "3 файла"

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace vorlan {

/// The forms that languages have, in the order of CLDR; most have but two or three of them. The names are not numbers:
/// French says `one` of 0 and 1, and Russian of 1, 21 and 31.
enum class PluralCategory : std::uint8_t { zero, one, two, few, many, other };

/// How many there are.
inline constexpr int pluralCategoryCount = 6;

/// Their names, as CLDR and tables of translations have them.
template <>
struct RawValues<PluralCategory> {
    static constexpr std::array cases{std::pair(PluralCategory::zero, std::string_view("zero")),
                                      std::pair(PluralCategory::one, std::string_view("one")),
                                      std::pair(PluralCategory::two, std::string_view("two")),
                                      std::pair(PluralCategory::few, std::string_view("few")),
                                      std::pair(PluralCategory::many, std::string_view("many")),
                                      std::pair(PluralCategory::other, std::string_view("other"))};
};

/// The form that goes with a whole number; `other` for a locale of no known language. By the cardinal rules of CLDR, as
/// ICU has them. Safe from any thread.
VORLAN_EXPORT PluralCategory pluralCategory(std::int64_t number, const Locale& locale);

/// The form that goes with a number written with so many digits (0 to 340) behind the decimal point: of 1, English says
/// `one`, of 1.0 `other`. Infinities and what is no number are `other`. Safe from any thread.
VORLAN_EXPORT PluralCategory pluralCategory(double number, int fractionDigits, const Locale& locale);

} // namespace vorlan
