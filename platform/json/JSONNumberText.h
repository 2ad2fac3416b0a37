// SPDX-License-Identifier: Apache-2.0
#pragma once

// Numbers as they stand in JSON.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace vorlan {

/// Room for any number: a sign, seventeen digits, a point, an exponent with its sign, and what makes it no integer.
inline constexpr std::size_t longestNumber = 32;

/// Writes a finite number in the fewest digits that read back as the same, in a form that is no integer's, and with an
/// exponent only where people would want one. Returns the end.
template <std::floating_point Number>
char* writeNumberText(char* to, Number number) {
    // Beyond this a whole number can have more digits than it needs, and std::to_chars would write them all.
    constexpr auto largest = Number(std::uint64_t{1} << std::numeric_limits<Number>::digits);
    constexpr auto smallest = Number(1e-5);
    const auto magnitude = std::abs(number);
    const bool isPlain = (magnitude >= smallest && magnitude <= largest) || magnitude == 0;
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    char* end = std::to_chars(to, to + longestNumber, number, format).ptr;
    if (!isPlain || std::find(to, end, '.') != end) return end;
    *end++ = '.';
    *end++ = '0';
    return end;
}

/// The same of a whole number.
template <std::integral Number>
char* writeNumberText(char* to, Number number) {
    return std::to_chars(to, to + longestNumber, number).ptr;
}

} // namespace vorlan
