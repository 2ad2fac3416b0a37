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

/// How long the character is that begins at `at`, from 1 to 4; 0 when it is ill-formed, or longer than the `left` bytes,
/// one at least, that there are. What may follow a lead byte rules out over-long forms, surrogates and what is beyond
/// U+10FFFF (table 3-7 of the Unicode standard).
inline std::size_t characterLength(const char* at, std::size_t left) noexcept {
    const auto lies = [at](std::size_t index, unsigned low, unsigned high) {
        const auto byte = static_cast<unsigned char>(at[index]);
        return byte >= low && byte <= high;
    };
    const auto lead = static_cast<unsigned char>(*at);
    if (lead < 0x80) return 1;
    if (lead < 0xE0) return lead >= 0xC2 && left >= 2 && lies(1, 0x80, 0xBF) ? 2 : 0;
    if (lead < 0xF0) {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = lead == 0xED ? 0x9F : 0xBF;
        return left >= 3 && lies(1, low, high) && lies(2, 0x80, 0xBF) ? 3 : 0;
    }
    const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
    const bool isWell =
        lead <= 0xF4 && left >= 4 && lies(1, low, high) && lies(2, 0x80, 0xBF) && lies(3, 0x80, 0xBF);
    return isWell ? 4 : 0;
}

/// Whether all of it is ASCII.
bool isASCII(std::string_view text) noexcept;

/// How many bytes of a text come before the first that is ill-formed: all of them where none is.
std::size_t wellFormedLength(std::string_view text) noexcept;

/// Whether the whole text is well-formed.
bool isWellFormed(std::string_view text) noexcept;

/// Appends a character, which must not be a surrogate or beyond U+10FFFF.
void append(std::string& text, char32_t character);

} // namespace vorlan::utf8
