// SPDX-License-Identifier: Apache-2.0
#pragma once

// Conversions and arithmetic that are never undefined and never silently wrong.
//
// The checked operations stop the process (SIGILL, without a message) where the exact result does not fit;
// the saturating ones return the nearest value that does.

#include <cmath>
#include <concepts>
#include <limits>

namespace vorlan::checked {

/// Stops the process at once, without a message: the end of arithmetic that has no result.
[[noreturn]] inline void trap() {
    __builtin_trap();
}

/// Whether the integer next to `value` towards zero is one of the type's.
template <std::integral Integer>
bool isInRange(double value) {
    // Both bounds are powers of two (or zero), so they are exact as doubles; the upper one is just out of
    // range.
    constexpr double upper = 2.0 * static_cast<double>(std::numeric_limits<Integer>::max() / 2 + 1);
    constexpr auto lower = static_cast<double>(std::numeric_limits<Integer>::min());
    const double whole = std::trunc(value);
    return whole >= lower && whole < upper;
}

/// The integer next to `value` towards zero; traps when `value` is not finite or the integer does not fit.
template <std::integral Integer>
Integer truncate(double value) {
    if (!isInRange<Integer>(value)) trap();
    return static_cast<Integer>(value);
}

/// `a + b`; traps when it does not fit.
template <std::integral Integer>
constexpr Integer add(Integer a, Integer b) {
    Integer result{};
    if (__builtin_add_overflow(a, b, &result)) trap();
    return result;
}

/// `a - b`; traps when it does not fit.
template <std::integral Integer>
constexpr Integer subtract(Integer a, Integer b) {
    Integer result{};
    if (__builtin_sub_overflow(a, b, &result)) trap();
    return result;
}

/// `a * b`; traps when it does not fit.
template <std::integral Integer>
constexpr Integer multiply(Integer a, Integer b) {
    Integer result{};
    if (__builtin_mul_overflow(a, b, &result)) trap();
    return result;
}

/// `a / b`, towards zero; traps when `b` is zero or the quotient does not fit.
template <std::integral Integer>
constexpr Integer divide(Integer a, Integer b) {
    if (b == 0) trap();
    if constexpr (std::signed_integral<Integer>)
        if (b == -1) return subtract(Integer{0}, a);
    return static_cast<Integer>(a / b);
}

} // namespace vorlan::checked

namespace vorlan::saturating {

/// `a + b`, or the nearest value of the type.
template <std::integral Integer>
constexpr Integer add(Integer a, Integer b) {
    Integer result{};
    if (!__builtin_add_overflow(a, b, &result)) return result;
    return b < 0 ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
}

/// `a - b`, or the nearest value of the type.
template <std::integral Integer>
constexpr Integer subtract(Integer a, Integer b) {
    Integer result{};
    if (!__builtin_sub_overflow(a, b, &result)) return result;
    return b > 0 ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
}

/// `a * b`, or the nearest value of the type.
template <std::integral Integer>
constexpr Integer multiply(Integer a, Integer b) {
    Integer result{};
    if (!__builtin_mul_overflow(a, b, &result)) return result;
    return (a < 0) == (b < 0) ? std::numeric_limits<Integer>::max() : std::numeric_limits<Integer>::min();
}

} // namespace vorlan::saturating
