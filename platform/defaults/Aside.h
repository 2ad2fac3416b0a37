// SPDX-License-Identifier: Apache-2.0
#pragma once

// What becomes of files that cannot be used.

#include <filesystem>
#include <string>
#include <vector>

namespace vorlan::defaults {

/// What went wrong, one sentence each, to be reported when no lock is held any more.
using Problems = std::vector<std::string>;

/// Renames a damaged file (or whatever stands in its place) to the first free `<name>.damaged-<number>`, and adds
/// that, or that it could not be done, to the problems.
void moveAside(const std::filesystem::path& path, Problems& problems);

} // namespace vorlan::defaults
