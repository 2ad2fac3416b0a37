// SPDX-License-Identifier: Apache-2.0
#pragma once

// Which form of a plural variable goes with an argument.

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/StringTable.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <string>

namespace vorlan {

/// The form of a variable, and the number that chose it.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
struct PluralChoice {
    const std::string* form = nullptr; ///< The variable's; null where it has neither this form nor `other`.
    FormatArgument::Content number;    ///< The argument, which becomes a number where it is the text of one.
    bool isNumber = false;             ///< Otherwise the form is `other`.
};

/// Chooses by the number as the form will show it: "1.0" is not 1. Where `other` has a gap for the number that says how,
/// by that, otherwise by the variable's `valueType`.
PluralChoice choosePluralForm(const PluralVariable& variable, const FormatArgument::Content& argument,
                              const Locale& rules);

} // namespace vorlan
