// SPDX-License-Identifier: Apache-2.0
#pragma once

// What tests of calendars have in common.

#include <VorlanFoundation/Platform/Calendar.h>

#include <optional>
#include <string>

namespace vorlan::tests {

/// A calendar of a region, by the names of its time zone and its locale.
Calendar calendarIn(const char* zone, const char* locale = "en_US",
                    Calendar::Identifier identifier = Calendar::Identifier::gregorian);

/// A date of the Gregorian calendar in UTC, found without any of the library's calendars.
Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0);

/// "2024-03-05 14:07:09" in UTC, or "none".
std::string textOf(std::optional<Date> date);

/// What is not absent, from the largest to the smallest: "year 2024, month 2".
std::string textOf(const DateComponents& components);

/// Every component.
CalendarComponents allComponents();

} // namespace vorlan::tests
