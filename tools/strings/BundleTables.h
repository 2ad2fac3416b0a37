// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables of a bundle, read.

#include "tools/strings/Finding.h"

#include <VorlanFoundation/Platform/StringTable.h>

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool {

/// A file with its texts.
struct TableFile {
    std::string path;
    vorlan::StringTable texts;
};

/// A text with the file that it is in; both are null where there is none.
struct FoundEntry {
    const vorlan::StringTableEntry* entry = nullptr;
    const TableFile* file = nullptr;
};

/// The files of one table in one language.
struct Table {
    std::optional<TableFile> strings;
    std::optional<TableFile> plurals;
    bool isWhole = true; ///< Whether all of its files could be read.

    /// Its keys, in alphabetical order.
    std::set<std::string> keys() const;
    /// The text of a key: that with plural variables, where there are two.
    FoundEntry find(const std::string& key) const;
};

struct LanguageTables {
    std::string language;
    std::string path;
    std::map<std::string, Table> tables; ///< Those that are wanted.
    bool hasTables = false;              ///< Wanted ones or others.
};

struct BundleTables {
    std::vector<LanguageTables> languages; ///< In alphabetical order.
    std::optional<std::string> developmentRegion;
    std::vector<Finding> findings; ///< Of files that cannot be read or are no tables.
};

/// A bundle, or what is wanted of it, that is not there or cannot be read.
struct BundleError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a table. Throws StringTableError, or what std::ifstream says of a file that cannot be read.
vorlan::StringTable readTable(const std::filesystem::path& path);

/// Reads all tables of a bundle, or only those of one name. Throws BundleError.
BundleTables readBundle(const std::string& path, const std::optional<std::string>& onlyTable = std::nullopt);

} // namespace tool
