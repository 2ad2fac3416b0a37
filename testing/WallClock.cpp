// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/WallClock.h>

#include <VorlanFoundation/Platform/Region.h>

namespace vorlan::testing {

WallClock::WallClock(Date now) : former_(detail::setWallClock(now)) {}

WallClock::~WallClock() {
    detail::setWallClock(former_);
}

void WallClock::set(Date now) {
    detail::setWallClock(now);
}

void WallClock::advance(std::chrono::duration<double> span) {
    set(Date(Date().timeIntervalSinceReferenceDate() + span.count()));
}

} // namespace vorlan::testing
