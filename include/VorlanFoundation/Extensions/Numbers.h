// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers rounded, written with a fixed count of digits, and read as Booleans.
//
//     number::roundToPlaces(0.3, 2, RoundingRule::toNearestOrAwayFromZero);    // 0.2998046875
//     number::string(1.005F, {.fractionDigits = 2});                           // "1.00"
//     number::boolValue(2);                                                    // true

#include <VorlanFoundation/Platform/Export.h>

#include <concepts>
#include <cstdint>
#include <string>

namespace vorlan {

/// Which whole number stands for one that is between two.
enum class RoundingRule : std::uint8_t {
    toNearestOrAwayFromZero, ///< the nearest; of two the one further from zero
    toNearestOrEven,         ///< the nearest; of two the even one
    up,                      ///< the one above
    down,                    ///< the one below
    towardZero,              ///< the one nearer to zero
    awayFromZero,            ///< the one further from zero
};

} // namespace vorlan

/// What numbers can do. Safe from any thread.
namespace vorlan::number {

/// How many digits stand behind the decimal point.
struct FractionDigits {
    std::int64_t fractionDigits = {}; ///< below 0 as 0, and above 340 as 340
};

/// Rounds to a multiple of 1 / places^10, in the precision of the number's own type, which is float, double or long
/// double. The places are the base of that power, not its exponent: 1 rounds to whole numbers and 2 to multiples of
/// 1/1024, while 0, and every count whose power the type does not hold, gives what is no number. Whole numbers are
/// found by the rule alone, whatever way of rounding the floating-point unit is set to.
template <std::floating_point T>
T roundToPlaces(T value, std::int64_t places, RoundingRule rule);

extern template VORLAN_EXPORT float roundToPlaces(float, std::int64_t, RoundingRule);
extern template VORLAN_EXPORT double roundToPlaces(double, std::int64_t, RoundingRule);
extern template VORLAN_EXPORT long double roundToPlaces(long double, std::int64_t, RoundingRule);

/// The number with so many digits behind the point, no more and no fewer, in the manner of programs: "1234.50". It is
/// rounded half to even by what the float really holds, so that 1.005F is "1.00"; from 14 digits on, counted with those
/// before the point, by the shortest digits that tell that number from other doubles, and zeros follow these. What is no
/// number, and infinities, are written as `NumberFormatter` does. Makes a formatter of its own at every call.
VORLAN_EXPORT std::string string(float value, FractionDigits digits);
/// Numbers of other types are not narrowed unseen.
template <class T>
    requires(!std::same_as<T, float>)
std::string string(T value, FractionDigits digits) = delete;

/// Whether a number is not 0.
template <std::signed_integral Integer>
constexpr bool boolValue(Integer value) noexcept {
    return value != 0;
}

/// The same, for integers of all types.
template <std::integral Integer>
constexpr bool boolean(Integer value) noexcept {
    return value != 0;
}

} // namespace vorlan::number
