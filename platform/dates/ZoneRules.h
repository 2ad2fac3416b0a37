// SPDX-License-Identifier: Apache-2.0
#pragma once

// The offsets from UTC of a time zone.

#include <VorlanFoundation/Platform/TimeZone.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unicode/basictz.h>
#include <vector>

namespace vorlan::detail {

/// What is known of a time zone. There is one for each, made at its first use and kept until the process ends.
///
/// All times are in seconds since 1970-01-01T00:00: in UTC, or where they are called local, as the zone's clocks show
/// them.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    ICU's rules, and a table of the changes until `tableEnd`; later ones are asked of ICU.
class ZoneRules {
public:
    /// The zone of that name, or null.
    static const ZoneRules* named(std::string_view identifier);
    /// The zone that is always so far ahead of UTC, or null.
    static const ZoneRules* fixed(int secondsFromGMT);
    /// UTC.
    static const ZoneRules& gmt();
    /// What the system is set to, read now.
    static const ZoneRules& ofSystem();

    /// The rules of a zone, and the zone of rules.
    static const ZoneRules& of(TimeZone zone) noexcept { return *zone.rules_; }
    TimeZone zone() const noexcept { return TimeZone(*this); }

    const std::string& identifier() const noexcept { return identifier_; }
    /// ICU's rules: only its constant operations may be called, which any thread may. Clone it for what keeps one.
    const icu::BasicTimeZone& icuZone() const noexcept { return *icuZone_; }

    /// How far local time is ahead at a time.
    int offsetAt(std::int64_t time) const;
    /// Whether clocks are put forward for the summer at a time.
    bool isDaylightSavingTime(std::int64_t time) const;
    /// The first change of the offset after a time.
    std::optional<std::int64_t> nextTransition(std::int64_t time) const;

    /// When clocks show that: the first time where they show it twice. What they skip counts on from before the gap.
    std::int64_t timeFromLocal(std::int64_t local) const { return timesFromLocal(local).counted; }
    /// The same, but what they skip is the end of the gap: the first time at which clocks show that or later.
    std::int64_t firstTimeFromLocal(std::int64_t local) const { return timesFromLocal(local).first; }

    ZoneRules(std::string identifier, std::unique_ptr<icu::BasicTimeZone> icuZone);
    ZoneRules(const ZoneRules&) = delete;
    ZoneRules& operator=(const ZoneRules&) = delete;
    ~ZoneRules();

private:
    struct Transition {
        std::int64_t time;
        int offset; // from then on
    };
    struct Times {
        std::int64_t counted;
        std::int64_t first;
    };

    void readTransitions();
    int offsetByICU(std::int64_t time) const;
    std::optional<std::int64_t> nextTransitionByICU(std::int64_t time) const;
    Times timesFromLocal(std::int64_t local) const;
    Times timesFromLocalByICU(std::int64_t local) const;

    std::string identifier_;
    std::unique_ptr<icu::BasicTimeZone> icuZone_;
    std::vector<Transition> transitions_; // ascending; the first is before all times
};

} // namespace vorlan::detail
