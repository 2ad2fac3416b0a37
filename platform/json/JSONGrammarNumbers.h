// SPDX-License-Identifier: Apache-2.0
#pragma once

// The numbers of a JSON text. What JSONGrammar.h says about the buffer holds here, too.

#include "platform/json/JSONGrammar.h"

#include <array>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace vorlan::json {

/// A number as most are written, with few digits and without an exponent.
struct ShortNumber {
    const char* begin = nullptr;
    const char* end = nullptr; ///< Null when the number is no such number, or there is none.
    std::uint64_t digits = 0;  ///< All of them, without the point.
    int fraction = 0;          ///< How many of them are behind the point.
    bool isNegative = false;
};

inline bool areDigits(std::uint64_t eight) {
    constexpr std::uint64_t halves = 0xF0F0F0F0F0F0F0F0;
    return ((eight & halves) | (((eight + 0x0606060606060606) & halves) >> 4)) == 0x3333333333333333;
}

/// What eight digits stand for: pairs of them first, then pairs of these.
inline std::uint64_t valueOfDigits(std::uint64_t eight) {
    eight -= 0x3030303030303030;
    eight = eight * 10 + (eight >> 8);
    constexpr std::uint64_t mask = 0x000000FF000000FF;
    constexpr std::uint64_t first = 100 + (std::uint64_t{1'000'000} << 32);
    constexpr std::uint64_t second = 1 + (std::uint64_t{10'000} << 32);
    return ((eight & mask) * first + ((eight >> 16) & mask) * second) >> 32;
}

/// Goes over digits and puts them behind others.
inline const char* scanDigits(const char* at, std::uint64_t& digits) {
    for (auto eight = eightBytes(at); areDigits(eight); eight = eightBytes(at)) {
        digits = digits * 100'000'000 + valueOfDigits(eight);
        at += 8;
    }
    for (; isDigit(*at); ++at) digits = digits * 10 + static_cast<unsigned>(*at - '0');
    return at;
}

/// The number that begins here. Called, it would go through memory: decoding would take 6 % longer.
[[gnu::always_inline]] inline ShortNumber scanShortNumber(const char* at) {
    constexpr int mostDigits = 19;
    ShortNumber number{.begin = at, .isNegative = *at == '-'};
    const char* const first = number.isNegative ? at + 1 : at;
    at = scanDigits(first, number.digits);
    auto count = at - first;
    if (count == 0 || (count > 1 && *first == '0')) return {};
    if (*at == '.') {
        const char* const fraction = at + 1;
        at = scanDigits(fraction, number.digits);
        if (at == fraction) return {};
        number.fraction = static_cast<int>(at - fraction);
        count += at - fraction;
    }
    if (count > mostDigits || *at == 'e' || *at == 'E') return {};
    number.end = at;
    return number;
}

/// The same by the standard library.
double nearestDouble(const char* begin, const char* end);

/// The nearest double. Most short numbers are made of two doubles, of which one operation makes it, rounding once.
inline double nearestDouble(const ShortNumber& number) {
    constexpr std::array<double, 20> powersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                                 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    constexpr auto largest = std::uint64_t{1} << std::numeric_limits<double>::digits;
    if (FLT_EVAL_METHOD != 0 || number.digits > largest) return nearestDouble(number.begin, number.end);
    const double magnitude =
        static_cast<double>(number.digits) / powersOfTen[static_cast<std::size_t>(number.fraction)];
    return number.isNegative ? -magnitude : magnitude;
}

/// A number as it is written.
struct Number {
    const char* begin = nullptr;
    const char* end = nullptr; ///< Null when there is a fault.
    std::int64_t exponent = 0; ///< The power of ten of its last digit.
    bool isNegative = false;
    bool isInteger = true; ///< It has neither a fraction nor an exponent.

    std::string_view text() const { return {begin, static_cast<std::size_t>(end - begin)}; }
};

/// Any number.
Number scanNumber(const char* at, Fault& fault);

/// The nearest one; none where it is beyond the largest.
std::optional<double> nearestDouble(const Number& number);
std::optional<float> nearestFloat(const Number& number);

/// The number without its sign, when it is whole, however it is written, and fits into 64 bits.
std::optional<std::uint64_t> wholeMagnitude(const Number& number);
/// Whether it is whole, however large.
bool isWhole(const Number& number);

} // namespace vorlan::json
