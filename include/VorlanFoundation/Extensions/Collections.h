// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where an element goes in a sorted sequence, and whether a value is one of several.
//
//     collection::indexForInserting(sorted, 5, std::less<>());
//     isOne(color, {.of = {Color::red, Color::blue}});
//     except(color, {.of = {Color::red, Color::blue}});
//     isOne<Circle, Square>(shape);
//     containsOne(numbers, {.of = {1, 2}});

#include <VorlanFoundation/Extensions/Mixin.h>
#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/ObjectPointer.h>
#include <VorlanFoundation/Platform/Value.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace vorlan {

namespace detail {

template <class Sequence>
concept Sorted = std::ranges::random_access_range<const Sequence> && std::ranges::sized_range<const Sequence>;

template <class Predicate, class Sequence, class Element = std::ranges::range_reference_t<const Sequence>,
          class New = const std::ranges::range_value_t<Sequence>&>
concept Ordering = std::predicate<Predicate&, Element, New> && std::predicate<Predicate&, New, Element>;

} // namespace detail

/// What sequences can tell. Safe from any thread, as far as the sequence and the predicate are.
namespace collection {

/// Where an element goes in a sequence that is sorted by the predicate, found in O(log n) steps. Among elements that are
/// its equals it goes before whichever of them is met first. In each step the predicate is asked first whether the
/// middle element is ordered before the new one, and then, if not, the other way round.
///
/// Stops the process where the sum of two positions does not fit into 64 bits.
template <detail::Sorted Sequence, detail::Ordering<Sequence> Predicate>
std::int64_t indexForInserting(const Sequence& sorted, const std::ranges::range_value_t<Sequence>& element,
                               Predicate isOrderedBefore) {
    using Difference = std::ranges::range_difference_t<const Sequence>;
    const auto start = std::ranges::begin(sorted);
    std::int64_t low = 0;
    auto high = static_cast<std::int64_t>(std::ranges::ssize(sorted)) - 1;
    while (low <= high) {
        const std::int64_t middle = checked::add(low, high) / 2;
        if (std::invoke(isOrderedBefore, start[static_cast<Difference>(middle)], element))
            low = middle + 1;
        else if (std::invoke(isOrderedBefore, element, start[static_cast<Difference>(middle)]))
            high = middle - 1;
        else
            return middle;
    }
    return low;
}

} // namespace collection

namespace detail {

template <class T>
concept Text = std::same_as<T, std::string> || std::same_as<T, std::string_view> ||
               std::same_as<std::decay_t<T>, const char*> || std::same_as<std::decay_t<T>, char*>;

/// What a value is listed as: texts as views, however they are kept.
template <class T>
using Listed = std::conditional_t<Text<T>, std::string_view, T>;

template <class T, class Letter = std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>>
concept WidePointer =
    std::is_pointer_v<std::decay_t<T>> && (std::same_as<Letter, wchar_t> || std::same_as<Letter, char8_t> ||
                                           std::same_as<Letter, char16_t> || std::same_as<Letter, char32_t>);

/// Texts of wide letters are not compared where the language would compare their addresses.
template <class A, class B>
concept ComparableForEquality =
    !(WidePointer<A> && WidePointer<B>) &&
    requires(const std::remove_reference_t<A>& a, const std::remove_reference_t<B>& b) {
        { a == b } -> std::convertible_to<bool>;
    };

template <class Values, class T>
concept SequenceOf =
    std::ranges::input_range<Values> && ComparableForEquality<std::ranges::range_reference_t<Values>, T>;

// The zero behind a literal is no letter of it.
template <Text T>
constexpr std::string_view viewOf(const T& text) {
    if constexpr (std::is_array_v<T>) {
        const std::string_view letters(text, std::size(text));
        return letters.substr(0, letters.find('\0'));
    } else if constexpr (std::is_pointer_v<T>) {
        return text != nullptr ? std::string_view(text) : std::string_view();
    } else {
        return text;
    }
}

template <class Values>
constexpr decltype(auto) elementsOf(Values& values) {
    if constexpr (std::is_array_v<Values> && Text<std::remove_cv_t<Values>>)
        return detail::viewOf(values);
    else
        return (values);
}

template <class A, class B>
constexpr bool areEqual(const A& a, const B& b);

/// What an optional holds equals a value, or what another holds; two absent ones are equal.
template <class A, class B>
constexpr bool isEqualToContent(const std::optional<A>& a, const B& b) {
    if constexpr (isOptional<B>)
        return a.has_value() && b.has_value() ? detail::areEqual(*a, *b) : a.has_value() == b.has_value();
    else
        return a.has_value() && detail::areEqual(*a, b);
}

// Integers are equal by their numbers, and texts by their letters, also where the language would convert the one and
// compare addresses of the other, or read from null.
template <class A, class B>
constexpr bool areEqual(const A& a, const B& b) {
    if constexpr (Integer<A> && Integer<B>)
        return std::cmp_equal(a, b);
    else if constexpr (Text<A> && Text<B>)
        return detail::viewOf(a) == detail::viewOf(b);
    else if constexpr (isOptional<A> && !std::same_as<B, std::nullopt_t>)
        return detail::isEqualToContent(a, b);
    else if constexpr (isOptional<B> && !std::same_as<A, std::nullopt_t>)
        return detail::isEqualToContent(b, a);
    else if constexpr (Text<A> && ComparableForEquality<std::string_view, B>)
        return detail::viewOf(a) == b;
    else if constexpr (Text<B> && ComparableForEquality<A, std::string_view>)
        return a == detail::viewOf(b);
    else
        return a == b;
}

template <class Values, class T>
constexpr bool contains(Values& values, const T& value) {
    return std::ranges::any_of(detail::elementsOf(values),
                               [&](const auto& element) { return detail::areEqual(element, value); });
}

template <class Sequence, class Values>
constexpr bool containsOne(Sequence& sequence, Values& values) {
    return std::ranges::any_of(detail::elementsOf(sequence),
                               [&](const auto& element) { return detail::contains(values, element); });
}

/// What an object can be of.
template <class T>
concept ObjectClass = std::is_class_v<T> && !ObjectPointer<T>;

template <class... Classes, class T>
bool isOfClass(const T& object) {
    const std::type_info& type = typeid(object);
    return ((type == typeid(Classes)) || ...);
}

} // namespace detail

/// The values to look among, written in braces: each of them, and no sequence of them, which is handed over as it is.
template <class T>
struct Among {
    std::initializer_list<T> of = {};
};

/// Whether a value equals one of several, written in braces or kept in any sequence. Integers go by their numbers,
/// whatever their types. Texts of C's go by their letters, and a null one is empty, but in braces, where what is listed
/// with a text becomes a std::string_view.
template <class T>
    requires detail::ComparableForEquality<T, detail::Listed<T>>
constexpr bool isOne(const T& value, Among<detail::Listed<T>> values) {
    return detail::contains(values.of, value);
}
template <class T, detail::SequenceOf<T> Values>
constexpr bool isOne(const T& value, Values&& values) {
    return detail::contains(values, value);
}

/// Whether a value equals none of several.
template <class T>
    requires detail::ComparableForEquality<T, detail::Listed<T>>
constexpr bool except(const T& value, Among<detail::Listed<T>> values) {
    return !vorlan::isOne(value, values);
}
template <class T, detail::SequenceOf<T> Values>
constexpr bool except(const T& value, Values&& values) {
    return !vorlan::isOne(value, values);
}

/// Whether an object is exactly of one of several classes; one of a subclass is not. Pointers, bare and smart, stand for
/// what they point to; a null pointer is of none.
template <class... Classes, class T>
    requires(sizeof...(Classes) > 0)
bool isOne(const T& object) {
    static_assert((detail::ObjectClass<Classes> && ...),
                  "isOne<...>(object) compares with classes: name them without pointer or reference");
    if constexpr (detail::ObjectPointer<T>)
        return object != nullptr && detail::isOfClass<Classes...>(*object);
    else
        return detail::isOfClass<Classes...>(object);
}

/// Whether some element of a sequence equals one of several values, written in braces or kept in another sequence.
template <std::ranges::input_range Sequence>
constexpr bool containsOne(Sequence&& sequence,
                           Among<detail::Listed<std::ranges::range_value_t<Sequence>>> values) {
    return detail::containsOne(sequence, values.of);
}
template <std::ranges::input_range Sequence, std::ranges::forward_range Values>
    requires detail::SequenceOf<Values, std::ranges::range_reference_t<Sequence>>
constexpr bool containsOne(Sequence&& sequence, Values&& values) {
    return detail::containsOne(sequence, values);
}

/// Has a type's own values ask whether they are one of several: `color.isOne({.of = {red, blue}})`. Within the class these
/// hide the free functions: there write `vorlan::isOne`.
///
///     struct Color : Membership<Color> { ... };
///
/// Threads: as the type itself.
template <class Self>
class Membership : public detail::Mixin<Membership<Self>> {
public:
    constexpr bool isOne(Among<Self> values) const { return vorlan::isOne(self(), values); }
    template <detail::SequenceOf<Self> Values>
    constexpr bool isOne(Values&& values) const {
        return vorlan::isOne(self(), values);
    }
    template <class... Classes>
        requires(sizeof...(Classes) > 0)
    bool isOne() const {
        return vorlan::isOne<Classes...>(self());
    }
    constexpr bool except(Among<Self> values) const { return vorlan::except(self(), values); }
    template <detail::SequenceOf<Self> Values>
    constexpr bool except(Values&& values) const {
        return vorlan::except(self(), values);
    }

private:
    constexpr const Self& self() const { return static_cast<const Self&>(*this); }
};

} // namespace vorlan
