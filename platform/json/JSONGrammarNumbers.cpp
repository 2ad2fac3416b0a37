// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONGrammarNumbers.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vorlan::json {
namespace {

const char* afterDigits(const char* at) {
    while (isDigit(*at)) ++at;
    return at;
}

// The digits behind "e" and their sign. An exponent of more digits than any use has is as good as a very large one.
bool scanExponent(const char*& at, Number& number) {
    constexpr std::int64_t largest = 1'000'000'000'000;
    const bool isNegative = *at == '-';
    if (*at == '-' || *at == '+') ++at;
    if (!isDigit(*at)) return false;
    std::int64_t exponent = 0;
    for (; isDigit(*at); ++at) exponent = std::min(exponent * 10 + (*at - '0'), largest);
    number.exponent += isNegative ? -exponent : exponent;
    return true;
}

Number faulty(Fault& fault, const char* at, std::string_view message) {
    fault = {at, message};
    return {};
}

// The digits from the first to the last that is not 0, as they stand (with a point, perhaps), and the power of ten of
// the last of them.
struct Significant {
    const char* begin;
    const char* end;
    std::int64_t exponent;
};

Significant significant(const Number& number) {
    const char* const end =
        std::find_if(number.begin, number.end, [](char one) { return one == 'e' || one == 'E'; });
    const auto counts = [](char one) { return one >= '1' && one <= '9'; };
    const char* const first = std::find_if(number.begin, end, counts);
    const char* last = end;
    std::int64_t zeros = 0;
    for (; last != first && !counts(last[-1]); --last)
        if (last[-1] == '0') ++zeros;
    return {first, last, number.exponent + zeros};
}

// A number that is too large or too small for its type is none, or zero.
template <class T>
std::optional<T> nearest(const Number& number) {
    T value = 0;
    const auto result = std::from_chars(number.begin, number.end, value);
    if (result.ec == std::errc()) return value;
    const auto digits = significant(number);
    const auto magnitude = digits.exponent + (digits.end - digits.begin);
    if (digits.begin != digits.end && magnitude > 0) return std::nullopt;
    return number.isNegative ? -T(0) : T(0);
}

} // namespace

Number scanNumber(const char* at, Fault& fault) {
    Number number{.begin = at, .isNegative = *at == '-'};
    if (number.isNegative) ++at;
    const char* const first = at;
    at = afterDigits(at);
    if (at == first) return faulty(fault, at, number.isNegative ? "expected a digit" : "expected a value");
    if (at - first > 1 && *first == '0') return faulty(fault, first + 1, "a number has no zeros in front");
    if (*at == '.') {
        const char* const fraction = ++at;
        at = afterDigits(fraction);
        if (at == fraction) return faulty(fault, at, "expected a digit");
        number.exponent = fraction - at;
        number.isInteger = false;
    }
    if (*at == 'e' || *at == 'E') {
        if (!scanExponent(++at, number)) return faulty(fault, at, "expected a digit");
        number.isInteger = false;
    }
    number.end = at;
    return number;
}

double nearestDouble(const char* begin, const char* end) {
    double value = 0;
    std::from_chars(begin, end, value);
    return value;
}

std::optional<double> nearestDouble(const Number& number) {
    return nearest<double>(number);
}

std::optional<float> nearestFloat(const Number& number) {
    return nearest<float>(number);
}

bool isWhole(const Number& number) {
    if (number.isInteger) return true;
    const auto digits = significant(number);
    return digits.begin == digits.end || digits.exponent >= 0;
}

std::optional<std::uint64_t> wholeMagnitude(const Number& number) {
    const auto digits = significant(number);
    if (digits.begin == digits.end) return 0;
    // 2^64 has 20 digits.
    if (digits.exponent < 0 || digits.exponent > 20) return std::nullopt;
    std::uint64_t magnitude = 0;
    const auto append = [&](unsigned digit) {
        return !__builtin_mul_overflow(magnitude, 10U, &magnitude) &&
               !__builtin_add_overflow(magnitude, digit, &magnitude);
    };
    for (const char* at = digits.begin; at != digits.end; ++at)
        if (isDigit(*at) && !append(static_cast<unsigned>(*at - '0'))) return std::nullopt;
    for (auto left = digits.exponent; left > 0; --left)
        if (!append(0)) return std::nullopt;
    return magnitude;
}

} // namespace vorlan::json
