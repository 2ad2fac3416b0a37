// SPDX-License-Identifier: Apache-2.0
#pragma once

// The textual description of any value, for messages and logs. Always well-formed UTF-8.

#include <VorlanFoundation/Platform/Export.h>

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>

namespace vorlan {

/// A type that describes itself.
template <class T>
concept SelfDescribing = requires(const T& value) {
    { value.description() } -> std::convertible_to<std::string>;
};

/// A type that a free function beside it describes, as an enumeration is.
template <class T>
concept DescribedBeside = std::is_enum_v<T> && requires(const T& value) {
    { description(value) } -> std::convertible_to<std::string>;
};

namespace detail {
VORLAN_EXPORT std::string repairedText(std::string_view text);
VORLAN_EXPORT std::string describeNumber(double value);
VORLAN_EXPORT std::string describeNumber(float value);
VORLAN_EXPORT std::string describeObject(const std::type_info& type, const void* address);
VORLAN_EXPORT std::string typeName(const std::type_info& type);
/// The same without the namespaces, classes and functions that the type stands in.
VORLAN_EXPORT std::string unqualifiedTypeName(const std::type_info& type);

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;
template <class T>
inline constexpr bool isSharedPointer = false;
template <class T>
inline constexpr bool isSharedPointer<std::shared_ptr<T>> = true;
} // namespace detail

/// The text of an address: lowercase hexadecimal, sixteen digits, behind "0x".
VORLAN_EXPORT std::string describeAddress(const void* address);

/// The textual description of a value.
///
/// Text is itself, with every ill-formed byte shown as U+FFFD; numbers are written so that they read back as
/// the same number (a whole floating-point number ends in ".0"); Booleans are "true" and "false"; an absent
/// optional or pointer is "nil"; a type with an operation `description()`,
/// or an enumeration with a function `description(value)` beside it, is what that returns; an object
/// held by a pointer is described in its place; anything else is its type's name.
///
/// Safe from any thread, as far as reading `value` is. Never fails but for want of memory.
template <class T>
std::string describe(const T& value) {
    if constexpr (std::same_as<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (SelfDescribing<T>) {
        return detail::repairedText(value.description());
    } else if constexpr (DescribedBeside<T>) {
        return detail::repairedText(description(value));
    } else if constexpr (std::is_null_pointer_v<T>) {
        return "nil";
    } else if constexpr (std::convertible_to<const T&, std::string_view>) {
        if constexpr (std::is_pointer_v<T>)
            if (value == nullptr) return "nil";
        return detail::repairedText(value);
    } else if constexpr (std::floating_point<T>) {
        return detail::describeNumber(value);
    } else if constexpr (std::integral<T>) {
        return std::to_string(value);
    } else if constexpr (detail::isOptional<T>) {
        return value ? describe(*value) : "nil";
    } else if constexpr (detail::isSharedPointer<T>) {
        using Pointee = typename T::element_type;
        if (!value) return "nil";
        if constexpr (SelfDescribing<Pointee>) {
            return detail::repairedText(value->description());
        } else if constexpr (std::is_polymorphic_v<Pointee>) {
            return detail::describeObject(typeid(*value), value.get());
        } else {
            return detail::describeObject(typeid(Pointee), value.get());
        }
    } else {
        return detail::typeName(typeid(T));
    }
}

} // namespace vorlan
