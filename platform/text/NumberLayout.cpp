// SPDX-License-Identifier: Apache-2.0
#include "platform/text/NumberLayout.h"

#include "platform/text/DigitLocale.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <algorithm>
#include <string_view>
#include <unicode/decimfmt.h>
#include <unicode/rbnf.h>
#include <utility>

namespace vorlan {

namespace {

using Style = NumberFormatter::Style;

[[noreturn]] void stop(UErrorCode status) {
    const std::string_view reason = U_FAILURE(status) ? u_errorName(status) : "no decimal numbers";
    fatalError("ICU cannot write numbers: " + std::string(reason), "VorlanFoundation/NumberFormatter");
}

UNumberFormatStyle styleOfICU(Style style) {
    switch (style) {
    case Style::currency: return UNUM_CURRENCY;
    case Style::percent: return UNUM_PERCENT;
    case Style::scientific: return UNUM_SCIENTIFIC;
    default: return UNUM_DECIMAL;
    }
}

std::unique_ptr<icu::NumberFormat> inWords(const NumberLayout& layout) {
    UErrorCode status = U_ZERO_ERROR;
    const auto tag = layout.style == Style::spellOut ? icu::URBNF_SPELLOUT : icu::URBNF_ORDINAL;
    auto format = std::make_unique<icu::RuleBasedNumberFormat>(tag, digitLocale(layout.locale), status);
    if (U_FAILURE(status)) stop(status);
    return format;
}

std::unique_ptr<icu::NumberFormat> inDigits(const NumberLayout& layout) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format(
        icu::NumberFormat::createInstance(digitLocale(layout.locale), styleOfICU(layout.style), status));
    if (U_FAILURE(status) || dynamic_cast<icu::DecimalFormat*>(format.get()) == nullptr) stop(status);
    return format;
}

// What the style does when nothing is said.
NumberDigits digitsOf(const icu::NumberFormat& format, Style style) {
    if (style == Style::none) return {};
    if (style == Style::ordinal) return {.usesGroupingSeparator = true};
    if (style == Style::spellOut) return {.maximumFractionDigits = NumberDigits::limit};
    NumberDigits digits{.minimumFractionDigits = format.getMinimumFractionDigits(),
                        .maximumFractionDigits = format.getMaximumFractionDigits(),
                        .usesGroupingSeparator = static_cast<bool>(format.isGroupingUsed())};
    // ICU's "no digits" of the pattern "#E0" means as many as there are.
    if (style == Style::scientific && digits.maximumFractionDigits == 0)
        digits.maximumFractionDigits = NumberDigits::limit;
    return digits;
}

void apply(const NumberDigits& digits, const NumberLayout& layout, icu::NumberFormat& format) {
    if (layout.isInWords()) return; // whose numbers are rounded before they get there
    format.setGroupingUsed(static_cast<UBool>(digits.usesGroupingSeparator));
    format.setRoundingMode(static_cast<icu::NumberFormat::ERoundingMode>(layout.roundingMode));
    if (layout.style == Style::scientific) return;
    format.setMaximumFractionDigits(digits.maximumFractionDigits);
    format.setMinimumFractionDigits(digits.minimumFractionDigits);
}

} // namespace

std::string NumberLayout::key() const {
    std::string key = locale.identifier();
    const auto add = [&key](int part) { key += '|' + std::to_string(part); };
    add(static_cast<int>(style));
    add(static_cast<int>(roundingMode));
    add(minimumFractionDigits.value_or(-1));
    add(maximumFractionDigits.value_or(-1));
    add(usesGroupingSeparator ? static_cast<int>(*usesGroupingSeparator) : -1);
    return key;
}

NumberDigits NumberDigits::with(const NumberLayout& layout) const {
    NumberDigits digits = *this;
    if (layout.usesGroupingSeparator) digits.usesGroupingSeparator = *layout.usesGroupingSeparator;
    const auto [least, most] = std::pair(layout.minimumFractionDigits, layout.maximumFractionDigits);
    if (least) digits.minimumFractionDigits = *least;
    if (most) digits.maximumFractionDigits = *most;
    // The style gives way to what was said.
    if (least && !most) digits.maximumFractionDigits = std::max(digits.maximumFractionDigits, *least);
    if (most && !least) digits.minimumFractionDigits = std::min(digits.minimumFractionDigits, *most);
    return digits;
}

ICUNumberFormat::ICUNumberFormat(NumberLayout layout)
    : layout_(std::move(layout)),
      format_(layout_.isInWords() ? inWords(layout_) : inDigits(layout_)),
      digits_(digitsOf(*format_, layout_.style).with(layout_)) {
    apply(digits_, layout_, *format_);
}

} // namespace vorlan
