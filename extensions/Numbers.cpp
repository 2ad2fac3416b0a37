// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/Numbers.h>

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/NumberFormatter.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vorlan {

namespace {

// As by nearbyint, but that goes by the way of rounding that is set. What is left over of a whole number is exact.
template <class T>
T nearestOrEven(T value) {
    const bool isHalf = std::abs(value - std::trunc(value)) == T(0.5);
    return isHalf ? 2 * std::round(value / 2) : std::round(value);
}

template <class T>
T rounded(T value, RoundingRule rule) {
    switch (rule) {
    case RoundingRule::toNearestOrAwayFromZero: return std::round(value);
    case RoundingRule::toNearestOrEven: return nearestOrEven(value);
    case RoundingRule::up: return std::ceil(value);
    case RoundingRule::down: return std::floor(value);
    case RoundingRule::towardZero: return std::trunc(value);
    case RoundingRule::awayFromZero: return std::signbit(value) ? std::floor(value) : std::ceil(value);
    }
    fatalError("there is no such rounding rule", "VorlanFoundation/Numbers");
}

} // namespace

template <std::floating_point T>
T number::roundToPlaces(T value, std::int64_t places, RoundingRule rule) {
    const T factor = std::pow(static_cast<T>(places), T(10));
    return rounded(value * factor, rule) / factor;
}

template float number::roundToPlaces(float, std::int64_t, RoundingRule);
template double number::roundToPlaces(double, std::int64_t, RoundingRule);
template long double number::roundToPlaces(long double, std::int64_t, RoundingRule);

std::string number::string(float value, FractionDigits digits) {
    using Limits = std::numeric_limits<int>;
    const auto count =
        static_cast<int>(std::clamp<std::int64_t>(digits.fractionDigits, Limits::min(), Limits::max()));
    NumberFormatter formatter;
    formatter.setMinimumFractionDigits(count);
    formatter.setMaximumFractionDigits(count);
    formatter.setRoundingMode(NumberFormatter::RoundingMode::halfEven);
    formatter.setNumberStyle(NumberFormatter::Style::decimal);
    formatter.setLocale(Locale("en_US_POSIX"));
    return formatter.string(static_cast<double>(value)); // which has all that the float holds
}

} // namespace vorlan
