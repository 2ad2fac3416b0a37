// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers in digits.

#include "platform/text/NumberFormat.h"

#include <unicode/numberformatter.h>

namespace vorlan {

/// Writes by a formatter of ICU's that all threads use at once.
///
/// Threads: safe from any thread.
class NumberFormatInDigits : public NumberFormat {
public:
    explicit NumberFormatInDigits(const NumberLayout& layout);

    std::string string(double number) const override;
    std::string string(std::int64_t number) const override;

    /// The text of a whole number that may be too large for an integer.
    icu::UnicodeString digitsOf(std::uint64_t number) const;
    /// The number that is shown in place of one that is finite.
    double rounded(double number) const;

    using NumberFormat::beginning;

private:
    icu::number::LocalizedNumberFormatter formatter_; // stands on the model, and goes before it
};

} // namespace vorlan
