// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/TimeZone.h>

#include "platform/dates/ZoneRules.h"
#include "platform/text/CurrentRegion.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <unicode/strenum.h>

namespace vorlan {

namespace {

using detail::ZoneRules;

// Some six million years, which no rules are asked to look beyond.
constexpr double limit = 2e14;

// The second that a date is in; the nearest one that the rules can be asked for, where it is too far away.
std::int64_t secondOf(Date date) {
    const double seconds = std::floor(date.timeIntervalSince1970());
    if (std::isnan(seconds)) return 0;
    return static_cast<std::int64_t>(std::clamp(seconds, -limit, limit));
}

std::optional<TimeZone> zoneOf(const ZoneRules* rules) {
    if (rules == nullptr) return std::nullopt;
    return rules->zone();
}

} // namespace

TimeZone TimeZone::current() {
    return currentRegion().timeZone;
}

TimeZone TimeZone::gmt() {
    return ZoneRules::gmt().zone();
}

std::optional<TimeZone> TimeZone::fromIdentifier(std::string_view identifier) {
    return zoneOf(ZoneRules::named(identifier));
}

std::optional<TimeZone> TimeZone::fromSecondsFromGMT(int seconds) {
    return zoneOf(ZoneRules::fixed(seconds));
}

std::vector<std::string> TimeZone::knownIdentifiers() {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> all(
        icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, status));
    std::vector<std::string> identifiers;
    if (U_FAILURE(status)) return identifiers;
    while (const char* identifier = all->next(nullptr, status)) identifiers.emplace_back(identifier);
    std::ranges::sort(identifiers);
    return identifiers;
}

const std::string& TimeZone::identifier() const noexcept {
    return rules_->identifier();
}

int TimeZone::secondsFromGMT(Date date) const {
    return rules_->offsetAt(secondOf(date));
}

bool TimeZone::isDaylightSavingTime(Date date) const {
    return rules_->isDaylightSavingTime(secondOf(date));
}

std::optional<Date> TimeZone::nextTransition(Date date) const {
    if (!(date.timeIntervalSince1970() < limit)) return std::nullopt;
    if (const auto time = rules_->nextTransition(secondOf(date)))
        return Date::fromTimeIntervalSince1970(static_cast<double>(*time));
    return std::nullopt;
}

} // namespace vorlan
