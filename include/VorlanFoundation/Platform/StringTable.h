// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tables of translated texts, as the files of a bundle hold them.
//
//     const auto table = StringTable::read(bytes);      // of "Localizable.strings"; throws StringTableError
//     if (const auto* entry = table.find("Open")) show(entry->text);

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/PluralCategory.h>

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorlan {

/// A place in a text file; both count from 1, the column in characters. Both are 0 where the file has no lines, or where
/// they are not known.
struct TextPosition {
    std::size_t line = {};
    std::size_t column = {};

    friend bool operator==(const TextPosition&, const TextPosition&) = default;
};

/// Says why bytes are no table, and where.
///
/// Threads: safe from any thread: it never changes.
class VORLAN_EXPORT StringTableError : public std::runtime_error {
public:
    StringTableError(const std::string& message, TextPosition position);

    /// Where the table stops to be one.
    TextPosition position() const noexcept { return position_; }

private:
    TextPosition position_;
};

/// The forms of one part of a text, of which a number chooses.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct PluralVariable {
    /// How the number is passed and written, as in "d", "ld", "lld", "lu" or ".2f".
    std::string valueType = {};
    /// By category; `other` is always there.
    std::array<std::optional<std::string>, pluralCategoryCount> forms = {};

    friend bool operator==(const PluralVariable&, const PluralVariable&) = default;
};

/// A text with its translation.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct StringTableEntry {
    /// The translation. With variables, it or their forms name them, as in "%#@files@ in %#@folders@".
    std::string text = {};
    /// What the text's numbers choose of, by name; none for an ordinary text.
    std::map<std::string, PluralVariable, std::less<>> variables = {};
    /// Where its key begins.
    TextPosition position = {};
};

/// The texts of a `.strings` or a `.stringsdict` file.
///
/// `read` takes the text form (`"key" = "value";`, in UTF-8 or UTF-16, with comments, escapes and keys without quotes)
/// and property lists in XML or binary form.
///
/// Threads: safe from any thread as long as none changes it.
/// Owns:    its texts.
/// Errors:  StringTableError; what is ill-formed in the encoding is one.
/// Example: see the top of the file.
class VORLAN_EXPORT StringTable {
public:
    /// A table without entries.
    StringTable() = default;

    /// Reads a `.strings` file.
    static StringTable read(std::span<const std::byte> bytes);

    /// Reads a `.stringsdict` file.
    static StringTable readPlurals(std::span<const std::byte> bytes);

    /// The entry of a key, null when there is none; valid as long as the table is.
    const StringTableEntry* find(std::string_view key) const noexcept;

    /// All keys, in the order of their bytes.
    std::vector<std::string> keys() const;

    /// How many entries there are.
    std::size_t size() const noexcept { return entries_.size(); }

    /// A key that a file in the text form says once more.
    struct Repetition {
        std::string key = {};
        TextPosition position = {}; ///< of the later one, whose text counts
    };
    /// What such a file says more than once, in its order.
    const std::vector<Repetition>& repetitions() const noexcept { return repetitions_; }

    /// Adds an entry, in place of that of the same key.
    void insert(std::string key, StringTableEntry entry);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const noexcept {
            return std::hash<std::string_view>()(key);
        }
    };

    std::unordered_map<std::string, StringTableEntry, Hash, std::equal_to<>> entries_;
    std::vector<Repetition> repetitions_;
};

} // namespace vorlan
