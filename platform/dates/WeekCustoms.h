// SPDX-License-Identifier: Apache-2.0
#pragma once

// On which day weeks begin, by region.

#include <VorlanFoundation/Platform/Locale.h>

namespace vorlan {

/// How weeks are counted.
struct WeekCustoms {
    int firstWeekday;           // 1 is Sunday
    int minimumDaysInFirstWeek; // 1 to 7
};

/// What is customary where the locale is. Kept from the first time on: costs a look-up. Safe from any thread.
WeekCustoms weekCustoms(const Locale& locale);

} // namespace vorlan
