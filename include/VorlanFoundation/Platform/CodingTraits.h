// SPDX-License-Identifier: Apache-2.0
#pragma once

// What makes a type one that can be written as JSON and read from it. Hosts include Codable.h.

#include <VorlanFoundation/Platform/JSONReader.h>
#include <VorlanFoundation/Platform/JSONWriter.h>

#include <concepts>

namespace vorlan {

/// How a type is coded: `static void encode(const T&, JSONWriter&)` and `static T decode(JSONReader&)`. To be
/// specialised for types of others; the library does so for standard types (`StandardCoding.h`), and for described types
/// and types that code themselves (`Codable.h`).
template <class T>
struct JSONCoding;

/// A type that can be written as JSON.
template <class T>
concept Encodable = requires(const T& value, JSONWriter& writer) { JSONCoding<T>::encode(value, writer); };

/// A type that can be read from JSON.
template <class T>
concept Decodable = requires(JSONReader& reader) {
    { JSONCoding<T>::decode(reader) } -> std::same_as<T>;
};

/// Both.
template <class T>
concept Codable = Encodable<T> && Decodable<T>;

namespace detail {

/// A type with a `VORLAN_CODABLE`.
template <class T>
concept Described = requires(const T* type) { vorlanCodableFields(type); };
template <class T>
concept SelfEncoding = requires(const T& value, JSONWriter& writer) { value.encode(writer); };
template <class T>
concept SelfDecoding = requires(JSONReader& reader) {
    { T::decode(reader) } -> std::same_as<T>;
};

/// Whether a member may be missing; specialised for optionals and smart pointers.
template <class T>
inline constexpr bool mayBeAbsent = false;

} // namespace detail

} // namespace vorlan
