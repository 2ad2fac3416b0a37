// SPDX-License-Identifier: Apache-2.0
#pragma once

// Looking for a text in a text.
//
//     rangeOfText("Cafe\u0301", "é");                                       // found: the same text, written otherwise
//     rangeOfText("CAFÉ", "cafe", CompareOptions::caseInsensitive | CompareOptions::diacriticInsensitive);

#include <VorlanFoundation/Platform/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>

namespace vorlan {

/// What counts as the same text, and where it is looked for; joined by `|`. The numbers are the desktop platform's.
enum class CompareOptions : std::uint16_t {
    none = 0, ///< Texts are the same that are canonically equivalent: "é" and "e" with an accent.
    caseInsensitive =
        1,         ///< "A" is "a", "ß" is "ss"; by Unicode's full case folding, which no language changes.
    literal = 2,   ///< Character by character, without regard to equivalence.
    backwards = 4, ///< The last that is found, instead of the first.
    anchored = 8,  ///< At the very beginning only; with `backwards`, at the very end.
    numeric = 64,  ///< Digits in a row count by the number that they are: "7" is "007", and not in "17".
    diacriticInsensitive = 128, ///< "é" is "e"
    widthInsensitive = 256,     ///< "Ａ" (full width) is "A"
    regularExpression =
        1024, ///< The needle is a pattern of ICU's; of the others, caseInsensitive and anchored count.
};

constexpr CompareOptions operator|(CompareOptions a, CompareOptions b) noexcept {
    using Bits = std::underlying_type_t<CompareOptions>;
    return static_cast<CompareOptions>(static_cast<Bits>(a) | static_cast<Bits>(b));
}

/// Whether `option` is among `options`.
constexpr bool contains(CompareOptions options, CompareOptions option) noexcept {
    using Bits = std::underlying_type_t<CompareOptions>;
    return (static_cast<Bits>(options) & static_cast<Bits>(option)) == static_cast<Bits>(option);
}

/// A part of a text, in bytes.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct TextRange {
    std::size_t offset = {};
    std::size_t length = {};

    friend bool operator==(const TextRange&, const TextRange&) = default;
};

/// The part of a text that is `needle`; absent when there is none, or when nothing of `needle` counts.
///
/// But for `literal` and patterns, a character is found only together with the marks on it: "e" is not in "é", however
/// that is written; nor is a part of a syllable of Hangul in it, nor an emoji before what changes it. Where marks do not
/// count they are taken along. A character that counts as several is found with all of them: "s" is not in "ß". The part
/// found can be longer or shorter than the needle. With `literal` the other options go by single characters.
///
/// Ill-formed bytes are the same as equal bytes only, and U+FFFD to patterns. A pattern that is none is not found, nor
/// one that takes a tenth of a second of the thread's own time, nor any in 2 GiB or more. The time of all other
/// searches grows with the length of both texts, and hardly faster. Safe from any thread.
VORLAN_EXPORT std::optional<TextRange> rangeOfText(std::string_view text, std::string_view needle,
                                                   CompareOptions options = CompareOptions::none);

} // namespace vorlan
