// SPDX-License-Identifier: Apache-2.0
#include "platform/text/NumberFormatInDigits.h"

#include "platform/text/CompiledNumbers.h"
#include "platform/text/UTF16.h"

#include <charconv>
#include <unicode/decimfmt.h>
#include <unicode/stringpiece.h>
#include <utility>

namespace vorlan {

namespace {

using icu::number::FormattedNumber;
using icu::number::LocalizedNumberFormatter;
using icu::number::Precision;

LocalizedNumberFormatter formatterFor(const icu::NumberFormat& format, const NumberLayout& layout,
                                      const NumberDigits& digits) {
    UErrorCode status = U_ZERO_ERROR;
    auto formatter = *static_cast<const icu::DecimalFormat&>(format).toNumberFormatter(status);
    const bool isByHand = layout.minimumFractionDigits || layout.maximumFractionDigits;
    if (layout.style != NumberFormatter::Style::scientific || !isByHand) return formatter;
    // What a decimal format takes for the digits behind the point are those before it, too.
    return std::move(formatter)
        .precision(Precision::minMaxFraction(digits.minimumFractionDigits, digits.maximumFractionDigits))
        .roundingMode(static_cast<UNumberFormatRoundingMode>(layout.roundingMode));
}

std::string text(const FormattedNumber& number) {
    UErrorCode status = U_ZERO_ERROR;
    return utf8FromUTF16(number.toTempString(status));
}

} // namespace

NumberFormatInDigits::NumberFormatInDigits(const NumberLayout& layout)
    : NumberFormat(layout), formatter_(formatterFor(model(), layout, digits())) {
    compile(formatter_);
}

std::string NumberFormatInDigits::string(double number) const {
    UErrorCode status = U_ZERO_ERROR;
    return text(formatter_.formatDouble(number, status));
}

std::string NumberFormatInDigits::string(std::int64_t number) const {
    UErrorCode status = U_ZERO_ERROR;
    return text(formatter_.formatInt(number, status));
}

icu::UnicodeString NumberFormatInDigits::digitsOf(std::uint64_t number) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto digits = std::to_string(number);
    return formatter_.formatDecimal(icu::StringPiece(digits), status).toString(status);
}

double NumberFormatInDigits::rounded(double number) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto digits = formatter_.formatDouble(number, status).toDecimalNumber<std::string>(status);
    double shown = number;
    std::from_chars(digits.data(), digits.data() + digits.size(), shown);
    return shown;
}

} // namespace vorlan
