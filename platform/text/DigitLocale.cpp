// SPDX-License-Identifier: Apache-2.0
#include "platform/text/DigitLocale.h"

#include "platform/text/ICULocale.h"

#include <memory>
#include <unicode/numsys.h>

namespace vorlan {

icu::Locale digitLocale(const Locale& locale) {
    auto result = icuLocale(locale);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberingSystem> digits(icu::NumberingSystem::createInstance(result, status));
    if (U_SUCCESS(status) && !digits->isAlgorithmic()) return result;
    status = U_ZERO_ERROR;
    result.setKeywordValue("numbers", "latn", status); // fails for want of memory alone
    return result;
}

} // namespace vorlan
