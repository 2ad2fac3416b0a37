// SPDX-License-Identifier: Apache-2.0
#pragma once

// How numbers are to be written.

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <memory>
#include <optional>
#include <string>
#include <unicode/numfmt.h>

namespace vorlan {

/// All that the text of a number depends on but the number. What is absent is as the style has it in the locale.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct NumberLayout {
    Locale locale;
    NumberFormatter::Style style = NumberFormatter::Style::none;
    NumberFormatter::RoundingMode roundingMode = NumberFormatter::RoundingMode::halfEven;
    std::optional<int> minimumFractionDigits;
    std::optional<int> maximumFractionDigits;
    std::optional<bool> usesGroupingSeparator;

    /// Whether numbers are written in words, or with what makes them ordinal.
    bool isInWords() const {
        return style == NumberFormatter::Style::spellOut || style == NumberFormatter::Style::ordinal;
    }
    /// The same for all layouts that are equal, and for no others.
    std::string key() const;
};

/// What is in force where a layout says something, and where it says nothing.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct NumberDigits {
    int minimumFractionDigits = 0;
    int maximumFractionDigits = 0;
    bool usesGroupingSeparator = false;

    /// No number has digits further behind the decimal point.
    static constexpr int limit = 340;

    /// These, but for what the layout says.
    NumberDigits with(const NumberLayout& layout) const;
};

/// ICU's formatter in a layout. Stops the process where ICU has lost its data.
///
/// Threads: one thread at a time; any number may clone one.
class ICUNumberFormat {
public:
    explicit ICUNumberFormat(NumberLayout layout);

    /// A second one, made from the layout: ICU does not say that its own may be copied while another thread does.
    std::unique_ptr<ICUNumberFormat> clone() const { return std::make_unique<ICUNumberFormat>(layout_); }

    const NumberDigits& digits() const noexcept { return digits_; }
    /// The text of a number, added to one.
    template <class Number>
    void format(Number number, icu::UnicodeString& text) const {
        format_->format(number, text);
    }
    /// What a text begins with, and where that ends.
    void parse(const icu::UnicodeString& text, icu::Formattable& number, icu::ParsePosition& end) const {
        format_->parse(text, number, end);
    }
    const icu::NumberFormat& icuFormat() const noexcept { return *format_; }

private:
    NumberLayout layout_;
    std::unique_ptr<icu::NumberFormat> format_;
    NumberDigits digits_;
};

} // namespace vorlan
