// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Date.h>

#include "platform/values/Epoch.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace vorlan {

namespace {

struct CivilDay {
    std::int64_t year;
    int month;
    int day;
};

// The Gregorian date of a day counted from 1970-01-01, for years that std::chrono does not reach. Counts in eras
// of 400 years, of which all have the same days, from a 1 March, so that the leap day is a year's last.
CivilDay civilDay(std::int64_t daysSince1970) {
    constexpr std::int64_t daysOfEra = 146'097;
    const std::int64_t days = daysSince1970 + 719'468; // since 0000-03-01
    const std::int64_t era = (days >= 0 ? days : days - (daysOfEra - 1)) / daysOfEra;
    const auto dayOfEra = static_cast<int>(days - era * daysOfEra);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int month = (5 * dayOfYear + 2) / 153; // since March: months have 31 and 30 days in turns of 153
    const int day = dayOfYear - (153 * month + 2) / 5 + 1;
    return {era * 400 + yearOfEra + (month >= 10 ? 1 : 0), month < 10 ? month + 3 : month - 9, day};
}

std::string yearText(std::int64_t year) {
    auto digits = std::to_string(std::abs(year));
    if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
    return year < 0 ? "-" + digits : digits;
}

void appendTwoDigits(std::string& text, char separator, int number) {
    text += {separator, static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

} // namespace

Date::Date() noexcept : Date(std::chrono::system_clock::now()) {}

Date::Date(std::chrono::system_clock::time_point time) noexcept
    : seconds_(std::chrono::duration<double>(time - referenceDate).count()) {}

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
