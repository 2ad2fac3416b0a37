// SPDX-License-Identifier: Apache-2.0
#include "platform/text/NumberFormat.h"

#include "platform/text/FormatCache.h"
#include "platform/text/NumberFormatInDigits.h"
#include "platform/text/NumberFormatInWords.h"
#include "platform/text/UTF16.h"
#include "platform/values/UTF8.h"

#include <cstddef>
#include <unicode/fmtable.h>
#include <unicode/parsepos.h>
#include <utility>

namespace vorlan {

namespace {

// Longer than every text of a number that was not made to be long; ICU's effort grows faster than the text.
constexpr std::size_t longestText = 10'000;

} // namespace

std::shared_ptr<const NumberFormat> NumberFormat::forLayout(const NumberLayout& layout) {
    static auto& cache = *new FormatCache<NumberFormat>; // threads may write numbers while the process ends
    return cache.value(layout.key(), [&layout]() -> std::shared_ptr<const NumberFormat> {
        if (layout.isInWords()) return std::make_shared<const NumberFormatInWords>(layout);
        return std::make_shared<const NumberFormatInDigits>(layout);
    });
}

NumberFormat::NumberFormat(const NumberLayout& layout)
    : NumberFormat(std::make_unique<const ICUNumberFormat>(layout)) {}

NumberFormat::NumberFormat(std::unique_ptr<const ICUNumberFormat> model)
    : model_(model.get()), pool_(std::move(model)) {}

std::optional<double> NumberFormat::number(std::string_view text) const {
    if (text.size() > longestText || !utf8::isWellFormed(text)) return std::nullopt;
    return wholeNumber(utf16FromUTF8(text).trim());
}

std::optional<double> NumberFormat::wholeNumber(const icu::UnicodeString& text) const {
    const auto read = beginning(text);
    return read && read->isWhole ? std::optional(read->number) : std::nullopt;
}

std::optional<NumberFormat::Beginning> NumberFormat::beginning(const icu::UnicodeString& text) const {
    icu::Formattable read;
    icu::ParsePosition end;
    borrow()->parse(text, read, end);
    if (end.getIndex() == 0) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const double number = read.getDouble(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Beginning{.number = number, .isWhole = end.getIndex() == text.length()};
}

} // namespace vorlan
