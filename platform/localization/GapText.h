// SPDX-License-Identifier: Apache-2.0
#pragma once

// What stands in one gap.

#include "platform/localization/FormatReader.h"

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/TextFormat.h>

#include <string>

namespace vorlan {

/// Whether an argument is what a gap is for.
bool fits(FormatDirective::Kind kind, const GapForm& form, const FormatArgument::Content& argument);

/// The text of an argument in a gap, with numbers as in C where `locale` is null. An argument that does not fit is
/// written by its own.
std::string gapText(const GapForm& form, const FormatArgument::Content& argument, const Locale* locale);

} // namespace vorlan
