// SPDX-License-Identifier: Apache-2.0
#pragma once

// The units that spans of time are counted in, and which of them are worth showing.

#include <VorlanFoundation/Platform/DateComponents.h>
#include <VorlanFoundation/Platform/DateComponentsFormatter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vorlan {

/// The units that a span may have, the largest first.
inline constexpr std::array<CalendarComponent, 7> spanUnits{
    CalendarComponent::year,  CalendarComponent::month, CalendarComponent::weekOfMonth,
    CalendarComponent::day,   CalendarComponent::hour,  CalendarComponent::minute,
    CalendarComponent::second};

/// How many there are of a unit.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct UnitCount {
    CalendarComponent unit;
    std::int64_t count;

    friend bool operator==(const UnitCount&, const UnitCount&) = default;
};

/// A span in units, the largest first.
using UnitCounts = std::vector<UnitCount>;

/// The units that are allowed, as they are; absent ones count as 0. None where one is too large to be told exactly.
std::optional<UnitCounts> unitCounts(const DateComponents& components, CalendarComponents allowed);

/// Seconds in the units that are allowed, none of them longer than a week.
DateComponents componentsOfSeconds(std::int64_t seconds, CalendarComponents allowed);

/// Takes out what is not worth showing. Leaves one unit at least.
void dropZeros(UnitCounts& counts, DateComponentsFormatter::ZeroFormattingBehavior behavior,
               DateComponentsFormatter::UnitsStyle style);

} // namespace vorlan
