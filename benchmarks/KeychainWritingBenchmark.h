// SPDX-License-Identifier: Apache-2.0
#pragma once

// Adding a secret to 1, 100 or 1000, and changing one of them, so that it is on the disk.

#include <filesystem>

namespace vorlan::benchmarks {

/// Adds the rows of writing, to stores in a folder.
void addKeychainWritingRows(const std::filesystem::path& folder);

} // namespace vorlan::benchmarks
