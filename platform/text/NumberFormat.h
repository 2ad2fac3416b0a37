// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers to text and back in one layout.

#include "platform/text/FormatPool.h"
#include "platform/text/NumberLayout.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unicode/unistr.h>

namespace vorlan {

/// Writes and reads numbers in one layout.
///
/// Threads: safe from any thread.
/// Owns:    ICU's formatters, some of them for one thread at a time.
class NumberFormat {
public:
    /// The one of a layout, from those that were made before where there is one.
    static std::shared_ptr<const NumberFormat> forLayout(const NumberLayout& layout);

    NumberFormat(const NumberFormat&) = delete;
    NumberFormat& operator=(const NumberFormat&) = delete;
    virtual ~NumberFormat() = default;

    virtual std::string string(double number) const = 0;
    virtual std::string string(std::int64_t number) const = 0;

    /// The number that the whole of a text says, but for the space around it.
    std::optional<double> number(std::string_view text) const;

    const NumberDigits& digits() const noexcept { return model_->digits(); }

protected:
    /// The number that a text begins with.
    struct Beginning {
        double number;
        bool isWhole; ///< whether the text ends where the number does
    };

    explicit NumberFormat(const NumberLayout& layout);

    virtual std::optional<double> wholeNumber(const icu::UnicodeString& text) const;
    std::optional<Beginning> beginning(const icu::UnicodeString& text) const;

    const icu::NumberFormat& model() const { return model_->icuFormat(); }
    FormatPool<ICUNumberFormat>::Loan borrow() const { return pool_.borrow(); }

private:
    explicit NumberFormat(std::unique_ptr<const ICUNumberFormat> model);

    const ICUNumberFormat* model_; // the pool's
    FormatPool<ICUNumberFormat> pool_;
};

} // namespace vorlan
