// SPDX-License-Identifier: Apache-2.0
#pragma once

// A hundred settings, brought to the disk.

#include <filesystem>

namespace vorlan::benchmarks {

/// Adds the rows of durable saves to files of a folder.
void addDefaultsSavingRows(const std::filesystem::path& folder);

} // namespace vorlan::benchmarks
