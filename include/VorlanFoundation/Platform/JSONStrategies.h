// SPDX-License-Identifier: Apache-2.0
#pragma once

// How that which JSON has no form of its own for is written and read: the two ends of a wire agree on it.
//
//     const JSONStrategies wire{.dates = JSONDates::iso8601, .keys = JSONKeys::snakeCase};
//     const Data sent = JSONEncoder{.strategies = wire}.encode(profile);
//     const auto received = JSONDecoder{.strategies = wire}.decode<Profile>(sent);

#include <cstdint>
#include <optional>
#include <string>

namespace vorlan {

/// Dates. All of these but `iso8601` are numbers; a Date survives each of them but `secondsSince1970` and
/// `millisecondsSince1970` to the last bit, and those to the nearest number.
enum class JSONDates : std::uint8_t {
    deferredToDate,        ///< Seconds since 2001-01-01T00:00:00Z.
    secondsSince1970,      ///< Seconds since 1970-01-01T00:00:00Z.
    millisecondsSince1970, ///< Milliseconds since then.
    /// A text as in RFC 3339: "2024-03-05T14:07:09Z", with as many digits of a second's fraction as the date has. Read
    /// with any offset from UTC. Years from 1 to 9999.
    iso8601
};

/// Data.
enum class JSONBytes : std::uint8_t {
    base64, ///< A text in base64 (RFC 4648, section 4), padded.
    numbers ///< An array of numbers from 0 to 255.
};

/// The names of the members of described types. Keys of maps and dictionaries stand as they are.
enum class JSONKeys : std::uint8_t {
    asDeclared, ///< `birthDate` is "birthDate".
    snakeCase   ///< `birthDate` is "birth_date", `userID` "user_id", `HTMLText` "html_text".
};

/// The texts that stand for numbers that JSON cannot write.
struct JSONNonFinite {
    std::string positiveInfinity = "Infinity";
    std::string negativeInfinity = "-Infinity";
    std::string nan = "NaN";
};

/// All of these choices; those of a default encoder and decoder, where nothing else is said.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct JSONStrategies {
    JSONDates dates = JSONDates::deferredToDate;
    JSONBytes data = JSONBytes::base64;
    JSONKeys keys = JSONKeys::asDeclared;
    /// Absent: such a number is an error.
    std::optional<JSONNonFinite> nonFinite{};
};

} // namespace vorlan
