// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace vorlan;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string written(const Value& value, const JSONStrategies& strategies) {
    JSONWriter writer({.strategies = strategies});
    writer.writeValue(value);
    return std::move(writer).takeText();
}

std::string written(Date date, JSONDates dates) {
    return written(Value(date), {.dates = dates});
}

std::optional<JSONError::Kind> failure(const Value& value, const JSONStrategies& strategies) {
    try {
        written(value, strategies);
        return std::nullopt;
    } catch (const JSONError& error) {
        return error.kind();
    }
}

} // namespace

TEST(JSONWriterStrategies, DatesAreNumbersFromTheirBeginning) {
    const Date date(731'340'429.25); // 2024-03-05T14:07:09.25Z
    EXPECT_EQ(written(date, JSONDates::deferredToDate), "731340429.25");
    EXPECT_EQ(written(date, JSONDates::secondsSince1970), "1709647629.25");
    EXPECT_EQ(written(date, JSONDates::millisecondsSince1970), "1709647629250.0");
    EXPECT_EQ(written(Date(-978'307'200), JSONDates::secondsSince1970), "0.0");
    EXPECT_EQ(written(Date(-978'307'200), JSONDates::millisecondsSince1970), "0.0");
    EXPECT_EQ(written(Date(-978'307'200.5), JSONDates::millisecondsSince1970), "-500.0");
}

// 0.1 s is a little more than a tenth, so are its milliseconds; to round the seconds first would lose them.
TEST(JSONWriterStrategies, MillisecondsAreRoundedOnce) {
    EXPECT_EQ(written(Date(0.0001), JSONDates::millisecondsSince1970), "978307200000.1");
    EXPECT_EQ(written(Date(731'340'429.123), JSONDates::millisecondsSince1970), "1709647629123.0");
    for (int number = 0; number < 10'000; ++number) {
        const double seconds = 731'340'429 + number * 0.0137;
        const auto exact = static_cast<double>((static_cast<long double>(seconds) + 978'307'200) * 1000);
        ASSERT_EQ(std::stod(written(Date(seconds), JSONDates::millisecondsSince1970)), exact);
    }
}

TEST(JSONWriterStrategies, DatesAreTexts) {
    EXPECT_EQ(written(Date(731'340'429), JSONDates::iso8601), R"("2024-03-05T14:07:09Z")");
    EXPECT_EQ(written(Date(731'340'429.25), JSONDates::iso8601), R"("2024-03-05T14:07:09.25Z")");
    EXPECT_EQ(written(Date(-0.25), JSONDates::iso8601), R"("2000-12-31T23:59:59.75Z")");
}

TEST(JSONWriterStrategies, DatesBeyondTheirFormAreErrors) {
    const JSONStrategies texts{.dates = JSONDates::iso8601, .nonFinite = JSONNonFinite()};
    for (const double seconds : {-63'113'904'000.0, 252'423'993'599.0})
        EXPECT_FALSE(failure(Date(seconds), texts)) << seconds;
    for (const double seconds :
         {-63'113'904'001.0, 252'423'993'600.0, 1e300, infinity, -infinity, std::nan("")})
        EXPECT_EQ(failure(Date(seconds), texts), JSONError::Kind::invalidValue) << seconds;
}

TEST(JSONWriterStrategies, DatesThatAreNoFiniteNumbersGoByTheirStrategy) {
    for (const auto dates :
         {JSONDates::deferredToDate, JSONDates::secondsSince1970, JSONDates::millisecondsSince1970}) {
        EXPECT_EQ(failure(Date(infinity), {.dates = dates}), JSONError::Kind::nonFinite);
        EXPECT_EQ(written(Date(-infinity), {.dates = dates, .nonFinite = JSONNonFinite()}), R"("-Infinity")");
    }
    EXPECT_EQ(failure(Date(1e308), {.dates = JSONDates::millisecondsSince1970}), JSONError::Kind::nonFinite);
}

TEST(JSONWriterStrategies, DataIsBase64OrNumbers) {
    const Value data(dataFromText("f\xFFo\n"));
    EXPECT_EQ(written(data, {}), R"("Zv9vCg==")");
    EXPECT_EQ(written(data, {.data = JSONBytes::numbers}), "[102,255,111,10]");
    EXPECT_EQ(written(Value(Data()), {}), R"("")");
    EXPECT_EQ(written(Value(Data()), {.data = JSONBytes::numbers}), "[]");
}

TEST(JSONWriterStrategies, NumbersThatAreNotFiniteAreErrorsOrTexts) {
    const JSONStrategies texts{.nonFinite = JSONNonFinite{.positiveInfinity = "+\"∞\"", .nan = ""}};
    for (const double number : {infinity, -infinity, std::nan(""), -std::nan("")})
        EXPECT_EQ(failure(number, {}), JSONError::Kind::nonFinite) << number;
    EXPECT_EQ(written(Value(infinity), texts), R"("+\"∞\"")");
    EXPECT_EQ(written(Value(-infinity), texts), R"("-Infinity")");
    EXPECT_EQ(written(Value(std::nan("")), texts), R"("")");
    EXPECT_EQ(written(Value(1.5), texts), "1.5");
}

TEST(JSONWriterStrategies, FloatsThatAreNotFiniteGoByTheSame) {
    JSONWriter writer({.strategies = {.nonFinite = JSONNonFinite()}});
    writer.beginArray();
    for (const float number : {std::numeric_limits<float>::infinity(), std::nanf("")})
        writer.writeFloat(number);
    writer.endArray();
    EXPECT_EQ(std::move(writer).takeText(), R"(["Infinity","NaN"])");
    EXPECT_THROW(JSONWriter().writeFloat(-std::numeric_limits<float>::infinity()), JSONError);
}

TEST(JSONWriterStrategies, IllFormedTextForANumberIsAnError) {
    EXPECT_EQ(failure(infinity, {.nonFinite = JSONNonFinite{.positiveInfinity = "\xFF"}}),
              JSONError::Kind::illFormedText);
}
