// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts made ready for comparing.

#include <VorlanFoundation/Platform/TextSearch.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vorlan {

/// What is compared: a character of a text in its folded form, a digit of a number, or an ill-formed byte.
using TextUnit = std::uint32_t;

/// The units of a text, and where in it a match may begin or end.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct FoldedText {
    std::vector<TextUnit> units;
    /// For each unit: the byte before which a match may begin or end, or `within`.
    std::vector<std::size_t> places;

    /// No place: inside a character, between it and its marks, or inside a number.
    static constexpr std::size_t within = static_cast<std::size_t>(-1);

    void add(TextUnit unit, std::size_t place) {
        units.push_back(unit);
        places.push_back(place);
    }
    void clear() {
        units.clear();
        places.clear();
    }
};

/// Whether a place is between the bytes of one well-formed character.
bool isInsideCharacter(std::string_view text, std::size_t place) noexcept;

/// Whether a character with its marks begins or ends at a place of a well-formed text.
bool isBetweenCharacters(std::string_view text, std::size_t place);

/// Whether a text is well-formed and in the form that has as few characters as can be (NFC), as most are. Parts of two
/// such texts are canonically equivalent only where they are the same bytes.
bool isComposed(std::string_view text);

/// Turns texts into units that are equal exactly where the texts count as the same.
///
/// Threads: safe from any thread; folding one text into another's units is for one thread at a time.
class TextFolding {
public:
    explicit TextFolding(CompareOptions options);

    /// The units of a part of a text, in place of those that were there. Parts begin and end at the text's ends or at
    /// cuts.
    void fold(std::string_view text, std::size_t begin, std::size_t end, FoldedText& folded) const;

    /// The first place from `from` on where the text may be cut, so that its parts have the units of the whole.
    std::size_t cut(std::string_view text, std::size_t from) const;

private:
    void addCharacters(std::string_view text, std::size_t begin, std::size_t end, FoldedText& folded) const;
    void changeCharacters(const FoldedText& characters, FoldedText& folded) const;

    bool isLiteral_;
    bool ignoresCase_;
    bool ignoresMarks_;
    bool ignoresWidth_;
    bool countsNumbers_;
};

} // namespace vorlan
