// SPDX-License-Identifier: Apache-2.0
#pragma once

// Why a JSON text was not read, or a value not written as one.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/NSError.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vorlan {

/// What is wrong, where: "$.items[3].price: expected a number, found a string (at byte 120)".
///
/// As an NSError its domain is "VorlanFoundation.JSONError" and its code the kind's, from 0.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    its texts.
class VORLAN_EXPORT JSONError : public NSError {
public:
    enum class Kind : std::uint8_t {
        malformed,     ///< No JSON text: RFC 8259 forbids it, or it is not UTF-8.
        typeMismatch,  ///< JSON, but of another type than asked for.
        missingMember, ///< An object lacks a member that is no optional.
        unknownMember, ///< An object has a member that the type lacks, and the decoder was told to refuse these.
        outOfRange,    ///< A number that the type asked for cannot hold.
        invalidValue,  ///< The right type, but no case of the enumeration, no date, no base64.
        illFormedText, ///< A text to be written is not well-formed UTF-8.
        nonFinite,     ///< A number to be written is infinite or none.
        tooDeep,       ///< Arrays and objects within one another, more of them than allowed.
        tooLarge,      ///< A text of more bytes than allowed.
        host ///< A host's own coding failed: `JSONReader::fail`, `JSONWriter::fail`, or its exception.
    };

    JSONError(Kind kind, std::string message, std::string path, std::optional<std::size_t> byteOffset = {});
    JSONError(const JSONError&);
    JSONError& operator=(const JSONError&);
    ~JSONError() override;

    Kind kind() const noexcept { return kind_; }

    /// What is wrong, without the path: "expected a number, found a string".
    const std::string& message() const noexcept { return message_; }

    /// Where: "$" is the whole, ".price" a member, "[3]" an element, counted from 0. A member whose name is not made
    /// of ASCII letters, digits and "_" stands as `["its name"]`.
    const std::string& path() const noexcept { return path_; }

    /// The byte of the text, counted from 0, at which the value begins that it is about, or at which the text ceases
    /// to be JSON; absent when a value could not be written.
    std::optional<std::size_t> byteOffset() const noexcept { return byteOffset_; }

private:
    Kind kind_;
    std::string message_;
    std::string path_;
    std::optional<std::size_t> byteOffset_;
};

} // namespace vorlan
