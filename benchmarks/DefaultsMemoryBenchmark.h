// SPDX-License-Identifier: Apache-2.0
#pragma once

// Settings that are set and read, of a hundred.

#include <filesystem>

namespace vorlan::benchmarks {

/// Adds the rows of single settings.
void addDefaultsMemoryRows(const std::filesystem::path& folder);

} // namespace vorlan::benchmarks
