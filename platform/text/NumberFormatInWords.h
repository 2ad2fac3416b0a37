// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers in words, and ordinal numbers.

#include "platform/text/NumberFormatInDigits.h"

namespace vorlan {

/// Writes and reads by ICU's rules for words, but where these are wrong.
///
/// Threads: safe from any thread.
class NumberFormatInWords : public NumberFormat {
public:
    explicit NumberFormatInWords(const NumberLayout& layout);

    std::string string(double number) const override;
    std::string string(std::int64_t number) const override;

protected:
    std::optional<double> wholeNumber(const icu::UnicodeString& text) const override;

private:
    template <class Number>
    icu::UnicodeString byRules(Number number) const;
    icu::UnicodeString longOrdinal(std::int64_t number) const;
    bool isTextOf(double number, const icu::UnicodeString& text) const;

    bool isOrdinal_;
    NumberFormatInDigits digits_;
};

} // namespace vorlan
