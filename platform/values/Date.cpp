// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Date.h>

#include "platform/values/CivilDay.h"
#include "platform/values/Epoch.h"

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Region.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace vorlan {

namespace {

std::string yearText(std::int64_t year) {
    auto digits = std::to_string(std::abs(year));
    if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
    return year < 0 ? "-" + digits : digits;
}

void appendTwoDigits(std::string& text, char separator, int number) {
    text += {separator, static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

// The seconds that the wall clock was stopped at, as a test does; no number while it runs.
std::atomic<double> stoppedAt = std::numeric_limits<double>::quiet_NaN();

Date present() {
    const double stopped = stoppedAt.load(std::memory_order_relaxed);
    return std::isnan(stopped) ? Date(std::chrono::system_clock::now()) : Date(stopped);
}

} // namespace

std::optional<Date> detail::setWallClock(std::optional<Date> now) {
    const double seconds =
        now ? now->timeIntervalSinceReferenceDate() : std::numeric_limits<double>::quiet_NaN();
    const double former = stoppedAt.exchange(seconds);
    return std::isnan(former) ? std::nullopt : std::optional(Date(former));
}

Date::Date() noexcept : Date(present()) {}

Date::Date(std::chrono::system_clock::time_point time) noexcept
    : seconds_(std::chrono::duration<double>(time - referenceDate).count()) {}

double Date::timeIntervalSince1970() const noexcept {
    const double seconds = seconds_ + secondsTo2001;
    constexpr double microseconds = 1e6;
    // Beyond it a double does not hold the microseconds of all seconds.
    if (!(std::abs(seconds) < 4e9)) return seconds;
    const double nearest = std::round(seconds * microseconds) / microseconds;
    return nearest - secondsTo2001 == seconds_ ? nearest : seconds;
}

std::string Date::description() const {
    const double whole = std::floor(seconds_);
    if (!(std::abs(whole) < 9e18)) return describe(seconds_) + " s after 2001-01-01 00:00:00 +0000";
    constexpr std::int64_t secondsOfDay = 86'400;
    const auto seconds = static_cast<std::int64_t>(whole);
    const std::int64_t days = seconds / secondsOfDay - (seconds % secondsOfDay < 0 ? 1 : 0);
    const auto second = static_cast<int>(seconds - days * secondsOfDay);
    const auto [year, month, day] = civilDay(days + referenceDate.time_since_epoch().count());
    std::string text = yearText(year);
    appendTwoDigits(text, '-', month);
    appendTwoDigits(text, '-', day);
    appendTwoDigits(text, ' ', second / 3600);
    appendTwoDigits(text, ':', second / 60 % 60);
    appendTwoDigits(text, ':', second % 60);
    return text += " +0000";
}

} // namespace vorlan
