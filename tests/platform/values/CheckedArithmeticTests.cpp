// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/FatalError.h>

#include "tests/support/WorkerThreads.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdint>
#include <limits>

using namespace vorlan;

TEST(CheckedArithmetic, TruncatesTowardsZero) {
    EXPECT_EQ(checked::truncate<std::int64_t>(1.9), 1);
    EXPECT_EQ(checked::truncate<std::int64_t>(-1.9), -1);
    EXPECT_EQ(checked::truncate<std::int64_t>(-9223372036854775808.0),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(checked::truncate<std::int64_t>(std::nextafter(9223372036854775808.0, 0)), 9223372036854774784);
    EXPECT_EQ(checked::truncate<std::uint8_t>(255.9), 255);
    EXPECT_EQ(checked::truncate<std::uint8_t>(-0.9), 0);
}

TEST(CheckedArithmetic, SaturatingOperationsStopAtTheNearestValue) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(saturating::add<std::int64_t>(most, 1), most);
    EXPECT_EQ(saturating::add<std::int64_t>(least, -1), least);
    EXPECT_EQ(saturating::add<std::int64_t>(2, 3), 5);
    EXPECT_EQ(saturating::subtract<std::int64_t>(least, 1), least);
    EXPECT_EQ(saturating::subtract<std::int64_t>(most, -1), most);
    EXPECT_EQ(saturating::subtract<std::uint8_t>(1, 2), 0);
    EXPECT_EQ(saturating::multiply<std::int64_t>(most, -2), least);
    EXPECT_EQ(saturating::multiply<std::int64_t>(least, -1), most);
    EXPECT_EQ(saturating::multiply<std::int64_t>(-6, 7), -42);
}

TEST(CheckedArithmetic, CheckedOperationsAreExactUpToTheBounds) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(checked::add<std::int64_t>(most - 1, 1), most);
    EXPECT_EQ(checked::add<std::int64_t>(least, most), -1);
    EXPECT_EQ(checked::subtract<std::int64_t>(least + 1, 1), least);
    EXPECT_EQ(checked::subtract<std::int64_t>(-1, least), most);
    EXPECT_EQ(checked::multiply<std::int64_t>(least / 2, 2), least);
    EXPECT_EQ(checked::multiply<std::int64_t>(-6, 7), -42);
    EXPECT_EQ(checked::add<std::uint8_t>(200, 55), 255);
    EXPECT_EQ(checked::subtract<std::uint8_t>(55, 55), 0);
    EXPECT_EQ(checked::multiply<std::int8_t>(-64, 2), -128);
}

TEST(CheckedArithmetic, DivisionIsTowardsZero) {
    EXPECT_EQ(checked::divide(7, 2), 3);
    EXPECT_EQ(checked::divide(-7, 2), -3);
    EXPECT_EQ(checked::divide(7, -2), -3);
    EXPECT_EQ(checked::divide(-7, -2), 3);
    EXPECT_EQ(checked::divide(7, -1), -7);
    EXPECT_EQ(checked::divide(std::numeric_limits<int>::min(), 1), std::numeric_limits<int>::min());
    EXPECT_EQ(checked::divide(std::numeric_limits<int>::min(), 2), std::numeric_limits<int>::min() / 2);
    EXPECT_EQ(checked::divide(255U, 16U), 15U);
}

static_assert(checked::add(2, 3) == 5 && checked::subtract(2, 3) == -1);
static_assert(checked::multiply(2, 3) == 6 && checked::divide(6, 4) == 1);

TEST(CheckedArithmeticDeathTest, OperationThatDoesNotFitStopsTheProcess) {
    support::useWorkerThreads();
    const ::testing::KilledBySignal killed(SIGILL);
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EXIT(checked::add<std::int64_t>(most, 1), killed, "^$");
    EXPECT_EXIT(checked::add<std::int8_t>(-100, -29), killed, "^$");
    EXPECT_EXIT(checked::subtract<std::int64_t>(least, 1), killed, "^$");
    EXPECT_EXIT(checked::subtract<std::uint64_t>(0, 1), killed, "^$");
    EXPECT_EXIT(checked::multiply<std::int64_t>(least, -1), killed, "^$");
    EXPECT_EXIT(checked::multiply<std::uint8_t>(16, 16), killed, "^$");
}

TEST(CheckedArithmeticDeathTest, DivisionWithoutAResultStopsTheProcess) {
    support::useWorkerThreads();
    const ::testing::KilledBySignal killed(SIGILL);
    EXPECT_EXIT(checked::divide(1, 0), killed, "^$");
    EXPECT_EXIT(checked::divide(1U, 0U), killed, "^$");
    EXPECT_EXIT(checked::divide<std::int64_t>(std::numeric_limits<std::int64_t>::min(), -1), killed, "^$");
    EXPECT_EXIT(checked::divide<std::int8_t>(-128, -1), killed, "^$");
}

TEST(CheckedArithmeticDeathTest, ConversionThatDoesNotFitStopsTheProcess) {
    support::useWorkerThreads();
    EXPECT_EXIT(checked::truncate<std::int64_t>(9223372036854775808.0), ::testing::KilledBySignal(SIGILL),
                "^$");
    EXPECT_EXIT(checked::truncate<std::int64_t>(std::nan("")), ::testing::KilledBySignal(SIGILL), "^$");
    EXPECT_EXIT(checked::truncate<std::uint8_t>(256.0), ::testing::KilledBySignal(SIGILL), "^$");
    EXPECT_EXIT(checked::truncate<std::uint8_t>(-1.0), ::testing::KilledBySignal(SIGILL), "^$");
}

TEST(FatalErrorDeathTest, PrintsWhereAndWhatAndAborts) {
    support::useWorkerThreads();
    EXPECT_EXIT(fatalError("the moon is missing", "Sky"), ::testing::KilledBySignal(SIGABRT),
                "^Sky: Fatal error: the moon is missing\n$");
}
