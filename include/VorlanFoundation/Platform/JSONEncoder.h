// SPDX-License-Identifier: Apache-2.0
#pragma once

// Writes values as JSON.

#include <VorlanFoundation/Platform/Codable.h>
#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/FunctionRef.h>

#include <cstddef>
#include <string>

namespace vorlan {

/// Encodes values of any codable type: standard types, described types (`VORLAN_CODABLE`), types that code themselves.
///
///     const JSONEncoder encoder{.prettyPrinted = true, .sortedKeys = true};
///     const Data data = encoder.encode(profile);
///
/// Every finite number, every integer of 64 bits and every well-formed text is decoded to the same bits again.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Errors:  what cannot be encoded throws JSONError, with the path: a number that is not finite (but see the
///          strategies), ill-formed text, a date beyond its form, values in more than `maximumDepth` arrays and objects.
///          An exception of a host's own coding comes as a JSONError with its text.
struct JSONEncoder {
    /// Over several lines, with two blanks for each level.
    bool prettyPrinted = false;
    /// Members in the order of their names' bytes; else of described types as declared, of maps as they come.
    bool sortedKeys = false;
    JSONStrategies strategies{};
    /// From 1 to 2,000.
    std::size_t maximumDepth = 512;

    /// The JSON text of a value, in UTF-8.
    template <Encodable T>
    Data encode(const T& value) const {
        JSONWriter writer(writing());
        write(writer, [&] { JSONCoding<T>::encode(value, writer); });
        return std::move(writer).takeData();
    }

    /// The same, as a text.
    template <Encodable T>
    std::string encodeText(const T& value) const {
        JSONWriter writer(writing());
        write(writer, [&] { JSONCoding<T>::encode(value, writer); });
        return std::move(writer).takeText();
    }

private:
    JSONWriting writing() const { return {strategies, prettyPrinted, sortedKeys, maximumDepth}; }

    VORLAN_EXPORT static void write(JSONWriter& writer, FunctionRef<void()> encode);
};

} // namespace vorlan
