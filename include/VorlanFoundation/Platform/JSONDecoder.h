// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reads values from JSON.

#include <VorlanFoundation/Platform/Codable.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace vorlan {

/// Decodes values of any codable type: standard types, described types (`VORLAN_CODABLE`), types that decode themselves.
///
///     const JSONDecoder decoder{.unknownMembers = JSONUnknownMembers::refuse};
///     const auto profile = decoder.decode<Profile>(data);
///
/// Of members with one name the last counts. A number with a fraction or an exponent is read as an integer where it is
/// one.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Errors:  data that is no JSON text (RFC 8259), or not one of such a value, throws JSONError with the path and the
///          byte: "$.items[3].price: expected a number, found a string (at byte 120)". An exception of a host's own
///          coding comes as a JSONError with its text.
struct JSONDecoder {
    JSONStrategies strategies{};
    JSONUnknownMembers unknownMembers = JSONUnknownMembers::ignore;
    /// How many arrays and objects may stand within one another, from 1 to 2,000.
    std::size_t maximumDepth = 512;
    /// In bytes; no text may be larger than 4,000,000,000.
    std::size_t maximumSize = 4'000'000'000;

    /// The value that a JSON text in UTF-8 stands for.
    template <Decodable T>
    T decode(std::string_view text) const {
        std::optional<T> value;
        read(text, [&](JSONReader& reader) { value.emplace(JSONCoding<T>::decode(reader)); });
        return *std::move(value);
    }

    template <Decodable T>
    T decode(std::span<const std::byte> data) const {
        return decode<T>(std::string_view(reinterpret_cast<const char*>(data.data()), data.size()));
    }

private:
    VORLAN_EXPORT void read(std::string_view text, FunctionRef<void(JSONReader&)> decode) const;
};

} // namespace vorlan
