// SPDX-License-Identifier: Apache-2.0
#pragma once

// Whether texts, containers and a host's own collections are empty, also where there may be none.
//
//     isEmpty(names);  isNotEmpty(names);
//     std::optional<std::string> name = ...;
//     if (isNotNilNotEmpty(name)) greet(*name);
//     isNilOrEmpty(std::getenv("LANG"));

#include <VorlanFoundation/Extensions/Mixin.h>

#include <concepts>
#include <type_traits>

namespace vorlan {

namespace detail {

template <class T>
concept SaysIsEmpty = requires(const T& value) {
    { value.isEmpty() } -> std::convertible_to<bool>;
};

template <class T>
concept SaysEmpty = requires(const T& value) {
    { value.empty() } -> std::convertible_to<bool>;
};

} // namespace detail

/// What can be empty: a type with an `isEmpty()`, as a host writes it for its own, or an `empty()`, as the standard's texts
/// and containers have it. A view whose `empty()` is not const, as that of a filter, is none.
template <class T>
concept Occupiable = detail::SaysIsEmpty<T> || detail::SaysEmpty<T>;

/// What may be absent, and may be empty where it is not: an optional, or a pointer, of something occupiable.
template <class T>
concept OccupiableOptional = !std::is_array_v<T> && requires(const T& value) {
    static_cast<bool>(value);
    requires Occupiable<std::remove_cvref_t<decltype(*value)>>;
};

/// Whether a value is empty.
template <Occupiable T>
constexpr bool isEmpty(const T& value) {
    if constexpr (detail::SaysIsEmpty<T>)
        return value.isEmpty();
    else
        return value.empty();
}
/// The same for a text of C's, also where it is null.
constexpr bool isEmpty(const char* text) {
    return text == nullptr || *text == '\0';
}

/// Whether a value is not empty.
template <Occupiable T>
constexpr bool isNotEmpty(const T& value) {
    return !vorlan::isEmpty(value);
}
/// The same for a text of C's, also where it is null.
constexpr bool isNotEmpty(const char* text) {
    return !vorlan::isEmpty(text);
}

/// Whether a value is absent or empty.
template <OccupiableOptional T>
constexpr bool isNilOrEmpty(const T& value) {
    return !value || vorlan::isEmpty(*value);
}
/// The same for a text of C's, which may be null.
constexpr bool isNilOrEmpty(const char* text) {
    return vorlan::isEmpty(text);
}

/// Whether a value is there and not empty.
template <OccupiableOptional T>
constexpr bool isNotNilNotEmpty(const T& value) {
    return !vorlan::isNilOrEmpty(value);
}
/// The same for a text of C's, which may be null.
constexpr bool isNotNilNotEmpty(const char* text) {
    return !vorlan::isNilOrEmpty(text);
}

/// Gives a type that has an `isEmpty()` the opposite too: `playlist.isNotEmpty()`.
///
///     class Playlist : public OccupiableOperations<Playlist> {
///     public:
///         bool isEmpty() const;
///     };
///
/// Threads: as the type's `isEmpty()`.
template <class Self>
class OccupiableOperations : public detail::Mixin<OccupiableOperations<Self>> {
public:
    constexpr bool isNotEmpty() const { return vorlan::isNotEmpty(static_cast<const Self&>(*this)); }
};

} // namespace vorlan
