// SPDX-License-Identifier: Apache-2.0
#pragma once

// Texts in the user's language, from the tables of a bundle (`Resources/de.lproj/Localizable.strings`).
//
//     text::localized("Open");                                          // "Öffnen"
//     text::localized("Open", {.forResource = "fr", .table = "Menu"});  // "Ouvrir"
//     text::localizedFormat("Page %d of %d", {2, 9});                   // "Seite 2 von 9"
//     text::localizedPlural("%d files", 3);                             // "3 Dateien"

#include <VorlanFoundation/Extensions/Bundles.h>
#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Texts themselves are the keys of their translations. Files of tables are read once and again when they changed, which
/// is noticed within some tenths of a second; one that cannot be read is told to the problem handler (Problems.h) and
/// counts as empty, or keeps the texts that it had. Safe from any thread. Lookups take no lock, but for a first one and
/// that which finds a file changed: these read the file.
namespace vorlan::text {

/// Where a translation is looked for.
struct LocalizedSource {
    /// The name of the language's folder, as in "de" or "pt-BR". At first the user's language; absent: none, which leaves
    /// "Base".
    std::optional<std::string> forResource = locale::currentLanguageCode();
    /// The file's name without extension; absent: "Localizable".
    std::optional<std::string_view> table = {};
    /// The bundle; null: the application's.
    const Bundle* in = nullptr;
};

/// The translation of a text: that in the language's folder of the bundle, or, where there is no such folder, that in
/// "Base.lproj". The text itself where the table, or both folders, are missing or have none.
VORLAN_EXPORT std::string localized(std::string_view text, const LocalizedSource& source = {});

/// The translation, with its gaps filled as `formatText` does; numbers are written as in C. Plural variables go by the
/// rules of the language that was looked for; where that is none, or "Base", by the user's.
VORLAN_EXPORT std::string localizedFormat(std::string_view text, std::span<const FormatArgument> arguments,
                                          const LocalizedSource& source = {});
inline std::string localizedFormat(std::string_view text, std::initializer_list<FormatArgument> arguments,
                                   const LocalizedSource& source = {}) {
    return localizedFormat(text, std::span(arguments.begin(), arguments.size()), source);
}

/// The translation into the user's language, with its gaps filled by a count; the count is written, and chooses the forms
/// of plural variables, as in that language.
VORLAN_EXPORT std::string localizedPlural(std::string_view text, std::int64_t count);

} // namespace vorlan::text
