// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/PrintedNumber.h"
#include "platform/text/FormatCache.h"
#include "platform/text/NumberFormatInDigits.h"
#include "platform/text/UTF16.h"
#include "platform/values/PerThread.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

namespace vorlan {

namespace {

using Style = NumberFormatter::Style;
using Format = std::shared_ptr<const NumberFormatInDigits>;

struct Digits {
    Style style = Style::decimal;
    int least = 0; // behind the decimal point
    int most = 0;

    friend bool operator==(const Digits&, const Digits&) = default;
};

struct KeptFormat {
    std::string locale;
    Digits digits;
    Format format;
};

// What a thread wrote by last, so that threads do not wait for each other at the cache.
struct KeptFormats {
    std::array<KeptFormat, 4> formats;
    std::size_t oldest = 0;
};

Format sharedFormat(const Locale& locale, const Digits& digits) {
    static auto& cache = *new FormatCache<NumberFormatInDigits>; // threads may write while the process ends
    const NumberLayout layout{.locale = locale,
                              .style = digits.style,
                              .minimumFractionDigits = digits.least,
                              .maximumFractionDigits = digits.most};
    return cache.value(layout.key(), [&] { return std::make_shared<const NumberFormatInDigits>(layout); });
}

Format formatFor(const Locale& locale, const Digits& digits) {
    auto* const kept = PerThread<KeptFormats>::get();
    if (kept == nullptr) return sharedFormat(locale, digits);
    for (const auto& each : kept->formats)
        if (each.format && each.digits == digits && each.locale == locale.identifier()) return each.format;
    auto format = sharedFormat(locale, digits);
    kept->formats[kept->oldest] = {locale.identifier(), digits, format};
    kept->oldest = (kept->oldest + 1) % kept->formats.size();
    return format;
}

constexpr Digits whole{};

bool isNegative(WholeNumber number) {
    return number.isNegative;
}
bool isNegative(double number) {
    return std::signbit(number);
}

WholeNumber magnitude(WholeNumber number) {
    return {.magnitude = number.magnitude};
}
double magnitude(double number) {
    return std::fabs(number);
}

std::string text(const NumberFormatInDigits& format, WholeNumber number) {
    // The least integer is its own negative.
    if (number.isNegative) return format.string(static_cast<std::int64_t>(0 - number.magnitude));
    return utf8FromUTF16(format.digitsOf(number.magnitude));
}
std::string text(const NumberFormatInDigits& format, double number) {
    return format.string(number);
}

template <class Number>
PrintedNumber inFormat(const GapForm& form, Number number, const NumberFormatInDigits& format) {
    auto digits = text(format, magnitude(number));
    if (!isNegative(number))
        return {.sign = form.hasPlus ? "+" : form.hasBlank ? " " : "", .digits = std::move(digits)};
    auto sign = text(format, number);
    // Most locales have what makes a number negative before it.
    if (!sign.ends_with(digits)) return {.digits = std::move(sign)};
    sign.resize(sign.size() - digits.size());
    return {.sign = std::move(sign), .digits = std::move(digits)};
}

std::string zeroOf(const Locale& locale) {
    return formatFor(locale, whole)->string(std::int64_t{0});
}

// As `%e` has it, with one digit before the decimal point.
int exponentOf(double number, int fractionDigits) {
    const auto text =
        printed({.conversion = 'e', .precision = static_cast<std::size_t>(fractionDigits)}, number).digits;
    int exponent = 0;
    const auto at = text.find('e') + 1;
    const auto from = text.data() + at + (text[at] == '+' ? 1 : 0);
    std::from_chars(from, text.data() + text.size(), exponent);
    return exponent;
}

// As many significant digits as `%g` has, without zeros at the end.
Digits significantDigits(const GapForm& form, double number) {
    const int most = std::clamp(static_cast<int>(form.precision.value_or(6)), 1, NumberDigits::limit);
    const int exponent = std::isfinite(number) ? exponentOf(number, most - 1) : 0;
    const bool isShort = exponent >= -4 && exponent < most;
    const int digits = isShort ? most - 1 - exponent : most - 1;
    return {.style = isShort ? Style::decimal : Style::scientific,
            .least = form.isAlternative ? digits : 0,
            .most = digits};
}

Digits digitsOf(const GapForm& form, double number) {
    if (form.conversion == 'g' || form.conversion == 'G') return significantDigits(form, number);
    const int digits = std::min(static_cast<int>(form.precision.value_or(6)), NumberDigits::limit);
    const bool isFixed = form.conversion == 'f' || form.conversion == 'F';
    return {.style = isFixed ? Style::decimal : Style::scientific, .least = digits, .most = digits};
}

} // namespace

PrintedNumber printed(const GapForm& form, WholeNumber number, const Locale& locale) {
    if (std::string_view("diu").find(form.conversion) == std::string_view::npos) return printed(form, number);
    auto result = inFormat(form, number, *formatFor(locale, whole));
    if (form.hasZeros || form.precision) result.zero = zeroOf(locale);
    if (!form.precision) return result;
    if (*form.precision == 0 && number.magnitude == 0) result.digits.clear();
    std::string zeros;
    for (auto count = std::to_string(number.magnitude).size(); count < *form.precision; ++count)
        zeros += result.zero;
    result.digits.insert(0, zeros);
    result.zero.clear();
    return result;
}

PrintedNumber printed(const GapForm& form, double number, const Locale& locale) {
    if (form.conversion == 'a' || form.conversion == 'A') return printed(form, number);
    auto result = inFormat(form, number, *formatFor(locale, digitsOf(form, number)));
    if (!std::isfinite(number)) {
        result.zero.clear();
    } else if (form.hasZeros) {
        result.zero = zeroOf(locale);
    }
    return result;
}

std::string describedNumber(double number, const Locale& locale) {
    Digits digits;
    if (std::isfinite(number)) {
        const auto described = describe(number);
        const auto mantissa = described.substr(0, described.find('e'));
        digits.least = digits.most = fractionDigitsOf(mantissa);
        if (mantissa.size() < described.size()) digits.style = Style::scientific;
    }
    return formatFor(locale, digits)->string(number);
}

std::string describedNumber(WholeNumber number, const Locale& locale) {
    return text(*formatFor(locale, whole), number);
}

} // namespace vorlan
