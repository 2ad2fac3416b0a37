// SPDX-License-Identifier: Apache-2.0
#pragma once

// Locales and zones that dates are tested under, and ICU's own formatters to compare with.

#include <VorlanFoundation/Platform/DateFormatter.h>

#include <array>
#include <memory>
#include <string>
#include <unicode/udat.h>

namespace vorlan::tests {

inline constexpr std::array sampleLocales{"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",
                                          "ar_EG", "hi_IN", "he_IL", "fa_IR", "th_TH"};
inline constexpr std::array sampleZones{"Europe/Berlin",      "America/New_York", "America/Sao_Paulo",
                                        "Asia/Kathmandu",     "Pacific/Apia",     "UTC",
                                        "Australia/Lord_Howe"};
inline constexpr std::array sampleStyles{DateFormatter::Style::none, DateFormatter::Style::short_,
                                         DateFormatter::Style::medium, DateFormatter::Style::long_,
                                         DateFormatter::Style::full};

/// What ICU calls a style.
UDateFormatStyle icuStyle(DateFormatter::Style style);

/// Our formatter.
DateFormatter formatterOf(const char* locale, const char* zone);

/// ICU's formatters, set up by their own means, and their texts.
class ICUDateFormat {
public:
    static ICUDateFormat ofPattern(const std::string& pattern, const char* locale, const char* zone);
    static ICUDateFormat ofStyles(UDateFormatStyle dateStyle, UDateFormatStyle timeStyle, const char* locale,
                                  const char* zone);

    std::string string(double milliseconds) const;
    std::string pattern() const;

private:
    explicit ICUDateFormat(UDateFormat* format);

    std::shared_ptr<UDateFormat> format_;
};

} // namespace vorlan::tests
