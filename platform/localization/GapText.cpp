// SPDX-License-Identifier: Apache-2.0
#include "platform/localization/GapText.h"

#include "platform/localization/PrintedNumber.h"
#include "platform/values/UTF8.h"

#include <VorlanFoundation/Platform/Describe.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <variant>

namespace vorlan {

namespace {

using Content = FormatArgument::Content;
using Kind = FormatDirective::Kind;

bool isOneOf(std::string_view conversions, const GapForm& form) {
    return conversions.find(form.conversion) != std::string_view::npos;
}

std::optional<WholeNumber> wholeNumber(const Content& argument) {
    if (const auto* number = std::get_if<std::int64_t>(&argument)) return WholeNumber::of(*number);
    if (const auto* number = std::get_if<std::uint64_t>(&argument)) return WholeNumber::of(*number);
    return std::nullopt;
}

std::optional<double> number(const Content& argument) {
    return std::visit(
        [](const auto& value) -> std::optional<double> {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>) {
                return static_cast<double>(value);
            } else {
                return std::nullopt;
            }
        },
        argument);
}

// Of well-formed text: all bytes but those that go on with a character begin one.
bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, beginsCharacter));
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    for (std::size_t at = 0; at < text.size(); ++at)
        if (beginsCharacter(text[at]) && count-- == 0) return text.substr(0, at);
    return text;
}

// How many characters a gap is wider than what stands in it.
std::size_t missing(const GapForm& form, std::string_view sign, std::string_view digits) {
    if (form.width == 0) return 0;
    const auto length = characters(sign) + characters(digits);
    return form.width > length ? form.width - length : 0;
}

std::string padded(const GapForm& form, std::string text) {
    text.insert(form.isLeft ? text.size() : 0, missing(form, "", text), ' ');
    return text;
}

std::string padded(const GapForm& form, const PrintedNumber& printed) {
    if (!form.hasZeros || form.isLeft || printed.zero.empty())
        return padded(form, printed.sign + printed.digits);
    auto text = printed.sign;
    for (auto zeros = missing(form, printed.sign, printed.digits); zeros > 0; --zeros) text += printed.zero;
    return text + printed.digits;
}

std::string character(WholeNumber code) {
    const bool isOne = !code.isNegative && code.magnitude <= 0x10FFFF &&
                       (code.magnitude < 0xD800 || code.magnitude > 0xDFFF);
    std::string text;
    utf8::append(text, isOne ? static_cast<char32_t>(code.magnitude) : utf8::replacementCharacter);
    return text;
}

std::string address(WholeNumber number) {
    const std::uintptr_t bits = number.isNegative ? 0 - number.magnitude : number.magnitude;
    return describeAddress(reinterpret_cast<const void*>(bits)); // NOLINT(*-int-to-ptr): to be written only
}

template <class Number>
std::string numberText(const GapForm& form, Number number, const Locale* locale) {
    return padded(form, locale != nullptr ? printed(form, number, *locale) : printed(form, number));
}

// By the argument's own kind, whatever the gap is for.
std::string ownText(const GapForm& form, const Content& argument, const Locale* locale) {
    const auto described = [&](const auto& value) -> std::string {
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
            const bool isCut = form.precision && isOneOf("@sS", form);
            return std::string(isCut ? firstCharacters(value, *form.precision) : value);
        } else if (locale == nullptr) {
            return describe(value);
        } else if constexpr (std::is_same_v<std::decay_t<decltype(value)>, double>) {
            return describedNumber(value, *locale);
        } else {
            return describedNumber(WholeNumber::of(value), *locale);
        }
    };
    return padded(form, std::visit(described, argument));
}

} // namespace

bool fits(Kind kind, const GapForm& form, const Content& argument) {
    const bool isText = std::holds_alternative<std::string>(argument);
    const bool isDouble = std::holds_alternative<double>(argument);
    switch (kind) {
    case Kind::integer: return isText ? isOneOf("cC", form) : !isDouble;
    case Kind::number: return !isText;
    case Kind::text: return isText;
    default: return form.conversion != 'p' || !isDouble;
    }
}

std::string gapText(const GapForm& form, const Content& argument, const Locale* locale) {
    if (isOneOf("fFeEgGaA", form))
        if (const auto value = number(argument)) return numberText(form, *value, locale);
    if (isOneOf("cC", form))
        if (const auto* text = std::get_if<std::string>(&argument))
            return padded(form, std::string(firstCharacters(*text, 1)));
    if (const auto whole = wholeNumber(argument)) {
        if (isOneOf("diuxXo", form)) return numberText(form, *whole, locale);
        if (isOneOf("cC", form)) return padded(form, character(*whole));
        if (form.conversion == 'p') return padded(form, address(*whole));
    }
    return ownText(form, argument, locale);
}

} // namespace vorlan
