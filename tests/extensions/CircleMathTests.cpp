// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/CircleMath.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <string>

using namespace vorlan;

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double twoPi = 6.283185307179586;

std::uint64_t bits(double number) {
    return std::bit_cast<std::uint64_t>(number);
}

// Kept from being joined with what is computed next.
double kept(double number) {
    volatile double place = number;
    return place;
}

Point pointByTheFormula(double radius, const CircleMath::Position& position) {
    const double share = kept(kept(position.percentage * kept(radius * twoPi)) / radius);
    const double angle = kept((radius > 0 ? share : 0) + position.angleShift);
    double sine = 0;
    double cosine = 0;
    ::sincos(angle, &sine, &cosine);
    const double factor = position.clockwise ? 1 : -1;
    return {.x = position.center.x + kept(radius * sine),
            .y = position.center.y + kept(kept(factor * radius) * cosine)};
}

} // namespace

TEST(CircleMathTest, RadiusGivesTheRest) {
    const CircleMath circle(2);
    EXPECT_EQ(circle.radius(), 2);
    EXPECT_EQ(circle.diameter(), 4);
    EXPECT_EQ(bits(circle.circleLength()), bits(12.566370614359172));
    EXPECT_EQ(bits(CircleMath(1).circleLength()), bits(twoPi));
    EXPECT_EQ(bits(CircleMath(0.1).circleLength()), bits(0.1 * twoPi));
}

TEST(CircleMathTest, ArcsHaveLengthsAnglesAndShares) {
    const CircleMath circle(3);
    EXPECT_EQ(circle.arcLength({.angle = 0.7}), 0.7 * 3);
    EXPECT_EQ(circle.arcAngle({.arcLength = 0.7}), 0.7 / 3);
    EXPECT_EQ(bits(circle.arcLength({.pecentage = 0.7})), bits(0.7 * kept(3 * twoPi)));
    EXPECT_EQ(bits(circle.arcAngle({.percentage = 0.7})), bits(kept(0.7 * kept(3 * twoPi)) / 3));
    EXPECT_EQ(bits(circle.arcPercentage({.angle = 0.7})), bits(kept(0.7 * 3) / kept(3 * twoPi)));
    EXPECT_EQ(bits(CircleMath(1).arcLength({.pecentage = 0.25})), bits(twoPi / 4));
}

TEST(CircleMathTest, PercentagesAreFractions) {
    const CircleMath circle(1);
    EXPECT_EQ(bits(circle.arcLength({.pecentage = 1})), bits(twoPi));
    EXPECT_EQ(bits(circle.arcAngle({.percentage = 1})), bits(twoPi));
    EXPECT_EQ(circle.arcPercentage({.angle = twoPi}), 1);
    EXPECT_EQ(bits(circle.arcLength({.pecentage = -2})), bits(-2 * twoPi));
}

TEST(CircleMathTest, WithoutARadiusThereAreNoAngles) {
    const CircleMath circle(0);
    EXPECT_EQ(circle.arcAngle({.arcLength = 5}), 0);
    EXPECT_EQ(circle.arcAngle({.percentage = 0.5}), 0);
    EXPECT_TRUE(std::isnan(circle.arcPercentage({.angle = 1})));
    EXPECT_EQ(circle.arcLength({.angle = 1}), 0);
    EXPECT_EQ(circle.circlePoint({.percentage = 0.3, .angleShift = 1, .center = {3, 4}, .clockwise = true}),
              (Point{3, 4}));
}

TEST(CircleMathTest, RadiiBelowZeroAreTakenAsTheyAre) {
    const CircleMath circle(-2);
    EXPECT_EQ(circle.diameter(), -4);
    EXPECT_EQ(circle.circleLength(), -12.566370614359172);
    EXPECT_EQ(circle.arcAngle({.arcLength = 5}), 0);
    EXPECT_EQ(circle.arcAngle({.percentage = 0.5}), 0);
    EXPECT_EQ(circle.arcLength({.angle = 1}), -2);
    EXPECT_EQ(circle.arcPercentage({.angle = twoPi}), 1);
    EXPECT_EQ(circle.circlePoint({.percentage = 0.5, .clockwise = true}), (Point{0, -2}))
        << "at the shift alone";
}

TEST(CircleMathTest, RadiusThatIsNoNumberHasNoAngles) {
    const CircleMath circle(noNumber);
    EXPECT_TRUE(std::isnan(circle.circleLength()));
    EXPECT_EQ(circle.arcAngle({.arcLength = 5}), 0);
    EXPECT_EQ(circle.arcAngle({.percentage = 0.5}), 0);
    EXPECT_EQ(CircleMath(infinity).arcAngle({.arcLength = 5}), 0);
    EXPECT_TRUE(std::isnan(CircleMath(infinity).arcAngle({.percentage = 0.5})));
}

TEST(CircleMathTest, PointsBeginOnTheVertical) {
    const CircleMath circle(10);
    const auto down =
        circle.circlePoint({.percentage = 0, .angleShift = 0, .center = {0, 0}, .clockwise = true});
    const auto up =
        circle.circlePoint({.percentage = 0, .angleShift = 0, .center = {0, 0}, .clockwise = false});
    EXPECT_EQ(down, (Point{0, 10}));
    EXPECT_EQ(up, (Point{0, -10}));
    EXPECT_EQ(circle.circlePoint({.center = {5, 7}, .clockwise = true}), (Point{5, 17}));
}

TEST(CircleMathTest, GrowingAnglesLeadToGreaterX) {
    const CircleMath circle(10);
    for (const bool clockwise : {true, false}) {
        const auto point = circle.circlePoint({.percentage = 0.25, .clockwise = clockwise});
        EXPECT_NEAR(point.x, 10, 1e-14);
        EXPECT_NEAR(point.y, 0, 1e-14);
    }
    const auto shifted = circle.circlePoint({.angleShift = std::numbers::pi / 2, .clockwise = true});
    EXPECT_EQ(shifted, circle.circlePoint({.percentage = 0.25, .clockwise = true}));
}

TEST(CircleMathTest, PointsAreThoseOfTheFormulaToTheLastBit) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> number(-100, 100);
    for (int round = 0; round < 100'000; ++round) {
        const double radius = number(random);
        const CircleMath::Position position{.percentage = number(random) / 100,
                                            .angleShift = number(random),
                                            .center = {number(random), number(random)},
                                            .clockwise = random() % 2 == 0};
        const auto point = CircleMath(radius).circlePoint(position);
        const auto wanted = pointByTheFormula(radius, position);
        ASSERT_EQ(bits(point.x), bits(wanted.x)) << radius;
        ASSERT_EQ(bits(point.y), bits(wanted.y)) << radius;
    }
}
