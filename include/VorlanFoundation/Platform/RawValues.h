// SPDX-License-Identifier: Apache-2.0
#pragma once

// Enumerations whose cases stand for texts.
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

#include <VorlanFoundation/Platform/FatalError.h>

#include <optional>
#include <string_view>
#include <type_traits>

namespace vorlan {

/// To be specialised for an enumeration: a static array `cases` of pairs, each case with its text.
template <class Enumeration>
struct RawValues;

/// An enumeration whose cases stand for texts.
template <class T>
concept RawRepresentable = std::is_enum_v<T> && requires { RawValues<T>::cases; };

/// The text that a case stands for. A value that is none of the cases stops the process with a message.
template <RawRepresentable Enumeration>
constexpr std::string_view rawValue(Enumeration value) {
    for (const auto& [known, text] : RawValues<Enumeration>::cases)
        if (known == value) return text;
    fatalError("the enumeration has no such case", "VorlanFoundation/RawValues");
}

/// The case that stands for a text, letter by letter; absent when there is none.
template <RawRepresentable Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::string_view text) {
    for (const auto& [value, known] : RawValues<Enumeration>::cases)
        if (known == text) return value;
    return std::nullopt;
}

} // namespace vorlan
