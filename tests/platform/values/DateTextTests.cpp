// SPDX-License-Identifier: Apache-2.0
#include "platform/values/DateText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>

using namespace vorlan;

namespace {

constexpr double firstSecond = -63'113'904'000; // 0001-01-01T00:00:00Z
constexpr double endOfTime = 252'423'993'600;   // 10000-01-01T00:00:00Z

std::optional<double> interval(std::string_view text) {
    const auto date = dateFromRFC3339(text);
    return date ? std::optional(date->timeIntervalSinceReferenceDate()) : std::nullopt;
}

std::string textOf(double interval) {
    return rfc3339FromDate(Date(interval)).value_or("none");
}

void expectToComeBack(double seconds) {
    const auto text = rfc3339FromDate(Date(seconds));
    ASSERT_TRUE(text) << seconds;
    const auto read = interval(*text);
    ASSERT_TRUE(read) << *text;
    ASSERT_EQ(std::bit_cast<std::uint64_t>(*read), std::bit_cast<std::uint64_t>(seconds)) << *text;
}

} // namespace

TEST(DateText, DatesAreWrittenInUTC) {
    EXPECT_EQ(textOf(0), "2001-01-01T00:00:00Z");
    EXPECT_EQ(textOf(731'340'429), "2024-03-05T14:07:09Z");
    EXPECT_EQ(textOf(-1), "2000-12-31T23:59:59Z");
    EXPECT_EQ(textOf(-978'307'200), "1970-01-01T00:00:00Z");
    EXPECT_EQ(textOf(firstSecond), "0001-01-01T00:00:00Z");
    EXPECT_EQ(textOf(endOfTime - 1), "9999-12-31T23:59:59Z");
}

TEST(DateText, FractionsHaveTheDigitsThatTheyNeed) {
    EXPECT_EQ(textOf(0.5), "2001-01-01T00:00:00.5Z");
    EXPECT_EQ(textOf(0.1), "2001-01-01T00:00:00.1Z");
    EXPECT_EQ(textOf(731'340'429.123), "2024-03-05T14:07:09.123Z");
    EXPECT_EQ(textOf(731'340'429.007), "2024-03-05T14:07:09.007Z");
    EXPECT_EQ(textOf(1e-7), "2001-01-01T00:00:00.0000001Z");
}

TEST(DateText, FractionsBefore2001CountForwardsToo) {
    EXPECT_EQ(textOf(-0.25), "2000-12-31T23:59:59.75Z");
    EXPECT_EQ(textOf(-0.9), "2000-12-31T23:59:59.1Z");
    EXPECT_EQ(textOf(-1.000001), "2000-12-31T23:59:58.999999Z");
    EXPECT_EQ(textOf(-0.07), "2000-12-31T23:59:59.93Z");
    EXPECT_EQ(textOf(-1e-3), "2000-12-31T23:59:59.999Z");
}

TEST(DateText, DatesOutsideOfTheYearsFrom1To9999HaveNone) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {std::nextafter(firstSecond, -infinity), firstSecond - 1, endOfTime, 1e13,
                                 -1e300, infinity, -infinity, std::nan("")})
        EXPECT_EQ(textOf(seconds), "none") << seconds;
    EXPECT_NE(textOf(std::nextafter(endOfTime, 0)), "none");
}

TEST(DateText, OffsetsAreAppliedTowardsUTC) {
    EXPECT_EQ(interval("2001-01-01T00:00:00Z"), 0);
    EXPECT_EQ(interval("2001-01-01T02:00:00+02:00"), 0);
    EXPECT_EQ(interval("2000-12-31T19:30:00-04:30"), 0);
    EXPECT_EQ(interval("2001-01-01T23:59:00+23:59"), 0);
    EXPECT_EQ(interval("2000-12-31T00:01:00-23:59"), 0);
    EXPECT_EQ(interval("2001-01-01T00:00:00+00:00"), 0);
    EXPECT_EQ(interval("2001-01-01T00:00:00-00:00"), 0);
    EXPECT_EQ(interval("2024-03-05t15:07:09.25+01:00"), 731'340'429.25);
    EXPECT_EQ(interval("2024-03-05T14:07:09z"), 731'340'429);
}

TEST(DateText, EachDayOfTheCalendarIsTakenAndNoOther) {
    for (const std::string_view day :
         {"2024-02-29", "2000-02-29", "2023-02-28", "2023-12-31", "2023-04-30", "1600-02-29", "0004-02-29"})
        EXPECT_TRUE(interval(std::string(day) + "T00:00:00Z")) << day;
    for (const std::string_view day : {"2023-02-29", "1900-02-29", "2100-02-29", "2023-02-30", "2023-04-31",
                                       "2023-00-01", "2023-13-01", "2023-01-00", "2023-01-32", "0000-01-01"})
        EXPECT_FALSE(interval(std::string(day) + "T00:00:00Z")) << day;
}

TEST(DateText, TimesBeyondADaysEndAreRefused) {
    for (const std::string_view time : {"24:00:00Z", "00:60:00Z", "00:00:61Z", "00:00:60Z", "23:59:60Z",
                                        "00:00:00+24:00", "00:00:00-00:60", "00:00:00+99:99"})
        EXPECT_FALSE(interval("2024-03-05T" + std::string(time))) << time;
}

TEST(DateText, LeapSecondAtTheEndOfAMonthInUTCIsTheNextSecond) {
    EXPECT_EQ(interval("2016-12-31T23:59:60Z"), interval("2017-01-01T00:00:00Z"));
    EXPECT_EQ(interval("1990-12-31T15:59:60-08:00"), interval("1991-01-01T00:00:00Z"));
    EXPECT_EQ(interval("2017-01-01T05:29:60.5+05:30"), interval("2017-01-01T00:00:00.5Z"));
    EXPECT_EQ(interval("2015-06-30T23:59:60Z"), interval("2015-07-01T00:00:00Z"));
    EXPECT_EQ(interval("2015-06-30T23:59:60+01:00"), std::nullopt);
    EXPECT_EQ(interval("9999-12-31T23:59:60Z"), std::nullopt);
}

TEST(DateText, YearsMustBeFrom1To9999InUTCToo) {
    EXPECT_EQ(interval("0001-01-01T00:00:00Z"), firstSecond);
    EXPECT_EQ(interval("0001-01-01T00:59:59+01:00"), std::nullopt);
    EXPECT_EQ(interval("0001-01-01T01:00:00+01:00"), firstSecond);
    EXPECT_EQ(interval("9999-12-31T23:59:59Z"), endOfTime - 1);
    EXPECT_EQ(interval("9999-12-31T22:59:59-01:00"), endOfTime - 1);
    EXPECT_EQ(interval("9999-12-31T23:00:00-01:00"), std::nullopt);
}

TEST(DateText, WhatIsOfAnotherFormIsRefused) {
    for (const std::string_view text : {"",
                                        "2024",
                                        "2024-03-05",
                                        "2024-03-05T14:07Z",
                                        "2024-03-05T14:07:09",
                                        "2024-03-05 14:07:09Z",
                                        "2024-03-05T14:07:09.Z",
                                        "2024-03-05T14:07:09,5Z",
                                        "2024-03-05T14:07:09+0100",
                                        "2024-03-05T14:07:09+01",
                                        "2024-03-05T14:07:09+1:00",
                                        "2024-03-05T14:07:09 Z",
                                        "2024-03-05T14:07:09ZZ",
                                        " 2024-03-05T14:07:09Z",
                                        "2024-03-05T14:07:09Z ",
                                        "2024-3-05T14:07:09Z",
                                        "24-03-05T14:07:09Z",
                                        "+2024-03-05T14:07:09Z",
                                        "-2024-03-05T14:07:09Z",
                                        "02024-03-05T14:07:09Z",
                                        "20240305T140709Z",
                                        "2024/03/05T14:07:09Z",
                                        "2024-03-05T14.07.09Z",
                                        "2024-03-05T-1:07:09Z",
                                        "2024-03-05T14:07:+9Z",
                                        "2024-03-05T14:07:09.5.5Z",
                                        "2024-03-05T14:07:09.5e3Z",
                                        "2024-03-05T14:07:09.-5Z",
                                        "2024-03-05T14:07:9Z",
                                        "2024-W10-2T14:07:09Z",
                                        "2024-03-05T14:07:09\xE2\x88\x92\x30\x31:00"})
        EXPECT_FALSE(interval(text)) << text;
    EXPECT_FALSE(interval(std::string_view("2024-03-05T14:07:09Z\0", 21)));
}

TEST(DateText, EachTruncationAndEachChangedPunctuationIsRefused) {
    const std::string_view whole = "2024-03-05T14:07:09.25+01:00";
    ASSERT_TRUE(interval(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(interval(whole.substr(0, length)));
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string text(whole);
        text[at] = 'x';
        EXPECT_FALSE(interval(text)) << text;
    }
}

TEST(DateText, FractionsOfAnyLengthGiveTheNearestDate) {
    const std::string zeros(100'000, '0');
    EXPECT_EQ(interval("2001-01-01T00:00:00." + zeros + "Z"), 0);
    EXPECT_EQ(interval("2001-01-01T00:00:00." + zeros + "1Z"), 0);
    EXPECT_EQ(interval("2001-01-01T00:00:01." + zeros + "1Z"), 1);
    EXPECT_EQ(interval("2001-01-01T00:00:00.5" + zeros + "Z"), 0.5);
    EXPECT_EQ(interval("2000-12-31T23:59:59.5" + zeros + "Z"), -0.5);
    EXPECT_EQ(interval("2000-12-31T23:59:59." + std::string(300, '9') + "Z"), -1e-300);
    // Between two neighbours, and a trace more than that.
    EXPECT_EQ(interval("2001-01-01T00:00:01.00000000000000011102230246251565404236316680908203125Z"), 1);
    EXPECT_EQ(
        interval("2001-01-01T00:00:01.00000000000000011102230246251565404236316680908203125" + zeros + "1Z"),
        std::nextafter(1.0, 2));
}

TEST(DateText, RandomDatesComeBackToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> all(firstSecond, endOfTime);
    std::uniform_real_distribution<double> recent(-1e9, 1e9);
    for (int round = 0; round < 10'000; ++round) {
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(all(random)));
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(recent(random)));
        const double milliseconds = std::round(recent(random) * 1000) / 1000;
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(milliseconds + 0.0)); // of zero there is one
    }
}

TEST(DateText, DatesOfRandomBitsComeBackToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int count = 0; count < 20'000;) {
        const auto seconds = std::bit_cast<double>(random());
        if (!(seconds >= firstSecond && seconds < endOfTime)) continue;
        ASSERT_NO_FATAL_FAILURE(expectToComeBack(seconds));
        ++count;
    }
    expectToComeBack(std::nextafter(endOfTime, 0));
    expectToComeBack(std::nextafter(firstSecond, 0));
    expectToComeBack(5e-324);
    expectToComeBack(-5e-324);
}

TEST(DateText, NegativeZeroIsTheReferenceDate) {
    EXPECT_EQ(textOf(-0.0), "2001-01-01T00:00:00Z");
}

// Against the calendar that the rest of the library describes dates by.
TEST(DateText, DaysAreThoseOfTheDescription) {
    for (double seconds = firstSecond; seconds < endOfTime; seconds += 86'400.0 * 97 + 12'345) {
        const Date date(seconds);
        auto described = date.description(); // "2024-03-05 14:07:09 +0000"
        described.replace(10, 1, "T").replace(19, std::string::npos, "Z");
        ASSERT_EQ(rfc3339FromDate(date), described);
        ASSERT_EQ(interval(described), seconds);
    }
}
