// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values of unknown kind to and from JSON.

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/JSONError.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstddef>
#include <span>

namespace vorlan {

/// How `JSONSerialization` writes.
struct JSONWritingOptions {
    bool prettyPrinted = false;
    /// Whether a single text, number, Boolean or null may be written; else only an array or a dictionary may.
    bool fragmentsAllowed = false;
};

/// How `JSONSerialization` reads.
struct JSONReadingOptions {
    bool fragmentsAllowed = false;
};

/// Dictionaries and arrays of values to JSON and back. The keys of dictionaries are in the order of their bytes.
///
///     const Data data = JSONSerialization::data(Value::Dictionary{{"width", 800}});
///
/// Threads: safe from any thread.
class VORLAN_EXPORT JSONSerialization {
public:
    /// Whether JSON can express it as it is: an array or a dictionary, with nothing in it but texts in well-formed UTF-8,
    /// finite numbers, Booleans, null, and arrays and dictionaries of these, at most 512 within one another. No dates,
    /// no data.
    static bool isValidJSONObject(const Value& object) noexcept;
    static bool isValidJSONObject(const Value::Dictionary& object) noexcept;

    /// Its JSON text. What is not valid throws JSONError, with the path.
    static Data data(const Value& object, JSONWritingOptions options = {});
    static Data data(const Value::Dictionary& object, JSONWritingOptions options = {});

    /// What a JSON text stands for. Throws JSONError, with the path and the byte.
    static Value jsonObject(std::span<const std::byte> data, JSONReadingOptions options = {});
};

} // namespace vorlan
