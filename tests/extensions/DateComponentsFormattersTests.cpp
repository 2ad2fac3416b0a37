// SPDX-License-Identifier: Apache-2.0

// The formatters of spans that are shared by all.

#include <VorlanFoundation/Extensions/Dates.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include "tests/extensions/Places.h"
#include "tests/extensions/SharedFormatters.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <string>

using namespace vorlan;
using namespace std::chrono_literals;
using tests::sharedDateComponentsFormatters;
using vorlan::testing::UserRegion;

namespace {

constexpr std::array spans = {0.0,    1.0,    59.0,    60.0,    65.0,     3599.0,    3600.0,
                              3661.0, 5400.0, 86399.0, 86400.0, 90'061.0, 176'400.0, -3661.0};

} // namespace

TEST(DateComponentsFormattersTest, ReadInEnglishAsTheHeaderSays) {
    const UserRegion user({.locale = "en_US"});
    const std::array<std::array<const char*, 6>, 4> wanted{{
        {"0 hours", "0h", "1m", "1m", "0:01:05", "1:05"},
        {"1 hour", "1h", "1h 1m", "1h 1m", "1:01:01", "61:01"},
        {"26 hours", "26h", "1d 2h 5m", "26h 5m", "26:05:00", "1,565:00"},
        {"0 hours", "0h", "0m", "0m", "0:00:00", "0:00"},
    }};
    const std::array spansOfRows = {65s, 3661s, 93'900s, 0s};
    for (std::size_t row = 0; row < wanted.size(); ++row)
        for (std::size_t i = 0; i < sharedDateComponentsFormatters.size(); ++i) {
            const auto& place = sharedDateComponentsFormatters[i];
            EXPECT_EQ(place.get().string(spansOfRows[row]), wanted[row][i])
                << place.name << ", " << spansOfRows[row].count();
        }
}

TEST(DateComponentsFormattersTest, CountdownIsPaddedInAllPlaces) {
    const std::map<std::string, std::string> withOtherDigits = {{"ar_EG", "٠:٠١:٠٥"}, {"fa_IR", "۰:۰۱:۰۵"}};
    tests::forEachLocale([&] {
        const auto other = withOtherDigits.find(Locale::current().identifier());
        EXPECT_EQ(dateComponentsFormatter::countdownFormatter().string(65s),
                  other == withOtherDigits.end() ? "0:01:05" : other->second);
    });
}

TEST(DateComponentsFormattersTest, PrintWhatTheirSettingsSay) {
    tests::forEachLocale([] {
        for (const auto& place : sharedDateComponentsFormatters)
            for (const auto span : spans) {
                const auto wanted = place.make().string(span);
                EXPECT_TRUE(wanted.has_value()) << place.name << ", " << span;
                EXPECT_EQ(place.get().string(span), wanted) << place.name << ", " << span;
            }
    });
}

TEST(DateComponentsFormattersTest, HaveTheirSettings) {
    for (const auto& place : sharedDateComponentsFormatters) {
        SCOPED_TRACE(place.name);
        const auto wanted = place.make();
        EXPECT_EQ(place.get().allowedUnits(), wanted.allowedUnits());
        EXPECT_EQ(place.get().unitsStyle(), wanted.unitsStyle());
        EXPECT_EQ(place.get().zeroFormattingBehavior(), wanted.zeroFormattingBehavior());
        EXPECT_EQ(place.get().maximumUnitCount(), 0);
    }
}

TEST(DateComponentsFormattersTest, FollowTheUser) {
    tests::forEachLocale([] {
        for (const auto& place : sharedDateComponentsFormatters)
            EXPECT_EQ(place.get().calendar(), Calendar::current()) << place.name;
    });
}

TEST(DateComponentsFormattersTest, EachReadGivesTheSameObject) {
    for (const auto& place : sharedDateComponentsFormatters)
        for (const auto& other : sharedDateComponentsFormatters)
            EXPECT_EQ(place.get() == other.get(), &place == &other) << place.name << ", " << other.name;
}

TEST(DateComponentsFormattersTest, ReplacedOneIsGivenFromThenOn) {
    for (const auto& place : sharedDateComponentsFormatters) {
        SCOPED_TRACE(place.name);
        const auto former = place.get();
        const auto text = former.string(7200s);
        DateComponentsFormatter other;
        other.setAllowedUnits(CalendarComponent::second);
        other.setUnitsStyle(DateComponentsFormatter::UnitsStyle::full);
        place.set(other);
        EXPECT_EQ(place.get(), other);
        EXPECT_NE(place.get().string(7200s), text);
        EXPECT_EQ(former.string(7200s), text) << "who has the former one keeps it";
        place.set(former);
        EXPECT_EQ(place.get(), former);
    }
}

TEST(DateComponentsFormattersTest, SpanThatIsNoNumberHasNoText) {
    for (const auto& place : sharedDateComponentsFormatters) {
        EXPECT_EQ(place.get().string(std::numeric_limits<double>::quiet_NaN()), std::nullopt) << place.name;
        EXPECT_EQ(place.get().string(std::numeric_limits<double>::infinity()), std::nullopt) << place.name;
    }
}

TEST(DateComponentsFormattersTest, SpansBetweenDatesAreCountedByTheCalendar) {
    const UserRegion user({.locale = "en_US", .timeZone = "Europe/Berlin"});
    const auto start = tests::local({.year = 2024, .month = 3, .day = 30, .hour = 12});
    const auto end = tests::local({.year = 2024, .month = 3, .day = 31, .hour = 12});
    EXPECT_EQ(dateComponentsFormatter::abbreviatedTimeFormatter().string({.from = start, .to = end}), "1d");
    EXPECT_EQ(dateComponentsFormatter::abbreviatedHoursFormatter().string({.from = start, .to = end}), "23h");
}
