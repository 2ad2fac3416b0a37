// SPDX-License-Identifier: Apache-2.0
#include "platform/text/NumberFormatInWords.h"

#include "platform/text/UTF16.h"

#include <cmath>

namespace vorlan {

namespace {

constexpr std::int64_t billion = 1'000'000'000;

NumberLayout inDigits(NumberLayout layout, const NumberDigits& digits) {
    layout.style = NumberFormatter::Style::decimal;
    layout.minimumFractionDigits = 0;
    layout.maximumFractionDigits = digits.maximumFractionDigits;
    layout.usesGroupingSeparator = true;
    return layout;
}

std::uint64_t magnitude(std::int64_t number) {
    return number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
}

} // namespace

NumberFormatInWords::NumberFormatInWords(const NumberLayout& layout)
    : NumberFormat(layout),
      isOrdinal_(layout.style == NumberFormatter::Style::ordinal),
      digits_(inDigits(layout, digits())) {}

std::string NumberFormatInWords::string(double number) const {
    // Beyond that, ICU would write a number that is not this one; it is written in digits, as is what is no number.
    constexpr double limit = 0x1p63;
    if (!(std::fabs(number) < limit)) return digits_.string(number);
    const double shown = digits_.rounded(number);
    if (std::trunc(shown) == shown) return string(static_cast<std::int64_t>(shown));
    return utf8FromUTF16(byRules(shown));
}

std::string NumberFormatInWords::string(std::int64_t number) const {
    const bool isLong = number > billion || number < -billion;
    return utf8FromUTF16(isOrdinal_ && isLong ? longOrdinal(number) : byRules(number));
}

template <class Number>
icu::UnicodeString NumberFormatInWords::byRules(Number number) const {
    icu::UnicodeString text;
    borrow()->format(number, text);
    return text;
}

// ICU goes by the lowest 32 bits of a number when it looks for what makes it ordinal. So it is shown another one, of the
// same last digits.
icu::UnicodeString NumberFormatInWords::longOrdinal(std::int64_t number) const {
    const std::int64_t shorter = number % billion + (number < 0 ? -billion : billion);
    auto text = byRules(shorter);
    const auto digits = digits_.digitsOf(magnitude(shorter));
    if (text.indexOf(digits) < 0) return byRules(number);
    return text.findAndReplace(digits, digits_.digitsOf(magnitude(number)));
}

// ICU takes "twenty one", which it would write with a hyphen, for 2001, and stumbles over the last of the points in
// "1.234.".
std::optional<double> NumberFormatInWords::wholeNumber(const icu::UnicodeString& text) const {
    const auto read = NumberFormat::wholeNumber(text);
    if (read && isTextOf(*read, text)) return read;
    const auto number = isOrdinal_ ? digits_.beginning(text) : std::nullopt;
    return number && isTextOf(number->number, text) ? std::optional(number->number) : std::nullopt;
}

bool NumberFormatInWords::isTextOf(double number, const icu::UnicodeString& text) const {
    return string(number) == utf8FromUTF16(text);
}

} // namespace vorlan
