// SPDX-License-Identifier: Apache-2.0
#pragma once

// Reading one of 1, 100 or 1000 secrets.

#include <filesystem>

namespace vorlan::benchmarks {

/// Adds the rows of reading, from stores in a folder.
void addKeychainReadingRows(const std::filesystem::path& folder);

} // namespace vorlan::benchmarks
