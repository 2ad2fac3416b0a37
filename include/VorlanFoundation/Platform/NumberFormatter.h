// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers as the user reads them, and back.
//
//     NumberFormatter formatter;
//     formatter.setNumberStyle(NumberFormatter::Style::decimal);
//     formatter.string(1234.5);               // "1,234.5"

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorlan {

namespace detail {
class NumberFormatterState;
}

/// Turns numbers into text and text into numbers, by the locale's custom.
///
/// A formatter is a handle: copies are the same formatter, and equal. `copy()` makes one of its own. Without a locale
/// it follows the user's. Rounding is ICU's: it goes by the shortest decimal digits that stand for the number, so
/// 1.015 to two digits is "1.02", although the double is a little less, and 1.005 is "1.00" half to even and "1.01" half
/// up.
///
/// Threads: safe from any thread. Each text is by the settings of one moment.
/// Owns:    its settings, shared by its copies.
/// Example: see the top of the file.
class VORLAN_EXPORT NumberFormatter {
public:
    /// What is written.
    enum class Style : std::uint8_t {
        none,       ///< "1235" for 1234.6: a whole number, not grouped
        decimal,    ///< "1,234.5"
        currency,   ///< "$1,234.50"
        percent,    ///< "50%" for 0.5
        scientific, ///< "1.2345E3"
        spellOut,   ///< "one thousand two hundred thirty-four point five"; in digits beyond 2^63
        ordinal,    ///< "3rd": a whole number
    };

    /// How digits that are not shown are rounded. The numbers are the desktop platform's.
    enum class RoundingMode : std::uint8_t {
        ceiling = 0,  ///< up
        floor = 1,    ///< down
        down = 2,     ///< towards zero
        up = 3,       ///< away from zero
        halfEven = 4, ///< to the nearest, halves to the even digit
        halfDown = 5, ///< to the nearest, halves towards zero
        halfUp = 6,   ///< to the nearest, halves away from zero
    };

    /// With the style none.
    NumberFormatter();

    // Without a move: there is no formatter that has nothing.
    NumberFormatter(const NumberFormatter&) = default;
    NumberFormatter& operator=(const NumberFormatter&) = default;

    /// A formatter of its own with the same settings.
    NumberFormatter copy() const;

    /// The text of a number; infinities and what is no number are written as the locale does ("∞", "NaN").
    std::string string(double number) const;
    /// The text of an integer, exact in all its digits.
    std::string string(std::int64_t number) const;
    /// The same.
    std::string string(int number) const { return string(std::int64_t{number}); }
    /// The text of a number by the digits that a float holds: 0.1F is "0.1".
    std::string string(float number) const;

    /// The number that a text says, the whole of it but for space around it; absent when it says none. In words and
    /// ordinal it has to be as `string` writes it.
    std::optional<double> number(std::string_view text) const;

    Style numberStyle() const;
    /// Digits that were set by hand stay.
    void setNumberStyle(Style style);

    /// The fewest digits behind the decimal point, at first the style's. Setting one beyond the most sets both. Words have
    /// no more than they need. Counts beyond 340, where no number has digits any more, are taken for 340.
    int minimumFractionDigits() const;
    void setMinimumFractionDigits(int digits);
    /// The most digits behind the decimal point, at first the style's, which is 340 where it shows all that there are.
    /// Setting one below the fewest sets both. A negative count is taken for 0.
    int maximumFractionDigits() const;
    void setMaximumFractionDigits(int digits);

    /// At first half to even.
    RoundingMode roundingMode() const;
    void setRoundingMode(RoundingMode mode);

    /// Whether digits are grouped as the locale does, at first as the style does. Ordinal numbers always are.
    bool usesGroupingSeparator() const;
    void setUsesGroupingSeparator(bool grouping);

    /// The locale, that of the user where none is set.
    Locale locale() const;
    void setLocale(std::optional<Locale> locale);

    /// Whether they are the same formatter.
    friend bool operator==(const NumberFormatter&, const NumberFormatter&) = default;

private:
    explicit NumberFormatter(std::shared_ptr<detail::NumberFormatterState> state);

    std::shared_ptr<detail::NumberFormatterState> state_;
};

} // namespace vorlan
