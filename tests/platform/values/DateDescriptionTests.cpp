// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/Date.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <limits>
#include <random>
#include <string>

using namespace vorlan;

namespace {

constexpr std::int64_t secondsFrom1970To2001 = 978'307'200;

Date dateSince1970(std::int64_t seconds) {
    return Date(static_cast<double>(seconds - secondsFrom1970To2001));
}

// What the C library says to the same second.
std::string described(std::int64_t secondsSince1970) {
    const time_t time = secondsSince1970;
    tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d +0000", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text.data();
}

} // namespace

TEST(DateDescription, IsTheSecondInUTC) {
    EXPECT_EQ(Date(0).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(0).description(), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(-1).description(), "1969-12-31 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(1'709'647'629).description(), "2024-03-05 14:07:09 +0000");
}

TEST(DateDescription, FractionsBelongToTheSecondThatTheyAreIn) {
    EXPECT_EQ(Date(0.999999).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Date(-0.0).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Date(-0.000001).description(), "2000-12-31 23:59:59 +0000");
    EXPECT_EQ(Date(-1).description(), "2000-12-31 23:59:59 +0000");
    EXPECT_EQ(Date(-1.5).description(), "2000-12-31 23:59:58 +0000");
}

TEST(DateDescription, LeapDaysAreThoseOfTheGregorianCalendar) {
    EXPECT_EQ(dateSince1970(951'782'400).description(), "2000-02-29 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(951'868'799).description(), "2000-02-29 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(951'868'800).description(), "2000-03-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(1'709'164'800).description(), "2024-02-29 00:00:00 +0000");
    // 1900 had none, and 2100 has none.
    EXPECT_EQ(dateSince1970(-2'203'891'201).description(), "1900-02-28 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(-2'203'891'200).description(), "1900-03-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(4'107'542'399).description(), "2100-02-28 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(4'107'542'400).description(), "2100-03-01 00:00:00 +0000");
}

TEST(DateDescription, YearsHaveFourDigitsOrMore) {
    EXPECT_EQ(dateSince1970(253'402'300'799).description(), "9999-12-31 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(253'402'300'800).description(), "10000-01-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(-62'135'596'800).description(), "0001-01-01 00:00:00 +0000");
    EXPECT_EQ(dateSince1970(-62'135'596'801).description(), "0000-12-31 23:59:59 +0000");
    EXPECT_EQ(dateSince1970(-62'167'219'201).description(), "-0001-12-31 23:59:59 +0000");
}

TEST(DateDescription, DistantDatesAreDescribedLikeAllOthers) {
    EXPECT_EQ(Date::distantPast().description(), "0000-12-30 00:00:00 +0000");
    EXPECT_EQ(Date::distantFuture().description(), "4001-01-01 00:00:00 +0000");
}

TEST(DateDescription, FarAwayDatesHaveLongYears) {
    // The C library's years have 32 bits.
    for (const std::int64_t seconds : {50'000'000'000'000'000, -50'000'000'000'000'000})
        EXPECT_EQ(dateSince1970(seconds).description(), described(seconds));
    // From the length of 400 years, in integers of any size.
    EXPECT_EQ(Date(8.9e18).description(), "282029774711-08-17 06:13:20 +0000");
    EXPECT_EQ(Date(-8.9e18).description(), "-282029770710-05-18 17:46:40 +0000");
}

TEST(DateDescription, DatesThatAreNoSecondAreDescribedByTheirSeconds) {
    const std::string after = " s after 2001-01-01 00:00:00 +0000";
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Date(std::nan("")).description(), "nan" + after);
    EXPECT_EQ(Date(infinity).description(), "inf" + after);
    EXPECT_EQ(Date(-infinity).description(), "-inf" + after);
    EXPECT_EQ(Date(1e300).description(), "1e+300" + after);
    EXPECT_EQ(Date(-9e18).description(), "-9e+18" + after);
}

TEST(DateDescription, AgreesWithTheCLibraryInAllYearsOfFourDigits) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> seconds(-62'135'596'800, 253'402'300'799);
    for (int i = 0; i < 10'000; ++i) {
        const auto second = seconds(random);
        ASSERT_EQ(dateSince1970(second).description(), described(second)) << second;
    }
}
