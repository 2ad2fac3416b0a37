// SPDX-License-Identifier: Apache-2.0
#pragma once

// Text files as UTF-8, and where something is in them.

#include <VorlanFoundation/Platform/StringTable.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorlan {

/// What a file of texts has at most, in bytes.
inline constexpr std::size_t stringTableSizeLimit = 64U << 20U;

/// The text of a file in UTF-8 or UTF-16, without a byte order mark. UTF-16 without one is known by the zeros of its
/// first characters. Throws StringTableError, with the place, where it is ill-formed.
std::string decodedText(std::span<const std::byte> bytes);

/// Whether a unit of UTF-16 is half a character.
constexpr bool isSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xE000;
}

/// The character that two units of UTF-16 stand for; absent where they are no pair.
constexpr std::optional<char32_t> surrogatePair(char32_t high, char32_t low) noexcept {
    const bool isPair = high >= 0xD800 && high < 0xDC00 && low >= 0xDC00 && low < 0xE000;
    return isPair ? std::optional(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00)) : std::nullopt;
}

/// Turns offsets into lines and columns. Quick for offsets that grow: it goes on from the one before.
///
/// Threads: one thread at a time.
/// Owns:    nothing; the text outlives it.
class TextPositions {
public:
    /// `text` is well-formed UTF-8.
    explicit TextPositions(std::string_view text) noexcept : text_(text) {}

    /// The place of a character, or behind the last.
    TextPosition at(std::size_t offset) noexcept;

private:
    std::string_view text_;
    std::size_t offset_ = 0;
    TextPosition position_{1, 1};
};

} // namespace vorlan
