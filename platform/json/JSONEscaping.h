// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands between the quotes of a text in JSON.

#include "platform/json/JSONWriterBuffer.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vorlan::escaping {

/// Appends a text with a quote on each side, escaping quotes, backslashes and control characters. False, having
/// appended anything, when it is not well-formed UTF-8.
bool appendQuoted(JSONWriterBuffer& buffer, std::string_view text);

/// The text of which the escaped form begins at `escaped`, behind its quote, and is followed by one.
std::string unescaped(const char* escaped);

/// Which of two such texts comes first by the bytes that they stand for.
bool isBefore(const char* escaped, const char* other) noexcept;

/// Copies without a call what is mostly short. Returns the end of the copy.
inline char* copyShort(char* to, std::string_view text) noexcept {
    const char* from = text.data();
    const auto size = text.size();
    const auto copy = [&]<class Word>(std::size_t at, Word) {
        Word word;
        std::memcpy(&word, from + at, sizeof word);
        std::memcpy(to + at, &word, sizeof word);
    };
    // The last two copies may overlap.
    if (size >= 8) {
        for (std::size_t at = 0; at + 8 < size; at += 8) copy(at, std::uint64_t());
        copy(size - 8, std::uint64_t());
    } else if (size >= 4) {
        copy(0, std::uint32_t());
        copy(size - 4, std::uint32_t());
    } else {
        for (std::size_t at = 0; at < size; ++at) to[at] = from[at];
    }
    return to + size;
}

} // namespace vorlan::escaping
