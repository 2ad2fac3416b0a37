// SPDX-License-Identifier: Apache-2.0
#pragma once

// What clocks on the wall show, by place.
//
//     const auto berlin = TimeZone::fromIdentifier("Europe/Berlin");
//     berlin->secondsFromGMT(Date());         // 3600 in winter

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan {

namespace detail {
class ZoneRules;
}

/// A time zone: the offset of local time from UTC, for every date.
///
/// Copying is as cheap as copying a pointer. Offsets are those of the zone data that ICU carries or finds on the
/// system.
///
/// Threads: safe from any thread (a plain value).
/// Owns:    nothing; what is known of a zone is read at its first use and kept until the process ends.
class VORLAN_EXPORT TimeZone {
public:
    /// The user's: that of the variable TZ, else of /etc/localtime; UTC where neither says one. Read at the first use
    /// and then at each `resetSystemTimeZone()`.
    static TimeZone current();

    /// Reads the system's time zone again at the next use: what follows `current()` follows from then on. Not while
    /// another thread changes the environment.
    static void resetSystemTimeZone();

    /// UTC, by the name "GMT".
    static TimeZone gmt();

    /// A zone by its name in the IANA database, as in "Europe/Berlin"; absent when there is none of that name.
    static std::optional<TimeZone> fromIdentifier(std::string_view identifier);

    /// The zone that is always so many seconds ahead of UTC (behind, when negative), named as in "GMT+0530"; absent
    /// beyond 18 hours.
    static std::optional<TimeZone> fromSecondsFromGMT(int seconds);

    /// The names of all zones that `fromIdentifier` knows, in alphabetical order.
    static std::vector<std::string> knownIdentifiers();

    /// The name of the zone.
    const std::string& identifier() const noexcept;

    /// How far local time is ahead of UTC at a date, in seconds; at the earliest or latest known rule's where the date
    /// is no number or further away than calendars reach.
    int secondsFromGMT(Date date = Date()) const;

    /// Whether clocks are put forward for the summer at a date.
    bool isDaylightSavingTime(Date date = Date()) const;

    /// The next date after `date` at which the offset from UTC changes; absent when none is known.
    std::optional<Date> nextTransition(Date date = Date()) const;

    /// Whether they have the same name.
    friend bool operator==(const TimeZone& a, const TimeZone& b) noexcept { return a.rules_ == b.rules_; }

private:
    friend class detail::ZoneRules;
    explicit TimeZone(const detail::ZoneRules& rules) noexcept : rules_(&rules) {}

    const detail::ZoneRules* rules_;
};

} // namespace vorlan
