// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/UserRegion.h>

#include <VorlanFoundation/Platform/FatalError.h>

#include <utility>

namespace vorlan::testing {

namespace {

TimeZone zoneOf(const std::string& identifier) {
    const auto zone = TimeZone::fromIdentifier(identifier);
    if (!zone)
        fatalError("there is no time zone \"" + identifier + "\"", "VorlanFoundation/Testing/UserRegion");
    return *zone;
}

} // namespace

UserRegion::UserRegion(const Settings& settings) : former_(detail::regionOverride()) {
    auto region = former_;
    if (settings.locale) region.locale = Locale(*settings.locale);
    if (settings.timeZone) region.timeZone = zoneOf(*settings.timeZone);
    if (settings.calendar) region.calendar = settings.calendar;
    detail::setRegionOverride(std::move(region));
}

UserRegion::~UserRegion() {
    detail::setRegionOverride(std::move(former_));
}

} // namespace vorlan::testing
