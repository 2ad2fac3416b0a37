// SPDX-License-Identifier: Apache-2.0
#pragma once

// The users that all about dates is tried with.

#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <array>
#include <chrono>

namespace vorlan::tests {

inline constexpr std::array locales = {"en_US", "en_GB", "de_DE", "fr_FR", "ja_JP",
                                       "ar_EG", "hi_IN", "he_IL", "fa_IR", "th_TH"};
inline constexpr std::array timeZones = {"Europe/Berlin",
                                         "America/New_York",
                                         "America/Sao_Paulo",
                                         "Asia/Kathmandu",
                                         "Pacific/Apia",
                                         "Australia/Lord_Howe",
                                         "UTC"};

/// Calls `body` as a user of each locale, each in a time zone of the list (not the same in each).
void forEachLocale(FunctionRef<void()> body);

/// Calls `body` as a user of each time zone, each with a locale of the list (not the same in each).
void forEachTimeZone(FunctionRef<void()> body);

/// Calls `body` as a user of each locale in each time zone.
void forEachPlace(FunctionRef<void()> body);

/// A time of the Gregorian calendar, as it is written.
struct Time {
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    double second = 0;
};

/// When the clocks of the user show that, for the first time.
Date local(const Time& time);

/// When clocks that go by UTC show that.
constexpr Date utc(const Time& time) {
    const std::chrono::sys_days day = std::chrono::year(time.year) / time.month / time.day;
    const auto days = static_cast<double>(day.time_since_epoch().count());
    return Date::fromTimeIntervalSince1970(86'400 * days + 3600 * time.hour + 60 * time.minute + time.second);
}

} // namespace vorlan::tests
