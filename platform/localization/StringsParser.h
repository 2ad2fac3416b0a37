// SPDX-License-Identifier: Apache-2.0
#pragma once

// The text form of tables.

#include <VorlanFoundation/Platform/FunctionRef.h>
#include <VorlanFoundation/Platform/StringTable.h>

#include <string>
#include <string_view>

namespace vorlan {

/// Reads pairs and hands each to `use`, in their order:
///
///     /* On the button. */
///     "Open" = "Öffnen";      // between quotes: any characters, and escapes
///     close.title = Ende;     // without: letters, digits and _ - . $ / : so that a comment needs a blank before it
///     "OK";                   // stands for itself
///
/// All of them may be between braces. Escapes are \a \b \f \n \r \t \v, \ooo (up to three octal digits: the number of a
/// character up to U+00FF), \Uxxxx or \uxxxx (a unit of UTF-16), and a backslash before what is no letter or digit,
/// which stands for that itself.
///
/// `text` is well-formed UTF-8. Throws StringTableError.
void parseStrings(std::string_view text, FunctionRef<void(std::string, StringTableEntry)> use);

} // namespace vorlan
