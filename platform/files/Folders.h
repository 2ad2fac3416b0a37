// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is asked of folders.

#include <filesystem>
#include <system_error>

namespace vorlan {

/// Whether there is a folder at a path, or a link to one.
inline bool isFolder(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

} // namespace vorlan
