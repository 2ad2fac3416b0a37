// SPDX-License-Identifier: Apache-2.0
#include "tests/extensions/Places.h"

#include <VorlanFoundation/Platform/Calendar.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace vorlan {

namespace {

void visit(const std::string& locale, const std::string& timeZone, FunctionRef<void()> body) {
    SCOPED_TRACE(locale + " in " + timeZone);
    const testing::UserRegion user({.locale = locale, .timeZone = timeZone});
    body();
}

} // namespace

void tests::forEachLocale(FunctionRef<void()> body) {
    for (std::size_t i = 0; i < locales.size(); ++i) visit(locales[i], timeZones[i % timeZones.size()], body);
}

void tests::forEachTimeZone(FunctionRef<void()> body) {
    for (std::size_t i = 0; i < timeZones.size(); ++i) visit(locales[i], timeZones[i], body);
}

void tests::forEachPlace(FunctionRef<void()> body) {
    for (const auto* locale : locales)
        for (const auto* timeZone : timeZones) visit(locale, timeZone, body);
}

Date tests::local(const Time& time) {
    // Whatever the user's own calendar is, it is one that reads the components as they were meant.
    const Calendar calendar(Calendar::Identifier::gregorian, Locale("en_US"), TimeZone::current());
    const auto minute = calendar.date(
        {.year = time.year, .month = time.month, .day = time.day, .hour = time.hour, .minute = time.minute});
    return Date(minute.value().timeIntervalSinceReferenceDate() + time.second);
}

} // namespace vorlan
