// SPDX-License-Identifier: Apache-2.0
#pragma once

// A bundle in twelve languages.

#include "tests/platform/localization/TableTree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vorlan::tests {

/// The forms that a file of texts can have.
enum class TableForm { text, utf16, xml, binary };

/// A language of the bundle.
struct Translation {
    std::string language;
    std::string open; ///< The translation of "Open".
    TableForm form;   ///< Of its file.
};

/// All but "Base", in which "Open" is "Base open".
const std::vector<Translation>& translations();

/// Writes the folders of all languages into a folder of resources, each with a table "Localizable" of texts
///
///     "Open"                          the translation
///     "Page %d of %d"                 "LANGUAGE %2$d/%1$d"
///
/// and one of the plural forms of "%d files": "CATEGORY %d", for all categories.
void writeTranslations(const std::filesystem::path& resources);

} // namespace vorlan::tests
