// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Numbers.h>
#include <VorlanFoundation/Testing/UserRegion.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

using namespace vorlan;

namespace {

using enum RoundingRule;

constexpr std::array rules{toNearestOrAwayFromZero, toNearestOrEven, up, down, towardZero, awayFromZero};

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();

template <class T>
constexpr T infinity = std::numeric_limits<T>::infinity();
template <class T>
constexpr T noNumber = std::numeric_limits<T>::quiet_NaN();

template <class T>
class RoundToPlacesTest : public ::testing::Test {};

using FloatingPointTypes = ::testing::Types<float, double, long double>;
TYPED_TEST_SUITE(RoundToPlacesTest, FloatingPointTypes);

// By the floating-point unit, in its own way of rounding, where there is one that the rule names.
double wholeByUnit(double value, RoundingRule rule) {
    switch (rule) {
    case toNearestOrEven: return std::nearbyint(value);
    case up: return std::ceil(value);
    case down: return std::floor(value);
    case towardZero: return std::trunc(value);
    case awayFromZero: return value < 0 ? std::floor(value) : std::ceil(value);
    case toNearestOrAwayFromZero: break;
    }
    const double whole = std::trunc(value);
    return std::abs(value - whole) < 0.5 ? whole : whole + std::copysign(1, value);
}

// The same number, with a sign of its own where it is zero.
template <class T>
bool isSame(T a, T b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

template <class T>
concept WritesWithDigits = requires(T value) { number::string(value, {.fractionDigits = 1}); };

// To so many digits by what the float exactly holds.
std::string exactly(float value, int digits) {
    std::array<char, 128> text;
    std::snprintf(text.data(), text.size(), "%.*f", digits, static_cast<double>(value));
    return text.data();
}

} // namespace

TYPED_TEST(RoundToPlacesTest, PlacesAreTheBaseOfThePower) {
    using T = TypeParam;
    const auto rounded = [](T value, std::int64_t places) {
        const auto result = number::roundToPlaces(value, places, toNearestOrAwayFromZero);
        static_assert(std::is_same_v<decltype(result), const T>);
        return result;
    };
    EXPECT_TRUE(isSame<T>(rounded(T(1), 2), 1));
    EXPECT_TRUE(isSame<T>(rounded(T(0.3L), 2), T(0.2998046875L)));
    EXPECT_TRUE(isSame<T>(rounded(T(-0.3L), 2), T(-0.2998046875L)));
    EXPECT_TRUE(isSame<T>(rounded(T(0.3L), -2), T(0.2998046875L))) << "whose tenth power is the same";
    EXPECT_TRUE(isSame<T>(rounded(T(2.5L), 1), 3));
    EXPECT_TRUE(isSame<T>(rounded(T(2.5L), -1), 3));
    EXPECT_TRUE(isSame<T>(rounded(T(0.3L), 3), T(17'715) / T(59'049)));
    EXPECT_TRUE(isSame<T>(rounded(T(-0.0L), 2), T(-0.0L)));
}

TYPED_TEST(RoundToPlacesTest, EveryRuleHasItsWholeNumbers) {
    using T = TypeParam;
    constexpr std::array<T, 8> values{-2.5, -1.5, -0.5, -0.25, 0.25, 0.5, 1.5, 2.5};
    constexpr std::array<std::array<T, 8>, 6> wanted{{{-3, -2, -1, -0.0, 0, 1, 2, 3},
                                                      {-2, -2, -0.0, -0.0, 0, 0, 2, 2},
                                                      {-2, -1, -0.0, -0.0, 1, 1, 2, 3},
                                                      {-3, -2, -1, -1, 0, 0, 1, 2},
                                                      {-2, -1, -0.0, -0.0, 0, 0, 1, 2},
                                                      {-3, -2, -1, -1, 1, 1, 2, 3}}};
    for (std::size_t rule = 0; rule < rules.size(); ++rule)
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_TRUE(isSame(number::roundToPlaces(values[i], 1, rules[rule]), wanted[rule][i]))
                << "rule " << rule << ", " << values[i];
}

TYPED_TEST(RoundToPlacesTest, NumberBelowOneHalfIsNoHalf) {
    using T = TypeParam;
    const T below = std::nextafter(T(0.5), T(0));
    const T odd =
        T(1) / std::numeric_limits<T>::epsilon() + 1; // the last numbers that have no halves between them
    for (const auto rule : {toNearestOrAwayFromZero, toNearestOrEven}) {
        EXPECT_TRUE(isSame<T>(number::roundToPlaces(below, 1, rule), 0));
        EXPECT_TRUE(isSame<T>(number::roundToPlaces(std::nextafter(T(0.5), T(1)), 1, rule), 1));
        EXPECT_TRUE(isSame(number::roundToPlaces(odd, 1, rule), odd));
        EXPECT_TRUE(isSame(number::roundToPlaces(std::numeric_limits<T>::max(), 1, rule),
                           std::numeric_limits<T>::max()));
    }
}

TYPED_TEST(RoundToPlacesTest, WithoutPlacesThereIsNoNumber) {
    using T = TypeParam;
    for (const auto rule : rules)
        for (const T value : {T(0), T(1), T(-0.3L), infinity<T>, noNumber<T>})
            EXPECT_TRUE(std::isnan(number::roundToPlaces(value, 0, rule)));
}

TYPED_TEST(RoundToPlacesTest, InfinitiesStayAndPowersBeyondTheTypeGiveNoNumber) {
    using T = TypeParam;
    EXPECT_EQ(number::roundToPlaces(infinity<T>, 2, up), infinity<T>);
    EXPECT_EQ(number::roundToPlaces(-infinity<T>, 2, up), -infinity<T>);
    EXPECT_TRUE(std::isnan(number::roundToPlaces(noNumber<T>, 2, up)));
    EXPECT_EQ(number::roundToPlaces(std::numeric_limits<T>::max(), 2, up), infinity<T>)
        << "the product is too large";
    for (const auto places : {most, least}) {
        const T result = number::roundToPlaces(T(1), places, up);
        EXPECT_EQ(std::isnan(result), (std::is_same_v<T, float>)) << "whose largest power is less";
    }
}

TYPED_TEST(RoundToPlacesTest, WholeNumbersAreFoundWhateverWayOfRoundingIsSet) {
    using T = TypeParam;
    for (const int way : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        ASSERT_EQ(std::fesetround(way), 0);
        const T even = number::roundToPlaces(T(2.5L), 1, toNearestOrEven);
        const T odd = number::roundToPlaces(T(3.5L), 1, toNearestOrEven);
        const T away = number::roundToPlaces(T(-2.5L), 1, toNearestOrAwayFromZero);
        const T near = number::roundToPlaces(T(2.25L), 1, toNearestOrEven);
        const T above = number::roundToPlaces(T(2.25L), 1, up);
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(even, 2);
        EXPECT_EQ(odd, 4);
        EXPECT_EQ(away, -3);
        EXPECT_EQ(near, 2);
        EXPECT_EQ(above, 3);
    }
}

TEST(NumbersTest, RoundToPlacesIsTheFormulaToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> some(-1000, 1000);
    std::uniform_real_distribution<double> number(-1000, 1000);
    for (int round = 0; round < 100'000; ++round) {
        const double value = round % 2 == 0 ? number(random) : std::bit_cast<double>(random());
        const auto places = some(random);
        const auto rule = rules[random() % rules.size()];
        const volatile double factor = std::pow(static_cast<double>(places), 10.0);
        const volatile double product = value * factor;
        const volatile double wanted = wholeByUnit(product, rule) / factor;
        ASSERT_TRUE(isSame<double>(number::roundToPlaces(value, places, rule), wanted))
            << value << " " << places;
    }
}

TEST(NumbersTest, TextHasSoManyDigits) {
    EXPECT_EQ(number::string(1.005F, {.fractionDigits = 2}), "1.00");
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = 0}), "2");
    EXPECT_EQ(number::string(3.5F, {.fractionDigits = 0}), "4");
    EXPECT_EQ(number::string(0.125F, {.fractionDigits = 2}), "0.12");
    EXPECT_EQ(number::string(0.375F, {.fractionDigits = 2}), "0.38");
    EXPECT_EQ(number::string(-2.5F, {.fractionDigits = 0}), "-2");
    EXPECT_EQ(number::string(3.0F, {.fractionDigits = 3}), "3.000");
    static_assert(!WritesWithDigits<double> && !WritesWithDigits<int> && WritesWithDigits<float>);
    EXPECT_EQ(number::string(1234567.875F, {.fractionDigits = 1}), "1234567.9") << "in no groups";
    EXPECT_EQ(number::string(0.015F, {.fractionDigits = 2}), "0.01") << "a float that is a little less";
    EXPECT_EQ(number::string(0.045F, {.fractionDigits = 2}), "0.05")
        << "a float that is a little more than half";
    EXPECT_EQ(number::string(-0.001F, {.fractionDigits = 2}), "-0.00");
}

TEST(NumbersTest, TextOfUpToThirteenDigitsIsRoundedByTheExactNumber) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 2000; ++round) {
        // From a millionth to a million.
        const auto value = std::ldexp(static_cast<float>(random()), static_cast<int>(random() % 40) - 52);
        const int whole = static_cast<int>(std::ceil(std::log10(value + 1)));
        const int digits = static_cast<int>(random() % static_cast<unsigned>(14 - whole));
        ASSERT_EQ(number::string(value, {.fractionDigits = digits}), exactly(value, digits)) << value;
    }
}

TEST(NumbersTest, HalvesAreRoundedToTheEvenDigit) {
    for (int eighths = -999; eighths <= 999; ++eighths) {
        const float value = static_cast<float>(eighths) / 8;
        for (int digits = 0; digits <= 3; ++digits)
            ASSERT_EQ(number::string(value, {.fractionDigits = digits}), exactly(value, digits)) << value;
    }
}

TEST(NumbersTest, DigitsBeyondThoseOfTheDoubleAreZeros) {
    EXPECT_EQ(number::string(0.1F, {.fractionDigits = 9}), "0.100000001");
    EXPECT_EQ(number::string(0.1F, {.fractionDigits = 20}), "0.10000000149011612000");
}

TEST(NumbersTest, AnyCountOfDigitsIsTaken) {
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = -1}), "2");
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = least}), "2");
    const auto longest = "2.5" + std::string(339, '0');
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = 340}), longest);
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = 341}), longest);
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = std::int64_t{1} << 32}), longest);
    EXPECT_EQ(number::string(2.5F, {.fractionDigits = most}), longest);
}

TEST(NumbersTest, WhatIsNoNumberIsWrittenAsProgramsDo) {
    EXPECT_EQ(number::string(noNumber<float>, {.fractionDigits = 2}), "NaN");
    EXPECT_EQ(number::string(infinity<float>, {.fractionDigits = 2}), "INF");
    EXPECT_EQ(number::string(-infinity<float>, {.fractionDigits = 2}), "-INF");
}

TEST(NumbersTest, TextIsTheSameForEveryUser) {
    for (const char* locale : {"de_DE", "ar_EG", "hi_IN@numbers=deva"}) {
        const vorlan::testing::UserRegion user({.locale = locale});
        EXPECT_EQ(number::string(-1234.5F, {.fractionDigits = 2}), "-1234.50") << locale;
    }
}

TEST(NumbersTest, IntegersAreTrueWhereTheyAreNotZero) {
    static_assert(number::boolValue(1) && number::boolValue(-1) && !number::boolValue(0));
    static_assert(number::boolValue(least) && number::boolValue(std::int8_t{-128}));
    static_assert(number::boolean(1U) && !number::boolean(0UL) && number::boolean(true) &&
                  !number::boolean(false));
    EXPECT_TRUE(number::boolean(std::uint8_t{255}));
    EXPECT_TRUE(number::boolean(std::int64_t{1} << 32)) << "whose lower half is 0";
    EXPECT_TRUE(number::boolean(std::uint64_t{1} << 63));
    EXPECT_TRUE(number::boolValue(std::int64_t{1} << 32));
    EXPECT_FALSE(number::boolean(std::int16_t{0}));
}
