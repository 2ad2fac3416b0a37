// SPDX-License-Identifier: Apache-2.0
#pragma once

// Walks through the days of zones, for tests that ask the same of each.

#include "tests/platform/dates/ReferenceZone.h"

#include <VorlanFoundation/Platform/Calendar.h>

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::tests {

/// Tests look at all there is in builds that are made for speed (1), elsewhere at about one in so many.
std::size_t slowness();

/// An instant of a day.
struct Moment {
    DayNumber day;
    std::int64_t second;     ///< since 1970
    std::int64_t nanosecond; ///< of that second, as nearly as a date knows it
    Date date;
};

/// The instants of a day that tests look at: its first, noon (its first, where it has none) and its last microsecond.
std::array<Moment, 3> momentsOf(const ReferenceZone& zone, DayNumber day, const ReferenceZone::Day& bounds);

/// The instant so many seconds after 1970.
Date dateAt(std::int64_t second);

/// "2011-12-30"
DayNumber dayNumber(const std::string& text);

/// Which of the days from the first to the last a test looks at: in slow builds some, from one that the seed
/// chooses, and those within three days of a change of the zone's.
std::vector<DayNumber> chosenDays(const ReferenceZone& zone, DayNumber first, DayNumber last, unsigned seed);

/// What a test found to be other than it should: the first few in words, the others by their number.
///
/// Threads: one thread at a time.
class Differences {
public:
    /// Where the following comparisons are made.
    void at(const Moment& moment) { moment_ = &moment; }

    template <class Is, class ShouldBe>
    void compare(const char* what, const Is& is, const ShouldBe& shouldBe) {
        ++comparisons_;
        if (!(is == shouldBe)) add(what, text(is), text(shouldBe));
    }

    std::size_t comparisons() const { return comparisons_; }
    const std::string& text() const { return text_; }

private:
    void add(const std::string& what, const std::string& is, const std::string& shouldBe);
    static std::string text(const std::optional<Date>& date);
    static std::string text(Date date) { return text(std::optional(date)); }
    static std::string text(std::partial_ordering order);
    static std::string text(std::optional<std::int64_t> value) {
        return value ? std::to_string(*value) : "absent";
    }
    static std::string text(std::int64_t value) { return std::to_string(value); }
    static std::string text(int value) { return std::to_string(value); }
    static std::string text(bool value) { return value ? "true" : "false"; }

    const Moment* moment_ = nullptr;
    std::size_t comparisons_ = 0;
    std::size_t differences_ = 0;
    std::string text_;
};

} // namespace vorlan::tests
