// SPDX-License-Identifier: Apache-2.0
#pragma once

// How standard types, and the library's own, are coded as JSON. Included by Codable.h.
//
// | type | in JSON |
// |---|---|
// | bool, integers, float, double | true or false; numbers |
// | std::string | a text |
// | enumerations with raw values | the raw value |
// | Date, Data | by the strategy |
// | Value | what it is |
// | std::optional, std::unique_ptr, std::shared_ptr | null, or what it holds |
// | vector, deque, list, set, unordered_set, std::array | an array |
// | map, unordered_map by texts, or by enumerations that stand for texts | an object |
// | std::pair, std::tuple | an array of that length |

#include <VorlanFoundation/Platform/CodingTraits.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vorlan {

/// This and all that follow:
///
/// Threads: safe from any thread, as far as reading the value is; the reader or writer is one thread's.
template <>
struct JSONCoding<bool> {
    static void encode(bool value, JSONWriter& writer) { writer.writeBoolean(value); }
    static bool decode(JSONReader& reader) { return reader.readBoolean(); }
};

template <detail::Integer T>
struct JSONCoding<T> {
    static void encode(T value, JSONWriter& writer) {
        if constexpr (std::signed_integral<T>) {
            writer.writeInteger(value);
        } else {
            writer.writeUnsigned(value);
        }
    }
    static T decode(JSONReader& reader) {
        if constexpr (std::signed_integral<T>) {
            return narrowed(reader.readInteger(), reader);
        } else {
            return narrowed(reader.readUnsigned(), reader);
        }
    }

private:
    template <class Wide>
    static T narrowed(Wide value, JSONReader& reader) {
        if (std::in_range<T>(value)) return static_cast<T>(value);
        reader.fail("the number " + std::to_string(value) + " does not fit into " +
                        std::to_string(sizeof(T) * 8) +
                        (std::signed_integral<T> ? " bits with a sign" : " bits without a sign"),
                    JSONError::Kind::outOfRange);
    }
};

template <>
struct JSONCoding<double> {
    static void encode(double value, JSONWriter& writer) { writer.writeNumber(value); }
    static double decode(JSONReader& reader) { return reader.readNumber(); }
};

template <>
struct JSONCoding<float> {
    static void encode(float value, JSONWriter& writer) { writer.writeFloat(value); }
    static float decode(JSONReader& reader) { return reader.readFloat(); }
};

template <>
struct JSONCoding<std::string> {
    static void encode(std::string_view value, JSONWriter& writer) { writer.writeText(value); }
    static std::string decode(JSONReader& reader) { return std::string(reader.readText()); }
};

template <>
struct JSONCoding<Date> {
    static void encode(Date value, JSONWriter& writer) { writer.writeDate(value); }
    static Date decode(JSONReader& reader) { return reader.readDate(); }
};

template <>
struct JSONCoding<Data> {
    static void encode(const Data& value, JSONWriter& writer) { writer.writeData(value); }
    static Data decode(JSONReader& reader) { return reader.readData(); }
};

template <>
struct JSONCoding<Value> {
    static void encode(const Value& value, JSONWriter& writer) { writer.writeValue(value); }
    static Value decode(JSONReader& reader) { return reader.readValue(); }
};

/// An enumeration that has no such case is an error.
template <RawRepresentable T>
    requires(!detail::Described<T>)
struct JSONCoding<T> {
    static void encode(T value, JSONWriter& writer) {
        if constexpr (TextRepresentable<T>) {
            writer.writeText(rawValue(value));
        } else {
            JSONCoding<RawValueOf<T>>::encode(rawValue(value), writer);
        }
    }
    static T decode(JSONReader& reader) {
        if constexpr (TextRepresentable<T>) {
            return caseOf(reader.readText(), reader);
        } else {
            return caseOf(JSONCoding<RawValueOf<T>>::decode(reader), reader);
        }
    }

private:
    static T caseOf(RawValueOf<T> raw, JSONReader& reader) {
        if (const auto found = fromRawValue<T>(raw)) return *found;
        if constexpr (TextRepresentable<T>) {
            reader.fail("no case stands for \"" + std::string(raw) + "\"", JSONError::Kind::invalidValue);
        } else {
            reader.fail("no case stands for " + std::to_string(raw), JSONError::Kind::invalidValue);
        }
    }
};

namespace detail {

template <class T>
inline constexpr bool mayBeAbsent<std::optional<T>> = true;
template <class T>
inline constexpr bool mayBeAbsent<std::shared_ptr<T>> = true;
template <class T>
inline constexpr bool mayBeAbsent<std::unique_ptr<T>> = true;

/// A container of elements without keys, as `std::vector` is.
template <class T>
concept ElementContainer = requires(T container, typename T::value_type element) {
    container.begin();
    container.end();
    container.insert(container.end(), std::move(element));
} && !requires { typename T::mapped_type; } && !std::same_as<T, std::string> && !std::same_as<T, Data>;

template <class T>
concept TextOrTextRepresentable = std::same_as<T, std::string> || TextRepresentable<T>;

/// A container of elements by names, as `std::map` is.
template <class T>
concept NamedContainer = requires(T container) {
    typename T::mapped_type;
    requires TextOrTextRepresentable<typename T::key_type>;
    container.insert_or_assign(std::declval<typename T::key_type>(), std::declval<typename T::mapped_type>());
};

inline std::string_view nameOf(std::string_view key) {
    return key;
}
template <TextRepresentable Key>
std::string_view nameOf(Key key) {
    return rawValue(key);
}

template <class Pointer>
struct PointerCoding {
    using Pointee = std::remove_const_t<typename Pointer::element_type>;
    static void encode(const Pointer& value, JSONWriter& writer) {
        if (value) {
            JSONCoding<Pointee>::encode(*value, writer);
        } else {
            writer.writeNull();
        }
    }
    static Pointer decode(JSONReader& reader) {
        if (reader.readNull()) return nullptr;
        return Pointer(new Pointee(JSONCoding<Pointee>::decode(reader)));
    }
};

/// A tuple or pair: an array of just that many elements.
template <class Tuple>
struct TupleCoding {
    static void encode(const Tuple& value, JSONWriter& writer) {
        writer.beginArray();
        std::apply(
            [&](const auto&... element) {
                (JSONCoding<std::remove_cvref_t<decltype(element)>>::encode(element, writer), ...);
            },
            value);
        writer.endArray();
    }
    static Tuple decode(JSONReader& reader) {
        reader.enterArray();
        return decodeAll(reader, std::make_index_sequence<std::tuple_size_v<Tuple>>());
    }

private:
    template <std::size_t... Index>
    static Tuple decodeAll(JSONReader& reader, std::index_sequence<Index...>) {
        // Braces: these are read in their order.
        Tuple value{decodeOne<std::tuple_element_t<Index, Tuple>>(reader)...};
        if (reader.nextElement()) failForLength(reader);
        return value;
    }
    template <class Element>
    static Element decodeOne(JSONReader& reader) {
        if (!reader.nextElement()) failForLength(reader);
        return JSONCoding<Element>::decode(reader);
    }
    [[noreturn]] static void failForLength(JSONReader& reader) {
        reader.fail("expected an array of " + std::to_string(std::tuple_size_v<Tuple>) + " elements",
                    JSONError::Kind::typeMismatch);
    }
};

} // namespace detail

template <class T>
struct JSONCoding<std::optional<T>> {
    static void encode(const std::optional<T>& value, JSONWriter& writer) {
        if (value) {
            JSONCoding<T>::encode(*value, writer);
        } else {
            writer.writeNull();
        }
    }
    static std::optional<T> decode(JSONReader& reader) {
        if (reader.readNull()) return std::nullopt;
        return JSONCoding<T>::decode(reader);
    }
};

template <class T>
struct JSONCoding<std::shared_ptr<T>> : detail::PointerCoding<std::shared_ptr<T>> {};
template <class T>
struct JSONCoding<std::unique_ptr<T>> : detail::PointerCoding<std::unique_ptr<T>> {};

template <detail::ElementContainer T>
    requires(!detail::Described<T>)
struct JSONCoding<T> {
    using Element = typename T::value_type;
    static void encode(const T& value, JSONWriter& writer) {
        writer.beginArray();
        for (const auto& element : value) JSONCoding<Element>::encode(element, writer);
        writer.endArray();
    }
    static T decode(JSONReader& reader) {
        T elements;
        reader.enterArray();
        while (reader.nextElement()) {
            if constexpr (requires { JSONCoding<Element>::decodeInto(reader, elements.emplace_back()); }) {
                JSONCoding<Element>::decodeInto(reader, elements.emplace_back());
            } else {
                elements.insert(elements.end(), JSONCoding<Element>::decode(reader));
            }
        }
        return elements;
    }
};

template <detail::NamedContainer T>
    requires(!detail::Described<T>)
struct JSONCoding<T> {
    using Key = typename T::key_type;
    using Element = typename T::mapped_type;
    static void encode(const T& value, JSONWriter& writer) {
        writer.beginObject();
        for (const auto& [key, element] : value) {
            writer.key(detail::nameOf(key));
            JSONCoding<Element>::encode(element, writer);
        }
        writer.endObject();
    }
    static T decode(JSONReader& reader) {
        T elements;
        reader.enterObject();
        while (const auto name = reader.nextKey()) {
            auto key = keyOf(*name, reader);
            elements.insert_or_assign(std::move(key), JSONCoding<Element>::decode(reader));
        }
        return elements;
    }

private:
    static Key keyOf(std::string_view name, JSONReader& reader) {
        if constexpr (std::same_as<Key, std::string>) {
            return Key(name);
        } else {
            if (const auto found = fromRawValue<Key>(name)) return *found;
            reader.fail("no case stands for \"" + std::string(name) + "\"", JSONError::Kind::invalidValue);
        }
    }
};

template <class T, std::size_t Count>
struct JSONCoding<std::array<T, Count>> : detail::TupleCoding<std::array<T, Count>> {};
template <class First, class Second>
struct JSONCoding<std::pair<First, Second>> : detail::TupleCoding<std::pair<First, Second>> {};
template <class... Elements>
struct JSONCoding<std::tuple<Elements...>> : detail::TupleCoding<std::tuple<Elements...>> {};

} // namespace vorlan
