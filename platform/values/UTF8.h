// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reading and writing text character by character.

#include <cstddef>
#include <string>
#include <string_view>

namespace vorlan::utf8 {

/// Stands for what is no character.
inline constexpr char32_t replacementCharacter = U'\uFFFD';

/// What a text begins with.
struct Prefix {
    std::size_t length;       ///< In bytes, at least 1.
    char32_t character;       ///< U+FFFD when ill-formed.
    bool isWellFormed = true; ///< If not: the longest start that could have become a character.
};

/// The first character of a text that is not empty.
Prefix firstCharacter(std::string_view text) noexcept;

/// Whether all of it is ASCII.
bool isASCII(std::string_view text) noexcept;

/// Whether the whole text is well-formed.
bool isWellFormed(std::string_view text) noexcept;

/// Appends a character, which must not be a surrogate or beyond U+10FFFF.
void append(std::string& text, char32_t character);

} // namespace vorlan::utf8
