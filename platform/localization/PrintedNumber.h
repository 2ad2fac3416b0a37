// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers in the gaps of formats, as in C and as in a locale.

#include "platform/localization/FormatReader.h"

#include <VorlanFoundation/Platform/Locale.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlan {

/// A whole number of 64 bits, with or without a sign.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct WholeNumber {
    std::uint64_t magnitude = 0;
    bool isNegative = false;

    static WholeNumber of(std::int64_t number) {
        // Without a sign the least one has its negative, too.
        const auto bits = static_cast<std::uint64_t>(number);
        return {.magnitude = number < 0 ? 0 - bits : bits, .isNegative = number < 0};
    }
    static WholeNumber of(std::uint64_t number) { return {.magnitude = number}; }
};

/// The text of a number, open between its sign and its digits to what fills a width.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct PrintedNumber {
    std::string sign = {}; ///< Or what else comes first, as "0x".
    std::string digits = {};
    std::string zero = "0"; ///< Fills a width; empty where none does.
};

/// The numbers as `printf` writes them in the locale "C", but for the width. The conversion is one for such numbers; one
/// with a sign is written with it by `u`, too.
PrintedNumber printed(const GapForm& form, WholeNumber number);
PrintedNumber printed(const GapForm& form, double number);

/// The same with the digits of a locale, grouped as there; hexadecimal and octal ones stay as they are.
PrintedNumber printed(const GapForm& form, WholeNumber number, const Locale& locale);
PrintedNumber printed(const GapForm& form, double number, const Locale& locale);

/// What `describe` writes, with the digits of a locale.
std::string describedNumber(WholeNumber number, const Locale& locale);
std::string describedNumber(double number, const Locale& locale);

/// How many digits a number's text in C has behind the decimal point; those that an exponent moves before it are none.
int fractionDigitsOf(std::string_view text);

} // namespace vorlan
