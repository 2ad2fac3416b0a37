// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/RelativeDay.h"

#include "platform/text/ICULocale.h"
#include "platform/text/UTF16.h"

#include <unicode/reldatefmt.h>

namespace vorlan {

RelativeDayNames RelativeDayNames::ofLocale(const Locale& locale) {
    constexpr std::array directions = {UDAT_DIRECTION_LAST_2, UDAT_DIRECTION_LAST, UDAT_DIRECTION_THIS,
                                       UDAT_DIRECTION_NEXT, UDAT_DIRECTION_NEXT_2};
    RelativeDayNames result;
    UErrorCode status = U_ZERO_ERROR;
    const icu::RelativeDateTimeFormatter formatter(icuLocale(locale), status);
    if (U_FAILURE(status)) return result;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        UErrorCode absent = U_ZERO_ERROR;
        icu::UnicodeString name;
        formatter.format(directions[i], UDAT_ABSOLUTE_DAY, name, absent);
        if (U_SUCCESS(absent)) result.names[i] = utf8FromUTF16(name);
    }
    return result;
}

} // namespace vorlan
