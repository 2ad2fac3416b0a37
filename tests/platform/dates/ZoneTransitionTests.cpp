// SPDX-License-Identifier: Apache-2.0

// The offsets of all zones, against those that ICU gives.

#include "tests/platform/dates/EveryDay.h"
#include "tests/platform/dates/ReferenceZone.h"

#include <VorlanFoundation/Platform/TimeZone.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <unicode/ucal.h>

using namespace vorlan;
using tests::ReferenceCalendar;

namespace {

const std::size_t stride = tests::slowness() / 10 + 1;
constexpr std::int64_t year = 31'556'952;

Date at(std::int64_t time) {
    return Date::fromTimeIntervalSince1970(static_cast<double>(time));
}

std::optional<Date> at(std::optional<std::int64_t> time) {
    return time ? std::optional(at(*time)) : std::nullopt;
}

// Calls with each of the zones that are tested, and its reference.
template <class Step>
void forEachZone(std::mt19937_64& random, Step step) {
    std::size_t count = 0;
    const auto names = TimeZone::knownIdentifiers();
    for (auto i = static_cast<std::size_t>(random() % stride); i < names.size(); i += stride) {
        SCOPED_TRACE(names[i]);
        ReferenceCalendar reference(names[i]);
        step(TimeZone::fromIdentifier(names[i]).value(), reference);
        ++count;
        if (::testing::Test::HasFailure()) break;
    }
    EXPECT_GT(count, 400U / stride);
}

void expectSame(const TimeZone& zone, ReferenceCalendar& reference, std::int64_t time) {
    EXPECT_EQ(zone.secondsFromGMT(at(time)), reference.offsetAt(time)) << time;
    EXPECT_EQ(zone.isDaylightSavingTime(at(time)), reference.field(UCAL_DST_OFFSET) != 0) << time;
}

} // namespace

TEST(ZoneTransitionTest, OffsetsAreThoseOfICUThroughTenThousandYears) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> anyTime(-12'000 * year, 8000 * year);
    std::uniform_int_distribution<std::int64_t> ourTime(-150 * year, 150 * year);
    forEachZone(random, [&](const TimeZone& zone, ReferenceCalendar& reference) {
        for (int i = 0; i < 100; ++i) {
            expectSame(zone, reference, anyTime(random));
            expectSame(zone, reference, ourTime(random));
        }
    });
}

TEST(ZoneTransitionTest, TransitionsAreThoseOfICUToTheSecond) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    std::size_t changes = 0;
    forEachZone(random, [&](const TimeZone& zone, ReferenceCalendar& reference) {
        for (std::int64_t time = -300 * year; time < 90 * year; ++changes) {
            const auto next = reference.nextChange(time);
            ASSERT_EQ(zone.nextTransition(at(time)), at(next)) << time;
            if (!next) break;
            time = *next;
            for (const auto beside : {time - 1, time, time + 1}) expectSame(zone, reference, beside);
            ASSERT_EQ(zone.nextTransition(at(time - 1)), at(time));
        }
    });
    EXPECT_GT(changes, 40'000U / stride / 4);
}

TEST(ZoneTransitionTest, TransitionsOfTheFarFutureFollowTheLastRule) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> later(60 * year, 8000 * year);
    std::uniform_int_distribution<std::int64_t> earlier(-12'000 * year, -100 * year);
    forEachZone(random, [&](const TimeZone& zone, ReferenceCalendar& reference) {
        for (const auto time : std::array{later(random), later(random), earlier(random)}) {
            const auto next = reference.nextChange(time);
            ASSERT_EQ(zone.nextTransition(at(time)), at(next)) << time;
            if (next) expectSame(zone, reference, *next);
        }
    });
}

TEST(ZoneTransitionTest, ChangeOfTheNameAloneIsNoTransition) {
    const auto london = TimeZone::fromIdentifier("Europe/London").value();
    constexpr std::int64_t june1968 = -50'025'600; // that October, what was summer time became standard time
    const auto next = london.nextTransition(at(june1968));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->description(), "1971-10-31 02:00:00 +0000");
}
