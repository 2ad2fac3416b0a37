// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/PrintedNumber.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <locale.h> // NOLINT(*-deprecated-headers): locale_t is not C++'s
#include <string_view>
#include <utility>

namespace vorlan {

namespace {

// While it lives, this thread's numbers have C's decimal point, whatever the host set.
class PointOfC {
public:
    PointOfC() : former_(uselocale(ofC())) {}
    PointOfC(const PointOfC&) = delete;
    PointOfC& operator=(const PointOfC&) = delete;
    ~PointOfC() { uselocale(former_); }

private:
    static locale_t ofC() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t former_;
};

std::string digitsIn(int base, std::uint64_t number) {
    std::array<char, 64> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
    return {digits.begin(), end};
}

std::string raised(std::string text) {
    for (auto& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// The two's complement of a negative number in as many bits as C takes there, or in all where it needs them.
std::uint64_t withoutSign(WholeNumber number, int bits) {
    if (!number.isNegative) return number.magnitude;
    const auto complement = 0 - number.magnitude;
    const bool isFitting = bits < 64 && number.magnitude <= std::uint64_t{1} << (bits - 1);
    return isFitting ? complement & ((std::uint64_t{1} << bits) - 1) : complement;
}

std::string signOf(const GapForm& form, bool isNegative) {
    if (isNegative) return "-";
    if (form.conversion == 'u') return "";
    return form.hasPlus ? "+" : form.hasBlank ? " " : "";
}

PrintedNumber unsignedOne(const GapForm& form, std::uint64_t number) {
    const bool isOctal = form.conversion == 'o';
    PrintedNumber result{.digits = digitsIn(isOctal ? 8 : 16, number)};
    if (form.conversion == 'X') result.digits = raised(std::move(result.digits));
    if (form.isAlternative && !isOctal && number != 0) result.sign = {'0', form.conversion};
    return result;
}

// The conversion is one of printf's and takes a double.
std::string writtenByC(const GapForm& form, double number) {
    const std::string format = std::string("%") + (form.isAlternative ? "#" : "") + ".*" + form.conversion;
    const int precision = form.precision ? static_cast<int>(*form.precision) : -1; // which is none
    const PointOfC point;
    std::array<char, 400> buffer;
    const auto write = [&](char* to, std::size_t size) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // it is made of what was understood
        return static_cast<std::size_t>(std::snprintf(to, size, format.c_str(), precision, number));
#pragma GCC diagnostic pop
    };
    const auto size = write(buffer.data(), buffer.size());
    if (size < buffer.size()) return {buffer.data(), size};
    std::string text(size + 1, '\0');
    write(text.data(), text.size());
    text.pop_back();
    return text;
}

} // namespace

PrintedNumber printed(const GapForm& form, WholeNumber number) {
    const bool hasSign = std::string_view("diu").find(form.conversion) != std::string_view::npos;
    auto result = hasSign ? PrintedNumber{.sign = signOf(form, number.isNegative),
                                          .digits = digitsIn(10, number.magnitude)}
                          : unsignedOne(form, withoutSign(number, form.bits));
    if (form.precision) {
        result.zero.clear();
        if (*form.precision == 0 && number.magnitude == 0) result.digits.clear();
        const auto fewest = std::max(*form.precision, result.digits.size());
        result.digits.insert(0, fewest - result.digits.size(), '0');
    }
    if (form.isAlternative && form.conversion == 'o' && !result.digits.starts_with('0'))
        result.digits.insert(0, 1, '0');
    return result;
}

PrintedNumber printed(const GapForm& form, double number) {
    PrintedNumber result{.sign = signOf(form, std::signbit(number)),
                         .digits = writtenByC(form, std::fabs(number))};
    if (!std::isfinite(number)) {
        result.zero.clear();
    } else if (form.conversion == 'a' || form.conversion == 'A') {
        result.sign += result.digits.substr(0, 2);
        result.digits.erase(0, 2);
    }
    return result;
}

int fractionDigitsOf(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) return 0; // where "e" is a digit
    const auto end = std::min(text.find_first_of("eE"), text.size());
    const auto point = std::min(text.find('.'), end);
    int digits = point < end ? static_cast<int>(end - point) - 1 : 0;
    int exponent = 0;
    if (end < text.size()) {
        const auto from = end + (text.substr(end + 1).starts_with('+') ? 2 : 1);
        std::from_chars(text.data() + from, text.data() + text.size(), exponent);
    }
    return std::max(digits - exponent, 0);
}

} // namespace vorlan
