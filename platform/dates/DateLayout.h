// SPDX-License-Identifier: Apache-2.0
#pragma once

// What defines how a date is written.

#include "platform/dates/ZoneRules.h"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/DateFormatter.h>
#include <VorlanFoundation/Platform/Locale.h>

#include <optional>
#include <string>

namespace vorlan {

/// Where weeks begin, and which of them is a year's first.
struct WeekCustom {
    int firstWeekday;
    int minimumDaysInFirstWeek;
};

/// All that the text of a date depends on, but the date and the present.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct DateLayout {
    Locale locale;
    const detail::ZoneRules* zone;
    Calendar::Identifier calendar;
    std::optional<WeekCustom> week;     ///< that of the locale when absent
    std::optional<std::string> pattern; ///< when absent, the styles count
    DateFormatter::Style dateStyle = DateFormatter::Style::none;
    DateFormatter::Style timeStyle = DateFormatter::Style::none;
    /// The date style's pattern is joined with the time's as that of a day with a name is, and with that name in its
    /// place where one is given.
    bool isRelative = false;
    std::string dayName;

    /// A text that differs for any two that differ in anything.
    std::string key() const;
};

} // namespace vorlan
