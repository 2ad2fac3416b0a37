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
