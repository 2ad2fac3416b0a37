// SPDX-License-Identifier: Apache-2.0
#pragma once

// The smallest parts of a JSON text, byte by byte: texts and literals. Numbers are in JSONGrammarNumbers.h.
//
// All of these read from a buffer in which at least `json::padding` zero bytes follow the text. No rule lets a zero byte
// pass, so that none of them needs to know where the text ends.

#include "platform/json/JSONBytes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorlan::json {

inline constexpr std::size_t padding = 16;

/// Where a text ceases to be JSON, and why.
struct Fault {
    const char* at = nullptr;
    std::string_view message;
};

inline bool isBlank(char character) {
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

inline bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

inline const char* afterBlanks(const char* at) {
    while (static_cast<unsigned char>(*at) <= ' ' && isBlank(*at)) ++at;
    return at;
}

/// The first byte that needs a closer look: a quote, a backslash, a control character, or one that is not ASCII.
inline const char* plainEnd(const char* at) {
    for (;; at += sizeof(std::uint64_t))
        if (const auto special = specialBytes(eightBytes(at))) return at + plainBytes(special);
}

/// A text from behind its first quote on.
struct ScannedText {
    const char* end = nullptr; ///< Its last quote; null when there is a fault.
    bool hasEscapes = false;
};

/// The rest of a text whose first `plainEnd` is no quote.
ScannedText scanOtherText(const char* at, Fault& fault);

inline ScannedText scanText(const char* at, Fault& fault) {
    at = plainEnd(at);
    if (*at == '"') return {at, false};
    return scanOtherText(at, fault);
}

/// Appends the characters that a scanned text stands for.
void appendUnescaped(std::string& out, const char* at, const char* end);

/// The end of a literal that is to stand here; null when there is a fault.
const char* scanLiteral(const char* at, std::string_view literal, Fault& fault);

} // namespace vorlan::json
