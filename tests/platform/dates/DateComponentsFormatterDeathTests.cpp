// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateComponentsFormatter.h>

#include <gtest/gtest.h>

using namespace vorlan;
using Component = CalendarComponent;

namespace {

constexpr auto message =
    "VorlanFoundation/DateComponentsFormatter: Fatal error: the allowed units have to be some of "
    "year, month, weekOfMonth, day, hour, minute and second";

void allow(CalendarComponents units) {
    DateComponentsFormatter formatter;
    formatter.setAllowedUnits(units);
}

} // namespace

TEST(DateComponentsFormatterDeathTest, SomeUnitHasToBeAllowed) {
    EXPECT_DEATH(allow({}), message);
}

TEST(DateComponentsFormatterDeathTest, SpansAreNotCountedInOtherUnits) {
    EXPECT_DEATH(allow({Component::hour, Component::nanosecond}), message);
    EXPECT_DEATH(allow(Component::era), message);
    EXPECT_DEATH(allow({Component::day, Component::weekday}), message);
}
