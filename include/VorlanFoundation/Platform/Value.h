// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values whose kind is known only when the program runs: entries of the defaults store, of information
// dictionaries and of JSON.
//
//     Value::Dictionary window{{"width", 800}, {"title", "Notes"}, {"recent", Value::Array{"a", "b"}}};
//     window["width"].as<int>();              // 800
//     window["width"].as<std::string>();      // no value: a number is no text
//     Value(window)["recent"][1].as<std::string>();   // "b"

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Date.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/RawValues.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace vorlan {

namespace detail {
template <class T>
concept Integer =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;
template <class T>
concept Floating = std::same_as<T, float> || std::same_as<T, double>;
template <class T>
inline constexpr bool isVector = false;
template <class T>
inline constexpr bool isVector<std::vector<T>> = true;
template <class T>
inline constexpr bool isTextMap = false;
template <class T, class... Rest>
inline constexpr bool isTextMap<std::map<std::string, T, Rest...>> = true;
} // namespace detail

/// A value of one of nine kinds.
///
/// It is read as a C++ type by `as<T>()`, which gives nothing where the value is not of that type. Numbers and
/// Booleans convert into one another where the value survives: 1 is true, 2 is no Boolean; 3.0 is the integer
/// 3, 1.5 is none; 300 is no std::uint8_t. Nothing else converts: the text "1" is no number.
///
/// Two values are equal when they are of one kind and equal in it: the integer 1 is not the number 1.0.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    all that is in it.
class VORLAN_EXPORT Value {
public:
    /// What a value can be. `number` is a 64-bit floating-point number.
    enum class Kind { null, boolean, integer, number, text, data, date, array, dictionary };

    /// An array that holds one array is written `Value::Array{Value(Value::Array{1})}`: of braces in braces, some
    /// compilers make a copy of the inner one.
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    /// Null: nothing, where something could be.
    Value() noexcept;
    // Not in line: compilers that follow moves through nine kinds of content warn of what never happens.
    Value(const Value&);
    Value(Value&&) noexcept;
    Value& operator=(const Value&);
    Value& operator=(Value&&) noexcept;
    ~Value();
    Value(std::nullptr_t) noexcept : Value() {} // NOLINT(*-explicit-*): this and the next are the same things

    template <std::same_as<bool> Boolean>
    Value(Boolean value) noexcept : content_(value) {} // NOLINT(*-explicit-*)
    /// An integer of up to 64 bits, with or without a sign.
    template <detail::Integer Integer>
    Value(Integer value) noexcept : content_(contentOf(value)) {} // NOLINT(*-explicit-*)
    template <detail::Floating Number>
    Value(Number value) noexcept : content_(static_cast<double>(value)) {}     // NOLINT(*-explicit-*)
    Value(const char* text) : content_(std::string(text)) {}                   // NOLINT(*-explicit-*)
    Value(std::string_view text) : content_(std::string(text)) {}              // NOLINT(*-explicit-*)
    Value(std::string text) noexcept : content_(std::move(text)) {}            // NOLINT(*-explicit-*)
    Value(Data data) noexcept : content_(std::move(data)) {}                   // NOLINT(*-explicit-*)
    Value(Date date) noexcept : content_(date) {}                              // NOLINT(*-explicit-*)
    Value(Array array) noexcept : content_(std::move(array)) {}                // NOLINT(*-explicit-*)
    Value(Dictionary dictionary) noexcept : content_(std::move(dictionary)) {} // NOLINT(*-explicit-*)
    /// What the case of an enumeration stands for.
    template <RawRepresentable Enumeration>
    Value(Enumeration value) : Value(rawValue(value)) {} // NOLINT(*-explicit-*)
    /// An array of what the elements become.
    template <class Element>
        requires(!std::same_as<Element, Value> && !std::same_as<Element, std::byte> &&
                 std::convertible_to<const Element&, Value>)
    Value(const std::vector<Element>& elements) // NOLINT(*-explicit-*)
        : content_(Array(elements.begin(), elements.end())) {}
    /// A dictionary of what the elements become.
    template <class Element, class Order>
        requires(!std::same_as<std::map<std::string, Element, Order>, Dictionary> &&
                 std::convertible_to<const Element&, Value>)
    Value(const std::map<std::string, Element, Order>& elements) // NOLINT(*-explicit-*)
        : content_(Dictionary(elements.begin(), elements.end())) {}

    /// Which of the nine it is.
    Kind kind() const noexcept;

    /// Whether it is null.
    bool isNull() const noexcept { return std::holds_alternative<std::monostate>(content_); }

    /// The value as a T, absent where it is none: bool, any type of integers, float, double, std::string,
    /// Data, Date, an enumeration with raw values, vectors and text-keyed maps of these (absent when one element is
    /// none), Value::Array, Value::Dictionary, and Value itself.
    template <class T>
    std::optional<T> as() const;

    /// Its content without a copy, null where it is of another kind; valid as long as the value is unchanged.
    const std::string* text() const noexcept { return std::get_if<std::string>(&content_); }
    const Data* data() const noexcept { return std::get_if<Data>(&content_); }
    const Array* array() const noexcept { return std::get_if<Array>(&content_); }
    Array* array() noexcept { return std::get_if<Array>(&content_); }
    const Dictionary* dictionary() const noexcept { return std::get_if<Dictionary>(&content_); }
    Dictionary* dictionary() noexcept { return std::get_if<Dictionary>(&content_); }

    /// The element of a dictionary or array; null where there is none, or where this is neither.
    const Value& operator[](std::string_view key) const noexcept;
    const Value& operator[](std::size_t index) const noexcept;

    /// A text for people and logs: a text is itself, the rest reads like JSON, with dates and data in their
    /// usual short forms. Always well-formed UTF-8.
    std::string description() const;

    /// Whether two values are of one kind and equal. A NaN equals nothing.
    friend VORLAN_EXPORT bool operator==(const Value& a, const Value& b);

private:
    // An integer is kept with a sign wherever it fits, so that equal integers are equal here too.
    using Content = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Data,
                                 Date, Array, Dictionary>;

    template <detail::Integer Integer>
    static Content contentOf(Integer value) noexcept {
        if (std::in_range<std::int64_t>(value)) return static_cast<std::int64_t>(value);
        return static_cast<std::uint64_t>(value);
    }

    std::optional<bool> boolean() const noexcept;
    std::optional<std::int64_t> signedInteger() const noexcept;
    std::optional<std::uint64_t> unsignedInteger() const noexcept;
    std::optional<double> number() const noexcept;

    static std::optional<float> narrowed(double number) noexcept;

    template <detail::Integer T>
    std::optional<T> integer() const noexcept;
    template <class T>
    std::optional<T> enumeration() const;
    template <class T>
    std::optional<T> vector() const;
    template <class T>
    std::optional<T> map() const;

    Content content_;
};

template <class T>
std::optional<T> Value::as() const {
    if constexpr (std::same_as<T, Value>) {
        return *this;
    } else if constexpr (std::same_as<T, bool>) {
        return boolean();
    } else if constexpr (detail::Integer<T>) {
        return integer<T>();
    } else if constexpr (std::same_as<T, float>) {
        const auto found = number();
        return found ? narrowed(*found) : std::nullopt;
    } else if constexpr (std::same_as<T, double>) {
        return number();
    } else if constexpr (RawRepresentable<T>) {
        return enumeration<T>();
    } else if constexpr (std::same_as<T, std::string> || std::same_as<T, Data> || std::same_as<T, Date> ||
                         std::same_as<T, Array> || std::same_as<T, Dictionary>) {
        const auto* found = std::get_if<T>(&content_);
        return found != nullptr ? std::optional<T>(*found) : std::nullopt;
    } else if constexpr (detail::isVector<T>) {
        return vector<T>();
    } else {
        static_assert(detail::isTextMap<T>, "a Value is never of this type");
        return map<T>();
    }
}

template <detail::Integer T>
std::optional<T> Value::integer() const noexcept {
    const auto fitting = [](auto found) -> std::optional<T> {
        return found && std::in_range<T>(*found) ? std::optional(static_cast<T>(*found)) : std::nullopt;
    };
    if constexpr (std::signed_integral<T>) {
        return fitting(signedInteger());
    } else {
        return fitting(unsignedInteger());
    }
}

template <class T>
std::optional<T> Value::enumeration() const {
    if constexpr (TextRepresentable<T>) {
        return text() != nullptr ? fromRawValue<T>(*text()) : std::nullopt;
    } else {
        const auto raw = as<RawValueOf<T>>();
        return raw ? fromRawValue<T>(*raw) : std::nullopt;
    }
}

template <class T>
std::optional<T> Value::vector() const {
    if (array() == nullptr) return std::nullopt;
    T elements;
    elements.reserve(array()->size());
    for (const Value& element : *array()) {
        auto converted = element.template as<typename T::value_type>();
        if (!converted) return std::nullopt;
        elements.push_back(*std::move(converted));
    }
    return elements;
}

template <class T>
std::optional<T> Value::map() const {
    if (dictionary() == nullptr) return std::nullopt;
    T elements;
    for (const auto& [key, element] : *dictionary()) {
        auto converted = element.template as<typename T::mapped_type>();
        if (!converted) return std::nullopt;
        elements.emplace(key, *std::move(converted));
    }
    return elements;
}

} // namespace vorlan
