// SPDX-License-Identifier: Apache-2.0
#pragma once

// What a test says of the user's surroundings in place of the system: the wall clock, the locale, the time zone and
// the calendar. Behind `testing::WallClock` and `testing::UserRegion`.

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TimeZone.h>

#include <optional>

namespace vorlan::detail {

/// What is given in place of the system's; what is absent is the system's.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct RegionOverride {
    std::optional<Locale> locale = {};
    std::optional<TimeZone> timeZone = {};
    std::optional<Calendar::Identifier> calendar = {};
};

/// What is given. Safe from any thread.
VORLAN_EXPORT RegionOverride regionOverride();

/// Replaces it. Safe from any thread; who asks meanwhile sees one or the other.
VORLAN_EXPORT void setRegionOverride(RegionOverride region);

/// Has `Date()` be that date, or the system's again, and returns what it was set to. Safe from any thread.
VORLAN_EXPORT std::optional<Date> setWallClock(std::optional<Date> now);

} // namespace vorlan::detail
