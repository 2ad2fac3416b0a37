// SPDX-License-Identifier: Apache-2.0
#pragma once

// The property lists of texts with plural forms.

#include <VorlanFoundation/Platform/StringTable.h>
#include <VorlanFoundation/Platform/Value.h>

#include <string>

namespace vorlan {

/// An entry of a `.stringsdict` file. Throws StringTableError where it could not be formatted: a form is missing or of
/// another kind, or a format names a variable that is not there, or that names it in turn.
StringTableEntry readPluralEntry(const std::string& key, const Value& value);

} // namespace vorlan
