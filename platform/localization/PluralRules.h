// SPDX-License-Identifier: Apache-2.0
#pragma once

// Plural forms of numbers that neither a signed integer nor a double holds.

#include <VorlanFoundation/Platform/Locale.h>
#include <VorlanFoundation/Platform/PluralCategory.h>

#include <cstdint>

namespace vorlan {

/// The form that goes with a whole number, as `pluralCategory` has it.
PluralCategory pluralCategoryOfUnsigned(std::uint64_t number, const Locale& locale);

} // namespace vorlan
