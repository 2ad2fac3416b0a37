// SPDX-License-Identifier: Apache-2.0
#pragma once

// Enumerations whose cases stand for texts or numbers.
//
//     enum class Theme { light, dark };
//     template <>
//     struct vorlan::RawValues<Theme> {
//         static constexpr std::array cases{std::pair(Theme::light, std::string_view("light")),
//                                           std::pair(Theme::dark, std::string_view("dark"))};
//     };
//     rawValue(Theme::dark);                  // "dark"
//     fromRawValue<Theme>("dark");            // Theme::dark
//     fromRawValue<Theme>("grey");            // no value
//     for (const Theme theme : allCases<Theme>()) offer(theme);

#include <VorlanFoundation/Platform/FatalError.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

namespace vorlan {

/// To be specialised for an enumeration: a static array `cases` of pairs, each case with its text
/// (std::string_view) or number.
template <class Enumeration>
struct RawValues;

/// An enumeration whose cases stand for texts or numbers.
template <class T>
concept RawRepresentable = std::is_enum_v<T> && requires { RawValues<T>::cases; };

/// What the cases of an enumeration stand for: std::string_view or a type of numbers.
template <RawRepresentable Enumeration>
using RawValueOf = std::remove_cvref_t<decltype(RawValues<Enumeration>::cases[0].second)>;

/// An enumeration whose cases stand for texts.
template <class T>
concept TextRepresentable = RawRepresentable<T> && std::is_same_v<RawValueOf<T>, std::string_view>;

/// The text or number that a case stands for. A value that is none of the cases stops the process with a
/// message.
template <RawRepresentable Enumeration>
constexpr RawValueOf<Enumeration> rawValue(Enumeration value) {
    for (const auto& [known, raw] : RawValues<Enumeration>::cases)
        if (known == value) return raw;
    fatalError("the enumeration has no such case", "VorlanFoundation/RawValues");
}

/// The case that stands for a number, or for a text, letter by letter; absent when there is none.
template <RawRepresentable Enumeration>
constexpr std::optional<Enumeration> fromRawValue(RawValueOf<Enumeration> raw) {
    for (const auto& [value, known] : RawValues<Enumeration>::cases)
        if (known == raw) return value;
    return std::nullopt;
}

/// All cases, in the order of their declaration there.
template <RawRepresentable Enumeration>
constexpr auto allCases() {
    constexpr auto& pairs = RawValues<Enumeration>::cases;
    std::array<Enumeration, std::size(pairs)> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = pairs[i].first;
    return cases;
}

} // namespace vorlan
