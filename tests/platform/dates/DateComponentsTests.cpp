// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/DateComponents.h>

#include <gtest/gtest.h>

using namespace vorlan;

using Unit = CalendarComponent;

TEST(CalendarComponents, HasWhatItWasMadeOf) {
    constexpr CalendarComponents components{Unit::era, Unit::nanosecond};
    static_assert(components.contains(Unit::era) && components.contains(Unit::nanosecond));
    static_assert(!components.contains(Unit::year) && !components.isEmpty());
    static_assert(CalendarComponents().isEmpty() && CalendarComponents(Unit::day).contains(Unit::day));
    static_assert(CalendarComponents{Unit::day, Unit::day} == Unit::day);
    EXPECT_NE(components, CalendarComponents(Unit::era));
}

TEST(DateComponents, WhatIsNotSaidIsAbsent) {
    const DateComponents components{.year = 2024, .day = 29};
    EXPECT_EQ(components.year, 2024);
    EXPECT_EQ(components.month, std::nullopt);
    EXPECT_NE(components, DateComponents());
    EXPECT_EQ(components, (DateComponents{.year = 2024, .day = 29}));
}

TEST(DateComponents, EveryComponentIsReadAndSetByItsName) {
    DateComponents all;
    for (int unit = 0; unit <= static_cast<int>(Unit::nanosecond); ++unit) {
        const auto component = static_cast<Unit>(unit);
        EXPECT_EQ(all.value(component), std::nullopt);
        all.setValue(100 + unit, component);
        EXPECT_EQ(all.value(component), 100 + unit);
    }
    const DateComponents expected{.era = 100,
                                  .year = 101,
                                  .quarter = 102,
                                  .month = 103,
                                  .isLeapMonth = {},
                                  .weekOfMonth = 104,
                                  .weekOfYear = 105,
                                  .yearForWeekOfYear = 106,
                                  .day = 107,
                                  .dayOfYear = 108,
                                  .weekday = 109,
                                  .weekdayOrdinal = 110,
                                  .hour = 111,
                                  .minute = 112,
                                  .second = 113,
                                  .nanosecond = 114};
    EXPECT_EQ(all, expected);
    all.setValue(std::nullopt, Unit::year);
    EXPECT_EQ(all.year, std::nullopt);
}
