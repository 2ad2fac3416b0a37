// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/SpanUnits.h"

#include <algorithm>
#include <utility>

namespace vorlan {

namespace {

using UnitsStyle = DateComponentsFormatter::UnitsStyle;
using ZeroFormattingBehavior = DateComponentsFormatter::ZeroFormattingBehavior;

// ICU counts in doubles.
constexpr std::int64_t largestCount = std::int64_t{1} << 53;

constexpr std::array<std::pair<CalendarComponent, std::int64_t>, 5> lengths{{
    {CalendarComponent::weekOfMonth, 604'800},
    {CalendarComponent::day, 86'400},
    {CalendarComponent::hour, 3'600},
    {CalendarComponent::minute, 60},
    {CalendarComponent::second, 1},
}};

ZeroFormattingBehavior withoutDefault(ZeroFormattingBehavior behavior, UnitsStyle style) {
    if (!behavior.contains(ZeroFormattingBehavior::default_)) return behavior;
    const bool isPositional = style == UnitsStyle::positional;
    return behavior | (isPositional ? ZeroFormattingBehavior::dropLeading : ZeroFormattingBehavior::dropAll);
}

} // namespace

std::optional<UnitCounts> unitCounts(const DateComponents& components, CalendarComponents allowed) {
    UnitCounts counts;
    for (const auto unit : spanUnits) {
        if (!allowed.contains(unit)) continue;
        const auto count = components.value(unit).value_or(0);
        if (count < -largestCount || count > largestCount) return std::nullopt;
        counts.push_back({unit, count});
    }
    return counts;
}

DateComponents componentsOfSeconds(std::int64_t seconds, CalendarComponents allowed) {
    DateComponents components;
    for (const auto& [unit, length] : lengths) {
        if (!allowed.contains(unit)) continue;
        components.setValue(seconds / length, unit);
        seconds %= length;
    }
    return components;
}

void dropZeros(UnitCounts& counts, ZeroFormattingBehavior behavior, UnitsStyle style) {
    behavior = withoutDefault(behavior, style);
    if (behavior.contains(ZeroFormattingBehavior::pad)) return;
    const auto drops = [behavior](ZeroFormattingBehavior zeros) { return behavior.contains(zeros); };
    const auto isCounted = [](const UnitCount& unit) { return unit.count != 0; };
    const auto first = std::ranges::find_if(counts, isCounted);
    const auto last = std::find_if(counts.rbegin(), counts.rend(), isCounted).base();
    UnitCounts shown;
    for (auto unit = counts.begin(); unit != counts.end(); ++unit) {
        const bool isLeading = unit < first, isTrailing = unit >= last; // both where none is counted
        const bool isDropped = (isLeading && drops(ZeroFormattingBehavior::dropLeading)) ||
                               (isTrailing && drops(ZeroFormattingBehavior::dropTrailing)) ||
                               (!isLeading && !isTrailing && drops(ZeroFormattingBehavior::dropMiddle));
        if (isCounted(*unit) || !isDropped) shown.push_back(*unit);
    }
    if (shown.empty()) shown.push_back(counts.back());
    counts = std::move(shown);
}

} // namespace vorlan
