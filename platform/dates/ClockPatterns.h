// SPDX-License-Identifier: Apache-2.0
#pragma once

// How hours, minutes and seconds are written by their places.

#include <array>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace vorlan {

/// Up to three numbers, and what stands before, between and behind them.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct ClockPattern {
    struct Field {
        icu::UnicodeString before; ///< as ":"
        int digits = 0;            ///< the fewest; none for a field that there is not
    };
    std::array<Field, 3> fields;
    icu::UnicodeString behind;
};

/// Those of a locale. ICU's own formatter, which takes its time, is asked once for each.
///
/// Threads: safe from any thread: they never change.
struct ClockPatterns {
    /// Stops the process where ICU has lost its data. `zero` is the locale's digit.
    ClockPatterns(const icu::Locale& locale, const icu::UnicodeString& zero);

    ClockPattern hourMinute;
    ClockPattern minuteSecond;
    ClockPattern hourMinuteSecond;
};

} // namespace vorlan
