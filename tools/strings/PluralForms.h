// SPDX-License-Identifier: Apache-2.0
#pragma once

// Which plural forms a language has.

#include <VorlanFoundation/Platform/PluralCategory.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// For each category a number that chooses it, absent where none does.
using ChoosingNumbers = std::array<std::optional<std::string>, vorlan::pluralCategoryCount>;

/// The plural forms of a language, as sample numbers choose them.
struct PluralForms {
    ChoosingNumbers byIntegers;     ///< Below a million.
    ChoosingNumbers byNumbers;      ///< These, and such with digits behind the decimal point.
    ChoosingNumbers byLargeNumbers; ///< Integers from a million on.
};

/// Those of the language that a folder is named after, as in "de" or "pt-BR".
PluralForms pluralForms(const std::string& language);

/// The name of a category in tables, as in "few"; by its place in `PluralCategory`.
std::string_view categoryName(std::size_t category);

} // namespace tool
