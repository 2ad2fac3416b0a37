// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables of bundles, read once and then from memory.

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/StringTable.h>

#include <memory>
#include <string_view>

namespace vorlan {

/// Where a text is looked for.
struct TablePlace {
    /// The path of a bundle's folder of resources, or of that which it is in as "Resources".
    std::string_view resources;
    /// As in "de"; "Base" is taken where there is no such folder, or where it is empty.
    std::string_view language;
    /// The file's name without extension; empty for "Localizable".
    std::string_view table;
};

/// Calls `use` with the entry of a key, which is good until it returns; null where the table has none. Returns false,
/// without calling it, where neither the language's folder nor that of "Base" is there.
///
/// A `.stringsdict` entry goes before the `.strings` entry of the same key. Files are read at the first lookup, and
/// again at a lookup some tenths of a second after they changed; until then the former texts are found. One that cannot
/// be read is told to the problem handler, once per version, and its former texts stay in use, if there were any.
///
/// A language or table that is no name of a file, as "../de", is not there.
///
/// Lookups in tables that were read take no lock and write to no memory that threads share. Safe from any thread; `use`
/// may call anything.
bool useLocalizedEntry(const TablePlace& place, std::string_view key,
                       FunctionRef<void(const StringTableEntry*)> use);

/// What the files of a table say, in one folder.
///
/// Threads: safe from any thread: it never changes.
/// Owns:    the texts, shared with those of other moments.
struct FolderTexts {
    bool isFolderThere = false;
    bool isTableThere = false; ///< Whether one of the files is, readable or not.
    std::shared_ptr<const StringTable> plurals = {};
    std::shared_ptr<const StringTable> strings = {};

    const StringTableEntry* find(std::string_view key) const noexcept;
};

/// The same for a caller that chooses folders by itself: calls `use` with what the language's folder alone has, or, where
/// the language is empty, with what is in the folder of resources itself.
void useFolderTexts(const TablePlace& place, FunctionRef<void(const FolderTexts&)> use);

/// Has all files looked at again at the next lookups, however soon these come. For tests.
void recheckLocalizedTables();

} // namespace vorlan
