// SPDX-License-Identifier: Apache-2.0
#pragma once

// Types that can be written as JSON and read from it.
//
//     struct Profile { std::string name; std::optional<Date> born; std::vector<Address> addresses; };
//     VORLAN_CODABLE(Profile, name, born, addresses)
//
//     const Data data = JSONEncoder().encode(profile);
//     const auto again = JSONDecoder().decode<Profile>(data);

#include <VorlanFoundation/Platform/CodingTraits.h>
#include <VorlanFoundation/Platform/JSONFieldNames.h>
#include <VorlanFoundation/Platform/JSONReader.h>
#include <VorlanFoundation/Platform/JSONWriter.h>
#include <VorlanFoundation/Platform/StandardCoding.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

/// Describes a type by its members, once, in the namespace in which the type is (or its outermost class): up to 256
/// public members that are codable themselves. The type must have a default constructor.
///
/// In JSON it is an object. Members that are optionals or smart pointers and absent are left out; those that are missing
/// or null are read as absent. All others must be there. So what is read is what was written, whatever the default
/// constructor gives to the members. A type that derives from a described one is to be described itself, with the members
/// of its base that count.
///
/// A type that this does not fit is coded by hand, with two members,
///
///     void encode(JSONWriter& writer) const;
///     static Shape decode(JSONReader& reader);
///
/// or, when the type cannot be changed, with the same two in a specialisation of `vorlan::JSONCoding`.
#define VORLAN_CODABLE(Type, ...)                                                             \
    template <::std::same_as<Type> VorlanExactly> /* Nothing that is only derived from it. */ \
    constexpr auto vorlanCodableFields(const VorlanExactly*) noexcept {                       \
        [[maybe_unused]] typedef Type VorlanDescribed;                                        \
        return ::vorlan::detail::jsonFields(__VA_OPT__(VORLAN_DETAIL_FIELDS(__VA_ARGS__)));   \
    }

// Goes through the members by having the preprocessor look 4 x 4 x 4 x 4 times at a macro that names itself by a detour.
#define VORLAN_DETAIL_FIELDS(...) VORLAN_DETAIL_256(VORLAN_DETAIL_FIELD(__VA_ARGS__))
#define VORLAN_DETAIL_FIELD(name, ...)                                     \
    ::vorlan::detail::JSONField{#name, &VorlanDescribed::name} __VA_OPT__( \
        , VORLAN_DETAIL_NEXT VORLAN_DETAIL_AGAIN(__VA_ARGS__))
#define VORLAN_DETAIL_NEXT() VORLAN_DETAIL_FIELD
#define VORLAN_DETAIL_AGAIN ()
#define VORLAN_DETAIL_256(...) \
    VORLAN_DETAIL_64(VORLAN_DETAIL_64(VORLAN_DETAIL_64(VORLAN_DETAIL_64(__VA_ARGS__))))
#define VORLAN_DETAIL_64(...) \
    VORLAN_DETAIL_16(VORLAN_DETAIL_16(VORLAN_DETAIL_16(VORLAN_DETAIL_16(__VA_ARGS__))))
#define VORLAN_DETAIL_16(...) VORLAN_DETAIL_4(VORLAN_DETAIL_4(VORLAN_DETAIL_4(VORLAN_DETAIL_4(__VA_ARGS__))))
#define VORLAN_DETAIL_4(...) VORLAN_DETAIL_1(VORLAN_DETAIL_1(VORLAN_DETAIL_1(VORLAN_DETAIL_1(__VA_ARGS__))))
#define VORLAN_DETAIL_1(...) __VA_ARGS__

namespace vorlan {

namespace detail {

template <class Owner, class Member>
struct JSONField {
    std::string_view name;
    Member Owner::* member;
};
template <class Owner, class Member>
JSONField(const char*, Member Owner::*) -> JSONField<Owner, Member>;

// The fields of a type. A std::tuple would do, but compiling one takes minutes for types of some hundred members.
template <std::size_t Index, class Field>
struct JSONFieldAt {
    Field field;
};
template <class Indexes, class... Fields>
struct JSONFieldList;
template <std::size_t... Index, class... Fields>
struct JSONFieldList<std::index_sequence<Index...>, Fields...> : JSONFieldAt<Index, Fields>... {
    static constexpr std::size_t count = sizeof...(Fields);
};
template <class... Fields>
constexpr auto jsonFields(Fields... fields) noexcept {
    return JSONFieldList<std::index_sequence_for<Fields...>, Fields...>{{fields}...};
}
template <std::size_t Index, class Field>
constexpr const Field& fieldAt(const JSONFieldAt<Index, Field>& at) noexcept {
    return at.field;
}

/// What is known of a described type: its fields, and their names in each style.
template <Described T>
struct Description {
    static constexpr auto fields = vorlanCodableFields(static_cast<const T*>(nullptr));
    static constexpr std::size_t count = decltype(fields)::count;
    static constexpr auto declaredNames = []<std::size_t... Index>(std::index_sequence<Index...>) {
        return std::array<std::string_view, count>{fieldAt<Index>(fields).name...};
    }(std::make_index_sequence<count>());

    static const JSONFieldNames& names() {
        static const JSONFieldNames kept(declaredNames);
        return kept;
    }
};

template <Described T>
class FieldsEncoder {
public:
    static void encode(const T& value, JSONWriter& writer) {
        writer.beginObject();
        encodeAll(value, writer, std::make_index_sequence<Description<T>::count>());
        writer.endObject();
    }

private:
    template <std::size_t... Index>
    static void encodeAll(const T& value, JSONWriter& writer, std::index_sequence<Index...>) {
        (encodeOne<Index>(value.*fieldAt<Index>(Description<T>::fields).member, writer), ...);
    }

    template <std::size_t Index, class Member>
    static void encodeOne(const Member& member, JSONWriter& writer) {
        if constexpr (mayBeAbsent<Member>)
            if (!member) return;
        writer.field(Description<T>::names(), Index);
        JSONCoding<Member>::encode(member, writer);
    }
};

template <Described T>
class FieldsDecoder {
public:
    static void decode(JSONReader& reader, T& value) {
        const auto& names = Description<T>::names();
        std::array<bool, count> found{};
        reader.enterObject();
        for (std::size_t index = reader.nextField(names, 0); index < count;
             index = reader.nextField(names, index + 1)) {
            decodeAt(index, reader, value, Indexes());
            found[index] = true;
        }
        settleMissing(found, reader, value, Indexes());
    }

private:
    static constexpr std::size_t count = Description<T>::count;
    using Indexes = std::make_index_sequence<count>;

    template <std::size_t... Index>
    static void decodeAt(std::size_t index, JSONReader& reader, T& value, std::index_sequence<Index...>) {
        static_cast<void>(((index == Index && (decodeOne<Index>(reader, value), true)) || ...));
    }

    template <std::size_t Index>
    static void decodeOne(JSONReader& reader, T& value) {
        auto& member = value.*fieldAt<Index>(Description<T>::fields).member;
        member = JSONCoding<std::remove_cvref_t<decltype(member)>>::decode(reader);
    }

    template <std::size_t... Index>
    static void settleMissing(const std::array<bool, count>& found, JSONReader& reader, T& value,
                              std::index_sequence<Index...>) {
        ((found[Index] ? void() : settleMissing<Index>(reader, value)), ...);
    }

    template <std::size_t Index>
    static void settleMissing(JSONReader& reader, T& value) {
        auto& member = value.*fieldAt<Index>(Description<T>::fields).member;
        using Member = std::remove_cvref_t<decltype(member)>;
        if constexpr (mayBeAbsent<Member>) {
            member = Member(); // Whatever the default constructor gave it: absent ones are not written.
        } else {
            reader.failForMissing(Description<T>::names(), Index);
        }
    }
};

} // namespace detail

/// A described type: member by member.
///
/// Threads: safe from any thread, as far as reading the value is; the reader or writer is one thread's.
template <detail::Described T>
struct JSONCoding<T> {
    static void encode(const T& value, JSONWriter& writer) {
        detail::FieldsEncoder<T>::encode(value, writer);
    }
    static T decode(JSONReader& reader) {
        T value{};
        decodeInto(reader, value);
        return value;
    }
    static void decodeInto(JSONReader& reader, T& value) { detail::FieldsDecoder<T>::decode(reader, value); }
};

/// A type that codes itself.
///
/// Threads: as its own operations.
template <class T>
    requires(!detail::Described<T> && (detail::SelfEncoding<T> || detail::SelfDecoding<T>))
struct JSONCoding<T> {
    static void encode(const T& value, JSONWriter& writer)
        requires detail::SelfEncoding<T>
    {
        value.encode(writer);
    }
    static T decode(JSONReader& reader)
        requires detail::SelfDecoding<T>
    {
        return T::decode(reader);
    }
};

} // namespace vorlan
