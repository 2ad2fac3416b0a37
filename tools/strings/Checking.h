// SPDX-License-Identifier: Apache-2.0
#pragma once

// Compares the languages of a bundle.

#include "tools/strings/BundleTables.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

/// The language that the others are compared with: the wanted one, else "Base" if it has tables, else the bundle's
/// development region, else "en". Throws BundleError when the bundle has not the one, or none of these.
const LanguageTables& baseLanguage(const BundleTables& bundle, const std::optional<std::string>& wanted);

/// All that is wrong. The base is one of the bundle's languages.
std::vector<Finding> checkBundle(const BundleTables& bundle, const LanguageTables& base);

} // namespace tool
